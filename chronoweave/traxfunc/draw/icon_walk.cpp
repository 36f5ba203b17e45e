#include "chronoweave/traxfunc/draw/icon_walk.h"

#include <algorithm>
#include <span>
#include <utility>

#include "chronoweave/traxfunc/draw/columns.h"

namespace {

constexpr int markMargin = 3;  // columns beside a number

// As many as laMark_Text has.
int mark_letters(uint32_t hidden) {
    int letters = 1;
    for (; hidden >= 1000; hidden /= 1000) letters = 2;
    return letters + (hidden >= 10) + (hidden >= 100);
}

// Rows of all events there are, if any are given, look like each other to those who count.
bool all_alike(const LaLooks& looks, std::span<const uint16_t> rows) {
    return !rows.empty() && std::ranges::all_of(rows, [&](uint16_t row) {
        return looks.eventLooks[row].shown && !looks.eventLooks[row].important;
    });
}

// The widest that a number gets.
int widest_mark(const FontMetrics& font) {
    return 4 * font.charWidth + markMargin;
}

}  // namespace

bool laMark_IsCounted(const laScene& scene) {
    return scene.options.newTrv && !scene.options.plainMarks && scene.looks.overlapIcon != NoIcon;
}

std::string laMark_Text(uint32_t hidden) {
    const char* unit = "";
    for (const char* next : {"k", "M", "G"}) {
        if (hidden < 1000) break;
        hidden /= 1000;
        unit = next;
    }
    return std::to_string(hidden) + unit;
}

int laMark_Width(const laScene& scene, uint32_t hidden) {
    return mark_letters(hidden) * scene.graph.axisFont.charWidth + markMargin;
}

int laIcons_Reach(const LaLooks& looks, const FontMetrics& axisFont) {
    const int icon = std::max({looks.maxExtent, looks.maxIconWidth, icon_Width(looks.overlapIcon)});
    return looks.overlapIcon == NoIcon ? icon : icon + widest_mark(axisFont);
}

laSpaceWalk::laSpaceWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, double from)
    : scene_(scene),
      looks_(scene.looks),
      lane_(lane),
      scale_(scale),
      counted_(laMark_IsCounted(scene)),
      allAlike_(all_alike(scene.looks, lane.icons.Rows())),
      at_(lane.icons.FirstFrom(from)) {}

bool laSpaceWalk::Step(laShownIcon& shown) {
    const LaEventLook& look = LookOf(at_);
    bool seen = false;
    if (look.shown) {
        const int x = column();
        shown = {at_, x, look.icon, false, x - look.width / 2};
        if (counted_ && x <= nextFree_ && !look.important) return Count(shown);
        seen = Takes(look, shown);
    }
    ++at_;
    // The rest of a cluster shows nothing, unless something important is in it.
    if (overlapped_ && !counted_ && !looks_.anyImportantEvent)
        at_ =
            laPaint_FirstRightOf(at_, lane_.icons.size(), nextFree_, [this](size_t i) { return Column(i); });
    return seen;
}

// Whether the icon is drawn, or the legend's mark in its place.
bool laSpaceWalk::Takes(const LaEventLook& look, laShownIcon& shown) {
    if (shown.x > nextFree_ || look.important) {
        // Nothing is to cover an important one: neither a mark nor the next icon.
        const bool covers = shown.x <= nextFree_;
        nextFree_ = shown.x + (covers ? look.width : look.width / 2);
        overlapped_ = covers;
        drawnEnd_ = shown.left + look.width;
        return true;
    }
    if (overlapped_) return false;
    shown.mark = looks_.overlapIcon != NoIcon;
    const int width = std::max(look.width, shown.mark ? icon_Width(looks_.overlapIcon) : looks_.maxIconWidth);
    nextFree_ = std::max(nextFree_, shown.x + width / 2);
    overlapped_ = true;
    if (shown.mark) shown.icon = looks_.overlapIcon;
    return shown.mark;
}

int laSpaceWalk::EndOfMark(uint32_t hidden) const {
    return drawnEnd_ + laMark_Width(scene_, hidden);
}

