#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/menu/menu.h"

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
bool is_space(char c) {
    return is_blank(c) || (c >= '\n' && c <= '\r');
}

// True when the byte at a place is the second of a double-byte character.
bool behind_lead_byte(std::string_view text, size_t at) {
    if (at == 0) return false;
    const auto lead = static_cast<unsigned char>(text[at - 1]);
    return (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xFC);
}

// The insides of the statements of a text, in order.
bool split(std::string_view text, bool doubleByte, std::vector<std::string_view>& statements) {
    const auto counts = [&](size_t at) { return !doubleByte || !behind_lead_byte(text, at); };
    size_t end = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '{' || !counts(at)) continue;
        const size_t start = at + 1;
        int open = 1;
        for (++at; at < text.size(); ++at) {
            if (!counts(at)) continue;
            if (text[at] == '{') ++open;
            if (text[at] == '}' && --open == 0) break;
        }
        if (open > 0) {
            gen_warning("Missing }");
            return false;
        }
        statements.push_back(text.substr(start, at - start));
        end = at + 1;
    }
    if (statements.empty()) return true;
    while (end < text.size() && is_blank(text[end])) ++end;
    if (end == text.size()) return true;
    gen_warning("Extraneous input after statement end: %s", std::string(text.substr(end)).c_str());
    return false;
}

// A quote at the start is the one that is dropped everywhere.
std::string unquote(std::string_view text) {
    const bool quoted = !text.empty() && (text.front() == '"' || text.front() == '\'');
    return text_unescape(text, quoted ? text.front() : '\0');
}

class RowScanner {
  public:
    explicit RowScanner(std::string_view statement) : text_(statement) {}

    MenuRow Read() {
        MenuRow row;
        while (at_ < text_.size() && is_blank(text_[at_])) ++at_;
        const std::optional<std::string_view> label = Peek('\'') ? Quoted() : Word();
        if (!label) return row;
        row.label = *label == "-" ? menuSeparator : unquote(*label);
        SkipSpace();
        if (Peek('\'')) {
            const auto accelerator = Quoted();
            if (!accelerator) return row;
            row.accelerator = unquote(*accelerator);
            SkipSpace();
        }
        row.body = text_trim(text_.substr(at_));
        return row;
    }

  private:
    bool Peek(char c) const { return at_ < text_.size() && text_[at_] == c; }
    bool Structural(size_t at) const { return !behind_lead_byte(text_, at); }
    void SkipSpace() {
        while (at_ < text_.size() && is_space(text_[at_])) ++at_;
    }
    // Up to the next single quote; none when there is no such.
    std::optional<std::string_view> Quoted() {
        const size_t start = at_;
        for (size_t at = at_ + 1; at < text_.size(); ++at) {
            if (text_[at] == '\'' && Structural(at)) {
                at_ = at + 1;
                return text_.substr(start + 1, at - start - 1);
            } else if (text_[at] == '}' && Structural(at)) {
                break;
            }
        }
        gen_warning("Unmatched single quote in %s", std::string(text_.substr(start)).c_str());
        return std::nullopt;
    }
    std::optional<std::string_view> Word() {
        const size_t start = at_;
        const auto ends = [&](size_t at) {
            return is_space(text_[at]) || ((text_[at] == '{' || text_[at] == '}') && Structural(at));
        };
        while (at_ < text_.size() && !ends(at_)) ++at_;
        return text_.substr(start, at_ - start);
    }

    std::string_view text_;
    size_t at_ = 0;
};

}  // namespace

std::optional<std::vector<MenuRow>> menu_Parse(std::string_view text, bool doubleByte) {
    std::vector<std::string_view> statements;
    if (!split(text, doubleByte, statements)) return std::nullopt;
    if (statements.size() > MenuRegistry::mostRows) {
        gen_warning("A menu has at most %zu rows.", MenuRegistry::mostRows);
        return std::nullopt;
    }
    std::vector<MenuRow> rows;
    rows.reserve(statements.size());
    for (const std::string_view statement : statements) rows.push_back(RowScanner(statement).Read());
    return rows;
}

// Braces and what could be half of a double-byte character are written as octal numbers.
std::string menu_Quote(std::string_view label) {
    std::string quoted = "'";
    const bool separatorLike = label == "-";
    for (const char c : label) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte >= 0x7F || c == '{' || c == '}' || c == '\'' || separatorLike) {
            quoted.push_back('\\');
            for (const int shift : {6, 3, 0})
                quoted.push_back(static_cast<char>('0' + ((byte >> shift) & 7)));
        } else {
            if (c == '\\' || c == '"') quoted.push_back('\\');
            quoted.push_back(c);
        }
    }
    return quoted.append("'");
}

std::string menu_PlainLabel(std::string_view label) {
    std::string plain;
    for (const char c : label) plain.append(c == '&' ? 2 : 1, c);
    return plain;
}

std::string menu_ShownAccelerator(std::string_view accelerator) {
    static constexpr struct {
        std::string_view written, shown;
    } prefixes[] = {{"C-", "Ctrl+"},
                    {"M-", "Alt+"},
                    {"CM-", "Ctrl+Alt+"},
                    {"CS-", "Ctrl+Shift+"},
                    {"CMS-", "Ctrl+Alt+Shift+"}};
    for (const auto& prefix : prefixes) {
        if (!accelerator.starts_with(prefix.written)) continue;
        std::string key(accelerator.substr(prefix.written.size()));
        if (!key.empty()) key.front() = text_upper(key.front());
        return std::string(prefix.shown) + key;
    }
    return std::string(accelerator);
}
