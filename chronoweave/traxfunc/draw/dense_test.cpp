// What the picture makes of switches and icons that stand too close together to be told apart.
#include <gtest/gtest.h>

#include <random>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/icon_walk.h"
#include "chronoweave/traxfunc/draw/pixel_surface_testing.h"
#include "chronoweave/traxfunc/draw/switch_density.h"
#include "chronoweave/traxfunc/input/crowd.h"
#include "chronoweave/traxfunc/input/pointer.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr double unit = 0.01;  // seconds a column

// Two lanes made by hand on a surface of pixels. Icons are 16 wide, a digit of a mark 7.
class Dense : public testing::Test {
  protected:
    Dense() {
        gen_set_console_sink([](std::string_view) {});
        EXPECT_TRUE(laCanvas_LoadLegend(canvas, test_legend()));
        canvas.looks.eventLooks[0] = {0, 16, 16, true};
        canvas.looks.eventLooks[1] = {0, 16, 16, true, true};
        canvas.looks.maxIconWidth = 16;
        canvas.looks.overlapIcon = 2;
        for (uint32_t id : {1u, 2u}) laLn_New(canvas.items, id);
        canvas.source.totalLength = canvas.source.scrollExtent = 1000 * unit;
        canvas.items.cachedHigh = 1000 * unit;
        canvas.source.clock.ticksPerSecond = 1000;
        canvas.source.storeHasEvents = true;
        laCanvas_ShowRange(canvas, 0, 1000 * unit);
        laCanvas_Resort(canvas);
    }
    ~Dense() override { gen_set_console_sink({}); }

