#include "chronoweave/import/store_place.h"

#include <filesystem>
#include <system_error>

#include "chronoweave/import/import_words.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

std::string file_that_is_source(const std::string& source, const std::string& base) {
    for (const char* extension : {".trs", ".tri", ".trv"}) {
        std::error_code error;
        std::string name = base + extension;
        if (std::filesystem::equivalent(source, name, error)) return name;
    }
    return {};
}

// The place in the cache directory, when that can be made.
void go_to_cache(StorePlace& place) {
    const std::string cache = path_cache_directory();
    if (!path_make_directory(cache)) return;
    place.base = path_in_cache(place.base);
    place.inCache = true;
}

}  // namespace

Result store_ChoosePlace(const std::string& source, const std::string& wanted, StorePlace& place) {
    place = {wanted.empty() ? path_without_extension(source) : wanted, false};
    if (path_file(place.base).empty()) return Result::failure(words_InvalidName);
    const std::string folder = path_directory(place.base);
    if (!path_is_directory(folder)) return Result::failure(gen_format(words_NoFolder, folder.c_str()));
    if (!path_directory_is_writable(folder)) go_to_cache(place);
    const std::string taken = file_that_is_source(source, place.base);
    if (!taken.empty()) return Result::failure(gen_format(words_SourceIsStore, taken.c_str()));
    return {};
}
