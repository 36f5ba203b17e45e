#include <gtest/gtest.h>

#include "windlib/dialog/dialog_testing.h"

namespace {

// A field under a label, and a button in the lower right corner.
DialogDescription sample() {
    DialogDescription d;
    d.name = "Sample";
    d.items = {{"t_name", DialogKind::Label, "&Name:", "", 0, {}, "", "name"},
               {"name", DialogKind::TextField, "", "Name"},
               {"ok", DialogKind::Button, "OK", "", Dialog_Default}};
    d.layout = {"MinSizes",
                "0,(@t_name,@name),(),20,0,0,0,0,1,1,1,Horizontal",
                "0,(@name,@ok),(),20,0,0,0,0,1,1,1,Vertical",
                "Sizes",
                "0,(),(),0,40,0,0,0,1,1,1,Horizontal",
                "0,(@name,@ok),(),12,0,0,0,0,1,1,1,Vertical",
                "@name,(),(),16,20,0,0,0,1,1,1,Horizontal",
                "Positions",
                "(@name),0,-4,0,0,0,0,Right,Right,Right",
                "(@name),0,4,0,0,0,0,Top,Top,Top",
                "(@t_name),0,4,0,0,0,0,Left,Left,Left",
                "(@t_name),@name,0,0,0,0,0,Baseline,Baseline,Baseline",
                "(@ok),0,-4,0,0,0,0,Right,Right,Right",
                "(@ok),0,-4,0,0,0,0,Bottom,Bottom,Bottom"};
    return d;
}

TEST(DialogLayoutTest, OpensGrowsAndFollowsItsFont) {
    DialogLayout layout(sample(), dialog_TestFont(16, true));
    ASSERT_EQ(layout.read().text(), "");
    EXPECT_TRUE(layout.open().windowChanged);
    const int width = layout.width();
    EXPECT_EQ(width, 40 * 8 + 8);
    EXPECT_EQ(layout.rect(2).x, width - 4 - 4 - layout.rect(2).width);
    EXPECT_FALSE(layout.resize(width + 100, 300).windowChanged);
    EXPECT_EQ(layout.rect(3).y + layout.rect(3).height, 300 - 8);
    const PlacerOutcome small = layout.resize(5, 5);
    EXPECT_TRUE(small.windowChanged);
    EXPECT_EQ(layout.width(), small.minimum.width);
    layout.setMetrics(dialog_TestFont(32, true));
    EXPECT_TRUE(layout.open().windowChanged);
    EXPECT_EQ(layout.width(), 2 * 40 * 8 + 8);
    // A longer text asks for a wider window at once.
    layout.setText(1, std::string(100, 'n'));
    EXPECT_TRUE(layout.solve().windowChanged);
    EXPECT_GT(layout.width(), 100 * 16);
}

TEST(DialogLayoutTest, APlatformsWishGoesFirst) {
    DialogMetrics metrics = dialog_TestFont(16, true);
    metrics.wish = [](const DialogItem& item, const std::string&) -> std::optional<PlacerSize> {
        if (item.kind == DialogKind::Button) return PlacerSize{77, 33};
        return std::nullopt;
    };
    DialogLayout layout(sample(), metrics);
    EXPECT_EQ(layout.open().check, "");
    EXPECT_EQ(layout.rect(3).width, 77);
    EXPECT_EQ(layout.rect(3).height, 33);
}

TEST(DialogCheckTest, ASoundDescriptionHasNoFaults) {
    EXPECT_EQ(dialog_CheckAll(sample()), std::vector<std::string>{});
}

TEST(DialogCheckTest, FindsFaults) {
    struct Row {
        std::function<void(DialogDescription&)> harm;
        const char* fault;  // somewhere in the faults
    };
    const Row rows[] = {
        {[](DialogDescription& d) { d.layout[9] = "(@name),0,4,0,0,0,0,Bottom,Bottom,Bottom"; },
         "sticks out"},
        {[](DialogDescription& d) { d.layout[8] = "(@name),0,4,0,0,0,0,Left,Left,Left"; },
         "t_name and name overlap"},
        {[](DialogDescription& d) { d.layout[6] = "@t_name,(),(),5,0,0,0,0,1,1,1,H"; }, "t_name is cut"},
        {[](DialogDescription& d) { d.layout[6] = "@nam,(),(),5,0,0,0,0,1,1,1,H"; },
         "No item is named \"nam\" on line 7"},
        {[](DialogDescription& d) { d.layout[6] = "9,(),(),5,0,0,0,0,1,1,1,H"; },
         "Item number out of bounds (9)"},
        {[](DialogDescription& d) { d.layout[6] = "@name,(@name),(),5,0,0,0,0,1,1,1,H"; },
         "!(anyleft && !anydone)"},
        {[](DialogDescription& d) { d.items[2].name = "name"; }, "name used twice"},
        {[](DialogDescription& d) { d.items[2].text = "&North"; }, "shortcut used twice"},
        {[](DialogDescription& d) { d.items[1].accessible = ""; }, "name: no accessible name"},
        {[](DialogDescription& d) { d.items[0].buddy = "gone"; }, "no item is named gone"},
    };
    for (const Row& row : rows) {
        DialogDescription d = sample();
        row.harm(d);
        std::string all;
        for (const std::string& fault : dialog_Check(d, dialog_TestFont(16, true), 500, 400))
            all += fault + "\n";
        EXPECT_NE(all.find(row.fault), std::string::npos) << row.fault << " not in:\n" << all;
    }
}

TEST(DialogDescriptionTest, ShortcutMarks) {
    struct Row {
        const char *text, *plain;
        char shortcut;
    };
    const Row rows[] = {{"&Hide", "Hide", 'h'},    {"Sh&ow &All", "Show All", 'o'},
                        {"A && &B", "A & B", 'b'}, {"plain", "plain", 0},
                        {"end&", "end", 0},        {"", "", 0}};
    for (const Row& row : rows) {
        EXPECT_EQ(dialog_PlainText(row.text), row.plain);
        EXPECT_EQ(dialog_Shortcut(row.text), row.shortcut) << row.text;
    }
}

}  // namespace
