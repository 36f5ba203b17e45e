#include "shared/stp_transport/spec/binary_body.h"

#include <algorithm>
#include <bit>

#include "shared/stp_transport/frame.h"

namespace {

size_t padded(size_t count) {
    return (count + 3) & ~size_t{3};
}

// Of 8 bytes the high word stands first; less stand in one word, low byte first.
uint64_t integerOf(std::span<const uint8_t> bytes) {
    uint64_t value = 0;
    if (bytes.size() == 8) return uint64_t{word_Read(bytes.data())} << 32 | word_Read(bytes.data() + 4);
    for (size_t i = std::min<size_t>(bytes.size(), 4); i > 0; --i) value = value << 8 | bytes[i - 1];
    return value;
}

double realOf(std::span<const uint8_t> bytes) {
    if (bytes.size() == 8) return std::bit_cast<double>(integerOf(bytes));
    if (bytes.size() == 4) return std::bit_cast<float>(static_cast<uint32_t>(integerOf(bytes)));
    return 0;
}

uint64_t bitsOf(int bytes, double value) {
    if (bytes == 8) return std::bit_cast<uint64_t>(value);
    return std::bit_cast<uint32_t>(static_cast<float>(value));
}

// The zero byte that a string ends with is counted, so that an empty one is told from none.
std::optional<std::string> stringOf(std::span<const uint8_t> bytes) {
    if (bytes.empty()) return std::nullopt;
    return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), uint8_t{0}));
}

}  // namespace

void BinaryBodyWriter::word(uint32_t value) {
    uint8_t bytes[4];
    word_Write(bytes, value);
    body_.append(bytes, bytes + 4);
}

void BinaryBodyWriter::item(uint32_t field, BinaryClass kind, uint32_t size) {
    word(field << 8 | static_cast<uint32_t>(kind) << 4 | size);
}

void BinaryBodyWriter::integerElement(int bytes, uint64_t value) {
    if (bytes == 8) word(static_cast<uint32_t>(value >> 32));
    const uint64_t mask = bytes >= 4 ? UINT32_MAX : (uint64_t{1} << (8 * bytes)) - 1;
    word(static_cast<uint32_t>(value & mask));
}

void BinaryBodyWriter::realElement(int bytes, double value) {
    integerElement(bytes, bitsOf(bytes, value));
}

void BinaryBodyWriter::stringElement(std::optional<std::string_view> value) {
    if (!value) return word(0);
    const std::string_view text = value->substr(0, value->find('\0'));
    word(static_cast<uint32_t>(text.size() + 1));
    body_ += text;
    body_.append(padded(text.size() + 1) - text.size(), '\0');
}

void BinaryBodyWriter::integer(uint32_t field, int bytes, uint64_t value) {
    item(field, BinaryClass::Integer, static_cast<uint32_t>(bytes));
    integerElement(bytes, value);
}

void BinaryBodyWriter::real(uint32_t field, int bytes, double value) {
    item(field, BinaryClass::Real, static_cast<uint32_t>(bytes));
    realElement(bytes, value);
}

void BinaryBodyWriter::string(uint32_t field, std::optional<std::string_view> value) {
    item(field, BinaryClass::String, 0);
    stringElement(value);
}

void BinaryBodyWriter::beginRecordElement() {
    lengths_.push_back(body_.size());
    word(0);
}

void BinaryBodyWriter::open(uint32_t field, BinaryClass kind) {
    item(field, kind, 0);
    beginRecordElement();
}

void BinaryBodyWriter::close() {
    const size_t at = lengths_.back();
    lengths_.pop_back();
    uint8_t bytes[4];
    word_Write(bytes, static_cast<uint32_t>(body_.size() - at - 4));
    body_.replace(at, 4, reinterpret_cast<const char*>(bytes), 4);
}

std::span<const uint8_t> BinaryElements::take(size_t count) {
    const std::span<const uint8_t> taken = bytes_.first(std::min(count, bytes_.size()));
    bytes_ = bytes_.subspan(std::min(padded(count), bytes_.size()));
    return taken.size() == count ? taken : std::span<const uint8_t>();
}

uint64_t BinaryElements::integer(int bytes) {
    const auto taken = take(bytes == 8 ? 8 : 4);
    return integerOf(taken.first(std::min<size_t>(taken.size(), static_cast<size_t>(bytes))));
}

double BinaryElements::real(int bytes) {
    return realOf(take(static_cast<size_t>(bytes)));
}

std::optional<std::string> BinaryElements::string() {
    return stringOf(record());
}

std::span<const uint8_t> BinaryElements::record() {
    return take(static_cast<size_t>(integer(4)));
}

std::optional<BinaryBodyReader::Item> BinaryBodyReader::itemAt(size_t& at) const {
    if (bytes_.size() - at < 4) return std::nullopt;
    const uint32_t descriptor = word_Read(bytes_.data() + at);
    if (descriptor == 0) return std::nullopt;
    size_t size = descriptor & 15, start = at + 4;
    if (size == 0) {
        if (bytes_.size() - start < 4) return std::nullopt;
        size = word_Read(bytes_.data() + start);
        start += 4;
    }
    if (size > bytes_.size() - start) return std::nullopt;
    at = std::min(start + padded(size), bytes_.size());
    return Item{descriptor >> 8, static_cast<uint8_t>(descriptor >> 4 & 15), bytes_.subspan(start, size)};
}

// On from the last field that was found, and once more from the beginning.
std::optional<BinaryBodyReader::Item> BinaryBodyReader::seek(uint32_t field) {
    for (int round = 0; round < 2; ++round) {
        size_t at = at_;
        while (const auto item = itemAt(at)) {
            if (item->field != field) continue;
            at_ = at;
            return item;
        }
        at_ = 0;
    }
    return std::nullopt;
}

std::span<const uint8_t> BinaryBodyReader::payload(uint32_t field, BinaryClass kind) {
    const auto item = seek(field);
    if (!item || item->kind != static_cast<uint8_t>(kind)) return {};
    return item->payload;
}

uint64_t BinaryBodyReader::integer(uint32_t field) {
    return integerOf(payload(field, BinaryClass::Integer));
}

double BinaryBodyReader::real(uint32_t field) {
    return realOf(payload(field, BinaryClass::Real));
}

std::optional<std::string> BinaryBodyReader::string(uint32_t field) {
    return stringOf(payload(field, BinaryClass::String));
}

std::span<const uint8_t> BinaryBodyReader::record(uint32_t field) {
    return payload(field, BinaryClass::Record);
}

BinaryElements BinaryBodyReader::array(uint32_t field) {
    return BinaryElements(payload(field, BinaryClass::Array));
}
