#include "chronoweave/traxfunc/print/print_agents.h"

#include <algorithm>

namespace {

// Of a rectangle's side that the screen shows the page shows something.
int side(int from, int end) {
    return std::max(1, end - from);
}

}  // namespace

void TraxRegionAgent::beginFor(_LaCanvasData&, int x, int y, int w, int h) {
    const int left = scaleX(x), top = scaleY(y);
    page_.surface().pushClip(left, top, scaleX(x + w) - left, scaleY(y + h) - top, true);
}

void TraxRegionAgent::endFor(_LaCanvasData&) {
    page_.surface().popClip();
}

void TraxRegionAgent::lineFor(_LaCanvasData& canvas, int x0, int y0, int x1, int y1, Colour colour,
                              int thickness, int style) {
    phasedLineFor(canvas, x0, y0, x1, y1, colour, thickness, style, 0);
}

void TraxRegionAgent::iconFor(_LaCanvasData&, int x, int y, IconHandle icon) {
    const int left = scaleX(x), top = scaleY(y);
    page_.drawIcon(left, top, side(left, scaleX(x + icon_Width(icon))),
                   side(top, scaleY(y + icon_Height(icon))), icon);
}

void TraxRegionAgent::textFor(_LaCanvasData&, int x, int y, std::string_view text, Colour foreground,
                              Colour background, int font) {
    Surface& surface = page_.surface();
    const int before = surface.setFont(font);
    surface.drawText(scaleX(x), scaleY(y), text, foreground, background);
    if (before >= 0) surface.setFont(before);
}

// A line covers on the page what its pixels cover on the screen; only a standing one may be thinner.
void TraxRegionAgent::phasedLineFor(_LaCanvasData&, int x0, int y0, int x1, int y1, Colour colour,
                                    int thickness, int style, int phase) {
    const bool lies = y0 == y1;
    const int thick = lies ? geometry_.LyingThickness(thickness) : geometry_.StandingThickness(thickness);
    const int onPage = phase * thick / std::max(1, thickness);
    Surface& surface = page_.surface();
    if (lies) {
        const int y = scaleY(y0 - thickness / 2) + thick / 2;
        surface.drawStyledLine(scaleX(std::min(x0, x1)), y, scaleX(std::max(x0, x1) + 1) - 1, y, colour,
                               thick, style, onPage);
    } else if (x0 == x1) {
        const int x = scaleX(x0 - thickness / 2) + thick / 2;
        surface.drawStyledLine(x, scaleY(std::min(y0, y1)), x, scaleY(std::max(y0, y1) + 1) - 1, colour,
                               thick, style, onPage);
    } else {
        surface.drawStyledLine(scaleX(x0), scaleY(y0), scaleX(x1), scaleY(y1), colour, thick, style, onPage);
    }
}

void TraxRegionAgent::fillFor(_LaCanvasData&, int x, int y, int w, int h, Colour colour) {
    if (w <= 0 || h <= 0) return;
    const int left = scaleX(x), top = scaleY(y);
    page_.surface().fillRect(left, top, side(left, scaleX(x + w)), side(top, scaleY(y + h)), colour);
}
