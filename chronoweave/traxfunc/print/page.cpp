#include "chronoweave/traxfunc/print/page.h"

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/list/names.h"
#include "chronoweave/traxfunc/print/print_agents.h"
#include "shared/libcxxutil/text.h"
#include "windlib/lagraph/agent_surface.h"

namespace {

constexpr const char* printFont = "Courier New";
constexpr const char* unnamed = "VOREL Chronoweave";
constexpr Colour ink = 0x000000;
constexpr int margin = 4;  // pixels of the screen beside texts

enum class At { Left, Centre, Right };

class PageDrawing {
  public:
    PageDrawing(_LaCanvasData& canvas, PageDevice& page, const TraxPageGeometry& geometry)
        : canvas_(canvas), page_(page), surface_(page.surface()), geometry_(geometry) {}

    void Frame() {
        const int left = geometry_.printOriginX, top = geometry_.printOriginY;
        const int right = left + geometry_.width - 1, bottom = top + geometry_.height - 1;
        Line(left, top, right, top);
        Line(left, bottom, right, bottom);
        Line(left, top, left, bottom);
        Line(right, top, right, bottom);
    }

    void Header() {
        const TraxPrintSizes& sizes = geometry_.sizes;
        const LaCanvasFields& fields = canvas_.fields;
        const int top = sizes.TitleHeight(), height = sizes.HeaderHeight();
        std::string unit = fields.tickPattern;
        if (!unit.empty() && !fields.tickUnit.empty()) unit += "  ";
        unit += fields.tickUnit;
        const int middle = Right() / 3;
        Text(TraxRegion::Total, 0, middle, top, height, unit, At::Left);
        Text(TraxRegion::TotalValue, middle, Right(), top, height,
             fields.totalLengthTitle + ": " + fields.totalLength, At::Right);
    }

    void RegionLines() {
        const TraxPrintSizes& sizes = geometry_.sizes;
        const int right = geometry_.printOriginX + geometry_.width - 1;
        for (const int y :
             {sizes.TitleHeight(), sizes.TitleHeight() + sizes.HeaderHeight(), geometry_.GraphTop()})
            Line(geometry_.printOriginX, geometry_.Y(TraxRegion::Total, y), right,
                 geometry_.Y(TraxRegion::Total, y));
        const int bottom = geometry_.Y(TraxRegion::AxisFromBottom, 0);
        Line(geometry_.printOriginX, bottom, right, bottom);
        // In the middle of the gap between names and data.
        const int divider = geometry_.X(TraxRegion::Names, sizes.listWidth - 2);
        Line(divider, geometry_.Y(TraxRegion::Data, 0), divider, bottom);
        const int end = geometry_.X(TraxRegion::Data, sizes.graphWidth);
        if (end < right) Line(end, geometry_.Y(TraxRegion::Data, 0), end, bottom);
    }

    void ViewLine() {
        const TraxPrintSizes& sizes = geometry_.sizes;
        const LaCanvasFields& fields = canvas_.fields;
        const std::string view =
            "View From: " + fields.viewFrom + " To: " + fields.viewTo + " With Length: " + fields.viewLength;
        Text(TraxRegion::Total, sizes.listWidth, sizes.listWidth + sizes.graphWidth,
             sizes.TitleHeight() + sizes.HeaderHeight(), sizes.ViewHeight(), view, At::Centre);
    }

    void Name(const std::string& pageOf) {
        const std::string& name = canvas_.source.canvasName;
        const int width = geometry_.FrameWidth(), height = geometry_.sizes.TitleHeight();
        Text(TraxRegion::Total, width / 5, width - width / 5, 0, height,
             name.empty() ? unnamed : text_utf8(name), At::Centre);
        if (!pageOf.empty()) Text(TraxRegion::Total, width - width / 5, width, 0, height, pageOf, At::Right);
    }

