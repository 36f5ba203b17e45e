#include "windlib/config/settings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <system_error>

#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/config_dirs.h"

namespace {

constexpr const char* versionName = "version";
constexpr const char* optionsNode = "Options";
constexpr const char* recentNode = "RecentFiles";
constexpr const char* choicesNode = "Choices";
constexpr const char* positionsNode = "WindowPositionsTree";
constexpr const char* timestampName = "timestamp";
constexpr int mostBackups = 100;

constexpr std::array<const char*, 4> absoluteNames{"abs_x", "abs_y", "abs_w", "abs_h"};
constexpr std::array<const char*, 4> parentNames{"par_x", "par_y", "par_w", "par_h"};
constexpr std::array<int WindowRectangle::*, 4> sides{&WindowRectangle::x, &WindowRectangle::y,
                                                      &WindowRectangle::width, &WindowRectangle::height};

std::optional<WindowRectangle> read_rectangle(const AttributeNode& node,
                                              const std::array<const char*, 4>& names) {
    WindowRectangle rectangle;
    for (size_t i = 0; i < names.size(); ++i) {
        const int64_t* number = node.Number(names[i]);
        // Far from the ends of int, so that a sum of position and size fits.
        if (!number || *number < -1000000 || *number > 1000000) return std::nullopt;
        rectangle.*sides[i] = static_cast<int>(*number);
    }
    return rectangle;
}

void write_rectangle(AttributeNode& node, const std::array<const char*, 4>& names,
                     const WindowRectangle& rectangle) {
    for (size_t i = 0; i < names.size(); ++i) node.Set(names[i], int64_t{rectangle.*sides[i]});
}

// The parts of a dotted key; none when one is empty.
std::vector<std::string_view> key_parts(std::string_view key) {
    std::vector<std::string_view> parts;
    for (;;) {
        const size_t point = key.find('.');
        parts.push_back(key.substr(0, point));
        if (parts.back().empty()) return {};
        if (point == std::string_view::npos) return parts;
        key.remove_prefix(point + 1);
    }
}

}  // namespace

SettingsManager::SettingsManager(std::vector<SettingsSwitch> switches, std::string directory)
    : path_(path_join(directory.empty() ? config_UserDirectory() : directory, "settings")),
      defaults_(std::move(switches)),
      switches_(defaults_),
      store_({.wordsAreTexts = false, .sizeSuffixes = false, .goOnAfterErrors = true, .fileHook = {}}) {}

void SettingsManager::TakeDefaults(const OptionTree& tree) {
    for (SettingsSwitch& each : defaults_) {
        const std::string* value = tree.Value(each.name);
        if (value == nullptr) continue;
        if (const auto on = optionfile_Truth(*value))
            each.on = *on;
        else
            gen_warning("the option \"%s\" can't be \"%s\"", each.name, value->c_str());
    }
    switches_ = defaults_;
}

bool SettingsManager::IsOn(std::string_view name) const {
    return std::any_of(switches_.begin(), switches_.end(),
                       [name](const SettingsSwitch& each) { return each.name == name && each.on; });
}

void SettingsManager::SetOn(std::string_view name, bool on) {
    for (SettingsSwitch& each : switches_)
        if (each.name == name) each.on = on;
}

bool SettingsManager::Load() {
    store_.Clear();
    switches_ = defaults_;
    written_.clear();
    found_ = Found::Nothing;
    std::error_code none;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path_, none))) return true;
    std::string text;
    found_ = Found::Damaged;
    if (const Result whole = file_read_whole(path_, text); !whole) {
        gen_warning("could not read \"%s\": %s", path_.c_str(), whole.reason().c_str());
        return false;
    }
    bool good = store_.ReadText(path_, text);
    const bool version = CheckVersion();
    good = TakeSwitches() && good;
    good = TakeRecent() && good;
    if (good && version) {
        found_ = Found::Good;
        written_ = std::move(text);
    } else if (!version) {
        found_ = Found::Newer;
    }
    return good && version;
}

// A value of the wrong kind; always false.
bool SettingsManager::Unusable(const Attribute& attribute) const {
    gen_warning("\"%s\", line %d: the value of \"%s\" can't be used", attribute.file.c_str(), attribute.line,
                attribute.name.c_str());
    return false;
}

bool SettingsManager::CheckVersion() {
    const Attribute* attribute = store_.Root().Find(versionName);
    const int64_t* version = store_.Root().Number(versionName);
    if (!attribute) return true;
    if (!version) return Unusable(*attribute);
    if (*version <= formatVersion) return true;
    gen_warning("\"%s\", line %d: the settings are of a newer version (%lld) of the program", path_.c_str(),
                attribute->line, static_cast<long long>(*version));
    return false;
}

bool SettingsManager::TakeSwitches() {
    const AttributeNode* node = store_.Root().Child(optionsNode);
    bool good = true;
    for (SettingsSwitch& each : switches_) {
        const Attribute* attribute = node ? node->Find(each.name) : nullptr;
        const int64_t* number = node ? node->Number(each.name) : nullptr;
        if (number && (*number == 0 || *number == 1))
            each.on = *number != 0;
        else if (attribute)
            good = Unusable(*attribute);
    }
    return good;
}

