// A whole picture on one surface: the name column on the left, the drawing area with its axis strip, and
// under it a line with the pattern of the labels, the unit and the total length. The window places its parts
// by the same geometry; picture files and pages are drawn by laPicture_Draw.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

struct laPicture {
    int width = 0, height = 0;  // of the whole
    int nameWidth = 0;          // of the name column
    int graphLeft = 0, graphTop = 0, graphWidth = 0,
        graphHeight = 0;  // the drawing area, axis strip included
    int dataHeight = 0;   // rows of the drawing area above the axis strip
    int rowHeight = 0;
    bool footer = true;  // there is a line under the drawing area
};

// The line under the drawing area.
int laPicture_FooterHeight(const FontMetrics& font);
// The width of the name column in a picture of this width with so many pixels of rows, or all: as the user
// set it, else what the longest of the names shown needs, from 100 pixels to a third of the width.
int laPicture_NameWidth(const _LaCanvasData& canvas, Surface& surface, int width,
                        std::optional<int> rowsShown);
// The first column of the drawing area when all rows are shown: behind the names and the divider.
int laPicture_GraphLeft(const _LaCanvasData& canvas, Surface& surface, int width);
// Places the parts for a total size and gives the canvas its drawing area. So show the range first, then lay
// out: the times shown stay as they are. The surface is only asked for the sizes of texts. Without a footer
// the drawing area goes down to the lower edge: a window has labels for those texts. A name column that the
// user did not set has leastNames pixels at least, as far as there is room.
laPicture laPicture_LayOut(_LaCanvasData& canvas, Surface& surface, int width, int height, bool footer = true,
                           int leastNames = 0);
// Draws everything. The canvas keeps its own surface. Cursors and their band, and the selection of
// the names, only when asked for.
void laPicture_Draw(_LaCanvasData& canvas, Surface& surface, const laPicture& picture, bool withCursors);
// Clears and draws the line under the drawing area.
void laPicture_DrawFooter(const _LaCanvasData& canvas, Surface& surface, const laPicture& picture);
// Ids of the rows from the top; none for a group or the agent.
std::vector<std::optional<uint32_t>> laPicture_RowIds(const _LaCanvasData& canvas);
