#include "chronoweave/traxfunc/draw/overview.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

class OverviewTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
    }
    void TearDown() override { gen_set_console_sink({}); }
    void open(const std::vector<TestEvent>& events) { ASSERT_TRUE(test.Open(events)); }
    // Counted in slices of so many events.
    laOverview counted(uint32_t slice) {
        laOverview overview = laOverview_Begin(test.canvas->source);
        uint32_t slices = 1;
        while (laOverview_Count(test.canvas->source, overview, slice)) ++slices;
        EXPECT_EQ(slices, overview.counted / slice + 1);
        return overview;
    }
    static double sum(const laOverview& overview) {
        return std::accumulate(overview.activity.begin(), overview.activity.end(), 0.0);
    }
    // The events counted between two shares of the trace.
    static double between(const laOverview& overview, double from, double to) {
        const auto bin = [](double share) { return static_cast<ptrdiff_t>(share * laOverview_Bins); };
        return std::accumulate(overview.activity.begin() + bin(from), overview.activity.begin() + bin(to),
                               0.0);
    }
    TestCanvas test;
};

TEST_F(OverviewTest, CountsEveryEventOnceWhateverTheSlices) {
    for (const size_t count : {1u, 100u, 101u, 3000u}) {
        open(random_events(6, count));
        const laOverview whole = counted(UINT32_MAX);
        EXPECT_EQ(whole.counted, count);
        EXPECT_EQ(sum(whole), static_cast<double>(count));
        EXPECT_GT(whole.activity[0], 0.0f);
        for (const uint32_t slice : {1u, 7u, 100u, 1000u}) EXPECT_EQ(counted(slice).activity, whole.activity);
    }
}

