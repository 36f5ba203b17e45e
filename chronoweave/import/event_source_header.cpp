#include "chronoweave/import/event_source_header.h"

#include <cstdio>

#include "chronoweave/import/import_words.h"
#include "libtrv/byte_order.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint32_t os_korvantis = 1;

// The checks that both forms share.
bool is_supported(const EventSourceHeader& header) {
    if (header.osCode != os_korvantis) return false;
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
        const SourceRead read = source.read_at(have, std::span(bytes).subspan(have));
        status = read.status;
        if (status != SourceStatus::Data) break;
        have += read.bytes;
    }
    if (status == SourceStatus::Failed) return raw_HeaderBad;
    if (have == 0) return raw_HeaderNothing;
    // Whoever writes a growing file may be in the middle of its header.
    const int64_t cut = status == SourceStatus::NothingYet ? raw_HeaderNothing : raw_HeaderBad;
    if (have >= 2) {
        const int marker = bytes[0] | bytes[1];
        if (marker == 1 || marker == 2 || marker == 4) return raw_HeaderIsCore;
        if (marker == 3) {
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
