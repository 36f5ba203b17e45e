// The drawing half of axis.h.
#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/model/time.h"

namespace {

// The ticks and labels of one pass over the strip.
struct TickPass {
    const _LaCanvasData& canvas;
    Surface& surface;
    int top, height;  // of the strip; ticks are up to half as long
    double low;       // start of the view, in the unit
    double step;
    int bandLeft, bandRight;

    bool visible(double t) const { return t >= low - step * 1e-9; }
    int column(double t) const { return laCanvas_TimeToPixel(canvas, t, canvas.axis.timeMode); }
    Colour inkAt(int x) const {
        return x > bandLeft && x < bandRight ? surface.selectionForeground() : surface.foreground();
    }

    void tick(double t, int length) const {
        if (!visible(t)) return;
        const int x = column(std::max(t, low));
        if (x < 0 || x >= canvas.graph->width) return;
        surface.drawLine(x, top, x, top + length, inkAt(x));
    }
    void label(double t) const {
        if (!visible(t)) return;
        const int x = column(std::max(t, low));
        if (x < 0 || x >= canvas.graph->width) return;
        const double value = canvas.axis.tickPattern ? t - canvas.axis.tickBase : t;
        surface.drawText(x, top + height - 1, laAxis_FormatTick(canvas, value), surface.foreground(),
                         NoColour);
    }
};

// Refines the unit until the labels need few digits. True when it drew the axis anew.
bool auto_adjust(_LaCanvasData& canvas, laUnitRule rule) {
    if (!canvas.axis.autoAdjustUnit || rule == laUnitRule::Keep) return false;
    if (canvas.axis.timeMode >= Time_Nanosecond) return false;
    int mode = canvas.axis.timeMode;
    for (; canvas.axis.tickDigits > 2 && mode < Time_Nanosecond; ++mode) canvas.axis.tickDigits -= 3;
    if (mode == canvas.axis.timeMode) return false;
    canvas.axis.tickStep = 0;  // a full repaint, whatever the digits
    canvas.axis.timeMode = mode;
    laAxis_Draw(canvas, 0, canvas.graph->width, rule);
    laCanvas_UpdateTotal(canvas);
    return true;
}

void draw_ticks(_LaCanvasData& canvas, double from, double to, const TickPass& pass) {
    const int length = pass.height / 2;
    const int oldFont = pass.surface.setFont(Font_Axis);
    // Multiples of the step by count, so that no error adds up; the bound keeps a damaged view from spinning.
    for (int i = 0; i <= canvas.graph->width + 2; ++i) {
        const double t = from + i * pass.step;
        if (t > to) break;
        pass.tick(t, length);
        pass.label(t);
        pass.tick(t + pass.step / 4, length / 2);
        pass.tick(t + pass.step / 2, 3 * length / 4);
        pass.tick(t + 3 * pass.step / 4, length / 2);
    }
    if (oldFont >= 0) pass.surface.setFont(oldFont);
}

void new_labels(_LaCanvasData& canvas, double step) {
    canvas.axis.tickStep = step;
    canvas.fields.tickPattern = laAxis_PatternText(canvas);
    canvas.fields.tickUnit = laTime_UnitName(canvas.axis, true);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
}

}  // namespace

void laAxis_DrawBand(const _LaCanvasData& canvas, int c0, int c1, int& left, int& right) {
    Surface& surface = *canvas.graph->surface;
    const int top = laAxis_Top(canvas), height = canvas.graph->height - top - 1;
    const auto clear = [&](int from, int to) {
        if (from <= to) surface.clearRect(from, top + 1, to - from + 1, height);
    };
    c0 = std::max(c0, 0);
    c1 = std::min(c1, canvas.graph->width - 1);
    left = right = -1;
    if (c0 > c1 || height < 0) return;
    surface.drawLine(c0, top, c1, top, surface.foreground());
    if (canvas.marks.cursor[0] < 0 || canvas.marks.cursor[1] < 0) return clear(c0, c1);
    const int a = std::max(-1, laCanvas_TimeToPixel(canvas, canvas.marks.cursor[0], Time_Second));
    const int b = std::max(-1, laCanvas_TimeToPixel(canvas, canvas.marks.cursor[1], Time_Second));
    left = std::min(a, b);
    right = std::max(a, b);
    if (left == right || right < c0 || left > c1) return clear(c0, c1);
    clear(c0, left - 1);
    const int from = std::max(left, c0), to = std::min(right, c1);
    surface.fillRect(from, top + 1, to - from + 1, height, surface.selectionBackground());
    clear(right + 1, c1);
}

void laAxis_Draw(_LaCanvasData& canvas, int x0, int x1, laUnitRule rule) {
    LaGraph& graph = *canvas.graph;
    if (graph.surface == nullptr || canvas.view.viewLength < 1e-12 || graph.width <= 0) return;
    const int oldDigits = canvas.axis.tickDigits, oldFormat = canvas.axis.tickFormat;
    const double oldBase = canvas.axis.tickBase;
    if (x0 != 0) --x0;
    ++x1;
    const double step = laAxis_ChooseStep(canvas);
    if (auto_adjust(canvas, rule)) return;

    int left = -1, right = -1;
    if (canvas.axis.tickDigits < 0) {
        laAxis_DrawBand(canvas, x0, x1, left, right);
        return;
    }
    const bool same = canvas.axis.tickDigits == oldDigits && canvas.axis.tickFormat == oldFormat &&
                      canvas.axis.tickBase == oldBase && canvas.axis.tickStep == step;
    const double low = laTime_Convert(Time_Second, canvas.view.viewLow, canvas.axis.timeMode);
    double from = std::floor(low / step) * step;
    double to = laTime_Convert(Time_Second, canvas.view.viewHigh, canvas.axis.timeMode);
    if (same) {
        from = std::max(from, std::floor(laCanvas_PixelToUnit(canvas.view, canvas.axis, x0) / step) * step);
        to = std::min(to, laCanvas_PixelToUnit(canvas.view, canvas.axis, x1 + 1));
    } else {
        x0 = 0;
        x1 = graph.width;
        new_labels(canvas, step);
    }
    const int top = laAxis_Top(canvas), height = graph.height - top;
    graph.surface->pushClip(x0, top, x1 - x0 + 1, height, true);
    laAxis_DrawBand(canvas, x0, x1, left, right);
    draw_ticks(canvas, from, to, {canvas, *graph.surface, top, height, low, step, left, right});
    graph.surface->popClip();
}
