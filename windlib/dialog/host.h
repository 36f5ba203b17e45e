// What shows dialogs and windows for logic that knows none: an interface that is handed down to it. The
// platform layer has the real one; tests have RecordingHost (host_testing.h), which answers as it was told.
// User-interface thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "windlib/dialog/model.h"

// A row of a pop-up menu. The text of the single byte 0x01 is a separator.
struct PopUpRow {
    std::string text;  // '&' before the letter of the keyboard shortcut
    bool enabled = true;
    std::optional<bool> checked = {};  // a row with a check mark
    std::string key = {};              // shown beside it; it works elsewhere
    std::string tip = {};              // over the row; empty for none
};
constexpr const char* popUpSeparator = "\x01";

// What a chooser of files asks.
struct FileQuestion {
    enum class Of { Existing, New } of = Of::Existing;  // one or more that exist, or one to be written
    std::string title, button;
    std::string suggested = {};             // a name to begin with
    std::vector<std::string> filters = {};  // "NAME (*.EXT)"; all files can be chosen as well
    // Under this name the folder is remembered that files were last chosen in, and it begins there. Empty: it
    // is not.
    std::string settingsName = {};
};

class PrintHost;

class DialogHost {
  public:
    virtual ~DialogHost() = default;

    // Shows a dialog over the active window and returns when it is closed, with its result.
    virtual int run(DialogModel& model) = 0;
    // Shows a window beside the others. The host owns the model from now on and destroys it after its
    // onClose; the reference is valid until then.
    virtual DialogModel& open(std::unique_ptr<DialogModel> model) = 0;
    // Brings an open window to the front, and the pointer into it at 10, 10.
    virtual void raise(DialogModel& model) = 0;

    // A message that must be acknowledged: the error dialog.
    virtual void message(const std::string& text) = 0;
    // A question with yes and no; true for yes.
    virtual bool ask(const std::string& question) = 0;
    // A pop-up menu at the pointer. Number of the row chosen; -1 for none.
    virtual int popUpMenu(const std::string& title, const std::vector<PopUpRow>& rows) = 0;
    // 0xRRGGBB; none when the user cancelled.
    virtual std::optional<uint32_t> chooseColour(const std::string& title, uint32_t start) = 0;
    // Where to save; empty when the user cancelled. filter is "NAME (*.EXT)".
    virtual std::string chooseSaveFile(const std::string& title, const std::string& suggested,
                                       const std::string& filter) = 0;
    // Names with their folders, in the order chosen; none when the user cancelled. One to be written that
    // exists was confirmed by the user.
    virtual std::vector<std::string> chooseFiles(const FileQuestion& question) = 0;
    // What the user chose last of a question with this name, from run to run; empty when nothing is known.
    virtual std::string lastChoice(const std::string&) { return {}; }
    virtual void keepChoice(const std::string&, const std::string&) {}
    virtual void copyText(const std::string& text) = 0;  // to the clipboard
    virtual void beep() = 0;
    // The busy pointer with progress and Escape (see Progress); calls nest.
    virtual void showBusy(bool busy) = 0;
    // What prints; null where nothing can.
    virtual PrintHost* printHost() { return nullptr; }
};

// For BusyWork. The host outlives what is made.
inline std::function<void(bool)> dialog_Busy(DialogHost& host) {
    return [&host](bool busy) { host.showBusy(busy); };
}
