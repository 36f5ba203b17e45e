// Items as a text, for tests that compare them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "chronoweave/traxfunc/model/items.h"
#include "shared/libcxxutil/report.h"

inline std::string items_Text(const LaItems& items) {
    std::string text = gen_format("range %a %a\n", items.cachedLow, items.cachedHigh);
    for (uint32_t i = 0; i < items.lanes.size(); ++i) {
        const laItem_Line& lane = items.lanes[i];
        text += gen_format("lane %u %s %d row %d y %d\n", lane.objectId, lane.name.c_str(), lane.priority,
                           lane.row, lane.hidden ? -1 : lane.y);
        for (const LaLnSeg& one : lane.segments)
            text += gen_format(" %a %a %d\n", one.t0, one.t1, one.status);
        for (size_t k = 0; k < lane.icons.size(); ++k)
            text += gen_format(" icon %a %d\n", lane.icons.time(k), lane.icons.event(k));
        EXPECT_EQ(laCanvas_FindLane(items, lane.objectId), &lane);
    }
    for (uint32_t i = 0; i < items.bitmaps.size(); ++i) {
        const laItem_Bitmap& icon = items.bitmaps[i];
        text += gen_format("event %u %a lane %u %d %u/%u\n", laItem_StoreSequence(items, icon), icon.time,
                           icon.lane, icon.event, icon.type, icon.subtype);
    }
    for (uint32_t i = 0; i < items.ctxLines.size(); ++i) {
        const laItem_Ctx& line = items.ctxLines[i];
        text += gen_format("switch %a %u %u %d\n", line.t0, line.fromLane, line.toLane, line.status);
    }
    for (const LaProcessor& one : items.processors.list)
        for (const LaRun& run : one.runs)
            text += gen_format("run %u row %d %a %a %u behind %a\n", one.key, one.row, run.t0, run.t1,
                               run.lane, run.before);
    for (uint32_t processor = 0; processor < items.running.end(); ++processor)
        if (items.running.on(processor) != RunningObjects::none)
            text += gen_format("processor %u runs %d\n", processor,
                               static_cast<int>(items.running.on(processor)));
    return text;
}

// Where two of them begin to differ; empty when they don't.
inline std::string items_Difference(const std::string& a, const std::string& b) {
    const auto at =
        static_cast<size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
    const auto line = [](const std::string& text, size_t place) {
        const size_t from = place == 0 ? 0 : text.rfind('\n', place - 1) + 1;
        return text.substr(std::min(from, text.size()), 100);
    };
    return a == b ? "" : "is " + line(a, at) + "\nnot " + line(b, at);
}
