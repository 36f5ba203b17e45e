// Drawing of the three kinds of item, for draw.cpp. Each pass goes over its list once, in time order,
// beginning with a binary search; it allocates nothing per item.
#pragma once

#include "chronoweave/traxfunc/draw/scene.h"

// One repaint. rect is in columns of the area and rows of the content, inside the data area; its ends are not
// included.
struct laPaint {
    const laScene& scene;
    Surface& surface;
    laTimeScale scale;
    laRect rect;
    int dataHeight = 0;  // rows of the area above the axis strip
};

// Offset of a dashed line's start in its pattern, for a start at this pixel of the virtual picture.
inline int laPaint_DashPhase(uint64_t start, int thickness, int style) {
    const int period = thickness * dashPeriod[style];
    return period > 0 ? static_cast<int>(start % static_cast<uint64_t>(period)) : 0;
}

void laPaint_Lanes(const laPaint& paint);
void laPaint_Icons(const laPaint& paint);
// The switches that are drawn as a tint under lanes and icons, or those that stand in front of them.
enum class laSwitchLayer { Under, Over };
void laPaint_Switches(const laPaint& paint, laSwitchLayer layer);
// True when every switch that can be seen looks the same; which one then shows in a column doesn't depend on
// the vertical position.
bool laPaint_SwitchesLookAlike(const LaLooks& looks);
