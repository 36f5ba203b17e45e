#include "chronoweave/traxfunc/icon_walk.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw_items.h"

int laIcons_LeadingColumns(uint64_t scrollPosition) {
    return static_cast<int>((laIconTile - scrollPosition % laIconTile) % laIconTile);
}

laIconWalk::laIconWalk(const _LaCanvasData& canvas, const laItem_Line& lane, const laTimeScale& scale,
                       int left, int right)
    : canvas_(canvas), lane_(lane), scale_(scale), markWidth_(icon_Width(canvas.overlapIcon)) {
    const int reach = std::max(canvas.maxIconWidth, markWidth_) + 2;
    const int leading = laIcons_LeadingColumns(canvas.scrollPosition);
    const int wanted = left - reach - leading;  // columns behind the first tile border
    const int start = wanted < 0 ? 0 : leading + wanted / laIconTile * laIconTile;
    const double from = std::max(canvas.viewLow, scale.toTime(start - 1));
    const std::vector<double>& times = lane.iconTimes;
    at_ = static_cast<size_t>(std::lower_bound(times.begin(), times.end(), from) - times.begin());
    while (at_ < times.size() && Column(at_) < start) ++at_;
    last_ = std::min(canvas.viewHigh, scale.toTime(right + reach));
}

void laIconWalk::BeginTile(int x) {
    const uint64_t position = canvas_.scrollPosition + static_cast<uint64_t>(x);
    tileEnd_ = x + laIconTile - static_cast<int>(position % laIconTile);
    nextFree_ = -1;
    overlapped_ = false;
    lastLeft_ = lastRight_ = -1000;
}

bool laIconWalk::Next(laShownIcon& shown) {
    const std::vector<double>& times = lane_.iconTimes;
    while (at_ < times.size() && times[at_] <= last_) {
        const LaEventLook& look = canvas_.eventLooks[lane_.iconEvents[at_]];
        const int x = Column(at_);
        if (x >= tileEnd_) BeginTile(x);
        shown = {at_++, x, look.icon, false, x - look.width / 2, -1};
        const bool seen = look.shown && (canvas_.newTrv ? BySpace(look, shown) : ByRectangles(look, shown));
        SkipHidden();
        if (seen) return true;
    }
    return false;
}

bool laIconWalk::BySpace(const LaEventLook& look, laShownIcon& shown) {
    if (shown.x > nextFree_) {
        nextFree_ = shown.x + look.width / 2;
        overlapped_ = false;
        return true;
    }
    if (look.important) {
        // Nothing is to cover it: neither a mark nor the next icon.
        nextFree_ = shown.x + look.width;
        overlapped_ = true;
        return true;
    }
    if (overlapped_) return false;
    const bool marked = canvas_.overlapIcon != NoIcon;
    nextFree_ =
        std::max(nextFree_, shown.x + std::max(look.width, marked ? markWidth_ : canvas_.maxIconWidth) / 2);
    overlapped_ = true;
    shown.mark = true;
    shown.icon = canvas_.overlapIcon;
    return marked;
}

bool laIconWalk::ByRectangles(const LaEventLook& look, laShownIcon& shown) {
    const int left = shown.left, right = left + look.width;
    if (left >= lastRight_ || look.important) {
        lastLeft_ = left;
        lastRight_ = right;
        return true;
    }
    if (lastLeft_ >= left || lastRight_ >= right) return false;
    shown.visibleFrom = lastRight_;
    shown.mark = canvas_.overlapIcon != NoIcon;
    if (shown.mark) shown.icon = canvas_.overlapIcon;
    return true;
}

// The rest of a cluster shows nothing, unless something important is in it.
void laIconWalk::SkipHidden() {
    if (!overlapped_ || canvas_.anyImportantEvent) return;
    at_ = laPaint_FirstRightOf(at_, lane_.iconTimes.size(), std::min(nextFree_, tileEnd_ - 1),
                               [&](size_t i) { return Column(i); });
}

laIconGroup laIcons_Group(const _LaCanvasData& canvas, const laItem_Line& lane, size_t number) {
    laIconGroup group{number, number + 1};
    if (number >= lane.iconTimes.size()) return {number, number};
    const laTimeScale scale(canvas);
    const int x = scale.toPixel(lane.iconTimes[number]);
    laIconWalk walk(canvas, lane, scale, x, x + laIconTile);
    laShownIcon shown;
    bool found = false;
    while (walk.Next(shown)) {
        if (found) {
            group.end = shown.number;
            return group;
        }
        found = shown.number == number;
    }
    if (!found) return group;
    // The last one stands for the rest of its tile; a visible event behind that would have been met.
    const double until = std::min(canvas.viewHigh, scale.toTime(x + laIconTile));
    const auto end = std::upper_bound(lane.iconTimes.begin(), lane.iconTimes.end(), until);
    group.end = std::max(group.end, static_cast<size_t>(end - lane.iconTimes.begin()));
    return group;
}
