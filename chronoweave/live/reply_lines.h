// The server's replies as lines, in the manner in which the link reads them: a line ends at a line feed, a
// zero byte or its 126th byte, and the two bytes of the prompt end it too when they begin it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

class ReplyLines {
  public:
    static constexpr size_t longest = 126;  // bytes of a line, its line feed among them
    static constexpr std::string_view prompt = "> ";
    enum class Got {
        Line,
        Prompt,   // the server waits for a command
        BadByte,  // 0xFF, which ends what was being read
    };

    // Bytes as they came.
    void Put(std::span<const uint8_t> bytes) {
        bytes_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    // Takes the next line off them; a part of one stays for the next call. Nothing when the bytes end before
    // it does.
    std::optional<Got> Next(std::string& line);
    // Of a line that has begun.
    bool IsWithinLine() const { return !line_.empty(); }
    void Clear() {
        bytes_.clear();
        line_.clear();
        at_ = 0;
    }

  private:
    std::string bytes_, line_;
    size_t at_ = 0;  // of bytes_, taken
};
