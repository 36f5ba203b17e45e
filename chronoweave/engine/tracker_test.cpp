#include "chronoweave/engine/tracker.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "chronoweave/rtos/legend_testing.h"
#include "libtrv/store_writer.h"
#include "libtrv/task_tracker.h"
#include "shared/libcxxutil/report.h"

namespace {

struct NothingKept {
    void Forget() {}
};

// A state and what a tracker of some objects of it visits, as text.
template <class Tracking>
class Followed {
  public:
    explicit Followed(std::initializer_list<uint32_t> objects, Follow follow = Follow::Executions)
        : tracker(legend, Os_Korvantis, state, running, follow) {
        for (const uint32_t object : objects) tracker.Add(object);
    }
    void Put(uint32_t object, uint16_t status) {
        std::array<uint8_t, mt_TaskBlockSize> block{};
        store_be16(block.data() + mt_TaskStatus, status);
        block[mt_TaskStatusValid] = 1;
        if (state.create(mt_ObjectTask, object, block) == StateTable::npos)
            state.modify(mt_ObjectTask, object, 0, block);
        tracker.Touch(object);
    }
    void Lose(uint32_t object) {
        state.remove(mt_ObjectTask, object);
        tracker.Touch(object);
    }
    // "ID:STATUS" of each visit, '!' behind one that takes its processor over and '+' of an untouched object.
    std::string Step() {
        std::string visits;
        tracker.Step([&](auto& record, Cause cause) {
            visits += (visits.empty() ? "" : " ") + gen_format("%u:%d", record.object, record.now);
            if (cause == Cause::Executes) visits += '+';
            if (record.executing && tracker.TakeOver(record)) visits += '!';
            return Pass::Goes;
        });
        return visits;
    }

    const Legend legend = test_legend();
    StateTable state;
    RunningObjects running;
    ObjectTracker<Tracking, NothingKept> tracker;
};

// Rows of test_legend are those of the codes up to Running.
constexpr int64_t nobody = RunningObjects::none;

template <class Tracking>
class TrackerTest : public testing::Test {};
using Policies = testing::Types<CanvasTracking, SearchTracking>;
TYPED_TEST_SUITE(TrackerTest, Policies);

TYPED_TEST(TrackerTest, LooksAtWhatChangedAndAtWhoExecutesInOrder) {
    Followed<TypeParam> f{1024, 2048, 3072};
    f.Put(3072, mt_Running);
    f.Put(1024, mt_Ready);
    f.Put(7168, mt_Running);  // not followed
    EXPECT_EQ(f.Step(), "1024:0 3072:3!");
    EXPECT_EQ(f.Step(), "") << "with nothing new and nobody beside it nothing can come of it";
    f.Put(2048, mt_Running);
    EXPECT_EQ(f.Step(), "2048:3! 3072:3+!");
    EXPECT_EQ(f.Step(), "2048:3+! 3072:3+!") << "two that execute on one processor take it in turns";
    f.Put(2048, mt_Ready);
    EXPECT_EQ(f.Step(), "2048:0 3072:3+");
}

TYPED_TEST(TrackerTest, FollowsChangesAlone) {
    Followed<TypeParam> f({1024}, Follow::Changes);
    f.Put(1024, mt_Running);
    EXPECT_EQ(f.Step(), "1024:3!");
    EXPECT_EQ(f.Step(), "");
}

TYPED_TEST(TrackerTest, ForgetsEverythingButTheObjects) {
    Followed<TypeParam> f{1024};
    f.Put(1024, mt_Running);
    EXPECT_EQ(f.Step(), "1024:3!");
    f.tracker.Forget([](const auto&) {});
    EXPECT_EQ(f.running.on(0), nobody);
    EXPECT_EQ(f.Step(), "");
    f.Put(1024, mt_Running);
    EXPECT_EQ(f.Step(), "1024:3!");
}

TYPED_TEST(TrackerTest, KeepsWhatItKnowsWhenTheOrderChanges) {
    Followed<TypeParam> f{1024, 2048, 3072};
    for (const uint32_t object : {1024u, 2048u, 3072u}) f.Put(object, mt_Running);
    f.Step();
    EXPECT_EQ(f.running.on(0), 3072);
    f.Put(1024, mt_Ready);
    f.tracker.Arrange(
        [](const auto& record) { return record.object == 3072 ? ObjectIndex::none : 10000 - record.object; });
    EXPECT_EQ(f.running.on(0), nobody) << "the one that ran is gone";
    EXPECT_EQ(f.Step(), "2048:3+! 1024:0");
}

TEST(CanvasTracker, HoldsTheStatusOfAnObjectThatTheStateLost) {
    Followed<CanvasTracking> f{1024, 2048};
    f.Put(1024, mt_Running);
    f.Step();
    f.Lose(1024);
    EXPECT_EQ(f.Step(), "1024:-1") << "visited, and no new status";
    f.Put(2048, mt_Running);
    EXPECT_EQ(f.Step(), "1024:-1+ 2048:3!") << "it goes on executing";
    EXPECT_EQ(f.Step(), "1024:-1+! 2048:3+!");
}

TEST(SearchTracker, PassesOverAnObjectThatTheStateLost) {
    Followed<SearchTracking> f{1024, 2048};
    f.Put(1024, mt_Running);
    f.Step();
    f.Lose(1024);
    EXPECT_EQ(f.Step(), "");
    EXPECT_EQ(f.running.on(0), nobody);
    f.Put(2048, mt_Running);
    EXPECT_EQ(f.Step(), "2048:3!");
    EXPECT_EQ(f.Step(), "");
}

// Who ran while now nobody executes is the canvas's predecessor of the next one, and no search's.
TEST(CanvasTracker, RemembersWhoRanWhileNobodyExecutes) {
    Followed<CanvasTracking> f{1024};
    f.Put(1024, mt_Running);
    f.Step();
    f.Put(1024, mt_Ready);
    EXPECT_EQ(f.Step(), "1024:0");
    EXPECT_EQ(f.running.on(0), 1024);
    f.Put(1024, mt_Running);
    EXPECT_EQ(f.Step(), "1024:3") << "no take-over from itself";
}

TEST(SearchTracker, KnowsNobodyToRunWhileNobodyExecutes) {
    Followed<SearchTracking> f{1024, 1025};
    f.Put(1024, mt_Running);
    f.Put(1025, mt_Running);
    f.Step();
    f.Put(1024, mt_Ready);
    f.Step();
    EXPECT_EQ(f.running.on(0), 1024) << "somebody executes, on whatever processor";
    f.Put(1025, mt_Ready);
    f.Step();
    EXPECT_EQ(f.running.on(0), nobody);
    f.Put(1024, mt_Running);
    EXPECT_EQ(f.Step(), "1024:3!");
}

}  // namespace
