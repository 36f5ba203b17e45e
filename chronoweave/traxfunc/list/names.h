// The name column beside the picture: the rows of the object list, aligned with the lanes by the row height
// and the vertical scroll. Used by the window and by picture files. What is selected, expanded and searched
// is the state of the list; here it meets the pointer, the keyboard and the drawing.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/view.h"
#include "windlib/lagraph/graph.h"

// y is a pixel row of the column, x a pixel column.
class laNames {
  public:
    // All outlive it.
    laNames(TraxTaskList& objects, const LaLooks& looks, const LaView& view, LaGraph& graph)
        : objects_(objects), looks_(looks), view_(view), graph_(graph) {}

    // In a window selected rows are drawn in the selection's colours, and the current row with a frame while
    // the names have the keyboard; pictures have none of this.
    enum class Look { Window, Picture };
    // Draws the rows that meet the column of this width and height, whose top left corner is the surface's
    // origin. Texts that don't fit end in "…".
    void Draw(Surface& surface, int width, int height, Look look = Look::Window) const;
    // Width that shows every name whole, from 100 to most pixels: of the rows that a column of this height
    // shows, or of all.
    int Width(Surface& surface, int most, std::optional<int> height = {}) const;
    // The row there, null below the last.
    MslObjectEntry* RowAt(int y) const;
    // What is seen of a row: from its first to behind its last pixel row; empty when nothing is.
    struct Band {
        int top = 0, end = 0;
    };
    Band BandOf(const MslObjectEntry& entry) const;
    // True when x hits the expand mark of the row.
    bool HitsMark(const MslObjectEntry& entry, int x) const;

    // A click with its keys: opens or closes the group on whose mark it falls, else selects; the second of a
    // double click opens the object's window, or the group. False below the last row, where nothing happens.
    // All of these may paint.
    bool Click(int x, int y, int clicks, bool control, bool shift);
    // The pointer, held since a click, came to a pixel row.
    void DragTo(int y);
    // A right click selects the row alone unless it is selected. The row, null below the last; its menu,
    // which is about Selected, is the caller's.
    MslObjectEntry* RightClick(int y);
    // Selected rows from the top.
    std::vector<MslObjectEntry*> Selected() const { return objects_.SelectedEntries(); }
    void ClearSelection();
    // What the row is, for a tool tip; empty below the last.
    std::string Tip(int y) const;
    // A key while the names have the keyboard (see MScrollList::Key); the picture scrolls with the current
    // row. False for a key that means nothing here.
    bool Key(MslKey key, bool control, bool shift);
    // Typing searches the names, with what was typed on the message line: text typed, a character taken back
    // (false while there is no search), and the end.
    void Type(std::string_view typed);
    bool Backspace();
    void EndSearch();
    // The names got or lost the keyboard, which shows in a window.
    void Focus(bool focused);

  private:
    template <class Work>
    void WithList(const Work& work);
    int TextLeft(const MslObjectEntry& entry) const;
    std::string ShownText(const MslObjectEntry& entry) const;
    int TopOf(const MslObjectEntry& entry) const;
    void DrawRow(Surface& surface, const MslObjectEntry& entry, int top, int width, Look look) const;
    void DrawPinned(Surface& surface, int width, int height, Look look) const;
    void DrawCurrent(Surface& surface, int width) const;

    TraxTaskList& objects_;
    const LaLooks& looks_;
    const LaView& view_;
    LaGraph& graph_;
};

// The text cut at a character so that it and "…" fit; the whole text when it fits.
std::string laNames_Elide(Surface& surface, std::string_view text, int width);
