

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/pixel_surface_testing.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/found_times.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/model/absent.h"
#include "chronoweave/traxfunc/model/view.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

enum class Painted { AtOnce, WhenOver };  // WhenOver: as by a window, after up to three moves

// A canvas on pixels, moved at random; after each move the picture must be that of a whole repaint.
class Walk {
  public:
    Walk(unsigned seed, const Legend& legend, const std::vector<TestEvent>& events, Painted painted)
        : random_(seed), painted_(painted), pixels_(width, height) {
        gen_set_console_sink([](std::string_view) {});
        test_.canvas->list.processorRows = seed % 2 == 0;
        if (seed % 4 == 0) test_.canvas->view.pinEdges = LaPinEdges::Both;
        EXPECT_TRUE(test_.Open(events, "Korvantis", legend));
        test_.graph.surface = &pixels_;
        test_.graph.axisFont = pixels_.fontMetrics(Font_Axis);
        laCanvas_Resized(canvas_, width, height);
        laCanvas_ShowRange(canvas_, 0, canvas_.source.totalLength / 3, {.paint = true});
    }
    ~Walk() { gen_set_console_sink({}); }

    int copies() const { return copies_ + pixels_.copies; }

    std::string Move() {
        if (painted_ == Painted::AtOnce) return Step();
        test_.graph.surface = nullptr;
        std::string what;
        for (int i = Below(3); i >= 0; --i) what += Step() + ", ";
        test_.graph.surface = &pixels_;
        laCanvas_PaintWanted(canvas_);
        return what;
    }
    std::string Step() {
        const double span = canvas_.view.viewLength;
        switch (Below(16)) {
            case 0:
                laCanvas_ZoomAtColumn(canvas_, Below(pixels_.width()), Below(2) ? 0.5 : 0.83);
                return "zoom in";
            case 1:
                laCanvas_ZoomAtColumn(canvas_, Below(pixels_.width()), 2.1);
                return "zoom out";
            case 2:
                (Below(2) ? laHistory_Prev : laHistory_Next)(canvas_);
                return "history";
            case 3:
                if (Below(3) == 0) Resize();
                return "resize";
            case 4:
                laBookmark_Add(canvas_, laAgentId, canvas_.view.viewLow + span * Below(100) / 100);
                if (canvas_.marks.bookmarks.size() > 3) laBookmark_DeleteAt(canvas_, 2);
                return "bookmark";
            case 5:
            case 6:
                return Drag();
            case 14:
                laHits_Set(canvas_, Hits(Below(3) == 0 ? 0 : Below(40)));
                return "hits";
            case 15: {
                const int from = Below(pixels_.width()), end = from + Below(60);
                Below(2) ? laCanvas_RepaintColumns(canvas_, from, end)
                         : laCanvas_RepaintRows(canvas_, from / 3, end / 3);
                return "part";
            }
            case 7:
            case 8:
            case 9:
                laCanvas_ScrollRows(canvas_, Below(81) - 40);
                return "rows";
            default:
                laCanvas_ScrollColumns(canvas_, Below(5) == 0 ? Below(600) - 300 : Below(61) - 30);
                return "columns";
        }
    }

    // Number of pixels that differ from a whole repaint.
    int Wrong() {
        PixelSurface whole(pixels_.width(), pixels_.height());
        const LaPainted painted = canvas_.view.painted;
        test_.graph.surface = &whole;
        laCanvas_Repaint(canvas_);
        test_.graph.surface = &pixels_;
        canvas_.view.painted = painted;
        int wrong = 0;
        for (size_t i = 0; i < whole.pixels().size(); ++i) wrong += whole.pixels()[i] != pixels_.pixels()[i];
        return wrong;
    }

  private:
    static constexpr int width = 400, height = 180;

    int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    std::vector<double> Hits(int count) {
        std::vector<double> times;
        for (int i = 0; i < count; ++i)
            times.push_back(canvas_.view.viewLow + canvas_.view.viewLength * (Below(1400) - 200) / 1000);
        std::sort(times.begin(), times.end());
        return times;
    }
    void Resize() {
        copies_ += pixels_.copies;
        pixels_ = PixelSurface(width - Below(60), height - Below(60));
        laCanvas_Resized(canvas_, pixels_.width(), pixels_.height());
        laCanvas_Repaint(canvas_);
    }
    // The cursors by other ways than a drag.
    std::string Cursors() {
        const double time = canvas_.view.viewLow + canvas_.view.viewLength * Below(100) / 100;
        switch (Below(4)) {
            case 0:
                laCanvas_ClearCursors(canvas_);
                return "no cursors";
            case 1:
                laCanvas_MoveCursor(canvas_, Below(2), time);
                return "a cursor moved";
            case 2:
                laCanvas_SetSelection(canvas_, time, time + canvas_.view.viewLength * Below(100) / 100);
                return "selection";
            default:
                if (canvas_.marks.pendingCursorX < 0) {
                    canvas_.marks.pendingCursorX = Below(pixels_.width());
                    laCanvas_RepaintColumns(canvas_, canvas_.marks.pendingCursorX,
                                            canvas_.marks.pendingCursorX + 1);
                    return "the pointer's line";
                }
                laCanvas_EraseCursor(canvas_, std::exchange(canvas_.marks.pendingCursorX, -100));
                return "no line of the pointer";
        }
    }
    // A press, a few moves, and now and then a release: scrolls happen with a cursor in exclusive-or too.
    std::string Drag() {
        if (Below(4) == 0) return Cursors();
        if (canvas_.hand.dragStartView < 0) {
            laCanvas_BeginDrag(canvas_, Below(pixels_.width()), Below(height), Below(2) == 0);
            return "press";
        }
        const int x = Below(pixels_.width() + 80) - 40;
        laCanvas_DragTo(canvas_, x, Below(height), Below(2) == 0);
        if (Below(3) == 0) laCanvas_EndDrag(canvas_);
        return "drag to " + std::to_string(x);
    }

