// What a program remembers of its user from run to run: its switches, the recent files, choices and the
// positions of windows, in the file "settings" of the user's configuration directory, in the syntax of the
// attribute store. A file that is damaged, can't be read or written, or is of a newer program is reported and
// never an obstacle: what can't be read has its default, and what can't be written is lost at the end of the
// run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "windlib/config/attribute_store.h"
#include "windlib/config/option_file.h"

// An option that is on or off, by the name that the file has.
struct SettingsSwitch {
    const char* name;
    bool on;  // by default, and as it is now
};

struct WindowRectangle {
    int x = 0, y = 0, width = 0, height = 0;  // pixels
    bool operator==(const WindowRectangle&) const = default;
};

struct WindowPosition {
    int64_t timestamp = 0;     // seconds since 1970 of the last save
    WindowRectangle absolute;  // on the screen
    WindowRectangle toParent;  // relative to the parent window
};

class SettingsManager {
  public:
    static constexpr int64_t formatVersion = 1;
    static constexpr size_t mostRecent = 10;

    // The program's switches with their defaults, in the order in which the file has them. The file is
    // "settings" of the directory; an empty one means the user's configuration directory.
    explicit SettingsManager(std::vector<SettingsSwitch> switches, std::string directory = {});

    // What the switches are where the file says nothing: the values of a tree (option_file.h) by the names
    // that the file has, 0 or 1, "true" or "false". Another value is reported, and passed over. Before Load.
    void TakeDefaults(const OptionTree& tree);
    // Takes over what the file says. No file is no fault. False when anything of it could not be used, which
    // has been reported with file and line.
    bool Load();
    // Writes the file when there is something new to write. The first overwriting of a file that was damaged
    // or newer keeps it beside as "settings.bak" and says so. False with a report when it could not be
    // written.
    bool Save();
    const std::string& Path() const { return path_; }

    // A name that is none of the switches' is off, and can't be set.
    bool IsOn(std::string_view name) const;
    void SetOn(std::string_view name, bool on);

    // Recent files of a kind, the newest first.
    std::vector<std::string> Recent(std::string_view kind) const;
    // Puts a file first; one that was in the list moves.
    void AddRecent(const std::string& path, std::string_view kind);
    void RemoveRecent(const std::string& path, std::string_view kind);

    // What was chosen last of a question with this name, a word; empty when nothing was.
    std::string Choice(std::string_view name) const;
    void SetChoice(std::string_view name, const std::string& chosen);

    // The key's parts are divided by ".", for example "Trvgui.Find". Nothing for a key with an empty part,
    // one that was never saved, and a position with no size.
    std::optional<WindowPosition> Position(std::string_view key) const;
    // False for a key with an empty part. The timestamp goes to every level of the path.
    bool SetPosition(std::string_view key, const WindowPosition& position);

  private:
    enum class Found { Nothing, Good, Damaged, Newer };

    bool CheckVersion();
    bool TakeSwitches();
    bool TakeRecent();
    bool Unusable(const Attribute& attribute) const;
    bool KeepOldFile();

    std::string path_;
    std::vector<SettingsSwitch> defaults_, switches_;  // of one order
    AttributeStore store_;  // holds also what this program doesn't know, so that it is written back
    std::string written_;   // the text of the file, when it is known
    Found found_ = Found::Nothing;
};
