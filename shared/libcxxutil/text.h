// Text and number scanning shared by every parser of the program. Only ASCII letters fold in compares.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

bool text_equal_nocase(std::string_view a, std::string_view b);
bool text_starts_nocase(std::string_view text, std::string_view prefix);
char text_lower(char c);
char text_upper(char c);

// Cuts blanks and tabs at the end.
std::string_view text_trim_right(std::string_view text);
// Cuts C white space at both ends.
std::string_view text_trim(std::string_view text);

// A number in the manner of C: white space, sign, 0x for hexadecimal, a leading 0 for octal, decimal
// otherwise. The whole text must be consumed and hold at least one digit; a value beyond 64 bits is refused.
// A minus sign gives the two's complement.
std::optional<uint64_t> scan_number(std::string_view text);
// A decimal floating-point number, the whole text but for white space around it; no "inf", no "nan".
std::optional<double> scan_double(std::string_view text);
// "1", "yes", "true" and "0", "no", "false", without regard to case.
std::optional<bool> scan_bool(std::string_view text);

// The string rules of settings and configure files: double quotes go, C escapes (\n, \t, \xHH, \ooo, \\, \",
// ...) are replaced. Reads up to the closing unescaped double quote, or the end; consumed, if given, tells
// how far.
std::string text_unquote(std::string_view text, size_t* consumed = nullptr);
// Replaces C escapes alone; every unescaped dropped, unless it is 0, goes.
std::string text_unescape(std::string_view text, char dropped = '\0');
// A backslash before every backslash, double quote and single quote.
std::string text_escape(std::string_view text);
// The text in double quotes on one line: text_escape, and control characters as C escapes. text_unquote gives
// the same bytes back.
std::string text_quote(std::string_view text);

// The text as a cell of comma-separated values: in double quotes where it needs them.
std::string text_csv(std::string_view text);

// The same text with every byte that is no valid UTF-8 replaced by U+FFFD.
std::string text_utf8(std::string_view bytes);
// The same with every control character replaced by '?': safe to show on a terminal, and one line.
std::string text_printable(std::string_view bytes);

// Whole-text match with '*' (any run), '?' (one character) and '\' as the escape.
bool text_matches(std::string_view pattern, std::string_view text);
