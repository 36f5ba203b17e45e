#include "shared/libcxxutil/report.h"

#include <random>

#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/engine/naive_testing.h"
#include "chronoweave/engine/report_texts.h"

class ReportTest : public AnalysisTest {
  protected:
    ChosenReport chosen(int kind, int32_t target, ReportOrder order = {}, double to = 1e3) {
        SearchRequest request;
        request.kind = kind;
        request.target = target;
        request.rangeFrom = -5;
        request.rangeTo = to;
        request.objects = everyone();
        ChosenReport report;
        EXPECT_EQ(report_ChosenObjects(source_, request, order, report), ReportOutcome::Done);
        return report;
    }
    static std::string TextOf(const ChosenReport& report) {
        std::string text;
        for (const ObjectFigures* figures : report.sorted)
            text += gen_format("%x:%d:%g ", figures->object, figures->count, figures->time);
        return text;
    }
    int32_t status(const char* name) { return legend_.StatusByName(name); }
};

TEST_F(ReportTest, FiguresAreThoseOfLookingAtEveryObjectAtEveryEvent) {
    std::mt19937 random(11);
    for (unsigned seed = 1; seed <= 30; ++seed) {
        open(random_events(seed, 600), seed % 2 ? "Korvantis" : "ThreadX",
             seed % 3 ? CrowdedLegend() : test_legend());
        for (int turn = 0; turn < 6; ++turn) {
            const double from = turn == 0 ? 0 : 0.001 * static_cast<double>(random() % 2000);
            const double to = turn % 2 ? from + 0.5 : source_.totalLength;
            if (from > to) continue;
            const auto objects = analysis_ObjectsAlive(source_, from, to);
            if (objects.empty()) continue;
            const uint32_t one = objects[random() % objects.size()];
            const bool all = turn != 2;
            LegendStatistics mine;
            ASSERT_EQ(all ? report_AllObjects(source_, from, to, mine)
                          : report_OneObject(source_, one, from, to, mine),
                      ReportOutcome::Done);
            NaiveWalk walk(source_, from, to, all ? objects : std::vector<uint32_t>{one});
            const LegendStatistics naive = walk.report(all);
            ASSERT_EQ(mine.statusCounts, naive.statusCounts) << seed << ' ' << turn;
            for (size_t row = 0; row < naive.statusTimes.size(); ++row)
                ASSERT_NEAR(mine.statusTimes[row], naive.statusTimes[row], 1e-9) << seed << ' ' << turn;
            for (size_t row = 0; row < naive.eventCounts.size(); ++row) {
                if (legend_.events[row].IsCategory()) continue;
                ASSERT_EQ(mine.eventCounts[row], naive.eventCounts[row]) << legend_.events[row].name;
            }
        }
        NaiveWalk walk(source_, 0, source_.totalLength, everyone());
        walk.report(true);
        const ChosenReport switches = chosen(Search_Switch, legend_.contextSwitchStatus);
        for (const ObjectFigures& figures : switches.figures)
            ASSERT_EQ(figures.count, walk.figures[figures.object].count) << seed;
    }
}

