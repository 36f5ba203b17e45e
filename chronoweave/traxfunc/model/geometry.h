// Where items stand now: columns of the drawing area, rows of the content. Items outside the view give the
// markers of laTimeScale.
#pragma once

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/time.h"

struct laRect {
    int left = 0, top = 0, right = 0, bottom = 0;  // the last two not included
    bool meets(const laRect& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

// The lane's y; half a row when there is no such lane.
int laCanvas_LaneY(const LaItems& items, const LaLooks& looks, uint32_t objectId);
// Content rows of the parts of a lane: its status line, its icons' centres.
int laLn_LineY(const LaLooks& looks, const laItem_Line& lane);
int laLn_IconY(const LaLooks& looks, const laItem_Line& lane);

laRect laItem_Rect(const LaItems& items, const LaLooks& looks, const laTimeScale& scale,
                   const laItem_Bitmap& icon);
laRect laItem_Rect(const LaLooks& looks, const laTimeScale& scale, const laItem_Line& lane,
                   const LaLnSeg& segment);
laRect laItem_Rect(const LaItems& items, const LaLooks& looks, const laTimeScale& scale,
                   const laItem_Ctx& line);
// Rows of the two ends of a switch, with a hidden end moved to the agent lane. False when it is not to be
// seen: both ends hidden, or one and no agent shown.
bool laCtx_Ends(const LaItems& items, const LaLooks& looks, const laItem_Ctx& line, int& y0, int& y1);
