#include "chronoweave/import/store_place.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "chronoweave/import/import_words.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

// Tells apart the stores of equally named sources in different folders, which share the one cache directory.
std::string folder_mark(const std::string& base) {
    std::error_code error;
    const std::filesystem::path full =
        std::filesystem::absolute(path_directory(base), error).lexically_normal();
    uint32_t hash = 2166136261u;
    for (const char c : full.string()) hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    return gen_format("-%08x", hash);
}

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
    place.base = path_join(cache, std::string(path_file(place.base)) + folder_mark(place.base));
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
