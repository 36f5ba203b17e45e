// The text form of a body: "key:value " fields, found by name. docs/formats.md has the form with examples.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// More elements of one array are not taken, in either form: a small packet must not fill the memory.
inline constexpr size_t stpMostElements = size_t{1} << 18;

class TextBodyWriter {
  public:
    explicit TextBodyWriter(std::string& body) : body_(body) {}

    // A field; an element of an array has an empty key.
    void number(std::string_view key, uint32_t value);
    void number64(std::string_view key, uint64_t value);
    void real(std::string_view key, double value);
    // Up to its first zero byte; nothing writes the word null.
    void string(std::string_view key, std::optional<std::string_view> value);
    // A blank within a word ends it for the reader.
    void word(std::string_view key, std::string_view value);
    void beginRecord(std::string_view key);
    void endRecord();
    void beginArray(std::string_view key, size_t count);
    void endArray();

  private:
    void begin(std::string_view key);

    std::string& body_;
    std::vector<size_t> elements_;  // of the arrays and records that are open; a record counts none
    static constexpr size_t inRecord = SIZE_MAX;
};

// Values as they stand in a body.
uint64_t textBody_Number(std::string_view value);
double textBody_Real(std::string_view value);
// Nothing for the word null, and for what is no string in quotes.
std::optional<std::string> textBody_String(std::string_view value);
// The elements of an array.
std::vector<std::string_view> textBody_Array(std::string_view value);

// The fields of a body, or of a record in it. The text must outlive the reader; it ends at a zero byte.
class TextBodyReader {
  public:
    explicit TextBodyReader(std::string_view body);
    // The record that stands as a value; one that is none has no fields.
    static TextBodyReader record(std::string_view value);

    // The first field of this name, as it stands; nothing when it is missing.
    std::optional<std::string_view> find(std::string_view key);
    // Values of fields; 0 or nothing when one is missing.
    uint64_t number(std::string_view key) { return textBody_Number(find(key).value_or("")); }
    std::optional<std::string> string(std::string_view key) {
        return textBody_String(find(key).value_or(""));
    }
    std::string_view word(std::string_view key) { return find(key).value_or(""); }
    std::vector<std::string_view> array(std::string_view key) {
        return textBody_Array(find(key).value_or(""));
    }

    // The word at the start of a body: the name of its message.
    static std::string_view firstWord(std::string_view body);

  private:
    struct Field {
        std::string_view key, value;
    };
    bool readNext();

    std::string_view rest_;
    std::vector<Field> fields_;  // found so far
};
