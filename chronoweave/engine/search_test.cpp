#include <fstream>
#include <random>

#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/engine/naive_testing.h"
#include "chronoweave/engine/search_names.h"
#include "chronoweave/engine/search_texts.h"
#include "shared/libcxxutil/report.h"

namespace {

std::string TextOf(const std::vector<SearchRow>& rows) {
    std::string text;
    for (const SearchRow& row : rows)
        text += gen_format("%x>%x %g-%g ", row.objectA, row.objectB, row.timeA, row.timeB);
    return text;
}

bool same(const std::vector<SearchRow>& a, const std::vector<SearchRow>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const SearchRow& x, const SearchRow& y) {
        return x.objectA == y.objectA && x.objectB == y.objectB && x.timeA == y.timeA && x.timeB == y.timeB;
    });
}

}  // namespace

class SearchTest : public AnalysisTest {
  protected:
    SearchRequest request(int kind, int32_t target = -1, double from = 0, double to = 1e3) {
        SearchRequest request;
        request.kind = kind;
        request.target = target;
        request.rangeFrom = from;
        request.rangeTo = to;
        request.objects = request.beginObjects = request.endObjects = everyone();
        return request;
    }
    std::string found(const SearchRequest& request, uint64_t limit = 0) {
        SearchResult result;
        EXPECT_TRUE(search_Run(source_, request, result, limit));
        return TextOf(result.rows);
    }
    int32_t event(const char* name) { return legend_.EventByName(name); }
    int32_t status(const char* name) { return legend_.StatusByName(name); }
};

TEST_F(SearchTest, RowsAreThoseOfLookingAtEveryObjectAtEveryEvent) {
    std::mt19937 random(7);
    size_t rows = 0, limited = 0;
    for (unsigned seed = 1; seed <= 24; ++seed) {
        open(random_events(seed, 700), seed % 2 ? "Korvantis" : "ThreadX",
             seed % 3 ? CrowdedLegend() : test_legend());
        for (int turn = 0; turn < 40; ++turn) {
            SearchRequest one = request(static_cast<int>(random() % 4));
            const auto pick = [&](size_t count) { return static_cast<int32_t>(random() % (count + 1)) - 1; };
            one.target = pick(one.kind == Search_Status ? legend_.statuses.size() : legend_.events.size());
            one.endTarget = pick(legend_.events.size());
            for (auto* list : {&one.objects, &one.beginObjects, &one.endObjects})
                std::erase_if(*list,
                              [&](uint32_t) { return random() % 8 < static_cast<unsigned>(turn % 8); });
            one.rangeFrom =
                turn % 4 == 0 ? 0 : source_.totalLength * static_cast<double>(random() % 100) / 120;
            one.rangeTo = turn % 5 == 0 ? source_.totalLength
                                        : one.rangeFrom + 0.001 * static_cast<double>(random() % 3000);
            one.flags = turn % 3 == 0 ? uint32_t{Search_SameObject} : 0;
            const uint64_t limit = turn % 2 ? random() % 20 : 0;
            SearchResult result;
            ASSERT_TRUE(search_Run(source_, one, result, limit));
            one.rowLimit = limit;
            const auto expected = NaiveWalk(source_, one.rangeFrom, one.rangeTo, one.objects).search(one);
            ASSERT_TRUE(same(result.rows, expected))
                << "seed " << seed << " turn " << turn << " kind " << one.kind << "\n"
                << TextOf(result.rows) << "\n"
                << TextOf(expected);
            rows += expected.size();
            limited += limit > 0 && expected.size() == limit;
        }
    }
    EXPECT_GT(rows, 10000u);
    EXPECT_GT(limited, 50u);
}

