#include "chronoweave/traxfunc/model/geometry.h"

#include <algorithm>

int laCanvas_LaneY(const LaItems& items, const LaLooks& looks, uint32_t objectId) {
    const laItem_Line* lane = laCanvas_FindLane(items, objectId);
    return lane != nullptr ? lane->y : looks.rowHeight / 2;
}

int laLn_LineY(const LaLooks& looks, const laItem_Line& lane) {
    return lane.y + (looks.centerStatus ? 0 : looks.maxIconHeight >> 1);
}

int laLn_IconY(const LaLooks& looks, const laItem_Line& lane) {
    return lane.y - (looks.centerStatus ? 0 : looks.maxLineThickness >> 1);
}

laRect laItem_Rect(const LaItems& items, const LaLooks& looks, const laTimeScale& scale,
                   const laItem_Bitmap& icon) {
    const LaEventLook& look = looks.eventLooks[static_cast<size_t>(icon.event)];
    const int x = scale.ToPixel(icon.time);
    const int y = laLn_IconY(looks, items.lanes[icon.lane]);
    const int left = x - look.width / 2, top = y - look.height / 2;
    return {left, top, left + look.width, top + look.height};
}

laRect laItem_Rect(const LaLooks& looks, const laTimeScale& scale, const laItem_Line& lane,
                   const LaLnSeg& segment) {
    const int thickness = looks.statusLooks[static_cast<size_t>(segment.status)].thickness;
    const int top = laLn_LineY(looks, lane) - thickness / 2;
    return {scale.ToPixel(segment.t0), top, scale.ToPixel(segment.t1), top + thickness};
}

laRect laItem_Rect(const LaItems& items, const LaLooks& looks, const laTimeScale& scale,
                   const laItem_Ctx& line) {
    int y0 = 0, y1 = 0;
    if (!laCtx_Ends(items, looks, line, y0, y1)) return {};
    const int thickness = looks.statusLooks[static_cast<size_t>(line.status)].thickness;
    const int left = scale.ToPixel(line.t0) - thickness / 2;
    return {left, std::min(y0, y1), left + thickness, std::max(y0, y1) + 1};
}

bool laCtx_Ends(const LaItems& items, const LaLooks& looks, const laItem_Ctx& line, int& y0, int& y1) {
    const laItem_Line* from = &items.lanes[line.fromLane];
    const laItem_Line* to = &items.lanes[line.toLane];
    if (from->hidden || to->hidden) {
        if (from->hidden && to->hidden) return false;
        if (items.hiddenAgent == laNoLane || items.lanes[items.hiddenAgent].hidden) return false;
        (from->hidden ? from : to) = &items.lanes[items.hiddenAgent];
    }
    y0 = laLn_LineY(looks, *from);
    y1 = laLn_LineY(looks, *to);
    return true;
}
