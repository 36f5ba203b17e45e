#include "chronoweave/import/source/object_look.h"

#include <gtest/gtest.h>

#include "libtrv/byte_order.h"

namespace {

void enter(ObjectLook& look, uint16_t type, uint32_t id, bool big) {
    uint8_t extra[8] = {};
    store_32(extra, id, big);
    look.enter(type, extra, big);
}

TEST(ObjectLookTest, countsEachObjectOnceOfWhateverByteOrder) {
    for (const bool big : {false, true}) {
        ObjectLook look;
        for (int round = 0; round < 3; ++round)
            for (uint32_t id = 0; id < 20000; ++id) enter(look, mt_UserEvent, id * 0x10001u, big);
        EXPECT_EQ(look.seen().objects, 20000u);
        EXPECT_EQ(look.seen().records, 60000u);
        EXPECT_EQ(look.seen().bytes, 60000u * 18);
    }
}

TEST(ObjectLookTest, checkpointsTakeNoMoreRoomThanTheEventsBetweenThem) {
    const struct {
        SourceLook look;
        uint32_t interval;
    } cases[] = {
        {{0, 0, 0}, 100},
        {{1000, 5, 18000}, 100},
        {{1000, 19, 18000}, 100},  // 1748 bytes of state, 1800 of events
        {{1000, 20, 18000}, 200},
        {{1000, 1000, 42000}, 2200},
        {{1000, 5000, 30000}, 15400},
        {{1, UINT32_MAX, 18}, 4'000'000'000},
        // 3100 and 15400 would do, and would leave a last block of 2000 and of 3600 events.
        {{250'000, 1000, 7'500'000}, 3200},
        {{250'000, 5000, 7'500'000}, 15'600},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(look_Interval(c.look), c.interval) << c.look.objects;
        EXPECT_EQ(look_Interval(c.look) % 100, 0u);
    }
}

}  // namespace