    std::mt19937 random_;
    Painted painted_;
    TestCanvas test_;
    _LaCanvasData& canvas_ = *test_.canvas;
    PixelSurface pixels_;
    int copies_ = 0;
};

// Every object in the group of its processor, so that processors' rows head groups.
std::vector<TestEvent> grouped_events(unsigned seed, size_t count) {
    std::vector<TestEvent> events;
    for (uint32_t task = 0; task < 20; ++task)
        for (uint32_t processor = 0; processor < 3; ++processor)
            events.push_back(name_event(0, task << 10 | processor,
                                        "CPU" + std::to_string(processor) + "@task" + std::to_string(task)));
    for (TestEvent& event : random_events(seed, count))
        if (event.type != mt_Refresh) events.push_back(std::move(event));
    return events;
}

// A legend whose switches all look the same, so that rows may be copied.
Legend plain_legend() {
    Legend legend = test_legend();
    legend.statuses[9].visible = false;
    legend.BuildLookups();
    return legend;
}

// One that marks crowds of icons.
Legend marked_legend(bool important) {
    Legend legend = plain_legend();
    legend.misc.overlapIcon = "overlap";
    if (important) legend.events[2].flags |= LegendEvent_Important;
    return legend;
}

void run(unsigned seed, const Legend& legend, const std::vector<TestEvent>& events, int leastCopies,
         Painted painted = Painted::AtOnce) {
    Walk walk(seed, legend, events, painted);
    ASSERT_EQ(walk.Wrong(), 0);
    for (int step = 0; step < 250; ++step) {
        const std::string what = walk.Move();
        ASSERT_EQ(walk.Wrong(), 0) << "seed " << seed << " step " << step << ": " << what;
    }
    EXPECT_GE(walk.copies(), leastCopies);
}

TEST(Scroll, APartlyRepaintedPictureIsTheWholeOne) {
    for (unsigned seed = 1; seed <= 4; ++seed) run(seed, plain_legend(), random_events(seed, 4000), 30);
}

TEST(Scroll, SoItIsWithSwitchesOfSeveralLooksAndFewEvents) {
    for (unsigned seed = 11; seed <= 13; ++seed) run(seed, test_legend(), random_events(seed, 300), 20);
}

TEST(Scroll, SoItIsWithNumbersOnCrowdsOfIcons) {
    for (unsigned seed = 31; seed <= 34; ++seed)
        run(seed, marked_legend(seed % 2 == 0), random_events(seed, seed < 33 ? 4000 : 1200), 20);
}

TEST(Scroll, SoItIsWithProcessorsAtBothEdges) {
    for (unsigned seed = 44; seed <= 52; seed += 4) {
        run(seed, marked_legend(false), grouped_events(seed, 3000), 20);
        run(seed, plain_legend(), grouped_events(seed, 3000), 10, Painted::WhenOver);
    }
}

TEST(Scroll, WhatWasNotedIsPaintedAsTheWholeOne) {
    for (unsigned seed = 21; seed <= 29; ++seed)
        run(seed, plain_legend(), random_events(seed, 4000), 10, Painted::WhenOver);
    for (unsigned seed = 61; seed <= 62; ++seed)
        run(seed, test_legend(), random_events(seed, 300), 5, Painted::WhenOver);
}

TEST(Scroll, NamesArePaintedAnewForOtherRowsOnly) {
    gen_set_console_sink([](std::string_view) {});
    TestCanvas test;
    ASSERT_TRUE(test.Open(random_events(3, 300)));
    laCanvas_Resized(*test.canvas, 400, 80);
    laCanvas_ShowRange(*test.canvas, 0, test.canvas->source.totalLength / 4, {.paint = true});
    test.graph.surface = nullptr;
    test.canvas->options.prefetch = true;
    int lists = 0;
    test.graph.listChanged = [&] { ++lists; };
    const auto absent = [&] { return laItems_AbsentRows(test.canvas->items, test.canvas->view); };
    for (int step = 0; step < 20; ++step) {
        lists = 0;
        const uint64_t before = absent();
        laCanvas_ScrollColumns(*test.canvas, 1);
        EXPECT_EQ(lists > 0, absent() != before) << "the names of what came or went";
        test.graph.surface = &test.surface;
        laCanvas_PaintWanted(*test.canvas);
        test.graph.surface = nullptr;
    }
    lists = 0;
    laCanvas_ScrollRows(*test.canvas, 10);
    EXPECT_GT(lists, 0);
    gen_set_console_sink({});
}

TEST(Scroll, ASmallStepPaintsLittle) {
    gen_set_console_sink([](std::string_view) {});
    PixelSurface pixels(1000, 600);
    TestCanvas test;
    ASSERT_TRUE(test.Open(random_events(3, 300)));
    test.graph.surface = &pixels;
    laCanvas_ShowRange(*test.canvas, 0, test.canvas->source.totalLength / 4, {.paint = true});
    pixels.touched = 0;
    laCanvas_ScrollColumns(*test.canvas, 5);
    EXPECT_EQ(pixels.copies, 1);
    EXPECT_LT(pixels.touched, 1000u * 600 / 3);
    // Other items, another order or another scale is painted whole.
    ++test.canvas->items.itemsVersion;
    laCanvas_ScrollColumns(*test.canvas, 5);
    test.canvas->items.lanes[0].y += 1;
    laCanvas_ScrollColumns(*test.canvas, 5);
    laCanvas_ZoomAtColumn(*test.canvas, 500, 0.5);
    EXPECT_EQ(pixels.copies, 1);
    gen_set_console_sink({});
}

}  // namespace
