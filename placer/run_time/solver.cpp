#include "placer/run_time/solver.h"

#include <algorithm>

const char* const placer_CheckFile = "..\\src\\placer\\run_time\\plcset";

namespace {

constexpr const char* sizesContradict = "!(anyleft && !anydone)";
constexpr const char* positionsContradict = "!anyleft || anydone";
constexpr const char* edgesMixed =
    "!(isHorz (pos->ofThem) != isHorz (pos->ofOther) || isHorz (pos->ofThem) != isHorz (pos->alignThem))";
constexpr int buttonSetSpace = 3000;  // each way, where a ButtonSet finds its natural size
constexpr int markWidth = 14;

int held(int64_t value) {
    return static_cast<int>(std::clamp<int64_t>(value, -0x8000, 0x7fff));
}

bool isNear(PlacerEdge edge) {
    return edge == PlacerEdge::Left || edge == PlacerEdge::Top;
}
bool isFar(PlacerEdge edge) {
    return edge == PlacerEdge::Right || edge == PlacerEdge::Bottom || edge == PlacerEdge::Baseline;
}

// Position of an item of extent w in a group of largest extent m, tied to r.
int placeFor(PlacerEdge align, PlacerEdge of, int r, int m, int w) {
    if (isNear(align)) return isNear(of) ? r : isFar(of) ? r - m : r - m / 2;
    if (isFar(align)) {
        if (isFar(of)) return r - w;
        // Tied at its middle the group ends up half an extent off; descriptions rely on it.
        return isNear(of) ? r + m - w : r + m - w / 2;
    }
    if (isNear(of)) return r + m / 2 - w / 2;
    return isFar(of) ? r - m / 2 - w / 2 : r - w / 2;
}

}  // namespace

PlacerWindow::PlacerWindow(PlacerLayout layout, std::vector<PlacerItem> all)
    : items(std::move(all)), layout_(std::move(layout)) {
    if (items.empty()) items.emplace_back();
    entries_.resize(items.size());
    for (PlacerItem& item : items)
        if (item.container < 0 || static_cast<size_t>(item.container) >= items.size()) item.container = 0;
    for (size_t i = 0; i < layout_.sizes.size();) {
        const PlacerSizeRule& rule = layout_.sizes[i];
        if (!rule.isVoid) entries_[static_cast<size_t>(rule.item)].sizeRuled[rule.axis] = true;
        i += rule.isVoid ? 1 : static_cast<size_t>(rule.chain);
    }
    for (const PlacerPositionRule& rule : layout_.positions)
        for (const int item : rule.items)
            entries_[static_cast<size_t>(item)].atRuled[placer_AxisOf(rule.ofThem)] = true;
}

PlacerOutcome PlacerWindow::resized(int width, int height) {
    PlacerOutcome same;
    same.minimum = minimum_;
    if (items[0].width == held(width) && items[0].height == held(height)) return same;
    items[0].width = held(width);
    items[0].height = held(height);
    return solve();
}

PlacerOutcome PlacerWindow::relayout() {
    sizeFromLayout_ = true;
    return solve();
}

PlacerOutcome PlacerWindow::solve() {
    PlacerOutcome outcome;
    const PlacerSize before{items[0].width, items[0].height};
    if (sizePass(outcome)) positionPass(outcome);
    enlarging_ = sizeFromLayout_ = false;
    outcome.windowChanged = before != PlacerSize{items[0].width, items[0].height};
    outcome.minimum = minimum_;
    return outcome;
}

int64_t PlacerWindow::offsetOf(const PlacerOffset& offset, int item) const {
    const PlacerMetrics& m = items[static_cast<size_t>(item)].metrics;
    const auto times = [](int count, int measure) { return int64_t{count} * held(measure); };
    return offset.pixels + times(offset.bars, Placer_BarWidth) + times(offset.lines, m.lineHeight) +
           times(offset.nWidths, m.nWidth) + times(offset.wideWidths, m.wideWidth);
}

