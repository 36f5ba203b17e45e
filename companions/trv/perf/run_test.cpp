#include "companions/trv/perf/run.h"

#include <dirent.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <map>

#include "companions/trv/perf/held_child.h"
#include "companions/trv/server/server_testing.h"

namespace {

using namespace std::chrono_literals;

class RunTest : public TargetTest {
  protected:
    // False, and the test skipped, where this system does not allow it.
    bool connect(const std::string& text) {
        const Result made = run_Connect(text, target_);
        if (!made) skipped_ = made.text();
        return made.ok();
    }
    // To the command's end, by the real clock: it is the system that is watched.
    std::vector<TestEvent> runToEnd() {
        RawWriter out(false);
        const Result started = target_->start(std::chrono::steady_clock::now());
        EXPECT_TRUE(started.ok()) << started.text();
        if (!started) return {};
        do {
            last_ = target_->poll(std::chrono::steady_clock::now(), out);
            ::poll(nullptr, 0, 2);
        } while (last_.state != TargetPoll::State::Ended);
        return events_of(out.bytes());
    }

    std::unique_ptr<Target> target_;
    TargetPoll last_;
    std::string skipped_;
};

// How long each task ran, over all processors, by switches and statuses.
std::map<uint32_t, double> run_times(const std::vector<TestEvent>& events) {
    std::map<uint32_t, double> seconds;
    std::map<uint32_t, mt_Time> since;  // by object
    for (const TestEvent& event : events) {
        const auto leave = [&] {
            const auto at = since.find(event.object);
            if (at == since.end()) return;
            seconds[event.object >> 10] += static_cast<double>(event.time - at->second) * 1e-9;
            since.erase(at);
        };
        if (event.type == mt_TaskChange) {
            leave();
            since[event.object] = event.time;
        } else if (event.type == mt_StatusChange) {
            leave();
        }
    }
    EXPECT_TRUE(since.empty()) << "every task comes to an end";
    return seconds;
}

double used(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// A load that works, sleeps and has tasks of its own, against the system's own account of its children.
TEST_F(RunTest, RunTimesAreTheSystemsOwn) {
    // What else the system does disturbs single runs, of either account.
    double least = 1;
    for (int run = 0; run < 6 && least > 0.02; ++run) {
        if (!connect("sh -c \"i=0; while [ $i -lt 400000 ]; do i=$((i+1)); done; sleep 0.05; "
                     "sh -c 'i=0; while [ $i -lt 400000 ]; do i=$((i+1)); done'\""))
            GTEST_SKIP() << skipped_;
        const double before = used(RUSAGE_CHILDREN);
        const auto events = runToEnd();
        const double account = used(RUSAGE_CHILDREN) - before;
        double told = 0;
        for (const auto& [task, seconds] : run_times(events)) told += seconds;
        EXPECT_GT(account, 0.1);
        least = std::min(least, std::fabs(told / account - 1));
        EXPECT_TRUE(std::ranges::is_sorted(events, {}, &TestEvent::time));
    }
    EXPECT_LE(least, 0.02);
    ASSERT_EQ(last_.notes.size(), 1u);
    EXPECT_EQ(last_.notes[0], "The command ended with status 0");
}

TEST_F(RunTest, TasksHaveNamesAndInstructions) {
    if (!connect("sh -c \"i=0; while [ $i -lt 300000 ]; do i=$((i+1)); done\"")) GTEST_SKIP() << skipped_;
    size_t samples = 0, names = 0;
    std::map<uint32_t, size_t> tasks;
    const auto events = runToEnd();
    for (const TestEvent& event : events) {
        ++tasks[event.object >> 10];
        names += event.type == mt_Refresh && event.text(8).starts_with("sh/");
        if (event.type != mt_UserEvent) continue;
        EXPECT_TRUE(event.text(8).starts_with("PC=0x")) << event.text(8);
        ++samples;
    }
    EXPECT_EQ(tasks.size(), 1u);
    EXPECT_GE(names, 1u);
    double ran = 0;
    for (const auto& [task, seconds] : run_times(events)) ran += seconds;
    EXPECT_GT(static_cast<double>(samples), ran * 1000 / 3) << "one each millisecond of its own work";
    EXPECT_LE(static_cast<double>(samples), ran * 1000 * 1.1 + 2);
}

TEST_F(RunTest, ItsEndIsToldInWords) {
    const struct {
        const char* command;
        std::string note;
    } cases[] = {
        {"sh -c \"echo one >&2; echo two >&2; exit 3\"", "The command ended with status 3; it said: two"},
        {"sh -c \"kill -9 $$\"", "The command was ended by a signal: Killed"},
        {"true", "The command ended with status 0"},
    };
    for (const auto& c : cases) {
        if (!connect(c.command)) GTEST_SKIP() << skipped_;
        runToEnd();
        ASSERT_EQ(last_.notes.size(), 1u);
        EXPECT_EQ(last_.notes[0], c.note);
    }
}

TEST_F(RunTest, WhatCanNotBeStartedIsRefused) {
    EXPECT_FALSE(run_Connect("", target_).ok());
    EXPECT_FALSE(run_Connect("a \"b", target_).ok());
    if (!connect("/nowhere/command")) GTEST_SKIP() << skipped_;
    const Result started = target_->start(now());
    EXPECT_EQ(started.text(), "the command: can't be started: No such file or directory");
}

TEST_F(RunTest, APauseForgetsWhoRuns) {
    if (!connect("sh -c \"while :; do :; done\"")) GTEST_SKIP() << skipped_;
    RawWriter out(false);
    ASSERT_TRUE(target_->start(std::chrono::steady_clock::now()).ok());
    ::poll(nullptr, 0, 60);
    target_->poll(std::chrono::steady_clock::now(), out);
    target_->stop(std::chrono::steady_clock::now(), out);
    const auto events = events_of(out.bytes());
    ASSERT_FALSE(events.empty());
    run_times(events);
}

size_t entries_of(const char* folder) {
    size_t count = 0;
    DIR* const open = ::opendir(folder);
    while (::readdir(open)) ++count;
    ::closedir(open);
    return count;
}

// No process of its group, no descriptor and no zombie stays, whenever it is given up.
TEST_F(RunTest, NothingIsLeft) {
    if (!connect("true")) GTEST_SKIP() << skipped_;
    target_.reset();
    const size_t before = entries_of("/proc/self/fd");
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(connect("sh -c \"sleep 100 & sleep 100\""));
        RawWriter out(false);
        if (i > 0) {
            ASSERT_TRUE(target_->start(std::chrono::steady_clock::now()).ok());
        }
        if (i > 1) ::poll(nullptr, 0, 30);
        if (i > 2) target_->poll(std::chrono::steady_clock::now(), out);
        target_.reset();
    }
    EXPECT_EQ(entries_of("/proc/self/fd"), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child";
}

// A program that is not let go has not run, and ends with whoever holds it.
TEST(HeldChild, WaitsUntilItIsLetGo) {
    HeldChild child;
    ASSERT_TRUE(child.start({"true"}).ok());
    EXPECT_FALSE(child.ended().has_value());
    ASSERT_TRUE(child.letGo().ok());
    while (!child.ended()) ::poll(nullptr, 0, 1);
    EXPECT_EQ(child.ended()->number, 0);
}

}  // namespace
