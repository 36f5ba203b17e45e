#include "windlib/dialog/layout_builder.h"

#include <gtest/gtest.h>

#include <functional>

#include "windlib/dialog/dialog_testing.h"

namespace {

using Lines = std::vector<std::string>;

Lines lines_of(const std::function<void(LayoutBuilder&)>& state) {
    LayoutBuilder layout;
    state(layout);
    return layout.lines();
}

struct Case {
    const char* name;
    std::function<void(LayoutBuilder&)> state;
    Lines least, sizes, places;
};

void expect_lines(const Case& c) {
    Lines expected = {"MinSizes"};
    expected.insert(expected.end(), c.least.begin(), c.least.end());
    expected.emplace_back("Sizes");
    expected.insert(expected.end(), c.sizes.begin(), c.sizes.end());
    expected.emplace_back("Positions");
    expected.insert(expected.end(), c.places.begin(), c.places.end());
    EXPECT_EQ(lines_of(c.state), expected) << c.name;
}

// Each statement alone, as the lines that it gives in its section.
TEST(LayoutBuilderTest, StatementsBecomeLines) {
    const Case cases[] = {
        {"a size with everything",
         [](LayoutBuilder& l) {
             l.width("a", {.of = {"b", layout_Window},
                           .less = {"c"},
                           .pixels = -1,
                           .letters = 2,
                           .capitals = 3,
                           .lines = 4,
                           .bars = 5,
                           .times = 6,
                           .parts = 7});
         },
         {},
         {"@a,(@b,0),(@c),-1,2,3,4,5,6,7,1,Horizontal"},
         {}},
        {"widths of several calls are one rule",
         [](LayoutBuilder& l) {
             l.leastWidths({{.of = {"a"}}, {.pixels = 1}});
             l.leastWidths({{.lines = 1}});
         },
         {"0,(@a),(),0,0,0,0,0,1,1,3,Horizontal", "0,(),(),1,0,0,0,0,1,1,2,Horizontal",
          "0,(),(),0,0,0,1,0,1,1,1,Horizontal"},
         {},
         {}},
        {"half of what the window leaves",
         [](LayoutBuilder& l) { l.fillHeight("a", {.less = {"b"}, .gaps = 16, .parts = 2}); },
         {},
         {"@a,(0),(@b),-16,0,0,0,0,1,2,1,Vertical"},
         {}},
        {"gaps go to the inside, and away from another item",
         [](LayoutBuilder& l) {
             l.left({.items = {"a", "b"}});
             l.bottom({.items = {"a"}, .gap = 4});
             l.rightOf({.items = {"b"}, .of = "a"});
             l.above({.items = {"b"}, .of = "a", .gap = 2});
         },
         {},
         {},
         {"(@a,@b),0,8,0,0,0,0,Left,Left,Left", "(@a),0,-4,0,0,0,0,Bottom,Bottom,Bottom",
          "(@b),@a,8,0,0,0,0,Left,Left,Right", "(@b),@a,-2,0,0,0,0,Bottom,Bottom,Top"}},
        {"a row of texts hangs on its anchor",
         [](LayoutBuilder& l) {
             l.textRow({"a", "b"}, "b");
         },
         {},
         {},
         {"(@b),@a,8,0,0,0,0,Left,Left,Right", "(@a),@b,0,0,0,0,0,Baseline,Baseline,Baseline"}},
    };
    for (const Case& c : cases) expect_lines(c);
}

// The words of edges are those that the placer reads.
TEST(LayoutBuilderTest, EveryEdgeIsReadAsItWasStated) {
    for (const PlacerEdge edge : {PlacerEdge::Left, PlacerEdge::Right, PlacerEdge::LRCenter, PlacerEdge::Top,
                                  PlacerEdge::Bottom, PlacerEdge::Baseline, PlacerEdge::TBCenter}) {
        LayoutBuilder layout;
        layout.align(edge, {"a"}, "b");
        const std::string line = layout.lines().back();
        EXPECT_EQ(placer_EdgeOf(line.substr(line.rfind(',') + 1)), edge) << line;
    }
}

TEST(LayoutBuilderTest, RowsStandUnderEachOtherInAWindowOfTheirHeight) {
    LayoutBuilder layout;
    layout.leastWidths({{.of = {"top"}, .pixels = 16}});
    layout.left({.items = {"top", "low"}});
    layout.nextRow("top", 5);
    layout.nextRow("low", 7);
    layout.onlyHeight(layout.rowsHeight(3));
    const DialogDescription d = {.name = "Rows",
                                 .items = {{.name = "top", .kind = DialogKind::Label, .text = "Top"},
                                           {.name = "low", .kind = DialogKind::Label, .text = "Low"}},
                                 .layout = layout.lines()};
    DialogLayout placed(d, dialog_TestFont(16, true));
    ASSERT_EQ(placed.open().check, "");
    const DialogRect top = placed.rect(1), low = placed.rect(2);
    EXPECT_EQ(top.y, placed.inside().y + 5);
    EXPECT_EQ(low.y, top.y + top.height + 7);
    EXPECT_EQ(placed.inside().height, 5 + top.height + 7 + low.height + 3);
}

}  // namespace
