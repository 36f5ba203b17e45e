#include "windlib/dialog/layout_builder.h"

#include <algorithm>

namespace {

std::string reference(const std::string& item) {
    return item == layout_Window ? "0" : "@" + item;
}

std::string list(const LayoutItems& items) {
    std::string all;
    for (const std::string& item : items) all += (all.empty() ? "" : ",") + reference(item);
    return "(" + all + ")";
}

std::string numbers(std::initializer_list<int> values) {
    std::string all;
    for (const int value : values) all += std::to_string(value) + ",";
    return all;
}

std::string word_of(PlacerAxis axis) {
    return axis == Placer_Horizontal ? "Horizontal" : "Vertical";
}

const char* word_of(PlacerEdge edge) {
    switch (edge) {
        case PlacerEdge::Left:
            return "Left";
        case PlacerEdge::Right:
            return "Right";
        case PlacerEdge::LRCenter:
            return "LRCenter";
        case PlacerEdge::Top:
            return "Top";
        case PlacerEdge::Bottom:
            return "Bottom";
        case PlacerEdge::Baseline:
            return "Baseline";
        case PlacerEdge::TBCenter:
            return "TBCenter";
    }
    return "";
}

// chain: how many lines, from this one on, make one rule.
std::string size_line(const std::string& item, const LayoutSize& size, PlacerAxis axis, int chain = 1) {
    return reference(item) + "," + list(size.of) + "," + list(size.less) + "," +
           numbers({size.pixels, size.letters, size.capitals, size.lines, size.bars, size.times, size.parts,
                    chain}) +
           word_of(axis);
}

void add_widths(std::vector<std::string>& lines, const std::vector<LayoutSize>& widths) {
    int chain = static_cast<int>(widths.size());
    for (const LayoutSize& width : widths)
        lines.push_back(size_line(layout_Window, width, Placer_Horizontal, chain--));
}

LayoutSize rest_of_window(const LayoutRest& rest) {
    return {.of = {layout_Window}, .less = rest.less, .pixels = -rest.gaps, .parts = rest.parts};
}

LayoutTie inside(const LayoutPlace& place, PlacerEdge edge, int sign) {
    return {place.items, place.of, sign * place.gap, edge, edge, edge};
}
LayoutTie outside(const LayoutPlace& place, PlacerEdge edge, PlacerEdge others, int sign) {
    return {place.items, place.of, sign * place.gap, edge, edge, others};
}

}  // namespace

void LayoutBuilder::leastWidths(std::initializer_list<LayoutSize> widths) {
    leastWidths_.insert(leastWidths_.end(), widths);
}
void LayoutBuilder::leastHeight(const LayoutSize& height) {
    leastHeights_.push_back(size_line(layout_Window, height, Placer_Vertical));
}
void LayoutBuilder::firstWidths(std::initializer_list<LayoutSize> widths) {
    firstWidths_.insert(firstWidths_.end(), widths);
}
void LayoutBuilder::firstHeight(const LayoutSize& height) {
    firstHeights_.push_back(size_line(layout_Window, height, Placer_Vertical));
}
void LayoutBuilder::onlyHeight(const LayoutSize& height) {
    leastHeight(height);
    firstHeight(height);
}

void LayoutBuilder::width(const std::string& item, const LayoutSize& width) {
    sizes_.push_back(size_line(item, width, Placer_Horizontal));
}
void LayoutBuilder::height(const std::string& item, const LayoutSize& height) {
    sizes_.push_back(size_line(item, height, Placer_Vertical));
}
void LayoutBuilder::fillWidth(const std::string& item, const LayoutRest& rest) {
    width(item, rest_of_window(rest));
}
void LayoutBuilder::fillHeight(const std::string& item, const LayoutRest& rest) {
    height(item, rest_of_window(rest));
}

void LayoutBuilder::left(const LayoutPlace& place) {
    tie(inside(place, PlacerEdge::Left, 1));
}
void LayoutBuilder::right(const LayoutPlace& place) {
    tie(inside(place, PlacerEdge::Right, -1));
}
void LayoutBuilder::top(const LayoutPlace& place) {
    tie(inside(place, PlacerEdge::Top, 1));
}
void LayoutBuilder::bottom(const LayoutPlace& place) {
    tie(inside(place, PlacerEdge::Bottom, -1));
}
void LayoutBuilder::rightOf(const LayoutPlace& place) {
    tie(outside(place, PlacerEdge::Left, PlacerEdge::Right, 1));
}
void LayoutBuilder::leftOf(const LayoutPlace& place) {
    tie(outside(place, PlacerEdge::Right, PlacerEdge::Left, -1));
}
void LayoutBuilder::below(const LayoutPlace& place) {
    tie(outside(place, PlacerEdge::Top, PlacerEdge::Bottom, 1));
}
void LayoutBuilder::above(const LayoutPlace& place) {
    tie(outside(place, PlacerEdge::Bottom, PlacerEdge::Top, -1));
}
void LayoutBuilder::align(PlacerEdge edge, const LayoutItems& items, const std::string& of) {
    tie({items, of, 0, edge, edge, edge});
}
void LayoutBuilder::baseline(const LayoutItems& items, const std::string& of) {
    align(PlacerEdge::Baseline, items, of);
}
void LayoutBuilder::middle(const LayoutItems& items, const std::string& of) {
    align(PlacerEdge::TBCenter, items, of);
}
void LayoutBuilder::tie(const LayoutTie& tie) {
    places_.push_back(list(tie.items) + "," + reference(tie.of) + "," + numbers({tie.pixels, 0, 0, 0, 0}) +
                      word_of(tie.together) + "," + word_of(tie.theirs) + "," + word_of(tie.others));
}

void LayoutBuilder::inRow(const LayoutItems& items, int gap) {
    for (size_t i = 1; i < items.size(); ++i) rightOf({.items = {items[i]}, .of = items[i - 1], .gap = gap});
}
void LayoutBuilder::textRow(const LayoutItems& items, const std::string& anchor) {
    inRow(items);
    LayoutItems others = items;
    std::erase(others, anchor);
    if (!others.empty()) baseline(others, anchor);
}
void LayoutBuilder::corner(const LayoutItems& items) {
    bottom({.items = items});
    if (!items.empty()) right({.items = {items[0]}});
    for (size_t i = 1; i < items.size(); ++i) leftOf({.items = {items[i]}, .of = items[i - 1]});
}

void LayoutBuilder::nextRow(const std::string& item, int gap) {
    if (rows_.of.empty())
        top({.items = {item}, .gap = gap});
    else
        below({.items = {item}, .of = rows_.of.back(), .gap = gap});
    rows_.of.push_back(item);
    rows_.pixels += gap;
}
LayoutSize LayoutBuilder::rowsHeight(int more) const {
    LayoutSize height = rows_;
    height.pixels += more;
    return height;
}

std::vector<std::string> LayoutBuilder::lines() const {
    std::vector<std::string> lines = {"MinSizes"};
    const auto add = [&lines](const std::vector<std::string>& more) {
        lines.insert(lines.end(), more.begin(), more.end());
    };
    add_widths(lines, leastWidths_);
    add(leastHeights_);
    lines.emplace_back("Sizes");
    add_widths(lines, firstWidths_);
    add(firstHeights_);
    add(sizes_);
    lines.emplace_back("Positions");
    add(places_);
    return lines;
}
