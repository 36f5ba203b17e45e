#include "chronoweave/traxfunc/canvas/picture.h"

#include <algorithm>
#include <utility>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/list/names.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "windlib/lagraph/translated_surface.h"

namespace {

constexpr int divider = 3;     // pixels between the names and the drawing area
constexpr int footerGap = 12;  // between the texts of the line below it

laNames names_of(const _LaCanvasData& canvas) {
    return {*canvas.taskList, canvas.looks, canvas.view, *canvas.graph};
}

}  // namespace

int laPicture_FooterHeight(const FontMetrics& font) {
    return font.height + 4;
}

int laPicture_NameWidth(const _LaCanvasData& canvas, Surface& surface, int width,
                        std::optional<int> rowsShown) {
    const int wanted = canvas.list.nameWidth > 0 ? canvas.list.nameWidth
                                                 : names_of(canvas).Width(surface, width / 3, rowsShown);
    return std::min(wanted, std::max(0, width - divider));
}

int laPicture_GraphLeft(const _LaCanvasData& canvas, Surface& surface, int width) {
    return laPicture_NameWidth(canvas, surface, width, {}) + divider;
}

laPicture laPicture_LayOut(_LaCanvasData& canvas, Surface& surface, int width, int height, bool footer,
                           int leastNames) {
    laPicture picture;
    picture.width = width;
    picture.height = height;
    picture.footer = footer;
    const int below = footer ? laPicture_FooterHeight(surface.fontMetrics(Font_Application)) : 0;
    picture.graphHeight = std::max(0, height - below);
    picture.dataHeight =
        std::max(0, picture.graphHeight - laAxis_StripHeight(surface.fontMetrics(Font_Axis)));
    picture.nameWidth = laPicture_NameWidth(canvas, surface, width, picture.dataHeight);
    if (canvas.list.nameWidth <= 0)
        picture.nameWidth = std::max(picture.nameWidth, std::min(leastNames, width / 3));
    picture.graphLeft = picture.nameWidth + divider;
    picture.graphWidth = std::max(0, width - picture.graphLeft);
    picture.rowHeight = canvas.looks.rowHeight;
    canvas.graph->axisFont = surface.fontMetrics(Font_Axis);
    laCanvas_Resized(canvas, picture.graphWidth, picture.graphHeight);
    return picture;
}

void laPicture_DrawFooter(const _LaCanvasData& canvas, Surface& surface, const laPicture& picture) {
    const int top = picture.graphTop + picture.graphHeight;
    surface.clearRect(0, top, picture.width, std::max(1, picture.height - top));
    const FontMetrics font = surface.fontMetrics(Font_Application);
    const int baseline = picture.graphTop + picture.graphHeight + 2 + font.ascent;
    const int oldFont = surface.setFont(Font_Application);
    int x = picture.graphLeft;
    for (const std::string& text : {canvas.fields.tickPattern, canvas.fields.tickUnit}) {
        if (text.empty()) continue;
        surface.drawText(x, baseline, text, surface.foreground(), NoColour);
        x += surface.textExtent(text).width + footerGap;
    }
    const std::string total = canvas.fields.totalLengthTitle + ": " + canvas.fields.totalLength;
    const int left = picture.width - surface.textExtent(total).width - 4;
    if (left >= x) surface.drawText(left, baseline, total, surface.foreground(), NoColour);
    if (oldFont >= 0) surface.setFont(oldFont);
}

void laPicture_Draw(_LaCanvasData& canvas, Surface& surface, const laPicture& picture, bool withCursors) {
    LaGraph& graph = *canvas.graph;
    Surface* const own = graph.surface;
    const double cursors[2] = {canvas.marks.cursor[0], canvas.marks.cursor[1]};
    const int pending =
        std::exchange(canvas.marks.pendingCursorX, withCursors ? canvas.marks.pendingCursorX : -100);
    if (!withCursors) canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100.0;
    surface.clearRect(0, 0, picture.width, picture.height);
    {
        TranslatedSurface area(surface, picture.graphLeft, picture.graphTop, picture.graphWidth,
                               picture.graphHeight);
        graph.surface = &area;
        laCanvas_Repaint(canvas);
        graph.surface = own;
    }
    {
        TranslatedSurface column(surface, 0, picture.graphTop, picture.nameWidth, picture.dataHeight);
        names_of(canvas).Draw(column, picture.nameWidth, picture.dataHeight,
                              withCursors ? laNames::Look::Window : laNames::Look::Picture);
    }
    const int line = picture.nameWidth + divider / 2;
    surface.drawLine(line, picture.graphTop, line, picture.graphTop + picture.graphHeight - 1,
                     surface.foreground());
    if (picture.footer) laPicture_DrawFooter(canvas, surface, picture);
    std::copy(cursors, cursors + 2, canvas.marks.cursor);
    canvas.marks.pendingCursorX = pending;
}

std::vector<std::optional<uint32_t>> laPicture_RowIds(const _LaCanvasData& canvas) {
    std::vector<std::optional<uint32_t>> ids;
    for (const MslObjectEntry* entry : canvas.taskList->rows())
        ids.push_back(canvas.taskList->PathOf(*entry).id);
    return ids;
}
