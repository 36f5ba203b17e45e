#include "chronoweave/traxfunc/canvas/followed_rows.h"

#include <gtest/gtest.h>

#include <map>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/arrangement.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"

namespace {

constexpr int32_t ready = 0, running = 3;  // rows of the legend

// Lanes made by hand: the cached range is 0 to 10 seconds.
class Activity : public testing::Test {
  protected:
    Activity() {
        EXPECT_TRUE(laCanvas_LoadLegend(*test.canvas, test_legend()));
        test.canvas->items.cachedHigh = 10;
    }
    laItem_Line& Lane(uint32_t id, std::initializer_list<LaLnSeg> segments) {
        laItem_Line& lane = test.canvas->items.lanes[laLn_New(test.canvas->items, id)];
        for (const LaLnSeg& one : segments) laLn_AppendSegment(lane, one.t0, one.t1, one.status);
        return lane;
    }
    laActivity Of(const laItem_Line& lane, double low, double high) {
        return laActivity_Of(test.canvas->items, test.canvas->looks, lane, low, high);
    }
    TestCanvas test;
};

TEST_F(Activity, RunTimeIsThatOfTheRangeAlone) {
    const laItem_Line& lane =
        Lane(1, {{0, 1, ready}, {1, 3, running}, {3, 6, ready}, {6, 8, running}, {8, 10, ready}});
    struct Case {
        double low, high, ran;
        bool active;
    };
    for (const Case& one : {Case{0, 10, 4, true}, Case{2, 7, 2, true}, Case{1.25, 1.75, 0.5, true},
                            Case{3.5, 5.5, 0, false}, Case{8, 10, 0, false}, Case{0, 1, 0, false}}) {
        const laActivity found = Of(lane, one.low, one.high);
        EXPECT_DOUBLE_EQ(found.ran, one.ran) << one.low << " to " << one.high;
        EXPECT_EQ(found.active, one.active) << one.low << " to " << one.high;
    }
}

TEST_F(Activity, AChangeOfStatusAnEndAndABeginCountButNotTheEndsOfTheFetch) {
    const laItem_Line& waits = Lane(1, {{0, 10, ready}});
    const laItem_Line& changes = Lane(2, {{0, 5, ready}, {5, 10, 1}});
    const laItem_Line& comes = Lane(3, {{4, 10, ready}});
    const laItem_Line& goes = Lane(4, {{0, 7, ready}});
    EXPECT_FALSE(Of(waits, 0, 10).active);
    EXPECT_FALSE(Of(waits, 0, 12).active) << "the view goes beyond what there is";
    EXPECT_TRUE(Of(changes, 4, 6).active);
    EXPECT_FALSE(Of(changes, 5.5, 6).active);
    EXPECT_TRUE(Of(comes, 3, 6).active);
    EXPECT_FALSE(Of(comes, 1, 2).active);
    EXPECT_TRUE(Of(goes, 6, 9).active);
    EXPECT_FALSE(Of(goes, 8, 9).active);
}

TEST_F(Activity, AnEventCountsWhereItIsShown) {
    Lane(1, {{0, 10, ready}});
    laItem_Line& lane = test.canvas->items.lanes[0];
    laBm_Append(test.canvas->items, {4, 0, 0, 2, 1, 0});
    EXPECT_TRUE(Of(lane, 4, 5).active);
    EXPECT_TRUE(Of(lane, 3, 4).active);
    EXPECT_FALSE(Of(lane, 4.5, 5).active);
    test.canvas->looks.eventLooks[2].shown = false;
    EXPECT_FALSE(Of(lane, 3, 5).active);
}

// Tasks a to j: the n-th runs once in second n, for 100 + 10 n milliseconds; z runs otherwise.
class FollowedRows : public testing::Test {
  protected:
    FollowedRows() : test(1000, 8 * 20) {
        std::vector<TestEvent> events;
        for (uint32_t n = 0; n < 10; ++n)
            events.push_back(name_event(n, Id(n), std::string(1, static_cast<char>('a' + n))));
        events.push_back(name_event(10, Id(10), "z"));
        for (uint64_t n = 0; n < 10; ++n) {
            events.push_back({n * 1000 + 100, mt_TaskChange, 0, words({Id(n), 0})});
            events.push_back({n * 1000 + 200 + 10 * n, mt_TaskChange, 0, words({Id(10), 0})});
        }
        events.push_back({10'000, mt_TaskChange, 0, words({Id(10), 0})});
        EXPECT_TRUE(test.Open(events));
        test.ShowAll();
    }
    static uint32_t Id(uint64_t n) { return static_cast<uint32_t>((n + 1) << 10); }
    std::string Rows() const {
        std::string all;
        for (const MslObjectEntry* entry : test.canvas->taskList->rows()) all += entry->name;
        return all;
    }
    void Show(double low, double high) { laCanvas_ShowRange(*test.canvas, low, high, {.paint = true}); }
    int ScreenRow(char name) const {
        return static_cast<int>(Rows().find(name)) * test.canvas->looks.rowHeight -
               test.canvas->view.verticalOffset;
    }
    TestCanvas test;
};

TEST_F(FollowedRows, OnlyActiveKeepsTheRowsOfTheViewAndSettlesWhenTold) {
    Show(2.05, 4.9);
    EXPECT_EQ(Rows(), "abcdefghijz");
    EXPECT_TRUE(laCanvas_Command(*test.canvas, "OnlyActive"));
    EXPECT_EQ(Rows(), "cdez");
    EXPECT_EQ(test.message(), "Active in the view: 4 of 11 tasks.");
    EXPECT_FALSE(laRows_Stale(*test.canvas));
    Show(3.05, 5.9);
    EXPECT_EQ(Rows(), "cdez") << "nothing jumps while the view moves";
    EXPECT_TRUE(laRows_Stale(*test.canvas));
    EXPECT_TRUE(laRows_Settle(*test.canvas));
    EXPECT_EQ(Rows(), "defz");
    EXPECT_FALSE(laRows_Settle(*test.canvas)) << "settled";
    EXPECT_TRUE(laCanvas_Command(*test.canvas, "OnlyActive"));
    EXPECT_EQ(Rows(), "abcdefghijz");
    EXPECT_FALSE(laRows_Stale(*test.canvas));
}

TEST_F(FollowedRows, AFetchDoesNotChangeThemBeforeTheViewRests) {
    Show(2.05, 2.9);
    laCanvas_Command(*test.canvas, "OnlyActive");
    EXPECT_EQ(Rows(), "cz");
    Show(8.05, 8.9);  // far off: fetched anew
    EXPECT_EQ(Rows(), "cz");
    laRows_Settle(*test.canvas);
    EXPECT_EQ(Rows(), "iz");
}

TEST_F(FollowedRows, MostActiveFirstSortsByRunTimeUntilAnotherOrderIsChosen) {
    Show(2.05, 5.9);
    laCanvas_Command(*test.canvas, "MostActiveFirst");
    EXPECT_EQ(Rows(), "zfedcabghij") << "those that did not run stay in their order";
    laCanvas_Command(*test.canvas, "OnlyActive");
    EXPECT_EQ(Rows(), "zfedc");
    laCanvas_ToggleSortField(*test.canvas);
    EXPECT_EQ(Rows(), "cdefz");
    EXPECT_FALSE(test.canvas->list.mostActiveFirst);
}

TEST_F(FollowedRows, TheRowUnderThePointerStays) {
    laCanvas_Command(*test.canvas, "OnlyActive");
    const int height = test.canvas->looks.rowHeight;
    test.canvas->graph->vertical.setPosition(static_cast<uint64_t>(2 * height));
    test.canvas->view.verticalOffset = static_cast<int>(test.canvas->graph->vertical.position());
    ASSERT_EQ(test.canvas->view.verticalOffset, 2 * height);
    const int before = ScreenRow('g');
    Show(1.05, 9.9);  // without a
    EXPECT_TRUE(laRows_Settle(*test.canvas, before + 1));
    EXPECT_EQ(Rows(), "bcdefghijz");
    EXPECT_EQ(ScreenRow('g'), before);
}

TEST_F(FollowedRows, AJumpToAnObjectHasItsRowAtOnce) {
    Show(2.05, 2.9);
    laCanvas_Command(*test.canvas, "OnlyActive");
    laCanvas_GoTo(*test.canvas, 7.1, Id(7));
    EXPECT_EQ(Rows(), "hz");
    EXPECT_FALSE(laCanvas_LaneHidden(test.canvas->items, Id(7)));
}

TEST_F(FollowedRows, TheyAreKeptWithTheTraceAndGoWithIt) {
    Show(2.05, 4.9);
    laCanvas_Command(*test.canvas, "OnlyActive");
    const laSourceIdentity source{1, 2, 3};
    laArrangement kept;
    ASSERT_TRUE(laArrangement_FromText(laArrangement_ToText(laArrangement_Take(*test.canvas, source)), kept));
    laCanvas_Reset(*test.canvas, laResetOf::Source);
    EXPECT_FALSE(test.canvas->list.onlyActive);
    EXPECT_FALSE(test.canvas->list.madeFor.has_value());
    EXPECT_TRUE(kept.onlyActive);
    EXPECT_FALSE(kept.mostActiveFirst);
}

}  // namespace
