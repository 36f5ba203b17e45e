#include "chronoweave/traxfunc/model/items.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "shared/libcxxutil/report.h"

uint32_t laLn_New(LaItems& items, uint32_t objectId) {
    laItem_Line lane;
    lane.objectId = objectId;
    const uint32_t position = items.lanes.push_back(std::move(lane));
    items.laneIndex.add(objectId, position);
    return position;
}

bool laLn_AppendSegment(laItem_Line& lane, double t0, double t1, int32_t status) {
    lane.openStatus = status;
    lane.openSince = t1;
    std::vector<LaLnSeg>& segments = lane.segments.kept();
    if (!segments.empty()) {
        LaLnSeg& last = segments.back();
        if (lane.broken ? last.t1 > t0 : last.t1 != t0) {
            gen_console("[laLn_AddSegment] discontinous line segments(%f, %f) not supported yet!\n", last.t1,
                        t0);
            return false;
        }
        if (last.status == status && last.t1 == t0) {
            last.t1 = t1;
            return true;
        }
    }
    lane.broken = false;
    segments.push_back({t0, t1, status});
    return true;
}

void laLn_Break(laItem_Line& lane) {
    lane.openStatus = -1;
    lane.openSince = -100.0;
    lane.broken = true;
}

// The open status is never that of the last stretch, but where the range's end closed it.
void laLn_Reopen(laItem_Line& lane, double rangeEnd) {
    lane.lastEnd = {};
    std::vector<LaLnSeg>& segments = lane.segments.kept();
    if (lane.openStatus < 0 || segments.empty()) return;
    const LaLnSeg& last = segments.back();
    if (last.status != lane.openStatus || last.t1 != rangeEnd) return;
    lane.openSince = last.t0;
    segments.pop_back();
}

void laBm_Append(LaItems& items, const laItem_Bitmap& icon) {
    items.bitmaps.kept().push_back(icon);
    items.lanes[icon.lane].icons.Append(icon.time, static_cast<uint16_t>(icon.event));
}

uint32_t laBm_FirstAt(const LaItems& items, double time) {
    return items.bitmaps.FirstFrom(time);
}

uint32_t laCtx_FirstAt(const LaItems& items, double time) {
    return items.ctxLines.FirstFrom(time);
}

uint32_t laBm_OfLane(const LaItems& items, uint32_t lane, size_t number) {
    const LaLaneIcons& icons = items.lanes[lane].icons;
    const double time = icons.time(number);
    // Several of the lane's may share the time; count those ahead of it.
    size_t ahead = 0;
    while (ahead < number && icons.time(number - ahead - 1) == time) ++ahead;
    uint32_t at = laBm_FirstAt(items, time);
    while (at + 1 < items.bitmaps.size() && (items.bitmaps[at].lane != lane || ahead-- > 0)) ++at;
    return at;
}

bool laCtx_Append(LaItems& items, const laItem_Ctx& line) {
    Table<laItem_Ctx>& lines = items.ctxLines.kept();
    if (!lines.empty()) {
        const laItem_Ctx& last = lines.back();
        if (last.toLane == line.toLane && std::fabs(last.t0 - line.t0) <= 1e-12) return false;
    }
    lines.push_back(line);
    return true;
}

void laItems_Clear(LaItems& items) {
    items.lanes.clear();
    items.laneIndex.clear();
    items.hiddenAgent = laNoLane;
    items.bitmaps.Clear();
    items.ctxLines.Clear();
    items.processors = {};
    items.running.clear();
    items.cachedLow = items.cachedHigh = 0;
    ++items.itemsVersion;
}

const laItem_Line* laCanvas_FindLane(const LaItems& items, uint32_t objectId, uint32_t* position) {
    uint32_t found = items.laneIndex.find(objectId);
    if (found == laNoLane && objectId == laAgentId) found = items.hiddenAgent;
    if (position != nullptr) *position = found;
    return found == laNoLane ? nullptr : &items.lanes[found];
}

laItem_Line* laCanvas_FindLane(LaItems& items, uint32_t objectId, uint32_t* position) {
    return const_cast<laItem_Line*>(laCanvas_FindLane(std::as_const(items), objectId, position));
}

bool laCanvas_LaneHidden(const LaItems& items, uint32_t objectId) {
    const laItem_Line* lane = laCanvas_FindLane(items, objectId);
    return lane == nullptr || lane->hidden;
}

uint32_t laItem_StoreSequence(const LaItems& items, const laItem_Bitmap& icon) {
    return items.firstSequence + icon.sequence;
}
