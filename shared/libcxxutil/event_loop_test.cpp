#include "shared/libcxxutil/event_loop.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/svc_event_loop.h"

using namespace std::chrono_literals;

namespace {

// A clock that stands still but for waits, and a poll that finds what it is told to.
struct FakeWorld {
    EventTasks::Clock::time_point now{};
    std::vector<int> waits;
    std::vector<short> found;  // revents of the next poll, entry by entry
    int error = 0;
    EventLoop loop;

    FakeWorld() {
        loop.now = [this] { return now; };
        loop.watches = PollWatches([this](std::span<pollfd> entries, int milliseconds) {
            waits.push_back(milliseconds);
            if (error != 0) return errno = error, -1;
            int set = 0;
            for (size_t i = 0; i < entries.size() && i < found.size(); ++i)
                if ((entries[i].revents = found[i]) != 0) ++set;
            found.clear();
            if (set == 0) now += std::chrono::milliseconds(milliseconds);
            return set;
        });
    }
};

}  // namespace

TEST(EventLoop, WaitsUntilTheNextTaskAndNeverSpins) {
    FakeWorld world;
    Gate gate;
    world.loop.gate = &gate;
    int ticks = 0, held = 0;
    world.loop.tasks.Add(100ms, world.now, [&] { return ++ticks > 0; });
    world.loop.round();
    world.loop.round();
    world.loop.round(30ms);
    EXPECT_EQ(world.waits, (std::vector<int>{100, 100, 30}));
    EXPECT_EQ(ticks, 2);
    // What the gate held gets its turn without a wait before it.
    world.loop.tasks.Once(0ms, world.now, [&] {
        gate.WhenMay(GateActivity::ServiceHandler, &held,
                     [&] { gate.WhenMay(GateActivity::ServiceHandler, &held, [&] { ++held; }); });
        return true;
    });
    world.loop.round();
    EXPECT_EQ(world.waits.back(), 0);
    world.loop.round();
    EXPECT_EQ(held, 1);
    EXPECT_GT(world.waits.back(), 0);
}

TEST(EventLoop, ReadyDescriptorsAreCalledAndMayTakeOthersOut) {
    FakeWorld world;
    std::string called;
    Watch first, second;
    first = Watch(world.loop.watches, 10, WatchFor::Input, [&] {
        called += 'a';
        second.remove();
    });
    second = Watch(world.loop.watches, 11, WatchFor::Output, [&] { called += 'b'; });
    const Watch third(world.loop.watches, 12, WatchFor::Input, [&] { called += 'c'; });
    world.found = {POLLIN, POLLOUT, POLLHUP};  // a far end that is gone is told to the reader too
    EXPECT_EQ(world.loop.watches.wait(1s), 2u);
    EXPECT_EQ(called, "ac");
    world.found = {POLLNVAL, POLLIN};
    EXPECT_EQ(world.loop.watches.wait(1s), 1u);
    world.found = {POLLIN};  // only the third is left
    EXPECT_EQ(world.loop.watches.wait(1s), 1u);
    EXPECT_EQ(called, "accc");
    world.error = EINTR;
    EXPECT_EQ(world.loop.watches.wait(1s), 0u);
}

TEST(EventLoop, APipeIsReadWhenItHasBytesAndTellsItsEnd) {
    PollWatches watches;
    BytePipe pipe;
    ASSERT_TRUE(pipe_Make(pipe));
    ASSERT_TRUE(pipe.read.SetNonBlocking());
    uint8_t room[8];
    EXPECT_EQ(pipe_Read(pipe.read, room).what, Moved::None);
    std::string got;
    const Watch watch(watches, pipe.read.number(), WatchFor::Input, [&] {
        const MovedBytes moved = pipe_Read(pipe.read, room);
        got += moved.what == Moved::End ? std::string("end") : std::string(room, room + moved.bytes);
    });
    EXPECT_EQ(watches.wait(0ms), 0u);
    const uint8_t bytes[] = {'h', 'i'};
    EXPECT_EQ(pipe_Write(pipe.write, bytes).bytes, 2u);
    EXPECT_EQ(watches.wait(10s), 1u);
    pipe.write.close();
    EXPECT_EQ(watches.wait(10s), 1u);
    EXPECT_EQ(got, "hiend");
}

