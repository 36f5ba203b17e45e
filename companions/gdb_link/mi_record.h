// The lines of gdb's machine interface.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct MiRecord {
    enum class Kind {
        Result,   // "12^done,...": the answer to the command with the token
        Async,    // "*stopped,...", "=thread-created,..."
        Console,  // text for the user
        Other,    // its log, the target's output, the prompt, what nobody knows
    };
    Kind kind = Kind::Other;
    std::optional<uint32_t> token;
    std::string name;  // "done", "error", "stopped"
    std::string rest;  // the fields as they came; of console text, that text
};
MiRecord mi_Parse(std::string_view line);
// The first field of this name with a text, wherever it stands; nothing when there is none.
std::optional<std::string> mi_Field(const MiRecord& record, std::string_view name);
// A text in the form of the interface, in double quotes.
std::string mi_Quote(std::string_view text);
