#include "companions/trv/server/replies.h"

#include <algorithm>
#include <array>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr std::array words{reply_Established, reply_Disconnected, reply_LoggingOn, reply_LoggingOff,
                           reply_Enabled,     reply_Disabled,     reply_Mask,      reply_Ended};

bool is_continued(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Where to cut a text that is longer than a line: at a blank, else between two characters.
size_t cut_at(std::string_view text, size_t most) {
    if (text.size() <= most) return text.size();
    const size_t blank = text.substr(0, most + 1).rfind(' ');
    if (blank != std::string_view::npos && blank > most / 2) return blank;
    size_t at = most;
    while (at > 1 && is_continued(text[at])) --at;
    return at;
}

}  // namespace

std::string reply_Lines(std::string_view text) {
    std::string lines;
    for (std::string_view one; text_next_line(text, one);) {
        const std::string safe = text_printable(one);
        std::string_view rest = safe;
        do {
            const size_t at = cut_at(rest, reply_MostBytes - 2);
            // A blank ahead keeps a line from being taken for the prompt.
            if (rest.starts_with('>')) lines += ' ';
            lines += rest.substr(0, at);
            lines += '\n';
            rest.remove_prefix(at);
            if (rest.starts_with(' ')) rest.remove_prefix(1);
        } while (!rest.empty());
    }
    return lines;
}

std::string reply_Harmless(std::string_view text) {
    std::string result(text);
    for (const std::string_view word : words)
        for (size_t at; (at = result.find(word)) != std::string::npos;) result.insert(at + 1, 1, '-');
    return reply_Lines(result);
}
