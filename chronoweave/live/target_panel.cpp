#include "chronoweave/live/target_panel.h"

#include <algorithm>

#include "chronoweave/live/link_words.h"
#include "chronoweave/live/panel_description.h"
#include "chronoweave/live/target_commands.h"
#include "chronoweave/live/target_mask.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/text.h"

namespace {

// Targets that the event server brings along, as they are offered to somebody new.
struct Offer {
    std::string shown, text;
};

std::vector<Offer> offers(const std::string& example) {
    std::vector<Offer> all = {{"sim - a simulated system", "sim"}};
    if (!example.empty())
        all.push_back({"replay - a recorded trace at its own pace", "replay " + example});
    else
        all.push_back({"replay FILE - a recorded trace at its own pace", "replay "});
    all.push_back({"run COMMAND - the tasks of a command", "run "});
    all.push_back({"linux - this machine's scheduler", "linux"});
    return all;
}

}  // namespace

TargetPanel::~TargetPanel() {
    Destroy();
}

void TargetPanel::Destroy() {
    if (model_) model_->close(Dialog_Dismissed);
}

void TargetPanel::Open() {
    if (model_) return desk_.host->raise(*model_);
    Build();
}

void TargetPanel::Build() {
    auto made = std::make_unique<DialogModel>(target_PanelDescription());
    model_ = made.get();
    link_.panel = this;
    widest_ = 0;
    model_->list("TargetOutput").SetColumnCount(1);
    model_->onPress = [this](const std::string& name) { Press(name); };
    model_->onCommit = [this](const std::string& name, const std::string& text) { Keep(name, text); };
    model_->onEnter = [this](const std::string& name) { Enter(name); };
    model_->onPullDown = [this](const std::string& name) { PullDown(name); };
    model_->onClose = [this](int) { Closed(); };
    const std::vector<std::string> history = desk_.history();
    model_->setText("ConnectToTarget", history.empty() ? offers({}).front().text : history.front());
    if (link_.mode == TargetLink::Mode::Unused) {
        link_.mode = TargetLink::Mode::Ready;
        link_.flags &= Target_LoadPending;
        link_.logFile = "intdump";
        ShowMask(words_NoMask);
    }
    PanelRefresh();
    desk_.host->open(std::move(made));
    for (std::string_view rest = link_.lastMessage; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        AddLine(std::string(line));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    }
}

void TargetPanel::Closed() {
    link_.panel = nullptr;
    link_.targetText = Text("ConnectToTarget");
    link_.maskText = Text("MaskField");
    model_ = nullptr;
}

void TargetPanel::PanelRefresh() {
    if (desk_.changed) desk_.changed();
    if (!model_) return;
    const bool connected = link_.Has(Target_Connected), live = link_.Has(Target_LiveModeEnabled);
    ShowFile();
    model_->setText("ConnectButton", connected ? "Disconnect" : "Connect");
    model_->setText("ControlLogging", link_.Has(Target_LoggingStarted) ? "Stop" : "Start");
    model_->setText("LiveMode", live ? "Disable" : "Enable");
    for (const char* item : {"ControlLogging", "LiveMode", "MaskButton", "Info"})
        model_->setEnabled(item, connected);
    if (!link_.targetText.empty()) model_->setText("ConnectToTarget", link_.targetText);
    model_->setReadOnly("ConnectToTarget", connected);
    if (!link_.maskText.empty()) model_->setText("MaskField", link_.maskText);
    model_->setEnabled("browseFile", !live);
    model_->setReadOnly("outputFile", live);
}

void TargetPanel::ShowFile() {
    if (model_) model_->setText("outputFile", link_.logFile);
}

void TargetPanel::ShowMask(const std::string& mask) {
    if (model_) model_->setText("MaskField", mask);
}

// The output follows its end, and keeps its newest lines.
void TargetPanel::AddLine(const std::string& line) {
    if (!model_) return;
    MScrollList& list = model_->list("TargetOutput");
    if (list.RowCount() >= mostLines) list.RemoveRows(0, mostLines / 10);
    const int row = list.RowCount();
    list.InsertRows(row, 1);
    const std::string shown = text_utf8(line);
    list.SetText(row, 0, shown);
    if (shown.size() + 2 > widest_) {
        widest_ = std::max<size_t>(shown.size() + 2, 40);
        list.SetWidth(0, static_cast<int>(widest_) * desk_.letterWidth);
    }
    list.ScrollToRow(row);
}

void TargetPanel::Press(const std::string& name) {
    if (name == "ConnectButton") TargetConnect(link_, Text("ConnectToTarget"), desk_.remember);
    if (name == "ControlLogging") TargetStartStop(link_);
    if (name == "LiveMode") desk_.enableOrDisable(Text("outputFile"));
    if (name == "MaskButton") TargetSetMask(link_, Text("MaskField"));
    if (name == "Info") TargetInfo(link_);
    if (name == "browseFile") ChooseFile();
}

void TargetPanel::Enter(const std::string& name) {
    if (name == "ConnectToTarget") TargetConnect(link_, Text("ConnectToTarget"), desk_.remember);
    if (name != "outputFile") return;
    link_.Set(Target_LoadPending, true);
    desk_.enableOrDisable(Text("outputFile"));
}

// What is typed stands when a button brings the fields up to date.
void TargetPanel::Keep(const std::string& name, const std::string& text) {
    if (name == "ConnectToTarget") link_.targetText = text;
    if (name == "MaskField") link_.maskText = text;
    if (name == "outputFile") link_.logFile = text;
}

void TargetPanel::PullDown(const std::string& name) {
    if (name == "MaskField") return PullDownMask();
    if (name == "ConnectToTarget") PullDownTargets();
}

void TargetPanel::PullDownTargets() {
    const std::vector<std::string> history = desk_.history();
    std::vector<PopUpRow> rows;
    std::vector<std::string> texts;
    for (const std::string& target : history) {
        rows.push_back({.text = target});
        texts.push_back(target);
    }
    if (!history.empty()) {
        rows.push_back({.text = popUpSeparator});
        texts.emplace_back();
    }
    for (const Offer& offer : offers(desk_.example())) {
        rows.push_back({.text = offer.shown});
        texts.push_back(offer.text);
    }
    const int chosen = desk_.host->popUpMenu("Targets", rows);
    if (!model_ || chosen < 0 || texts[static_cast<size_t>(chosen)].empty()) return;
    link_.targetText = texts[static_cast<size_t>(chosen)];
    model_->setText("ConnectToTarget", link_.targetText);
}

void TargetPanel::PullDownMask() {
    link_.maskText = Text("MaskField");
    const auto mask = mask_Of(link_.maskText);
    if (!mask) return;
    const int chosen = desk_.host->popUpMenu("Event Logging Mask", mask_Rows(*mask));
    if (!model_ || chosen < 0) return;
    link_.maskText = mask_Chosen(*mask, chosen);
    ShowMask(link_.maskText);
}

void TargetPanel::ChooseFile() {
    const std::vector<std::string> chosen =
        desk_.host->chooseFiles({.of = FileQuestion::Of::New,
                                 .title = "Save To?",
                                 .button = "Choose",
                                 .suggested = path_join(desk_.folder(), link_.logFile),
                                 .filters = {"Raw event files (*.trr)"},
                                 .settingsName = "Trvgui"});
    if (chosen.empty() || chosen.front().empty()) return;
    link_.logFile = chosen.front();
    link_.Set(Target_LoadPending, true);
    ShowFile();
}
