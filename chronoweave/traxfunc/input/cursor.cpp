#include "chronoweave/traxfunc/input/cursor.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr int snapReach = 3;  // columns
constexpr Colour invert = 0xFFFFFF;

// The column where a cursor is drawn; -1 when it isn't.
int drawn_column(const _LaCanvasData& canvas, int which) {
    const double time = canvas.marks.cursor[which];
    if (time < 0 || time < canvas.view.viewLow || time > canvas.view.viewHigh) return -1;
    if (which == 1 && !canvas.marks.secondShown) return -1;
    const int x = laCanvas_TimeToPixel(canvas, time, Time_Second);
    return x >= 0 && x < canvas.graph->width ? x : -1;
}

void invert_column(_LaCanvasData& canvas, int x) {
    Surface* const surface = canvas.graph->surface;
    if (!surface) return laCanvas_RepaintColumns(canvas, x, x + 1);
    surface->setExclusiveOr(true);
    laCanvas_DrawCursor(*canvas.graph, x, invert);
    surface->setExclusiveOr(false);
}

void restore_column(_LaCanvasData& canvas, int x) {
    if (x >= 0) laCanvas_RepaintColumns(canvas, x, x + 1);
}

void draw_first(_LaCanvasData& canvas, int x) {
    const Surface* const surface = canvas.graph->surface;
    // Under a dragged one the order of drawing matters.
    if (!surface || drawn_column(canvas, 1) == x) return restore_column(canvas, x);
    laCanvas_DrawCursor(*canvas.graph, x, surface->foreground());
}

// Columns of the axis between two times, the ends of the view standing for what lies outside.
void repaint_axis(_LaCanvasData& canvas, double a, double b) {
    const auto column = [&](double time) {
        return std::clamp(laCanvas_TimeToPixel(canvas, time, Time_Second), 0, canvas.graph->width);
    };
    const int x = column(a), y = column(b);
    laAxis_Draw(canvas, std::min(x, y), std::max(x, y));
}

// The lane whose row holds this row of the content; null when none does.
const laItem_Line* lane_at(const _LaCanvasData& canvas, int y) {
    if (y < 0 || canvas.looks.rowHeight <= 0) return nullptr;
    const int row = y / canvas.looks.rowHeight;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        if (!canvas.items.lanes[i].hidden && canvas.items.lanes[i].row == row) return &canvas.items.lanes[i];
    return nullptr;
}

// The nearest of the offered times within reach of a column.
class Nearest {
  public:
    Nearest(const _LaCanvasData& canvas, int x)
        : scale_(canvas.view, canvas.axis, canvas.graph->width),
          x_(x),
          time_(scale_.ToTime(x)),
          best_(time_) {}

    double from() const { return scale_.ToTime(x_ - snapReach - 1); }
    double to() const { return scale_.ToTime(x_ + snapReach + 1); }
    double time() const { return best_; }

    void Offer(double time) {
        const int column = scale_.ToPixel(time);
        const double distance = std::fabs(time - time_);
        if (std::abs(column - x_) > snapReach || (found_ && distance >= distance_)) return;
        found_ = true;
        distance_ = distance;
        best_ = time;
    }

  private:
    laTimeScale scale_;
    int x_;
    double time_, best_;
    double distance_ = 0;
    bool found_ = false;
};

void offer_lane(const _LaCanvasData& canvas, const laItem_Line& lane, Nearest& nearest) {
    const LaSegments& segments = lane.segments;
    for (size_t at = segments.FirstEndingFrom(nearest.from()); at < segments.size(); at = segments.Next(at)) {
        const LaLnSeg segment = segments[at];
        if (segment.t0 > nearest.to()) break;
        if (!canvas.looks.statusLooks[static_cast<size_t>(segment.status)].shown) continue;
        // Where the items are cut nothing happened.
        const LaItems& items = canvas.items;
        if (items.cachedLow <= 0 || segment.t0 > items.cachedLow) nearest.Offer(segment.t0);
        if (items.cachedHigh >= canvas.source.totalLength || segment.t1 < items.cachedHigh)
            nearest.Offer(segment.t1);
    }
    const LaLaneIcons& icons = lane.icons;
    for (size_t at = icons.FirstFrom(nearest.from()); at < icons.size() && icons.time(at) <= nearest.to();
         ++at)
        if (canvas.looks.eventLooks[icons.event(at)].shown) nearest.Offer(icons.time(at));
}

