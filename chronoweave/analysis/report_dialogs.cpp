#include "chronoweave/analysis/report_dialogs.h"

#include <algorithm>

#include "chronoweave/analysis/list_filter.h"
#include "chronoweave/analysis/search_dialogs.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "windlib/dialog/host.h"

namespace {

constexpr int accepted = 1;
constexpr int increasingChoice = 0, timeChoice = 1;

// The whole trace, in two fields.
class RangeFields {
  public:
    RangeFields(DialogModel& model, CanvasFacts& facts)
        : facts_(facts),
          model_(model),
          from_(model, facts, "tf_from", facts.Shown(0, 9), 0),
          to_(model, facts, "tf_to", EndText(facts), facts.source.totalLength) {
        analysis_ReadyRange(model, facts);
    }
    bool Press(const std::string& name) { return analysis_PressRange(facts_, name, from_, to_); }
    // None, and the user was told, for what is no range. Values behind the trace's end are cut to it.
    std::optional<ReportRange> Take() {
        const auto from = from_.value(), to = to_.value();
        const double end = facts_.source.totalLength;
        if (from && to && *from >= 0 && *to >= 0 && std::min(*from, end) < std::min(*to, end))
            return ReportRange{*from, std::min(*to, end)};
        laCanvas_Refuse(facts_.canvas, "Invalid time range.");
        model_.setMessage(facts_.canvas.fields.message);
        return std::nullopt;
    }

  private:
    static std::string EndText(const CanvasFacts& facts) {
        const std::string end = facts.Shown(facts.source.totalLength, 9);
        return end + " (Max: " + end + ')';
    }
    CanvasFacts& facts_;
    DialogModel& model_;
    TimeField from_, to_;
};

}  // namespace

std::optional<ReportRange> report_AskRange(CanvasFacts& facts) {
    DialogModel model(report_RangeDialog());
    model.setText("t_prompt", "Please define a period (in " + facts.words.unit + "):");
    RangeFields fields(model, facts);
    std::optional<ReportRange> range;
    model.onPress = [&](const std::string& name) {
        if (fields.Press(name) || (name == "ok" && !(range = fields.Take()))) return;
        model.close(name == "ok" ? accepted : Dialog_Dismissed);
    };
    return facts.canvas.calls.host->run(model) == accepted ? range : std::nullopt;
}

std::optional<ReportObject> report_AskObject(CanvasFacts& facts) {
    const AnalysisWords& words = facts.words;
    if (facts.objects.empty()) {
        laCanvas_UpdateFields(facts.canvas, 0, ("There is no " + words.lowerTerm + '.').c_str());
        return std::nullopt;
    }
    DialogModel model(search_ObjectsDialog(false));
    model.setTitle("Select One " + words.term);
    model.setText("t_prompt", "Select one " + words.lowerTerm + ':');
    model.setText("t_period", "During period (in " + words.unit + "):");
    analysis_FillObjects(model, "list", facts, facts.objects, false);
    const ListFilters filters(model, {"list"});
    RangeFields fields(model, facts);
    ReportObject chosen;
    model.onActivate = [&](const std::string&, int) { model.press("ok"); };
    model.onPress = [&](const std::string& name) {
        if (fields.Press(name)) return;
        const auto objects = analysis_SelectedObjects(model, "list");
        if (name == "cancel" || objects.empty()) return model.close(Dialog_Dismissed);
        const auto range = fields.Take();
        if (!range) return;
        chosen = {*range, objects.front()};
        model.close(accepted);
    };
    return facts.canvas.calls.host->run(model) == accepted ? std::optional(chosen) : std::nullopt;
}

std::optional<ReportGeneral> report_AskGeneral(CanvasFacts& facts) {
    ReportGeneral chosen;
    if (!search_AskObjects(facts, chosen.request) || !search_AskKind(facts, chosen.request, true) ||
        !search_AskTarget(facts, chosen.request))
        return std::nullopt;
    DialogModel model(report_OrderDialog());
    model.setChoice("order", 1);
    model.setEnabled("first", chosen.request.kind != Search_Event);
    model.onPress = [&](const std::string& name) { model.close(name == "ok" ? accepted : Dialog_Dismissed); };
    if (facts.canvas.calls.host->run(model) != accepted) return std::nullopt;
    chosen.order.increasing = model.item("order").choice == increasingChoice;
    chosen.order.timeFirst = model.item("first").choice == timeChoice;
    return chosen;
}
