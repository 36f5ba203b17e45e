// How things look: the legend, what drawing needs of it, and the measures of a row that follow from it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "chronoweave/rtos/legend.h"
#include "windlib/lagraph/surface.h"

// What drawing needs of a row of the event and status tables, made once per legend change.
struct LaEventLook {
    IconHandle icon = NoIcon;
    int width = 0, height = 0;
    bool shown = false;      // visible, and has an icon
    bool important = false;  // never hidden by others
};
struct LaStatusLook {
    Colour colour = 0;
    int thickness = 1;
    int style = Line_Solid;
    bool shown = true;
    bool isExecution = false;
    bool isContextSwitch = false;
};

struct LaLooks {
    Legend legend;                          // empty until a source is opened
    uint32_t legends = 0;                   // grows with each legend that is taken or dropped
    bool legendChanged = false;             // the configure file is to be offered for saving
    std::vector<LaEventLook> eventLooks;    // one per row of legend.events
    std::vector<LaStatusLook> statusLooks;  // one per row of legend.statuses
    bool anyImportantEvent = false;         // of the looks
    IconHandle overlapIcon = NoIcon;
    bool centerStatus = false;  // lines and icons share the row's centre
    int maxExtent = 16;         // largest of all icon heights and widths and line thicknesses
    int maxIconHeight = 0;      // of icons of visible events
    int maxIconWidth = 0;       // of all icons of the table
    int maxLineThickness = 0;   // of visible statuses that are no context switch
    int rowHeight = 0;          // pixels
};

// Takes over a finished legend: looks up icons and colours. False, and no change, for an empty one. A missing
// icon is reported, with a beep, and replaced by "help".
bool laLooks_Load(LaLooks& looks, Legend legend, const std::function<void()>& beep);
// Recomputes what follows from the legend after visibility, colours or icons in it changed.
void laLooks_Touched(LaLooks& looks);
// Back to no legend, with the misc values that outlast it.
void laLooks_Drop(LaLooks& looks, const LegendMisc& kept);
// rowHeight from the measures and the font: true when it changed. The caller then lays out and repaints.
bool laCanvas_UpdateRowHeight(LaLooks& looks, const FontMetrics& font);
