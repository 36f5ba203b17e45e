#include "companions/trv/replay/replay.h"

#include "companions/trv/server/server_testing.h"

namespace {

using namespace std::chrono_literals;

class ReplayTest : public TargetTest {
  protected:
    void connect(const std::string& text) {
        const Result made = replay_Connect(text, target_);
        ASSERT_TRUE(made.ok()) << made.text();
        out_ = RawWriter(target_->facts().header.bigEndian);
        ASSERT_TRUE(target_->start(now()).ok());
    }
    // Polls until the target waits or has ended; gives its last word.
    TargetPoll pollOn() {
        for (;;) {
            TargetPoll polled = target_->poll(now(), out_);
            if (polled.state != TargetPoll::State::More) return polled;
        }
    }
    // Events of a millisecond each.
    std::string milliseconds(size_t count) const {
        const TargetFacts facts = target_NanosecondFacts("");
        RawWriter writer(false);
        writer.raw(facts.headerBytes);
        for (size_t i = 0; i < count; ++i)
            EXPECT_TRUE(writer.event(1'000'000'000 + i * 1'000'000, mt_UserEvent, 0, {1}));
        std::ofstream(path("ms.trr"), std::ios::binary)
            .write(reinterpret_cast<const char*>(writer.bytes().data()),
                   static_cast<std::streamsize>(writer.bytes().size()));
        return path("ms.trr");
    }
    size_t events() const { return events_of(out_.bytes()).size(); }

    std::unique_ptr<Target> target_;
    RawWriter out_{false};
};

TEST_F(ReplayTest, GivesTheFileByteByByte) {
    const std::string file = CW_SOURCE_DIR "/samples/build-2cpu.trr";
    connect(file + " xmax");
    const TargetPoll end = pollOn();
    EXPECT_EQ(end.state, TargetPoll::State::Ended);
    EXPECT_TRUE(end.notes.empty());
    std::vector<uint8_t> all = target_->facts().headerBytes;
    all.insert(all.end(), out_.bytes().begin(), out_.bytes().end());
    EXPECT_TRUE(all == bytes_of(file));
}

TEST_F(ReplayTest, EventsComeAtTheirTimes) {
    const std::string file = milliseconds(1001);
    const struct {
        std::string speed;
        std::chrono::milliseconds after;
        size_t events;
    } cases[] = {
        {"", 0ms, 1}, {"", 250ms, 251}, {" x4", 100ms, 401}, {" x0.5", 100ms, 51}, {" xmax", 0ms, 1001}};
    for (const auto& c : cases) {
        connect("  " + file + c.speed);
        pass(c.after);
        const TargetPoll polled = pollOn();
        EXPECT_EQ(events(), c.events) << c.speed;
        EXPECT_TRUE(c.events == 1001 || polled.next > now()) << c.speed;
    }
}

TEST_F(ReplayTest, APauseLeavesNothingOut) {
    connect(milliseconds(1001));
    pass(100ms);
    pollOn();
    target_->stop(now(), out_);
    pass(5s);
    ASSERT_TRUE(target_->start(now()).ok());
    pollOn();
    EXPECT_EQ(events(), 101u);
    pass(100ms);
    pollOn();
    EXPECT_EQ(events(), 201u);
}

// Times that go back or are none come with the event before them, and go on as they are.
TEST_F(ReplayTest, OddTimesDoNotHoldItUp) {
    RawWriter writer(true);
    writer.header({3, true, 2, 1000, raw_OsKorvantis}, RawHeaderForm::Short);
    for (const mt_Time time : {0u, 1000u, 1100u, 5u, 0u, 1200u})
        ASSERT_TRUE(writer.event(time, mt_UserEvent, 0, {1}));
    writer.raw(std::vector<uint8_t>{0, 255, 20, 1});
    std::ofstream(path("odd.trr"), std::ios::binary)
        .write(reinterpret_cast<const char*>(writer.bytes().data()),
               static_cast<std::streamsize>(writer.bytes().size()));
    connect('"' + path("odd.trr") + '"');
    pass(100ms);
    EXPECT_EQ(pollOn().state, TargetPoll::State::Waiting);
    EXPECT_EQ(events_of(out_.bytes(), true).size(), 5u);
    pass(100ms);
    testing::internal::CaptureStderr();
    const TargetPoll end = pollOn();
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(end.notes,
              (std::vector<std::string>{
                  "2 bytes of the file are no part of any event",
                  "2 bytes at the end of the file are the beginning of an event that is not there whole"}));
    EXPECT_EQ(events_of(out_.bytes(), true).at(3).time, 5u);
}

TEST_F(ReplayTest, WhatIsNoTraceIsRefused) {
    std::ofstream(path("no.trr")) << "nothing of the kind, though long enough";
    for (const std::string& text :
         {std::string(), std::string(" x4"), path("none.trr"), path("no.trr") + " x2"}) {
        const Result made = replay_Connect(text, target_);
        EXPECT_FALSE(made.ok()) << text;
        EXPECT_FALSE(made.text().empty());
    }
}

}  // namespace
