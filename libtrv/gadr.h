// Target addresses of a width chosen per file, and the names, header codes and text forms of the widths.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Address modes: 0 "16bit", 1 "16bit-16seg", 2 "32bit", 3 "64bit".
enum gadr_Mode : int { gadr_16bit = 0, gadr_16bit_16seg = 1, gadr_32bit = 2, gadr_64bit = 3 };

// An address: two 32-bit words, low word first. How much of it counts depends on the mode.
struct gadr {
    uint32_t low = 0;
    uint32_t high = 0;
    bool operator==(const gadr&) const = default;
};

// The process-wide mode; 32bit at the start.
gadr_Mode gadr_mode();
void gadr_set_mode(gadr_Mode mode);

// Unknown values are reported at level error and answered with "unknown", mode 2 or code 4.
const char* adr_name_from_mode(int mode);
gadr_Mode gadr_get_mode_for_adr_byte_size(int bytes, int segment_bytes);
uint8_t gadr_encoding_from_mode(int mode);
gadr_Mode gadr_mode_from_encoding(uint8_t encoding);

// A 32-bit value as an address. The high word becomes all ones in mode 3 when the top bit is set, and in any
// mode for 0xFFFFFFFF, which stays invalid at every width; otherwise it is 0.
gadr gadr_from_32(uint32_t value);

// Text to address: blanks, an optional 0x, up to 8 hexadecimal digits, and behind 8 of them an optional "_"
// and up to 8 more, the low word. The value is divided by scale (not 0). False when there is no digit, or
// when mode 3 meets a scale other than 1, which is reported.
[[nodiscard]] bool gadr_scan(std::string_view text, uint32_t scale, gadr& address);
// Address to text in the current mode, in fixed or free width.
std::string gadr_text(gadr address, bool fixed_width);
