#include "chronoweave/traxfunc/input/view.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/fetch/fetch.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/busy.h"

namespace {

constexpr double tolerance = 1e-12;
constexpr double virtualLimit = 18446744073709551616.0;  // 2^64
constexpr const char* wholeShown = "The whole graph has already been shown in the window.";

void invalid_range(_LaCanvasData& canvas, double low, double high) {
    gen_console("Invalid time range: [%f, %f]\n", low, high);
    laCanvas_Beep(canvas);
}

bool finish(_LaCanvasData& canvas, bool result, const char* message = nullptr) {
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection, message);
    return result;
}

// Fetches a range that is not cached. A failure leaves an empty canvas with both cursors in the middle of the
// old view.
bool fetch(_LaCanvasData& canvas, double low, double high) {
    const BusyWork busy(GateWork::Fetch, canvas.graph->setBusy);
    const bool fetched = laCanvas_FetchRange(canvas, low, high);
    if (!fetched) {
        laCanvas_ClearItems(canvas);
        canvas.marks.cursor[0] = canvas.marks.cursor[1] = (canvas.view.viewLow + canvas.view.viewHigh) / 2;
        laCanvas_Resort(canvas);
    }
    return fetched;
}

// A range that is asked for while another is fetched waits, in place of one that waits already.
bool show_later(_LaCanvasData& canvas, double low, double high, bool setLength) {
    gate_Program().WhenMay(GateActivity::Command, &canvas, [&canvas, low, high, setLength] {
        laCanvas_Paint(canvas, [&] { laCanvas_ShowRange(canvas, low, high, true, setLength); });
    });
    return false;
}

// The range of a zoom command that gives none. False when the mode is unknown.
bool range_from_cursors(const _LaCanvasData& canvas, int mode, double& low, double& high) {
    const double quarter = canvas.view.viewLength / 4, half = canvas.view.viewLength / 2;
    const auto [smaller, larger] = std::minmax(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    const bool both = smaller >= 0;
    if (mode == Zoom_Left || mode == Zoom_Right) {
        const double centre = mode == Zoom_Left ? smaller : larger;
        low = !both ? canvas.view.viewLow : centre < quarter ? 0 : centre - quarter;
        high = low + half;
        return true;
    }
    if (mode != Zoom_Selection && mode != Zoom_Range) return false;
    if (both) {
        low = smaller;
        high = larger;
    }
    if (low < 0 || high <= low + tolerance) {
        low = std::max(0.0, low - quarter);
        high = low + half;
    }
    return true;
}

bool is_whole_shown(_LaCanvasData& canvas) {
    if (canvas.view.viewLow > 0 || canvas.view.viewHigh < canvas.source.totalLength) return false;
    laCanvas_Refuse(canvas, wholeShown);
    return true;
}

double pulled_back(const _LaCanvasData& canvas, double high) {
    return std::min(high, std::max(canvas.source.totalLength, canvas.view.viewHigh));
}

}  // namespace

