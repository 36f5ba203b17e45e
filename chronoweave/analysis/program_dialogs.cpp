#include "chronoweave/analysis/program_dialogs.h"

#include <charconv>

#include "chronoweave/analysis/dialogs.h"
#include "chronoweave/analysis/list_filter.h"
#include "chronoweave/traxfunc/input/command_table.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int accepted = 1, cancelled = 0;

void close_by_buttons(DialogModel& model, const char* ok) {
    model.onPress = [&model, ok](const std::string& name) { model.close(name == ok ? accepted : cancelled); };
}

struct OptionBox {
    const char* item;
    bool ProgramOptions::*option;
};
constexpr OptionBox optionBoxes[] = {{"wheel", &ProgramOptions::bareWheelZooms},
                                     {"snap", &ProgramOptions::cursorsSnap},
                                     {"newtrv", &ProgramOptions::newTrv},
                                     {"prefetch", &ProgramOptions::prefetch},
                                     {"processors", &ProgramOptions::processorRows},
                                     {"switches", &ProgramOptions::plainSwitches},
                                     {"marks", &ProgramOptions::plainMarks},
                                     {"kernel", &ProgramOptions::kernel},
                                     {"icons", &ProgramOptions::iconButtons},
                                     {"right", &ProgramOptions::verticalBarRight},
                                     {"bottom", &ProgramOptions::horizontalBarBottom},
                                     {"follow", &ProgramOptions::followEnd},
                                     {"dark", &ProgramOptions::darkColours}};

}  // namespace

std::optional<std::string> dialogs_AskValue(DialogHost& host, const std::string& value,
                                            const std::string& what) {
    DialogModel model(dialogs_GetValue());
    model.setText("t_what", what);
    model.setText("tf_val", value);
    close_by_buttons(model, "bs_ok");
    if (host.run(model) != accepted) return std::nullopt;
    return model.item("tf_val").text;
}

void dialogs_AskRefreshInterval(DialogHost& host, _LaCanvasData& canvas) {
    const auto answer = dialogs_AskValue(host, std::to_string(canvas.options.refreshInterval),
                                         "Milliseconds between two looks at a live source; at least 1.");
    if (!answer) return;
    std::string_view text = text_trim(*answer);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    int value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);  // 0 when there is none, or too large
    if (value < 1 || value == canvas.options.refreshInterval) return;
    canvas.options.refreshInterval = value;
    canvas.looks.legendChanged = true;
    if (canvas.calls.upper.refreshIntervalChanged) canvas.calls.upper.refreshIntervalChanged();
}

bool dialogs_AskCanvasName(DialogHost& host, _LaCanvasData& canvas, const std::string& title) {
    const auto answer = dialogs_AskValue(host, title, "The title of this window.");
    if (!answer || answer->empty()) return false;
    canvas.source.canvasName = *answer;
    return true;
}

std::optional<ProgramOptions> dialogs_AskOptions(DialogHost& host, const ProgramOptions& options) {
    DialogModel model(dialogs_Options());
    for (const OptionBox& box : optionBoxes) model.setChecked(box.item, options.*box.option);
    close_by_buttons(model, "ok");
    if (host.run(model) != accepted) return std::nullopt;
    ProgramOptions wanted = options;
    for (const OptionBox& box : optionBoxes) wanted.*box.option = model.item(box.item).checked;
    return wanted;
}

void dialogs_TakeScrollPos(int r, ProgramOptions& options) {
    options.verticalBarRight = r > 9;
    options.horizontalBarBottom = r % 10 == 0;
}

std::optional<ProgramOptions> dialogs_AskScrollPos(DialogHost& host, const ProgramOptions& options) {
    DialogModel model(dialogs_ScrollPos());
    model.setChoice("side", options.verticalBarRight ? 1 : 0);
    model.setChoice("end", options.horizontalBarBottom ? 1 : 0);
    model.onPress = [&model](const std::string& name) {
        const int answer = 10 * model.item("side").choice + (model.item("end").choice == 0 ? 1 : 0);
        model.close(name == "ok" ? answer : Dialog_Dismissed);
    };
    const int answer = host.run(model);
    if (answer < 0) return std::nullopt;
    ProgramOptions wanted = options;
    dialogs_TakeScrollPos(answer, wanted);
    return wanted;
}

void dialogs_ShowKeys(DialogHost& host) {
    DialogModel model(dialogs_KeySheet());
    std::vector<DialogRow> rows;
    for (const laKeyLine& line : laCommands_KeySheet()) rows.push_back({{line.keys, line.what}});
    model.setRows("keys", std::move(rows));
    const ListFilters filters(model, {"keys"});
    close_by_buttons(model, "close");
    host.run(model);
}

void dialogs_ShowAbout(DialogHost& host) {
    DialogModel model(dialogs_About());
    model.setText("t_version", "Version " CW_VERSION);
    model.setText("t_build", gen_format("%s build, compiler %d.%d.%d", CW_BUILD_TYPE, __GNUC__,
                                        __GNUC_MINOR__, __GNUC_PATCHLEVEL__));
    close_by_buttons(model, "ok");
    host.run(model);
}
