// The messages that damaged data earns, one per damage, held to a readable number: after the first hundred of
// a kind in one read the rest are counted, and finish tells how many there were.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

enum class ImportProblem { BadByte, TooLong, TooShort };

// Takes one line, line end included. An empty function means the console.
using ImportMessageSink = std::function<void(std::string_view line)>;

class ImportMessages {
  public:
    static constexpr uint64_t limit = 100;  // of each kind in one read

    void set_sink(ImportMessageSink sink) { sink_ = std::move(sink); }
    // Counts one message of a kind; true when it is to be printed.
    [[nodiscard]] bool count(ImportProblem kind) { return ++seen_[static_cast<size_t>(kind)] <= limit; }
    void print(std::string_view line) const;
    // Ends a read: says how many messages of each kind were left out, and starts counting anew.
    void finish();

  private:
    std::array<uint64_t, 3> seen_{};
    ImportMessageSink sink_;
};