// Whether a drag to beyond this end of the view still shows the second cursor.
void show_second(_LaCanvasData& canvas, bool shown) {
    if (shown == canvas.marks.secondShown) return;
    const int old = drawn_column(canvas, 1);
    canvas.marks.secondShown = shown;
    const int x = shown ? drawn_column(canvas, 1) : old;
    if (x >= 0 && canvas.marks.secondDragged) invert_column(canvas, x);
    if (!shown) canvas.marks.secondDragged = false;
}

}  // namespace

void laCanvas_SetCursor(_LaCanvasData& canvas, int x, int which, bool eraseOld) {
    const double time = x == -1 ? canvas.view.viewLow
                        : x < 0
                            ? canvas.view.viewHigh
                            : laTime_Convert(canvas.axis.timeMode,
                                             laCanvas_PixelToUnit(canvas.view, canvas.axis, x), Time_Second);
    laCanvas_SetCursorTime(canvas, time, which, eraseOld);
}

void laCanvas_SetCursorTime(_LaCanvasData& canvas, double time, int which, bool eraseOld) {
    if (which == 0) canvas.hand.dragStartView = canvas.view.viewLow;
    const double before = canvas.marks.cursor[which];
    const int old = drawn_column(canvas, which);
    const bool inverted = which == 1 && canvas.marks.secondDragged;
    canvas.marks.cursor[which] = time;
    const int x = drawn_column(canvas, which);
    if (which == 1 && (old >= 0) && inverted && eraseOld) invert_column(canvas, old);
    if (which == 1) canvas.marks.secondDragged = x >= 0;
    if (eraseOld && !inverted) restore_column(canvas, old);
    if (x >= 0 && which == 1) {
        // Restoring may just have drawn it in the same column.
        if (inverted || !eraseOld || old != x) invert_column(canvas, x);
    } else if (x >= 0) {
        draw_first(canvas, x);
    }
    laCanvas_UpdateFields(canvas, Fields_Selection);
    // Unset before, the band appears from the other one on.
    const double other = canvas.marks.cursor[1 - which];
    repaint_axis(canvas, before >= 0 ? before : other >= 0 ? other : time, time);
}

void laCanvas_MoveCursor(_LaCanvasData& canvas, int which, double time) {
    const double before = canvas.marks.cursor[which], other = canvas.marks.cursor[1 - which];
    const int old = drawn_column(canvas, which);
    canvas.marks.cursor[which] = time;
    if (which == 1) {
        canvas.marks.secondShown = true;
        canvas.marks.secondDragged = false;
    }
    restore_column(canvas, old);
    restore_column(canvas, drawn_column(canvas, which));
    laCanvas_UpdateFields(canvas, Fields_Selection);
    repaint_axis(canvas, before >= 0 ? before : other >= 0 ? other : time, time);
}

void laCanvas_ClearCursors(_LaCanvasData& canvas) {
    const int columns[2] = {drawn_column(canvas, 0), drawn_column(canvas, 1)};
    const double times[2] = {canvas.marks.cursor[0], canvas.marks.cursor[1]};
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100.0;
    canvas.marks.secondDragged = false;
    for (int x : columns) restore_column(canvas, x);
    if (times[0] >= 0 && times[1] >= 0) repaint_axis(canvas, times[0], times[1]);
    laCanvas_UpdateFields(canvas, Fields_Selection);
}

