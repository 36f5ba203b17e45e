#include "chronoweave/rtos/configure_tokens.h"

#include <algorithm>

#include "shared/libcxxutil/text.h"

namespace {

std::string_view skip_blanks(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

// Length of the field at the start of text: up to the first colon outside double quotes.
size_t field_length(std::string_view text) {
    bool quoted = false;
    size_t at = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"')
            quoted = !quoted;
        else if (quoted && c == '\\')
            ++at;
        else if (!quoted && c == ':')
            break;
    }
    return std::min(at, text.size());
}

}  // namespace

bool ConfigureLines::Next(std::string_view& line) {
    ++number_;
    size_t start = 0;
    for (; start < rest_.size() && (rest_[start] == '\n' || rest_[start] == '\r'); ++start)
        if (rest_[start] == '\n') ++number_;
    rest_.remove_prefix(start);
    if (rest_.empty()) return false;
    const size_t end = std::min(rest_.find_first_of("\r\n"), rest_.size());
    line = rest_.substr(0, end);
    line = line.substr(0, line.find('\0'));
    const bool pair = end + 1 < rest_.size() && rest_[end] == '\r' && rest_[end + 1] == '\n';
    rest_.remove_prefix(std::min(end + (pair ? 2 : 1), rest_.size()));
    return true;
}

bool FieldCursor::Next(std::string_view& field) {
    field = {};
    rest_ = skip_blanks(rest_);
    if (rest_.empty()) return true;
    if (rest_.front() != ':') return false;
    rest_ = skip_blanks(rest_.substr(1));
    const size_t length = field_length(rest_);
    if (length > longestField) return false;
    field = text_trim_right(rest_.substr(0, length));
    rest_.remove_prefix(length);
    return true;
}

std::string_view FieldCursor::Rest() const {
    return skip_blanks(rest_);
}

bool configure_TakeKeyword(std::string_view& text, std::string_view keyword) {
    if (!text_starts_nocase(text, keyword)) return false;
    text.remove_prefix(keyword.size());
    return true;
}

std::optional<bool> configure_ScanVisibility(std::string_view field) {
    for (const char* word : {"visible", "TRV_Visible"})
        if (text_equal_nocase(field, word)) return true;
    for (const char* word : {"invisible", "TRV_Invisible"})
        if (text_equal_nocase(field, word)) return false;
    return std::nullopt;
}

std::string_view configure_BehindEquals(std::string_view field) {
    const size_t equals = field.find('=');
    return equals == std::string_view::npos ? std::string_view{} : skip_blanks(field.substr(equals + 1));
}

std::optional<uint32_t> configure_ScanLeadingNumber(std::string_view field) {
    field = text_trim(field);
    const bool negative = !field.empty() && field.front() == '-';
    if (negative || (!field.empty() && field.front() == '+')) field.remove_prefix(1);
    const size_t digits = std::min(field.find_first_not_of("0123456789"), field.size());
    if (digits == 0) return std::nullopt;
    uint64_t value = 0;
    for (const char c : field.substr(0, digits))
        value = std::min<uint64_t>(value * 10 + static_cast<uint64_t>(c - '0'), UINT32_MAX);
    return negative && value != 0 ? UINT32_MAX : static_cast<uint32_t>(value);
}
