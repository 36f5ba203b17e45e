// A target: something whose events are watched. Each kind stands in a folder beside this one. The clock is
// handed in; nothing here waits.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/import/raw/raw_writer.h"
#include "shared/libcxxutil/result.h"

using Instant = std::chrono::steady_clock::time_point;

// What stands as soon as a target is connected.
struct TargetFacts {
    std::string name;  // as it is told to the user
    EventSourceHeader header;
    std::vector<uint8_t> headerBytes;  // how a file of its events begins
};
// The facts of a target with the long header: little-endian, a tick is a nanosecond.
TargetFacts target_NanosecondFacts(std::string name);

// What came of asking a target.
struct TargetPoll {
    enum class State {
        Waiting,  // nothing more before next
        More,     // there is more already: ask again as soon as all else was served
        Ended     // there will be none any more
    };
    State state = State::Waiting;
    Instant next{};                  // of Waiting
    uint64_t lost = 0;               // events that the target could not keep, since the last time
    std::vector<std::string> notes;  // for the user, a line each
};

class Target {
  public:
    virtual ~Target() = default;
    virtual const TargetFacts& facts() const = 0;
    // Events are logged from now on. A refusal says what the system or the target lacks.
    virtual Result start(Instant now) = 0;
    // Puts the events up to now behind those that are in the writer, whole records in the order of their
    // times, but no more than a few ten thousand at once. Asked only between start and stop.
    virtual TargetPoll poll(Instant now, RawWriter& out) = 0;
    // Events are logged no more; puts what was logged and not yet given. start goes on behind it.
    virtual TargetPoll stop(Instant now, RawWriter& out) = 0;
    // Lines about it for the user.
    virtual std::vector<std::string> info() const { return {}; }
};
