// Layout lines of a description, made from statements about its items by name. Every statement gives one or a
// few lines; an axis of an item is ruled by one statement only (see placer_Review). The empty name is the
// window.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "placer/run_time/layout.h"

inline constexpr const char* layout_Window = "";

using LayoutItems = std::vector<std::string>;

// A width or a height: sizes of items and measures of the font, added up.
struct LayoutSize {
    LayoutItems of = {};    // items whose sizes count
    LayoutItems less = {};  // items whose sizes are taken off
    int pixels = 0;
    int letters = 0;   // widths of an "n"
    int capitals = 0;  // widths of an "M"
    int lines = 0;     // heights of a line
    int bars = 0;      // widths of a scroll bar
    int times = 1;     // the sum is multiplied by this
    int parts = 1;     // and divided by this then
};

// What an item takes of the window: all but the sizes of other items and the gaps, in pixels.
struct LayoutRest {
    LayoutItems less = {};
    int gaps = 0;
    int parts = 1;  // a half, a third and so on of it
};

// Items against another, each by itself, with pixels between.
struct LayoutPlace {
    LayoutItems items = {};
    std::string of = layout_Window;
    int gap = 8;
};

// Items against another in any way: they line up on the edge together; the group's edge theirs stands so many
// pixels right of or below the edge others of the other item. The three edges are of one axis.
struct LayoutTie {
    LayoutItems items = {};
    std::string of = layout_Window;
    int pixels = 0;
    PlacerEdge together = PlacerEdge::Top;
    PlacerEdge theirs = PlacerEdge::Top;
    PlacerEdge others = PlacerEdge::Top;
};

class LayoutBuilder {
  public:
    // The window is never smaller than this. Of several widths, in one call or more, the largest counts.
    void leastWidths(std::initializer_list<LayoutSize> widths);
    void leastHeight(const LayoutSize& height);
    // The window's size at first; the largest counts.
    void firstWidths(std::initializer_list<LayoutSize> widths);
    void firstHeight(const LayoutSize& height);
    // Both: what does not grow with the window.
    void onlyHeight(const LayoutSize& height);

    // Sizes of items; those without are as big as their texts need.
    void width(const std::string& item, const LayoutSize& width);
    void height(const std::string& item, const LayoutSize& height);
    void fillWidth(const std::string& item, const LayoutRest& rest);
    void fillHeight(const std::string& item, const LayoutRest& rest);

    // At an edge of the window; of may be given to stand inside of an edge of another item.
    void left(const LayoutPlace& place);
    void right(const LayoutPlace& place);
    void top(const LayoutPlace& place);
    void bottom(const LayoutPlace& place);
    // Outside of an edge of another item.
    void rightOf(const LayoutPlace& place);
    void leftOf(const LayoutPlace& place);
    void below(const LayoutPlace& place);
    void above(const LayoutPlace& place);
    // The edges of items and of the other coincide.
    void align(PlacerEdge edge, const LayoutItems& items, const std::string& of);
    void baseline(const LayoutItems& items, const std::string& of);
    void middle(const LayoutItems& items, const std::string& of);  // of their heights
    void tie(const LayoutTie& tie);

    // Side by side: each right of the one before it, from the second on.
    void inRow(const LayoutItems& items, int gap = 8);
    // The same with the text of all on one line with that of the anchor, which is one of them.
    void textRow(const LayoutItems& items, const std::string& anchor);
    // Buttons in the lower right corner, the first one rightmost.
    void corner(const LayoutItems& items);

    // Rows from the top down: the item stands under that of the row before. A row is as high as this item.
    void nextRow(const std::string& item, int gap);
    // All rows with their gaps so far, and more pixels.
    LayoutSize rowsHeight(int more) const;

    // The lines, in the form that the placer reads.
    std::vector<std::string> lines() const;

  private:
    std::vector<LayoutSize> leastWidths_, firstWidths_;
    std::vector<std::string> leastHeights_, firstHeights_;
    std::vector<std::string> sizes_, places_;
    LayoutSize rows_;
};
