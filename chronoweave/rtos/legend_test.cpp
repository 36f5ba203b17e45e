#include "chronoweave/rtos/legend.h"

#include <gtest/gtest.h>

#include "shared/libcxxutil/report.h"

namespace {

LegendEvent event(const char* name, uint16_t type, uint16_t subtype, uint32_t flags = 1) {
    LegendEvent made;
    made.name = name;
    made.type = type;
    made.subtype = subtype;
    made.flags = flags;
    return made;
}

LegendStatus status(const char* name, uint16_t code) {
    LegendStatus made;
    made.name = name;
    made.code = code;
    return made;
}

class LegendLookup : public ::testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([this](std::string_view text) { console_ += text; });
    }
    void TearDown() override { gen_set_console_sink({}); }
    Legend legend_;
    std::string console_;
};

TEST_F(LegendLookup, AnEventTakesTheExactPairThenTheFirstFittingWildcard) {
    legend_.events = {event("group", 0, 0, LegendEvent_Category | 1),
                      event("any of 3", 3, 0, LegendEvent_AnySubtype),
                      event("exact", 3, 7),
                      event("exact again", 3, 7),
                      event("7 of any", 0, 7, LegendEvent_AnyType),
                      event("any of 9", 9, 0, LegendEvent_AnySubtype),
                      event("far", 0x300, 0x400),
                      event("Unknown", 0xFFFF, 0xFFFF)};
    legend_.BuildLookups();
    struct Case {
        uint16_t type, subtype;
        int32_t row;
    };
    for (const Case& c : {Case{3, 7, 2},
                          {3, 8, 1},
                          {3, 0xFFFF, 1},
                          {9, 7, 4},
                          {9, 8, 5},
                          {0x300, 0x400, 6},
                          {0xFFFF, 0xFFFF, 7},
                          {0, 0, 7},
                          {0x300, 0x401, 7}})
        EXPECT_EQ(legend_.EventIndex(c.type, c.subtype), c.row) << c.type << "/" << c.subtype;
    EXPECT_EQ(legend_.wildcardEvents, (std::vector<int32_t>{1, 4, 5}));

    legend_.events.insert(legend_.events.begin() + 5,
                          event("any", 0, 0, LegendEvent_AnyType | LegendEvent_AnySubtype));
    legend_.BuildLookups();
    EXPECT_EQ(legend_.EventIndex(9, 8), 5) << "any and any stands ahead of type 9";
    EXPECT_EQ(legend_.EventIndex(3, 8), 1);
    EXPECT_EQ(legend_.EventIndex(0x777, 1), 5);
}

TEST_F(LegendLookup, AStatusTakesTheFirstRowOfItsCode) {
    legend_.statuses = {status("b", 300), status("a", 3), status("a again", 3), status("unknown", 0xFFFF)};
    legend_.BuildLookups();
    EXPECT_EQ(legend_.StatusIndex(3), 1);
    EXPECT_EQ(legend_.StatusIndex(300), 0);
    EXPECT_EQ(legend_.StatusIndex(0xFFFF), 3);
    EXPECT_EQ(console_, "");
    EXPECT_EQ(legend_.StatusIndex(4), 3);
    EXPECT_EQ(legend_.StatusIndex(0x10003), 3) << "a code beyond 16 bits is no other code";
}

TEST_F(LegendLookup, AnUnknownCodeIsToldOncePerLegend) {
    legend_.statuses = {status("Unknown", 0xFFFF)};
    legend_.events = {event("Unknown", 0xFFFF, 0xFFFF)};
    legend_.BuildLookups();
    for (int i = 0; i < 3; ++i) {
        legend_.EventIndex(3, 0x1F);
        legend_.StatusIndex(10);
    }
    const std::string both =
        "Chronoweave: Unknown event: type=0x3, subtype=0x1f.\nChronoweave: Unknown status: internal code = "
        "0xa.\n";
    EXPECT_EQ(console_, both);
    legend_.BuildLookups();
    legend_.EventIndex(3, 0x1F);
    legend_.StatusIndex(10);
    EXPECT_EQ(console_, both + both);
}

TEST_F(LegendLookup, AnEmptyLegendHasNoRows) {
    EXPECT_EQ(legend_.EventIndex(1, 1), -1);
    legend_.BuildLookups();
    EXPECT_EQ(legend_.EventIndex(1, 1), -1);
    EXPECT_EQ(legend_.StatusIndex(1), -1);
    EXPECT_EQ(legend_.LinkedStatus(0), -1);
}

