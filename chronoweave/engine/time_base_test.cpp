#include "chronoweave/engine/time_base.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double huge = 1e300, notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(TimeBase, FindsTheTickOfATime) {
    const TimeBase base{1000, 500};
    const struct {
        double time;
        mt_Time nearest, at, from;
    } cases[] = {
        {0, 500, 500, 500},     {0.0104, 510, 510, 511},  {0.0106, 511, 510, 511},
        {0.011, 511, 511, 511}, {-0.0016, 498, 500, 500},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(base.NearestTick(one.time), one.nearest) << one.time;
        EXPECT_EQ(base.TickAt(one.time), one.at) << one.time;
        EXPECT_EQ(base.TickFrom(one.time), one.from) << one.time;
    }
}

TEST(TimeBase, TimesOfTicksLeadBackToThem) {
    for (const double rate : {1.0, 3.0, 1000.0, 1e9})
        for (const mt_Time first : {mt_Time{0}, mt_Time{1} << 40})
            for (mt_Time tick = first; tick < first + 4000; tick += 7) {
                const TimeBase base{rate, first};
                const double time = base.TimeOf(tick);
                EXPECT_EQ(base.NearestTick(time), tick) << rate;
                EXPECT_EQ(base.TickFrom(time), tick) << rate;
                EXPECT_EQ(base.OnTick(time), time) << rate;
            }
    EXPECT_DOUBLE_EQ((TimeBase{1000, 500}.TimeOf(498)), -0.002) << "ahead of the first event";
}

TEST(TimeBase, StaysWithinTicksWhateverTheTime) {
    const auto last = static_cast<mt_Time>(INT64_MAX - 1);
    EXPECT_EQ((TimeBase{1e9, INT64_MAX - 5}.NearestTick(huge)), last);
    EXPECT_LT((TimeBase{1e9, 0}.NearestTick(huge)), last);
    EXPECT_EQ(static_cast<int64_t>(TimeBase{1e9, static_cast<mt_Time>(INT64_MIN + 5)}.NearestTick(-huge)),
              INT64_MIN);
    EXPECT_EQ((TimeBase{1e9, 7}.NearestTick(notANumber)), 7u);
    EXPECT_EQ((TimeBase{1000, 7}.TickFrom(-huge)), 7u);
}

TEST(TimeBase, LengthsOfWholeTicksAreExact) {
    const TimeBase base{1e9, 0};
    const double lost = 1700001.336 - 1700001.335;
    EXPECT_NE(lost, 0.001);
    EXPECT_EQ(base.WholeLength(lost), 0.001);
    EXPECT_EQ(base.TicksIn(lost), 1e6);
    EXPECT_EQ(base.WholeLength(huge), huge);
    EXPECT_EQ(base.LengthOf(1.5), 1.5e-9);
}

}  // namespace