bool PlacerWindow::sizePass(PlacerOutcome& outcome) {
    for (int depth = 0;; ++depth) {
        do {
            startSizes();
            if (!sweepSizes(outcome)) return false;
        } while (belowMinimum());
        entries_[0].size[0] = held(entries_[0].size[0] + 2 * inset());
        entries_[0].size[1] = held(entries_[0].size[1] + 2 * inset() + topReserve());
        if (!tellSizes() || depth > 1) break;
    }
    items[0].width = entries_[0].size[0];
    items[0].height = entries_[0].size[1];
    return true;
}

PlacerSize PlacerWindow::naturalSize(int item) {
    const PlacerItem& facts = items[static_cast<size_t>(item)];
    switch (facts.kind) {
        case PlacerKind::Button:
            return {facts.content.width + (facts.marked ? markWidth : 0), facts.content.height};
        case PlacerKind::Label:
        case PlacerKind::PullDown:
            return facts.content;
        case PlacerKind::TextLine:
            return {facts.width, facts.content.height};
        case PlacerKind::ButtonSet:
            return hooks.arrange ? hooks.arrange(item, {buttonSetSpace, buttonSetSpace}) : facts.content;
        case PlacerKind::Other:
            break;
    }
    return {facts.width, facts.height};
}

void PlacerWindow::startSizes() {
    const bool given = !sizeFromLayout_ || enlarging_;
    Entry& window = entries_[0];
    window.size[0] = held(items[0].width - 2 * inset());
    window.size[1] = held(items[0].height - 2 * inset() - topReserve());
    for (int axis = 0; axis < 2; ++axis) window.sizeKnown[axis] = given || !window.sizeRuled[axis];
    for (size_t i = 1; i < items.size(); ++i) {
        const PlacerSize natural = naturalSize(static_cast<int>(i));
        entries_[i].size[0] = held(natural.width);
        entries_[i].size[1] = held(natural.height);
        for (int axis = 0; axis < 2; ++axis) entries_[i].sizeKnown[axis] = !entries_[i].sizeRuled[axis];
    }
}

// A chain is one rule; lines of it that are void hold nothing up and add nothing.
bool PlacerWindow::ready(const std::vector<PlacerSizeRule>& rules, size_t first) const {
    const PlacerAxis axis = rules[first].axis;
    const auto known = [&](int item) { return entries_[static_cast<size_t>(item)].sizeKnown[axis]; };
    const size_t end = std::min(first + static_cast<size_t>(rules[first].chain), rules.size());
    for (size_t i = first; i < end; ++i) {
        if (rules[i].isVoid) continue;
        if (!std::all_of(rules[i].plus.begin(), rules[i].plus.end(), known)) return false;
        if (!std::all_of(rules[i].minus.begin(), rules[i].minus.end(), known)) return false;
    }
    return true;
}

int PlacerWindow::valueOf(const std::vector<PlacerSizeRule>& rules, size_t first) const {
    const PlacerAxis axis = rules[first].axis;
    const size_t end = std::min(first + static_cast<size_t>(rules[first].chain), rules.size());
    int64_t largest = INT64_MIN;
    for (size_t i = first; i < end; ++i) {
        const PlacerSizeRule& rule = rules[i];
        if (rule.isVoid) continue;
        int64_t value = offsetOf(rule.offset, rule.item);
        for (const int item : rule.plus) value += entries_[static_cast<size_t>(item)].size[axis];
        for (const int item : rule.minus) value -= entries_[static_cast<size_t>(item)].size[axis];
        value *= rule.multiplier;
        if (rule.divisor != 0) value /= rule.divisor;
        largest = std::max(largest, value);
    }
    return held(largest);
}

