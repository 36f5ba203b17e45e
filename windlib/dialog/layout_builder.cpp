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

void LayoutBuilder::LeastWidths(std::initializer_list<LayoutSize> widths) {
    leastWidths_.insert(leastWidths_.end(), widths);
}
void LayoutBuilder::LeastHeight(const LayoutSize& height) {
    leastHeights_.push_back(size_line(layout_Window, height, Placer_Vertical));
}
void LayoutBuilder::FirstWidths(std::initializer_list<LayoutSize> widths) {
    firstWidths_.insert(firstWidths_.end(), widths);
}
void LayoutBuilder::FirstHeight(const LayoutSize& height) {
    firstHeights_.push_back(size_line(layout_Window, height, Placer_Vertical));
}
void LayoutBuilder::OnlyHeight(const LayoutSize& height) {
    LeastHeight(height);
    FirstHeight(height);
}

void LayoutBuilder::Width(const std::string& item, const LayoutSize& width) {
    sizes_.push_back(size_line(item, width, Placer_Horizontal));
}
void LayoutBuilder::Height(const std::string& item, const LayoutSize& height) {
    sizes_.push_back(size_line(item, height, Placer_Vertical));
}
void LayoutBuilder::FillWidth(const std::string& item, const LayoutRest& rest) {
    Width(item, rest_of_window(rest));
}
void LayoutBuilder::FillHeight(const std::string& item, const LayoutRest& rest) {
    Height(item, rest_of_window(rest));
}

void LayoutBuilder::Left(const LayoutPlace& place) {
    Tie(inside(place, PlacerEdge::Left, 1));
}
void LayoutBuilder::Right(const LayoutPlace& place) {
    Tie(inside(place, PlacerEdge::Right, -1));
}
void LayoutBuilder::Top(const LayoutPlace& place) {
    Tie(inside(place, PlacerEdge::Top, 1));
}
void LayoutBuilder::Bottom(const LayoutPlace& place) {
    Tie(inside(place, PlacerEdge::Bottom, -1));
}
void LayoutBuilder::RightOf(const LayoutPlace& place) {
    Tie(outside(place, PlacerEdge::Left, PlacerEdge::Right, 1));
}
void LayoutBuilder::LeftOf(const LayoutPlace& place) {
    Tie(outside(place, PlacerEdge::Right, PlacerEdge::Left, -1));
}
void LayoutBuilder::Below(const LayoutPlace& place) {
    Tie(outside(place, PlacerEdge::Top, PlacerEdge::Bottom, 1));
}
void LayoutBuilder::Above(const LayoutPlace& place) {
    Tie(outside(place, PlacerEdge::Bottom, PlacerEdge::Top, -1));
}
void LayoutBuilder::Align(PlacerEdge edge, const LayoutItems& items, const std::string& of) {
    Tie({items, of, 0, edge, edge, edge});
}
void LayoutBuilder::Baseline(const LayoutItems& items, const std::string& of) {
    Align(PlacerEdge::Baseline, items, of);
}
void LayoutBuilder::Middle(const LayoutItems& items, const std::string& of) {
    Align(PlacerEdge::TBCenter, items, of);
}
void LayoutBuilder::Tie(const LayoutTie& tie) {
    places_.push_back(list(tie.items) + "," + reference(tie.of) + "," + numbers({tie.pixels, 0, 0, 0, 0}) +
                      word_of(tie.together) + "," + word_of(tie.theirs) + "," + word_of(tie.others));
}

void LayoutBuilder::InRow(const LayoutItems& items, int gap) {
    for (size_t i = 1; i < items.size(); ++i) RightOf({.items = {items[i]}, .of = items[i - 1], .gap = gap});
}
void LayoutBuilder::TextRow(const LayoutItems& items, const std::string& anchor) {
    InRow(items);
    LayoutItems others = items;
    std::erase(others, anchor);
    if (!others.empty()) Baseline(others, anchor);
}
void LayoutBuilder::Corner(const LayoutItems& items) {
    Bottom({.items = items});
    if (!items.empty()) Right({.items = {items[0]}});
    for (size_t i = 1; i < items.size(); ++i) LeftOf({.items = {items[i]}, .of = items[i - 1]});
}

void LayoutBuilder::NextRow(const std::string& item, int gap) {
    if (rows_.of.empty())
        Top({.items = {item}, .gap = gap});
    else
        Below({.items = {item}, .of = rows_.of.back(), .gap = gap});
    rows_.of.push_back(item);
    rows_.pixels += gap;
}
LayoutSize LayoutBuilder::RowsHeight(int more) const {
    LayoutSize height = rows_;
    height.pixels += more;
    return height;
}

std::vector<std::string> LayoutBuilder::Lines() const {
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
