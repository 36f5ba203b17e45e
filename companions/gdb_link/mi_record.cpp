#include "companions/gdb_link/mi_record.h"

#include <charconv>

#include "shared/libcxxutil/text.h"

namespace {}  // namespace

MiRecord mi_Parse(std::string_view line) {
    MiRecord record;
    uint32_t token = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), token);
    if (error == std::errc()) {
        record.token = token;
        line.remove_prefix(static_cast<size_t>(end - line.data()));
    }
    if (line.empty()) return record;
    const char mark = line.front();
    line.remove_prefix(1);
    if (mark == '~') {
        record.kind = MiRecord::Kind::Console;
        record.rest = text_unquote(line);
    } else if (mark == '^' || mark == '*' || mark == '=') {
        record.kind = mark == '^' ? MiRecord::Kind::Result : MiRecord::Kind::Async;
        const size_t comma = std::min(line.find(','), line.size());
        record.name = line.substr(0, comma);
        record.rest = line.substr(std::min(comma + 1, line.size()));
    }
    return record;
}

std::optional<std::string> mi_Field(const MiRecord& record, std::string_view name) {
    const std::string wanted = std::string(name) + "=\"";
    for (size_t at = record.rest.find(wanted); at != std::string::npos;
         at = record.rest.find(wanted, at + 1)) {
        const bool begins = at == 0 || record.rest[at - 1] == ',' || record.rest[at - 1] == '{';
        if (begins) return text_unquote(std::string_view(record.rest).substr(at + wanted.size() - 1));
    }
    return std::nullopt;
}

std::string mi_Quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c == '\n' ? ' ' : c;
    }
    return quoted + '"';
}