TEST_F(OverviewTest, ABurstStandsWhereItIsAndASecondOneBehindTheLastBlock) {
    // Quiet for the whole of the trace but for a burst in its first third and one at its very end.
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 410; ++i) events.push_back({i * 1000, mt_UserEvent, 0, words({0x400})});
    for (uint32_t i = 0; i < 90; ++i)
        events.insert(events.begin() + 137, {136'500, mt_UserEvent, 0, words({0x400})});
    for (uint32_t i = 0; i < 60; ++i) events.push_back({409'000, mt_UserEvent, 0, words({0x400})});
    open(events);
    const laOverview overview = counted(37);
    const double end = overview.length;
    for (const auto& [time, burst] :
         {std::pair{end * 136'500 / 409'001, 90.0f}, std::pair{end * 0.9999, 61.0f}}) {
        const auto at = static_cast<size_t>(time / overview.binWidth);
        const float most = *std::max_element(overview.activity.begin() + static_cast<ptrdiff_t>(at - 1),
                                             overview.activity.begin() + static_cast<ptrdiff_t>(at + 1));
        EXPECT_EQ(most, burst) << time;
    }
    // A column is as tall as the busiest of its bins: the bursts stand out in a narrow strip too.
    RecordingSurface strip(100, 40);
    laOverview_Draw(overview, test.canvas->view, test.canvas->marks, strip, 100, 40);
    std::vector<int> tall;
    for (const auto& box : strip.of(SurfaceOp::Fill))
        if (box.y1 > 30) tall.push_back(box.x0);
    EXPECT_EQ(tall, (std::vector<int>{33, 99}));
}

TEST_F(OverviewTest, ATraceThatGrowsIsCountedOn) {
    open(random_events(8, 900));
    laOverview overview = counted(200);
    const double before = sum(overview), length = overview.length;
    LaSource& source = test.canvas->source;
    source.totalLength = length * 5;  // what came since lies behind the old end
    EXPECT_FALSE(laOverview_Count(source, overview, 100));
    EXPECT_EQ(overview.length, length * 5);
    EXPECT_GE(overview.binWidth * laOverview_Bins, overview.length);
    EXPECT_EQ(sum(overview), before);
    const auto old_end = static_cast<ptrdiff_t>(length / overview.binWidth);
    EXPECT_EQ(std::accumulate(overview.activity.begin() + old_end + 1, overview.activity.end(), 0.0f), 0.0f);
    source.totalLength = length;
}

TEST_F(OverviewTest, TheFrameMoves) {
    open(random_events(6, 3000));
    _LaCanvasData& trace = *test.canvas;
    const laOverview overview = counted(UINT32_MAX);
    const double total = overview.length;
    laCanvas_ShowRange(trace, total * 0.25, total * 0.5);
    for (const auto& [x, part] :
         {std::pair{100, laOverviewPart::Outside}, std::pair{247, laOverviewPart::LeftEdge},
          std::pair{253, laOverviewPart::LeftEdge}, std::pair{400, laOverviewPart::Inside},
          std::pair{498, laOverviewPart::RightEdge}, std::pair{506, laOverviewPart::Outside}})
        EXPECT_TRUE(laOverview_HitTest(overview, trace.view, 1000, x) == part) << x;
    struct Case {
        laOverviewPart part;
        int grabbed, x;
        double low, high;
    };
    for (const Case& one :
         {Case{laOverviewPart::Inside, 300, 400, 0.35, 0.6}, Case{laOverviewPart::Inside, 300, 2000, 0.75, 1},
          Case{laOverviewPart::Inside, 300, -50, 0, 0.25},
          Case{laOverviewPart::LeftEdge, 250, 150, 0.15, 0.5},
          Case{laOverviewPart::LeftEdge, 250, 900, 0.499, 0.5},
          Case{laOverviewPart::RightEdge, 500, 100, 0.25, 0.251},
          Case{laOverviewPart::RightEdge, 500, 5000, 0.25, 1},
          Case{laOverviewPart::Outside, 800, 800, 0.675, 0.925}}) {
        const laOverviewRange range =
            laOverview_Drag(overview, 1000, one.part, {total * 0.25, total * 0.5}, one.grabbed, one.x);
        EXPECT_NEAR(range.low, total * one.low, total * 1e-9) << one.grabbed << " " << one.x;
        EXPECT_NEAR(range.high, total * one.high, total * 1e-9) << one.grabbed << " " << one.x;
    }
    RecordingSurface strip(1000, 40);
    laOverview_Draw(overview, trace.view, trace.marks, strip, 1000, 40);
    EXPECT_LE(strip.ops.size(), 1010u);
    EXPECT_EQ(strip.of(SurfaceOp::Line).size(), 4u);
    laOverview_Draw(laOverview(), trace.view, trace.marks, strip, 1000, 40);
}

// A trace that is too long to be counted at once: bursts at both ends with silence between, and an end that
// fills no block.
TEST_F(OverviewTest, ALongTraceIsCountedWhole) {
    constexpr uint32_t early = 300'000, late = 120'037;
    std::vector<TestEvent> events;
    events.reserve(early + late);
    for (uint32_t i = 0; i < early; ++i) events.push_back(user(i / 3, 0x400, 1));
    for (uint32_t i = 0; i < late; ++i) events.push_back(user(900'000 + i, 0x400, 1));
    open(events);
    const laOverview overview = counted(100'000);
    ASSERT_EQ(overview.activity.size(), laOverview_Bins);
    EXPECT_NEAR(between(overview, 0, 1), early + late, 2);
    EXPECT_NEAR(between(overview, 0, 0.1), early, 200);
    EXPECT_NEAR(between(overview, 0.12, 0.88), 0, 200) << "only what lies between two blocks";
    EXPECT_NEAR(between(overview, 0.88, 1), late, 200);
    EXPECT_GT(between(overview, 0.9995, 1), 0) << "the last block";
    EXPECT_LT(between(overview, 0.9995, 1), late * 0.01);
}

// Quiet but for a burst, in blocks of which the largest holds the whole trace.
TEST_F(OverviewTest, ABurstIsSeenAsFinelyWhateverTheCheckpointInterval) {
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 900; ++i) {
        events.push_back(user(i * 1000, 0x400, 1));
        for (uint32_t burst = 0; i == 555 && burst < 90; ++burst) events.push_back(user(i * 1000, 0x400, 1));
    }
    std::vector<float> ofHundred;
    for (const uint32_t interval : {100u, 300u, 2000u}) {
        const std::string base = test.folder / ("interval" + std::to_string(interval));
        std::unique_ptr<StoreWriter> writer;
        ASSERT_TRUE(StoreWriter::Create(base, {1000, "ThreadX", true, interval}, TaskTracker, writer).ok());
        for (const TestEvent& event : events)
            ASSERT_TRUE(writer->AppendEvent(event.time, event.type, event.subtype, event.extra).ok());
        writer.reset();
        ASSERT_TRUE(
            laCanvas_SetUpFromStore(*test.canvas, mt_OpenForRead(base), test_legend(), "/folder/run.trs"));
        const laOverview overview = counted(200);
        EXPECT_EQ(*std::max_element(overview.activity.begin(), overview.activity.end()), 91.0f) << interval;
        if (ofHundred.empty()) ofHundred = overview.activity;
        EXPECT_EQ(overview.activity, ofHundred) << interval;
    }
}

// Columns are fewer than bins.
TEST_F(OverviewTest, AColumnShowsTheMaximumOfItsBins) {
    open(random_events(6, 300));
    constexpr int width = 512, height = 40, each = laOverview_Bins / width;
    laOverview overview = counted(100'000);
    for (const int offset : {0, 3, each - 1}) {
        overview.activity.assign(laOverview_Bins, 0);
        overview.activity[static_cast<size_t>(100 * each + offset)] = 1000;
        overview.activity[static_cast<size_t>(200 * each + offset)] = 1000;
        overview.activity[static_cast<size_t>(200 * each)] += 1;
        RecordingSurface strip(width, height);
        laOverview_Draw(overview, test.canvas->view, test.canvas->marks, strip, width, height);
        std::vector<std::pair<int, int>> bars;  // column and height
        for (const SurfaceOp& op : strip.of(SurfaceOp::Fill)) bars.emplace_back(op.x0, op.y1);
        EXPECT_EQ(bars, (std::vector<std::pair<int, int>>{{100, height - 2}, {200, height - 2}})) << offset;
    }
}

}  // namespace
