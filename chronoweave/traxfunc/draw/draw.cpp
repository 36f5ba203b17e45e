#include "chronoweave/traxfunc/draw/draw.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw_items.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/input/scroll.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"

namespace {

// Takes over what happened to the bars and the size since the last paint. True when that already painted.
bool catch_up(_LaCanvasData& canvas) {
    LaGraph& graph = *canvas.graph;
    canvas.view.verticalOffset = static_cast<int>(graph.vertical.position());
    if (graph.horizontal.position() != canvas.view.scrollPosition) {
        const double low = laCanvas_AbsoluteTime(canvas.view, graph.horizontal.position());
        if (!laCanvas_ShowRange(canvas, low, low + canvas.view.viewLength, false, false))
            graph.horizontal.setPosition(canvas.view.scrollPosition);
    } else if (graph.width != canvas.view.laidOutWidth) {
        laCanvas_Rescale(canvas, true);
        return true;
    }
    return false;
}

void paint_data(_LaCanvasData& canvas, const laRect& part, const laRect& widened, int dataHeight) {
    Surface& surface = *canvas.graph->surface;
    const int bottom = std::min(part.bottom, dataHeight);
    if (part.top >= bottom || part.left >= part.right) return;
    laPaint paint(canvas, surface, widened);
    paint.rect.bottom = std::min(widened.bottom, dataHeight) + canvas.view.verticalOffset;
    paint.rect.top += canvas.view.verticalOffset;
    paint.dataHeight = dataHeight;
    surface.pushClip(part.left, part.top, part.right - part.left, bottom - part.top, true);
    laPaint_Lanes(paint);
    laPaint_Icons(paint);
    const auto switches = [](const LaStatusLook& look) { return look.isContextSwitch && look.shown; };
    if (std::any_of(canvas.looks.statusLooks.begin(), canvas.looks.statusLooks.end(), switches))
        laPaint_Switches(paint);
    laBookmark_PaintAll(canvas);
    laHits_Paint(canvas, part.left, part.right);
    surface.popClip();
}

void paint_cursors(_LaCanvasData& canvas, const laRect& part) {
    Surface& surface = *canvas.graph->surface;
    surface.pushClip(part.left, part.top, part.right - part.left, part.bottom - part.top, true);
    for (int which = 0; which < 2; ++which) {
        if (which == 1 && !canvas.marks.secondShown) continue;
        const double time = canvas.marks.cursor[which];
        if (time < canvas.view.viewLow || time > canvas.view.viewHigh || time < 0) continue;
        const int x = laCanvas_TimeToPixel(canvas, time, Time_Second);
        if (x < part.left || x >= part.right || x >= canvas.graph->width) continue;
        const bool dragged = which == 1 && canvas.marks.secondDragged;
        if (dragged) surface.setExclusiveOr(true);
        laCanvas_DrawCursor(canvas, x, false, nullptr, false, dragged ? 0xFFFFFF : surface.foreground());
        if (dragged) surface.setExclusiveOr(false);
    }
    surface.popClip();
}

}  // namespace

void laCanvas_PaintRect(_LaCanvasData& canvas, int y0, int y1, int x0, int x1, bool widen) {
    LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr || graph.width <= 0 || graph.height <= 0) return;
    if (catch_up(canvas)) return;
    const laRect part{std::clamp(x0, 0, graph.width), std::clamp(y0, 0, graph.height),
                      std::clamp(x1, 0, graph.width), std::clamp(y1, 0, graph.height)};
    laRect widened = part;
    if (widen && x0 != x1) {
        const int reach = (canvas.looks.maxExtent >> 1) + 1;
        widened.left = std::max(0, part.left - reach);
        widened.right = std::min(graph.width, part.right + reach);
    }
    widened.top = std::max(0, part.top - 1);
    widened.bottom = std::min(graph.height, part.bottom + 1);

    const int dataHeight = laAxis_Top(canvas);
    paint_data(canvas, part, widened, dataHeight);
    paint_cursors(canvas, part);
    if (part.bottom > dataHeight) {
        laAxis_Draw(canvas, part.left, part.right);
        laCanvas_UpdateTotal(canvas);
    }
    if (graph.presented) graph.presented(part.left, part.top, part.right, part.bottom);
}

