#include "chronoweave/traxfunc/print/print_agents.h"

#include <algorithm>

namespace {

// Of a rectangle's side that the screen shows the page shows something.
int side(int from, int end) {
    return std::max(1, end - from);
}

}  // namespace

void TraxRegionAgent::BeginFor(_LaCanvasData&, int x, int y, int w, int h) {
    const int left = ScaleX(x), top = ScaleY(y);
    page_.surface().pushClip(left, top, ScaleX(x + w) - left, ScaleY(y + h) - top, true);
}

void TraxRegionAgent::EndFor(_LaCanvasData&) {
    page_.surface().popClip();
}

void TraxRegionAgent::LineFor(_LaCanvasData& canvas, int x0, int y0, int x1, int y1, Colour colour,
                              int thickness, int style) {
    PhasedLineFor(canvas, x0, y0, x1, y1, colour, thickness, style, 0);
}

void TraxRegionAgent::IconFor(_LaCanvasData&, int x, int y, IconHandle icon) {
    const int left = ScaleX(x), top = ScaleY(y);
    page_.DrawIcon(left, top, side(left, ScaleX(x + icon_Width(icon))),
                   side(top, ScaleY(y + icon_Height(icon))), icon);
}

void TraxRegionAgent::TextFor(_LaCanvasData&, int x, int y, std::string_view text, Colour foreground,
                              Colour background, int font) {
    Surface& surface = page_.surface();
    const int before = surface.setFont(font);
    surface.drawText(ScaleX(x), ScaleY(y), text, foreground, background);
    if (before >= 0) surface.setFont(before);
}

// A line covers on the page what its pixels cover on the screen; only a standing one may be thinner.
void TraxRegionAgent::PhasedLineFor(_LaCanvasData&, int x0, int y0, int x1, int y1, Colour colour,
                                    int thickness, int style, int phase) {
    const bool lies = y0 == y1;
    const int thick = lies ? geometry_.LyingThickness(thickness) : geometry_.StandingThickness(thickness);
    const int onPage = phase * thick / std::max(1, thickness);
    Surface& surface = page_.surface();
    if (lies) {
        const int y = ScaleY(y0 - thickness / 2) + thick / 2;
        surface.drawStyledLine(ScaleX(std::min(x0, x1)), y, ScaleX(std::max(x0, x1) + 1) - 1, y, colour,
                               thick, style, onPage);
    } else if (x0 == x1) {
        const int x = ScaleX(x0 - thickness / 2) + thick / 2;
        surface.drawStyledLine(x, ScaleY(std::min(y0, y1)), x, ScaleY(std::max(y0, y1) + 1) - 1, colour,
                               thick, style, onPage);
    } else {
        surface.drawStyledLine(ScaleX(x0), ScaleY(y0), ScaleX(x1), ScaleY(y1), colour, thick, style, onPage);
    }
}

void TraxRegionAgent::FillFor(_LaCanvasData&, int x, int y, int w, int h, Colour colour) {
    if (w <= 0 || h <= 0) return;
    const int left = ScaleX(x), top = ScaleY(y);
    page_.surface().fillRect(left, top, side(left, ScaleX(x + w)), side(top, ScaleY(y + h)), colour);
}
