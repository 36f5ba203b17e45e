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
    if (!lane.segments.empty()) {
        LaLnSeg& last = lane.segments.back();
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
    lane.segments.push_back({t0, t1, status});
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
    if (lane.openStatus < 0 || lane.segments.empty()) return;
    const LaLnSeg& last = lane.segments.back();
    if (last.status != lane.openStatus || last.t1 != rangeEnd) return;
    lane.openSince = last.t0;
    lane.segments.pop_back();
}

void laBm_Append(LaItems& items, const laItem_Bitmap& icon) {
    laItem_Line& lane = items.lanes[icon.lane];
    items.bitmaps.push_back(icon);
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

uint32_t laBm_FirstAt(const LaItems& items, double time) {
    return first_at(items.bitmaps, time, [](const laItem_Bitmap& icon) { return icon.time; });
}

uint32_t laCtx_FirstAt(const LaItems& items, double time) {
    return first_at(items.ctxLines, time, [](const laItem_Ctx& line) { return line.t0; });
}

uint32_t laBm_OfLane(const LaItems& items, uint32_t lane, size_t number) {
    const std::vector<double>& times = items.lanes[lane].iconTimes;
    // Several of the lane's may share the time; count those ahead of it.
    size_t ahead = 0;
    while (ahead < number && times[number - ahead - 1] == times[number]) ++ahead;
    uint32_t at = laBm_FirstAt(items, times[number]);
    while (items.bitmaps[at].lane != lane || ahead-- > 0) ++at;
    return at;
}

bool laCtx_Append(LaItems& items, const laItem_Ctx& line) {
    if (!items.ctxLines.empty()) {
        const laItem_Ctx& last = items.ctxLines.back();
        if (last.toLane == line.toLane && std::fabs(last.t0 - line.t0) <= 1e-12) return false;
    }
    items.ctxLines.push_back(line);
    return true;
}

void laItems_Clear(LaItems& items) {
    items.lanes.clear();
    items.laneIndex.clear();
    items.hiddenAgent = laNoLane;
    items.bitmaps.clear();
    items.ctxLines.clear();
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
