// LaGraph: the place of the canvas on screen as data: the drawing area's size, its two scroll bars, and what
// the canvas asks of the window around it. The platform layer fills it; tests and picture files use it as it
// is.
#pragma once

#include <functional>
#include <string>

#include "windlib/lagraph/scroll_bar.h"
#include "windlib/lagraph/surface.h"

struct LaGraph {
    int width = 0;  // of the drawing area, logical pixels, axis strip included
    int height = 0;
    ScrollBarModel horizontal;   // range: the virtual picture
    ScrollBarModel vertical;     // range: the content; visible: the height of the data area
    Surface* surface = nullptr;  // what to draw on now; null when nothing is shown
    FontMetrics font;            // of the application font, for layout with no surface at hand
    FontMetrics axisFont;        // of the axis's

    // Set by the platform layer; empty functions are not called.
    std::function<void()> beep;
    std::function<void(bool busy)> setBusy;  // nests
    std::function<void()> raise;
    std::function<void(int x, int y)> warpPointer;
    std::function<int()> pointerColumn;  // column under the pointer, the middle when it is elsewhere
    std::function<void(const std::string& text)> showTip;  // at the pointer; empty: the tip goes
    std::function<void()> listChanged;                     // the object list must be repainted
};
