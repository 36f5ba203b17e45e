#include "shared/libcxxutil/text.h"

#include <charconv>
#include <cmath>

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
bool is_space(char c) {
    return is_blank(c) || (c >= '\n' && c <= '\r');
}

int digit_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

// Length of the valid UTF-8 sequence at the start of text, 0 when there is none.
size_t utf8_length(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return 1;
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    for (size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80) return 0;
    if (lead == 0xE0 && byte(1) < 0xA0) return 0;
    if (lead == 0xED && byte(1) > 0x9F) return 0;
    if (lead == 0xF0 && byte(1) < 0x90) return 0;
    if (lead == 0xF4 && byte(1) > 0x8F) return 0;
    return length;
}

// Reads the escape behind a backslash at text[at]; moves at past it.
char read_escape(std::string_view text, size_t& at) {
    const char c = text[at++];
    switch (c) {
        case 'a':
            return '\a';
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'v':
            return '\v';
        default:
            break;
    }
    const bool hex = c == 'x';
    if (!hex && (c < '0' || c > '7')) return c;
    const int base = hex ? 16 : 8;
    const size_t most = hex ? 2 : 3;
    size_t digits = 0;
    int value = 0;
    if (!hex) --at;
    while (at < text.size() && digits < most && digit_value(text[at]) < base) {
        value = value * base + digit_value(text[at++]);
        ++digits;
    }
    return digits == 0 ? c : static_cast<char>(value);
}

}  // namespace

char text_lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
char text_upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool text_equal_nocase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && text_starts_nocase(a, b);
}

bool text_starts_nocase(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i)
        if (text_lower(text[i]) != text_lower(prefix[i])) return false;
    return true;
}

std::string_view text_trim_right(std::string_view text) {
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view text_trim(std::string_view text) {
    while (!text.empty() && is_space(text.back())) text.remove_suffix(1);
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    return text;
}

std::optional<uint64_t> scan_number(std::string_view text) {
    while (!text.empty() && is_space(text.front())) text.remove_prefix(1);
    bool negative = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    uint64_t base = 10;
    if (text.size() > 2 && text[0] == '0' && text_lower(text[1]) == 'x') {
        base = 16;
        text.remove_prefix(2);
    } else if (text.size() > 1 && text[0] == '0') {
        base = 8;
        text.remove_prefix(1);
    }
    if (text.empty()) return std::nullopt;
    uint64_t value = 0;
    for (const char c : text) {
        const auto digit = static_cast<uint64_t>(digit_value(c));
        if (digit >= base || value > (UINT64_MAX - digit) / base) return std::nullopt;
        value = value * base + digit;
    }
    return negative ? 0 - value : value;
}

std::optional<double> scan_double(std::string_view text) {
    text = text_trim(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<bool> scan_bool(std::string_view text) {
    for (const char* yes : {"1", "yes", "true"})
        if (text_equal_nocase(text, yes)) return true;
    for (const char* no : {"0", "no", "false"})
        if (text_equal_nocase(text, no)) return false;
    return std::nullopt;
}

std::string text_unquote(std::string_view text, size_t* consumed) {
    std::string plain;
    size_t at = 0;
    const bool quoted = !text.empty() && text.front() == '"';
    if (quoted) ++at;
    while (at < text.size()) {
        const char c = text[at++];
        if (c == '"') {
            if (quoted) break;
            continue;
        }
        if (c == '\\' && at < text.size())
            plain.push_back(read_escape(text, at));
        else
            plain.push_back(c);
    }
    if (consumed) *consumed = at;
    return plain;
}

std::string text_unescape(std::string_view text, char dropped) {
    std::string plain;
    for (size_t at = 0; at < text.size();) {
        const char c = text[at++];
        if (c == '\\' && at < text.size())
            plain.push_back(read_escape(text, at));
        else if (dropped == '\0' || c != dropped)
            plain.push_back(c);
    }
    return plain;
}

std::string text_escape(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\' || c == '"' || c == '\'') escaped.push_back('\\');
        escaped.push_back(c);
    }
    return escaped;
}

std::string text_quote(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= ' ' && byte != 0x7F) {
            if (c == '\\' || c == '"' || c == '\'') quoted.push_back('\\');
            quoted.push_back(c);
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\t') {
            quoted += "\\t";
        } else {  // three digits, so that a digit behind it stays apart
            quoted.push_back('\\');
            for (const int shift : {6, 3, 0})
                quoted.push_back(static_cast<char>('0' + ((byte >> shift) & 7)));
        }
    }
    return quoted.append("\"");
}

std::string text_csv(std::string_view text) {
    if (text.find_first_of(",\"\n\r") == std::string_view::npos) return std::string(text);
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"') result += '"';
        result += c;
    }
    return result + '"';
}

std::string text_utf8(std::string_view bytes) {
    std::string valid;
    valid.reserve(bytes.size());
    while (!bytes.empty()) {
        const size_t length = utf8_length(bytes);
        if (length == 0)
            valid += "\xEF\xBF\xBD";
        else
            valid.append(bytes.substr(0, length));
        bytes.remove_prefix(length == 0 ? 1 : length);
    }
    return valid;
}

std::string text_printable(std::string_view bytes) {
    std::string text = text_utf8(bytes);
    size_t length = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        // Controls are also the two-byte characters from U+0080 to U+009F.
        const bool upper = byte == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0;
        text[length++] = byte < ' ' || byte == 0x7F || upper ? '?' : text[at];
        if (upper) ++at;
    }
    text.resize(length);
    return text;
}

bool text_matches(std::string_view pattern, std::string_view text) {
    size_t p = 0, t = 0, star = std::string_view::npos, resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
            continue;
        }
        const bool escaped = p + 1 < pattern.size() && pattern[p] == '\\';
        const size_t literal = escaped ? p + 1 : p;
        const bool one = p < pattern.size() && !escaped && pattern[p] == '?';
        if (one || (literal < pattern.size() && pattern[literal] == text[t])) {
            p = literal + 1;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') ++p;
    return p == pattern.size();
}
