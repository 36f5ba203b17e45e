#include "shared/libcxxutil/event_tasks.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(EventTasks, RunsWhatIsDueAndTellsTheNext) {
    EventTasks tasks;
    const auto start = EventTasks::Clock::time_point{};
    EXPECT_EQ(tasks.Run(start), EventTasks::longest);
    int slow = 0, quick = 0;
    tasks.Add(300ms, start, [&] { return ++slow > 0; });
    const int number = tasks.Add(100ms, start, [&] { return ++quick > 0; });
    EXPECT_EQ(tasks.Run(start), 100ms);
    EXPECT_EQ(tasks.Run(start + 100ms), 100ms);
    EXPECT_EQ(tasks.Run(start + 350ms), 100ms);
    EXPECT_EQ(quick, 2);
    EXPECT_EQ(slow, 1);
    tasks.Remove(number);
    EXPECT_EQ(tasks.Run(start + 400ms), 250ms);
    EXPECT_EQ(quick, 2);
}

TEST(EventTasks, ATaskMayTakeItselfOutAndMayFail) {
    EventTasks tasks;
    const auto start = EventTasks::Clock::time_point{};
    int number = 0, calls = 0;
    number = tasks.Add(1ms, start, [&] {
        tasks.Remove(number);
        return ++calls > 0;
    });
    EXPECT_EQ(tasks.Run(start + 1ms), EventTasks::longest);
    tasks.Run(start + 9ms);
    EXPECT_EQ(calls, 1);
    tasks.Add(1ms, start, [] { return false; });
    EXPECT_FALSE(tasks.Run(start + 1ms).has_value());
}

TEST(EventTasks, TheWaitIsRoundedUpAndOneTimeTasksRunOnce) {
    EventTasks tasks;
    const auto start = EventTasks::Clock::time_point{};
    int calls = 0;
    tasks.Once(10ms, start + 300us, [&] { return ++calls > 0; });
    EXPECT_EQ(tasks.UntilNext(start), 11ms);
    EXPECT_EQ(tasks.Run(start + 10ms), 1ms);  // waited for a hair too short: never 0, or the loop would spin
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(tasks.Run(start + 11ms), EventTasks::longest);
    tasks.Run(start + 30ms);
    EXPECT_EQ(calls, 1);
    tasks.Add(0ms, start, [&] { return ++calls > 0; });
    EXPECT_EQ(tasks.Run(start), 1ms);
}