TEST_F(LegendLookup, NamesLeadToTheRowThatEventsResolveTo) {
    legend_.events = {event("Same", 0, 0, LegendEvent_Category | 1),
                      event("First", 1, 1),
                      event("Second", 1, 1),
                      event("Wild", 2, 0, LegendEvent_AnySubtype),
                      event("Wilder", 2, 0, LegendEvent_AnySubtype | LegendEvent_IntervalSearch),
                      event("same", 4, 4),
                      event("Unknown", 0xFFFF, 0xFFFF)};
    legend_.statuses = {status("Ready", 0), status("READY", 1), status("Unknown", 0xFFFF)};
    legend_.BuildLookups();
    EXPECT_EQ(legend_.EventByName("SECOND"), 1);
    EXPECT_EQ(legend_.EventByName("wilder"), 3);
    EXPECT_EQ(legend_.EventByName("Same"), 5);
    EXPECT_EQ(legend_.EventByName("none"), 6);
    EXPECT_EQ(legend_.StatusByName("ready"), 0);
    EXPECT_EQ(legend_.StatusByName(""), 2);
    EXPECT_EQ(console_, "");

    EXPECT_TRUE(legend_.EventMatches(9, 9, -1));
    EXPECT_TRUE(legend_.EventMatches(2, 5, 3));
    EXPECT_FALSE(legend_.EventMatches(2, 5, 4));
    EXPECT_FALSE(legend_.EventMatches(9, 9, 7));
}

TEST_F(LegendLookup, LinksFallBackOnTheFirstContextSwitch) {
    legend_.statuses = {status("Run", 0), status("Switch", 1), status("Other", 2), status("Run too", 3)};
    legend_.statuses[1].isContextSwitch = legend_.statuses[2].isContextSwitch = true;
    legend_.statuses[3].isExecution = true;
    legend_.statuses[3].contextSwitchLink = 2;
    legend_.BuildLookups();
    EXPECT_EQ(legend_.contextSwitchStatus, 1);
    EXPECT_EQ(legend_.contextSwitchCount, 2);
    EXPECT_EQ(legend_.firstExecutionStatus, 3);
    for (const auto& [row, link] : {std::pair{3, 2}, {0, 1}, {-1, 1}, {4, 1}})
        EXPECT_EQ(legend_.LinkedStatus(row), link) << row;
}

TEST_F(LegendLookup, CategoriesShowWhetherTheirEventsAreVisible) {
    const uint32_t category = LegendEvent_Category;
    legend_.events = {event("ahead", 1, 0, 0),
                      event("all", 0, 0, category),
                      event("a", 1, 1, 1),
                      event("b", 1, 2, 1),
                      event("none", 0, 0, category | 1),
                      event("c", 1, 3, 0),
                      event("mixed", 0, 0, category),
                      event("d", 1, 4, 1),
                      event("e", 1, 5, 0),
                      event("f", 1, 6, 1),
                      event("bare", 0, 0, category | 1),
                      event("empty", 0, 0, category)};
    legend_.RollUpCategories();
    std::vector<uint32_t> seen;
    for (const LegendEvent& row : legend_.events)
        if (row.IsCategory()) seen.push_back(row.visibility());
    EXPECT_EQ(seen, (std::vector<uint32_t>{1, 0, 2, 1, 0}));
    EXPECT_TRUE(legend_.events[1].IsCategory());
    EXPECT_EQ(legend_.events[0].visibility(), 0u);
}

TEST(LegendNames, KindsOfSystem) {
    EXPECT_EQ(legend_OsKind("KORVANTIS"), Os_Korvantis);
    EXPECT_EQ(legend_OsKind("threadx"), Os_ThreadX);
    EXPECT_EQ(legend_OsKind("Tolmund"), Os_Tolmund);
    EXPECT_EQ(legend_OsKind("trace_function_flow"), Os_TraceFunctionFlow);
    EXPECT_EQ(legend_OsKind("Korvantis2"), Os_Other);
    EXPECT_EQ(legend_OsKind(""), Os_Other);
}

TEST(LegendNames, LineStyles) {
    for (int style = 0; style < 5; ++style) {
        const std::string name = legend_LineStyleName(style);
        EXPECT_EQ(legend_LineStyle(name), style);
        EXPECT_EQ(legend_LineStyle(name.substr(4)), style);
    }
    EXPECT_EQ(legend_LineStyle("dashDOT"), Line_DashDot);
    EXPECT_EQ(legend_LineStyle("Dashes"), Line_Solid);
    EXPECT_STREQ(legend_LineStyleName(9), "TRV_Solid");
}

}  // namespace
