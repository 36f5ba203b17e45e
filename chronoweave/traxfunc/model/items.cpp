#include "chronoweave/traxfunc/model/items.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/model/canvas.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"

void LaneIndex::add(uint32_t objectId, uint32_t lane) {
    if (slots_.size() < (used_ + 1) * 2) {
        std::vector<Slot> old(std::max<size_t>(64, slots_.size() * 2));
        old.swap(slots_);
        used_ = 0;
        for (const Slot& slot : old)
            if (slot.lane != laNoLane) add(slot.id, slot.lane);
    }
    size_t at = bucket(objectId);
    while (slots_[at].lane != laNoLane) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = {objectId, lane};
    ++used_;
}

void LaneIndex::clear() {
    slots_.clear();
    used_ = 0;
}

uint32_t laLn_New(_LaCanvasData& canvas, uint32_t objectId) {
    laItem_Line lane;
    lane.objectId = objectId;
    const uint32_t position = canvas.items.lanes.push_back(std::move(lane));
    canvas.items.laneIndex.add(objectId, position);
    return position;
}

bool laLn_AppendSegment(laItem_Line& lane, double t0, double t1, int32_t status) {
    if (lane.firstTime < 0) lane.firstTime = t0;
    lane.openStatus = status;
    lane.openSince = t1;
    if (!lane.segments.empty()) {
        LaLnSeg& last = lane.segments.back();
        if (last.t1 != t0) {
            gen_console("[laLn_AddSegment] discontinous line segments(%f, %f) not supported yet!\n", last.t1,
                        t0);
            return false;
        }
        if (last.status == status) {
            last.t1 = t1;
            return true;
        }
    }
    lane.segments.push_back({t0, t1, status});
    return true;
}

void laBm_Append(_LaCanvasData& canvas, const laItem_Bitmap& icon) {
    laItem_Line& lane = canvas.items.lanes[icon.lane];
    canvas.items.bitmaps.push_back(icon);
    lane.iconTimes.push_back(icon.time);
    lane.iconEvents.push_back(static_cast<uint16_t>(icon.event));
}

namespace {

// Position of the first item of a list in time order that is not before a time.
template <class Item, class Time>
uint32_t first_at(const Table<Item>& items, double time, const Time& timeOf) {
    uint32_t first = 0;
    for (uint32_t end = items.size(); first < end;) {
        const uint32_t middle = first + (end - first) / 2;
        if (timeOf(items[middle]) < time)
            first = middle + 1;
        else
            end = middle;
    }
    return first;
}

}  // namespace

uint32_t laBm_FirstAt(const _LaCanvasData& canvas, double time) {
    return first_at(canvas.items.bitmaps, time, [](const laItem_Bitmap& icon) { return icon.time; });
}

uint32_t laCtx_FirstAt(const _LaCanvasData& canvas, double time) {
    return first_at(canvas.items.ctxLines, time, [](const laItem_Ctx& line) { return line.t0; });
}

uint32_t laBm_OfLane(const _LaCanvasData& canvas, uint32_t lane, size_t number) {
    const std::vector<double>& times = canvas.items.lanes[lane].iconTimes;
    // Several of the lane's may share the time; count those ahead of it.
    size_t ahead = 0;
    while (ahead < number && times[number - ahead - 1] == times[number]) ++ahead;
    uint32_t at = laBm_FirstAt(canvas, times[number]);
    while (canvas.items.bitmaps[at].lane != lane || ahead-- > 0) ++at;
    return at;
}

bool laCtx_Append(_LaCanvasData& canvas, const laItem_Ctx& line) {
    if (!canvas.items.ctxLines.empty()) {
        const laItem_Ctx& last = canvas.items.ctxLines.back();
        if (last.toLane == line.toLane && std::fabs(last.t0 - line.t0) <= 1e-12) return false;
    }
    canvas.items.ctxLines.push_back(line);
    return true;
}

