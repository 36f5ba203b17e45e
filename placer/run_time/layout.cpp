#include "placer/run_time/layout.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// The fields of one line, taken off from the left.
class LineCursor {
  public:
    LineCursor(std::string_view text, int line, int itemCount, std::string& error)
        : rest_(text), line_(line), itemCount_(itemCount), error_(error) {}

    std::string_view word() {
        const size_t comma = std::min(rest_.find(','), rest_.size());
        const std::string_view field = text_trim(rest_.substr(0, comma));
        rest_.remove_prefix(std::min(comma + 1, rest_.size()));
        return field;
    }
    int number() { return toNumber(word()); }
    int item() { return checkedItem(word()); }
    // A list in parentheses; a bare number is a list of one.
    std::vector<int> list() {
        std::vector<int> items;
        rest_ = text_trim(rest_);
        if (!rest_.starts_with('(')) {
            if (const std::string_view field = word(); !field.empty()) items.push_back(checkedItem(field));
            return items;
        }
        const size_t end = rest_.find(')');
        if (end == std::string_view::npos) {
            fail(gen_format("List without an end on line %d", line_));
            rest_ = {};
            return items;
        }
        std::string_view inside = text_trim(rest_.substr(1, end - 1));
        rest_.remove_prefix(end + 1);
        word();  // up to the comma behind the list
        while (!inside.empty()) {
            const size_t comma = std::min(inside.find(','), inside.size());
            items.push_back(checkedItem(text_trim(inside.substr(0, comma))));
            inside.remove_prefix(std::min(comma + 1, inside.size()));
        }
        return items;
    }
    PlacerOffset offset() {
        PlacerOffset o;
        o.pixels = number();
        o.nWidths = number();
        o.wideWidths = number();
        o.lines = number();
        o.bars = number();
        return o;
    }

  private:
    void fail(std::string text) {
        if (error_.empty()) error_ = std::move(text);
    }
    int toNumber(std::string_view field) {
        if (field.empty()) return 0;
        std::string_view digits = field;
        if (digits.starts_with('+')) digits.remove_prefix(1);
        int16_t value = 0;
        const auto [end, code] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (code != std::errc() || end != digits.data() + digits.size())
            fail(gen_format("\"%s\" is no number of 16 bits on line %d", std::string(field).c_str(), line_));
        return value;
    }
    int checkedItem(std::string_view field) {
        const int item = toNumber(field);
        if (item >= 0 && item < itemCount_) return item;
        fail(gen_format("Item number out of bounds (%d) on line %d", item, line_));
        return 0;
    }

    std::string_view rest_;
    int line_;
    int itemCount_;
    std::string& error_;
};

PlacerSizeRule parseSize(LineCursor fields, int line) {
    PlacerSizeRule rule;
    rule.line = line;
    rule.item = fields.item();
    rule.plus = fields.list();
    rule.minus = fields.list();
    rule.offset = fields.offset();
    rule.multiplier = fields.number();
    rule.divisor = fields.number();
    rule.chain = std::max(fields.number(), 1);
    const std::string_view orientation = fields.word();
    rule.isVoid = orientation.empty();
    rule.axis = orientation.starts_with('H') ? Placer_Horizontal : Placer_Vertical;
    return rule;
}

PlacerPositionRule parsePosition(LineCursor fields, int line, std::string& error) {
    PlacerPositionRule rule;
    rule.line = line;
    rule.items = fields.list();
    rule.other = fields.item();
    rule.offset = fields.offset();
    rule.alignThem = placer_EdgeOf(fields.word());
    rule.ofThem = placer_EdgeOf(fields.word());
    rule.ofOther = placer_EdgeOf(fields.word());
    for (const int item : rule.items)
        if (item == 0 && error.empty()) error = gen_format("Item number out of bounds (0) on line %d", line);
    return rule;
}

bool contains(const std::vector<int>& items, int item) {
    return std::find(items.begin(), items.end(), item) != items.end();
}

