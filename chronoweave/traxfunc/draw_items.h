// Drawing of the three kinds of item, for draw.cpp. Each pass goes over its list once, in time order,
// beginning with a binary search; it allocates nothing per item.
#pragma once

#include "chronoweave/traxfunc/canvas.h"
#include "chronoweave/traxfunc/time.h"

// One repaint. rect is in columns of the area and rows of the content, inside the data area; its ends are not
// included.
struct laPaint {
    laPaint(const _LaCanvasData& data, Surface& target, const laRect& part)
        : canvas(data), surface(target), scale(data), rect(part), dataHeight(0) {}

    const _LaCanvasData& canvas;
    Surface& surface;
    laTimeScale scale;
    laRect rect;
    int dataHeight;  // rows of the area above the axis strip
};

void laPaint_Lanes(const laPaint& paint);
void laPaint_Icons(const laPaint& paint);
void laPaint_Switches(const laPaint& paint);