TEST_F(SearchTest, PatternsPairAsTheyComeAndStatusesEndAtTheRange) {
    // Two processors; objects 0x400, 0x800 on processor 0, 0x401 on processor 1.
    OpenReady({switch_to(0, 0x400), user(10, 0x400, 2), user(20, 0x400, 2), user(30, 0x800, 3),
               user(40, 0x800, 2), user(50, 0x400, 2), user(60, 0x401, 3), user(70, 0x401, 2),
               user(80, 0x401, 3), switch_to(90, 0x800), user(100, 0x400, 3)},
              "Korvantis", CrowdedLegend());
    const int32_t take = event("Take"), give = event("Give");
    SearchRequest pattern = request(Search_Pattern, take);
    pattern.endTarget = give;
    // The lowest object that is open is closed, by whoever ends; the first of two begins counts.
    EXPECT_EQ(found(pattern), "400>800 0.01-0.03 400>401 0.05-0.06 401>401 0.07-0.08 800>400 0.04-0.1 ");
    pattern.flags = Search_SameObject;
    EXPECT_EQ(found(pattern), "401>401 0.07-0.08 400>400 0.01-0.1 ");
    pattern.beginObjects = {0x400, 0x800};
    pattern.endObjects = {0x401};
    EXPECT_EQ(found(pattern), "");
    EXPECT_FALSE(search_ShareObjects(pattern));
    // A range that ends at a tick has that tick; one the wrong way round has nothing.
    EXPECT_EQ(found(request(Search_Event, give, 0.03, 0.06)), "800>800 0.03-0.03 401>401 0.06-0.06 ");
    for (const int kind : {Search_Event, Search_Pattern, Search_Status, Search_Switch})
        EXPECT_EQ(found(request(kind, -1, 0.06, 0.03)), "") << kind;
    // In force at either end of the range.
    SearchRequest running = request(Search_Status, status("Running"), 0.02, 0.095);
    EXPECT_EQ(found(running), "400>400 0.02-0.09 800>800 0.09-0.095 ");
    // Begin and end the same event: every second one closes.
    SearchRequest alternate = request(Search_Pattern, take);
    alternate.endTarget = take;
    alternate.objects = alternate.beginObjects = alternate.endObjects = {0x400};
    EXPECT_EQ(found(alternate), "400>400 0.01-0.02 ");
}

TEST_F(SearchTest, SwitchesKnowTheProcessorAndTheirPredecessor) {
    const std::vector<TestEvent> events{switch_to(0, 0x400), switch_to(10, 0x401), switch_to(20, 0x800),
                                        status_change(30, 0x800, mt_Pend), switch_to(40, 0x400)};
    OpenReady(events, "Korvantis", test_legend());
    // 0x800 stays the running object of its processor while nobody executes there.
    EXPECT_EQ(found(request(Search_Switch)),
              "400>400 0-0 401>401 0.01-0.01 400>800 0.02-0.02 800>400 0.04-0.04 ");
    OpenReady(events, "ThreadX", test_legend());
    EXPECT_EQ(found(request(Search_Switch), 3).substr(0, 9), "400>400 0");
    // Between two ranges, who runs at the start is its own predecessor.
    OpenReady(events, "Korvantis", test_legend());
    EXPECT_EQ(found(request(Search_Switch, -1, 0.025, 0.035)), "401>401 0.025-0.025 800>800 0.025-0.025 ");
}

TEST_F(SearchTest, IntervalsAreFromOneObjectToOneObject) {
    open({user(0, 0x400, 3), user(10, 0x400, 2), user(15, 0x800, 3), user(20, 0x400, 3), user(30, 0x800, 2),
          user(50, 0x400, 3)},
         "Korvantis", CrowdedLegend());
    EXPECT_EQ(search_IntervalEvents(legend_, false), (std::vector<int32_t>{2, 3}));
    EXPECT_EQ(search_IntervalEvents(legend_, true).size(), 8u);
    const auto interval = [&](uint32_t begin, uint32_t end, double from, double to) {
        return found(search_IntervalRequest(legend_, {"take", "give", begin, end, from, to}));
    };
    EXPECT_EQ(interval(0x400, 0x400, 0, 1), "400>400 0.01-0.02 ");
    EXPECT_EQ(interval(0x400, 0x800, 1, 0), "400>800 0.01-0.015 ");  // the range is put the right way round
    EXPECT_EQ(interval(0x800, 0x400, 0, 1), "800>400 0.03-0.05 ");
    EXPECT_EQ(interval(0x800, 0x400, 0, 0.049), "");
    // The name stands twice and means the first.
    EXPECT_EQ(search_IntervalRequest(legend_, {"Take", "Give", 1, 2, 0, 1}).target, 2);
}

