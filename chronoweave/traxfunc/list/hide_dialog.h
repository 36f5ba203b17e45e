// The dialog that chooses hidden objects, as data: two lists of rows, a pattern, and what each button does to
// them. Nothing reaches the list before "ok". Live refresh is off for as long as it is open.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/list/task_list.h"

struct laHideRow {
    std::string name;
    std::string id;     // "0x12ab", or "N/A" for a group or pattern
    uint32_t data = 0;  // the object's id, or the position in paths
    bool selected = false;
};

class laHideDialog {
  public:
    // Fills the lists from the objects; all outlive the dialog. apply is called after "ok" gave the list its
    // new hidden paths: the list is to be filled, laid out and painted.
    laHideDialog(TraxTaskList& list, const LaList& settings, const LaItems& items, LaSource& source,
                 std::function<void()> apply);
    // Closes as "cancel" does.
    ~laHideDialog() { Close(); }
    laHideDialog(const laHideDialog&) = delete;
    laHideDialog& operator=(const laHideDialog&) = delete;

    std::string title, showTitle, hideTitle;  // of the dialog and the two lists
    std::string nameColumn, idColumn;
    std::string pattern;  // the field; the window writes into it
    std::vector<laHideRow> toShow, toHide;

    // Buttons by name: "hide", "show", "hideall", "showall", "ok", "cancel".
    bool Enabled(std::string_view button) const;
    // False, and nothing, for one that is not enabled or unknown, or when closed.
    bool Press(std::string_view button);
    // A double click: does "hide" or "show" for this row alone. Nothing for a row that isn't there.
    void DoubleClick(bool inToShow, size_t row);
    bool IsOpen() const { return open_; }
    // Width of a list's first column: at least a third of the list and 80 pixels, and as much as its texts
    // need where those of the second leave it.
    static int NameColumnWidth(int listWidth, int namesNeed, int idsNeed);

  private:
    void Refresh();
    void Add(laPath path);
    void TakePattern();
    enum class Rows { Selected, All };
    void HideRows(Rows which);
    void ShowRows(Rows which);
    void Close();

    TraxTaskList& list_;
    const LaList& settings_;
    const LaItems& items_;
    LaSource& source_;
    std::function<void()> apply_;
    std::vector<laPath> paths_;
    bool savedRefresh_;
    bool open_ = true;
};