bool laCanvas_ShowRange(_LaCanvasData& canvas, double low, double high, bool repaint, bool setLength) {
    if (gate_Program().Runs(GateWork::Fetch)) return show_later(canvas, low, high, setLength);
    low = std::max(low, 0.0);
    if (!(low + tolerance < high)) {
        invalid_range(canvas, low, high);
        return true;
    }
    const bool live = canvas.source.liveRefresh;
    if (low == canvas.view.viewLow && high == canvas.view.viewHigh &&
        (!live || laCanvas_IsCached(canvas, low, high))) {
        if (repaint) laCanvas_SetExtent(canvas, canvas.view.virtualWidth, canvas.view.contentHeight, true);
        return finish(canvas, true);
    }
    // The view begins on a whole pixel, which keeps a scroll by n pixels exact.
    const int width = std::max(1, canvas.graph->width);
    const double perUnit = setLength ? width / (high - low) : canvas.view.pixelsPerUnit;
    if (!(std::max(canvas.source.scrollExtent, high) * perUnit + 0.5 < virtualLimit)) {
        laCanvas_Beep(canvas);
        return finish(canvas, false, "Can't zoom in more.");
    }
    const double snapped = static_cast<double>(static_cast<uint64_t>(low * perUnit + 0.5)) / perUnit;
    if (snapped != low) {
        high += snapped - low;
        low = snapped;
    }
    const bool needed = canvas.source.store != nullptr && !laCanvas_IsCached(canvas, low, high);
    if (needed && !fetch(canvas, low, high)) return false;
    canvas.view.viewLow = low;
    canvas.view.viewHigh = high;
    if (setLength) canvas.view.viewLength = high - low;
    canvas.source.scrollExtent = std::max(canvas.source.scrollExtent, high);
    if (needed) laCanvas_Resort(canvas);
    laCanvas_Rescale(canvas, repaint);
    const std::string damage = needed ? laSource_TellDamage(canvas.source) : std::string();
    return finish(canvas, true, damage.empty() ? nullptr : damage.c_str());
}

bool laCanvas_Zoom(_LaCanvasData& canvas, double low, double high, bool repaint, int mode) {
    if (low >= 0 && high < 0) {
        if (is_whole_shown(canvas)) return false;
        const double length = canvas.view.viewHigh - canvas.view.viewLow;
        low = std::max(0.0, canvas.view.viewLow - length / 2);
        high = pulled_back(canvas, low + 2 * length);
    } else if (low < 0 && !range_from_cursors(canvas, mode, low, high)) {
        laCanvas_Beep(canvas);
        return false;
    }
    if (!(low + tolerance < high)) {
        invalid_range(canvas, low, high);
        return false;
    }
    const double extent = canvas.source.scrollExtent;
    canvas.source.scrollExtent = std::max(canvas.source.totalLength, high);
    if (!laCanvas_ShowRange(canvas, low, high, repaint, true)) {
        canvas.source.scrollExtent = extent;
        return false;
    }
    laHistory_Add(canvas);
    return true;
}

void laCanvas_ZoomInAt(_LaCanvasData& canvas, double centre) {
    const double low = std::max(0.0, centre - canvas.view.viewLength / 4);
    laCanvas_Zoom(canvas, low, low + canvas.view.viewLength / 2, true, Zoom_Range);
}

void laCanvas_ZoomOutAt(_LaCanvasData& canvas, double centre) {
    if (is_whole_shown(canvas)) return;
    const double low = std::max(0.0, centre - canvas.view.viewLength);
    laCanvas_Zoom(canvas, low, pulled_back(canvas, low + 2 * canvas.view.viewLength), true, Zoom_Range);
}

void laCanvas_MoveToTime(_LaCanvasData& canvas, double value, int mode, uint32_t objectId, bool warp) {
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
        if (!laCanvas_ShowRange(canvas, low, high, false, true)) return;
        moved = true;
    }
    int y = 10;
    const laItem_Line* lane = objectId == laAgentId ? nullptr : laCanvas_FindLane(canvas.items, objectId);
    if (lane != nullptr && !lane->hidden) {
        LaGraph& graph = *canvas.graph;
        y = lane->y - canvas.view.verticalOffset;
        if (y < 0 || y > static_cast<int>(graph.vertical.visible())) {
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

void laCanvas_Resized(_LaCanvasData& canvas, int width, int height) {
    LaGraph& graph = *canvas.graph;
    graph.width = std::max(0, width);
    graph.height = std::max(0, height);
    const FontMetrics axis = graph.surface != nullptr ? graph.surface->fontMetrics(Font_Axis) : graph.font;
    const int data = std::max(0, graph.height - laAxis_StripHeight(axis));
    graph.vertical.setRange(static_cast<uint64_t>(std::max(0, canvas.view.contentHeight)),
                            static_cast<uint64_t>(data));
    laCanvas_Rescale(canvas, false);
}
