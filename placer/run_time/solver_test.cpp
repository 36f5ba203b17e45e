#include "placer/run_time/solver.h"

#include <gtest/gtest.h>

#include "shared/libcxxutil/report.h"

namespace {

constexpr PlacerMetrics smallFont{8, 12, 20, 15};
constexpr PlacerMetrics largeFont{16, 24, 40, 30};

PlacerItem box(int width, int height) {
    PlacerItem item;
    item.width = width;
    item.height = height;
    item.metrics = smallFont;
    return item;
}
PlacerItem text(PlacerKind kind, int width, int height) {
    PlacerItem item = box(50, 50);
    item.kind = kind;
    item.content = {width, height};
    return item;
}

// A window of 400 by 300 with these items.
PlacerWindow window(const std::vector<std::string>& lines, std::vector<PlacerItem> items) {
    items.insert(items.begin(), box(400, 300));
    PlacerLayout layout;
    EXPECT_TRUE(placer_Parse(lines, static_cast<int>(items.size()), layout));
    return {std::move(layout), std::move(items)};
}
std::vector<std::string> sizes(std::vector<std::string> lines) {
    lines.insert(lines.begin(), {"MinSizes", "Sizes"});
    return lines;
}
std::vector<std::string> positions(std::vector<std::string> lines) {
    lines.insert(lines.begin(), {"MinSizes", "Sizes", "Positions"});
    return lines;
}

TEST(PlacerSizeTest, RulesComputeSizes) {
    struct Row {
        std::vector<std::string> lines;
        int width, height;  // of item 1, which is 50 by 60 on its own
    };
    const Row rows[] = {
        {{}, 50, 60},
        {{"1,(0),(2,3),-40,0,0,0,0,2,3,1,Vertical"}, 50, (300 - 20 - 10 - 40) * 2 / 3},
        {{"1,(),(),-30,0,0,0,0,1,0,1,H"}, -30, 60},                 // taken as it is
        {{"1,(),(),5,1,2,3,1,1,0,1,H"}, 5 + 8 + 24 + 60 + 21, 60},  // divisor 0 divides nothing
        {{"1,(),(),7,0,0,0,0,1,2,1,H"}, 3, 60},                     // whole numbers
        {{"1,(),(),90,0,0,0,0,1,1,1"}, 50, 60},                     // no orientation
        {{"1,(),(),90,0,0,0,0,30000,1,1,H"}, 0x7fff, 60},           // held within 16 bits
        {{"1,(2),(),0,0,0,0,0,1,1,3,H", "2,(3),(),0,0,0,0,0,1,1,2,V", "1,(),(),25,0,0,0,0,1,1,1,H"}, 31, 60},
        {{"1,(2),(),0,0,0,0,0,1,1,9,H"}, 30, 60},  // a chain beyond the list's end
        {{"1,(),(),1,0,0,0,0,1,1,1,H", "1,(),(),2,0,0,0,0,1,1,1,V"}, 1, 2},
        // Later lines that earlier ones wait for.
        {{"1,(2),(),1,0,0,0,0,1,1,1,H", "2,(3),(),1,0,0,0,0,1,1,1,H", "3,(0),(),1,0,0,0,0,1,1,1,H"}, 403, 60},
    };
    for (const Row& row : rows) {
        PlacerWindow w = window(sizes(row.lines), {box(50, 60), box(30, 20), box(31, 10)});
        EXPECT_EQ(w.solve().check, "");
        EXPECT_EQ(w.items[1].width, row.width) << testing::PrintToString(row.lines);
        EXPECT_EQ(w.items[1].height, row.height) << testing::PrintToString(row.lines);
        EXPECT_EQ(w.items[2].height, 20);  // a chain's later lines size nothing of their own
    }
}

TEST(PlacerSizeTest, NaturalSizesByKind) {
    PlacerItem marked = text(PlacerKind::Button, 30, 28);
    marked.marked = true;
    PlacerWindow w = window({}, {text(PlacerKind::Button, 30, 28), marked, text(PlacerKind::Label, 33, 20),
                                 text(PlacerKind::PullDown, 70, 26), text(PlacerKind::TextLine, 99, 26),
                                 text(PlacerKind::ButtonSet, 80, 90), box(11, 12)});
    EXPECT_EQ(w.solve().check, "");
    const PlacerSize expected[] = {{30, 28}, {44, 28}, {33, 20}, {70, 26}, {50, 26}, {80, 90}, {11, 12}};
    for (size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ((PlacerSize{w.items[i + 1].width, w.items[i + 1].height}), expected[i]) << i;
}

TEST(PlacerSizeTest, MeasuresComeFromTheItemsOwnFont) {
    PlacerItem large = box(1, 1);
    large.metrics = largeFont;
    PlacerWindow w = window(sizes({"1,(),(),0,2,0,0,0,1,1,1,H", "1,(),(),0,0,0,1,0,1,1,1,V"}), {large});
    EXPECT_EQ(w.solve().check, "");
    EXPECT_EQ(w.items[1].width, 32);
    EXPECT_EQ(w.items[1].height, 40);
}

TEST(PlacerTest, ContradictionsNameTheCheck) {
    const char* sizesCheck = "!(anyleft && !anydone)";
    const char* positionsCheck = "!anyleft || anydone";
    const char* edgesCheck =
        "!(isHorz (pos->ofThem) != isHorz (pos->ofOther) || isHorz (pos->ofThem) != isHorz (pos->alignThem))";
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {sizes({"1,(1),(),0,0,0,0,0,1,1,1,H"}), sizesCheck},
        {sizes({"1,(2),(),0,0,0,0,0,1,1,1,H", "2,(1),(),0,0,0,0,0,1,1,1,H"}), sizesCheck},
        {sizes({"1,(0),(),0,0,0,0,0,1,1,1,H", "0,(1),(),0,0,0,0,0,1,1,1,H"}), sizesCheck},
        {positions({"(1),2,0,0,0,0,0,Left,Left,Left", "(2),1,0,0,0,0,0,Left,Left,Left"}), positionsCheck},
        {positions({"(1),0,0,0,0,0,0,Left,Left,Top"}), edgesCheck},
        {positions({"(1),0,0,0,0,0,0,Top,Left,Left"}), edgesCheck},
    };
    for (const auto& [lines, check] : rows) {
        PlacerWindow w = window(lines, {box(1, 1), box(1, 1)});
        EXPECT_EQ(w.relayout().check, check);
    }
}

TEST(PlacerWindowTest, OnlyARelayoutSizesTheWindowByRules) {
    PlacerWindow w =
        window(sizes({"0,(1),(),10,0,0,0,0,1,1,1,H", "0,(),(),0,0,0,5,0,1,1,1,V"}), {box(90, 10)});
    w.framed = w.topLevel = w.menu = true;
    EXPECT_FALSE(w.resized(500, 310).windowChanged);
    EXPECT_EQ(w.items[0].width, 500);
    const PlacerOutcome outcome = w.relayout();
    EXPECT_TRUE(outcome.windowChanged);
    EXPECT_EQ(w.items[0].width, 90 + 10 + 8);
    EXPECT_EQ(w.items[0].height, 100 + 8 + 27);
    for (PlacerItem& item : w.items) item.metrics = largeFont;
    EXPECT_TRUE(w.relayout().windowChanged);
    EXPECT_EQ(w.items[0].height, 200 + 8 + 47);  // a larger font, a larger window
}

TEST(PlacerWindowTest, GrowsBackToItsMinimumAndPlacesItemsOnce) {
    const std::vector<std::string> lines = {"MinSizes",
                                            "0,(2),(),60,0,0,0,0,1,1,2,Horizontal",
                                            "0,(),(),50,0,0,0,0,1,1,1,Horizontal",
                                            "0,(),(),0,0,0,4,0,1,1,1,Vertical",
                                            "Sizes",
                                            "1,(0),(),-10,0,0,0,0,1,1,1,Horizontal",
                                            "Positions",
                                            "(2),0,-10,0,0,0,0,Right,Right,Right"};
    PlacerWindow w = window(lines, {box(30, 30), box(40, 10)});
    w.framed = true;
    int moves = 0, told = 0;
    w.hooks.move = [&](int, int, int) { ++moves; };
    w.hooks.resize = [&](int, PlacerSize size) { return ++told, size; };
    const PlacerOutcome outcome = w.resized(20, 200);
    EXPECT_EQ(outcome.check, "");
    EXPECT_TRUE(outcome.windowChanged);
    EXPECT_EQ(outcome.minimum, (PlacerSize{100, 80}));
    EXPECT_EQ(w.items[0].width, 100);
    EXPECT_EQ(w.items[0].height, 200);
    EXPECT_EQ(w.items[1].width, 100 - 8 - 10);
    EXPECT_EQ(w.items[2].x, 100 - 4 - 10 - 40);  // 10 pixels inside the inset
    EXPECT_EQ(moves, 1);
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(w.resized(100, 200).windowChanged);  // the native window's answer
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(w.resized(300, 200).windowChanged);  // and the state is over
    EXPECT_EQ(w.items[1].width, 300 - 8 - 10);
}

TEST(PlacerWindowTest, ItemsThatRoundAreAskedThreeTimesAtMost) {
    PlacerWindow w =
        window(sizes({"1,(0),(),-3,0,0,0,0,1,1,1,H", "2,(1),(),0,0,0,0,0,1,1,1,H"}), {box(1, 9), box(1, 9)});
    int asked = 0;
    w.hooks.resize = [&](int item, PlacerSize size) {
        if (item == 1) ++asked, size.width &= ~7;
        return size;
    };
    EXPECT_EQ(w.solve().check, "");
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(w.items[1].width, 392);
    EXPECT_EQ(w.items[2].width, 397);
}

// Two items, the first of extent 30 and the second of 11, with the window's edge 100 pixels in as the
// reference: so R = 100, M = 30, and the halves of odd extents are cut.
TEST(PlacerPositionTest, EveryRowOfTheTable) {
    struct Row {
        const char *align, *of;
        int first, second;
    };
    const Row rows[] = {
        {"Left", "Left", 100, 100},       {"Right", "Right", 70, 89},     {"LRCenter", "LRCenter", 85, 95},
        {"Left", "Right", 70, 70},        {"Left", "LRCenter", 85, 85},   {"Right", "Left", 100, 119},
        {"Right", "LRCenter", 115, 125},  {"LRCenter", "Left", 100, 110}, {"LRCenter", "Right", 70, 80},
        {"Top", "Top", 100, 100},         {"Bottom", "Bottom", 70, 89},   {"TBCenter", "TBCenter", 85, 95},
        {"Top", "Bottom", 70, 70},        {"Top", "TBCenter", 85, 85},    {"Bottom", "Top", 100, 119},
        {"Bottom", "TBCenter", 115, 125}, {"TBCenter", "Top", 100, 110},  {"TBCenter", "Bottom", 70, 80},
    };
    for (const Row& row : rows) {
        const bool horizontal = placer_AxisOf(placer_EdgeOf(row.of)) == Placer_Horizontal;
        PlacerWindow w = window(positions({gen_format("(1,2),0,100,0,0,0,0,%s,%s,%s", row.align, row.of,
                                                      horizontal ? "Left" : "Top")}),
                                {box(30, 30), box(11, 11)});
        EXPECT_EQ(w.solve().check, "");
        EXPECT_EQ(horizontal ? w.items[1].x : w.items[1].y, row.first) << row.align << " of " << row.of;
        EXPECT_EQ(horizontal ? w.items[2].x : w.items[2].y, row.second) << row.align << " of " << row.of;
        EXPECT_EQ(horizontal ? w.items[1].y : w.items[1].x, 0);  // no rule there
    }
}

TEST(PlacerPositionTest, ReferencesOnItemsAndTheWindow) {
    struct Row {
        const char* line;  // places item 1, 20 by 10; item 2 is 41 by 31 at 100, 50
        int x, y;
    };
    const Row rows[] = {
        {"(1),2,0,0,0,0,0,Left,Left,Left", 100, 0},
        {"(1),2,3,1,1,1,1,Left,Left,Right", 141 + 3 + 8 + 12 + 20 + 21, 0},
        {"(1),2,0,0,0,0,0,LRCenter,LRCenter,LRCenter", 110, 0},
        {"(1),2,0,0,0,0,0,Top,Top,Bottom", 0, 81},
        {"(1),2,0,0,0,0,0,TBCenter,TBCenter,TBCenter", 0, 60},
        {"(1),2,0,0,0,0,0,Top,Top,Baseline", 0, 81},  // a box has no baseline: its bottom
        {"(1),0,0,0,0,0,0,Left,Left,Left", 4, 0},
        {"(1),0,-10,0,0,0,0,Right,Right,Right", 400 - 4 - 10 - 20, 0},
        {"(1),0,0,0,0,0,0,LRCenter,LRCenter,LRCenter", 190, 0},
        {"(1),0,0,0,0,0,0,Top,Top,Top", 0, 4 + 27},
        {"(1),0,0,0,0,0,0,Bottom,Bottom,Bottom", 0, 300 - 4 - 10},
    };
    for (const Row& row : rows) {
        PlacerItem other = box(41, 31);
        other.x = 100;
        other.y = 50;
        PlacerWindow w = window(positions({row.line}), {box(20, 10), other});
        w.framed = w.topLevel = w.menu = true;
        EXPECT_EQ(w.solve().check, "");
        EXPECT_EQ(w.items[1].x, row.x) << row.line;
        EXPECT_EQ(w.items[1].y, row.y) << row.line;
        EXPECT_EQ(w.solve().check, "");  // and the same again
        EXPECT_EQ(w.items[1].y, row.y) << row.line;
    }
}

TEST(PlacerPositionTest, TextsShareABaseline) {
    PlacerItem set = text(PlacerKind::ButtonSet, 60, 60);
    set.setBaseline = 2;
    PlacerItem large = text(PlacerKind::Label, 40, 40);
    large.metrics = largeFont;
    PlacerWindow w =
        window(positions({"(1),0,100,0,0,0,0,Top,Top,Top", "(2,3,4),1,0,0,0,0,0,Baseline,Baseline,Baseline",
                          "(5,6),0,10,0,0,0,0,Baseline,Top,Top"}),
               {text(PlacerKind::TextLine, 0, 26), text(PlacerKind::Label, 40, 20),
                text(PlacerKind::Button, 40, 28), set, large, text(PlacerKind::Label, 40, 20)});
    EXPECT_EQ(w.solve().check, "");
    const int baseline = 100 + 15 + 3;
    EXPECT_EQ(w.items[2].y, baseline - 15);
    EXPECT_EQ(w.items[3].y, baseline - 15 - 4);
    EXPECT_EQ(w.items[4].y, baseline - 15 - 2);
    EXPECT_EQ(w.items[5].y, 10);  // the group's top is that of the highest ascent
    EXPECT_EQ(w.items[6].y, 10 + 30 - 15);
}

TEST(PlacerPositionTest, ContainersAndTheirOrigin) {
    PlacerItem pane = box(200, 100);
    pane.x = 50;
    PlacerItem inside = box(20, 10);
    inside.container = 1;
    inside.originX = 30;  // the pane is scrolled by 30
    PlacerItem loose = inside;
    loose.x = 7;
    PlacerWindow w = window(positions({"(2),1,0,0,0,0,0,Right,Right,Right"}), {pane, inside, loose});
    EXPECT_EQ(w.solve().check, "");
    EXPECT_EQ(w.items[2].x, 200 - 20 - 30);  // in the pane's own coordinates
    EXPECT_EQ(w.items[3].x, 7);
}

TEST(PlacerPositionTest, UnplacedItemsFollowInsetAndMenuLine) {
    PlacerItem inner = box(5, 5);
    inner.container = 1;
    PlacerWindow w = window(positions({"(3),0,0,0,0,0,0,Left,Left,Left"}), {box(50, 50), inner, box(5, 5)});
    w.topLevel = w.menu = true;
    EXPECT_EQ(w.solve().check, "");
    EXPECT_EQ(w.items[1].y, 0);  // nothing to compare with yet
    w.framed = true;
    w.items[0].metrics = largeFont;
    EXPECT_EQ(w.solve().check, "");
    EXPECT_EQ(w.items[1].x, 4);
    EXPECT_EQ(w.items[1].y, 4 + 20);
    EXPECT_EQ(w.items[2].y, 0);
    EXPECT_EQ(w.items[3].x, 4);  // by its rule
    EXPECT_EQ(w.items[3].y, 24);
}

}  // namespace
