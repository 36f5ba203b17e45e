#include "chronoweave/analysis/analysis.h"

#include "chronoweave/analysis/report_dialogs.h"
#include "chronoweave/analysis/report_window.h"
#include "chronoweave/analysis/search_dialogs.h"
#include "chronoweave/analysis/search_window.h"
#include "chronoweave/traxfunc/canvas/texts.h"

namespace {

using Desk = std::shared_ptr<SearchDesk>;

bool search(_LaCanvasData& canvas, const Desk& desk) {
    if (!canvas.source.store) {
        // The wording is kept as it is known.
        laCanvas_Refuse(canvas, "There is source file.");
        return false;
    }
    const auto facts = std::make_shared<CanvasFacts>(canvas);
    if (auto request = search_Ask(*facts)) search_RunAndShow(desk, facts, std::move(*request));
    return true;
}

bool search_interval(_LaCanvasData& canvas, const Desk& desk) {
    if (!canvas.source.store) return false;
    const auto facts = std::make_shared<CanvasFacts>(canvas);
    if (auto request = search_AskInterval(*facts)) search_RunAndShow(desk, facts, std::move(*request));
    return true;
}

template <bool (*show)(const std::shared_ptr<CanvasFacts>&)>
bool report(_LaCanvasData& canvas) {
    if (!canvas.source.store) {
        laCanvas_Refuse(canvas, "No data source is loaded.");
        return false;
    }
    return show(std::make_shared<CanvasFacts>(canvas));
}

bool report_objects(const std::shared_ptr<CanvasFacts>& facts) {
    if (const auto range = report_AskRange(*facts)) report_ShowStatistics(facts, *range, std::nullopt);
    return true;
}
bool report_task(const std::shared_ptr<CanvasFacts>& facts) {
    if (const auto chosen = report_AskObject(*facts))
        report_ShowStatistics(facts, chosen->range, chosen->object);
    return true;
}
bool report_general(const std::shared_ptr<CanvasFacts>& facts) {
    if (const auto chosen = report_AskGeneral(*facts))
        report_ShowChosen(facts, chosen->request, chosen->order);
    return true;
}

}  // namespace

std::shared_ptr<SearchDesk> analysis_Attach(_LaCanvasData& canvas) {
    auto desk = std::make_shared<SearchDesk>();
    const auto add = [&canvas](const char* name, std::function<bool()> work) {
        canvas.calls.upper.commands[name] = [&canvas, work = std::move(work)](const std::string&) {
            return canvas.calls.host != nullptr && work();
        };
    };
    add("Search", [&canvas, desk] { return search(canvas, desk); });
    add("SearchInterval", [&canvas, desk] { return search_interval(canvas, desk); });
    add("NextHit", [&canvas, desk] { return search_StepHit(canvas, *desk, true); });
    add("PrevHit", [&canvas, desk] { return search_StepHit(canvas, *desk, false); });
    add("ReportObjects", [&canvas] { return report<report_objects>(canvas); });
    add("ReportTask", [&canvas] { return report<report_task>(canvas); });
    add("ReportGeneral", [&canvas] { return report<report_general>(canvas); });
    return desk;
}