TEST_F(ReportTest, CountsTimesAndTotals) {
    OpenReady({name_event(0, 0x400, "net"),
               switch_to(10, 0x400),
               user(20, 0x400, 2),
               {25, 3, 1, words({0x400})},
               switch_to(30, 0x401),
               switch_to(40, 0x800),
               status_change(50, 0x800, 0x55),
               user(60, 0x400, 9)},
              "Korvantis", CrowdedLegend());
    LegendStatistics s;
    ASSERT_EQ(report_AllObjects(source_, 0.02, 0.06, s), ReportOutcome::Done);
    const auto count = [&](const char* name) { return s.statusCounts[static_cast<size_t>(status(name))]; };
    const auto time = [&](const char* name) { return s.statusTimes[static_cast<size_t>(status(name))]; };
    // 0x400 ran before the range and counts from its start; a code that the legend does not know is Unknown.
    EXPECT_EQ(count("Running"), 3u);
    EXPECT_NEAR(time("Running"), 0.02 + 0.03 + 0.01, 1e-12);
    EXPECT_EQ(count("Unknown"), 1u);
    EXPECT_NEAR(time("Unknown"), 0.01, 1e-12);
    // Under the switch of whoever took over before; the first one's under the canvas's own.
    EXPECT_EQ(count("ContextSwitch"), 3u);
    EXPECT_NEAR(s.rangeLength, 0.04, 1e-12);
    // Two events of one name: the first counts twice for the categories. Late has Status, Call, Take,
    // Unknown.
    EXPECT_EQ(s.totalEvents, 6);
    EXPECT_EQ(s.eventCounts, (std::vector<uint32_t>{3, 2, 1, 0, 0, 3, 1, 0, 1, 1}));
    EXPECT_EQ(s.totalStatusCount, s.statusCounts[0] + s.statusCounts[1] + s.statusCounts[2] +
                                      s.statusCounts[3] + s.statusCounts[4] + s.statusCounts[5] +
                                      s.statusCounts[6] + s.statusCounts[7]);
    // An object that never changes has one count and the whole range.
    ASSERT_EQ(report_OneObject(source_, 0x401, 0.035, 0.055, s), ReportOutcome::Done);
    EXPECT_EQ(count("Running"), 1u);
    EXPECT_NEAR(time("Running"), 0.02, 1e-12);
    EXPECT_EQ(s.totalEvents, 0);
    open({}, "Korvantis", test_legend());
    EXPECT_EQ(report_AllObjects(source_, 0, 1, s), ReportOutcome::NoObjects);
}

TEST_F(ReportTest, ChosenObjectsAreSortedAsAsked) {
    OpenReady({switch_to(0, 0x400), switch_to(10, 0x800), switch_to(20, 0x400), user(25, 0x800, 1),
               switch_to(30, 0xc00), user(90, 0x400, 1), user(99, 0xc00, 1), user(100, 0xc00, 1)},
              "Korvantis", test_legend());
    const int32_t running = status("Running");
    EXPECT_EQ(TextOf(chosen(Search_Status, running, {false, false}, 0.1)),
              "400:2:0.02 c00:1:0.07 800:1:0.01 ");
    EXPECT_EQ(TextOf(chosen(Search_Status, running, {false, true}, 0.1)),
              "c00:1:0.07 400:2:0.02 800:1:0.01 ");
    EXPECT_EQ(TextOf(chosen(Search_Status, running, {true, false}, 0.1)),
              "800:1:0.01 c00:1:0.07 400:2:0.02 ");
    EXPECT_EQ(TextOf(chosen(Search_Status, running, {true, true}, 0.1)), "800:1:0.01 400:2:0.02 c00:1:0.07 ");
    EXPECT_EQ(TextOf(chosen(Search_Switch, -1)), "400:2:0 800:1:0 c00:1:0 ");
    const ChosenReport events = chosen(Search_Event, legend_.EventByName("Event 4"), {false, true});
    EXPECT_EQ(TextOf(events), "c00:2:0 400:1:0 800:1:0 ");
    EXPECT_EQ(events.totalCount, 4);
    EXPECT_NEAR(events.rangeFrom, 0, 0);
    EXPECT_NEAR(events.rangeTo, 0.101, 1e-12);
}

