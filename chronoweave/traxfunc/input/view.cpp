#include "chronoweave/traxfunc/input/view.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/followed_rows.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/draw/pinned_rows.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/busy.h"

namespace {

constexpr double tolerance = 1e-12;
constexpr double virtualLimit = 18446744073709551616.0;  // 2^64

bool finish(_LaCanvasData& canvas, bool result, const char* message = nullptr) {
    const auto lasts = result ? laMessageLasts::UntilNext : laMessageLasts::WithTheView;
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection, message, lasts);
    return result;
}

// Fetches a range that is not cached. A failure leaves an empty canvas with both cursors in the middle of the
// old view.
bool fetch(_LaCanvasData& canvas, double low, double high, laFetchAhead ahead) {
    const BusyWork busy(GateWork::Fetch, canvas.graph->setBusy);
    const bool fetched = laCanvas_FetchRange(canvas, low, high, ahead);
    if (!fetched) {
        laCanvas_ClearItems(canvas);
        canvas.marks.cursor[0] = canvas.marks.cursor[1] = (canvas.view.viewLow + canvas.view.viewHigh) / 2;
        laCanvas_Resort(canvas);
    }
    return fetched;
}

// A range that is asked for while another is fetched waits, in place of one that waits already.
bool show_later(_LaCanvasData& canvas, double low, double high, laShow how) {
    how.paint = true;
    gate_Program().WhenMay(GateActivity::Command, &canvas, [&canvas, low, high, how] {
        laCanvas_Paint(canvas, [&] { laCanvas_ShowRange(canvas, low, high, how); });
    });
    return false;
}

// Begins on a whole pixel, which keeps a scroll by n pixels exact.
void snap(double& low, double& high, double perUnit) {
    const double snapped = static_cast<double>(static_cast<uint64_t>(low * perUnit + 0.5)) / perUnit;
    if (snapped == low) return;
    high += snapped - low;
    low = snapped;
}

}  // namespace

void laCanvas_RefuseRange(_LaCanvasData& canvas, double low, double high) {
    gen_console("Invalid time range: [%f, %f]\n", low, high);
    laCanvas_Beep(canvas);
}

bool laCanvas_ShowRange(_LaCanvasData& canvas, double low, double high, laShow how) {
    if (gate_Program().Runs(GateWork::Fetch)) return show_later(canvas, low, high, how);
    LaView& view = canvas.view;
    low = std::max(low, 0.0);
    if (!(low + tolerance < high)) {
        laCanvas_RefuseRange(canvas, low, high);
        return true;
    }
    const bool same = low == view.viewLow && high == view.viewHigh;
    const bool asIs = !canvas.source.liveRefresh && !how.refetch;
    if (same && (asIs || laCanvas_IsCached(canvas.items, canvas.source, low, high))) {
        laLayout_SetExtent(view, *canvas.graph, view.virtualWidth, view.contentHeight);
        if (how.paint) laCanvas_Repaint(canvas);
        return finish(canvas, true);
    }
    const int width = std::max(1, canvas.graph->width);
    const double perUnit = how.keepLength ? view.pixelsPerUnit : width / (high - low);
    if (!(std::max(canvas.source.scrollExtent, high) * perUnit + 0.5 < virtualLimit)) {
        laCanvas_Beep(canvas);
        return finish(canvas, false, "Can't zoom in more.");
    }
    snap(low, high, perUnit);
    const bool needed = canvas.source.store && !laCanvas_IsCached(canvas.items, canvas.source, low, high) &&
                        !laCanvas_ExtendRange(canvas, low, high);
    if (needed && !fetch(canvas, low, high, how.ahead)) return false;
    view.viewLow = low;
    view.viewHigh = high;
    if (!how.keepLength) view.viewLength = high - low;
    canvas.source.scrollExtent = std::max(canvas.source.scrollExtent, high);
    if (needed) laCanvas_Resort(canvas);
    laCanvas_Rescale(canvas);
    if (how.paint) laCanvas_Repaint(canvas);
    const std::string damage = needed ? laSource_TellDamage(canvas.source) : std::string();
    if (!same) laCanvas_DropOldMessage(canvas);
    return finish(canvas, true, damage.empty() ? nullptr : damage.c_str());
}

void laCanvas_MoveToTime(_LaCanvasData& canvas, double value, TimeMode mode, uint32_t objectId, bool warp) {
    const double time = laTime_Convert(mode, value, Time_Second);
    bool moved = false;
    if (time < canvas.view.viewLow || time > canvas.view.viewHigh) {
        const double length = canvas.view.viewHigh - canvas.view.viewLow;
        double low = 0, high = canvas.source.totalLength;
        if (length > 0) {
            low = std::max(0.0, time - length / 2);
            high = low + length;
        } else if (time > 0) {
            low = time / 2;
            high = canvas.source.totalLength <= time ? time : (time + canvas.source.totalLength) / 2;
        }
        if (time < low || time > high) {
            gen_console("laCanvas_MoveToTime(): Can't move to time %f.", time);
            return;
        }
        if (!laCanvas_ShowRange(canvas, low, high)) return;
        moved = true;
    }
    if (laRows_Settle(canvas)) moved = true;  // the row that one jumps to is there now
    int y = 10;
    const laItem_Line* lane = objectId == laAgentId ? nullptr : laCanvas_FindLane(canvas.items, objectId);
    if (lane != nullptr && !lane->hidden) {
        LaGraph& graph = *canvas.graph;
        y = lane->y - canvas.view.verticalOffset;
        const LaFreeRows free = laPinned_Free(canvas.items, canvas.looks, canvas.view,
                                              static_cast<int>(graph.vertical.visible()));
        if (y < free.from || y > free.end) {
            graph.vertical.setPosition(static_cast<uint64_t>(std::max(0, lane->y - canvas.looks.rowHeight)));
            canvas.view.verticalOffset = static_cast<int>(graph.vertical.position());
            y = lane->y - canvas.view.verticalOffset;
            moved = true;
        }
    }
    if (moved) laCanvas_Repaint(canvas);
    if (!warp) return;
    if (canvas.graph->warpPointer)
        canvas.graph->warpPointer(laCanvas_TimeToPixel(canvas, time, Time_Second), y);
    if (canvas.graph->raise) canvas.graph->raise();
    laCanvas_Beep(canvas);
}

void laCanvas_GoTo(_LaCanvasData& canvas, double time, uint32_t objectId) {
    laCanvas_MoveToTime(canvas, time, Time_Second, objectId, true);
}

void laCanvas_Reveal(_LaCanvasData& canvas, double time, uint32_t objectId) {
    laCanvas_MoveToTime(canvas, time, Time_Second, objectId, false);
}

void TRAX_ScrollTo(_LaCanvasData& canvas, int x, int y, bool force) {
    LaGraph& graph = *canvas.graph;
    if (x < 0 || x > graph.width) {
        gen_console("TRAX_ScrollTo(): error happened. caller should load a new time range.\n");
        laCanvas_Beep(canvas);
        return;
    }
    const uint64_t before = graph.vertical.position();
    graph.vertical.setPosition(static_cast<uint64_t>(std::max(0, y)));
    canvas.view.verticalOffset = static_cast<int>(graph.vertical.position());
    if (force || graph.vertical.position() != before) laCanvas_Repaint(canvas);
}
