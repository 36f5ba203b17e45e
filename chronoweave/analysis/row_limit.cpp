#include "chronoweave/analysis/row_limit.h"

#include <algorithm>
#include <unordered_set>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "shared/libcxxutil/report.h"

namespace {

const std::string separator(1, '\0');  // no name holds it

laPath path_of(const _LaCanvasData& canvas, const RowLimit::Named& one) {
    laPath path = laTask_MakePath(
        canvas.list, one.name ? *one.name : canvas.list.objectTerm + gen_format(" 0x%x", one.object),
        laTask_UsesKernel(canvas.list, canvas.source));
    path.id = one.object;
    return path;
}

}  // namespace

void RowLimit::Set(const std::vector<uint32_t>& shown, const std::vector<Named>& all) {
    if (set_) return;
    set_ = true;
    const std::unordered_set<uint32_t> kept(shown.begin(), shown.end());
    // An object may have other names in the view than at the end of the trace.
    std::vector<laPath> others;
    std::unordered_set<std::string> needed;  // what may not be hidden: paths of kept objects and their groups
    const auto take = [&](laPath path) {
        if (!kept.count(*path.id)) return others.push_back(std::move(path));
        while (!path.components.empty()) {
            needed.insert(path.Joined(separator));
            path.components.pop_back();
        }
    };
    for (const Named& one : all) take(path_of(canvas_, one));
    for (uint32_t i = 0; i < canvas_.items.lanes.size(); ++i)
        if (!canvas_.items.lanes[i].isAgent)
            take(laTask_PathOfLane(canvas_.list, canvas_.source, canvas_.items.lanes[i]));

    std::vector<laPath> hidden = canvas_.taskList->HiddenPaths();
    std::unordered_set<std::string> known;
    for (const laPath& path : hidden)
        if (!path.wildcard) known.insert(path.Joined(separator));
    for (laPath& path : others) {
        const std::string key = path.Joined(separator);
        if (needed.count(key) || !known.insert(key).second) continue;
        added_.push_back(path);
        hidden.push_back(std::move(path));
    }
    Apply(std::move(hidden));
}

void RowLimit::Lift() {
    if (!set_) return;
    set_ = false;
    std::unordered_set<std::string> gone;
    for (const laPath& path : added_) gone.insert(path.Joined(separator));
    std::vector<laPath> hidden = canvas_.taskList->HiddenPaths();
    std::erase_if(hidden, [&](const laPath& path) {
        return !path.wildcard && gone.count(path.Joined(separator)) != 0;
    });
    added_.clear();
    Apply(std::move(hidden));
}

void RowLimit::Apply(std::vector<laPath> paths) {
    laCanvas_Paint(canvas_, [&] {
        canvas_.taskList->SetHiddenPaths(std::move(paths));
        laCanvas_Resort(canvas_);
        laCanvas_Repaint(canvas_);
    });
}
