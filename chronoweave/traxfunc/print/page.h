// One printed page of a canvas, drawn on the device of a page.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/print/legend_foot.h"
#include "chronoweave/traxfunc/print/page_geometry.h"

// What the page says besides the picture.
struct TraxPageContent {
    std::string pageOf;  // "Page 2 of 5"; empty for the only one
    std::vector<TraxFootEntry> foot;
    TraxFootLayout footLayout;
};

enum class TraxPrintEnd {
    Done,
    CannotDraw,  // the device draws no lines, or its sheet holds nothing
    NoFont,
    StartFailed,
    EndFailed,
    NothingShown,  // the range could not be fetched
    Stopped,       // the user did
};

// Draws the canvas as its graph shows it. The graph is the page's own: its fonts become those of the page.
// The surface of the graph is null, before and after. Done, NoFont, StartFailed or EndFailed.
TraxPrintEnd traxPrint_Page(_LaCanvasData& canvas, PageDevice& page, const TraxPageGeometry& geometry,
                            const TraxPageContent& content);