bool SettingsManager::TakeRecent() {
    AttributeNode* node = store_.Root().Child(recentNode);
    if (!node) return true;
    std::vector<std::string> bad;
    for (const auto& attribute : node->attributes())
        if (attribute->kind() != 2 && !Unusable(*attribute)) bad.push_back(attribute->name);
    for (const std::string& name : bad) node->Remove(name);
    return bad.empty();
}

bool SettingsManager::Save() {
    AttributeNode& root = store_.Root();
    root.Set(versionName, formatVersion);
    AttributeNode& node = root.MakeChild(optionsNode);
    // What is as by default stays out, so that another default of the site holds.
    for (size_t i = 0; i < switches_.size(); ++i) {
        if (switches_[i].on == defaults_[i].on)
            node.Remove(switches_[i].name);
        else
            node.Set(switches_[i].name, int64_t{switches_[i].on ? 1 : 0});
    }
    const std::string text = store_.Write(AttributeForm::Block);
    if (text == written_) return true;
    if (!path_make_directory(path_directory(path_)) || !KeepOldFile()) {
        gen_warning("failed when writing %s", path_.c_str());
        return false;
    }
    if (const Result written = file_replace(path_, text); !written) {
        gen_warning("failed when writing %s: %s", path_.c_str(), written.reason().c_str());
        return false;
    }
    written_ = text;
    found_ = Found::Good;
    return true;
}

// Moves a file that could not be read as a whole out of the way of the new one. True when there is nothing
// more to keep.
bool SettingsManager::KeepOldFile() {
    if (found_ != Found::Damaged && found_ != Found::Newer) return true;
    std::string kept = path_ + ".bak";
    std::error_code none;
    for (int i = 2; i <= mostBackups && std::filesystem::exists(std::filesystem::symlink_status(kept, none));
         ++i)
        kept = path_ + ".bak" + std::to_string(i);
    // Renamed and not copied: it may be something that can't be read.
    if (std::rename(path_.c_str(), kept.c_str()) != 0) return false;
    gen_warning("\"%s\" could not be used as a whole; it is kept as \"%s\"", path_.c_str(), kept.c_str());
    found_ = Found::Nothing;
    return true;
}

std::vector<std::string> SettingsManager::Recent(std::string_view kind) const {
    const AttributeNode* node = store_.Root().Child(recentNode);
    const std::vector<std::string>* files = node ? node->Texts(kind) : nullptr;
    if (!files) return {};
    const size_t count = std::min(files->size(), mostRecent);
    return {files->begin(), files->begin() + static_cast<std::ptrdiff_t>(count)};
}

void SettingsManager::AddRecent(const std::string& path, std::string_view kind) {
    if (path.empty() || kind.empty()) return;
    std::vector<std::string> files = Recent(kind);
    std::erase(files, path);
    files.insert(files.begin(), path);
    if (files.size() > mostRecent) files.resize(mostRecent);
    store_.Root().MakeChild(recentNode).Set(kind, std::move(files));
}

void SettingsManager::RemoveRecent(const std::string& path, std::string_view kind) {
    std::vector<std::string> files = Recent(kind);
    if (std::erase(files, path) != 0) store_.Root().MakeChild(recentNode).Set(kind, std::move(files));
}

std::string SettingsManager::Choice(std::string_view name) const {
    const AttributeNode* node = store_.Root().Child(choicesNode);
    const std::string* chosen = node ? node->Text(name) : nullptr;
    return chosen ? *chosen : std::string();
}

void SettingsManager::SetChoice(std::string_view name, const std::string& chosen) {
    if (!name.empty()) store_.Root().MakeChild(choicesNode).Set(name, chosen);
}

std::optional<WindowPosition> SettingsManager::Position(std::string_view key) const {
    const std::vector<std::string_view> parts = key_parts(key);
    const AttributeNode* node = store_.Root().Child(positionsNode);
    for (const std::string_view part : parts) node = node ? node->Child(part) : nullptr;
    if (!node || parts.empty()) return std::nullopt;
    const std::optional<WindowRectangle> absolute = read_rectangle(*node, absoluteNames);
    if (!absolute || absolute->width <= 0 || absolute->height <= 0) return std::nullopt;
    WindowPosition position;
    position.absolute = *absolute;
    position.toParent = read_rectangle(*node, parentNames).value_or(WindowRectangle{});
    const int64_t* timestamp = node->Number(timestampName);
    position.timestamp = timestamp ? *timestamp : 0;
    return position;
}

bool SettingsManager::SetPosition(std::string_view key, const WindowPosition& position) {
    const std::vector<std::string_view> parts = key_parts(key);
    if (parts.empty()) return false;
    AttributeNode* node = &store_.Root().MakeChild(positionsNode);
    for (const std::string_view part : parts) {
        node->Set(timestampName, position.timestamp);
        node = &node->MakeChild(part);
    }
    node->Set(timestampName, position.timestamp);
    write_rectangle(*node, absoluteNames, position.absolute);
    write_rectangle(*node, parentNames, position.toParent);
    return true;
}
