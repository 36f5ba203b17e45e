#include "chronoweave/traxfunc/input/commands.h"

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/model.h"

namespace {

class Commands : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([this](std::string_view text) { console += text; });
        ASSERT_TRUE(test.Open(random_events(6, 3000)));
        total = canvas.source.totalLength;
        Show(0.4, 0.6);
        test.beeps = 0;
    }
    void TearDown() override { gen_set_console_sink({}); }
    void Show(double low, double high) { laCanvas_ShowRange(canvas, total * low, total * high); }
    void ExpectView(double low, double high, const char* what) {
        EXPECT_NEAR(canvas.view.viewLow, low * total, canvas.view.viewLength * 2e-3) << what;
        EXPECT_NEAR(canvas.view.viewHigh, high * total, canvas.view.viewLength * 2e-3) << what;
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    double total = 0;
    std::string console;
};

TEST_F(Commands, ZoomAndFocus) {
    struct Case {
        const char* command;
        double low, high;
    };
    for (const Case& one :
         {Case{"zoomin", 0.45, 0.55}, Case{"ZOOMOUT", 0.3, 0.7}, Case{"ZoomToRange", 0.42, 0.44},
          Case{"LeftZoomIn", 0.37, 0.47}, Case{"RightZoomIn", 0.39, 0.49}, Case{"ShowAll", 0, 1},
          Case{"ZoomInAt 0", 0.4, 0.56}, Case{"ZoomOutAt 500", 0.375, 0.625}, Case{"ZoomInAt", 0.42, 0.58},
          Case{"Focus", 0.33, 0.53}, Case{"PageRight", 0.6, 0.8}, Case{"pageleft", 0.2, 0.4}}) {
        Show(0.4, 0.6);
        canvas.marks.cursor[0] = total * 0.42;
        canvas.marks.cursor[1] = total * 0.44;
        canvas.fields.message = "old";
        EXPECT_TRUE(laCanvas_Command(canvas, one.command));
        EXPECT_EQ(test.message(), "");
        ExpectView(one.low, one.high, one.command);
    }
    Show(0.4, 0.6);
    laCanvas_Command(canvas, "Focus");
    laCanvas_Command(canvas, "Focus");
    ExpectView(0.42, 0.44, "a second focus");
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100;
    EXPECT_FALSE(laCanvas_Command(canvas, "Focus"));
    laCanvas_Command(canvas, "ScrollEnd");
    EXPECT_NEAR(canvas.view.viewHigh, total, total * 1e-12);
    laCanvas_Command(canvas, "ScrollHome");
    EXPECT_EQ(canvas.view.viewLow, 0);
}

TEST_F(Commands, UnknownOnesAreRefused) {
    for (const char* unknown : {"zoom", "ZoomInn", "ShowBookmarks", "id", "Threadx", "Ope"}) {
        console.clear();
        EXPECT_FALSE(laCanvas_Command(canvas, unknown)) << unknown;
        EXPECT_FALSE(laCanvas_HasCommand(unknown)) << unknown;
        EXPECT_EQ(console, std::string("Chronoweave: Unknown item <") + unknown + "> is selected.\n");
    }
    EXPECT_TRUE(laCanvas_Command(canvas, ""));
    canvas.calls.upper.manual = [](const std::string& entry) { return entry == "zoom"; };
    EXPECT_TRUE(laCanvas_Command(canvas, "zoom"));
}

TEST_F(Commands, TheFloorAboveDoesItsOwn) {
    std::vector<std::string> asked;
    for (const char* name : {"Open", "Quit", "Search", "EditBookmarks", "ReportTask", "Close"})
        canvas.calls.upper.commands[name] = [&asked, name](const std::string& text) {
            asked.push_back(std::string(name) + "|" + text);
            return *name != 'Q';
        };
    EXPECT_TRUE(laCanvas_Command(canvas, "open"));
    EXPECT_TRUE(laCanvas_Command(canvas, "Open /a b.trr"));
    EXPECT_TRUE(laCanvas_Command(canvas, "OPEN:x"));
    EXPECT_TRUE(laCanvas_Command(canvas, "Open "));
    EXPECT_TRUE(laCanvas_Command(canvas, "search"));
    EXPECT_TRUE(laCanvas_Command(canvas, "reporttask"));
    EXPECT_TRUE(laCanvas_Command(canvas, "Close"));
    EXPECT_FALSE(laCanvas_Command(canvas, "Quit"));
    EXPECT_EQ(asked, (std::vector<std::string>{"Open|", "Open|/a b.trr", "Open|x", "Open|", "Search|",
                                               "ReportTask|", "Close|", "Quit|"}));
    EXPECT_NE(canvas.source.store, nullptr);
}

