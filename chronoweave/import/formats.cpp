#include "chronoweave/import/formats.h"

#include "chronoweave/import/core/core_format.h"
#include "chronoweave/import/raw/raw_format.h"

namespace {

// A further format is a line here and a folder of its own.
constexpr const SourceFormat* formats[] = {
    &core_Format,
    &raw_Format,
};

}  // namespace

std::span<const SourceFormat* const> import_Formats() {
    return formats;
}

const SourceFormat* import_FormatOf(const SourceName& name) {
    for (const SourceFormat* format : formats)
        if (format->takes(name)) return format;
    return nullptr;
}
