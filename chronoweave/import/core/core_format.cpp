#include "chronoweave/import/core/core_format.h"

#include <utility>

#include "chronoweave/import/core/core_file.h"
#include "chronoweave/import/core/core_words.h"
#include "chronoweave/import/raw/raw_header.h"
#include "chronoweave/import/source/byte_source.h"

namespace {

bool takes_core(const SourceName& name) {
    if (name.extension() == "core") return true;
    return name.extension() == "trr" && raw_BeginsLikeCore(name.head());
}

Result open_core(const SourceName& name, const SourceOptions&, std::unique_ptr<EventSource>& source) {
    std::unique_ptr<ByteSource> file;
    const Result opened = source_OpenFile(name.path(), false, file);
    if (!opened.ok()) {
        const std::string& why = opened.reason().empty() ? opened.what() : opened.reason();
        return Result::failure(words_CoreOpen, opened.where(), why);
    }
    std::vector<uint8_t> bytes;
    if (!source_ReadRest(*file, 0, UINT64_MAX, bytes)) return Result::failure(words_CoreRead);
    return CoreSource::open(std::move(bytes), name.path(), source);
}

}  // namespace

const SourceFormat core_Format{"core file", takes_core, open_core};
