#include "shared/stp_transport/spec/text_body.h"

#include <algorithm>
#include <limits>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

std::string_view untilZero(std::string_view text) {
    return text.substr(0, text.find('\0'));
}

std::string_view skipBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

// The length of a quoted text, quotes included; all of it when the closing one is missing.
size_t quotedLength(std::string_view text) {
    for (size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '\\')
            ++i;
        else if (text[i] == '"')
            return i + 1;
    }
    return text.size();
}

// The length of what starts with a bracket, up to the one that closes it.
size_t bracketedLength(std::string_view text) {
    size_t depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            i += quotedLength(text.substr(i)) - 1;
        } else if (c == '{' || c == '[' || c == '(') {
            ++depth;
        } else if ((c == '}' || c == ']' || c == ')') && --depth == 0) {
            return i + 1;
        }
    }
    return text.size();
}

size_t wordLength(std::string_view text) {
    return std::min(text.find(' '), text.size());
}

// The length of the value at the start of the text.
size_t valueLength(std::string_view text) {
    if (text.empty()) return 0;
    if (text[0] == '"') return quotedLength(text);
    if (text[0] == '{' || text[0] == '[') return bracketedLength(text);
    if (text[0] != '(') return wordLength(text);
    const size_t count = bracketedLength(text);
    if (count >= text.size() || text[count] != '[') return count;
    return count + bracketedLength(text.substr(count));
}

int digitOf(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = text_lower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 16;
}

uint64_t digits(std::string_view text, uint64_t base) {
    uint64_t value = 0;
    for (const char c : text) {
        const auto digit = static_cast<uint64_t>(digitOf(c));
        if (digit >= base) break;
        value = value * base + digit;
    }
    return value;
}

}  // namespace

void TextBodyWriter::begin(std::string_view key) {
    if (!elements_.empty() && elements_.back() != inRecord && elements_.back()++ > 0) body_ += ' ';
    if (key.empty()) return;
    body_ += key;
    body_ += ':';
}

void TextBodyWriter::number(std::string_view key, uint32_t value) {
    begin(key);
    body_ += gen_format("0x%x ", value);
}

void TextBodyWriter::number64(std::string_view key, uint64_t value) {
    begin(key);
    body_ += gen_format("0x%x%08x ", static_cast<uint32_t>(value >> 32), static_cast<uint32_t>(value));
}

void TextBodyWriter::real(std::string_view key, double value) {
    begin(key);
    body_ += gen_format("%.17g ", value);
}

void TextBodyWriter::string(std::string_view key, std::optional<std::string_view> value) {
    begin(key);
    if (!value) {
        body_ += "null ";
        return;
    }
    body_ += '"';
    for (const char c : untilZero(*value)) {
        if (c == '\\' || c == '"') body_ += '\\';
        if (c == '\n')
            body_ += "\\n";
        else
            body_ += c;
    }
    body_ += "\" ";
}

void TextBodyWriter::word(std::string_view key, std::string_view value) {
    begin(key);
    body_ += untilZero(value);
    body_ += ' ';
}

void TextBodyWriter::beginRecord(std::string_view key) {
    begin(key);
    body_ += "{ ";
    elements_.push_back(inRecord);
}

void TextBodyWriter::endRecord() {
    body_ += " } ";
    elements_.pop_back();
}

void TextBodyWriter::beginArray(std::string_view key, size_t count) {
    begin(key);
    body_ += gen_format("(0x%zx )[ ", count);
    elements_.push_back(0);
}

void TextBodyWriter::endArray() {
    body_ += " ] ";
    elements_.pop_back();
}

uint64_t textBody_Number(std::string_view value) {
    const bool negative = value.starts_with('-');
    if (negative || value.starts_with('+')) value.remove_prefix(1);
    const bool hexadecimal = text_starts_nocase(value, "0x");
    const uint64_t number = hexadecimal ? digits(value.substr(2), 16) : digits(value, 10);
    return negative ? 0 - number : number;
}

double textBody_Real(std::string_view value) {
    std::string_view word = value.substr(0, wordLength(value));
    if (const auto number = scan_double(word)) return *number;
    const bool negative = word.starts_with('-');
    if (negative) word.remove_prefix(1);
    const double odd = word == "inf"   ? std::numeric_limits<double>::infinity()
                       : word == "nan" ? std::numeric_limits<double>::quiet_NaN()
                                       : 0;
    return negative ? -odd : odd;
}

std::optional<std::string> textBody_String(std::string_view value) {
    if (!value.starts_with('"')) return std::nullopt;
    std::string text;
    for (size_t i = 1; i < value.size() && value[i] != '"'; ++i) {
        if (value[i] != '\\') {
            text += value[i];
        } else if (++i < value.size()) {
            text += value[i] == 'n' ? '\n' : value[i];
        }
    }
    return text;
}

std::vector<std::string_view> textBody_Array(std::string_view value) {
    uint64_t count = 0;
    if (value.starts_with('(')) {
        const size_t length = bracketedLength(value);
        count = textBody_Number(skipBlanks(value.substr(1, length - 1)));
        value.remove_prefix(length);
    }
    if (!value.starts_with('[')) return {};
    value = skipBlanks(value.substr(1));
    std::vector<std::string_view> elements;
    while (elements.size() < std::min<uint64_t>(count, stpMostElements) && !value.empty() &&
           !value.starts_with(']')) {
        const size_t length = valueLength(value);
        elements.push_back(value.substr(0, length));
        value = skipBlanks(value.substr(length));
    }
    if (elements.size() == stpMostElements)
        gen_error("An array of a message is cut at %zu elements", stpMostElements);
    if (count == 0 && !value.starts_with(']')) gen_fatal("unspecified stp ascii array size");
    return elements;
}

TextBodyReader::TextBodyReader(std::string_view body) : rest_(untilZero(body)) {}

TextBodyReader TextBodyReader::record(std::string_view value) {
    if (!value.starts_with('{')) return TextBodyReader({});
    value.remove_prefix(1);
    if (value.ends_with('}')) value.remove_suffix(1);
    return TextBodyReader(value);
}

std::string_view TextBodyReader::firstWord(std::string_view body) {
    body = skipBlanks(untilZero(body));
    return body.substr(0, wordLength(body));
}

// One more field, if there is one; words without a key are passed over.
bool TextBodyReader::readNext() {
    while (!(rest_ = skipBlanks(rest_)).empty()) {
        const size_t end = rest_.find_first_of(": \"{[(");
        if (end == rest_.npos || rest_[end] != ':') {
            // No key: a name, or a value that nothing names.
            rest_.remove_prefix(std::max<size_t>(end == 0 ? valueLength(rest_) : wordLength(rest_), 1));
            continue;
        }
        const std::string_view key = rest_.substr(0, end);
        rest_.remove_prefix(end + 1);
        const size_t length = valueLength(rest_);
        fields_.push_back({key, rest_.substr(0, length)});
        rest_.remove_prefix(length);
        return true;
    }
    return false;
}

std::optional<std::string_view> TextBodyReader::find(std::string_view key) {
    for (const Field& field : fields_)
        if (field.key == key) return field.value;
    while (readNext())
        if (fields_.back().key == key) return fields_.back().value;
    return std::nullopt;
}
