// The commands of the canvas that are a dialog, and nothing but one.
#pragma once

#include <functional>
#include <string>

#include "chronoweave/analysis/program_options.h"

struct _LaCanvasData;

// What they need of the window that shows the canvas. All must be set.
struct DialogWindow {
    std::function<ProgramOptions()> options;
    std::function<void(const ProgramOptions&)> setOptions;  // of all windows; they are kept
    std::function<std::string()> title;
    std::function<void(const std::string&)> setTitle;
    std::function<void()> closed;  // a dialog is: the picture has the keyboard again
};

// Makes them commands of the canvas: "About", "KeySheet", "HideTasks", "GoToTime", "TimeUnit",
// "EditBookmarks", "RefreshGap", "CanvasName", "Options", "ScrollPos", and "IconButton", which asks nothing.
// They need its host, and refuse without one.
void dialogs_Attach(_LaCanvasData& canvas, DialogWindow window);
