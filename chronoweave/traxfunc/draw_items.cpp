#include "chronoweave/traxfunc/draw_items.h"

#include <algorithm>

namespace {

constexpr int solidLineLimit = 1000;  // pixels; no legend needs a thicker line

// Offset of a dashed line's start in its pattern, for a start at this pixel of the virtual picture.
int dash_phase(uint64_t start, int thickness, int style) {
    const int period = thickness * dashPeriod[style];
    return period > 0 ? static_cast<int>(start % static_cast<uint64_t>(period)) : 0;
}

// The first position from at on whose column lies right of x, size when there is none; column(i) never falls.
// Steps grow while nothing is found, so that the cost follows the columns and not the items.
template <class Column>
size_t first_right_of(size_t at, size_t size, int x, const Column& column) {
    size_t step = 1;
    while (at < size && column(at) <= x) {
        if (at + step >= size || column(at + step) > x) {
            size_t low = at + 1, high = std::min(at + step, size);
            while (low < high) {
                const size_t middle = (low + high) / 2;
                if (column(middle) <= x)
                    low = middle + 1;
                else
                    high = middle;
            }
            return low;
        }
        at += step;
        step *= 2;
    }
    return std::min(at, size);
}

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
            at = first_right_of(at + 1, segments_.size(), x1,
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
            const int phase = dash_phase(paint_.canvas.scrollPosition + static_cast<uint64_t>(start_),
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

// A lane's row of the overlap table.
struct OverlapRow {
    int nextFree = -1;
    int lastLeft = -1000, lastRight = -1000;
    int y = 0;           // of the icons' centres, on the surface
    bool drawn = false;  // the lane is shown and its row meets the rectangle
    bool overlapped = false;
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
            if (row.overlapped && canvas_.newTrv) i = first_right_of(i, times.size(), row.nextFree, column);
        }
    }

    // A cluster of any size is its first icon and one mark about every icon width.
    void BySpace(OverlapRow& row, const LaEventLook& look, int x) {
        if (x > row.nextFree) {
            row.nextFree = x + look.width / 2;
            row.overlapped = false;
            Icon(row, look, x, look.icon);
        } else if (!row.overlapped) {
            const int least = canvas_.overlapIcon != NoIcon ? overlapWidth_ : canvas_.maxIconWidth;
            row.nextFree = std::max(row.nextFree, x + std::max(look.width, least) / 2);
            row.overlapped = true;
            if (canvas_.overlapIcon != NoIcon) Icon(row, look, x, canvas_.overlapIcon);
        }
    }

    // Each icon shows as much as the one before it leaves free.
    void ByRectangles(OverlapRow& row, const LaEventLook& look, int x) {
        const int left = x - look.width / 2, right = left + look.width;
        if (left >= row.lastRight) {
            row.lastLeft = left;
            row.lastRight = right;
            row.overlapped = false;
            Icon(row, look, x, look.icon);
        } else if (row.lastLeft < left && row.lastRight < right) {
            row.overlapped = true;
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

// Context switches. All of one column are held back until the next column begins: a line that lies wholly
// under later ones of the column isn't drawn.
class SwitchPainter {
  public:
    explicit SwitchPainter(const laPaint& paint)
        : paint_(paint), canvas_(paint.canvas), ends_(canvas_.lanes.size()) {
        const bool agentShown = canvas_.hiddenAgent != laNoLane && !canvas_.lanes[canvas_.hiddenAgent].hidden;
        for (uint32_t i = 0; i < canvas_.lanes.size(); ++i) {
            const laItem_Line& lane = canvas_.lanes[i];
            const laItem_Line& at = lane.hidden && agentShown ? canvas_.lanes[canvas_.hiddenAgent] : lane;
            const int y = laLn_LineY(canvas_, at) - canvas_.verticalOffset;
            ends_[i].y = std::clamp(y, 0, paint.dataHeight);
            ends_[i].hidden = lane.hidden ? (agentShown ? End::AtAgent : End::AtAgent | End::Nowhere) : 0;
            ends_[i].beyond = y < 0 ? End::Above : y > paint.dataHeight ? End::Below : 0;
        }
    }

    void Draw() {
        const Table<laItem_Ctx>& lines = canvas_.ctxLines;
        const double low =
            std::max(canvas_.viewLow, paint_.scale.toTime(paint_.rect.left - canvas_.maxExtent - 2));
        const double high =
            std::min(canvas_.viewHigh, paint_.scale.toTime(paint_.rect.right + canvas_.maxExtent + 2));
        uint32_t first = 0;
        for (uint32_t end = lines.size(); first < end;) {
            const uint32_t middle = first + (end - first) / 2;
            if (lines[middle].t0 < low)
                first = middle + 1;
            else
                end = middle;
        }
        for (uint32_t i = first; i < lines.size() && lines[i].t0 <= high; ++i) Add(lines[i]);
        Flush();
    }

  private:
    struct End {
        enum : uint8_t { AtAgent = 1, Nowhere = 2, Above = 1, Below = 2 };
        int y = 0;           // on the surface, clamped to the data area
        uint8_t hidden = 0;  // hidden, and whether there is an agent to stand for it
        uint8_t beyond = 0;  // outside the data area
    };
    struct Span {
        int y0, y1;  // on the surface, clamped
        const LaStatusLook* look;
        int top() const { return std::min(y0, y1); }
        int bottom() const { return std::max(y0, y1); }
    };

    void Add(const laItem_Ctx& line) {
        const LaStatusLook& look = canvas_.statusLooks[static_cast<size_t>(line.status)];
        if (!look.shown) return;
        const End &from = ends_[line.fromLane], &to = ends_[line.toLane];
        if ((from.hidden & to.hidden) != 0 || ((from.hidden | to.hidden) & End::Nowhere) != 0) return;
        const int x = paint_.scale.toPixel(line.t0);
        const Span span{from.y, to.y, &look};
        const bool reaches = span.top() < lastTop_ || span.bottom() > lastBottom_;
        if (x < lastX_ || (x == lastX_ && !reaches)) return;
        if (x != lastX_) Flush();
        lastX_ = x;
        lastTop_ = span.top();
        lastBottom_ = span.bottom();
        if ((from.beyond & to.beyond) != 0) return;
        column_.push_back(span);
        columnTop_ = std::min(columnTop_, span.top());
        columnBottom_ = std::max(columnBottom_, span.bottom());
        columnThickness_ = std::max(columnThickness_, look.thickness);
    }

    // From the last to the first, to see what is covered; drawn in order.
    void Flush() {
        size_t kept = column_.size();
        int coveredTop = 0, coveredBottom = -1, coveredThickness = 0;
        for (size_t i = column_.size(); i-- > 0;) {
            if (coveredTop == columnTop_ && coveredBottom == columnBottom_ &&
                coveredThickness == columnThickness_)
                break;
            const Span& span = column_[i];
            const bool plain = span.look->style == Line_Solid;
            if (span.top() >= coveredTop && span.bottom() <= coveredBottom &&
                span.look->thickness <= coveredThickness)
                continue;
            column_[--kept] = span;
            if (!plain) continue;
            const bool joins = span.look->thickness == coveredThickness && span.top() <= coveredBottom + 1 &&
                               span.bottom() >= coveredTop - 1;
            const bool longer = span.bottom() - span.top() > coveredBottom - coveredTop;
            if (joins) {
                coveredTop = std::min(coveredTop, span.top());
                coveredBottom = std::max(coveredBottom, span.bottom());
            } else if (coveredThickness == 0 || (longer && span.look->thickness >= coveredThickness)) {
                coveredTop = span.top();
                coveredBottom = span.bottom();
                coveredThickness = span.look->thickness;
            }
        }
        for (size_t i = kept; i < column_.size(); ++i) Draw(column_[i]);
        column_.clear();
        columnTop_ = noRow;
        columnBottom_ = -1;
        columnThickness_ = 0;
    }

    void Draw(const Span& span) const {
        const LaStatusLook& look = *span.look;
        // Dashes stand still in the content while it scrolls.
        const auto start = static_cast<uint64_t>(span.top() + canvas_.verticalOffset);
        paint_.surface.drawStyledLine(lastX_, span.top(), lastX_, span.bottom(), look.colour, look.thickness,
                                      look.style, dash_phase(start, look.thickness, look.style));
    }

    const laPaint& paint_;
    const _LaCanvasData& canvas_;
    std::vector<End> ends_;
    int lastX_ = 0, lastTop_ = 0, lastBottom_ = 0;
    static constexpr int noRow = 0x7fffffff;
    std::vector<Span> column_;  // of the column lastX_, and what they reach together
    int columnTop_ = noRow, columnBottom_ = -1, columnThickness_ = 0;
};

}  // namespace

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

void laPaint_Switches(const laPaint& paint) {
    SwitchPainter(paint).Draw();
}
