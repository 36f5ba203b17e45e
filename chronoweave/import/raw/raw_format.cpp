#include "chronoweave/import/raw/raw_format.h"

#include <utility>

#include "chronoweave/import/raw/log_image.h"
#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/raw/raw_stream.h"
#include "chronoweave/import/raw/raw_words.h"

namespace {

bool takes_raw(const SourceName& name) {
    return name.extension() == "trr" && !raw_BeginsLikeCore(name.head());
}

Result open_raw(const SourceName& name, const SourceOptions& options, std::unique_ptr<EventSource>& source) {
    std::unique_ptr<ByteSource> bytes;
    const Result opened = source_OpenFile(name.path(), options.mayGrow, bytes);
    if (!opened.ok()) {
        const std::string& why = opened.reason().empty() ? opened.what() : opened.reason();
        return Result::failure(words_CannotOpenTrr, opened.where(), why);
    }
    return raw_Open(std::move(bytes), name.path(), source);
}

Result open_image(ByteSource& bytes, const EventSourceHeader& header, std::unique_ptr<EventSource>& source) {
    // Addresses have 32 bits, so nothing behind the first 4 gigabytes can be asked for.
    std::vector<uint8_t> rest;
    RawLogImage image;
    if (!source_ReadRest(bytes, raw_LongHeaderSize, uint64_t{1} << 32, rest) ||
        !log_Read(std::move(rest), header.bigEndian, image))
        return Result::failure(words_BadFormatTrr);
    source = std::make_unique<LogImageSource>(std::move(image), header);
    return {};
}

}  // namespace

const SourceFormat raw_Format{"raw event file", takes_raw, open_raw};

Result raw_Open(std::unique_ptr<ByteSource> bytes, const std::string& name,
                std::unique_ptr<EventSource>& source) {
    EventSourceHeader header;
    const int64_t first = raw_ReadHeader(*bytes, header);
    if (first == raw_HeaderUnsupported) return Result::failure(words_Unsupported);
    if (first <= 0) return Result::failure(words_BadFormatTrr);
    if (header.version == raw_LogImageVersion) return open_image(*bytes, header, source);
    source = std::make_unique<RawStream>(std::move(bytes), header, static_cast<uint64_t>(first), name);
    return {};
}
