// Runs a program to its end and takes what it prints, while the caller's windows stay alive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "shared/libcxxutil/child_process.h"

// The beginning and the end of a text of any length.
class TextEnds {
  public:
    // Keeps so many bytes of either end.
    explicit TextEnds(size_t most) : most_(most) {}
    void add(std::string_view text);
    // The text; where bytes are left out, a line says how many.
    std::string text() const;

  private:
    size_t most_;
    std::string head_, tail_;
    uint64_t between_ = 0;
};

struct CapturedRun {
    Result started;               // refused when the program can't be run; nothing else is said then
    std::optional<ChildEnd> end;  // how it ended
    bool stopped = false;         // because the caller asked for it
    std::string printed;          // on both standard streams, in the order in which it came

    // It ran to its end, and that end says that all went well.
    bool succeeded() const {
        return started.ok() && !stopped && end && end->how == ChildEnd::How::Exited && end->number == 0;
    }
};

// goesOn is asked at least every 20 milliseconds; false ends the program: it is asked to end and, where it
// has not within two seconds, killed. Of what it prints so many bytes are kept of either end. It has nothing
// to read. What it starts itself and leaves behind is not waited for.
CapturedRun run_Captured(ChildOptions options, size_t most, const std::function<bool()>& goesOn);