    void Switch(int x, int count = 1) {
        const int32_t plain = canvas.looks.legend.contextSwitchStatus;
        for (int i = 0; i < count; ++i) canvas.items.ctxLines.kept().push_back({x * unit, 0, 1, plain});
    }
    void Icon(int x, int32_t event = 0) {
        laBm_Append(canvas.items, {x * unit, 0, canvas.items.bitmaps.size(), event, 1, 0});
    }
    // The colour halfway between the lanes.
    Colour Between(int x) {
        PixelSurface pixels(1000, 600);
        test.graph.surface = &pixels;
        laCanvas_Repaint(canvas);
        test.graph.surface = &test.surface;
        return pixels.at(x, (laLn_LineY(canvas.looks, canvas.items.lanes[0]) +
                             laLn_LineY(canvas.looks, canvas.items.lanes[1])) /
                                2);
    }
    Colour SwitchColour() const {
        return canvas.looks.statusLooks[static_cast<size_t>(canvas.looks.legend.contextSwitchStatus)].colour;
    }
    // What is shown in the first lane: the numbers of marks, 0 for icons, and where each begins.
    std::vector<std::pair<uint32_t, int>> Shown() {
        const laTimeScale scale(canvas.view, canvas.axis, canvas.graph->width);
        const laScene scene = canvas.scene();
        laIconWalk walk(scene, canvas.items.lanes[0], scale, canvas.graph->width);
        std::vector<std::pair<uint32_t, int>> shown;
        for (laShownIcon one; walk.Next(one);) shown.emplace_back(one.hidden, one.left);
        return shown;
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

using Shows = std::vector<std::pair<uint32_t, int>>;

TEST_F(Dense, ManySwitchesOfAStripAreLighterTheMoreTheyAre) {
    struct Strip {
        int x, count;
        double opacity;
    };
    constexpr Strip strips[] = {{16, 1, 1},   {24, 2, 1},     {32, 3, 2 / 3.}, {40, 4, 0.5},
                                {48, 8, .25}, {56, 16, .125}, {64, 17, 0.12},  {72, 900, 0.12}};
    for (const Strip& strip : strips) Switch(strip.x + 3, strip.count);
    for (const Strip& strip : strips)
        EXPECT_EQ(Between(strip.x + 3), colour_Mix(SwitchColour(), 0xFFFFFF, strip.opacity)) << strip.count;
    EXPECT_EQ(Between(16), 0xFFFFFFu) << "only the columns of switches";
    canvas.options.plainSwitches = true;
    for (const Strip& strip : strips) EXPECT_EQ(Between(strip.x + 3), SwitchColour()) << strip.count;
}

TEST_F(Dense, AStripIsCountedFromTheStartOfTheTraceAndBeyondTheView) {
    for (const int x : {16, 20, 23}) Switch(x);
    Switch(24);
    const Colour tint = laSwitches_Tint(SwitchColour(), 0xFFFFFF, 3);
    for (const int low : {0, 1, 7, 17, 19}) {
        laCanvas_ShowRange(canvas, low * unit, (1000 + low) * unit, {.keepLength = true});
        EXPECT_EQ(Between(20 - low), tint) << low;
        EXPECT_EQ(Between(24 - low), SwitchColour()) << low;
    }
}

// A tint is ground for lanes and icons, a few switches stand in front of them.
TEST_F(Dense, TintsLieUnderLanesAndIcons) {
    const int32_t running = canvas.looks.legend.StatusByName("Running");
    laLn_AppendSegment(canvas.items.lanes[0], 0, 1000 * unit, running);
    Switch(19, 5);
    Switch(36);
    PixelSurface pixels(1000, 600);
    test.graph.surface = &pixels;
    laCanvas_Repaint(canvas);
    test.graph.surface = &test.surface;
    const int y = laLn_LineY(canvas.looks, canvas.items.lanes[0]);
    EXPECT_EQ(pixels.at(19, y), canvas.looks.statusLooks[static_cast<size_t>(running)].colour);
    EXPECT_EQ(pixels.at(36, y), SwitchColour());
}

TEST_F(Dense, HiddenRowsMakeNoStripDense) {
    canvas.items.lanes[1].hidden = true;
    Switch(19, 5);
    canvas.items.lanes[1].hidden = false;
    canvas.looks.statusLooks[9].shown = false;
    for (int i = 0; i < 5; ++i) canvas.items.ctxLines.kept().push_back({35 * unit, 0, 1, 9});
    Switch(35);
    EXPECT_NE(Between(19), SwitchColour());
    EXPECT_EQ(Between(35), SwitchColour());
}

TEST_F(Dense, AMarkCountsWhatItHides) {
    struct Case {
        const char* what;
        std::vector<int> columns;
        Shows shown;
    };
    // A mark of one digit ends 10 behind the icon and keeps half an icon free, of two 17.
    const Case cases[] = {
        {"apart", {20, 29, 60}, {{0, 12}, {0, 21}, {0, 52}}},
        {"one", {20, 28}, {{0, 12}, {1, 28}}},
        {"covered by the number too", {20, 25, 30, 46, 47}, {{0, 12}, {3, 28}, {0, 39}}},
        {"a longer number covers more",
         {20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 20, 53, 54},
         {{0, 12}, {11, 28}, {0, 46}}},
    };
    for (const Case& one : cases) {
        canvas.items.lanes[0].icons.Clear();
        for (const int x : one.columns) Icon(x);
        EXPECT_EQ(Shown(), one.shown) << one.what;
    }
    canvas.options.plainMarks = true;
    EXPECT_EQ(Shown().size(), 4u) << "pictures in place of the second icons";
    EXPECT_EQ(Shown()[1].first, 0u);
}

TEST_F(Dense, ImportantEventsAreWholeAndNoIconIsLost) {
    canvas.looks.anyImportantEvent = true;
    std::mt19937 random(5);
    int x = 0;
    for (int i = 0; i < 400; ++i) Icon(x += static_cast<int>(random() % 5), random() % 9 == 0 ? 1 : 0);
    const laTimeScale scale(canvas.view, canvas.axis, canvas.graph->width);
    const laScene scene = canvas.scene();
    const laItem_Line& lane = canvas.items.lanes[0];
    laIconWalk walk(scene, lane, scale, canvas.graph->width);
    size_t whole = 0, hidden = 0, important = 0;
    int end = -100;
    for (laShownIcon one; walk.Next(one);) {
        if (one.hidden == 0) {
            ++whole;
            if (lane.icons.event(one.number) == 1) ++important;
            EXPECT_LE(end, one.left) << "a number lies under nothing";
        } else {
            hidden += one.hidden;
            end = one.left + laMark_Width(scene, one.hidden);
        }
    }
    size_t all = 0;
    for (size_t i = 0; i < lane.icons.size(); ++i) all += lane.icons.event(i) == 1 ? 1 : 0;
    EXPECT_EQ(important, all);
    EXPECT_GE(whole + hidden + 4, lane.icons.size()) << "but the last crowd, if nothing follows it";
    EXPECT_LE(whole + hidden, lane.icons.size());
}

TEST_F(Dense, NumbersStayShort) {
    for (const auto& [hidden, text] :
         {std::pair{1u, "1"}, {999u, "999"}, {1000u, "1k"}, {999'999u, "999k"}, {4'294'967'295u, "4G"}})
        EXPECT_EQ(laMark_Text(hidden), text);
    const int letter = test.graph.axisFont.charWidth;
    const int free = laMark_Width(canvas.scene(), 1) - letter;
    for (const uint32_t hidden :
         {9u, 10u, 99u, 100u, 999u, 1000u, 9999u, 10'000u, 123'456u, 1'000'000u, 4'294'967'295u})
        EXPECT_EQ(laMark_Width(canvas.scene(), hidden),
                  static_cast<int>(laMark_Text(hidden).size()) * letter + free)
            << hidden;
}

TEST_F(Dense, ADoubleClickOnANumberPartsItsIcons) {
    for (const int x : {300, 303, 306, 309, 312}) Icon(x);
    Icon(800);
    laCanvas_Resort(canvas);
    const int y = laLn_IconY(canvas.looks, canvas.items.lanes[0]);
    ASSERT_EQ(Shown(), (Shows{{0, 292}, {4, 308}, {0, 792}}));
    EXPECT_FALSE(laCrowd_At(canvas, 300, y)) << "the icon ahead of it";
    EXPECT_FALSE(laCrowd_At(canvas, 310, y + 40));
    const auto crowd = laCrowd_At(canvas, 310, y);
    ASSERT_TRUE(crowd);
    EXPECT_EQ(laPointer_Tip(canvas, 310, y).find("4 events: 4 \"Event 1\"\nfrom 3.03 to 3.12 (in Seconds)"),
              0u)
        << laPointer_Tip(canvas, 310, y);
    laPointer(canvas).Press({310, y, 0, 2, laButton_Left});
    EXPECT_EQ(Shown().size(), 5u) << "all five, and no number";
    EXPECT_GT(canvas.view.viewLength, 0.12);
    // What happened at one time can't be parted.
    canvas.items.lanes[0].icons.Clear();
    for (int i = 0; i < 5; ++i) canvas.items.lanes[0].icons.Append(3.0, 0);
    laCanvas_ShowRange(canvas, 0, 1000 * unit);
    const auto same = laCrowd_At(canvas, 310, y);
    ASSERT_TRUE(same);
    EXPECT_FALSE(laCrowd_Part(canvas, *same));
    EXPECT_EQ(test.message(), "These events happened at the same time.");
}

}  // namespace
