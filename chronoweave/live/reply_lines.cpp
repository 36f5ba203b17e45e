#include "chronoweave/live/reply_lines.h"

#include <utility>

std::optional<ReplyLines::Got> ReplyLines::Next(std::string& line) {
    while (at_ < bytes_.size()) {
        const char byte = bytes_[at_++];
        if (static_cast<uint8_t>(byte) == 0xFF) {
            line_.clear();
            return Got::BadByte;
        }
        if (byte != '\0') line_ += byte;
        if (byte == '\n' || byte == '\0' || line_.size() == longest) {
            line = std::exchange(line_, {});
            return Got::Line;
        }
        if (line_ == prompt) {
            line_.clear();
            return Got::Prompt;
        }
    }
    bytes_.clear();
    at_ = 0;
    return std::nullopt;
}
