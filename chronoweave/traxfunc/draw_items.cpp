#include "chronoweave/traxfunc/draw_items.h"

#include <algorithm>

namespace {

constexpr int solidLineLimit = 1000;  // pixels; no legend needs a thicker line

// The dashes of a stretch that holds few of them, as rectangles: a dashed pen costs many times as much.
void fill_dashes(Surface& surface, int x0, int x1, int top, const LaStatusLook& look, int phase) {
    int x = x0 - phase;
    for (int part = 0; x < x1; part = dashPattern[look.style][part + 1] != 0 ? part + 1 : 0) {
        const int end = x + dashPattern[look.style][part] * look.thickness;
        const int from = std::max(x, x0), to = std::min(end, x1);
        if (part % 2 == 0 && from < to) surface.fillRect(from, top, to - from, look.thickness, look.colour);
        x = end;
    }
}

// The line of one lane. Neighbouring stretches that look the same are drawn as one.
class LanePainter {
  public:
    LanePainter(const laPaint& paint, const laItem_Line& lane)
        : paint_(paint),
          segments_(lane.segments),
          y_(laLn_LineY(paint.canvas, lane) - paint.canvas.verticalOffset),
          width_(paint.canvas.graph->width) {}

    void Draw() {
        const _LaCanvasData& canvas = paint_.canvas;
        const double low = std::max(canvas.viewLow, paint_.scale.toTime(paint_.rect.left - 2));
        const double high = std::min(canvas.viewHigh, paint_.scale.toTime(paint_.rect.right + 2));
        const auto first = std::partition_point(segments_.begin(), segments_.end(),
                                                [&](const LaLnSeg& segment) { return segment.t1 < low; });
        for (size_t at = static_cast<size_t>(first - segments_.begin()); at < segments_.size();) {
            const LaLnSeg& segment = segments_[at];
            if (segment.t0 > high) break;
            const int x1 = paint_.scale.toPixel(segment.t1);
            const int x0 = paint_.scale.toPixel(segment.t0);
            if (x0 < x1) Add(canvas.statusLooks[static_cast<size_t>(segment.status)], x0, x1);
            // What ends in the same column is shorter than a pixel and isn't drawn.
            at = laPaint_FirstRightOf(at + 1, segments_.size(), x1,
                                      [&](size_t i) { return paint_.scale.toPixel(segments_[i].t1); });
        }
        Flush();
    }

  private:
    void Add(const LaStatusLook& look, int x0, int x1) {
        if (!look.shown) return;
        x0 = std::max(x0, 0);
        x1 = std::min(x1, width_);
        if (look_ != nullptr && end_ == x0 && look_->style == look.style && look_->colour == look.colour &&
            look_->thickness == look.thickness) {
            end_ = x1;
            return;
        }
        Flush();
        look_ = &look;
        start_ = x0;
        end_ = x1;
    }

    void Flush() {
        if (look_ != nullptr && start_ < end_) {
            const int thickness = look_->thickness, top = y_ - thickness / 2;
            const int phase = laPaint_DashPhase(paint_.canvas.scrollPosition + static_cast<uint64_t>(start_),
                                                thickness, look_->style);
            if (look_->style == Line_Solid)
                paint_.surface.fillRect(start_, top, end_ - start_, thickness, look_->colour);
            else if (end_ - start_ <= thickness * dashPeriod[look_->style])
                fill_dashes(paint_.surface, start_, end_, top, *look_, phase);
            else
                paint_.surface.drawStyledLine(start_, y_, end_ - 1, y_, look_->colour, thickness,
                                              look_->style, phase);
        }
        look_ = nullptr;
    }

    const laPaint& paint_;
    const std::vector<LaLnSeg>& segments_;
    int y_, width_;
    const LaStatusLook* look_ = nullptr;  // of the stretch not drawn yet
    int start_ = 0, end_ = 0;
};

// The overlap rule by free space: a cluster of any size is its first icon and one mark about every icon
// width.
struct SpaceRule {
    enum Shows { Nothing, Own, Mark };
    int nextFree = -1;
    bool overlapped = false;

