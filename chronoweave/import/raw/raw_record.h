// Raw records: cutting them out of a stream of bytes, and what one says. Every source of raw events, a stream
// file, a log image, a core file, ends here.
//
// On the wire a record is a length byte and so many bytes: type and subtype, big-endian always, the time's
// low and high word in the target's byte order, and extra data.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "chronoweave/import/source/source.h"
#include "libtrv/byte_order.h"

constexpr size_t raw_RecordHead = 12;  // bytes ahead of the extra data
constexpr size_t raw_MinLength = 16;   // bytes of a raw event
constexpr size_t raw_MaxLength = 164;
constexpr uint8_t raw_StreamMax = 0x52;   // longest record of a stream file
constexpr uint32_t raw_RecordRoom = 256;  // what a length byte can ask for

// The next record of bytes from at on.
struct RawCut {
    enum class Kind { Record, BadByte, CutShort } kind = Kind::CutShort;
    std::span<const uint8_t> record;  // without its length byte
    size_t size = 0;                  // bytes to go on behind; 0 when the bytes end within the record
};
inline RawCut raw_Cut(std::span<const uint8_t> bytes, size_t at) {
    const uint8_t length = bytes[at];
    if (length == 0 || length > raw_StreamMax) return {RawCut::Kind::BadByte, {}, 1};
    if (bytes.size() - at <= length) return {};
    return {RawCut::Kind::Record, bytes.subspan(at + 1, length), 1u + length};
}

inline bool raw_IsLengthSound(size_t length) {
    return length >= raw_MinLength && length <= raw_MaxLength;
}
// What a record of sound length says.
inline SourceRecord raw_Decode(std::span<const uint8_t> record, bool bigEndian) {
    const uint8_t* p = record.data();
    const uint32_t low = load_32(p + 4, bigEndian), high = load_32(p + 8, bigEndian);
    return {static_cast<mt_Time>(high) << 32 | low, load_be16(p), load_be16(p + 2),
            record.subspan(raw_RecordHead)};
}

// What a look ahead asks of a record, if its length is sound.
inline void raw_Look(std::span<const uint8_t> record, bool bigEndian, ObjectLook& look) {
    if (!raw_IsLengthSound(record.size())) return;
    const SourceRecord event = raw_Decode(record, bigEndian);
    look.enter(event.type, event.extra, bigEndian);
    look.EnterTime(event.time);
}

// The messages that damaged records earn, one per damage, held to a readable number: after the first hundred
// of a kind in one read the rest are counted, and settle tells how many there were.
class RawRecords {
  public:
    static constexpr uint64_t limit = 100;  // of each kind in one read

    // False when the record was dropped for its length.
    [[nodiscard]] bool take(std::span<const uint8_t> bytes, bool bigEndian, SourceRecord& record) {
        if (!raw_IsLengthSound(bytes.size())) [[unlikely]] {
            drop(bytes.size());
            return false;
        }
        record = raw_Decode(bytes, bigEndian);
        return true;
    }
    void BadByte(uint64_t offset, uint8_t byte);
    void settle();
    SourceCounts& counts() { return counts_; }
    const SourceCounts& counts() const { return counts_; }

  private:
    enum class Problem { BadByte, TooLong, TooShort };
    bool tells(Problem problem) { return ++seen_[static_cast<size_t>(problem)] <= limit; }
    void drop(size_t length);

    std::array<uint64_t, 3> seen_{};
    SourceCounts counts_;
};
