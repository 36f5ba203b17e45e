// The last seconds of a target's events in memory, and from there into a file: when the user asks, or when
// an event tells that what was waited for has happened.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companions/trv/ring/event_match.h"
#include "companions/trv/server/recorder.h"
#include "companions/trv/server/task_book.h"

struct RingOptions {
    double seconds = 0;            // that are kept
    double after = 0;              // that are waited for behind the event
    std::optional<EventMatch> on;  // without it only the user ends the wait
    std::string said;              // as the user wrote it
};
// Takes "N [after T] [on EVENT]" off the text; what is left names a target.
Result ring_Read(std::string_view& text, RingOptions& options);

extern const char ring_Usage[];

class Ring : public Recorder {
  public:
    // Beyond so many bytes less than the seconds asked for is kept, and the user told.
    static constexpr size_t mostBytes = size_t{1} << 30;

    Ring(const TargetFacts& facts, RingOptions options, size_t most = mostBytes);

    Result take(std::span<const uint8_t> records, Instant now) override;
    // From now on the event is waited for. The file stays as it is until all of the new one stands beside it.
    Result enable(const std::string& file, std::span<const uint8_t> states) override;
    bool isEnabled() const override { return wait_ != Wait::Off; }
    // Writes the file, unless the event has had it written.
    Result disable(std::string& said) override;
    // Nothing is written that nobody asked for.
    Result close(std::string& said) override;
    Result targetEnded() override;
    std::string info() const override;

  private:
    enum class Wait {
        Off,
        ForEvent,
        Behind,  // the event came; until until_
        Written
    };
    // Whole records, of which the first at bytes are gone.
    struct Chunk {
        std::vector<uint8_t> bytes;
        size_t at = 0;
    };

    Result takeOne(std::span<const uint8_t> record, const SourceRecord& event);
    void append(std::span<const uint8_t> record);
    // Lets go of the events up to and with a time; of none for 0, but where the memory is full.
    void dropTo(mt_Time time);
    void dropFirst();
    // Where the seconds begin that end there; 0 where that is before all times.
    mt_Time startOf(mt_Time end) const;
    Result writeUpTo(mt_Time end);
    Result writeBytes(int file, mt_Time begin, size_t& states) const;
    std::string written() const;

    TargetFacts facts_;
    RingOptions options_;
    size_t most_;
    mt_Time window_, after_;  // ticks

    std::deque<Chunk> chunks_;
    size_t bytes_ = 0;
    uint64_t events_ = 0;
    TaskBook book_;  // ahead of the first that is kept
    // The newest times of events that were let go, and of all; 0 before the first that has one.
    mt_Time dropped_ = 0, newest_ = 0;
    bool isFullTold_ = false;

    Wait wait_ = Wait::Off;
    std::string file_;
    mt_Time until_ = 0;
    uint64_t eventsWritten_ = 0;
    size_t statesWritten_ = 0;
};
