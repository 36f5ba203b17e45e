#include "chronoweave/cli/cell.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr char digits[] = "0123456789abcdef";

// Bytes that every form takes as they are.
constexpr auto plain_bytes = [] {
    std::array<bool, 256> plain{};
    for (size_t byte = ' '; byte < 0x7F; ++byte) plain[byte] = byte != '"' && byte != ',' && byte != '\\';
    return plain;
}();

bool is_plain(std::string_view text) {
    bool plain = true;
    for (const char c : text) plain &= plain_bytes[static_cast<unsigned char>(c)];
    return plain;
}

template <class Whole>
void put_whole(Whole whole, RowBuffer& to) {
    char* at = to.room(24);
    to.took(std::to_chars(at, at + 24, whole).ptr);
}

// The shortest decimal that reads back as the number, always with a point or an exponent: 0.25, 1.0, 1.5e-05.
void put_real(double real, RowBuffer& to) {
    if (!std::isfinite(real)) return to.put("null");
    if (std::signbit(real)) to.put('-');
    if (real == 0) return to.put("0.0");
    char text[32];  // D.DDDe-DD
    const char* const end =
        std::to_chars(text, text + 32, std::fabs(real), std::chars_format::scientific).ptr;
    const char* const mark = std::find(static_cast<const char*>(text), end, 'e');
    int exponent = 0;
    std::from_chars(mark[1] == '+' ? mark + 2 : mark + 1, end, exponent);
    if (exponent < -4 || exponent > 14)
        return to.put(std::string_view(text, static_cast<size_t>(end - text)));
    const std::string_view first(text, 1), rest(text + 2, mark > text + 2 ? mark : text + 2);
    if (exponent < 0) {
        to.put(std::string_view("0.0000").substr(0, static_cast<size_t>(1 - exponent)));
        to.put(first);
        return to.put(rest);
    }
    const auto whole = static_cast<size_t>(exponent);  // digits of the rest ahead of the point
    to.put(first);
    to.put(rest.substr(0, whole));
    for (size_t at = rest.size(); at < whole; ++at) to.put('0');
    to.put('.');
    to.put(rest.size() > whole ? rest.substr(whole) : "0");
}

void put_json_escape(unsigned char byte, RowBuffer& to) {
    constexpr std::string_view special = "\b\t\n\f\r\"\\", letters = "btnfr\"\\";
    to.put('\\');
    if (const size_t at = special.find(static_cast<char>(byte)); at != std::string_view::npos)
        return to.put(letters[at]);
    to.put("u00");
    to.put(digits[byte >> 4]);
    to.put(digits[byte & 15]);
}

// Valid UTF-8 in, valid JSON out. With all, no byte that a terminal could take for a control stays.
void put_json_text(std::string_view text, bool all, RowBuffer& to) {
    for (size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const bool upper = all && byte == 0xC2 && static_cast<unsigned char>(text[at + 1]) < 0xA0;
        if (byte < ' ' || byte == '"' || byte == '\\' || (all && byte == 0x7F))
            put_json_escape(byte, to);
        else if (upper)
            put_json_escape(static_cast<unsigned char>(text[++at]), to);
        else
            to.put(text[at]);
    }
}

void put_hex(std::span<const uint8_t> bytes, RowBuffer& to) {
    char* at = to.room(2 * bytes.size());
    for (const uint8_t byte : bytes) {
        *at++ = digits[byte >> 4];
        *at++ = digits[byte & 15];
    }
    to.took(at);
}

void put_ids(const Cell::IdList& ids, RowBuffer& to) {
    char mark = '[';
    for (const auto& id : ids) {
        to.put(mark);
        mark = ',';
        if (id)
            put_whole(*id, to);
        else
            to.put("null");
    }
    if (ids.empty()) to.put('[');
    to.put(']');
}

void put_id(uint64_t id, RowBuffer& to) {
    char* const at = to.room(24);
    at[0] = '0';
    at[1] = 'x';
    to.took(std::to_chars(at + 2, at + 24, id, 16).ptr);
}

}  // namespace

void CellWriter::setClock(uint64_t ticksPerSecond) {
    // A store may lack its clock.
    const uint64_t rate = std::max<uint64_t>(1, ticksPerSecond);
    times_.ticksPerSecond = static_cast<double>(rate);
    clock_ = TickWriter({rate, 1}, mostDecimals);
}

void CellWriter::put(const Cell& cell, CellForm form, RowBuffer& to) const {
    const bool json = form_ == RowForm::Json;
    switch (cell.kind()) {
        case Cell::Kind::Absent:
        case Cell::Kind::Null:
            if (json) return to.put("null");
            return to.put(form_ == RowForm::Csv || form == CellForm::Percent ? "" : "-");
        case Cell::Kind::Unsigned:
            return form == CellForm::Id && !json ? put_id(cell.whole(), to) : put_whole(cell.whole(), to);
        case Cell::Kind::Signed:
            return put_whole(cell.signedWhole(), to);
        case Cell::Kind::Real:
            if (form == CellForm::Percent && !json) return to.put(gen_format("%.2f", cell.real()));
            return put_real(cell.real(), to);
        case Cell::Kind::Ticks:
            return putTicks(cell.signedWhole(), to);
        case Cell::Kind::Flag:
            if (form == CellForm::Verdict && !json) return to.put(cell.whole() != 0 ? "pass" : "FAIL");
            return to.put(cell.whole() != 0 ? "true" : "false");
        case Cell::Kind::Text:
            return putText(cell.text(), to);
        case Cell::Kind::Hex:
            if (json) to.put('"');
            put_hex(cell.bytes(), to);
            if (json) to.put('"');
            return;
        case Cell::Kind::Ids:
            return put_ids(cell.list(), to);
    }
}

void CellWriter::putTicks(int64_t ticks, RowBuffer& to) const {
    if (form_ == RowForm::Json) return put_real(times_.LengthOf(static_cast<double>(ticks)), to);
    to.took(clock_.put(ticks, to.room(TickWriter::room)));
}

void CellWriter::putText(std::string_view text, RowBuffer& to) const {
    if (!is_plain(text)) return putPeculiar(text, to);
    if (form_ != RowForm::Json) return to.put(text);
    to.put('"');
    to.put(text);
    to.put('"');
}

void CellWriter::putPeculiar(std::string_view text, RowBuffer& to) const {
    switch (form_) {
        case RowForm::Json:
            to.put('"');
            put_json_text(text_utf8(text), terminal_, to);
            return to.put('"');
        case RowForm::Csv:
            return to.put(text_csv(terminal_ ? text_printable(text) : text_utf8(text)));
        case RowForm::Text:
            return to.put(text_printable(text));
    }
}