    void Graph() {
        LaGraph& graph = *canvas_.graph;
        TRAX_PrintAgent agent(canvas_, geometry_, page_);
        AgentSurface area(agent, surface_, graph.width, graph.height, geometry_.PerX(), geometry_.PerY());
        area.pushClip(0, 0, graph.width, graph.height, true);
        graph.surface = &area;
        laCanvas_Repaint(canvas_);
        graph.surface = nullptr;
        area.popClip();
        agent.setActive(false);
    }

    void Names() {
        const int width = geometry_.sizes.listWidth - 3, height = geometry_.sizes.dataHeight;
        TRAX_PrintAgentForTaskList agent(canvas_, geometry_, page_);
        AgentSurface column(agent, surface_, width, height, geometry_.PerX(), geometry_.PerY());
        column.pushClip(1, 1, width - 1, height - 1, true);  // tints leave the lines around
        laNames(*canvas_.taskList, canvas_.looks, canvas_.view, *canvas_.graph)
            .Draw(column, width, height, laNames::Look::Picture);
        column.popClip();
        agent.setActive(false);
    }

  private:
    // The right end of the picture, within the frame.
    int Right() const { return geometry_.sizes.listWidth + geometry_.sizes.graphWidth; }

    // In device pixels.
    void Line(int x0, int y0, int x1, int y1) {
        const int thick = y0 == y1 ? geometry_.LyingThickness(1) : geometry_.StandingThickness(1);
        surface_.drawStyledLine(x0, y0, x1, y1, ink, thick, 0, 0);
    }

    // In a strip of pixels of the screen; cut where it has no room.
    void Text(TraxRegion region, int from, int end, int top, int height, const std::string& text, At at) {
        const int left = geometry_.X(region, from + margin), right = geometry_.X(region, end - margin);
        const int above = geometry_.Y(region, top), below = geometry_.Y(region, top + height);
        const std::string shown = laNames_Elide(surface_, text, right - left);
        if (shown.empty()) return;
        const int spare = right - left - surface_.textExtent(shown).width;
        const int moved = at == At::Left ? 0 : at == At::Centre ? spare / 2 : spare;
        const FontMetrics font = surface_.fontMetrics(Font_Application);
        surface_.drawText(left + moved, (above + below - font.height) / 2 + font.ascent, shown, ink,
                          NoColour);
    }

    _LaCanvasData& canvas_;
    PageDevice& page_;
    Surface& surface_;
    const TraxPageGeometry& geometry_;
};

// The labels of the axis have the room that the page's letters need, and the texts are those of its ticks.
void settle(_LaCanvasData& canvas, PageDevice& page, const TraxPageGeometry& geometry) {
    TRAX_PrintAgent agent(canvas, geometry, page);
    AgentSurface measure(agent, page.surface(), 0, 0, geometry.PerX(), geometry.PerY());
    canvas.graph->font = measure.fontMetrics(Font_Application);
    canvas.graph->axisFont = measure.fontMetrics(Font_Axis);
    laCanvas_Repaint(canvas);
    canvas.wanted = {};
}

}  // namespace

TraxPrintEnd traxPrint_Page(_LaCanvasData& canvas, PageDevice& page, const TraxPageGeometry& geometry,
                            const TraxPageContent& content) {
    if (!page.makeFonts(printFont, geometry.printBigFontHeight, geometry.printSmallFontHeight))
        return TraxPrintEnd::NoFont;
    if (!page.startPage()) return TraxPrintEnd::StartFailed;
    page.surface().setFont(Font_Application);
    settle(canvas, page, geometry);
    PageDrawing drawing(canvas, page, geometry);
    drawing.Frame();
    drawing.Header();
    drawing.RegionLines();
    drawing.ViewLine();
    drawing.Name(content.pageOf);
    drawing.Graph();
    drawing.Names();
    if (!content.foot.empty()) traxFoot_Draw(content.foot, content.footLayout, geometry, page);
    return page.endPage() ? TraxPrintEnd::Done : TraxPrintEnd::EndFailed;
}