TEST_F(SearchTest, StepsGoToTheNeighbourInTheStore) {
    OpenReady(
        {switch_to(0, 0x400), status_change(10, 0x400, mt_Ready), switch_to(10, 0x800), user(12, 0x400, 2),
         switch_to(20, 0x400), user(20, 0x400, 2), user(20, 0x800, 2), status_change(30, 0x400, mt_Pend)},
        "Korvantis", test_legend());
    const int32_t ready = status("Ready"), running = status("Running"), userEvent = event("Event 4");
    const struct {
        int kind;
        int32_t target;
        double time;
        uint32_t object;
        bool onlyObject, forward;
        const char* row;  // empty for none
    } cases[] = {
        {Search_Status, -1, 0.0, 0x400, true, true, "400>400 0.01-0.02 "},
        {Search_Status, -1, 0.01, 0x400, true, true, "400>400 0.02-0.03 "},
        {Search_Status, running, 0.0, 0x400, true, true, "400>400 0.02-0.03 "},
        {Search_Status, -1, 0.03, 0x400, true, true, ""},
        {Search_Status, -1, 0.02, 0x400, true, false, "400>400 0.01-0.02 "},
        {Search_Status, running, 0.02, 0x400, true, false, "400>400 0-0.01 "},
        {Search_Status, ready, 0.01, 0x400, true, false, "400>400 0-0 "},
        {Search_Status, -1, 0.0, 0x400, true, false, ""},
        {Search_Event, userEvent, 0.012, 0x400, false, true, "400>400 0.02-0.02 "},
        {Search_Event, userEvent, 0.02, 0x400, false, true, "800>800 0.02-0.02 "},
        {Search_Event, userEvent, 0.02, 0x400, true, true, ""},
        {Search_Event, userEvent, 0.02, 0x400, true, false, "400>400 0.012-0.012 "},
        {Search_Event, -1, 9.0, 0x400, false, true, ""},
    };
    for (const auto& c : cases) {
        SearchRow row;
        source_.running.clear();
        const bool got =
            search_Step(source_, {c.kind, c.target, c.time, c.object, c.onlyObject, c.forward}, row);
        EXPECT_EQ(got ? TextOf({row}) : "", c.row)
            << c.kind << " at " << c.time << (c.forward ? " forward" : " backward");
    }
    // From the switch at 10 to 0x800, forward; nobody who merely runs already is an answer.
    SearchRow row;
    source_.running.clear();
    source_.running.enter(0, 0x800);
    ASSERT_TRUE(search_Step(source_, {Search_Switch, -1, 0.01, 0x400, false, true}, row));
    EXPECT_EQ(TextOf({row}), "800>400 0.02-0.02 ");
    source_.running.clear();
    ASSERT_TRUE(search_Step(source_, {Search_Switch, -1, 0.02, 0x800, false, false}, row));
    EXPECT_EQ(TextOf({row}), "400>800 0.01-0.01 ");
}

