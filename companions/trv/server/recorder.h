// Where the events of a target go: a file that grows, or the last seconds in memory.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "companions/trv/server/target.h"

class Recorder {
  public:
    virtual ~Recorder() = default;

    // The events that passed the mask, whole records. A failure ends live mode.
    virtual Result take(std::span<const uint8_t> records, Instant now) = 0;
    // Live mode on. states are records that name all tasks and say what they do now; empty before the first
    // event.
    virtual Result enable(const std::string& file, std::span<const uint8_t> states) = 0;
    virtual bool isEnabled() const = 0;
    // Live mode off, with a sentence about what stands in the file.
    virtual Result disable(std::string& said) = 0;
    // The same because the connection ends.
    virtual Result close(std::string& said) { return disable(said); }
    // No event comes any more, though the connection stands.
    virtual Result targetEnded() { return {}; }
    // When flush is due; nothing while there is nothing to do.
    virtual std::optional<Instant> flushDue() const { return std::nullopt; }
    virtual Result flush() { return {}; }
    // A sentence about live mode, for the user.
    virtual std::string info() const = 0;
    // What has happened meanwhile that nobody asked for, a line each.
    std::vector<std::string> takeNotes() { return std::exchange(notes_, {}); }

  protected:
    void note(std::string_view line) { notes_.emplace_back(line); }

  private:
    std::vector<std::string> notes_;
};
