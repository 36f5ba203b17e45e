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
#include "windlib/msl/scroll_list.h"

struct DialogRow {
    std::vector<std::string> cells;  // missing ones are empty
    uint64_t id = 0;                 // what ties the row to its object; its number does not outlive a refill
                                     // or a sort, which the user may do at any time
    std::string data = {};           // any bytes that the logic wants back
};

struct DialogItemState {
    std::string text;   // of a TextField what is typed, committed or not
    std::string title;  // shown before the text of a Label; empty: none
    bool enabled = true;
    bool visible = true;
    bool readOnly = false;  // a TextField
    bool checked = false;   // CheckBox, or the pressed look of a Button
    int choice = -1;        // of a PullDown or ButtonSet; -1: none
    std::vector<std::string> choices;
    std::set<int> disabledChoices;  // of a ButtonSet
    std::vector<std::string> columnTitles;
    std::vector<DialogRow> rows;  // as they stand now; empty while the list is lazy
    std::set<int> selected;       // rows
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
    // The id of a row as it stands now; 0 when it isn't there. And of the selected ones, from the top.
    uint64_t rowId(std::string_view name, int row) const;
    std::vector<uint64_t> selectedIds(std::string_view name) const;
    // The list behind a List item, for what rows, columns and cells can do beyond the functions here: lazy
    // rows, sort keys, looks, owner-drawn cells, headers of several rows. Its columns and rows may be set
    // either way. Its callbacks activated, clicked, rightClicked, userSelected and observed are the model's.
    // For another item, or none, a list that nobody sees.
    MScrollList& list(std::string_view name);
    const MScrollList& list(std::string_view name) const;
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
    void setReadOnly(std::string_view name, bool readOnly);
    void setChecked(std::string_view name, bool checked);
    void setChoices(std::string_view name, std::vector<std::string> choices, int choice);
    void setChoice(std::string_view name, int choice);
    void setChoiceEnabled(std::string_view name, int choice, bool enabled);  // of a ButtonSet
    void setColumnTitles(std::string_view name, std::vector<std::string> titles);
    // Nothing is selected then; what the user sorted by stays the order.
    void setRows(std::string_view name, std::vector<DialogRow> rows);
    void setSelected(std::string_view name, const std::set<int>& rows);
    // The rows with these ids; with single selection the first that is there.
    void setSelectedIds(std::string_view name, const std::vector<uint64_t>& ids);
    // What a Strip shows: drawn on the whole of it, w by h, when it must be painted. And to have it painted.
    using Painter = std::function<void(Surface&, int w, int h)>;
    void setPainter(std::string_view name, Painter painter);
    void repaint(std::string_view name);
    const Painter& painter(std::string_view name) const;  // may be empty
    void setProgress(std::string_view name, int progress, int end);
    void close(int result);

    std::function<void(const std::string& name)> onPress;                          // a button
    std::function<void(const std::string& name, const std::string& text)> onEdit;  // each change of a field
    std::function<void(const std::string& name, const std::string& text)>
        onCommit;                                             // only when the text changed
    std::function<void(const std::string& name)> onEnter;     // Enter in a field, after onCommit
    std::function<void(const std::string& name)> onPullDown;  // what a field offers is to be shown
    std::function<void(const std::string& name)> onSelect;
    std::function<void(const std::string& name, int row)> onActivate;  // double click, or Enter on a row
    // Each click on a row, after onSelect and ahead of onActivate; row -1 below the last. A double click is a
    // call with clicks 1 and one with 2. Space is a click on the current cell.
    std::function<void(const std::string& name, int row, int column, int clicks)> onRowClick;
    std::function<void(const std::string& name, int row, int column)> onRowMenu;  // a right click; row -1 too
    std::function<void(const std::string& name, int x, int y)> onPicture;         // a click in a Strip
    std::function<void(const std::string& name, int choice)> onChoose;
    std::function<void(const std::string& name, bool checked)> onCheck;
    std::function<void(const std::string& body)> onMenu;  // a row of the window's menu, by its command
    std::function<void(int result)> onClose;              // the last call; the model may go now

    // For the user's side: the platform or a test.
    bool press(std::string_view name);
    bool edit(std::string_view name, std::string text);  // a field's text while it is typed
    bool commit(std::string_view name);                  // the field is left, or Enter
    bool revert(std::string_view name);                  // what was typed since the last one is dropped
    bool type(std::string_view name, std::string text);  // both
    bool pullDown(std::string_view name);                // the button at a field's end, or Down in it
    bool select(std::string_view name, const std::set<int>& rows);
    bool activate(std::string_view name, int row);  // Enter on a row
    // A click on a row with its selecting, as MScrollList::Click, and a right click.
    bool clickRow(std::string_view name, int row, int column, int clicks = 1, bool control = false,
                  bool shift = false);
    bool rowMenu(std::string_view name, int row, int column);
    bool sortRows(std::string_view name, int column);  // a click on a column's header
    bool picture(std::string_view name, int x, int y);
    bool choose(std::string_view name, int choice);
    bool check(std::string_view name, bool checked);
    bool menu(std::string_view body);  // a row of the menu was chosen
    // Enter commits the field that has the keyboard, if any, and tells of it, or presses the default button
    // where nobody is told; Escape presses the cancel button. Without a button to cancel by, Escape closes
    // with Dialog_Dismissed.
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
        std::unique_ptr<MScrollList> list;
        Painter painter;
        bool rowsStale = false, selectionStale = false;  // of state, while the list knows better
    };

    void makeList(Entry& entry, const DialogItem& item);
    void noteList(size_t index, MslChange change);
    static void takeFromList(Entry& entry);
    Entry* find(std::string_view name);
    Entry* usable(std::string_view name, std::initializer_list<DialogKind> kinds);
    const std::string& nameOf(const Entry& entry) const;
    const DialogItem* withFlag(unsigned flag) const;
    template <class T>
    void change(std::string_view name, T DialogItemState::*member, T value);

    DialogDescription description_;
    mutable std::vector<Entry> entries_;
    mutable MScrollList unseen_;  // what list() gives for a name that is no list's
    std::string title_;
    bool closed_ = false;
    int result_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

constexpr int Dialog_NoRow = -1;
constexpr int Dialog_ManyRows = -2;
constexpr int Dialog_Dismissed = -1;  // result of a window closed with no answer
