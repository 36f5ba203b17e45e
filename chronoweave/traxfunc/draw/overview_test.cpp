#include "chronoweave/traxfunc/draw/overview.h"

#include <gtest/gtest.h>

#include <numeric>

#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

class Overview : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
    }
    void TearDown() override { gen_set_console_sink({}); }
    // The events counted between two shares of the trace.
    double Counted(const laOverview& overview, double from, double to) const {
        const auto bin = [](double share) { return static_cast<ptrdiff_t>(share * laOverview_Bins); };
        return std::accumulate(overview.activity.begin() + bin(from), overview.activity.begin() + bin(to),
                               0.0);
    }
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

// A trace that is too long to be counted at once: bursts at both ends with silence between, and an end that
// fills no block.
TEST_F(Overview, ALongTraceIsCountedWhole) {
    constexpr uint32_t early = 300'000, late = 120'037;
    std::vector<TestEvent> events;
    events.reserve(early + late);
    for (uint32_t i = 0; i < early; ++i) events.push_back(user(i / 3, 0x400, 1));
    for (uint32_t i = 0; i < late; ++i) events.push_back(user(900'000 + i, 0x400, 1));
    ASSERT_TRUE(test.Open(events));
    const laOverview overview = laOverview_Build(canvas);
    ASSERT_EQ(overview.activity.size(), laOverview_Bins);
    EXPECT_NEAR(Counted(overview, 0, 1), early + late, 2);
    EXPECT_NEAR(Counted(overview, 0, 0.1), early, 200);
    EXPECT_NEAR(Counted(overview, 0.12, 0.88), 0, 200) << "only what lies between two blocks";
    EXPECT_NEAR(Counted(overview, 0.88, 1), late, 200);
    EXPECT_GT(Counted(overview, 0.9995, 1), 0) << "the last block";
    EXPECT_LT(Counted(overview, 0.9995, 1), late * 0.01);
}

// Columns are fewer than bins.
TEST_F(Overview, AColumnShowsTheMaximumOfItsBins) {
    ASSERT_TRUE(test.Open(random_events(6, 300)));
    constexpr int width = 512, height = 40, each = laOverview_Bins / width;
    laOverview overview = laOverview_Build(canvas);
    for (const int offset : {0, 3, each - 1}) {
        overview.activity.assign(laOverview_Bins, 0);
        overview.activity[static_cast<size_t>(100 * each + offset)] = 1000;
        overview.activity[static_cast<size_t>(200 * each + offset)] = 1000;
        overview.activity[static_cast<size_t>(200 * each)] += 1;
        RecordingSurface strip(width, height);
        laOverview_Draw(canvas, overview, strip, width, height);
        std::vector<std::pair<int, int>> bars;  // column and height
        for (const SurfaceOp& op : strip.of(SurfaceOp::Fill)) bars.emplace_back(op.x0, op.y1);
        EXPECT_EQ(bars, (std::vector<std::pair<int, int>>{{100, height - 2}, {200, height - 2}})) << offset;
    }
}

}  // namespace
