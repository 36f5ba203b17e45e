#include "windlib/config/config_dirs.h"

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

struct ConfigState {
    std::optional<std::string> user;
    bool defaultsOnly = false;
};

ConfigState& state() {
    static ConfigState instance;
    return instance;
}

std::string below_installation(const char* name) {
    const std::string& installation = path_installation_directory();
    return installation.empty() ? std::string{} : path_join(installation, name);
}

bool counts(const std::string& path, ConfigAccess access) {
    // A byte 0 would cut the name short on its way to the operating system, and another file would be found.
    if (path.empty() || path.find('\0') != std::string::npos) return false;
    const int mode = access == ConfigAccess::Read ? R_OK : access == ConfigAccess::Write ? W_OK : F_OK;
    return ::access(path.c_str(), mode) == 0 && !path_is_directory(path);
}

// The path with the last component replaced by a file of the directory that has the same name but for case.
std::string of_any_case(const std::string& path, ConfigAccess access) {
    std::string found;
    const std::string_view wanted = path_file(path);
    std::error_code error;
    std::filesystem::directory_iterator at(path_directory(path), error);
    for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
        const std::string candidate = at->path().string();
        if (!text_equal_nocase(path_file(candidate), wanted)) continue;
        if (!found.empty() && found < candidate) continue;
        if (counts(candidate, access)) found = candidate;
    }
    return found;
}

}  // namespace

void config_SetUserDirectory(std::string directory) {
    if (directory.empty())
        state().user.reset();
    else
        state().user = std::move(directory);
}

void config_UseDefaultsOnly(bool on) {
    state().defaultsOnly = on;
}
bool config_DefaultsOnly() {
    return state().defaultsOnly;
}

const std::string& config_UserDirectory(bool create) {
    if (!state().user) state().user = path_user_config_directory();
    if (create && !path_make_directory(*state().user))
        gen_warning("Couldn't create user config directory: %s", state().user->c_str());
    return *state().user;
}

std::string config_SiteDirectory() {
    return below_installation("config");
}
std::string config_DefaultsDirectory() {
    return below_installation("defaults");
}

std::string config_FindFile(const std::string& path, ConfigAccess access, ConfigNames names) {
    if (path.empty()) return {};
    if (path.front() == '/') return counts(path, access) ? path : std::string{};
    std::string directories[3];
    if (!config_DefaultsOnly()) {
        directories[0] = config_UserDirectory();
        directories[1] = config_SiteDirectory();
    }
    directories[2] = config_DefaultsDirectory();
    for (const std::string& directory : directories) {
        if (directory.empty()) continue;
        const std::string full = path_join(directory, path);
        if (counts(full, access)) return full;
        if (names == ConfigNames::Exact) continue;
        std::string other = of_any_case(full, access);
        if (!other.empty()) return other;
    }
    return {};
}
