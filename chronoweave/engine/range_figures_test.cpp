#include "chronoweave/engine/range_figures.h"

#include <cmath>
#include <random>

#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/engine/report.h"

class RangeFiguresTest : public AnalysisTest {
  protected:
    RangeFigures exact(double from, double to, std::vector<uint32_t> idle = {}) {
        RangeTally tally(source_, std::move(idle), from, to);
        while (tally.Step()) {
        }
        EXPECT_NE(tally.Figures(), nullptr);
        return tally.Figures() ? *tally.Figures() : RangeFigures();
    }
    // The longest row of a search for the ready status; 0 for none.
    double LongestReady(const std::vector<uint32_t>& objects, double from, double to) {
        SearchRequest request;
        request.kind = Search_Status;
        request.target = legend_.StatusByName("Ready");
        request.objects = objects;
        request.rangeFrom = from;
        request.rangeTo = to;
        SearchResult result;
        EXPECT_TRUE(search_Run(source_, request, result));
        double longest = 0;
        for (const SearchRow& row : result.rows) longest = std::max(longest, row.timeB - row.timeA);
        return longest;
    }
    void EqualReports(double from, double to, const std::string& which) {
        const auto objects = analysis_ObjectsAlive(source_, from, to);
        const std::vector<uint32_t> idle(objects.begin(), objects.begin() + (objects.empty() ? 0 : 1));
        const RangeFigures figures = exact(from, to, idle);
        ASSERT_TRUE(figures.exact);
        if (objects.empty()) return;
        LegendStatistics statistics;
        LoadReport load;
        ASSERT_EQ(report_AllObjects(source_, from, to, statistics), ReportOutcome::Done);
        ASSERT_EQ(report_ProcessorLoad(source_, idle, from, to, load), ReportOutcome::Done);
        EXPECT_EQ(figures.events, static_cast<uint64_t>(statistics.totalEvents)) << which;
        EXPECT_EQ(figures.Length(), statistics.rangeLength) << which;
        for (size_t row = 0; row < legend_.events.size(); ++row) {
            if (legend_.events[row].IsCategory()) continue;
            EXPECT_EQ(figures.eventCounts[row], statistics.eventCounts[row]) << which;
        }
        ASSERT_EQ(figures.processors.size(), load.processors.size()) << which;
        for (size_t i = 0; i < load.processors.size(); ++i) {
            EXPECT_EQ(figures.processors[i].busy, load.processors[i].busy) << which;
            ASSERT_EQ(figures.processors[i].objects.size(), load.processors[i].objects.size()) << which;
            for (size_t j = 0; j < load.processors[i].objects.size(); ++j) {
                EXPECT_EQ(figures.processors[i].objects[j].object, load.processors[i].objects[j].object);
                EXPECT_EQ(figures.processors[i].objects[j].time, load.processors[i].objects[j].time);
            }
        }
        const std::vector<uint32_t> others(objects.begin() + 1, objects.end());
        EXPECT_EQ(figures.longestWait ? figures.longestWait->length : 0, LongestReady(others, from, to));
    }
};

TEST_F(RangeFiguresTest, ExactFiguresAreThoseOfTheReports) {
    std::mt19937 random(5);
    for (unsigned seed = 1; seed <= 20; ++seed) {
        open(random_events(seed, 700), seed % 2 ? "Korvantis" : "ThreadX",
             seed % 3 ? CrowdedLegend() : test_legend());
        for (int turn = 0; turn < 5; ++turn) {
            const double from = turn == 0 ? 0 : 0.001 * static_cast<double>(random() % 2000);
            const double to = turn % 2 ? from + 0.5 : std::max(from, source_.totalLength);
            EqualReports(from, to, std::to_string(seed) + ' ' + std::to_string(turn));
        }
    }
}

TEST_F(RangeFiguresTest, ALongRangeHasAnEstimateFirst) {
    // Two tasks take turns of 3 and 1 ticks; one of four events is a user's.
    std::vector<TestEvent> events = {status_change(0, 0x400, mt_Ready), status_change(0, 0x800, mt_Ready)};
    for (mt_Time turn = 0; turn < 10000; ++turn) {
        events.push_back(switch_to(4 * turn, 0x400));
        events.push_back(user(4 * turn + 1, 0x400, 2));
        events.push_back(user(4 * turn + 2, 0x400, 3));
        events.push_back(switch_to(4 * turn + 3, 0x800));
    }
    open(events, "Korvantis", CrowdedLegend());
    RangeTally tally(source_, {}, 0, source_.totalLength);
    int steps = 0;
    while (!tally.Figures() && tally.Step()) ++steps;
    EXPECT_LE(steps, 16);
    ASSERT_NE(tally.Figures(), nullptr);
    const RangeFigures estimate = *tally.Figures();
    EXPECT_FALSE(estimate.exact);
    EXPECT_NEAR(static_cast<double>(estimate.events), 40002, 800);
    const auto take = static_cast<size_t>(legend_.EventByName("Take"));
    EXPECT_NEAR(static_cast<double>(estimate.eventCounts[take]), 10000, 400);
    ASSERT_EQ(estimate.processors.size(), 1u);
    ASSERT_EQ(estimate.processors[0].objects.size(), 2u);
    EXPECT_NEAR(estimate.processors[0].objects[0].time, 30, 1.5);
    EXPECT_NEAR(estimate.processors[0].objects[1].time, 10, 1.5);
    EXPECT_NEAR(estimate.processors[0].busy, 40, 1.5);
    ASSERT_TRUE(estimate.longestWait);
    EXPECT_NEAR(estimate.longestWait->length, 0.003, 1e-9);
    EqualReports(0, source_.totalLength, "all");
    EqualReports(1.2345, 38.5, "most");
}

TEST_F(RangeFiguresTest, NothingComesOfAnEmptyStore) {
    open({}, "Korvantis", test_legend());
    RangeTally tally(source_, {}, 0, 1);
    while (tally.Step()) {
    }
    EXPECT_TRUE(tally.Figures() == nullptr || tally.Figures()->events == 0);
    AnalysisSource none;
    RangeTally ofNone(none, {}, 0, 1);
    EXPECT_FALSE(ofNone.Step());
    EXPECT_EQ(ofNone.Figures(), nullptr);
}
