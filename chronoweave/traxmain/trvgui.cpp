#include "chronoweave/traxmain/trvgui.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "chronoweave/analysis/program_options.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/manual_window.h"
#include "chronoweave/traxmain/program_services.h"
#include "chronoweave/traxmain/start_options.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/return_point.h"
#include "windlib/config/arrangement_store.h"
#include "windlib/config/config_dirs.h"
#include "windlib/config/option_file.h"
#include "windlib/config/settings.h"
#include "windlib/menu/menu.h"
#include "windlib/qt/console_window.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/last_words.h"
#include "windlib/qt/platform.h"
#include "windlib/qt/qt_wait_windows.h"

namespace {

constexpr const char* title = "VOREL Chronoweave";

void applyToolkitOptions(const StartOptions& options) {
    for (const std::string& warning : options.warnings) gen_warning("%s", warning.c_str());
    if (options.console) console_Open("Vorel Console");
    if (!options.configDirectory.empty()) config_SetUserDirectory(options.configDirectory);
    config_UseDefaultsOnly(options.defaultsOnly);
}

bool installsHandlers(const StartOptions& options) {
    bool install = true;
    for (const StartOptions::Switch& debug : options.debugSwitches) {
        if (debug.name == "no_signal_handlers") install = !debug.on;
        if (debug.name == "alternative_prefixes") gen_use_alternative_prefixes(debug.on);
    }
    return install;
}

// The option file "options", where there is one: defaults of the program's options, for a site or a user.
OptionTree siteOptions() {
    OptionTree tree;
    OptionFileHooks hooks;
    hooks.findOnSystemPaths = [](const std::string& name) { return config_FindFile(name); };
    if (const std::string file = config_FindFile("options"); !file.empty())
        optionfile_Load(file, tree, hooks);
    if (const std::string* fix = tree.Value("DanglingMenuResourcePtrFix"))
        menu_Registry().danglingPtrFix = optionfile_Truth(*fix).value_or(true);
    return tree;
}

// A new window, shown and empty. It deletes itself when it is closed.
CanvasWindow* openCanvas(bool live, const CanvasServices& services) {
    auto* window = new CanvasWindow(title, live, services);
    window->show();
    platform_ProcessPending();  // the window has its size before the first view is chosen
    return window;
}

void openFirstCanvas(const StartOptions& options, const CanvasServices& services) {
    CanvasWindow* const canvas = openCanvas(options.live, services);
    if (options.dataFile.empty())
        canvas->showEmpty();
    else
        canvas->load(options.dataFile);
}

constexpr const char* noRouter = "Warning: Unable to start IDE framework (svc_router).  Exiting.";

// From the first window, or the first client, to the last. The exit status.
int runWindows(const StartOptions& options, CanvasServices services) {
    ProgramServices others(*services.events, *services.waits, [&services] {
        CanvasWindow* const window = openCanvas(false, services);
        window->showEmpty();
        return window;
    });
    services.debugger = &others.debugger();
    if (options.serviceMode && !others.joinRouter(options.router, title)) {
        platform_MessageBox(nullptr, noRouter);
        return 1;
    }
    if (options.pluginPort) others.connectPluginHost(*options.pluginPort);
    if (!options.serviceMode) {
        openFirstCanvas(options, services);
        platform_Loop([] { return CanvasWindow::count() > 0; });
        return 0;
    }
    if (!options.dataFile.empty())
        gen_warning("As a service the program opens what it is asked to; %s is not opened.",
                    options.dataFile.c_str());
    platform_Loop([&others] { return others.goesOn(); });
    CanvasWindow::closeAll();
    platform_ProcessPending();
    return 0;
}

}  // namespace

int trvgui_Main(int argc, char** argv) {
    process_Begin(argv[0]);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == last_BoxOption) return last_ShowBox(argv[0], argv[2]);
    const StartOptions options = start_Parse(arguments, std::getenv("NOSPLASH") != nullptr);
    if (options.answer != StartAnswer::None) {
        std::fputs(start_AnswerText(options.answer, gen_short_name(), CW_VERSION).c_str(), stdout);
        return std::fflush(stdout) == 0 ? 0 : 1;
    }
    const auto application = platform_Start(argv[0]);
    manual_TakeF1();
    last_Prepare();
    console_Install();
    console_SetListener(CanvasWindow::tellConsoleAll);
    applyToolkitOptions(options);

    // The loop is the outermost place to return to from a fault that nothing below caught. What stood on the
    // stack between is lost; the program only says so and ends.
    sigjmp_buf& point = gen_push_return_point();
    // The wording is kept as it is known.
    if (sigsetjmp(point, 1) != 0) last_Words("Cannot continue, exitting...");
    if (installsHandlers(options)) gen_install_signal_handlers();
    QtEventService events;
    QtWaitWindows waits(events, QtWaitWindows::Questions::Modal);
    SettingsManager settings(program_Switches());
    ArrangementStore arrangements;
    settings.TakeDefaults(siteOptions());
    int status = 0;
    if (options.defaultsOnly) {
        status = runWindows(options, {.events = &events, .waits = &waits});
    } else {
        settings.Load();
        status = runWindows(options, {&settings, &arrangements, &events, &waits});
        settings.Save();
    }
    gen_pop_return_point();
    console_Close();
    return status;
}