bool PlacerWindow::sweepSizes(PlacerOutcome& outcome) {
    const std::vector<PlacerSizeRule>& rules = layout_.sizes;
    for (bool anyLeft = true; anyLeft;) {
        anyLeft = false;
        bool anyDone = false;
        for (size_t i = 0; i < rules.size();) {
            const size_t first = i;
            const PlacerSizeRule& rule = rules[first];
            i += rule.isVoid ? 1 : static_cast<size_t>(rule.chain);
            Entry& entry = entries_[static_cast<size_t>(rule.item)];
            if (rule.isVoid || entry.sizeKnown[rule.axis]) continue;
            if (!ready(rules, first)) {
                anyLeft = true;
                continue;
            }
            entry.size[rule.axis] = valueOf(rules, first);
            entry.sizeKnown[rule.axis] = anyDone = true;
        }
        if (anyLeft && !anyDone) {
            outcome.check = sizesContradict;
            return false;
        }
    }
    return true;
}

// Computes the least size; a window below it is given that size, and its items must be sized anew.
bool PlacerWindow::belowMinimum() {
    if (enlarging_ || layout_.minSizes.empty()) return false;
    int least[2] = {0, 0};
    for (size_t i = 0; i < layout_.minSizes.size();) {
        const PlacerSizeRule& rule = layout_.minSizes[i];
        if (!rule.isVoid && rule.item == 0)
            least[rule.axis] = std::max(least[rule.axis], valueOf(layout_.minSizes, i));
        i += rule.isVoid ? 1 : static_cast<size_t>(rule.chain);
    }
    minimum_ = {least[0], least[1]};
    const int width = held(entries_[0].size[0] + 2 * inset());
    const int height = held(entries_[0].size[1] + 2 * inset() + topReserve());
    if (width >= least[0] && height >= least[1]) return false;
    enlarging_ = sizeFromLayout_ = true;
    items[0].width = std::max(width, least[0]);
    items[0].height = std::max(height, least[1]);
    return true;
}

// True when an item took another size than the one it was told.
bool PlacerWindow::tellSizes() {
    bool disagreed = false;
    for (size_t i = 1; i < items.size(); ++i) {
        PlacerItem& item = items[i];
        Entry& entry = entries_[i];
        const int number = static_cast<int>(i);
        const PlacerSize told{entry.size[0], entry.size[1]};
        if (item.kind == PlacerKind::ButtonSet && hooks.arrange && !entry.sizeRuled[item.setVertical ? 1 : 0])
            hooks.arrange(number, told);
        if (told == PlacerSize{item.width, item.height}) continue;
        const PlacerSize taken = hooks.resize ? hooks.resize(number, told) : told;
        disagreed |= taken != told;
        item.width = entry.size[0] = held(taken.width);
        item.height = entry.size[1] = held(taken.height);
    }
    return disagreed;
}

bool PlacerWindow::positionPass(PlacerOutcome& outcome) {
    startPositions();
    if (!sweepPositions(outcome)) return false;
    moveItems();
    placedBefore_ = true;
    lastLineHeight_ = items[0].metrics.lineHeight;
    lastInset_ = inset();
    return true;
}

void PlacerWindow::startPositions() {
    const int insetChange = placedBefore_ ? inset() - lastInset_ : 0;
    const int lineChange = placedBefore_ && topLevel ? items[0].metrics.lineHeight - lastLineHeight_ : 0;
    entries_[0].atKnown[0] = entries_[0].atKnown[1] = true;
    for (size_t i = 1; i < items.size(); ++i) {
        const PlacerItem& item = items[i];
        const int shift[2] = {item.container == 0 ? insetChange : 0,
                              item.container == 0 ? insetChange + lineChange : 0};
        const int present[2] = {item.x + item.originX, item.y + item.originY};
        for (int axis = 0; axis < 2; ++axis) {
            entries_[i].atKnown[axis] = !entries_[i].atRuled[axis];
            entries_[i].at[axis] = held(present[axis] + (entries_[i].atRuled[axis] ? 0 : shift[axis]));
        }
    }
}

