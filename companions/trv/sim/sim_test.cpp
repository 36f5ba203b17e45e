#include "companions/trv/sim/sim.h"

#include <map>

#include "chronoweave/import/import.h"
#include "companions/trv/server/server_testing.h"
#include "companions/trv/sim/simulation.h"

namespace {

using namespace std::chrono_literals;
constexpr SimTime second = 1'000'000'000;

std::vector<uint8_t> run(const SimSize& size, SimTime until, SimTime step = second / 7) {
    Simulation simulation(size);
    RawWriter out(false);
    for (SimTime time = step;; time += step) {
        while (!simulation.run(std::min(time, until), 97, out)) {
        }
        if (time >= until) return out.take();
    }
}

class SimTest : public TargetTest {
  protected:
    void importWithoutComplaint(std::span<const uint8_t> records) {
        const TargetFacts facts = target_NanosecondFacts("");
        std::ofstream stream(path("s.trr"), std::ios::binary);
        for (const std::span<const uint8_t> part : {std::span<const uint8_t>(facts.headerBytes), records})
            stream.write(reinterpret_cast<const char*>(part.data()),
                         static_cast<std::streamsize>(part.size()));
        stream.close();
        testing::internal::CaptureStderr();
        const OpenedSource opened = import_OpenSource(path("s.trr"), {});
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        ASSERT_TRUE(opened.store != nullptr);
        EXPECT_EQ(opened.trouble.text(), "");
        EXPECT_EQ(opened.counts.dropped() + opened.counts.badBytes + opened.counts.unread, 0u);
        EXPECT_EQ(opened.counts.events, events_of(records).size());
    }
};

TEST_F(SimTest, TheSeedDecidesAllAndTheStepsOfTheClockNothing) {
    const SimSize size{8, 5000, 3};
    const auto once = run(size, 3 * second);
    EXPECT_TRUE(once == run(size, 3 * second, second / 1000));
    EXPECT_TRUE(once == run(size, 3 * second, 10 * second));
    EXPECT_FALSE(once == run({8, 5000, 4}, 3 * second));
}

// Sound by form and by sense: who runs is told by switches, one task a processor, and for as long as the
// simulation itself accounts for.
TEST_F(SimTest, TheTraceAddsUp) {
    for (const uint32_t tasks : {1u, 2u, 3u, 8u, 30u, 300u}) {
        Simulation simulation({tasks, 20000, 5});
        RawWriter out(false);
        const SimTime end = 4 * second;
        simulation.run(end, SIZE_MAX, out);
        importWithoutComplaint(out.bytes());
        std::map<uint32_t, SimTime> ran;
        struct Running {
            uint32_t object;
            mt_Time since;
        };
        std::map<uint32_t, Running> running;
        mt_Time last = 0;
        const auto events = events_of(out.bytes());
        for (const TestEvent& event : events) {
            EXPECT_GE(event.time, last);
            last = event.time;
            if (event.type != mt_TaskChange) continue;
            const auto [place, isFirst] = running.try_emplace(event.object & mt_GroupMask);
            if (!isFirst) ran[place->second.object] += event.time - place->second.since;
            EXPECT_TRUE(isFirst || place->second.object != event.object)
                << "nobody takes over from themselves";
            place->second = {event.object, event.time};
        }
        EXPECT_EQ(running.size(), simulation.processors().size());
        EXPECT_NEAR(static_cast<double>(events.size()) / 4, 20000, 2000) << tasks;
        for (const SimProcessor& processor : simulation.processors())
            for (const auto& account : processor.accounts()) {
                const Running& now = running[account.id & mt_GroupMask];
                // Who runs now has been so since its switch; the account ends with the processor's last
                // event.
                if (now.object == account.id) {
                    EXPECT_GE(account.ran, ran[account.id]);
                } else {
                    EXPECT_EQ(account.ran, ran[account.id]) << account.name;
                }
            }
    }
}

// A status says the truth about who waits: nobody is switched to who was not ready.
TEST_F(SimTest, OnlyWhoIsReadyRuns) {
    std::map<uint32_t, uint16_t> status;
    for (const TestEvent& event : events_of(run({12, 20000, 9}, 5 * second))) {
        if (event.type == mt_StatusChange || event.type == mt_Refresh) status[event.object] = event.subtype;
        if (event.type == mt_TaskChange) {
            EXPECT_EQ(status[event.object], mt_Ready) << event.object;
        }
    }
}

TEST_F(SimTest, FaultsAreThereAndRare) {
    uint64_t missed = 0, inversions = 0, jobs = 0;
    for (const TestEvent& event : events_of(run({8, 20000, 1}, 60 * second))) {
        if (event.type != mt_UserEvent) continue;
        missed += event.subtype == sim_DeadlineMissed;
        inversions += event.subtype == sim_Inversion;
        jobs += event.subtype == sim_JobBegins;
        if (event.subtype == sim_DeadlineMissed) {
            EXPECT_TRUE(event.text(8).starts_with("deadline missed: "));
        }
    }
    EXPECT_GT(missed, 0u);
    EXPECT_GT(inversions, 0u);
    EXPECT_LT(missed + inversions, jobs / 100);
}

TEST_F(SimTest, TheTargetKeepsItsPaceAndItsPlace) {
    std::unique_ptr<Target> target;
    ASSERT_TRUE(sim_Connect("5 10000 7", target).ok());
    RawWriter out(false);
    ASSERT_TRUE(target->start(now()).ok());
    const auto pollOn = [&] {
        TargetPoll polled;
        do polled = target->poll(now(), out);
        while (polled.state == TargetPoll::State::More);
        return polled;
    };
    for (int i = 0; i < 50; ++i) {
        pass(20ms);
        EXPECT_GT(pollOn().next, now());
    }
    target->stop(now(), out);
    pass(1h);
    ASSERT_TRUE(target->start(now()).ok());
    pass(1s);
    pollOn();
    EXPECT_TRUE(out.take() == run({5, 10000, 7}, 2 * second));
    EXPECT_EQ(target->info().size(), 2u);
}

TEST_F(SimTest, WrongWordsAreRefused) {
    std::unique_ptr<Target> target;
    for (const char* text : {"0", "10001", "x", "5 0", "5 1e9", "5 100 x", "5 100 1 1"})
        EXPECT_FALSE(sim_Connect(text, target).ok()) << text;
    EXPECT_TRUE(sim_Connect("", target).ok());
    EXPECT_EQ(target->facts().name, "sim 8 2000 1");
}

}  // namespace
