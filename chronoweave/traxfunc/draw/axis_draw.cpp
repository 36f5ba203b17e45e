// The drawing half of axis.h.
#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/draw/axis.h"

namespace {

// The ticks and labels of one pass over the strip.
struct TickPass {
    const laScene& scene;
    Surface& surface;
    int top, height;  // of the strip; ticks are up to half as long
    laTimeScale scale;
    double low;  // start of the view, in the unit
    double step;
    int bandLeft, bandRight;

    bool visible(double t) const { return t >= low - step * 1e-9; }
    int column(double t) const {
        const TimeMode mode = scene.axis.timeMode;
        return scale.ToPixel(mode == Time_Sequential ? t : laTime_Convert(mode, t, Time_Second));
    }
    Colour InkAt(int x) const {
        return x > bandLeft && x < bandRight ? surface.selectionForeground() : surface.foreground();
    }

    void tick(double t, int length) const {
        if (!visible(t)) return;
        const int x = column(std::max(t, low));
        if (x < 0 || x >= scene.graph.width) return;
        surface.drawLine(x, top, x, top + length, InkAt(x));
    }
    void label(double t) const {
        if (!visible(t)) return;
        const int x = column(std::max(t, low));
        if (x < 0 || x >= scene.graph.width) return;
        const double value = scene.axis.tickPattern ? t - scene.axis.tickBase : t;
        surface.drawText(x, top + height - 1, laAxis_FormatTick(scene.axis, value), surface.foreground(),
                         NoColour);
    }
};

void draw_ticks(const TickPass& pass, double from, double to) {
    const int length = pass.height / 2;
    const int oldFont = pass.surface.setFont(Font_Axis);
    // Multiples of the step by count, so that no error adds up; the bound keeps a damaged view from spinning.
    for (int i = 0; i <= pass.scene.graph.width + 2; ++i) {
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

}  // namespace

laAxisBand laAxis_DrawBand(const laScene& scene, int c0, int c1) {
    Surface& surface = *scene.graph.surface;
    const int top = laAxis_Top(scene.graph), height = scene.graph.height - top - 1;
    const auto clear = [&](int from, int to) {
        if (from <= to) surface.clearRect(from, top + 1, to - from + 1, height);
    };
    c0 = std::max(c0, 0);
    c1 = std::min(c1, scene.graph.width - 1);
    laAxisBand band;
    if (c0 > c1 || height < 0) return band;
    surface.drawLine(c0, top, c1, top, surface.foreground());
    if (scene.marks.cursor[0] < 0 || scene.marks.cursor[1] < 0) {
        clear(c0, c1);
        return band;
    }
    const laTimeScale scale = scene.scale();
    const int a = std::max(-1, scale.ToPixel(scene.marks.cursor[0]));
    const int b = std::max(-1, scale.ToPixel(scene.marks.cursor[1]));
    band = {std::min(a, b), std::max(a, b)};
    if (band.left == band.right || band.right < c0 || band.left > c1) {
        clear(c0, c1);
        return band;
    }
    clear(c0, band.left - 1);
    const int from = std::max(band.left, c0), to = std::min(band.right, c1);
    surface.fillRect(from, top + 1, to - from + 1, height, surface.selectionBackground());
    clear(band.right + 1, c1);
    return band;
}

void laAxis_Draw(const laScene& scene, const laAxisTicks& ticks, int x0, int x1) {
    const LaGraph& graph = scene.graph;
    const LaAxis& axis = scene.axis;
    if (x0 != 0) --x0;
    ++x1;
    if (axis.tickDigits < 0) {
        laAxis_DrawBand(scene, x0, x1);
        return;
    }
    const double low = laTime_Convert(Time_Second, scene.view.viewLow, axis.timeMode);
    double from = std::floor(low / ticks.step) * ticks.step;
    double to = laTime_Convert(Time_Second, scene.view.viewHigh, axis.timeMode);
    if (ticks.freshLabels) {
        x0 = 0;
        x1 = graph.width;
    } else {
        const auto unit = [&](int x) { return laCanvas_PixelToUnit(scene.view, axis, x); };
        from = std::max(from, std::floor(unit(x0) / ticks.step) * ticks.step);
        to = std::min(to, unit(x1 + 1));
    }
    const int top = laAxis_Top(graph), height = graph.height - top;
    graph.surface->pushClip(x0, top, x1 - x0 + 1, height, true);
    const laAxisBand band = laAxis_DrawBand(scene, x0, x1);
    draw_ticks({scene, *graph.surface, top, height, scene.scale(), low, ticks.step, band.left, band.right},
               from, to);
    graph.surface->popClip();
}
