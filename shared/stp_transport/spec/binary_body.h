// The binary form of a body: tagged items, found by field number, ended by a zero word. docs/formats.md has
// the form with an example of each item.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Bits 4 to 7 of an item's descriptor.
enum class BinaryClass : uint8_t { String = 1, Integer = 2, Real = 3, Record = 4, Array = 5 };

class BinaryBodyWriter {
  public:
    explicit BinaryBodyWriter(std::string& body) : body_(body) {}

    // A field by its number, from 1. bytes is 1, 2, 4 or 8; a real has 4 or 8.
    void integer(uint32_t field, int bytes, uint64_t value);
    void real(uint32_t field, int bytes, double value);
    // Up to its first zero byte. Nothing has length 0.
    void string(uint32_t field, std::optional<std::string_view> value);
    void beginRecord(uint32_t field) { open(field, BinaryClass::Record); }
    void endRecord() { close(); }
    void beginArray(uint32_t field) { open(field, BinaryClass::Array); }
    void endArray() { close(); }

    // Elements of an array have no descriptor.
    void integerElement(int bytes, uint64_t value);
    void realElement(int bytes, double value);
    void stringElement(std::optional<std::string_view> value);
    void beginRecordElement();
    void endRecordElement() { close(); }

  private:
    void word(uint32_t value);
    void item(uint32_t field, BinaryClass kind, uint32_t size);
    void open(uint32_t field, BinaryClass kind);
    void close();

    std::string& body_;
    std::vector<size_t> lengths_;  // where the length words of what is open stand
};

// The bytes of an array's elements, taken one by one. What is cut short reads as 0, nothing or empty.
class BinaryElements {
  public:
    explicit BinaryElements(std::span<const uint8_t> bytes) : bytes_(bytes) {}
    bool atEnd() const { return bytes_.empty(); }
    uint64_t integer(int bytes);
    double real(int bytes);
    std::optional<std::string> string();
    std::span<const uint8_t> record();

  private:
    std::span<const uint8_t> take(size_t count);
    std::span<const uint8_t> bytes_;
};

// The fields of a body, or of a record in it; the bytes must outlive the reader. What is missing, or of
// another class, reads as 0, nothing or empty.
class BinaryBodyReader {
  public:
    explicit BinaryBodyReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}
    explicit BinaryBodyReader(std::string_view body)
        : bytes_(reinterpret_cast<const uint8_t*>(body.data()), body.size()) {}

    uint64_t integer(uint32_t field);
    double real(uint32_t field);
    std::optional<std::string> string(uint32_t field);
    std::span<const uint8_t> record(uint32_t field);
    BinaryElements array(uint32_t field);

  private:
    struct Item {
        uint32_t field = 0;
        uint8_t kind = 0;
        std::span<const uint8_t> payload;
    };
    // The item at a place, and the place behind it; nothing at the end mark or the end of the bytes.
    std::optional<Item> itemAt(size_t& at) const;
    std::optional<Item> seek(uint32_t field);
    std::span<const uint8_t> payload(uint32_t field, BinaryClass kind);

    std::span<const uint8_t> bytes_;
    size_t at_ = 0;  // behind the last field that was found
};
