#include "chronoweave/traxfunc/input/zoom.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/view.h"

namespace {

constexpr double tolerance = 1e-12;
constexpr const char* wholeShown = "The whole graph has already been shown in the window.";

bool is_whole_shown(_LaCanvasData& canvas) {
    if (canvas.view.viewLow > 0 || canvas.view.viewHigh < canvas.source.totalLength) return false;
    laCanvas_Refuse(canvas, wholeShown);
    return true;
}

double pulled_back(const _LaCanvasData& canvas, double high) {
    return std::min(high, std::max(canvas.source.totalLength, canvas.view.viewHigh));
}

bool zoom_about(_LaCanvasData& canvas, double cursor, bool both) {
    const double quarter = canvas.view.viewLength / 4;
    const double low = both ? std::max(0.0, cursor - quarter) : canvas.view.viewLow;
    return laCanvas_Zoom(canvas, low, low + canvas.view.viewLength / 2);
}

bool zoom_to_selection(_LaCanvasData& canvas, double first, double second, bool both) {
    if (both && second > first + tolerance) return laCanvas_Zoom(canvas, first, second);
    const double low = both ? std::max(0.0, first - canvas.view.viewLength / 4) : 0;
    return laCanvas_Zoom(canvas, low, low + canvas.view.viewLength / 2);
}

}  // namespace

bool laCanvas_Zoom(_LaCanvasData& canvas, double low, double high) {
    if (!(low + tolerance < high)) {
        laCanvas_RefuseRange(canvas, low, high);
        return false;
    }
    const double extent = canvas.source.scrollExtent;
    canvas.source.scrollExtent = std::max(canvas.source.totalLength, high);
    if (!laCanvas_ShowRange(canvas, low, high, {.paint = true})) {
        canvas.source.scrollExtent = extent;
        return false;
    }
    laHistory_Add(canvas);
    return true;
}

bool laCanvas_Zoom(_LaCanvasData& canvas, ZoomMode mode) {
    const auto [smaller, larger] = std::minmax(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    const bool both = smaller >= 0;
    switch (mode) {
        case ZoomMode::Left:
            return zoom_about(canvas, smaller, both);
        case ZoomMode::Right:
            return zoom_about(canvas, larger, both);
        case ZoomMode::Selection:
            break;
    }
    return zoom_to_selection(canvas, smaller, larger, both);
}

bool laCanvas_ZoomOut(_LaCanvasData& canvas) {
    if (is_whole_shown(canvas)) return false;
    const double length = canvas.view.viewHigh - canvas.view.viewLow;
    const double low = std::max(0.0, canvas.view.viewLow - length / 2);
    return laCanvas_Zoom(canvas, low, pulled_back(canvas, low + 2 * length));
}

void laCanvas_ZoomInAt(_LaCanvasData& canvas, double centre) {
    const double low = std::max(0.0, centre - canvas.view.viewLength / 4);
    laCanvas_Zoom(canvas, low, low + canvas.view.viewLength / 2);
}

void laCanvas_ZoomOutAt(_LaCanvasData& canvas, double centre) {
    if (is_whole_shown(canvas)) return;
    const double low = std::max(0.0, centre - canvas.view.viewLength);
    laCanvas_Zoom(canvas, low, pulled_back(canvas, low + 2 * canvas.view.viewLength));
}
