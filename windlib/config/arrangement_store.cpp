#include "windlib/config/arrangement_store.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/attribute_store.h"
#include "windlib/config/config_dirs.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* extension = "arr";
constexpr const char* pathName = "path";
constexpr const char* textName = "text";
constexpr int mostOfOneHash = 8;

// FNV-1a.
uint64_t hash_of(std::string_view text) {
    uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

std::string full_path(const std::string& source) {
    std::error_code error;
    const fs::path full = fs::weakly_canonical(fs::absolute(source, error), error);
    return error ? source : full.string();
}

// The path and text of an arrangement's file; nothing when it is none.
struct Arrangement {
    std::string path, text;
};
std::optional<Arrangement> read_arrangement(const std::string& file) {
    std::string whole;
    if (!file_read_whole(file, whole) || !whole.starts_with(pathName)) return std::nullopt;
    AttributeStore store;
    if (!store.ReadText(file, whole)) return std::nullopt;
    const std::string* path = store.Root().Text(pathName);
    const std::string* text = store.Root().Text(textName);
    if (!path || !text) return std::nullopt;
    return Arrangement{*path, *text};
}

}  // namespace

ArrangementStore::ArrangementStore(const std::string& directory)
    : directory_(path_join(directory.empty() ? config_UserDirectory() : directory, "arrangements")) {}

// The file that holds the path, or else the first name that may be taken for it: one that is free or holds
// nothing of use.
std::string ArrangementStore::FileOf(const std::string& fullPath) const {
    const auto hash = static_cast<unsigned long long>(hash_of(fullPath));
    std::string file, open;
    for (int i = 0; i < mostOfOneHash; ++i) {
        file = path_join(directory_, gen_format("%016llx-%d.%s", hash, i, extension));
        std::error_code none;
        const bool stands = fs::exists(file, none);
        const std::optional<Arrangement> held = stands ? read_arrangement(file) : std::nullopt;
        if (held && held->path == fullPath) return file;
        if (open.empty() && !held) open = file;
        if (!stands) break;
    }
    return open.empty() ? file : open;
}

std::optional<std::string> ArrangementStore::Load(const std::string& source) const {
    const std::string path = full_path(source);
    std::error_code none;
    const std::string file = FileOf(path);
    if (!fs::exists(file, none)) return std::nullopt;
    std::optional<Arrangement> held = read_arrangement(file);
    if (!held || held->path != path) return std::nullopt;
    return std::move(held->text);
}

bool ArrangementStore::Save(const std::string& source, const std::string& text) {
    const std::string path = full_path(source);
    const std::string file = FileOf(path);
    std::error_code error;
    if (text.empty()) {
        if (Load(source)) fs::remove(file, error);
        if (error) gen_warning("Couldn't remove %s: %s", file.c_str(), error.message().c_str());
        return !error;
    }
    AttributeStore store;
    store.Root().Set(pathName, path);
    store.Root().Set(textName, text);
    if (!path_make_directory(directory_) || !store.WriteToFile(file, AttributeForm::Block)) {
        gen_warning("The arrangement of %s is not kept", source.c_str());
        return false;
    }
    DropOldest(file);
    return true;
}

void ArrangementStore::DropOldest(const std::string& except) const {
    std::vector<std::pair<fs::file_time_type, fs::path>> files;
    std::error_code error;
    fs::directory_iterator at(directory_, error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        if (path_extension(at->path().string()) != extension || at->path() == fs::path(except)) continue;
        std::error_code gone;
        const fs::file_time_type time = at->last_write_time(gone);
        if (!gone) files.emplace_back(time, at->path());
    }
    if (files.size() < mostKept) return;  // the one just written is the last of them
    std::sort(files.begin(), files.end(), std::greater<>());
    for (size_t i = mostKept - 1; i < files.size(); ++i) fs::remove(files[i].second, error);
}
