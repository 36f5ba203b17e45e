// Raw records: cutting them out of a stream of bytes, and what one says. Every source of raw events, a stream
// file, a log image, a core file, ends here.
//
// On the wire a record is a length byte and so many bytes: type and subtype, big-endian always, the time's
// low and high word in the target's byte order, and extra data.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "chronoweave/import/source/source.h"
#include "libtrv/byte_order.h"

constexpr size_t raw_RecordHead = 12;  // bytes ahead of the extra data
constexpr size_t raw_MinLength = 16;   // bytes of a raw event
constexpr size_t raw_MaxLength = 164;
constexpr uint8_t raw_StreamMax = 0x52;  // longest record of a stream file
// The longest extra data that a stream's record has room for.
constexpr size_t raw_LongestExtra = raw_StreamMax - raw_RecordHead;
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
inline mt_Time raw_TimeOf(std::span<const uint8_t> record, bool bigEndian) {
    const uint32_t low = load_32(&record[4], bigEndian), high = load_32(&record[8], bigEndian);
    return static_cast<mt_Time>(high) << 32 | low;
}
inline SourceRecord raw_Decode(std::span<const uint8_t> record, bool bigEndian) {
    const uint8_t* p = record.data();
    return {raw_TimeOf(record, bigEndian), load_be16(p), load_be16(p + 2), record.subspan(raw_RecordHead)};
}

// Puts a record of a stream with its length byte: 1 + raw_RecordHead bytes and the extra data, of which there
// are at most raw_LongestExtra. Its place in memory must not be that of the extra data.
inline void raw_PutHead(uint8_t* to, size_t extra, mt_Time time, uint16_t type, uint16_t subtype,
                        bool bigEndian) {
    to[0] = static_cast<uint8_t>(raw_RecordHead + extra);
    store_be16(to + 1, type);
    store_be16(to + 3, subtype);
    store_32(to + 5, static_cast<uint32_t>(time), bigEndian);
    store_32(to + 9, static_cast<uint32_t>(time >> 32), bigEndian);
}
inline void raw_PutExtra(uint8_t* to, std::span<const uint8_t> extra) {
    const size_t size = extra.size();
    if (size < 4 || size > 16) {
        std::copy(extra.begin(), extra.end(), to);
        return;
    }
    // Most events have few words, now more and now less: four words that may overlap are copied without a
    // jump.
    const uint8_t* from = extra.data();
    const size_t second = size / 8 * 4, last = size - 4;
    for (const size_t at : {size_t{0}, second, last - second, last}) std::memcpy(to + at, from + at, 4);
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
