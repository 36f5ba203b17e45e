#include "chronoweave/traxfunc/model/lane_order.h"

#include <algorithm>
#include <utility>
#include <vector>

void laItems_MoveLanes(LaItems& items, std::span<const uint32_t> to) {
    const auto place = [to](uint32_t& lane) {
        if (lane != laNoLane) lane = to[lane];
    };
    std::vector<uint32_t> from(to.size() - static_cast<size_t>(std::ranges::count(to, laNoLane)));
    for (uint32_t lane = 0; lane < to.size(); ++lane)
        if (to[lane] != laNoLane) from[to[lane]] = lane;
    Table<laItem_Line> moved;
    items.laneIndex.clear();
    for (const uint32_t lane : from) {
        const uint32_t at = moved.push_back(std::move(items.lanes[lane]));
        if (!moved[at].isAgent) items.laneIndex.add(moved[at].objectId, at);
    }
    items.lanes = std::move(moved);
    Table<laItem_Bitmap>& icons = items.bitmaps.kept();
    for (uint32_t i = 0; i < icons.size(); ++i) place(icons[i].lane);
    Table<laItem_Ctx>& lines = items.ctxLines.kept();
    for (uint32_t i = 0; i < lines.size(); ++i) {
        place(lines[i].fromLane);
        place(lines[i].toLane);
    }
    place(items.hiddenAgent);
    items.processors = {};
    ++items.itemsVersion;
}
