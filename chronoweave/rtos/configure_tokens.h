// The small parts of the configure file language: lines, the fields of a line, and the words that a field may
// be. Everything here is a view into the text that was handed in.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// Cuts a text into lines at CR, LF and CR LF; empty lines are passed over. A line ends early at a byte 0.
class ConfigureLines {
  public:
    explicit ConfigureLines(std::string_view text) : rest_(text) {}
    // False at the end of the text.
    bool Next(std::string_view& line);
    // Of the line that Next gave, from 1. True line numbers for files with LF or CR LF ends.
    int Number() const { return number_; }

  private:
    std::string_view rest_;
    int number_ = 0;
};

// Walks the fields of a line, which ":" separates. Colons in double quotes belong to the field.
class FieldCursor {
  public:
    static constexpr size_t longestField = 200;

    // rest begins behind the keyword.
    explicit FieldCursor(std::string_view rest) : rest_(rest) {}
    // The next field, less the blanks around it. True with an empty field at the end of the line; false when
    // something other than ":" stands here or the field has more than longestField characters.
    bool Next(std::string_view& field);
    // The same, but an empty field is a failure too.
    bool NextFilled(std::string_view& field) { return Next(field) && !field.empty(); }
    // What is left of the line, from the first character that is no blank.
    std::string_view Rest() const;

  private:
    std::string_view rest_;
};

// Takes a keyword off the front of text, without regard to case; false when text doesn't begin with it.
bool configure_TakeKeyword(std::string_view& text, std::string_view keyword);
// "visible", "TRV_Visible" are true, "invisible", "TRV_Invisible" false.
std::optional<bool> configure_ScanVisibility(std::string_view field);
// What follows the first "=" of a field, less leading blanks; empty without "=".
std::string_view configure_BehindEquals(std::string_view field);
// The beginning of a text in the manner of the scan format "%u": white space, sign and decimal digits, what
// follows is left alone. A value beyond 32 bits, and a negative one, gives the largest.
std::optional<uint32_t> configure_ScanLeadingNumber(std::string_view field);