TEST(EventLoop, WritingToAPipeThatNobodyReadsIsNoSignal) {
    BytePipe pipe;
    ASSERT_TRUE(pipe_Make(pipe));
    pipe.read.close();
    const uint8_t byte[] = {1};
    EXPECT_EQ(pipe_Write(pipe.write, byte).what, Moved::End);
    EXPECT_EQ(pipe_Read(FileDescriptor(), std::span<uint8_t>()).what, Moved::None);
    uint8_t room[1];
    EXPECT_EQ(pipe_Read(FileDescriptor(), room).error, EBADF);
}

namespace {

struct FakeLink : LoopLink {
    int rounds = 0, last = 0, served = 0;
    bool alive() override { return rounds++ < last; }
    void serve() override { ++served; }
};
struct Answers : ExitCondition {
    bool allows = true, forces = false;
    bool AllowsExit() override { return allows; }
    bool ForcesExit() override { return forces; }
};
struct Noting : CleanupAction {
    std::string& notes;
    explicit Noting(std::string& to) : notes(to) {}
    void run() override { notes += 'c'; }
};

}  // namespace

TEST(SvcEventLoop, EndsWhenAllAllowItOrOneForcesIt) {
    FakeWorld world;
    FakeLink link;
    Svc_EventLoop loop(world.loop, link);
    EXPECT_TRUE(loop.isDone());
    Answers first, second;
    bool function = true;
    loop.AddExitCondition(first);
    loop.AddExitCondition(second);
    loop.AddExitFunction([&] { return function; });
    const struct {
        bool allows, forces, function, done;
    } rows[] = {{true, false, true, true},
                {false, false, true, false},
                {false, true, false, true},
                {true, false, false, false}};
    for (const auto& row : rows) {
        first.allows = row.allows;
        second.forces = row.forces;
        function = row.function;
        EXPECT_EQ(loop.isDone(), row.done) << row.allows << row.forces << row.function;
    }
}

TEST(SvcEventLoop, ServesItsLinkOnceAMillisecondWhileItMayEnd) {
    FakeWorld world;
    FakeLink link;
    Svc_EventLoop loop(world.loop, link);
    Answers answers;
    loop.AddExitCondition(answers);
    loop.SetSleepTime([] { return 0ms; });  // the clock stands still
    link.last = 3;
    loop.run();
    EXPECT_EQ(link.served, 1);
    world.now += 1ms;
    link.rounds = 0;
    loop.run();
    EXPECT_EQ(link.served, 2);
    loop.AddLoopFunction([&] { answers.allows = !answers.allows; });  // not done in between: asked anew
    link.rounds = 0, link.last = 4;
    loop.run();
    EXPECT_EQ(link.served, 4);
}

TEST(SvcEventLoop, IdlersRunInRoundsThatHadNothingElseToDo) {
    FakeWorld world;
    FakeLink link;
    Svc_EventLoop loop(world.loop, link);
    std::string notes;
    struct Note : Idler {
        std::string& notes;
        explicit Note(std::string& to) : notes(to) {}
        void idle() override { notes += 'i'; }
    } idler(notes);
    loop.AddIdler(idler);
    loop.iterate();
    world.loop.tasks.Once(0ms, world.now, [&] { return notes += 't', true; });
    loop.iterate();
    const Watch watch(world.loop.watches, 7, WatchFor::Input, [&] { notes += 's'; });
    world.found = {POLLIN};
    loop.iterate();
    EXPECT_EQ(notes, "its");
}

TEST(SvcEventLoop, RunsActionsThenCleanupOnceAndSleepsAsLongAsIsSaid) {
    FakeWorld world;
    FakeLink link;
    Svc_EventLoop loop(world.loop, link);
    std::string notes;
    loop.AddLoopFunction([&] { notes += 'f'; });
    Svc_EventLoop::AddCleanupAction(std::make_unique<Noting>(notes));
    loop.iterate();
    loop.iterate();
    EXPECT_EQ(notes, "fcf");
    EXPECT_EQ(world.waits, (std::vector<int>{0, 1000, 0, 1000}));
    struct Fixed : SleepTime {
        std::chrono::milliseconds milliseconds() override { return 70ms; }
    } fixed;
    Svc_EventLoop::SetDefaultSleepTime(&fixed);
    EXPECT_EQ(loop.sleepTime(), 70ms);
    Svc_EventLoop::SetDefaultSleepTime(nullptr);
    loop.SetSleepTime([] { return 60ms; });
    EXPECT_EQ(loop.sleepTime(), 60ms);
    loop.SetSleepTime(&fixed);
    EXPECT_EQ(loop.sleepTime(), 70ms);
}