    Shows Step(const _LaCanvasData& canvas, const LaEventLook& look, int x, int overlapWidth) {
        if (x > nextFree) {
            nextFree = x + look.width / 2;
            overlapped = false;
            return Own;
        }
        if (overlapped) return Nothing;
        const bool marked = canvas.overlapIcon != NoIcon;
        nextFree =
            std::max(nextFree, x + std::max(look.width, marked ? overlapWidth : canvas.maxIconWidth) / 2);
        overlapped = true;
        return marked ? Mark : Nothing;
    }
};

// A lane's row of the overlap table.
struct OverlapRow {
    SpaceRule space;
    int lastLeft = -1000, lastRight = -1000;
    int y = 0;           // of the icons' centres, on the surface
    bool drawn = false;  // the lane is shown and its row meets the rectangle
};

class IconPainter {
  public:
    explicit IconPainter(const laPaint& paint)
        : paint_(paint), canvas_(paint.canvas), rows_(canvas_.lanes.size()) {
        const int reach = canvas_.rowHeight + canvas_.maxExtent;
        for (uint32_t i = 0; i < canvas_.lanes.size(); ++i) {
            const laItem_Line& lane = canvas_.lanes[i];
            rows_[i].y = laLn_IconY(canvas_, lane) - canvas_.verticalOffset;
            rows_[i].drawn =
                !lane.hidden && lane.y + reach >= paint.rect.top && lane.y - reach <= paint.rect.bottom;
        }
    }

    void Draw() {
        for (uint32_t i = 0; i < canvas_.lanes.size(); ++i)
            if (rows_[i].drawn) DrawLane(canvas_.lanes[i], rows_[i]);
    }

  private:
    void DrawLane(const laItem_Line& lane, OverlapRow& row) {
        const std::vector<double>& times = lane.iconTimes;
        const auto column = [&](size_t i) { return paint_.scale.toPixel(times[i]); };
        const auto first = std::lower_bound(times.begin(), times.end(), canvas_.viewLow);
        const double last =
            std::min(canvas_.viewHigh, paint_.scale.toTime(paint_.rect.right + canvas_.maxIconWidth + 2));
        for (size_t i = static_cast<size_t>(first - times.begin()); i < times.size() && times[i] <= last;) {
            const LaEventLook& look = canvas_.eventLooks[lane.iconEvents[i]];
            if (look.shown) {
                if (canvas_.newTrv)
                    BySpace(row, look, column(i));
                else
                    ByRectangles(row, look, column(i));
            }
            ++i;
            // The rest of a cluster shows nothing.
            if (row.space.overlapped) i = laPaint_FirstRightOf(i, times.size(), row.space.nextFree, column);
        }
    }

    void BySpace(OverlapRow& row, const LaEventLook& look, int x) {
        const SpaceRule::Shows shows = row.space.Step(canvas_, look, x, overlapWidth_);
        if (shows != SpaceRule::Nothing)
            Icon(row, look, x, shows == SpaceRule::Own ? look.icon : canvas_.overlapIcon);
    }

    // Each icon shows as much as the one before it leaves free.
    void ByRectangles(OverlapRow& row, const LaEventLook& look, int x) {
        const int left = x - look.width / 2, right = left + look.width;
        if (left >= row.lastRight) {
            row.lastLeft = left;
            row.lastRight = right;
            Icon(row, look, x, look.icon);
        } else if (row.lastLeft < left && row.lastRight < right) {
            paint_.surface.pushClip(row.lastRight, row.y - look.height / 2, right - row.lastRight,
                                    look.height, true);
            Icon(row, look, x, canvas_.overlapIcon != NoIcon ? canvas_.overlapIcon : look.icon);
            paint_.surface.popClip();
        }
    }

