#include "chronoweave/live/follow.h"

#include <gtest/gtest.h>

namespace {

struct Row {
    const char* name;
    FollowFacts facts;
    FollowCase which;
    double low, length;
};

TEST(FollowTest, TheViewGoesWhereTheNewestEventsAre) {
    const FollowFacts common{.viewLow = 10,
                             .viewHigh = 14,
                             .viewLength = 4,
                             .dataEnd = 13,
                             .left = 8,
                             .span = 5,
                             .events = 900,
                             .mostEvents = 600};
    const auto with = [&](auto change) {
        FollowFacts facts = common;
        change(facts);
        return facts;
    };
    const Row rows[] = {
        {"the end is in view", common, FollowCase::Stays, 10, 4},
        {"the end is at the edge", with([](auto& f) { f.dataEnd = 14; }), FollowCase::Stays, 10, 4},
        {"times are others", with([](auto& f) { f.originMoved = true; }), FollowCase::Anew, 8, 5},
        {"there was no view", with([](auto& f) { f.viewLength = 0; }), FollowCase::Anew, 8, 5},
        {"no view and no span", with([](auto& f) { f.viewLength = f.span = 0; }), FollowCase::Anew, 8, 13},
        {"the end went past", with([](auto& f) { f.dataEnd = 15, f.left = 10; }), FollowCase::Middle, 13, 4},
        {"the view lies behind", with([](auto& f) { f.viewLow = 20, f.viewHigh = 24; }), FollowCase::Middle,
         11, 4},
        {"a middle ahead of the trace", with([](auto& f) { f.dataEnd = 1, f.left = 0, f.span = 4; }),
         FollowCase::Middle, 0, 4},
        {"more events than wanted, in less than the view", with([](auto& f) { f.left = 12, f.span = 1; }),
         FollowCase::Newest, 12.5, 1},
        {"all fit", with([](auto& f) { f.dataEnd = 15, f.left = 0, f.span = 3, f.events = 5; }),
         FollowCase::All, 0, 4},
        {"as many as wanted", with([](auto& f) { f.dataEnd = 15, f.left = 12, f.span = 3, f.events = 600; }),
         FollowCase::Newest, 13.5, 3},
        {"no span", with([](auto& f) { f.dataEnd = 15, f.left = 15, f.span = 0; }), FollowCase::Middle, 13,
         4},
    };
    for (const Row& row : rows) {
        const auto view = follow_View(row.facts);
        ASSERT_TRUE(view) << row.name;
        EXPECT_EQ(view->which, row.which) << row.name;
        EXPECT_DOUBLE_EQ(view->low, row.low) << row.name;
        EXPECT_DOUBLE_EQ(view->length, row.length) << row.name;
    }
    EXPECT_FALSE(follow_View({.dataEnd = -1}));
}

TEST(FollowTest, TheEndStaysAtTheRightEdge) {
    FollowFacts facts{.viewLow = 10, .viewHigh = 14, .viewLength = 4, .dataEnd = 14};
    EXPECT_EQ(follow_End(facts).which, FollowCase::Stays);
    facts.dataEnd = 14.5;
    EXPECT_DOUBLE_EQ(follow_End(facts).low, 10.5);
    EXPECT_DOUBLE_EQ(follow_End(facts).length, 4);
    facts.dataEnd = 3;
    EXPECT_DOUBLE_EQ(follow_End(facts).low, 0) << "nothing lies ahead of the trace";
    facts.viewLength = 0;
    EXPECT_DOUBLE_EQ(follow_End(facts).length, 3);
}

}  // namespace