void reviewSizes(const std::vector<PlacerSizeRule>& rules, std::vector<std::string>& notes) {
    std::map<std::pair<int, int>, int> ruled;
    for (size_t i = 0; i < rules.size();) {
        const PlacerSizeRule& first = rules[i];
        const size_t end =
            first.isVoid ? i + 1 : std::min(i + static_cast<size_t>(first.chain), rules.size());
        for (; i < end; ++i)
            if (contains(rules[i].plus, first.item) || contains(rules[i].minus, first.item))
                notes.push_back(
                    gen_format("Item %d is not a valid base on line %d", first.item, rules[i].line));
        if (first.isVoid || ++ruled[{first.item, first.axis}] != 2) continue;
        // The wording is kept as it is known.
        notes.push_back(gen_format(first.axis == Placer_Vertical
                                       ? "Item %d vertically sized twice on line %d"
                                       : "Item horizontally %d sized twice on line %d",
                                   first.item, first.line));
    }
}

}  // namespace

PlacerEdge placer_EdgeOf(std::string_view word) {
    if (word.empty()) return PlacerEdge::Top;
    const char second = word.size() > 1 ? word[1] : '\0';
    switch (word[0]) {
        case 'T':
            return second == 'B' ? PlacerEdge::TBCenter : PlacerEdge::Top;
        case 'B':
            return second == 'o' ? PlacerEdge::Bottom : PlacerEdge::Baseline;
        case 'R':
            return PlacerEdge::Right;
        case 'L':
            return second == 'R' ? PlacerEdge::LRCenter : PlacerEdge::Left;
        default:
            return PlacerEdge::Left;
    }
}

Result placer_Parse(std::span<const std::string> lines, int itemCount, PlacerLayout& layout) {
    layout = {};
    std::string error;
    enum { MinSizes, Sizes, Positions } section = MinSizes;
    for (size_t i = 1; i < lines.size() && error.empty(); ++i) {  // line 0 is the first section's word
        const std::string& text = lines[i];
        const int line = static_cast<int>(i) + 1;
        if (text.size() > Placer_LineLength) {
            error = gen_format("Line %d is longer than %zu characters", line, Placer_LineLength);
        } else if (section == MinSizes && text.starts_with('S')) {
            section = Sizes;
        } else if (section == Sizes && text.starts_with('P')) {
            section = Positions;
        } else if (section == Positions) {
            layout.positions.push_back(parsePosition({text, line, itemCount, error}, line, error));
        } else {
            (section == Sizes ? layout.sizes : layout.minSizes)
                .push_back(parseSize({text, line, itemCount, error}, line));
        }
    }
    return error.empty() ? Result() : Result::failure(std::move(error));
}

std::vector<std::string> placer_Review(const PlacerLayout& layout) {
    std::vector<std::string> notes;
    for (const PlacerSizeRule& rule : layout.minSizes)
        if (!rule.isVoid && rule.item != 0)
            notes.emplace_back("Minimum size may only be specified for the dialog box itself");
    reviewSizes(layout.minSizes, notes);
    reviewSizes(layout.sizes, notes);
    std::map<std::pair<int, int>, int> placed;
    for (const PlacerPositionRule& rule : layout.positions) {
        const PlacerAxis axis = placer_AxisOf(rule.ofThem);
        if (rule.items.empty()) notes.push_back(gen_format("Nothing to position on line %d", rule.line));
        if (axis != placer_AxisOf(rule.ofOther) || axis != placer_AxisOf(rule.alignThem))
            notes.push_back(gen_format("Alignment specification invalid (mixed mode) on line %d", rule.line));
        if (contains(rule.items, rule.other))
            notes.push_back(gen_format("Item %d is not a valid base on line %d", rule.other, rule.line));
        for (const int item : rule.items)
            if (++placed[{item, axis}] == 2)
                notes.push_back(gen_format(axis == Placer_Vertical
                                               ? "Item %d vertically positioned twice on line %d"
                                               : "Item %d horizontally positioned twice on line %d",
                                           item, rule.line));
    }
    return notes;
}