    // An icon, or the mark in its place, at the place of the event's own icon.
    void Icon(const OverlapRow& row, const LaEventLook& look, int x, IconHandle icon) const {
        const int left = x - look.width / 2, top = row.y - look.height / 2;
        const int right = left + std::max(look.width, overlapWidth_);
        if (right <= paint_.rect.left || left >= paint_.rect.right) return;
        paint_.surface.drawIcon(left, top, icon);
    }

    const laPaint& paint_;
    const _LaCanvasData& canvas_;
    std::vector<OverlapRow> rows_;
    const int overlapWidth_ = icon_Width(canvas_.overlapIcon);
};

// The overlap rule walking along one lane.
class SpaceWalk {
  public:
    SpaceWalk(const _LaCanvasData& canvas, const laItem_Line& lane, const laTimeScale& scale, double low)
        : canvas_(canvas),
          lane_(lane),
          scale_(scale),
          at_(static_cast<size_t>(std::lower_bound(lane.iconTimes.begin(), lane.iconTimes.end(), low) -
                                  lane.iconTimes.begin())) {}

    bool done() const { return at_ >= lane_.iconTimes.size(); }
    size_t at() const { return at_; }
    double time() const { return lane_.iconTimes[at_]; }
    int column() const { return scale_.toPixel(time()); }
    void Step() {
        const LaEventLook& look = canvas_.eventLooks[lane_.iconEvents[at_]];
        if (look.shown) rule_.Step(canvas_, look, column(), icon_Width(canvas_.overlapIcon));
        ++at_;
        if (rule_.overlapped)
            at_ = laPaint_FirstRightOf(at_, lane_.iconTimes.size(), rule_.nextFree,
                                       [&](size_t i) { return scale_.toPixel(lane_.iconTimes[i]); });
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
    const _LaCanvasData& canvas_;
    const laItem_Line& lane_;
    const laTimeScale& scale_;
    size_t at_;
    SpaceRule rule_;
};

// The column, counted from the earlier view, at which the walks of two views fall together; 0 when they are
// never apart.
int settle_lane(const _LaCanvasData& canvas, const laItem_Line& lane, double earlier, double later,
                int limit) {
    const laTimeScale scale(earlier, 1e300, canvas.pixelsPerUnit, canvas.graph->width);
    SpaceWalk first(canvas, lane, scale, earlier), second(canvas, lane, scale, later);
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

int laPaint_SettleColumn(const _LaCanvasData& canvas, double oldLow, double newLow, int shift, int limit) {
    if (!canvas.newTrv) return limit;  // the other rule looks back without end
    const int top = canvas.verticalOffset - canvas.rowHeight - canvas.maxExtent;
    const int bottom = canvas.verticalOffset + canvas.graph->height + canvas.rowHeight + canvas.maxExtent;
    const int offset = newLow > oldLow ? shift : 0;  // of the new view in the earlier one
    int settled = 0;
    for (uint32_t i = 0; i < canvas.lanes.size() && settled < limit; ++i) {
        const laItem_Line& lane = canvas.lanes[i];
        if (lane.hidden || lane.y < top || lane.y > bottom) continue;
        const int column =
            settle_lane(canvas, lane, std::min(oldLow, newLow), std::max(oldLow, newLow), limit + offset);
        settled = std::max(settled, column - offset);
    }
    return std::min(settled, limit);
}

void laPaint_Lanes(const laPaint& paint) {
    const _LaCanvasData& canvas = paint.canvas;
    const int reach = std::max(canvas.rowHeight, std::min(canvas.maxExtent, solidLineLimit));
    for (uint32_t i = 0; i < canvas.lanes.size(); ++i) {
        const laItem_Line& lane = canvas.lanes[i];
        if (lane.hidden || lane.y + reach < paint.rect.top || lane.y - reach > paint.rect.bottom) continue;
        LanePainter(paint, lane).Draw();
    }
}

void laPaint_Icons(const laPaint& paint) {
    IconPainter(paint).Draw();
}
