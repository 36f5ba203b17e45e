#include "chronoweave/import/raw/raw_header.h"

#include <cstdio>
#include <cstring>

#include "chronoweave/import/raw/raw_words.h"
#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"

namespace {

// The checks that both forms share.
bool is_supported(const EventSourceHeader& header) {
    if (header.osCode != raw_OsKorvantis) return false;
    const uint32_t code = header.architecture;
    if (code == 0 || code == 5 || code > 6) gen_console(words_Architecture, code);
    return true;
}

int64_t read_short(std::span<const uint8_t> bytes, EventSourceHeader& header) {
    header.version = 3;
    header.bigEndian = bytes[0] == 0;
    header.osCode = load_16(bytes.data() + 2, header.bigEndian);
    header.architecture = load_16(bytes.data() + 4, header.bigEndian);
    header.ticksPerSecond = load_32(bytes.data() + 6, header.bigEndian);
    return is_supported(header) ? static_cast<int64_t>(raw_ShortHeaderSize) : raw_HeaderUnsupported;
}

}  // namespace

bool raw_BeginsLikeCore(std::span<const uint8_t> head) {
    if (head.size() < 2) return false;
    const int marker = head[0] | head[1];
    return marker == 1 || marker == 2 || marker == 4;
}

int64_t raw_ReadLongHeader(std::span<const uint8_t> bytes, EventSourceHeader& header) {
    if (bytes.size() < raw_LongHeaderSize) return raw_HeaderBad;
    const uint8_t* p = bytes.data();
    header.version = p[4] * 256u + p[5];
    header.bigEndian = p[6] != 0;
    header.osCode = load_16(p + 8, header.bigEndian);
    header.architecture = load_16(p + 10, header.bigEndian);
    header.ticksPerSecond =
        static_cast<uint64_t>(load_32(p + 12, header.bigEndian)) << 32 | load_32(p + 16, header.bigEndian);
    return is_supported(header) ? static_cast<int64_t>(raw_LongHeaderSize) : raw_HeaderUnsupported;
}

int64_t raw_ReadHeader(ByteSource& source, EventSourceHeader& header) {
    uint8_t bytes[raw_LongHeaderSize];
    size_t have = 0;
    SourceStatus status = SourceStatus::Data;
    while (have < sizeof bytes) {
        const SourceRead read = source.ReadAt(have, std::span(bytes).subspan(have));
        status = read.status;
        if (status != SourceStatus::Data) break;
        have += read.bytes;
    }
    if (status == SourceStatus::Failed) return raw_HeaderBad;
    if (have == 0) return raw_HeaderNothing;
    // Whoever writes a growing file may be in the middle of its header.
    const int64_t cut = status == SourceStatus::Again ? raw_HeaderNothing : raw_HeaderBad;
    if (have >= 2) {
        if (raw_BeginsLikeCore({bytes, have})) return raw_HeaderIsCore;
        if ((bytes[0] | bytes[1]) == 3) {
            if (bytes[0] != 0 && bytes[1] != 0) return raw_HeaderBad;
            if (have < raw_ShortHeaderSize) return cut;
            return read_short({bytes, have}, header);
        }
    }
    if (have < raw_LongHeaderSize) {
        if (cut == raw_HeaderBad) std::fprintf(stderr, "%s\n", words_HeaderRead);
        return cut;
    }
    return raw_ReadLongHeader(bytes, header);
}

std::vector<uint8_t> raw_EncodeHeader(const EventSourceHeader& header, RawHeaderForm form) {
    const bool big = header.bigEndian;
    const auto low = static_cast<uint32_t>(header.ticksPerSecond);
    const auto os = static_cast<uint16_t>(header.osCode);
    const auto architecture = static_cast<uint16_t>(header.architecture);
    if (form == RawHeaderForm::Short) {
        std::vector<uint8_t> bytes(raw_ShortHeaderSize);
        store_16(&bytes[0], 3, big);
        store_16(&bytes[2], os, big);
        store_16(&bytes[4], architecture, big);
        store_32(&bytes[6], low, big);
        return bytes;
    }
    std::vector<uint8_t> bytes(raw_LongHeaderSize);
    std::memcpy(bytes.data(), "CWRE", 4);
    bytes[4] = static_cast<uint8_t>(header.version >> 8);
    bytes[5] = static_cast<uint8_t>(header.version);
    bytes[6] = big ? 1 : 0;
    store_16(&bytes[8], os, big);
    store_16(&bytes[10], architecture, big);
    store_32(&bytes[12], static_cast<uint32_t>(header.ticksPerSecond >> 32), big);
    store_32(&bytes[16], low, big);
    return bytes;
}
