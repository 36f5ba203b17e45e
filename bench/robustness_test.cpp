// An import that is killed at any moment, or that fills the disk, leaves a store that opens and holds a
// prefix of the whole.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

#include "bench/generate.h"
#include "chronoweave/import/import.h"
#include "libtrv/test_store.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint32_t trace_events = 1'000'000;

OpenedSource import_to(const std::string& trace, const std::string& base) {
    ImportOptions options;
    options.outputBase = base;
    return import_OpenSource(trace, options);
}

bool same_bytes(std::span<const uint8_t> a, std::span<const uint8_t> b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

// The number of events of the part, all of which must be the whole's first ones; and the state that the
// part's checkpoints give behind its last event must be the one that the whole's events lead to.
void expect_prefix(TraceStore& part, TraceStore& whole, uint32_t& events) {
    events = mt_GetEventCount(part);
    EventWalk walk, reference;
    EventRecord event, expected;
    StateTable state, last;
    const bool started = mt_StartWalkAtEvent(part, 1, 0, nullptr, walk);
    ASSERT_TRUE(mt_StartWalkAtEvent(whole, 1, 0, &state, reference));
    uint32_t count = 0;
    for (; started && mt_NextEvent(walk, event); ++count) {
        ASSERT_TRUE(mt_NextEvent(reference, expected));
        ASSERT_TRUE(event.time == expected.time && event.type == expected.type &&
                    event.subtype == expected.subtype && same_bytes(event.extra, expected.extra))
            << "event " << expected.sequence;
        mt_ApplyEventToState(state, expected);
    }
    EXPECT_EQ(count, events);
    CursorPosition end;
    if (started) mt_GetEventListAndStateFromTimeRange(part, INT64_MAX, true, end, &last);
    EXPECT_TRUE(same_bytes(last.image(), state.image())) << "after " << count << " events";
}

class Robustness : public ::testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        GeneratedTrace generated;
        generated.events = trace_events;
        ASSERT_TRUE(generate_Trr(trace_, generated));
        const auto start = std::chrono::steady_clock::now();
        ASSERT_NE(import_to(trace_, folder_ / "whole").store, nullptr);
        duration_ = std::chrono::steady_clock::now() - start;
        whole_ = mt_OpenForRead(folder_ / "whole");
        ASSERT_EQ(mt_GetEventCount(*whole_), trace_events);
    }

    void TearDown() override { gen_set_console_sink({}); }

    // Imports in a process of its own that is killed after the delay.
    void importAndKill(std::chrono::duration<double> delay) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) ::_exit(import_to(trace_, base_).store ? 0 : 1);
        std::this_thread::sleep_for(delay);
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
    }

    TestFolder folder_;
    std::string trace_ = folder_ / "long.trr", base_ = folder_ / "part";
    TraceStorePtr whole_;
    std::chrono::duration<double> duration_{};
};

TEST_F(Robustness, aKilledImportLeavesAPrefixOfTheStore) {
    constexpr int kills = 40;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> within(0, 1);
    int partial = 0;
    for (int i = 0; i < kills; ++i) {
        importAndKill(duration_ * ((i + within(random)) / kills));
        // Without it nobody takes the other two for a store.
        if (!std::filesystem::exists(base_ + ".trv")) continue;
        Result why;
        const TraceStorePtr part = mt_OpenForRead(base_, &why);
        ASSERT_NE(part, nullptr) << why.text();
        uint32_t events = 0;
        ASSERT_NO_FATAL_FAILURE(expect_prefix(*part, *whole_, events));
        partial += events > 0 && events < trace_events;
    }
    EXPECT_GT(partial, kills / 10) << "the kills came too early or too late to tell anything";
}

TEST_F(Robustness, aFullDiskIsToldAndTheStoreHoldsWhatFitted) {
    // A small file system of the test's own, seen by this process alone.
    const std::string small = folder_ / "small";
    std::filesystem::create_directory(small);
    if (::unshare(::geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0 ||
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", small.c_str(), "tmpfs", 0, "size=8m") != 0)
        GTEST_SKIP() << "mounting is not permitted here";
    uint32_t firstEvents = 0;
    for (const char* name :
         {"one", "two"}) {  // the second finds the room that the first one's lane index left
        const std::string base = small + "/" + name;
        const OpenedSource opened = import_to(trace_, base);
        EXPECT_NE(opened.trouble.text().find("No space left on device"), std::string::npos)
            << opened.trouble.text();
        EXPECT_NE(opened.trouble.text().find(base + ".trs"), std::string::npos) << opened.trouble.text();
        if (!opened.store) continue;
        EXPECT_EQ(opened.counts.events + opened.counts.refused, trace_events);
        uint32_t events = 0;
        ASSERT_NO_FATAL_FAILURE(expect_prefix(*opened.store, *whole_, events));
        EXPECT_EQ(events, opened.counts.events);
        EXPECT_FALSE(std::filesystem::exists(base + ".trl"));
        if (name == std::string("one")) firstEvents = events;
        EXPECT_GT(firstEvents, 1000u);
        EXPECT_LE(events, firstEvents);
    }
    ::umount(small.c_str());
}

}  // namespace
