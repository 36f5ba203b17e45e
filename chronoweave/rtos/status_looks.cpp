#include "chronoweave/rtos/status_looks.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>

#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"
#include "windlib/config/config_dirs.h"

namespace {

constexpr const char* folder = "chrono_weave";

// WORD of "NAME.WORD.tc", in small letters; empty for "NAME.tc".
std::optional<std::string> look_word(std::string_view file, std::string_view osName) {
    constexpr std::string_view extension = ".tc";
    if (!text_starts_nocase(file, osName)) return std::nullopt;
    file.remove_prefix(osName.size());
    if (file.size() < extension.size() ||
        !text_equal_nocase(file.substr(file.size() - extension.size()), extension))
        return std::nullopt;
    file.remove_suffix(extension.size());
    if (file.empty()) return std::string();
    if (file.size() < 2 || file.front() != '.') return std::nullopt;
    std::string word(file.substr(1));
    for (char& c : word) c = text_lower(c);
    return word;
}

// Takes the looks of a directory that are not known yet; the plain file only where it is the installation's.
void add_looks(const std::string& directory, const std::string& osName, bool installation,
               std::map<std::string, std::string>& looks) {
    std::error_code error;
    const auto files = std::filesystem::directory_iterator(path_join(directory, folder), error);
    if (error) return;
    for (auto at = begin(files); at != end(files); at.increment(error)) {
        if (error) return;
        const auto word = look_word(at->path().filename().string(), osName);
        if (word && (installation || !word->empty())) looks.try_emplace(*word, at->path().string());
    }
}

std::string shown_name(std::string word) {
    if (word.empty()) return "Default";
    if (word.front() >= 'a' && word.front() <= 'z')
        word.front() = static_cast<char>(word.front() - 'a' + 'A');
    return word;
}

}  // namespace

std::vector<LegendLook> legend_Looks(const std::string& osName) {
    std::map<std::string, std::string> found;  // by word: the default comes first
    if (!config_DefaultsOnly()) {
        add_looks(config_UserDirectory(), osName, false, found);
        if (!config_SiteDirectory().empty()) add_looks(config_SiteDirectory(), osName, false, found);
    }
    if (!config_DefaultsDirectory().empty()) add_looks(config_DefaultsDirectory(), osName, true, found);
    std::vector<LegendLook> looks;
    for (const auto& [word, path] : found) looks.push_back({shown_name(word), path});
    return looks;
}

Result legend_UseLook(const std::string& path, std::vector<LegendStatus>& statuses) {
    ConfigureCallbacks quiet = configure_ConsoleCallbacks();
    quiet.message = [](const std::string&) {};
    quiet.errorDialog = [](const std::string&) {};
    ConfigureReader reader(quiet, 0, {});
    reader.ReadFile(path);
    if (reader.statuses().empty()) return Result::failure("it holds no status that can be read", path);
    for (LegendStatus& status : statuses) {
        const auto look = std::ranges::find(reader.statuses(), status.code, &LegendStatus::code);
        if (look == reader.statuses().end()) continue;
        status.red = look->red;
        status.green = look->green;
        status.blue = look->blue;
        status.thickness = look->thickness;
        status.lineStyle = look->lineStyle;
    }
    return {};
}