TEST_F(ReportTest, LoadIsTheShareInWhichSomeObjectExecutes) {
    OpenReady({switch_to(0, 0x400), switch_to(20, 0x800), switch_to(0x20, 0x401),
               status_change(60, 0x800, mt_Pend), switch_to(80, 0x400), user(100, 0x400, 1)},
              "Korvantis", test_legend());
    LoadReport report;
    ASSERT_EQ(report_ProcessorLoad(source_, {}, 0, 0.1, report), ReportOutcome::Done);
    ASSERT_EQ(report.processors.size(), 2u);
    EXPECT_NEAR(report.processors[0].busy, 0.08, 1e-12);
    ASSERT_EQ(report.processors[0].objects.size(), 2u);
    EXPECT_EQ(report.processors[0].objects[0].object, 0x400u);
    EXPECT_NEAR(report.processors[0].objects[0].time, 0.04, 1e-12);
    EXPECT_NEAR(report.processors[1].busy, 0.068, 1e-12);
    ASSERT_EQ(report_ProcessorLoad(source_, {0x400}, 0, 0.1, report), ReportOutcome::Done);
    EXPECT_NEAR(report.processors[0].busy, 0.04, 1e-12);
    EXPECT_EQ(report.processors[0].objects.size(), 2u);
}

TEST(IdleNames, StandBehindTheGroups) {
    for (const char* name : {"idle", "CPU0@idle", "a@b@IDLE", "Idle Task", "idle/1", "idle0", "idle_thread"})
        EXPECT_TRUE(report_IsIdleName(name, "@")) << name;
    for (const char* name : {"", "idler", "idle@pump", "my idle", "CPU0@idles", "id"})
        EXPECT_FALSE(report_IsIdleName(name, "@")) << name;
    EXPECT_TRUE(report_IsIdleName("CPU0/idle", "/"));
    EXPECT_FALSE(report_IsIdleName("CPU0/idle", ""));
}

TEST_F(ReportTest, RowsOfTheWindowAreInOrder) {
    OpenReady({name_event(0, 0x400, "net"), switch_to(10, 0x400), user(30, 0x400, 2)}, "Korvantis",
              CrowdedLegend());
    const ObjectNames names(*store_, '@');
    AnalysisWords words = analysis_WordsOfLegend(legend_, names, source_.clock);
    LegendStatistics s;
    ASSERT_EQ(report_OneObject(source_, 0x400, 0, 0.03, s), ReportOutcome::Done);
    const auto rows = report_Rows(words, s, true);
    ASSERT_EQ(rows.size(), legend_.statuses.size() + 2 + legend_.events.size());
    EXPECT_EQ(rows[3].texts, (std::array<std::string, 5>{"Status Running", "1", "50.0%", "0.020", "66.7%"}));
    EXPECT_EQ(rows[3].colourOf, status("Running"));
    EXPECT_EQ(rows[8].kind, ReportRowKind::Empty);
    EXPECT_EQ(rows[9].texts, (std::array<std::string, 5>{"ContextSwitch", "1", "", "0.000", ""}));
    EXPECT_EQ(rows[11].kind, ReportRowKind::Empty);
    EXPECT_EQ(rows[12].texts, (std::array<std::string, 5>{"Event Category Early", "2", "50.0%", "", ""}));
    EXPECT_EQ(rows[13].texts, (std::array<std::string, 5>{"  Event Switch", "1", "25.0%", "", ""}));
    EXPECT_EQ(report_Title(words, s, true), "Statistics for all Objects of the Task with ID 0x400");
    EXPECT_EQ(report_Subtitle(words, s), "(from 0 to 0.03 Second)");
    EXPECT_EQ(report_BarText(0), "");
    legend_.contextSwitchCount = 0;
    EXPECT_EQ(report_Rows(words, s, true).size(), rows.size() - 3);
    SearchRequest request;
    request.kind = Search_Status;
    request.target = status("Running");
    request.objects = everyone();
    request.rangeTo = 0.03;
    ChosenReport report;
    ASSERT_EQ(report_ChosenObjects(source_, request, {}, report), ReportOutcome::Done);
    const ReportRow row = report_ChosenRows(words, report).at(0);
    EXPECT_EQ(row.texts, (std::array<std::string, 5>{"Task 0x400 (net)", "1", "100.0%", "0.020", "66.7%"}));
}
