#include "chronoweave/live/live_mode.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

#include "chronoweave/live/live_words.h"
#include "chronoweave/live/target_commands.h"
#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

// Up to the first "." of the name; the folder may have more.
std::string trace_of(const std::string& path) {
    const std::string file(path_file(path));
    return path_join(path_directory(path), file.substr(0, file.find('.')));
}

// A folder or the like of this name counts too: it is in the way.
bool exists(const std::string& path) {
    std::error_code none;
    return std::filesystem::exists(path, none);
}

bool shows(const LiveDesk& desk, const std::string& path) {
    const std::string shown = desk.window.source();
    return !shown.empty() && live_SameTrace(shown, path);
}

// The earlier file goes, if the user wants that. False ends the command.
bool make_room(const LiveDesk& desk, const std::string& path) {
    if (!exists(path)) return true;
    if (!desk.host.ask(gen_format(words_LiveOverwrite, desk.link.logFile.c_str()))) return false;
    if (shows(desk, path)) desk.window.reset();
    if (::unlink(path.c_str()) == 0 || errno == ENOENT) return true;
    const int error = errno;
    ShowPanelMessage(desk.link, Result::system(path, error, "can't be replaced").text() + "\n");
    return false;
}

bool create_empty(const std::string& path) {
    return FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666)).IsOpen();
}

std::optional<std::string> find(const std::string& path) {
    if (!path_extension(path).empty())
        return path_is_readable_file(path) ? std::optional(path) : std::nullopt;
    for (const char* extension : {".trs", ".trr"})
        if (path_is_readable_file(path + extension)) return path + extension;
    return std::nullopt;
}

// The log file as it is to be loaded; one that the server has not made yet is made.
std::optional<std::string> log_file(const LiveDesk& desk) {
    const std::string& path = desk.link.logPath;
    if (auto found = find(path)) return found;
    if (!desk.link.Has(Target_LiveModeEnabled) || !create_empty(path)) return std::nullopt;
    return find(path);
}

void load(const LiveDesk& desk, const std::string& path) {
    desk.window.reset();
    desk.canvas.source.liveRefresh = true;
    desk.window.load(path);
    if (desk.canvas.calls.buttonsChanged) desk.canvas.calls.buttonsChanged();
}

}  // namespace

std::string live_FullName(const LiveDesk& desk, const std::string& name) {
    const std::string shown = desk.window.source();
    std::filesystem::path path(name);
    if (path.is_relative() && !shown.empty()) path = std::filesystem::path(path_directory(shown)) / path;
    std::error_code none;
    return std::filesystem::absolute(path, none).lexically_normal().string();
}

bool live_SameTrace(const std::string& one, const std::string& other) {
    return trace_of(one) == trace_of(other);
}

void TargetEnableDisable(const LiveDesk& desk, const std::string& name) {
    TargetLink& link = desk.link;
    if (!TargetIsConnected(link)) return;
    if (link.Has(Target_LiveModeEnabled)) return TargetDisable(link);
    link.logFile = path_extension(name).empty() && !name.empty() ? name + ".trr" : name;
    if (link.panel) link.panel->Refresh();
    // What can't be sent is told before anything is replaced.
    const std::string path = live_FullName(desk, link.logFile);
    const bool soundName = !name.empty() && path.find_first_of("%\r\n") == std::string::npos;
    if (soundName && !make_room(desk, path)) return;
    link.logPath = path;
    link.Set(Target_LoadPending, true);
    TargetEnable(link, name.empty() ? "\n" : path);
    if (link.Has(Target_LiveModeEnabled)) LoadLiveFile(desk);
}

void LoadLiveFile(const LiveDesk& desk) {
    TargetLink& link = desk.link;
    if (!link.Has(Target_LoadPending)) return;
    link.Set(Target_LoadPending, false);
    if (link.logFile.empty()) return;
    const auto path = log_file(desk);
    if (!path) return;
    const bool replaces = !desk.canvas.source.store || shows(desk, *path) ||
                          desk.host.ask(gen_format(words_LiveIntoCanvas, link.logFile.c_str()));
    if (replaces) load(desk, *path);
}
