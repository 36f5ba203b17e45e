// Drawing of the three kinds of item, for draw.cpp. Each pass goes over its list once, in time order,
// beginning with a binary search; it allocates nothing per item.
#pragma once

#include <algorithm>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/model/time.h"

// One repaint. rect is in columns of the area and rows of the content, inside the data area; its ends are not
// included.
struct laPaint {
    laPaint(const _LaCanvasData& data, Surface& target, const laRect& part)
        : canvas(data),
          surface(target),
          scale(data.view, data.axis, data.graph->width),
          rect(part),
          dataHeight(0) {}

    const _LaCanvasData& canvas;
    Surface& surface;
    laTimeScale scale;
    laRect rect;
    int dataHeight;  // rows of the area above the axis strip
};

// Offset of a dashed line's start in its pattern, for a start at this pixel of the virtual picture.
inline int laPaint_DashPhase(uint64_t start, int thickness, int style) {
    const int period = thickness * dashPeriod[style];
    return period > 0 ? static_cast<int>(start % static_cast<uint64_t>(period)) : 0;
}

// The first position from at on whose column lies right of x, size when there is none; column(i) never falls.
// Steps grow while nothing is found, so that the cost follows the columns and not the items.
template <class Column>
size_t laPaint_FirstRightOf(size_t at, size_t size, int x, const Column& column) {
    size_t step = 1;
    while (at < size && column(at) <= x) {
        if (at + step >= size || column(at + step) > x) {
            size_t low = at + 1, high = std::min(at + step, size);
            while (low < high) {
                const size_t middle = (low + high) / 2;
                if (column(middle) <= x)
                    low = middle + 1;
                else
                    high = middle;
            }
            return low;
        }
        at += step;
        step *= 2;
    }
    return std::min(at, size);
}

void laPaint_Lanes(const laPaint& paint);
void laPaint_Icons(const laPaint& paint);
void laPaint_Switches(const laPaint& paint);
// True when every switch that can be seen looks the same; which one then shows in a column doesn't depend on
// the vertical position.
bool laPaint_SwitchesLookAlike(const _LaCanvasData& canvas);
