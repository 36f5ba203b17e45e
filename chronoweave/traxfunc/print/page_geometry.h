// Where everything of a printed page stands: from the sizes of the sheet and of what the screen shows to one
// zoom rate, and from pixels of the screen to those of the page. Nothing here draws or asks.
//
// From the top of the frame: the strip of the canvas's name, the header strip (pattern, unit, total length),
// the line about the view, then the names beside the data area and its axis; at the bottom the foot, if any.
#pragma once

#include "windlib/lagraph/page.h"

// Pixels of the screen.
struct TraxPrintSizes {
    int graphWidth = 0, graphHeight = 0;  // of the drawing area, axis included
    int dataHeight = 0;                   // of its rows above the axis
    int listWidth = 0;                    // of the names, with the divider
    int barWidth = 0;                     // of a scroll bar
    int fontHeight = 0, axisFontHeight = 0;
    int footHeight = 0;  // 0: no foot
    // The strip of the name, and the line about the view.
    int TitleHeight() const { return fontHeight + 4; }
    int ViewHeight() const { return fontHeight + 4; }
    int HeaderHeight() const { return 2 + (barWidth > fontHeight ? barWidth : fontHeight); }
};

// The parts of a page, by how their coordinates count.
enum class TraxRegion {
    Data = 0,            // of the data area: x right of the names
    Axis = 1,            // the same; y goes on below the data area
    AxisFromBottom = 2,  // x right of the names, y up from the lower end of the axis
    Names = 3,
    Total = 4,       // the header strip: y from the top of the frame
    TotalValue = 5,  // the same
    Bottom = 6,      // y up from the lower end of the frame
};

// The margin on every side of the sheet.
constexpr double traxPrint_MarginInches = 0.4;

struct TraxPageGeometry {
    TraxPrintSizes sizes;
    double zoomRate = 0;  // screen to page beyond the ratio of their resolutions; at most 1
    double printScaleX = 0, printScaleY = 0;               // the page's pixels for one of the screen
    int printOriginX = 0, printOriginY = 0;                // of the frame, device pixels
    int width = 0, height = 0;                             // of the frame, device pixels
    int printBigFontHeight = 0, printSmallFontHeight = 0;  // device pixels

    double PerX() const { return zoomRate * printScaleX; }
    double PerY() const { return zoomRate * printScaleY; }
    // Pixels of the screen above the drawing area.
    int GraphTop() const { return sizes.TitleHeight() + sizes.HeaderHeight() + sizes.ViewHeight(); }
    int X(TraxRegion region, int x) const;
    int Y(TraxRegion region, int y) const;
    // Thickness on the page: that of a line along the rows goes with the scale; one that stands, such as a
    // context switch, is rounded down, so that neighbours stay apart. At least 1.
    int LyingThickness(int pixels) const;
    int StandingThickness(int pixels) const;
    // The right end of the frame, in pixels of the screen.
    int FrameWidth() const;
};

// Nothing is drawn where zoomRate is 0: the sheet is too small to hold anything.
TraxPageGeometry traxPrint_Geometry(const PageFacts& page, const TraxPrintSizes& sizes);

// The drawing area that fills a page: as wide as the page at its own scale, or more when the rows, so many
// pixels high, need a smaller scale to be all on it. Only listWidth, barWidth, the fonts and the foot of
// sizes are read.
struct TraxGraphSize {
    int width = 0, height = 0;
};
TraxGraphSize traxPrint_FillingGraph(const PageFacts& page, const TraxPrintSizes& sizes, int rowsHeight,
                                     int axisHeight);
