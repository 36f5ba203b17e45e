#include "chronoweave/traxfunc/input/view.h"

#include <gtest/gtest.h>

#include <cmath>

#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"

namespace {

class View : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([this](std::string_view text) { console += text; });
        ASSERT_TRUE(test.Open(random_events(6, 3000)));
        test.ShowAll();
        total = canvas.source.totalLength;
        console.clear();
    }
    void TearDown() override { gen_set_console_sink({}); }
    void ExpectView(double low, double high) {
        EXPECT_NEAR(canvas.view.viewLow, low, canvas.view.viewLength * 2e-3);
        EXPECT_NEAR(canvas.view.viewHigh, high, canvas.view.viewLength * 2e-3);
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    std::string console;
    double total = 0;
};

TEST_F(View, BeginsOnAWholePixelAndKeepsItsLength) {
    for (double part : {0.1, 0.333333, 0.7, 0.9999}) {
        ASSERT_TRUE(laCanvas_ShowRange(canvas, total * part, total * part + total / 7));
        EXPECT_NEAR(canvas.view.viewLength, total / 7, total * 1e-12);
        EXPECT_NEAR(canvas.view.viewHigh - canvas.view.viewLow, canvas.view.viewLength, total * 1e-12);
        EXPECT_LE(std::fabs(canvas.view.viewLow - total * part), 0.5 / canvas.view.pixelsPerUnit * 1.001);
        const double pixel = canvas.view.viewLow * canvas.view.pixelsPerUnit;
        EXPECT_NEAR(pixel, std::round(pixel), 1e-6);
        EXPECT_EQ(test.graph.horizontal.position(), static_cast<uint64_t>(std::llround(pixel)));
    }
}

TEST_F(View, ScrollByPixelsIsExact) {
    laCanvas_ShowRange(canvas, total * 0.2, total * 0.21);
    const double length = canvas.view.viewLength;
    for (int step = 0; step < 200; ++step) {
        const uint64_t position = test.graph.horizontal.position() + 3;
        test.graph.horizontal.userMoved(position);
        ASSERT_EQ(test.graph.horizontal.position(), position);
    }
    EXPECT_EQ(canvas.view.viewLength, length);
    EXPECT_EQ(test.graph.horizontal.position(), laCanvas_AbsolutePixel(canvas.view, canvas.view.viewLow));
}

TEST_F(View, RefusesWhatIsTooSmallOrEmpty) {
    EXPECT_TRUE(laCanvas_ShowRange(canvas, 5, 5));
    EXPECT_EQ(console, "Chronoweave: Invalid time range: [5.000000, 5.000000]\n");
    EXPECT_EQ(test.beeps, 1);
    canvas.source.scrollExtent = 1e9;
    const double low = canvas.view.viewLow, high = canvas.view.viewHigh;
    EXPECT_FALSE(laCanvas_ShowRange(canvas, 1e-9, 1e-9 + 2e-12));
    EXPECT_TRUE(canvas.fields.message == "Can't zoom in more.") << canvas.fields.message;
    EXPECT_EQ(canvas.view.viewLow, low);
    EXPECT_EQ(canvas.view.viewHigh, high);
}

TEST_F(View, ZoomCommandsTakeTheirRangeFromTheCursors) {
    struct Case {
        double first, second;
        ZoomMode mode;
        double low, high;  // in parts of the total
    };
    for (const Case& one :
         {Case{-1, -1, ZoomMode::Left, 0.4, 0.5}, Case{0.5, 0.55, ZoomMode::Left, 0.45, 0.55},
          Case{0.55, 0.5, ZoomMode::Right, 0.5, 0.6}, Case{0.01, 0.02, ZoomMode::Left, 0, 0.1},
          Case{0.55, 0.45, ZoomMode::Selection, 0.45, 0.55}, Case{-1, -1, ZoomMode::Selection, 0, 0.1},
          Case{0.5, 0.5, ZoomMode::Selection, 0.45, 0.55}}) {
        laCanvas_ShowRange(canvas, total * 0.4, total * 0.6);
        canvas.marks.cursor[0] = one.first < 0 ? -100 : one.first * total;
        canvas.marks.cursor[1] = one.second < 0 ? -100 : one.second * total;
        EXPECT_TRUE(laCanvas_Zoom(canvas, one.mode));
        ExpectView(one.low * total, one.high * total);
    }
    EXPECT_EQ(test.beeps, 0);
}

TEST_F(View, ZoomsOutUpToTheWhole) {
    laCanvas_ShowRange(canvas, total * 0.4, total * 0.6);
    EXPECT_TRUE(laCanvas_ZoomOut(canvas));
    ExpectView(total * 0.3, total * 0.7);
    laCanvas_ShowRange(canvas, total * 0.7, total);
    EXPECT_TRUE(laCanvas_ZoomOut(canvas));
    ExpectView(total * 0.55, total);
    test.ShowAll();
    EXPECT_FALSE(laCanvas_ZoomOut(canvas));
    EXPECT_EQ(test.message(), "The whole graph has already been shown in the window.");
}

TEST_F(View, HistoryKeepsFiftyViewsAndNoRepetition) {
    for (int i = 0; i < 51; ++i) laCanvas_Zoom(canvas, total * i / 100, total * i / 100 + total / 10);
    EXPECT_EQ(canvas.past.historyNewest, 0);
    EXPECT_EQ(canvas.past.historyOldest, 1);
    laHistory_Add(canvas);
    EXPECT_EQ(canvas.past.historyNewest, 0);
}