TEST_F(SearchTest, AStoppedWalkKeepsWhatItFoundAndADamagedStoreIsTold) {
    std::vector<TestEvent> events;
    for (mt_Time time = 0; time < 40000; ++time) events.push_back(user(time, 0x400, 2));
    open(events, "Korvantis", test_legend());
    int calls = 0;
    source_.progress = [&calls](double done, double total) {
        EXPECT_LE(done, total);
        return ++calls < 2;
    };
    SearchResult result;
    ASSERT_TRUE(search_Run(source_, request(Search_Event), result));
    EXPECT_TRUE(result.stopped);
    EXPECT_GT(result.rows.size(), 30000u);
    EXPECT_LT(result.rows.size(), 35000u);
    EXPECT_NEAR(result.reached, result.rows.back().timeA, 0.0011);
    source_.progress = {};
    ASSERT_TRUE(search_Run(source_, request(Search_Event, -1, 0, 10), result));
    EXPECT_FALSE(result.damaged);
    EXPECT_EQ(result.rows.size(), 10001u);
    // A packet of no known type in the middle of the store.
    std::fstream file(base_ + ".trs", std::ios::in | std::ios::out | std::ios::binary);
    const TraceStorePtr whole = mt_OpenForRead(base_);
    CursorPosition cursor;
    ASSERT_TRUE(mt_GetEventListAndStateFromTimeRange(*whole, 20050, true, cursor, nullptr));
    file.seekp(cursor.offset);
    file.put('\x77');
    file.close();
    store_ = mt_OpenForRead(base_);
    source_.store = store_.get();
    for (const int kind : {Search_Event, Search_Status, Search_Switch}) {
        ASSERT_TRUE(search_Run(source_, request(kind), result)) << kind;
        EXPECT_TRUE(result.damaged) << kind;
        EXPECT_NEAR(result.lost.from, 20.049, 1e-9);
        EXPECT_NEAR(result.lost.to, 20.1, 1e-9);
        for (const SearchRow& row : result.rows) EXPECT_FALSE(row.timeA < 20.07 && row.timeB > 20.07);
    }
    LegendStatistics statistics;
    ASSERT_EQ(report_AllObjects(source_, 0, 40, statistics), ReportOutcome::Done);
    EXPECT_TRUE(statistics.damaged);
    EXPECT_EQ(statistics.totalEvents, 40000 - 50) << "goes on at the next block";
    ASSERT_TRUE(search_Run(source_, request(Search_Event, -1, 25, 30), result));
    EXPECT_FALSE(result.damaged);
    EXPECT_EQ(result.rows.size(), 5001u);
}

TEST_F(SearchTest, BackwardStepsHoldTwoRows) {
    std::vector<TestEvent> events;
    for (mt_Time time = 0; time < 5000; ++time) events.push_back(user(time, 0x400, 2));
    open(events, "Korvantis", test_legend());
    SearchResult result;
    result.request = request(Search_Event);
    result.keepLast = 2;
    ASSERT_TRUE(search_Walk(source_, result));
    EXPECT_EQ(result.found, 5000u);
    EXPECT_EQ(TextOf(result.rows), "400>400 4.998-4.998 400>400 4.999-4.999 ");
}

