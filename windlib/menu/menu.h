// Menus as named texts. A program registers its menus by name; a row leads to another menu by name, so that
// the tree is resolved late and a menu can be redefined while windows show it. Here is no window: the
// platform layer shows a MenuResource, and is told when it changed.
//
//     {'&Open...' Open} {Quit 'Ctrl+Q' Quit} {-} {&View ->ViewMenu}
//
// A row is a label, an accelerator in single quotes, if any, and a body, which is a command or "->" and a
// menu's name. Labels with blanks stand in single quotes; "-" alone is a separator; '&' stands before the
// letter of the keyboard shortcut. In labels and accelerators a backslash begins an escape as in C.
//
// User-interface thread only. Faults are reported as warnings and give false or null.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct MenuResource;

// What a chosen row's body goes to.
using MenuCallback = std::function<void(const std::string& body)>;
// What a row runs.
using MenuHandler = std::function<void(const std::string& body, const MenuCallback& callback)>;

enum MenuRowFlag : unsigned {
    MenuRow_Disabled = 2,  // cleared before a pop-up shows
    MenuRow_SubMenu = 8,
    MenuRow_Checkable = 16,
    MenuRow_Checked = 32,
    MenuRow_Hidden = 64,
    MenuRow_KeyOnlyShown = 128,  // the accelerator works elsewhere, by other means
};

enum MenuFlag : unsigned {
    Menu_FromText = 16,  // and can be modified
    Menu_UpToDate = 1u << 8,
    Menu_Rebuilding = 1u << 9,
    Menu_NativeExists = 1u << 10,
};

constexpr const char* menuSeparator = "\x01";  // label of a separator row

struct MenuRow {
    std::string label, accelerator, body;
    unsigned flags = 0;               // MenuRowFlag
    MenuHandler handler = {};         // empty: the body goes to the callback
    MenuResource* child = nullptr;    // of a row that leads to a menu which exists; set by each update
    std::string alternateLabel = {};  // written out in place of the label, when there is one
    std::string data = {};            // any bytes that the program wants back
    std::string displayLabel = {};    // label and accelerator as shown; set by each update
    std::string tip = {};             // shown over the row; empty for none

    bool IsSeparator() const { return label == menuSeparator; }
};

// Somebody who shows a menu. Told when there is something new to show; must not define menus then.
struct MenuUser {
    std::function<void()> changed;
};

struct MenuResource {
    std::string name;
    std::vector<MenuRow> rows;
    unsigned flags = 0;    // MenuFlag
    bool isPopup = false;  // the name contains "Popup"
    bool isMagic = false;  // the rows are computed and not text
    std::string text;      // that it was defined by; empty once rows were added or modified
    std::vector<MenuUser*> users;
    std::function<void(MenuResource&)> compute;  // of a magic menu: makes the rows, at each update

    // The row that has this body; null for none.
    MenuRow* RowOf(std::string_view body);
};

enum MenuOperation : int { Menu_AddRow = 0, Menu_DeleteRow = 1, Menu_ReplaceRow = 2, Menu_MoveRow = 3 };
enum MenuWhich : int { Menu_All = 0, Menu_Unused = 1, Menu_InUse = 2 };

class MenuRegistry {
  public:
    static constexpr size_t mostRows = 32767;

    // The option DanglingMenuResourcePtrFix: a redefinition fills the old record with the new contents, so
    // that pointers to it stay good. Without it the users are pointed to a new record.
    bool danglingPtrFix = true;
    // A double-byte locale: a brace behind a lead byte does not count when statements are told apart.
    bool doubleByte = false;
    // Menus changed; the next idle time should call Idle. May be empty.
    std::function<void()> changed;
    // Shows a pop-up and runs the row chosen; by the platform layer. x and y are both -1 for the pointer's
    // position.
    std::function<void(MenuResource&, void* window, int x, int y, const MenuCallback&)> trackPopUp;

    // From a text, in place of a menu of the name; with none, deletes it. False leaves everything as it was.
    bool Define(std::string_view name, std::optional<std::string_view> text);
    // "menu NAME { ROWS }": the same for a whole statement.
    bool DefineStatement(std::string_view statement);
    // A menu whose rows are computed at each update.
    void DefineMagic(std::string_view name, std::function<void(MenuResource&)> compute);
    // A text for when the menu is first looked for.
    void Defer(std::string_view name, std::string_view text) { deferred_[std::string(name)] = text; }
    // Exact; null when there is none, told with report. tryLoad looks among the deferred texts, too.
    MenuResource* Find(std::string_view name, bool report, bool tryLoad = true);

    struct NewRow {
        std::string label, accelerator, body;
        unsigned flags = 0;
        std::string data = {};
        bool sorted = false;  // before the first row that is not below it by bytes, else at the end
        bool unique = false;  // refused when there is one of this label, in any case
    };
    bool AddRow(std::string_view name, NewRow row);
    // Adds, deletes or replaces the row at an index, or moves the row that text describes there. Deleting at
    // -1 deletes the menu.
    bool Modify(std::string_view name, int operation, int index, std::string_view text);
    // Gives a row another label, in a menu that stays the same otherwise.
    void SetLabel(MenuResource& menu, MenuRow& row, std::string label);

    // The menu, or one row of it, as text; row -1 for all. Print sends it to the message console.
    std::string PrintText(const MenuResource& menu, int row) const;
    void Print(std::string_view name, int row);
    // Hands over every menu written as "NAME { ROWS }", but for the toolkit's own.
    void ForEach(const std::function<void(const std::string&)>& function, int which = Menu_All) const;

    void Use(MenuResource& menu, MenuUser& user);
    void Release(MenuUser& user);
    // Resolves sub-menus and renews what is shown, in the whole tree.
    void Update(MenuResource& menu);
    // While held, no user is told of a change; the last release tells them.
    void HoldUpdates(bool hold);
    bool AnyChanged() const { return changed_; }
    // Brings all menus in use up to date and tells their users, when something changed.
    void Idle();
    bool ShowPopUp(std::string_view name, void* window, int x, int y, const MenuCallback& callback,
                   const std::function<void(MenuResource&)>& prepare = {});
    // Runs a row.
    static void Run(const MenuRow& row, const MenuCallback& callback);

  private:
    using List = std::vector<std::unique_ptr<MenuResource>>;  // newest first
    List::iterator Locate(std::string_view name);
    bool Delete(std::string_view name);
    void Touch(MenuResource& menu);
    void Forget(const MenuResource* gone);

    List menus_;
    std::map<std::string, std::string, std::less<>> deferred_;
    bool changed_ = false;
    int held_ = 0;
};

// The program's menus.
MenuRegistry& menu_Registry();

// The rows of a text; none, after a report, for one that can't be read.
std::optional<std::vector<MenuRow>> menu_Parse(std::string_view text, bool doubleByte);
// A text as a label in single quotes that reads back as the same, whatever it holds; '&' stays a mark.
std::string menu_Quote(std::string_view label);
// '&' doubled, so that it is seen.
std::string menu_PlainLabel(std::string_view label);
// "C-x" as "Ctrl+X" and so on; any other accelerator stands as it is.
std::string menu_ShownAccelerator(std::string_view accelerator);
