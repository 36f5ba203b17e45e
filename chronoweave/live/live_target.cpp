#include "chronoweave/live/live_target.h"

#include <filesystem>

#include "chronoweave/live/link_words.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/life.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"
#include "windlib/config/settings.h"

namespace {

constexpr const char* historyKind = "VOREL_CHRONOWEAVE_TARGET_FOR_KORVANTIS";
constexpr const char* defaultsOf = "korvantis";

std::unique_ptr<LinkWait> make_wait(const LiveServices& services) {
    if (services.windows && services.watches)
        return std::make_unique<WindowLinkWait>(*services.watches, *services.windows);
    return std::make_unique<PlainLinkWait>();
}

// A raw event file of the samples that come with the program.
std::string example_trace() {
    std::error_code none;
    const std::string folder = path_join(path_installation_directory(), "samples");
    std::string first;
    for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
        const std::string path = entry.path().string();
        if (path_extension(path) == "trr" && (first.empty() || path < first)) first = path;
    }
    return first;
}

}  // namespace

LiveTarget::LiveTarget(_LaCanvasData& canvas, LiveWindow window, const LiveServices& services)
    : canvas_(canvas),
      window_(std::move(window)),
      services_(services),
      wait_(make_wait(services)),
      reader_(canvas, window_, *services.tasks),
      panel_(link_, Desk()) {
    link_.around = {.installation = path_installation_directory(),
                    .tasks = services_.tasks,
                    .wait = wait_.get(),
                    .timeoutMs = [this] { return canvas_.options.targetTimeout; },
                    .tell =
                        [this](const std::string& text) {
                            canvas_.calls.upper.serverConnected = link_.Has(Target_Connected);
                            laCanvas_UpdateFields(canvas_, 0, std::string(text_trim(text)).c_str());
                        }};
    wait_->onLong = [this](LinkWait::Long what) {
        const bool begins = what == LinkWait::Long::Begins;
        laCanvas_UpdateFields(canvas_, 0, begins ? words_WaitsForServer : " ");
    };
    laUpperFloor& upper = canvas_.calls.upper;
    upper.commands["Korvantis"] = [this](const std::string&) { return OpenPanel(), true; };
    upper.refreshIntervalChanged = [this] { reader_.CreateRefreshTimer(); };
    upper.refreshToggled = [this] { reader_.Toggled(); };
}

LiveTarget::~LiveTarget() {
    laUpperFloor& upper = canvas_.calls.upper;
    upper.commands.erase("Korvantis");
    upper.refreshIntervalChanged = {};
    upper.refreshToggled = {};
    TargetLinkReset(link_, LinkEnd::Final, LinkPanelAfter::Goes);
}

PanelDesk LiveTarget::Desk() {
    PanelDesk desk;
    desk.host = canvas_.calls.host;
    desk.changed = [this] {
        canvas_.calls.upper.serverConnected = link_.Has(Target_Connected);
        if (canvas_.calls.buttonsChanged) canvas_.calls.buttonsChanged();
    };
    desk.enableOrDisable = [this](const std::string& name) {
        TargetEnableDisable({canvas_, link_, window_, *canvas_.calls.host}, name);
    };
    desk.folder = [this] {
        const std::string shown = window_.source();
        return shown.empty() ? std::filesystem::current_path().string() : path_directory(shown);
    };
    desk.example = example_trace;
    desk.history = [this] {
        return services_.settings ? services_.settings->Recent(historyKind) : std::vector<std::string>();
    };
    desk.remember = [this](const std::string& target) {
        if (services_.settings) services_.settings->AddRecent(target, historyKind);
    };
    desk.letterWidth = std::max(1, canvas_.graph->font.charWidth);
    return desk;
}

void LiveTarget::OpenPanel() {
    if (!panel_.IsOpen() && canvas_.looks.legend.empty()) LoadDefaults();
    panel_.Open();
    canvas_.calls.upper.targetPanelOpened = true;
    canvas_.calls.upper.sourceIsLive = true;  // it can be frozen
    if (canvas_.calls.buttonsChanged) canvas_.calls.buttonsChanged();
}

// The time-out among other things is what the configure file says.
void LiveTarget::LoadDefaults() {
    Legend legend;
    legend.misc = laLegend_Kept(canvas_.options);
    ConfigureCallbacks callbacks = configure_ConsoleCallbacks();
    callbacks.message = [this](const std::string& text) {
        laCanvas_UpdateFields(canvas_, 0, std::string(text_trim(text)).c_str());
    };
    callbacks.attention = [this] { laCanvas_Beep(canvas_); };
    callbacks.errorDialog = [this](const std::string& text) { canvas_.calls.host->message(text); };
    if (configure_Read(legend, defaultsOf, callbacks, canvas_.graph->font.height))
        laCanvas_LoadLegend(canvas_, std::move(legend));
}

LiveReader::Loading LiveTarget::BeforeLoad(const std::string& path) {
    if (link_.Has(Target_LiveModeEnabled) && live_SameTrace(path, link_.logPath))
        canvas_.source.liveRefresh = true;
    return reader_.BeforeLoad(path);
}
