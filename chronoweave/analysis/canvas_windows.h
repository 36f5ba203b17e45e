// The windows about a canvas: how they open, and the canvas's lists of them.
#pragma once

#include <functional>
#include <memory>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/host.h"

enum class CanvasWindow {
    View,   // about something of the trace: viewWindows, any number, closed by one command
    Legend  // legendWindow: one, closed with the legend that it shows
};

// Opens a window at the canvas's host, which must be there. It stands in the canvas's list until it closes;
// closed is called first then, and may be empty. The model's onClose is taken for that.
void analysis_OpenWindow(_LaCanvasData& canvas, CanvasWindow kind, std::unique_ptr<DialogModel> made,
                         std::function<void()> closed = {});
