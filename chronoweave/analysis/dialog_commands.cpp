#include "chronoweave/analysis/dialog_commands.h"

#include "chronoweave/analysis/bindings.h"
#include "chronoweave/analysis/program_dialogs.h"

namespace {

// The canvas, its host and its window, as a dialog's command finds them.
struct Desk {
    _LaCanvasData& canvas;
    DialogHost& host;
    const DialogWindow& window;
};

void run(const Desk& desk, std::unique_ptr<DialogModel> model) {
    if (model) desk.host.run(*model);
}

void name_canvas(const Desk& desk) {
    if (dialogs_AskCanvasName(desk.host, desk.canvas, desk.window.title()))
        desk.window.setTitle(desk.canvas.source.canvasName);
}

void take(const Desk& desk, const std::optional<ProgramOptions>& wanted) {
    if (wanted) desk.window.setOptions(*wanted);
}

void toggle_icons(const Desk& desk) {
    ProgramOptions wanted = desk.window.options();
    wanted.iconButtons = !wanted.iconButtons;
    desk.window.setOptions(wanted);
}

constexpr struct {
    const char* command;
    void (*work)(const Desk& desk);
} dialogs[] = {
    {"About", [](const Desk& desk) { dialogs_ShowAbout(desk.host); }},
    {"KeySheet", [](const Desk& desk) { dialogs_ShowKeys(desk.host); }},
    {"HideTasks", [](const Desk& desk) { run(desk, dialogs_OpenHide(desk.canvas)); }},
    {"GoToTime", [](const Desk& desk) { run(desk, dialogs_OpenGoto(desk.canvas)); }},
    {"TimeUnit", [](const Desk& desk) { run(desk, dialogs_OpenTimeUnit(desk.canvas)); }},
    {"EditBookmarks", [](const Desk& desk) { dialogs_EditBookmarks(desk.host, desk.canvas); }},
    {"RefreshGap", [](const Desk& desk) { dialogs_AskRefreshInterval(desk.host, desk.canvas); }},
    {"CanvasName", name_canvas},
    {"Options", [](const Desk& desk) { take(desk, dialogs_AskOptions(desk.host, desk.window.options())); }},
    {"ScrollPos",
     [](const Desk& desk) { take(desk, dialogs_AskScrollPos(desk.host, desk.window.options())); }},
};

}  // namespace

void dialogs_Attach(_LaCanvasData& canvas, DialogWindow window) {
    const auto shared = std::make_shared<const DialogWindow>(std::move(window));
    auto& commands = canvas.calls.upper.commands;
    for (const auto& [command, work] : dialogs)
        commands[command] = [&canvas, shared, work = work](const std::string&) {
            if (!canvas.calls.host) return false;
            work({canvas, *canvas.calls.host, *shared});
            shared->closed();
            return true;
        };
    commands["IconButton"] = [&canvas, shared](const std::string&) {
        if (!canvas.calls.host) return false;
        toggle_icons({canvas, *canvas.calls.host, *shared});
        return true;
    };
}
