// What is printed on: a device of pages. The logic of printing draws on it as on any surface; the platform
// layer has the real ones (printer, preview, PDF file), tests one that records.
#pragma once

#include <string>

#include "windlib/lagraph/surface.h"

// Sizes in device pixels, of the whole sheet as it is turned; resolutions in pixels per inch.
struct PageFacts {
    int width = 0, height = 0;
    int printerX = 0, printerY = 0;
    int screenX = 96, screenY = 96;  // of the screen whose pixels are scaled to the page's
    bool canDraw = false;            // lines and areas; a device for text alone can't
};

class PageDevice {
  public:
    virtual ~PageDevice() = default;

    virtual PageFacts facts() const = 0;
    // Makes the fonts of the pages: Font_Application and Font_Axis of the surface, so many device pixels high
    // from the top of the highest letter to the bottom of the lowest. Another fixed pitch font stands in for
    // a family that is not there. False when there is none.
    virtual bool makeFonts(const std::string& family, int applicationHeight, int axisHeight) = 0;
    // Called with fonts made. False when the device failed; there is then no page.
    virtual bool startPage() = 0;
    virtual bool endPage() = 0;
    // From StartPage to EndPage: device pixels from the sheet's upper left corner.
    virtual Surface& surface() = 0;
    // On the page, in a size in device pixels.
    virtual void drawIcon(int x, int y, int w, int h, IconHandle icon) = 0;
};