// What each command says when it can't do its work, with a source and without.
TEST_F(Commands, RefusalsSayWhy) {
    struct Case {
        const char* command;
        bool withStore;
        const char* message;
        int beeps;
    };
    const Case cases[] = {
        {"Save", true, "Not implemented.", 1},
        {"saveas", true, "Not implemented.", 1},
        {"ReportObjects", false, "No data source is loaded.", 1},
        {"ReportTask", false, "No data source is loaded.", 1},
        {"ReportGeneral", false, "No data source is loaded.", 1},
        {"ReportGeneral", true, "The general report is not there yet.", 1},
        {"RefreshGap", false, "You did not open a VOREL Chronoweave source file.", 1},
        {"Legend", false, "Legend is not loaded until you open a VOREL Chronoweave source file.", 1},
        {"Legend", true, "The legend is not there yet.", 1},
        {"NewWindow", true, "Can't create new window", 1},
        {"Help", true, "Sorry, on-line help is not supported.", 1},
        {"CollectData", true, "Sorry, <CollectData> is not supported yet.", 1},
        {"waitingstatus", true, "Sorry, <waitingstatus> is not supported yet.", 1},
        {"ProcessData", true, "Sorry, <ProcessData> is not supported yet.", 1},
        {"Others", true, "Sorry, <Others> is not supported yet.", 1},
        {"TraxPrint", true, "Printing is not there yet.", 1},
        {"editor", true, "The editor is not there yet.", 1},
        {"TopHistory", false, "No history.", 1},
    };
    for (const bool withStore : {true, false}) {
        EXPECT_TRUE(withStore || laCanvas_Command(canvas, "close"));
        for (const Case& one : cases) {
            if (one.withStore != withStore) continue;
            test.beeps = 0;
            EXPECT_FALSE(laCanvas_Command(canvas, one.command)) << one.command;
            EXPECT_EQ(test.message(), one.message);
            EXPECT_EQ(test.beeps, one.beeps) << one.command;
        }
    }
    EXPECT_EQ(canvas.source.store, nullptr);
    EXPECT_TRUE(canvas.items.lanes.empty());
    // No command is anything but a message on an empty canvas.
    for (const laCommand& command : laCommands_All()) laCanvas_Command(canvas, command.name);
}

TEST_F(Commands, ClosingEndsTheWindowsAboutTheCanvas) {
    DialogModel a{DialogDescription{}}, b{DialogDescription{}};
    for (DialogModel* window : {&a, &b}) {
        canvas.calls.viewWindows.push_back(window);
        window->onClose = [this, window](int) { std::erase(canvas.calls.viewWindows, window); };
    }
    // One that takes another along.
    a.onClose = [this, &a, &b](int) {
        std::erase(canvas.calls.viewWindows, &a);
        b.close(0);
    };
    int changes = 0;
    canvas.calls.buttonsChanged = [&] { ++changes; };
    EXPECT_TRUE(laCanvas_Command(canvas, "DelViews"));
    EXPECT_TRUE(a.isClosed() && b.isClosed() && canvas.calls.viewWindows.empty());
    EXPECT_GT(changes, 0);
    canvas.calls.buttonsChanged = {};
}