int PlacerWindow::baseline(int number) const {
    const PlacerItem& item = items[static_cast<size_t>(number)];
    if (number == 0) return -1;
    switch (item.kind) {
        case PlacerKind::Label:
            return item.metrics.ascent;
        case PlacerKind::TextLine:
            return item.metrics.ascent + 3;
        case PlacerKind::Button:
            return item.metrics.ascent + 4;
        case PlacerKind::ButtonSet:
            return item.metrics.ascent + item.setBaseline;
        case PlacerKind::Other:
        case PlacerKind::PullDown:
            break;
    }
    return -1;
}

int PlacerWindow::extent(int item, PlacerAxis axis, bool toBaseline) const {
    if (toBaseline)
        if (const int distance = baseline(item); distance >= 0) return distance;
    return entries_[static_cast<size_t>(item)].size[axis];
}

// The place on the other item that the rule's group is tied to.
int PlacerWindow::reference(PlacerPositionRule& rule) {
    const PlacerAxis axis = placer_AxisOf(rule.ofThem);
    const Entry& other = entries_[static_cast<size_t>(rule.other)];
    const bool inside = items[static_cast<size_t>(rule.items[0])].container == rule.other;
    int64_t r = inside ? 0 : other.at[axis];
    if (rule.ofOther == PlacerEdge::Baseline) {
        if (const int distance = baseline(rule.other); distance >= 0) {
            r += distance;
        } else {
            rule.ofOther = PlacerEdge::Bottom;
        }
    }
    const bool far = rule.ofOther == PlacerEdge::Right || rule.ofOther == PlacerEdge::Bottom;
    if (far) r += other.size[axis];
    if (rule.ofOther == PlacerEdge::LRCenter || rule.ofOther == PlacerEdge::TBCenter)
        r += other.size[axis] / 2;
    if (rule.other == 0) {
        if (far) r -= inset();
        if (isNear(rule.ofOther)) r += inset();
        if (rule.ofOther == PlacerEdge::Top) r += topReserve();
    }
    return held(r + offsetOf(rule.offset, rule.other));
}

void PlacerWindow::place(const PlacerPositionRule& rule, int r) {
    const PlacerAxis axis = placer_AxisOf(rule.ofThem);
    const bool toBaseline = rule.alignThem == PlacerEdge::Baseline || rule.ofThem == PlacerEdge::Baseline;
    int largest = 0;
    for (const int item : rule.items) largest = std::max(largest, extent(item, axis, toBaseline));
    for (const int item : rule.items) {
        Entry& entry = entries_[static_cast<size_t>(item)];
        entry.at[axis] =
            held(placeFor(rule.alignThem, rule.ofThem, r, largest, extent(item, axis, toBaseline)));
        entry.atKnown[axis] = true;
    }
}

bool PlacerWindow::sweepPositions(PlacerOutcome& outcome) {
    for (bool anyLeft = true; anyLeft;) {
        anyLeft = false;
        bool anyDone = false;
        for (PlacerPositionRule& rule : layout_.positions) {
            if (rule.items.empty()) continue;
            const PlacerAxis axis = placer_AxisOf(rule.ofThem);
            if (axis != placer_AxisOf(rule.ofOther) || axis != placer_AxisOf(rule.alignThem)) {
                outcome.check = edgesMixed;
                return false;
            }
            const size_t lead = static_cast<size_t>(rule.items[0]);
            if (entries_[lead].atKnown[axis]) continue;
            if (!entries_[static_cast<size_t>(rule.other)].atKnown[axis] &&
                items[lead].container != rule.other) {
                anyLeft = true;
                continue;
            }
            place(rule, reference(rule));
            anyDone = true;
        }
        if (anyLeft && !anyDone) {
            outcome.check = positionsContradict;
            return false;
        }
    }
    return true;
}

void PlacerWindow::moveItems() {
    for (size_t i = 1; i < items.size(); ++i) {
        PlacerItem& item = items[i];
        const int dx = held(entries_[i].at[0] - item.originX) - item.x;
        const int dy = held(entries_[i].at[1] - item.originY) - item.y;
        if (dx == 0 && dy == 0) continue;
        item.x += dx;
        item.y += dy;
        if (hooks.move) hooks.move(static_cast<int>(i), dx, dy);
    }
}
