#include "chronoweave/traxfunc/draw/draw.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw_items.h"
#include "chronoweave/traxfunc/draw/draw_processors.h"
#include "chronoweave/traxfunc/draw/hit_marks.h"

laPaintArea laPaint_Area(const laScene& scene, const laRect& part, laPaintReach reach) {
    const int width = scene.graph.width, height = scene.graph.height;
    laPaintArea area;
    area.part = {std::clamp(part.left, 0, width), std::clamp(part.top, 0, height),
                 std::clamp(part.right, 0, width), std::clamp(part.bottom, 0, height)};
    area.reach = area.part;
    if (reach == laPaintReach::Neighbours && part.left != part.right) {
        const int columns = (scene.looks.maxExtent >> 1) + 1;
        area.reach.left = std::max(0, area.part.left - columns);
        area.reach.right = std::min(width, area.part.right + columns);
    }
    area.reach.top = std::max(0, area.part.top - 1);
    area.reach.bottom = std::min(height, area.part.bottom + 1);
    return area;
}

void laPaint_Data(const laScene& scene, const laPaintArea& area) {
    Surface& surface = *scene.graph.surface;
    const int dataHeight = laAxis_Top(scene.graph);
    const laRect& part = area.part;
    const int bottom = std::min(part.bottom, dataHeight);
    if (part.top >= bottom || part.left >= part.right) return;
    laPaint paint{scene, surface, scene.scale(), area.reach, dataHeight};
    paint.rect.bottom = std::min(area.reach.bottom, dataHeight) + scene.view.verticalOffset;
    paint.rect.top += scene.view.verticalOffset;
    surface.pushClip(part.left, part.top, part.right - part.left, bottom - part.top, true);
    const auto isSwitch = [](const LaStatusLook& look) { return look.isContextSwitch && look.shown; };
    const bool switches =
        std::any_of(scene.looks.statusLooks.begin(), scene.looks.statusLooks.end(), isSwitch);
    if (switches) laPaint_Switches(paint, laSwitchLayer::Under);
    laPaint_Lanes(paint);
    laPaint_Processors(paint);
    laPaint_Icons(paint);
    if (switches) laPaint_Switches(paint, laSwitchLayer::Over);
    laPaint_PinnedProcessors(paint);
    laBookmark_PaintAll(scene);
    laHits_Paint(scene, part.left, part.right);
    surface.popClip();
}

void laPaint_Cursors(const laScene& scene, const laRect& part) {
    Surface& surface = *scene.graph.surface;
    const laTimeScale scale = scene.scale();
    surface.pushClip(part.left, part.top, part.right - part.left, part.bottom - part.top, true);
    for (int which = 0; which < 2; ++which) {
        if (which == 1 && !scene.marks.secondShown) continue;
        const double time = scene.marks.cursor[which];
        if (time < scene.view.viewLow || time > scene.view.viewHigh || time < 0) continue;
        const int x = scale.ToPixel(time);
        if (x < part.left || x >= part.right || x >= scene.graph.width) continue;
        const bool dragged = which == 1 && scene.marks.secondDragged;
        if (dragged) surface.setExclusiveOr(true);
        laCanvas_DrawCursor(scene.graph, x, dragged ? 0xFFFFFF : surface.foreground());
        if (dragged) surface.setExclusiveOr(false);
    }
    const int pending = scene.marks.pendingCursorX;
    if (pending >= part.left && pending < part.right)
        laCanvas_DrawCursor(scene.graph, pending, surface.foreground());
    surface.popClip();
}

void laCanvas_DrawCursor(const LaGraph& graph, int x, Colour colour) {
    const int dataHeight = laAxis_Top(graph);
    if (graph.surface != nullptr && x >= 0 && x < graph.width && dataHeight > 0)
        graph.surface->drawLine(x, 0, x, dataHeight - 1, colour);
}

void laBookmark_PaintAll(const laScene& scene) {
    Surface& surface = *scene.graph.surface;
    const int dataHeight = laAxis_Top(scene.graph);
    const laTimeScale scale = scene.scale();
    for (const LaBookmark& mark : scene.marks.bookmarks) {
        const int x = scale.ToPixel(mark.time);
        if (x < 0 || x >= scene.graph.width || dataHeight <= 0) continue;
        surface.drawStyledLine(x, 0, x, dataHeight - 1, mark.colour, std::max(1, mark.thickness), mark.style,
                               0);
    }
}
