#include "libtrv/gadr.h"

#include <array>

#include "shared/libcxxutil/report.h"

namespace {

struct ModeFacts {
    const char* name;
    uint8_t encoding;
};
constexpr std::array<ModeFacts, 4> modes{{{"16bit", 2}, {"16bit-16seg", 0x42}, {"32bit", 4}, {"64bit", 8}}};

gadr_Mode current_mode = gadr_32bit;

bool is_blank(char c) {
    return c == ' ' || (c >= 8 && c <= 13);
}

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Up to 8 hexadecimal digits at the front of text, which are taken off; the number of digits.
int take_word(std::string_view& text, uint32_t& word) {
    int digits = 0;
    word = 0;
    while (digits < 8 && !text.empty() && hex_value(text.front()) >= 0) {
        word = word << 4 | static_cast<uint32_t>(hex_value(text.front()));
        text.remove_prefix(1);
        ++digits;
    }
    return digits;
}

}  // namespace

gadr_Mode gadr_mode() {
    return current_mode;
}
void gadr_set_mode(gadr_Mode mode) {
    current_mode = mode;
}

const char* adr_name_from_mode(int mode) {
    if (mode >= 0 && mode < static_cast<int>(modes.size())) return modes[static_cast<size_t>(mode)].name;
    gen_error("[adr_name_from_mode]: unknown mode!");
    return "unknown";
}

gadr_Mode gadr_get_mode_for_adr_byte_size(int bytes, int segment_bytes) {
    if (bytes == 2 && segment_bytes == 0) return gadr_16bit;
    if (bytes == 2 && segment_bytes == 2) return gadr_16bit_16seg;
    if (bytes == 4) return gadr_32bit;
    if (bytes == 8) return gadr_64bit;
    gen_error("[gadr_get_mode_for_adr_byte_size]: bad adr parameters");
    return gadr_32bit;
}

uint8_t gadr_encoding_from_mode(int mode) {
    if (mode >= 0 && mode < static_cast<int>(modes.size())) return modes[static_cast<size_t>(mode)].encoding;
    gen_error("[gadr_encoding_from_mode]: unknown mode!");
    return 4;
}

gadr_Mode gadr_mode_from_encoding(uint8_t encoding) {
    for (size_t mode = 0; mode < modes.size(); ++mode)
        if (modes[mode].encoding == encoding) return static_cast<gadr_Mode>(mode);
    gen_error("[gadr_mode_from_encoding]: unknown mode!");
    return gadr_32bit;
}

gadr gadr_from_32(uint32_t value) {
    const bool widen = value == 0xFFFFFFFF || (current_mode == gadr_64bit && (value & 0x80000000) != 0);
    return {value, widen ? 0xFFFFFFFF : 0};
}

bool gadr_scan(std::string_view text, uint32_t scale, gadr& address) {
    if (current_mode == gadr_64bit && scale != 1) {
        gen_error("[gadr_scan]: illegal scale factor");
        return false;
    }
    if (scale == 0) return false;
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    if (text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) text.remove_prefix(2);
    uint32_t first = 0, second = 0;
    const int digits = take_word(text, first);
    if (digits == 0) return false;
    if (digits == 8) {
        if (!text.empty() && text.front() == '_') text.remove_prefix(1);
        if (take_word(text, second) > 0) {
            address = {second / scale, first};
            return true;
        }
    }
    address = {first / scale, 0};
    return true;
}

std::string gadr_text(gadr address, bool fixed_width) {
    const unsigned low = address.low, high = address.high;
    switch (current_mode) {
        case gadr_16bit:
            return gen_format(fixed_width ? "0x%04x" : "0x%x", low);
        case gadr_16bit_16seg:
            if (high == 0) return gen_format(fixed_width ? "0x%04x" : "0x%x", low);
            return gen_format(fixed_width ? "0x%04x%04x" : "0x%x%x", high, low);
        case gadr_32bit:
            return gen_format(fixed_width ? "0x%08x" : "0x%x", low);
        case gadr_64bit:
            break;
    }
    return gen_format(fixed_width ? "0x%08x_%08x" : "0x%x_%x", high, low);
}
