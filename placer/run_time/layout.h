// A layout description as rules: how big each item of a window is and where it stands, relative to the window
// and to other items. Items are numbers: 0 is the window, 1 and up its items in order of creation.
//
// The text form is a list of lines in three sections. The first line is the word "MinSizes"; the lines up to
// one that begins with "S" ("Sizes") give the least size of the window, those up to one that begins with "P"
// ("Positions") the sizes, the rest the positions:
//   size      item,(plus),(minus),pixels,nWidths,wideWidths,lines,bars,multiplier,divisor,chain,orientation
//   position  (items),other,pixels,nWidths,wideWidths,lines,bars,alignThem,ofThem,ofOther
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "shared/libcxxutil/result.h"

constexpr size_t Placer_LineLength = 1023;  // longest line, in bytes
constexpr int Placer_BarWidth = 21;         // pixels, the same for all items and fonts

enum PlacerAxis { Placer_Horizontal = 0, Placer_Vertical = 1 };

enum class PlacerEdge { Left, Right, LRCenter, Top, Bottom, Baseline, TBCenter };
constexpr PlacerAxis placer_AxisOf(PlacerEdge edge) {
    return edge < PlacerEdge::Top ? Placer_Horizontal : Placer_Vertical;
}

// A distance in pixels and font measures.
struct PlacerOffset {
    int pixels = 0;
    int nWidths = 0;
    int wideWidths = 0;
    int lines = 0;
    int bars = 0;
};

struct PlacerSizeRule {
    int item = 0;
    std::vector<int> plus, minus;
    PlacerOffset offset;
    int multiplier = 0;
    int divisor = 0;  // 0: no division
    int chain = 1;    // this rule and the chain - 1 behind it are one, worth the largest of them; at least 1
    PlacerAxis axis = Placer_Horizontal;
    bool isVoid = false;  // has no orientation: stands in the list and does nothing
    int line = 0;         // from 1, in the description
};

struct PlacerPositionRule {
    std::vector<int> items;
    int other = 0;
    PlacerOffset offset;
    PlacerEdge alignThem = PlacerEdge::Top;
    PlacerEdge ofThem = PlacerEdge::Top;
    PlacerEdge ofOther = PlacerEdge::Top;
    int line = 0;
};

struct PlacerLayout {
    std::vector<PlacerSizeRule> minSizes, sizes;
    std::vector<PlacerPositionRule> positions;
};

// Reads a description for a window of itemCount numbers, the window's 0 among them. Only the first letters of
// section, orientation and edge words count. Numbers lie within 16 bits, signed; fields left out at the end
// of a line are 0. Fails at the first line that can't be read, with what was read so far in layout.
Result placer_Parse(std::span<const std::string> lines, int itemCount, PlacerLayout& layout);

// The edge that a word means: T top, TB its centre, Bo bottom, other B baseline, R right, LR centre, anything
// else left; nothing at all is top.
PlacerEdge placer_EdgeOf(std::string_view word);

// What an author would want to know of a description that could be read: items ruled twice in one axis,
// groups of no item, items placed against themselves, mixed axes, least sizes of anything but the window.
// Empty when all is well.
std::vector<std::string> placer_Review(const PlacerLayout& layout);