TEST_F(Commands, HistoryMovesRefuseAtTheirEndsAndRecordNothing) {
    canvas.past.historyNewest = canvas.past.historyOldest = canvas.past.historyCurrent = -1;
    for (const char* command : {"TopHistory", "BottomHistory", "PrevHistory", "NextHistory"}) {
        EXPECT_FALSE(laCanvas_Command(canvas, command));
        EXPECT_EQ(test.message(), "No history.");
    }
    EXPECT_EQ(test.beeps, 4);
    // Six more views than there are places.
    for (int i = 0; i < 56; ++i) laCanvas_Zoom(canvas, total * i / 100, total * i / 100 + total / 10);
    int changes = 0;
    canvas.calls.buttonsChanged = [&] { ++changes; };
    struct Case {
        const char* command;
        double low;           // of the view, in percent
        const char* message;  // of a refusal
    };
    for (const Case& one : {Case{"TopHistory", 55, "Already at the latest history entry."},
                            Case{"NextHistory", 55, "No later history entry."}, Case{"PrevHistory", 54, ""},
                            Case{"NextHistory", 55, ""}, Case{"BottomHistory", 6, ""},
                            Case{"BottomHistory", 6, "Already at the earliest history entry."},
                            Case{"PrevHistory", 6, "No earlier history entry."}, Case{"NextHistory", 7, ""},
                            Case{"tophistory", 55, ""}}) {
        test.beeps = changes = 0;
        const bool refused = *one.message != '\0';
        EXPECT_EQ(laCanvas_Command(canvas, one.command), !refused) << one.command;
        EXPECT_EQ(test.message(), one.message);
        EXPECT_EQ(test.beeps, refused ? 1 : 0);
        EXPECT_EQ(changes > 0, !refused);
        EXPECT_NEAR(canvas.view.viewLow, total * one.low / 100, total * 2e-4) << one.command;
    }
    EXPECT_EQ(canvas.past.historyNewest, 5);
    EXPECT_EQ(canvas.past.historyOldest, 6);
    canvas.calls.buttonsChanged = nullptr;
}

TEST_F(Commands, ABookmarksLabelIsInTheUnitShownUnlessTheUserGaveIt) {
    LaBookmark mark = laBookmark_Add(canvas, laAgentId, 0.25);
    canvas.axis.timeMode = Time_Second;
    const std::string inSeconds = laBookmark_ShownLabel(canvas, mark);
    EXPECT_TRUE(inSeconds.starts_with("Bookmark: 0.25") && inSeconds.ends_with(" s")) << inSeconds;
    canvas.axis.timeMode = Time_Millisecond;
    EXPECT_TRUE(laBookmark_ShownLabel(canvas, mark).starts_with("Bookmark: 250"));
    const std::string kept = mark.label;
    mark.label = kept + " on idle";
    EXPECT_TRUE(laBookmark_ShownLabel(canvas, mark).ends_with(" ms on idle"));
    for (const std::string& own : {std::string("late"), kept + " and later", std::string()}) {
        mark.label = own;
        EXPECT_EQ(laBookmark_ShownLabel(canvas, mark), own);
    }
}

TEST_F(Commands, WhatNobodyDoesIsNotOffered) {
    EXPECT_EQ(laCanvas_NotThere(canvas, "editor"), "") << "nothing is known of the floor above";
    EXPECT_TRUE(laCanvas_CanDo(canvas, "editor"));
    canvas.calls.upper.commands["Open"] = [](const std::string&) { return true; };
    EXPECT_EQ(laCanvas_NotThere(canvas, "editor"), "The editor is not there yet.");
    EXPECT_EQ(laCanvas_NotThere(canvas, "Threadx"), "ThreadX is not there yet.");
    EXPECT_FALSE(laCanvas_CanDo(canvas, "editor"));
    for (const char* there : {"Open", "Open run.trr", "ZoomIn", "nonsense"})
        EXPECT_EQ(laCanvas_NotThere(canvas, there), "") << there;
}

