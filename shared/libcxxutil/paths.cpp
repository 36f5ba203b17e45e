#include "shared/libcxxutil/paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string below_home(const char* variable, const char* fallback) {
    const std::string base = environment(variable);
    if (!base.empty() && base.front() == '/') return path_join(base, "chronoweave");
    const std::string home = environment("HOME");
    return path_join(path_join(home.empty() ? "." : home, fallback), "chronoweave");
}

bool holds_installation(const fs::path& directory) {
    std::error_code none;
    return fs::is_directory(directory / "defaults", none) && fs::is_directory(directory / "icons", none);
}

// Where a file of this name would be made: the folder by its true name, and links followed that lead nowhere
// yet.
fs::path place_of(fs::path name) {
    constexpr int most_links = 40;
    std::error_code error;
    for (int links = 0; links < most_links; ++links) {
        fs::path target = fs::read_symlink(name, error);
        if (error) break;
        name = name.parent_path() / target;  // an absolute target stands alone
    }
    const fs::path folder = fs::canonical(name.has_parent_path() ? name.parent_path() : ".", error);
    return error ? fs::absolute(name, error).lexically_normal() : folder / name.filename();
}

// Where this program is.
fs::path program_directory() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

std::string find_installation() {
    const std::string named = environment("CHRONOWEAVE_HOME");
    if (!named.empty()) return named;
    for (fs::path at = program_directory(); !at.empty(); at = at.parent_path()) {
        if (holds_installation(at)) return at.string();
        if (holds_installation(at / "share" / "chronoweave")) return (at / "share" / "chronoweave").string();
        if (at == at.root_path()) break;
    }
    return {};
}

}  // namespace

std::string_view path_file(std::string_view path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string path_directory(std::string_view path) {
    const size_t slash = path.find_last_of('/');
    if (slash == std::string_view::npos) return ".";
    return std::string(slash == 0 ? "/" : path.substr(0, slash));
}

std::string_view path_extension(std::string_view path) {
    const std::string_view file = path_file(path);
    const size_t point = file.find_last_of('.');
    return point == std::string_view::npos ? std::string_view{} : file.substr(point + 1);
}

std::string path_without_extension(std::string_view path) {
    const size_t point = path_file(path).find_last_of('.');
    if (point == std::string_view::npos) return std::string(path);
    return std::string(path.substr(0, path.size() - path_file(path).size() + point));
}

std::string path_join(std::string_view directory, std::string_view name) {
    std::string joined(directory);
    if (!joined.empty() && joined.back() != '/') joined.push_back('/');
    return joined.append(name);
}

bool path_same_file(const std::string& one, const std::string& other) {
    std::error_code error;
    if (fs::equivalent(one, other, error)) return true;
    if (fs::exists(one, error) || fs::exists(other, error)) return false;
    return place_of(one) == place_of(other);
}

bool path_is_readable_file(const std::string& path) {
    return ::access(path.c_str(), R_OK) == 0 && !path_is_directory(path);
}

bool path_is_directory(const std::string& path) {
    std::error_code none;
    return fs::is_directory(path, none);
}

bool path_directory_is_writable(const std::string& directory) {
    std::string probe = path_join(directory, ".chronoweave_XXXXXX");
    const int file = ::mkstemp(probe.data());
    if (file < 0) return false;
    ::close(file);
    ::unlink(probe.c_str());
    return true;
}

bool path_make_directory(const std::string& directory) {
    for (size_t slash = directory.find('/', 1); slash != std::string::npos;
         slash = directory.find('/', slash + 1))
        ::mkdir(directory.substr(0, slash).c_str(), 0755);
    ::mkdir(directory.c_str(), 0755);
    return path_is_directory(directory);
}

std::string path_temporary_directory() {
    for (const char* name : {"TMP", "TEMP"})
        if (std::string value = environment(name); !value.empty()) return value;
    std::error_code none;
    return fs::temp_directory_path(none).string();
}

std::string path_cache_directory() {
    return below_home("XDG_CACHE_HOME", ".cache");
}
// The folder's mark tells apart equally named files of different folders.
std::string path_in_cache(const std::string& path) {
    std::error_code error;
    const fs::path folder = fs::absolute(path_directory(path), error).lexically_normal();
    uint32_t hash = 2166136261u;
    for (const char c : folder.string()) hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    char mark[16];
    std::snprintf(mark, sizeof mark, "-%08x", hash);
    return path_join(path_cache_directory(), std::string(path_file(path)) + mark);
}
std::string path_user_config_directory() {
    return below_home("XDG_CONFIG_HOME", ".config");
}

std::string path_find_program(const std::string& name) {
    std::vector<std::string> directories{program_directory().string()};
    std::istringstream listed(environment("PATH"));
    for (std::string one; std::getline(listed, one, ':');) directories.push_back(one.empty() ? "." : one);
    for (const std::string& directory : directories) {
        std::string path = path_join(directory, name);
        std::error_code none;
        if (fs::is_regular_file(path, none) && ::access(path.c_str(), X_OK) == 0) return path;
    }
    return {};
}

const std::string& path_installation_directory() {
    static const std::string found = find_installation();
    return found;
}
