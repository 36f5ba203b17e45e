#include "placer/run_time/layout.h"

#include <gtest/gtest.h>

namespace {

std::string errorOf(std::vector<std::string> lines, int itemCount = 6) {
    PlacerLayout layout;
    return placer_Parse(lines, itemCount, layout).text();
}

TEST(PlacerLayoutTest, SectionsAreToldByFirstCharacters) {
    PlacerLayout layout;
    const std::vector<std::string> lines = {"MinSizes",  "0,(1,2),(),-5,1,2,3,4,1,1,1,Horizontal",
                                            "S",         "3,(0),(1,4,5),-40,0,0,0,0,2,3,1,Vertical",
                                            "5,(),(),7", "2,( 1 , 3 ),(),+1,0,0,0,0,1,0,2,H",
                                            "Pos",       "(2,1),3,0,0,0,0,1,Top,Top,Bottom",
                                            "4,0,10"};
    ASSERT_TRUE(placer_Parse(lines, 6, layout));
    ASSERT_EQ(layout.minSizes.size(), 1u);
    EXPECT_EQ(layout.minSizes[0].plus, (std::vector<int>{1, 2}));
    EXPECT_EQ(layout.minSizes[0].offset.pixels, -5);
    EXPECT_EQ(layout.minSizes[0].offset.bars, 4);
    ASSERT_EQ(layout.sizes.size(), 3u);
    EXPECT_EQ(layout.sizes[0].minus, (std::vector<int>{1, 4, 5}));
    EXPECT_EQ(layout.sizes[0].axis, Placer_Vertical);
    EXPECT_EQ(layout.sizes[0].multiplier, 2);
    EXPECT_EQ(layout.sizes[0].divisor, 3);
    EXPECT_TRUE(layout.sizes[1].isVoid);
    EXPECT_EQ(layout.sizes[2].plus, (std::vector<int>{1, 3}));
    EXPECT_EQ(layout.sizes[2].chain, 2);
    ASSERT_EQ(layout.positions.size(), 2u);
    EXPECT_EQ(layout.positions[0].items, (std::vector<int>{2, 1}));
    EXPECT_EQ(layout.positions[0].ofOther, PlacerEdge::Bottom);
    EXPECT_EQ(layout.positions[1].items, std::vector<int>{4});
    EXPECT_EQ(layout.positions[1].alignThem, PlacerEdge::Top);  // a missing word
    EXPECT_EQ(layout.positions[1].line, 9);
}

TEST(PlacerLayoutTest, EdgeWordsByFirstLetters) {
    const std::pair<const char*, PlacerEdge> rows[] = {
        {"Left", PlacerEdge::Left},
        {"Right", PlacerEdge::Right},
        {"LRCenter", PlacerEdge::LRCenter},
        {"Top", PlacerEdge::Top},
        {"Bottom", PlacerEdge::Bottom},
        {"Baseline", PlacerEdge::Baseline},
        {"TBCenter", PlacerEdge::TBCenter},
        {"T", PlacerEdge::Top},
        {"B", PlacerEdge::Baseline},
        {"middle", PlacerEdge::Left},
        {"", PlacerEdge::Top},
    };
    for (const auto& [word, edge] : rows) EXPECT_EQ(placer_EdgeOf(word), edge) << word;
}

TEST(PlacerLayoutTest, UnreadableLinesSayWhatAndWhere) {
    EXPECT_EQ(errorOf({}), "");
    EXPECT_EQ(errorOf({"MinSizes", "Sizes", "6,(),(),1,0,0,0,0,1,1,1,H"}),
              "Item number out of bounds (6) on line 3");
    EXPECT_EQ(errorOf({"MinSizes", "Sizes", "1,(2,-1),()"}), "Item number out of bounds (-1) on line 3");
    EXPECT_EQ(errorOf({"M", "S", "P", "(1,0),2,0"}), "Item number out of bounds (0) on line 4");
    EXPECT_EQ(errorOf({"M", "S", "P", "(1,2"}), "List without an end on line 4");
    EXPECT_EQ(errorOf({"M", "1,(),(),x"}), "\"x\" is no number of 16 bits on line 2");
    EXPECT_EQ(errorOf({"M", "1,(),(),40000"}), "\"40000\" is no number of 16 bits on line 2");
    EXPECT_EQ(errorOf({"M", "1,(),()" + std::string(Placer_LineLength - 7, ' ')}), "");
    EXPECT_EQ(errorOf({"M", "1,(),()" + std::string(Placer_LineLength - 6, ' ')}),
              "Line 2 is longer than 1023 characters");
}

TEST(PlacerLayoutTest, ReviewTellsTheAuthor) {
    const std::pair<std::vector<std::string>, const char*> rows[] = {
        {{"M", "1,(),(),9,0,0,0,0,1,1,1,H"}, "Minimum size may only be specified for the dialog box itself"},
        {{"M", "0,(),(0),9,0,0,0,0,1,1,1,H"}, "Item 0 is not a valid base on line 2"},
        {{"M", "0,(),(),9,0,0,0,0,1,1,1,V", "0,(),(),8,0,0,0,0,1,1,1,V"},
         "Item 0 vertically sized twice on line 3"},
        {{"M", "S", "1,(),(),9,0,0,0,0,1,1,1,V", "1,(),(),8,0,0,0,0,1,1,1,V"},
         "Item 1 vertically sized twice on line 4"},
        {{"M", "S", "1,(),(),9,0,0,0,0,1,1,1,H", "1,(),(),8,0,0,0,0,1,1,1,H"},
         "Item horizontally 1 sized twice on line 4"},
        {{"M", "S", "P", "(1),0,0,0,0,0,0,Left,Left,Left", "(2,1),0,0,0,0,0,0,Left,Left,Left"},
         "Item 1 horizontally positioned twice on line 5"},
        {{"M", "S", "P", "(1),0,0,0,0,0,0,Top,Top,Top", "(1),0,0,0,0,0,0,Bottom,Bottom,Top"},
         "Item 1 vertically positioned twice on line 5"},
        {{"M", "S", "P", "(),0,0,0,0,0,0,Left,Left,Left"}, "Nothing to position on line 4"},
        {{"M", "S", "P", "(1),0,0,0,0,0,0,Left,Left,Top"},
         "Alignment specification invalid (mixed mode) on line 4"},
        {{"M", "S", "P", "(1,2),2,0,0,0,0,0,Left,Left,Left"}, "Item 2 is not a valid base on line 4"},
        {{"M", "S", "1,(1),(),9,0,0,0,0,1,1,1,H"}, "Item 1 is not a valid base on line 3"},
    };
    for (const auto& [lines, note] : rows) {
        PlacerLayout layout;
        ASSERT_TRUE(placer_Parse(lines, 6, layout));
        EXPECT_EQ(placer_Review(layout), std::vector<std::string>{note});
    }
    // The lines of a chain are one rule.
    PlacerLayout layout;
    const std::vector<std::string> chain = {"M", "S", "1,(),(),9,0,0,0,0,1,1,2,H",
                                            "1,(),(),8,0,0,0,0,1,1,1,H"};
    ASSERT_TRUE(placer_Parse(chain, 6, layout));
    EXPECT_TRUE(placer_Review(layout).empty());
}

}  // namespace
