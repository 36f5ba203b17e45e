// The agents that bring the canvas's drawing onto a page: of the drawing area, and of the names beside it.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/print/page_geometry.h"
#include "windlib/lagraph/print_agent.h"

// Draws in one region of a page. All that it is given outlives it.
class TraxRegionAgent : public PrintAgentImpl<_LaCanvasData> {
  public:
    TraxRegionAgent(_LaCanvasData& canvas, const TraxPageGeometry& geometry, PageDevice& page,
                    TraxRegion region)
        : PrintAgentImpl(canvas, true), geometry_(geometry), page_(page), region_(region) {}

    bool isActive() const override { return active(); }

  protected:
    void beginFor(_LaCanvasData&, int x, int y, int w, int h) override;
    void endFor(_LaCanvasData&) override;
    void lineFor(_LaCanvasData&, int x0, int y0, int x1, int y1, Colour colour, int thickness,
                 int style) override;
    void iconFor(_LaCanvasData&, int x, int y, IconHandle icon) override;
    void textFor(_LaCanvasData&, int x, int y, std::string_view text, Colour foreground, Colour background,
                 int font) override;
    void phasedLineFor(_LaCanvasData&, int x0, int y0, int x1, int y1, Colour colour, int thickness,
                       int style, int phase) override;
    void fillFor(_LaCanvasData&, int x, int y, int w, int h, Colour colour) override;
    int scaleXFor(_LaCanvasData&, int x) const override { return geometry_.X(region_, x); }
    int scaleYFor(_LaCanvasData&, int y) const override { return geometry_.Y(region_, y); }

  private:
    const TraxPageGeometry& geometry_;
    PageDevice& page_;
    TraxRegion region_;
};

class TRAX_PrintAgent : public TraxRegionAgent {
  public:
    TRAX_PrintAgent(_LaCanvasData& canvas, const TraxPageGeometry& geometry, PageDevice& page)
        : TraxRegionAgent(canvas, geometry, page, TraxRegion::Data) {}
};

class TRAX_PrintAgentForTaskList : public TraxRegionAgent {
  public:
    TRAX_PrintAgentForTaskList(_LaCanvasData& canvas, const TraxPageGeometry& geometry, PageDevice& page)
        : TraxRegionAgent(canvas, geometry, page, TraxRegion::Names) {}
};