bool laCanvas_SetSelection(_LaCanvasData& canvas, double t0, double t1) {
    if (!(t0 >= 0 && t0 <= t1)) {
        gen_console("Invalid time range: [%f, %f]\n", t0, t1);
        laCanvas_Beep(canvas);
        return false;
    }
    laCanvas_ClearCursors(canvas);
    canvas.marks.cursor[0] = t0;
    canvas.marks.cursor[1] = t1;
    canvas.marks.secondShown = true;
    repaint_axis(canvas, t0, t1);
    for (int which : {0, 1}) restore_column(canvas, drawn_column(canvas, which));
    laCanvas_UpdateFields(canvas, Fields_Selection);
    return true;
}

double laCanvas_PointerTime(_LaCanvasData& canvas, int x, int y, bool free) {
    Nearest nearest(canvas, x);
    const laItem_Line* lane =
        free || !canvas.options.snapCursors ? nullptr : lane_at(canvas, y + canvas.view.verticalOffset);
    if (lane != nullptr && y < laAxis_Top(*canvas.graph)) offer_lane(canvas, *lane, nearest);
    return nearest.time();
}

void laCanvas_BeginDrag(_LaCanvasData& canvas, int x, int y, bool free) {
    laCanvas_ClearCursors(canvas);
    laCanvas_SetCursorTime(canvas, laCanvas_PointerTime(canvas, x, y, free), 0, false);
}

void laCanvas_DragTo(_LaCanvasData& canvas, int x, int y, bool free) {
    const ScrollBarModel& bar = canvas.graph->horizontal;
    if (x >= 0 && x < canvas.graph->width) {
        show_second(canvas, true);
        laCanvas_SetCursorTime(canvas, laCanvas_PointerTime(canvas, x, y, free), 1, true);
        return;
    }
    const bool left = x < 0, ends = left ? bar.atStart() : bar.atEnd();
    if (!ends) show_second(canvas, true);
    laCanvas_SetCursorTime(canvas, left ? canvas.view.viewLow : canvas.view.viewHigh, 1, true);
    if (ends) show_second(canvas, false);
}

void laCanvas_EndDrag(_LaCanvasData& canvas) {
    // A press that never moved selects nothing: both cursors stand where it was.
    if (canvas.marks.cursor[1] < 0) canvas.marks.cursor[1] = canvas.marks.cursor[0];
    canvas.marks.secondShown = true;
    canvas.marks.secondDragged = false;
    if (canvas.marks.cursor[0] > canvas.marks.cursor[1])
        std::swap(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    for (int which : {0, 1}) restore_column(canvas, drawn_column(canvas, which));
    if (canvas.hand.dragStartView >= 0 && canvas.hand.dragStartView != canvas.view.viewLow)
        laHistory_Add(canvas);
    canvas.hand.dragStartView = -1.0;
    laCanvas_UpdateFields(canvas, Fields_Selection);
}

std::string laCanvas_ColumnText(const _LaCanvasData& canvas, int x) {
    const std::string time = laTime_TrimZeros(gen_format("%.*f", std::max(0, canvas.axis.tickDigits + 3),
                                                         laCanvas_PixelToUnit(canvas.view, canvas.axis, x)));
    return canvas.axis.timeMode == Time_Sequential ? time + " Sequences."
                                                   : time + " " + laTime_UnitName(canvas.axis, true) + "s.";
}

std::string laCanvas_HoverText(const _LaCanvasData& canvas, int x) {
    const auto unit = [&](const std::string& value) {
        return canvas.axis.timeMode == Time_Sequential
                   ? value + " Sequences"
                   : value + " " + laTime_UnitName(canvas.axis, true) + "s";
    };
    const double time = laTimeScale(canvas.view, canvas.axis, canvas.graph->width).ToTime(x);
    std::string text = unit(laCanvas_TimeText(canvas, time));
    if (canvas.marks.cursor[0] < 0) return text + ".";
    const double distance = time - canvas.marks.cursor[0];
    text += ", " + unit(laCanvas_TimeText(canvas, std::fabs(distance)));
    return text + (distance < 0 ? " before the first cursor." : " after the first cursor.");
}