TEST_F(View, ARangeAskedForDuringAFetchIsShownAfterwardsAndTheLastOneCounts) {
    ASSERT_TRUE(test.Open(random_events(6, 50000)));
    total = canvas.source.totalLength;
    int asked = 0;
    canvas.calls.progress = [&](double, double) {
        const size_t items = canvas.items.bitmaps.size();
        const double low = total * 0.1 * ++asked;
        EXPECT_FALSE(laCanvas_ShowRange(canvas, low, low + total / 50, {.paint = true}));
        EXPECT_EQ(canvas.items.bitmaps.size(), items) << "no fetch in a fetch";
        EXPECT_EQ(gate_Program().RunHeld(), 0u);
        return true;
    };
    EXPECT_TRUE(laCanvas_ShowRange(canvas, 0, total * 0.95, {.paint = true}));
    EXPECT_GE(asked, 2);
    ExpectView(0, total * 0.95);
    canvas.calls.progress = {};
    EXPECT_EQ(gate_Program().RunHeld(), 1u);
    ExpectView(total * 0.1 * asked, total * 0.1 * asked + total / 50);
    EXPECT_EQ(gate_Program().RunHeld(), 0u);
}

TEST_F(View, MovesToATimeAndARow) {
    test.graph.vertical.setRange(static_cast<uint64_t>(canvas.view.contentHeight), 50);
    laCanvas_ShowRange(canvas, 0, total / 10);
    const laItem_Line* lane = nullptr;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
        if (lane == nullptr || canvas.items.lanes[i].y > lane->y) lane = &canvas.items.lanes[i];
    int x = -1, y = -1;
    test.graph.warpPointer = [&](int px, int py) { x = px, y = py; };
    laCanvas_GoTo(canvas, total / 2, lane->objectId);
    EXPECT_LT(canvas.view.viewLow, total / 2);
    EXPECT_GT(canvas.view.viewHigh, total / 2);
    EXPECT_NEAR(x, 500, 1);
    EXPECT_TRUE(y >= 0 && y <= 50) << y;
    TRAX_ScrollTo(canvas, -1, 0, true);
    EXPECT_EQ(console,
              "Chronoweave: TRAX_ScrollTo(): error happened. caller should load a new time range.\n");
}

TEST(Session, FirstViewHoldsAboutTwoEventsAnIcon) {
    gen_set_console_sink([](std::string_view) {});
    TestCanvas test(1000, 600);
    ASSERT_TRUE(test.Open(random_events(6, 3000)));
    const int width = test.canvas->looks.maxIconWidth;
    EXPECT_EQ(test.canvas->items.bitmaps.size() > 30, true);
    EXPECT_NEAR(static_cast<double>(test.canvas->items.bitmaps.size()), 2.0 * (1000 / width), 20);
    EXPECT_EQ(test.canvas->source.canvasName, "/folder/run.trs - VOREL Chronoweave");
    EXPECT_EQ(test.canvas->source.sourceFile, "run.trs");
    EXPECT_DOUBLE_EQ(test.canvas->marks.cursor[0], test.canvas->view.viewLength / 2);
    EXPECT_DOUBLE_EQ(test.canvas->source.scrollExtent, test.canvas->source.totalLength * 1.001);
    gen_set_console_sink({});
}

TEST(Session, ShortEmptyAndStandingTraces) {
    gen_set_console_sink([](std::string_view) {});
    TestCanvas few;
    ASSERT_TRUE(few.Open({name_event(0, 0x400, "A"), {500, mt_TaskChange, 0, words({0x400, 0})}}));
    EXPECT_NEAR(few.canvas->view.viewHigh, few.canvas->source.totalLength, 1e-9);

    TestCanvas none;
    ASSERT_TRUE(none.Open({}));
    EXPECT_FALSE(none.canvas->source.storeHasEvents);
    EXPECT_EQ(none.canvas->view.viewHigh, 1.0 / 1000);
    EXPECT_EQ(none.canvas->items.lanes.size(), 0u);

    std::vector<TestEvent> standing;
    for (int i = 0; i < 40000; ++i) standing.push_back({0, mt_UserEvent, 0, words({0x400, 0})});
    standing.push_back({1000000, mt_UserEvent, 0, words({0x400, 0})});
    TestCanvas still;
    ASSERT_TRUE(still.Open(standing));
    EXPECT_NEAR(still.canvas->view.viewLength, still.canvas->source.totalLength / 10000, 1e-9);
    gen_set_console_sink({});
}

TEST(Session, FunctionTracesCountTicks) {
    TestCanvas test;
    ASSERT_TRUE(test.Open({name_event(0, 0x400, "A"), {500, mt_TaskChange, 0, words({0x400, 0})}},
                          "trace_function_flow"));
    EXPECT_EQ(test.canvas->axis.timeMode, Time_Tick);
    EXPECT_EQ(test.canvas->source.totalLength, 501);
}

TEST(Session, AnUnusableSourceLeavesAnEmptyCanvasAndAMessage) {
    TestCanvas test;
    EXPECT_FALSE(laCanvas_SetUpFromStore(*test.canvas, nullptr, test_legend(), "gone.trs"));
    EXPECT_EQ(test.message(), "Error on loading source file \"gone.trs\".");
    EXPECT_FALSE(test.Open({name_event(0, 0x400, "A")}, "ThreadX", Legend()));
    EXPECT_EQ(test.canvas->source.store, nullptr);
    EXPECT_TRUE(test.Open({name_event(0, 0x400, "A")}));
}

}  // namespace