void laCanvas_Repaint(_LaCanvasData& canvas) {
    LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr) return;
    graph.surface->clearRect(0, 0, graph.width, graph.height);
    canvas.axis.tickStep = 0;  // the whole strip goes with the rest
    laCanvas_PaintRect(canvas, 0, graph.height, 0, graph.width, false);
    laScroll_NotePainted(canvas);
    if (graph.listChanged) graph.listChanged();
}

void laCanvas_RepaintColumns(_LaCanvasData& canvas, int x0, int x1) {
    LaGraph& graph = *canvas.graph;
    x0 = std::clamp(x0, 0, std::max(0, graph.width));
    x1 = std::clamp(x1, 0, std::max(0, graph.width));
    if (graph.surface == nullptr || x0 >= x1) return;
    const int dataHeight = laAxis_Top(canvas);
    graph.surface->clearRect(x0, 0, x1 - x0, dataHeight);
    laCanvas_PaintRect(canvas, 0, dataHeight, x0, x1, true);
}

void laCanvas_RepaintRows(_LaCanvasData& canvas, int y0, int y1) {
    LaGraph& graph = *canvas.graph;
    const int dataHeight = laAxis_Top(canvas);
    y0 = std::clamp(y0, 0, dataHeight);
    y1 = std::clamp(y1, 0, dataHeight);
    if (graph.surface == nullptr || y0 >= y1) return;
    graph.surface->clearRect(0, y0, graph.width, y1 - y0);
    laCanvas_PaintRect(canvas, y0, y1, 0, graph.width, false);
}

void laCanvas_DrawCursor(_LaCanvasData& canvas, int x, bool showMessage, const char* message, bool force,
                         Colour colour) {
    LaGraph& graph = *canvas.graph;
    const int dataHeight = laAxis_Top(canvas);
    if (graph.surface != nullptr && x >= 0 && x < graph.width && dataHeight > 0)
        graph.surface->drawLine(x, 0, x, dataHeight - 1, colour);
    if (!showMessage || !(force || canvas.marks.cursor[0] < 0)) return;
    if (message != nullptr) {
        laCanvas_UpdateFields(canvas, 0, message);
        return;
    }
    const std::string time = laTime_TrimZeros(gen_format("%.*f", std::max(0, canvas.axis.tickDigits + 3),
                                                         laCanvas_PixelToUnit(canvas.view, canvas.axis, x)));
    const std::string text = canvas.axis.timeMode == Time_Sequential
                                 ? gen_format("%s Sequences.", time.c_str())
                                 : gen_format("%s %ss.", time.c_str(), laTime_UnitName(canvas.axis, true));
    laCanvas_UpdateFields(canvas, 0, text.c_str());
}

void laCanvas_EraseCursor(_LaCanvasData& canvas, int x) {
    laCanvas_UpdateFields(canvas, 0, " ");
    if (x <= -2 || x > canvas.graph->width) return;
    laCanvas_RepaintColumns(canvas, x - 1, x + 2);
}

void laBookmark_PaintAll(const _LaCanvasData& canvas) {
    Surface& surface = *canvas.graph->surface;
    const int dataHeight = laAxis_Top(canvas);
    for (const LaBookmark& mark : canvas.marks.bookmarks) {
        const int x = laCanvas_TimeToPixel(canvas, mark.time, Time_Second);
        if (x < 0 || x >= canvas.graph->width || dataHeight <= 0) continue;
        surface.drawStyledLine(x, 0, x, dataHeight - 1, mark.colour, std::max(1, mark.thickness), mark.style,
                               0);
    }
}