TEST_F(Commands, Bookmarks) {
    EXPECT_TRUE(laCanvas_Command(canvas, "DeleteBookmarks"));
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100;
    EXPECT_FALSE(laCanvas_Command(canvas, "AddBookmark"));
    canvas.marks.cursor[0] = total * 0.5;
    canvas.marks.cursor[1] = total * 0.55;
    EXPECT_TRUE(laCanvas_Command(canvas, "AddBookmark"));
    EXPECT_TRUE(laCanvas_Command(canvas, "AddBookmark"));
    ASSERT_EQ(canvas.marks.bookmarks.size(), 2u);
    EXPECT_EQ(canvas.marks.bookmarks[0].time, total * 0.55);
    EXPECT_EQ(canvas.marks.bookmarks[1].label, gen_format("Bookmark: %.3f", total * 0.5));
    EXPECT_EQ(canvas.marks.bookmarks[1].colour, 0x0000FFu);
    const double near = 2.5 / canvas.view.pixelsPerUnit, far = 3.5 / canvas.view.pixelsPerUnit;
    EXPECT_EQ(laBookmark_Find(canvas, total * 0.5 + near, laBookmarkMatch::Near), &canvas.marks.bookmarks[1]);
    EXPECT_EQ(laBookmark_Find(canvas, total * 0.5 + near, laBookmarkMatch::Exact), nullptr);
    EXPECT_FALSE(laBookmark_Delete(canvas, total * 0.5 + far, laBookmarkMatch::Near));
    EXPECT_TRUE(laBookmark_Delete(canvas, total * 0.5 - near, laBookmarkMatch::Near));
    Show(0, 0.1);
    EXPECT_TRUE(laCanvas_Command(canvas, "ShowBookmark 0"));
    EXPECT_NEAR((canvas.view.viewLow + canvas.view.viewHigh) / 2, total * 0.55, total * 1e-3);
    for (const char* bad : {"ShowBookmark 1", "ShowBookmark", "ShowBookmark x", "ShowBookmark -1"})
        EXPECT_FALSE(laCanvas_Command(canvas, bad)) << bad;
    canvas.axis.timeMode = Time_Tick;
    EXPECT_EQ(laBookmark_Add(canvas, 0x99999, 7).label, "Bookmark: 7 on Task 0x99999");
    laItem_Line& lane = canvas.items.lanes[0];
    lane.hasName = true;
    lane.name = "it's";
    EXPECT_EQ(laBookmark_Add(canvas, lane.objectId, 8).label, "Bookmark: 8 on it\\'s");
    EXPECT_TRUE(laCanvas_Command(canvas, "deletebookmarks"));
    EXPECT_TRUE(canvas.marks.bookmarks.empty());
}

TEST_F(Commands, SortingFlatViewUnitAndFreeze) {
    canvas.list.sortAroundEvent = true;
    EXPECT_TRUE(laCanvas_Command(canvas, laCanvas_SortFieldLabel(canvas)));
    EXPECT_EQ(canvas.list.sortField, 1);
    EXPECT_FALSE(canvas.list.sortAroundEvent);
    EXPECT_EQ(laCanvas_SortFieldLabel(canvas), "Sort by Task &Name");
    canvas.list.sortAroundEvent = true;
    EXPECT_TRUE(laCanvas_Command(canvas, "&Flat View"));
    EXPECT_TRUE(canvas.list.flatView && canvas.list.sortAroundEvent);
    EXPECT_TRUE(laCanvas_Command(canvas, laCanvas_SortOrderLabel(canvas)));
    EXPECT_FALSE(canvas.list.sortAscending || canvas.list.sortAroundEvent);
    const auto& rows = canvas.taskList->rows();
    ASSERT_GT(rows.size(), 2u);
    for (size_t i = 1; i < rows.size(); ++i)
        EXPECT_GT(canvas.items.lanes[rows[i - 1]->payload].objectId,
                  canvas.items.lanes[rows[i]->payload].objectId);
    EXPECT_EQ(laCanvas_SortOrderLabel(canvas), "Sort in &Ascending Order");

    canvas.axis.timeMode = Time_Second;
    for (int mode : {1, 2, 3, 0}) {
        EXPECT_TRUE(laCanvas_Command(canvas, "ChangeUnit"));
        EXPECT_EQ(canvas.axis.timeMode, mode);
    }
    canvas.axis.timeMode = Time_Tick;
    EXPECT_FALSE(laCanvas_Command(canvas, "changeunit"));
    EXPECT_EQ(test.message(), "Cannot change tick into other units.");
    const bool before = canvas.source.liveRefresh;
    EXPECT_TRUE(laCanvas_Command(canvas, "NoRefresh"));
    EXPECT_NE(canvas.source.liveRefresh, before);
}

