#include "chronoweave/traxfunc/canvas/followed_rows.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "shared/libcxxutil/report.h"

namespace {

using Keys = std::vector<std::string>;

Keys row_keys(const _LaCanvasData& canvas) {
    Keys keys;
    for (const MslObjectEntry* entry : canvas.taskList->rows())
        keys.push_back(canvas.taskList->EntryKey(*entry));
    return keys;
}

// By how many rows the row moved that was at a number: or else the nearest to it that is still there.
int moved_by(const Keys& before, const Keys& after, int row) {
    std::unordered_map<std::string, int> now;
    for (const std::string& key : after) now.emplace(key, static_cast<int>(now.size()));
    const auto count = static_cast<int>(before.size());
    for (int step = 0; step < count; ++step)
        for (const int candidate : {row + step, row - step}) {
            if (candidate < 0 || candidate >= count) continue;
            const auto found = now.find(before[static_cast<size_t>(candidate)]);
            if (found != now.end()) return found->second - candidate;
        }
    return 0;
}

void scroll_rows_to(_LaCanvasData& canvas, int offset) {
    canvas.graph->vertical.setPosition(static_cast<uint64_t>(std::max(0, offset)));
    canvas.view.verticalOffset = static_cast<int>(canvas.graph->vertical.position());
}

std::string outcome(const _LaCanvasData& canvas) {
    const auto& rows = canvas.taskList->rows();
    const auto shown = std::count_if(rows.begin(), rows.end(), [](const MslObjectEntry* entry) {
        return entry->payload != laNoLane && !entry->selfHidden;
    });
    return gen_format("Active in the view: %d of %u %s.", static_cast<int>(shown), canvas.items.lanes.size(),
                      laCanvas_Plural(canvas.list.objectTermLower).c_str());
}

void remake(_LaCanvasData& canvas) {
    laCanvas_TakeActivity(canvas);
    laCanvas_Resort(canvas);
    laCanvas_Repaint(canvas);
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

}  // namespace

bool laRows_Stale(const _LaCanvasData& canvas) {
    return laList_FollowsView(canvas.list) && canvas.list.madeFor != laCanvas_RowsView(canvas);
}

bool laRows_Settle(_LaCanvasData& canvas, int keep) {
    if (!laRows_Stale(canvas)) return false;
    const int height = std::max(1, canvas.looks.rowHeight), offset = canvas.view.verticalOffset;
    const Keys before = row_keys(canvas);
    laCanvas_TakeActivity(canvas);
    canvas.taskList->Fill();
    laCanvas_Layout(canvas);
    const Keys after = row_keys(canvas);
    if (before == after) return false;
    if (!canvas.list.mostActiveFirst)
        scroll_rows_to(canvas,
                       offset + height * moved_by(before, after, (std::max(0, keep) + offset) / height));
    laCanvas_Repaint(canvas);
    return true;
}

void laRows_ToggleOnlyActive(_LaCanvasData& canvas) {
    canvas.list.onlyActive = !canvas.list.onlyActive;
    remake(canvas);
    laCanvas_UpdateFields(canvas, 0, canvas.list.onlyActive ? outcome(canvas).c_str() : "",
                          laMessageLasts::WithTheView);
}

void laRows_ToggleMostActiveFirst(_LaCanvasData& canvas) {
    canvas.list.mostActiveFirst = !canvas.list.mostActiveFirst;
    canvas.list.sortAroundEvent = false;
    remake(canvas);
    if (canvas.list.mostActiveFirst) scroll_rows_to(canvas, 0);
}
