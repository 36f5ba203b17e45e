#include "chronoweave/import/store_place.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

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

}  // namespace

StorePlace store_ChoosePlace(const std::string& source, const std::string& wanted) {
    StorePlace place{wanted.empty() ? path_without_extension(source) : wanted, false};
    if (path_directory_is_writable(path_directory(place.base))) return place;
    const std::string cache = path_cache_directory();
    if (!path_make_directory(cache)) return place;
    place.base = path_join(cache, std::string(path_file(place.base)) + folder_mark(place.base));
    place.inCache = true;
    return place;
}

std::string store_FileThatIsSource(const std::string& source, const std::string& base) {
    for (const char* extension : {".trs", ".tri", ".trv"}) {
        std::error_code error;
        const std::string name = base + extension;
        if (std::filesystem::equivalent(source, name, error)) return name;
    }
    return {};
}