TEST(ZoomLimit, EveryPixelUpToTwoToTheSixtyFourCanBeReachedAndNoFurther) {
    gen_set_console_sink([](std::string_view) {});
    TestCanvas test;
    ASSERT_TRUE(test.Open({name_event(0, 0x400, "A"), {mt_Time{1} << 40, mt_UserEvent, 0, words({0x400})}}));
    _LaCanvasData& canvas = *test.canvas;
    canvas.source.scrollExtent = canvas.source.totalLength;
    ScrollBarModel& bar = test.graph.horizontal;
    const double all = canvas.source.totalLength * 1000, half = 0x1p63, whole = 0x1p64;
    for (double wide : {1e6, 0x1p31, 0x1p52, half, half * 1.5, whole * 0.9999}) {
        ASSERT_TRUE(laCanvas_ShowRange(canvas, 0, all / wide, {.paint = true})) << wide;
        EXPECT_NEAR(static_cast<double>(canvas.view.virtualWidth), wide, wide * 1e-9);
        const uint64_t last = bar.maximum();
        for (uint64_t pixel :
             {uint64_t{1}, last / 3, last / 2 + 1, last - 1, last, last - 777, uint64_t{0}}) {
            bar.userMoved(pixel);
            EXPECT_EQ(bar.position(), pixel) << wide;
            const double at = static_cast<double>(pixel) / wide * canvas.source.totalLength;
            // Where a double tells less than a view's length from the next time, there is no view.
            if (canvas.view.viewLength < at * 0x1p-50) continue;
            EXPECT_NEAR(canvas.view.viewLow, at,
                        canvas.source.totalLength * 1e-15 + canvas.view.viewLength * 1e-3)
                << wide;
        }
        EXPECT_EQ(laCanvas_TimeToPixel(canvas, canvas.view.viewHigh, Time_Second), 1000);
    }
    const double low = canvas.view.viewLow, high = canvas.view.viewHigh;
    test.beeps = 0;
    for (double wide : {whole, whole * 1.0001, 1e23}) {
        EXPECT_FALSE(laCanvas_ShowRange(canvas, 0, all / wide, {.paint = true})) << wide;
        EXPECT_EQ(test.message(), "Can't zoom in more.");
        EXPECT_TRUE(canvas.view.viewLow == low && canvas.view.viewHigh == high);
    }
    EXPECT_EQ(test.beeps, 3);
    gen_set_console_sink({});
}

TEST_F(Commands, CursorsSnapToWhatThePointerMeans) {
    Show(0.4, 0.41);
    // An icon with room around it, in a lane on screen.
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        laItem_Line& lane = canvas.items.lanes[i];
        lane.icons.Clear();
        lane.segments.Clear();
    }
    laItem_Line& lane = canvas.items.lanes[2];
    lane.icons.Append(laTimeScale(canvas.view, canvas.axis, canvas.graph->width).ToTime(500) +
                          0.1 / canvas.view.pixelsPerUnit,
                      0);
    lane.segments.kept() = {
        {canvas.view.viewLow, laTimeScale(canvas.view, canvas.axis, canvas.graph->width).ToTime(700), 0},
        {laTimeScale(canvas.view, canvas.axis, canvas.graph->width).ToTime(700), canvas.view.viewHigh, 4}};
    const int y = lane.y - canvas.view.verticalOffset, other = y + canvas.looks.rowHeight;
    const auto at = [&](int x, int row, bool free) {
        return laCanvas_TimeToPixel(canvas, laCanvas_PointerTime(canvas, x, row, free), Time_Second);
    };
    EXPECT_EQ(laCanvas_PointerTime(canvas, 497, y, false), lane.icons.time(0));
    EXPECT_EQ(at(503, y, false), 500);
    EXPECT_EQ(at(504, y, false), 504);
    EXPECT_EQ(at(496, y, false), 496);
    EXPECT_EQ(at(502, y, true), 502);
    EXPECT_EQ(at(502, other, false), 502);
    EXPECT_EQ(at(702, y, false), 700);
    canvas.options.snapCursors = false;
    EXPECT_EQ(at(502, y, false), 502);
    laCanvas_SetCursor(canvas, 502, 0, false);
    EXPECT_EQ(laCanvas_TimeToPixel(canvas, canvas.marks.cursor[0], Time_Second), 502);
}