TEST_F(SearchTest, TextsOfResults) {
    open({name_event(0, 0x400, "net%s"), user(10, 0x400, 2), user(10, 0x401, 2), user(2500, 0x401, 3)},
         "Korvantis", CrowdedLegend());
    const ObjectNames names(*store_, '@');
    AnalysisWords words = analysis_WordsOfLegend(legend_, names, source_.clock);
    SearchRequest one = request(Search_Pattern, event("Take"));
    one.endTarget = event("Give");
    SearchResult result;
    ASSERT_TRUE(search_Run(source_, one, result));
    EXPECT_EQ(search_NotFoundMessage(legend_, one), "Did not find instance for event pattern \"Take*Give\".");
    EXPECT_EQ(search_FoundMessage(legend_, result), "");
    EXPECT_EQ(search_ResultTitle(legend_, one, "VOREL Chronoweave - x", "run.trr"),
              "Search Result for \"Take*Give\" in run.trr");
    EXPECT_EQ(search_StatisticsLine(words, result),
              "Number: 1, Interval (in Second): max=2.49 min=2.49 ave=2.49");
    const auto cells = [&](const SearchRequest& of, const SearchRow& row) {
        std::string text;
        for (const SearchColumn& column : search_Columns(words, of))
            text += column.title + '=' + search_CellText(words, row, column.kind) + ';';
        return text;
    };
    words.timeMode = Time_Millisecond;
    words.unit = "Millisecond";
    EXPECT_EQ(cells(one, result.rows[0]),
              "From Task=0x400 (net%s);From Time=10;To Task=0x401;To Time=2500;"
              "Interval=2490;");
    one.flags = Search_SameObject;
    EXPECT_EQ(cells(one, result.rows[0]),
              "Task ID=0x400;From Time=10;To Time=2500;Interval=2490;"
              "Task Name=net%s;");
    one = request(Search_Event, event("Take"));
    EXPECT_EQ(cells(one, {0x401, 0, 0.01, 0}), "Task ID=0x401;Time(in Millisecond)=10;Task Name=;");
    ASSERT_TRUE(search_Run(source_, one, result));
    EXPECT_EQ(search_FoundMessage(legend_, result), "Found 2 instances of event 'Take'.");
    EXPECT_EQ(search_StatisticsLine(words, result), "Number of objects: 2");
    words.timeMode = Time_Tick;
    one = request(Search_Switch, status("ContextSwitch"));
    EXPECT_EQ(cells(one, {0x400, 0x401, 3, 3}), "From Task=net%s;To Task=Task 0x401;Time(in Millisecond)=3;");
    EXPECT_EQ(search_ResultTitle(legend_, one, "mine", "run.trr"),
              "Search Result for 'ContextSwitch' in mine");
    legend_.statuses[static_cast<size_t>(one.target)].visible = false;
    EXPECT_EQ(search_InvisibleMessage(legend_, one), "\"ContextSwitch\" is invisible.");
    EXPECT_EQ(search_InvisibleMessage(legend_, request(Search_Status, status("EvWait"))),
              "Status \"EvWait\" is invisible.");
    EXPECT_EQ(search_InvisibleMessage(legend_, request(Search_Event, event("Take"))), "");
}

TEST_F(SearchTest, NamesAreFoundOrTheirNeighboursTold) {
    open({name_event(0, 0x400, "net"), name_event(0, 0x401, "disk"), name_event(0, 0x402, "disk"),
          name_event(0, 0x403, "17")},
         "Korvantis", CrowdedLegend());
    const ObjectNames names(*store_, '@');
    const auto object = [&](const char* text, bool all) {
        std::vector<uint32_t> ids;
        if (const Result found = analysis_FindObjects(text, everyone(), names, all, ids); !found)
            return found.text();
        std::string list;
        for (const uint32_t id : ids) list += gen_format("%x ", id);
        return list;
    };
    EXPECT_EQ(object("0x400", false), "400 ");
    EXPECT_EQ(object("1025", false), "401 ");
    EXPECT_EQ(object("NET", false), "400 ");
    EXPECT_EQ(object("17", false), "403 ");
    EXPECT_EQ(object("*", false), "400 401 402 403 ");
    EXPECT_EQ(object("disk", true), "401 402 ");
    EXPECT_EQ(object("d?s*", true), "401 402 ");
    EXPECT_EQ(object("disk", false), "\"disk\" is the name of several objects: 0x401, 0x402; give an id");
    EXPECT_EQ(object("0x999", false), "there is no object 0x999 in the trace");
    EXPECT_EQ(object("dusk", false), "there is no object \"dusk\"; near: \"disk\"");
    int32_t row = 0;
    EXPECT_TRUE(analysis_FindEvent(legend_, "GIVE", row));
    EXPECT_EQ(row, 3);
    EXPECT_FALSE(analysis_FindEvent(legend_, "Early", row));  // a category
    EXPECT_EQ(analysis_FindStatus(legend_, "Runing", row).text(),
              "there is no status \"Runing\"; near: \"Running\"");
}
