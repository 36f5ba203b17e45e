#include "chronoweave/traxfunc/draw/icon_walk.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/columns.h"

laSpaceRule::Shows laSpaceRule::Step(const LaLooks& looks, const LaEventLook& look, int x) {
    if (x > nextFree) {
        nextFree = x + look.width / 2;
        overlapped = false;
        return Own;
    }
    if (look.important) {
        // Nothing is to cover it: neither a mark nor the next icon.
        nextFree = x + look.width;
        overlapped = true;
        return Own;
    }
    if (overlapped) return Nothing;
    const bool marked = looks.overlapIcon != NoIcon;
    const int width = std::max(look.width, marked ? icon_Width(looks.overlapIcon) : looks.maxIconWidth);
    nextFree = std::max(nextFree, x + width / 2);
    overlapped = true;
    return marked ? Mark : Nothing;
}

laIconWalk::laIconWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, int right)
    : scene_(scene), lane_(lane), scale_(scale) {
    const std::vector<double>& times = lane.iconTimes;
    at_ =
        static_cast<size_t>(std::lower_bound(times.begin(), times.end(), scene.view.viewLow) - times.begin());
    last_ = std::min(scene.view.viewHigh, scale.ToTime(right + scene.looks.maxIconWidth + 2));
}

bool laIconWalk::Next(laShownIcon& shown) {
    const std::vector<double>& times = lane_.iconTimes;
    const auto column = [&](size_t i) { return scale_.ToPixel(times[i]); };
    while (at_ < times.size() && times[at_] <= last_) {
        const LaEventLook& look = scene_.looks.eventLooks[lane_.iconEvents[at_]];
        bool seen = false;
        if (look.shown) {
            const int x = column(at_);
            shown = {at_, x, look.icon, false, x - look.width / 2, -1};
            seen = scene_.options.newTrv ? BySpace(look, shown) : ByRectangles(look, shown);
        }
        ++at_;
        // The rest of a cluster shows nothing, unless something important is in it.
        if (space_.overlapped && !scene_.looks.anyImportantEvent)
            at_ = laPaint_FirstRightOf(at_, times.size(), space_.nextFree, column);
        if (seen) return true;
    }
    return false;
}

bool laIconWalk::BySpace(const LaEventLook& look, laShownIcon& shown) {
    const laSpaceRule::Shows shows = space_.Step(scene_.looks, look, shown.x);
    shown.mark = shows == laSpaceRule::Mark;
    if (shown.mark) shown.icon = scene_.looks.overlapIcon;
    return shows != laSpaceRule::Nothing;
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
    shown.mark = scene_.looks.overlapIcon != NoIcon;
    if (shown.mark) shown.icon = scene_.looks.overlapIcon;
    return true;
}

laIconGroup laIcons_Group(const laScene& scene, const laItem_Line& lane, size_t number) {
    const laTimeScale scale = scene.scale();
    laIconWalk walk(scene, lane, scale, scene.graph.width);
    bool found = false;
    for (laShownIcon shown; walk.Next(shown);) {
        if (found) return {number, shown.number};
        if (shown.number > number) return {number, number + 1};
        found = shown.number == number;
    }
    // The last one shown stands for the rest of the view.
    const auto end = std::upper_bound(lane.iconTimes.begin(), lane.iconTimes.end(), scene.view.viewHigh);
    return {number, found ? static_cast<size_t>(end - lane.iconTimes.begin()) : number + 1};
}

namespace {

// The overlap rule walking along one lane.
class SpaceWalk {
  public:
    SpaceWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, double low)
        : scene_(scene),
          lane_(lane),
          scale_(scale),
          at_(static_cast<size_t>(std::lower_bound(lane.iconTimes.begin(), lane.iconTimes.end(), low) -
                                  lane.iconTimes.begin())) {}

    bool done() const { return at_ >= lane_.iconTimes.size(); }
    size_t at() const { return at_; }
    double time() const { return lane_.iconTimes[at_]; }
    int column() const { return scale_.ToPixel(time()); }
    void Step() {
        const LaEventLook& look = scene_.looks.eventLooks[lane_.iconEvents[at_]];
        if (look.shown) rule_.Step(scene_.looks, look, column());
        ++at_;
        if (rule_.overlapped && !scene_.looks.anyImportantEvent)
            at_ = laPaint_FirstRightOf(at_, lane_.iconTimes.size(), rule_.nextFree,
                                       [&](size_t i) { return scale_.ToPixel(lane_.iconTimes[i]); });
    }
    // Both are before the same icon, and nothing from it on can differ.
    bool Meets(const SpaceWalk& other) const {
        if (at_ != other.at_) return false;
        if (done()) return true;
        const int x = column();
        return (x > rule_.nextFree && x > other.rule_.nextFree) ||
               (rule_.nextFree == other.rule_.nextFree && rule_.overlapped == other.rule_.overlapped);
    }

  private:
    const laScene& scene_;
    const laItem_Line& lane_;
    const laTimeScale& scale_;
    size_t at_;
    laSpaceRule rule_;
};

// The column, counted from the earlier view, at which the walks of two views fall together; 0 when they are
// never apart.
int settle_lane(const laScene& scene, const laItem_Line& lane, double earlier, double later, int limit) {
    const laTimeScale scale(earlier, 1e300, scene.view.pixelsPerUnit, scene.graph.width);
    SpaceWalk first(scene, lane, scale, earlier), second(scene, lane, scale, later);
    while (!first.done() && first.time() < later) first.Step();
    int column = 0;
    while (!first.Meets(second) && column < limit) {
        SpaceWalk& behind = second.done() || (!first.done() && first.at() <= second.at()) ? first : second;
        column = behind.column() + 1;
        behind.Step();
    }
    return column;
}

}  // namespace

int laIcons_SettleColumn(const laScene& scene, double oldLow, double newLow, int shift, int limit) {
    if (!scene.options.newTrv) return limit;  // the other rule looks back without end
    const int top = scene.view.verticalOffset - scene.looks.rowHeight - scene.looks.maxExtent;
    const int bottom =
        scene.view.verticalOffset + scene.graph.height + scene.looks.rowHeight + scene.looks.maxExtent;
    const int offset = newLow > oldLow ? shift : 0;  // of the new view in the earlier one
    int settled = 0;
    for (uint32_t i = 0; i < scene.items.lanes.size() && settled < limit; ++i) {
        const laItem_Line& lane = scene.items.lanes[i];
        if (lane.hidden || lane.y < top || lane.y > bottom) continue;
        const int column =
            settle_lane(scene, lane, std::min(oldLow, newLow), std::max(oldLow, newLow), limit + offset);
        settled = std::max(settled, column - offset);
    }
    return std::min(settled, limit);
}