TEST_F(Commands, ADragSelectsInOrderAndOnlyAScrollIsRecorded) {
    canvas.options.snapCursors = false;
    const int newest = canvas.past.historyNewest;
    laCanvas_BeginDrag(canvas, 600, 10, false);
    laCanvas_EndDrag(canvas);
    EXPECT_EQ(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    EXPECT_TRUE(canvas.marks.secondShown);
    laCanvas_BeginDrag(canvas, 600, 10, false);
    laCanvas_DragTo(canvas, 300, 10, false);
    EXPECT_TRUE(canvas.marks.secondDragged);
    laCanvas_EndDrag(canvas);
    EXPECT_EQ(laCanvas_TimeToPixel(canvas, canvas.marks.cursor[0], Time_Second), 300);
    EXPECT_EQ(laCanvas_TimeToPixel(canvas, canvas.marks.cursor[1], Time_Second), 600);
    EXPECT_FALSE(canvas.marks.secondDragged);
    EXPECT_EQ(canvas.past.historyNewest, newest);
    EXPECT_EQ(canvas.hand.dragStartView, -1.0);
    laCanvas_BeginDrag(canvas, 600, 10, false);
    laCanvas_ShowRange(canvas, total * 0.5, total * 0.7);
    laCanvas_DragTo(canvas, 2000, 10, false);
    EXPECT_EQ(canvas.marks.cursor[1], canvas.view.viewHigh);
    laCanvas_EndDrag(canvas);
    EXPECT_NE(canvas.past.historyNewest, newest);
    Show(0, 0.2);
    laCanvas_BeginDrag(canvas, 100, 10, false);
    laCanvas_DragTo(canvas, -20, 10, false);
    EXPECT_FALSE(canvas.marks.secondShown) << "nothing is left to scroll to";
    laCanvas_EndDrag(canvas);
    EXPECT_EQ(canvas.marks.cursor[0], canvas.view.viewLow);
}

TEST_F(Commands, SelectionAndTheTextUnderThePointer) {
    EXPECT_FALSE(laCanvas_SetSelection(canvas, 5, 4));
    EXPECT_FALSE(laCanvas_SetSelection(canvas, -1, 4));
    EXPECT_TRUE(laCanvas_SetSelection(canvas, total * 0.45, total * 0.5));
    EXPECT_EQ(canvas.marks.cursor[1], total * 0.5);
    laCanvas_SetCursor(canvas, -1, 0, true);
    EXPECT_EQ(canvas.marks.cursor[0], canvas.view.viewLow);
    laCanvas_SetCursor(canvas, -7, 0, true);
    EXPECT_EQ(canvas.marks.cursor[0], canvas.view.viewHigh);
    laCanvas_ClearCursors(canvas);
    EXPECT_EQ(canvas.marks.cursor[0], -100.0);
    laCanvas_ShowRange(canvas, 0, 1);
    canvas.axis.timeMode = Time_Millisecond;
    canvas.axis.tickDigits = 0;
    EXPECT_EQ(laCanvas_HoverText(canvas, 250), "250 Milliseconds.");
    canvas.marks.cursor[0] = 0.3;
    EXPECT_EQ(laCanvas_HoverText(canvas, 250), "250 Milliseconds, 50 Milliseconds before the first cursor.");
    EXPECT_EQ(laCanvas_HoverText(canvas, 350), "350 Milliseconds, 50 Milliseconds after the first cursor.");
}

}  // namespace
