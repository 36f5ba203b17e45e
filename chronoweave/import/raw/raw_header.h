// The header of a raw event file: a short form of 10 bytes and a long one of 28, told apart by the first two
// bytes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "chronoweave/import/source/byte_source.h"

struct EventSourceHeader {
    uint32_t version = 0;  // major x 256 + minor; 3 for a short header
    bool bigEndian = false;
    uint32_t architecture = 0;
    uint64_t ticksPerSecond = 0;
    uint32_t osCode = 0;
    const char* osName = "KORVANTIS";
};

constexpr uint32_t raw_OsKorvantis = 1;
constexpr uint32_t raw_LogImageVersion = 0x201;  // 2.1: a memory dump of the log and not a stream
constexpr size_t raw_ShortHeaderSize = 10;
constexpr size_t raw_LongHeaderSize = 28;

// Results of reading a header other than the offset of the first record.
enum : int64_t {
    raw_HeaderNothing = 0,  // no bytes; or a source that grows has not got the whole header yet
    raw_HeaderBad = -1,
    raw_HeaderUnsupported = -2,  // another operating system
    raw_HeaderIsCore = -3        // a core file
};

// Whether a file's first bytes are a core file's version.
bool raw_BeginsLikeCore(std::span<const uint8_t> head);

// Decodes the header at the source's start. The result is the offset of the first record or one of the above;
// the header is filled when it is an offset. An unknown architecture is told on the console and accepted.
int64_t raw_ReadHeader(ByteSource& source, EventSourceHeader& header);
// The same for a long header in memory: 28, raw_HeaderBad below 28 bytes, or raw_HeaderUnsupported.
int64_t raw_ReadLongHeader(std::span<const uint8_t> bytes, EventSourceHeader& header);

enum class RawHeaderForm { Short, Long };
// The bytes of a header. A short one has no room for version and the high word of the clock rate.
std::vector<uint8_t> raw_EncodeHeader(const EventSourceHeader& header, RawHeaderForm form);