// A number behind what was drawn last takes all that it covers, and may grow by that.
bool laSpaceWalk::Count(laShownIcon& shown) {
    shown.mark = true;
    shown.icon = NoIcon;
    if (carried_ > 0) shown.number = carriedFrom_;
    uint32_t hidden = carried_;
    for (uint32_t more = 1; more > 0;) {
        more = Pass();
        hidden += more;
        nextFree_ = EndOfMark(hidden) + looks_.maxIconWidth / 2;
    }
    const bool crowded = !done() && column() <= nextFree_;  // only something important stops ahead of it
    if (crowded && column() - LookOf(at_).width / 2 < EndOfMark(hidden)) {
        carriedFrom_ = shown.number;
        carried_ = hidden;
        return false;
    }
    carried_ = 0;
    shown.hidden = hidden;
    shown.left = drawnEnd_;
    return true;
}

// Goes on to the first icon right of nextFree_, or an important one. How many that are shown were passed.
uint32_t laSpaceWalk::Pass() {
    const size_t end =
        laPaint_FirstRightOf(at_, lane_.icons.size(), nextFree_, [this](size_t i) { return Column(i); });
    if (allAlike_) return static_cast<uint32_t>(end - std::exchange(at_, end));
    uint32_t passed = 0;
    for (; at_ < end; ++at_) {
        const LaEventLook& look = LookOf(at_);
        if (look.shown && look.important) break;
        passed += look.shown ? 1u : 0u;
    }
    return passed;
}

bool laSpaceWalk::Meets(const laSpaceWalk& other) const {
    if (at_ != other.at_) return false;
    if (done()) return true;
    if (carried_ != other.carried_ || carriedFrom_ != other.carriedFrom_) return false;
    const int x = column();
    return (x > nextFree_ && x > other.nextFree_) ||
           (nextFree_ == other.nextFree_ && overlapped_ == other.overlapped_ &&
            (!counted_ || drawnEnd_ == other.drawnEnd_));
}

laIconWalk::laIconWalk(const laScene& scene, const laItem_Line& lane, const laTimeScale& scale, int right)
    : scene_(scene),
      lane_(lane),
      scale_(scale),
      space_(scene, lane, scale, scene.view.viewLow),
      at_(space_.at()),
      last_(std::min(scene.view.viewHigh, scale.ToTime(right + scene.looks.maxIconWidth + 2))) {}

bool laIconWalk::Next(laShownIcon& shown) {
    if (!scene_.options.newTrv) return NextByRectangles(shown);
    while (!space_.done() && space_.time() <= last_)
        if (space_.Step(shown)) return true;
    return false;
}

bool laIconWalk::NextByRectangles(laShownIcon& shown) {
    const LaLaneIcons& icons = lane_.icons;
    while (at_ < icons.size() && icons.time(at_) <= last_) {
        const LaEventLook& look = scene_.looks.eventLooks[icons.event(at_)];
        const size_t at = at_++;
        if (!look.shown) continue;
        const int x = scale_.ToPixel(icons.time(at));
        shown = {at, x, look.icon, false, x - look.width / 2};
        if (ByRectangles(look, shown)) return true;
    }
    return false;
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
    return {number, found ? lane.icons.FirstBehind(scene.view.viewHigh) : number + 1};
}

std::optional<laShownIcon> laMark_At(const laScene& scene, const laItem_Line& lane, int x) {
    if (!laMark_IsCounted(scene)) return std::nullopt;
    const laTimeScale scale = scene.scale();
    laIconWalk walk(scene, lane, scale, x + 1);
    std::optional<laShownIcon> mark;
    for (laShownIcon shown; walk.Next(shown);)
        if (shown.hidden > 0 && x >= shown.left && x < shown.left + laMark_Width(scene, shown.hidden))
            mark = shown;
    return mark;
}

namespace {

// The column, counted from the earlier view, at which the walks of two views fall together; 0 when they are
// never apart.
int settle_lane(const laScene& scene, const laItem_Line& lane, double earlier, double later, int limit) {
    const laTimeScale scale(earlier, 1e300, scene.view.pixelsPerUnit, scene.graph.width);
    laSpaceWalk first(scene, lane, scale, earlier), second(scene, lane, scale, later);
    laShownIcon shown;
    while (!first.done() && first.time() < later) first.Step(shown);
    int column = 0;
    while (!first.Meets(second) && column < limit) {
        laSpaceWalk& behind = second.done() || (!first.done() && first.at() <= second.at()) ? first : second;
        column = behind.column() + 1;
        behind.Step(shown);
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
