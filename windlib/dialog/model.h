// A dialog without a window: the state of a description's items. Three parties meet at it:
//   the logic of the dialog sets items and is told by callbacks, by item name, what the user did;
//   the platform layer shows the items, is notified of what the logic changed, and passes on what the user
//   does; a test does as the user, and reads the items.
// What the user does to an item that is disabled, hidden or not of the kind is refused with false. A callback
// may destroy the model. User-interface thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <set>

#include "windlib/dialog/description.h"

struct DialogRow {
    std::vector<std::string> cells;  // missing ones are empty
    uint64_t id = 0;                 // what ties the row to its object; its number does not outlive a refill
    std::string data = {};           // any bytes that the logic wants back
};

struct DialogItemState {
    std::string text;   // of a TextField what is typed, committed or not
    std::string title;  // shown before the text of a Label; empty: none
    bool enabled = true;
    bool visible = true;
    bool checked = false;  // CheckBox, or the pressed look of a Button
    int choice = -1;       // of a PullDown or ButtonSet; -1: none
    std::vector<std::string> choices;
    std::vector<std::string> columnTitles;
    std::vector<int> columnWidths;  // pixels; empty: as the platform thinks
    std::vector<DialogRow> rows;
    std::set<int> selected;  // rows
    bool multiple = false;
    int progress = 0;  // of progressEnd; an end of 0 is no progress to show
    int progressEnd = 0;
};

enum class DialogKey { Enter, Escape };

class DialogModel {
  public:
    explicit DialogModel(DialogDescription description);
    DialogModel(const DialogModel&) = delete;
    DialogModel& operator=(const DialogModel&) = delete;

    const DialogDescription& description() const { return description_; }
    // State of an item; one that is not there reads as an empty, disabled item.
    const DialogItemState& item(std::string_view name) const;
    // What a Label or button shows: title and text.
    std::string shownText(std::string_view name) const;
    const std::string& title() const { return title_; }
    // The text of the message line, the first StatusText; empty when there is none.
    std::string message() const;
    // The one selected row; Dialog_NoRow for none, Dialog_ManyRows for several.
    int selectedRow(std::string_view name) const;
    bool isClosed() const { return closed_; }
    int result() const { return result_; }

    // For the logic. A name that is not there is passed over. Changes notify the platform, no callback comes
    // of them.
    void setTitle(std::string title);
    void setText(std::string_view name, std::string text);
    void setItemTitle(std::string_view name, std::string title);
    void setMessage(std::string text);
    void setEnabled(std::string_view name, bool enabled);
    void setVisible(std::string_view name, bool visible);
    void setChecked(std::string_view name, bool checked);
    void setChoices(std::string_view name, std::vector<std::string> choices, int choice);
    void setChoice(std::string_view name, int choice);
    void setColumnTitles(std::string_view name, std::vector<std::string> titles);
    void setColumnWidths(std::string_view name, std::vector<int> widths);
    void setRows(std::string_view name, std::vector<DialogRow> rows);  // nothing is selected then
    void setSelected(std::string_view name, const std::set<int>& rows);
    void setProgress(std::string_view name, int progress, int end);
    void close(int result);

    std::function<void(const std::string& name)> onPress;                          // a button
    std::function<void(const std::string& name, const std::string& text)> onEdit;  // each change of a field
    std::function<void(const std::string& name, const std::string& text)>
        onCommit;  // only when the text changed
    std::function<void(const std::string& name)> onSelect;
    std::function<void(const std::string& name, int row)> onActivate;  // double click, or Enter on a row
    std::function<void(const std::string& name, int choice)> onChoose;
    std::function<void(const std::string& name, bool checked)> onCheck;
    std::function<void(const std::string& body)> onMenu;  // a row of the window's menu, by its command
    std::function<void(int result)> onClose;              // the last call; the model may go now

    // For the user's side: the platform or a test.
    bool press(std::string_view name);
    bool edit(std::string_view name, std::string text);  // a field's text while it is typed
    bool commit(std::string_view name);                  // the field is left, or Enter
    bool type(std::string_view name, std::string text);  // both
    bool select(std::string_view name, const std::set<int>& rows);
    bool activate(std::string_view name, int row);
    bool choose(std::string_view name, int choice);
    bool check(std::string_view name, bool checked);
    bool menu(std::string_view body);  // a row of the menu was chosen
    // Enter commits the field that has the keyboard, if any, and presses the default button; Escape presses
    // the cancel button. Without a button to cancel by, Escape closes with Dialog_Dismissed.
    bool key(DialogKey key, std::string_view focus = {});
    // The window is closed by its frame: as Escape.
    void dismiss();

    // For the platform: what the logic changed. Not called for what the user's side did itself.
    std::function<void(const std::string& name)> itemChanged;
    std::function<void()> titleChanged;
    std::function<void()> closed;  // comes before onClose

  private:
    struct Entry {
        DialogItemState state;
        std::string committed;  // the text that a commit is compared with
    };

    Entry* find(std::string_view name);
    Entry* usable(std::string_view name, std::initializer_list<DialogKind> kinds);
    const std::string& nameOf(const Entry& entry) const;
    const DialogItem* withFlag(unsigned flag) const;
    template <class T>
    void change(std::string_view name, T DialogItemState::*member, T value);

    DialogDescription description_;
    std::vector<Entry> entries_;
    std::string title_;
    bool closed_ = false;
    int result_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

constexpr int Dialog_NoRow = -1;
constexpr int Dialog_ManyRows = -2;
constexpr int Dialog_Dismissed = -1;  // result of a window closed with no answer
