#include "chronoweave/import/source/source_name.h"

#include "chronoweave/import/source/byte_source.h"
#include "shared/libcxxutil/paths.h"

SourceName::SourceName(const std::string& path) : path_(path), folder_(path_is_directory(path)), head_(64) {
    std::unique_ptr<ByteSource> file;
    size_t there = 0;
    if (source_OpenFile(path, false, file).ok()) {
        const SourceRead read = file->ReadAt(0, head_);
        if (read.status == SourceStatus::Data) there = read.bytes;
    }
    head_.resize(there);
}

std::string_view SourceName::extension() const {
    return path_extension(path_);
}