laItem_Line* laCanvas_FindLane(_LaCanvasData& canvas, uint32_t objectId, uint32_t* position) {
    uint32_t found = canvas.items.laneIndex.find(objectId);
    if (found == laNoLane && objectId == laAgentId) found = canvas.items.hiddenAgent;
    if (position != nullptr) *position = found;
    return found == laNoLane ? nullptr : &canvas.items.lanes[found];
}

int laCanvas_LaneY(_LaCanvasData& canvas, uint32_t objectId) {
    const laItem_Line* lane = laCanvas_FindLane(canvas, objectId);
    return lane != nullptr ? lane->y : canvas.looks.rowHeight / 2;
}

bool laCanvas_LaneHidden(_LaCanvasData& canvas, uint32_t objectId) {
    const laItem_Line* lane = laCanvas_FindLane(canvas, objectId);
    return lane == nullptr || lane->hidden;
}

std::string laCanvas_LaneName(const _LaCanvasData& canvas, const laItem_Line& lane) {
    return lane.hasName ? lane.name : canvas.list.objectTerm + gen_format(" 0x%x", lane.objectId);
}

int laLn_LineY(const _LaCanvasData& canvas, const laItem_Line& lane) {
    return lane.y + (canvas.looks.centerStatus ? 0 : canvas.looks.maxIconHeight >> 1);
}

int laLn_IconY(const _LaCanvasData& canvas, const laItem_Line& lane) {
    return lane.y - (canvas.looks.centerStatus ? 0 : canvas.looks.maxLineThickness >> 1);
}

laRect laItem_Rect(const _LaCanvasData& canvas, const laItem_Bitmap& icon) {
    const LaEventLook& look = canvas.looks.eventLooks[static_cast<size_t>(icon.event)];
    const int x = laTimeScale(canvas).toPixel(icon.time);
    const int y = laLn_IconY(canvas, canvas.items.lanes[icon.lane]);
    const int left = x - look.width / 2, top = y - look.height / 2;
    return {left, top, left + look.width, top + look.height};
}

laRect laItem_Rect(const _LaCanvasData& canvas, const laItem_Line& lane, const LaLnSeg& segment) {
    const laTimeScale scale(canvas);
    const int thickness = canvas.looks.statusLooks[static_cast<size_t>(segment.status)].thickness;
    const int top = laLn_LineY(canvas, lane) - thickness / 2;
    return {scale.toPixel(segment.t0), top, scale.toPixel(segment.t1), top + thickness};
}

laRect laItem_Rect(const _LaCanvasData& canvas, const laItem_Ctx& line) {
    int y0 = 0, y1 = 0;
    if (!laCtx_Ends(canvas, line, y0, y1)) return {};
    const int thickness = canvas.looks.statusLooks[static_cast<size_t>(line.status)].thickness;
    const int left = laTimeScale(canvas).toPixel(line.t0) - thickness / 2;
    return {left, std::min(y0, y1), left + thickness, std::max(y0, y1) + 1};
}

bool laCtx_Ends(const _LaCanvasData& canvas, const laItem_Ctx& line, int& y0, int& y1) {
    const laItem_Line* from = &canvas.items.lanes[line.fromLane];
    const laItem_Line* to = &canvas.items.lanes[line.toLane];
    if (from->hidden || to->hidden) {
        if (from->hidden && to->hidden) return false;
        if (canvas.items.hiddenAgent == laNoLane || canvas.items.lanes[canvas.items.hiddenAgent].hidden)
            return false;
        (from->hidden ? from : to) = &canvas.items.lanes[canvas.items.hiddenAgent];
    }
    y0 = laLn_LineY(canvas, *from);
    y1 = laLn_LineY(canvas, *to);
    return true;
}

uint32_t laItem_StoreSequence(const _LaCanvasData& canvas, const laItem_Bitmap& icon) {
    return canvas.items.firstSequence + icon.sequence;
}
