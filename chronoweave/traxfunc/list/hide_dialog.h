// The dialog that chooses hidden objects, as data: two lists of rows, a pattern, and what each button does to
// them. Nothing reaches the canvas before "ok". Live refresh is off for as long as it is open.
#pragma once

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
    // Fills the lists from the canvas, which must outlive the dialog.
    explicit laHideDialog(_LaCanvasData& canvas);
    // Closes as "cancel" does.
    ~laHideDialog() { Close(); }
    laHideDialog(const laHideDialog&) = delete;
    laHideDialog& operator=(const laHideDialog&) = delete;

    std::string title, showTitle, hideTitle;  // of the dialog and the two lists
    std::string nameColumn, idColumn;
    std::string patternLabel = "Path pattern to hide:";
    std::string pattern;  // the field; the window writes into it
    std::vector<laHideRow> toShow, toHide;

    // Buttons by name: "hide", "show", "hideall", "showall", "ok", "cancel".
    bool Enabled(std::string_view button) const;
    // False, and nothing, for one that is not enabled or unknown, or when closed.
    bool Press(std::string_view button);
    // A double click: does "hide" or "show" for this row alone. Nothing for a row that isn't there.
    void DoubleClick(bool inToShow, size_t row);
    bool isOpen() const { return open_; }
    // Width of a list's first column.
    static int NameColumnWidth(int listWidth);

  private:
    void Refresh();
    void Add(laPath path);
    void TakePattern();
    void HideRows(bool all);
    void ShowRows(bool all);
    void Apply();
    void Close();

    _LaCanvasData& canvas_;
    std::vector<laPath> paths_;
    bool savedRefresh_;
    bool open_ = true;
};
