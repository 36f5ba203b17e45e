#include "chronoweave/traxfunc/input/hit.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/pinned_rows.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/model/time.h"

namespace {

constexpr int nearLine = 3;  // pixels around a line that still hit it

class HitSearch {
  public:
    HitSearch(_LaCanvasData& canvas, int x, int y)
        : canvas_(canvas),
          scale_(canvas.view, canvas.axis, canvas.graph->width),
          x_(x),
          y_(y + canvas.view.verticalOffset) {}

    // The lane of the row, and its first stretch that holds the point.
    bool Lanes(laHit& hit) const {
        for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i) {
            const laItem_Line& lane = canvas_.items.lanes[i];
            const int half = (canvas_.looks.rowHeight + 1) / 2;
            if (lane.hidden || y_ < lane.y - half || y_ > lane.y + half) continue;
            hit.lane = i;
            const auto [low, high] = TimesAround(std::max(nearLine, canvas_.looks.maxLineThickness / 2));
            const LaSegments& segments = lane.segments;
            for (size_t at = segments.FirstEndingFrom(low); at < segments.size(); at = segments.Next(at)) {
                const LaLnSeg segment = segments[at];
                if (segment.t0 > high) break;
                const LaStatusLook& look = canvas_.looks.statusLooks[static_cast<size_t>(segment.status)];
                if (!look.shown || !Holds(laItem_Rect(canvas_.looks, scale_, lane, segment),
                                          std::max(nearLine, look.thickness / 2)))
                    continue;
                hit.item = {laItemType::Line, i, at};
                return true;
            }
        }
        return false;
    }

    // The earliest icon of a visible event whose box holds the point.
    bool Icons(laHit& hit) const {
        const auto [low, high] = TimesAround(canvas_.looks.maxIconWidth + 1);
        const uint32_t end = canvas_.items.bitmaps.size();
        for (uint32_t i = laBm_FirstAt(canvas_.items, low); i < end; ++i) {
            const laItem_Bitmap icon = canvas_.items.bitmaps[i];
            if (icon.time > high) break;
            if (icon.lane == laNoLane || canvas_.items.lanes[icon.lane].hidden) continue;
            if (!canvas_.looks.eventLooks[static_cast<size_t>(icon.event)].shown) continue;
            if (icon.time < canvas_.view.viewLow || icon.time > canvas_.view.viewHigh) continue;
            if (!Holds(laItem_Rect(canvas_.items, canvas_.looks, scale_, icon), 0)) continue;
            hit.item = {laItemType::Bitmap, icon.lane, i};
            hit.icon = i;
            hit.time = icon.time;
            return true;
        }
        return false;
    }

    bool Switches(laHit& hit) const {
        const auto [low, high] = TimesAround(std::max(nearLine, canvas_.looks.maxExtent));
        const LaItemList<laItem_Ctx>& lines = canvas_.items.ctxLines;
        for (uint32_t i = laCtx_FirstAt(canvas_.items, low); i < lines.size(); ++i) {
            const laItem_Ctx line = lines[i];
            if (line.t0 > high) break;
            const LaStatusLook& look = canvas_.looks.statusLooks[static_cast<size_t>(line.status)];
            int y0 = 0, y1 = 0;
            if (!look.shown || !laCtx_Ends(canvas_.items, canvas_.looks, line, y0, y1)) continue;
            if (line.t0 < canvas_.view.viewLow || line.t0 > canvas_.view.viewHigh) continue;
            const int column = scale_.ToPixel(line.t0), reach = std::max(nearLine, look.thickness / 2);
            if (x_ < column - reach || x_ > column + reach) continue;
            if (y_ < std::min(y0, y1) - reach || y_ > std::max(y0, y1) + reach) continue;
            hit.item = {laItemType::Ctx, laNoLane, i};
            return true;
        }
        return false;
    }

  private:
    std::pair<double, double> TimesAround(int columns) const {
        return {std::max(canvas_.view.viewLow, scale_.ToTime(x_ - columns - 1)),
                std::min(canvas_.view.viewHigh, scale_.ToTime(x_ + columns + 1))};
    }
    bool Holds(const laRect& box, int reach) const {
        return x_ >= box.left - reach && x_ < std::max(box.right, box.left + 1) + reach &&
               y_ >= box.top - reach && y_ < box.bottom + reach;
    }

    const _LaCanvasData& canvas_;
    laTimeScale scale_;
    int x_, y_;  // of the content
};

bool lies_on_processor(const _LaCanvasData& canvas, int y) {
    return laProcessor_AtRow(canvas.items, canvas.looks, canvas.view, laAxis_Top(*canvas.graph), y) !=
           nullptr;
}

}  // namespace

bool laCanvas_HitTest(_LaCanvasData& canvas, int x, int y, bool activate, laHit* hit) {
    laHit found;
    found.time = x / canvas.view.pixelsPerUnit + canvas.view.viewLow;
    if (lies_on_processor(canvas, y)) {
        if (hit != nullptr) *hit = found;
        return false;
    }
    const HitSearch search(canvas, x, y);
    const bool any = search.Lanes(found) || search.Icons(found) || search.Switches(found);
    if (hit != nullptr) *hit = found;
    if (any && activate) laCanvas_ItemActivated(canvas, found.item);
    return any;
}

std::optional<size_t> laCanvas_IconAt(_LaCanvasData& canvas, int x, int y) {
    laHit found;
    if (lies_on_processor(canvas, y)) return std::nullopt;
    HitSearch(canvas, x, y).Icons(found);
    return found.icon;
}

void laCanvas_ItemActivated(_LaCanvasData& canvas, const laItemRef& item) {
    if (canvas.hand.hoverPass)
        canvas.hand.hoverText = laTip_TextWithin(canvas, item, laTip_Longest);
    else if (canvas.calls.openDetail)
        canvas.calls.openDetail(item);
}

std::optional<uint32_t> laHit_Object(const _LaCanvasData& canvas, const laHit& hit) {
    if (hit.lane == laNoLane || canvas.items.lanes[hit.lane].isAgent) return std::nullopt;
    return canvas.items.lanes[hit.lane].objectId;
}
