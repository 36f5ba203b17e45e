// The pages of a canvas: what it shows on one, or a range on several. The window and the command line print
// the same pages by this.
#pragma once

#include "chronoweave/traxfunc/print/page.h"

enum class TraxPrintRange { View, Selection };
enum class TraxPrintFoot { None, Legend };
struct TraxPrintOptions {
    TraxPrintRange range = TraxPrintRange::View;
    int pages = 1;  // the range in so many parts of one length, at least 1
    TraxPrintFoot foot = TraxPrintFoot::None;
};
constexpr int traxPrint_MostPages = 999;

// Sizes of the canvas as its graph is laid out; listWidth is that of the names, with the divider.
TraxPrintSizes traxPrint_SizesOf(const _LaCanvasData& canvas, int listWidth);

// The same with room for the names in the page's letters, which are wider than the screen's, up to a third of
// the whole; as it is where the user chose the width.
TraxPrintSizes traxPrint_WithNames(const _LaCanvasData& canvas, TraxPrintSizes sizes);

struct TraxPrinted {
    TraxPrintEnd end = TraxPrintEnd::Done;
    int pages = 0;  // that are whole
    double zoomRate = 0;
};
// Draws the pages on the device. Meanwhile the canvas shows what they do and tells nobody but its progress,
// which is told across all pages and may stop at the next; in the end it is as it was. Cursors, the selection
// of names and the pointer's temporary line are left out. A selection needs both cursors, at different times.
TraxPrinted traxPrint_Pages(_LaCanvasData& canvas, PageDevice& page, const TraxPrintSizes& sizes,
                            const TraxPrintOptions& options);
// Whether there is a selection to be printed.
bool traxPrint_HasSelection(const _LaCanvasData& canvas);
