// What the tests of the lane index and of its readers share: stores with everything in them that an index
// must keep.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "chronoweave/engine/lanes/lane_feed.h"
#include "libtrv/test_store.h"

constexpr uint32_t lanes_TestBlock = 16;  // events, so that short traces have many blocks

// The tracker of the system, but that some user events take their task's status or the task itself away.
inline bool lanes_TestTracker(StoreWriter& writer, const mt_WriteRecord& record) {
    TaskTracker(writer, record);
    const uint32_t id = load_32(record.extra.data(), writer.BigEndianTarget());
    if (record.type != mt_UserEvent) return true;
    if (record.subtype == 9) writer.RecordModified(mt_ObjectTask, id, mt_TaskStatusValid, Bytes{0});
    if (record.subtype == 10) writer.RecordDeleted(mt_ObjectTask, id);
    return true;
}

// Writes a store of events, with an index unless the size of its blocks is 0.
inline void lanes_WriteStore(const std::string& base, const std::vector<TestEvent>& events,
                             uint32_t block = lanes_TestBlock, const std::string& os = "korvantis") {
    auto writer = StoreWriter::OpenForWrite(base, 1000, os, true, lanes_TestTracker);
    ASSERT_TRUE(writer);
    LaneFeed feed(base, true, std::max(1u, block));
    if (block > 0) writer->SetObserver(&feed);
    writer->SetGrouping(1000);
    for (const TestEvent& event : events)
        ASSERT_TRUE(writer->AppendEvent(event.time, event.type, event.subtype, event.extra).ok());
    ASSERT_TRUE(writer->Close().ok());
    if (block > 0)
        feed.Finish();
    else
        std::filesystem::remove(lane_NameBeside(base));
}
