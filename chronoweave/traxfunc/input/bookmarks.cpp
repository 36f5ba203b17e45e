#include "chronoweave/traxfunc/input/bookmarks.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// The beginning of a label that the user did not give: it is kept in the time base.
std::string kept_beginning(const _LaCanvasData& canvas, double time) {
    const bool counts = canvas.axis.timeMode >= Time_Tick;
    return "Bookmark: " +
           laTime_Digits(laTime_Scale(canvas.source.clock.ticksPerSecond, counts ? Time_Tick : Time_Second),
                         time, counts ? 2 : 10);
}

std::string label_of(_LaCanvasData& canvas, uint32_t objectId, double time) {
    const std::string label = kept_beginning(canvas, time);
    if (objectId == laAgentId) return label;
    const laItem_Line* lane = laCanvas_FindLane(canvas.items, objectId);
    const std::string name = lane != nullptr
                                 ? std::string(laTask_WithoutFake(laCanvas_LaneName(canvas.list, *lane)))
                                 : canvas.list.objectTerm + gen_format(" 0x%x", objectId);
    return text_escape(label + " on " + name);
}

void repaint_at(_LaCanvasData& canvas, const LaBookmark& mark) {
    const int x = laCanvas_TimeToPixel(canvas, mark.time, Time_Second);
    const int reach = std::max(1, mark.thickness) / 2 + 1;
    if (x >= 0 && x < canvas.graph->width) laCanvas_RepaintColumns(canvas, x - reach, x + reach + 1);
}

}  // namespace

const LaBookmark* laBookmark_Find(const _LaCanvasData& canvas, double time, laBookmarkMatch match) {
    const double reach = std::max(3.0 / canvas.view.pixelsPerUnit, 1e-12);
    const auto found = std::find_if(
        canvas.marks.bookmarks.begin(), canvas.marks.bookmarks.end(), [&](const LaBookmark& mark) {
            return match == laBookmarkMatch::Exact ? mark.time == time : std::fabs(mark.time - time) <= reach;
        });
    return found == canvas.marks.bookmarks.end() ? nullptr : &*found;
}

const LaBookmark& laBookmark_Add(_LaCanvasData& canvas, uint32_t objectId, double time) {
    if (const LaBookmark* known = laBookmark_Find(canvas, time, laBookmarkMatch::Exact)) return *known;
    LaBookmark mark;
    mark.label = label_of(canvas, objectId, time);
    mark.objectId = objectId;
    mark.time = time;
    canvas.marks.bookmarks.insert(canvas.marks.bookmarks.begin(), std::move(mark));
    repaint_at(canvas, canvas.marks.bookmarks.front());
    return canvas.marks.bookmarks.front();
}

std::string laBookmark_ShownLabel(const _LaCanvasData& canvas, const LaBookmark& mark) {
    const std::string label = text_unescape(mark.label), kept = kept_beginning(canvas, mark.time);
    const std::string_view rest = std::string_view(label).substr(std::min(kept.size(), label.size()));
    if (!label.starts_with(kept) || (!rest.empty() && !rest.starts_with(" on "))) return label;
    const std::string unit = laTime_UnitMark(canvas.axis);
    return "Bookmark: " + laCanvas_ExactTime(canvas, mark.time) + (unit.empty() ? "" : " ") + unit +
           std::string(rest);
}

bool laBookmark_Delete(_LaCanvasData& canvas, double time, laBookmarkMatch match) {
    const LaBookmark* mark = laBookmark_Find(canvas, time, match);
    return mark != nullptr &&
           laBookmark_DeleteAt(canvas, static_cast<size_t>(mark - canvas.marks.bookmarks.data()));
}

bool laBookmark_DeleteAt(_LaCanvasData& canvas, size_t index) {
    if (index >= canvas.marks.bookmarks.size()) return false;
    const LaBookmark gone = std::move(canvas.marks.bookmarks[index]);
    canvas.marks.bookmarks.erase(canvas.marks.bookmarks.begin() + static_cast<ptrdiff_t>(index));
    repaint_at(canvas, gone);
    return true;
}

void laBookmark_DeleteAll(_LaCanvasData& canvas) {
    std::vector<LaBookmark> gone;
    gone.swap(canvas.marks.bookmarks);
    for (const LaBookmark& mark : gone) repaint_at(canvas, mark);
}

bool laBookmark_Show(_LaCanvasData& canvas, size_t index) {
    if (index >= canvas.marks.bookmarks.size()) {
        laCanvas_Beep(canvas);
        return false;
    }
    laCanvas_GoTo(canvas, canvas.marks.bookmarks[index].time, canvas.marks.bookmarks[index].objectId);
    return true;
}

bool laBookmark_AddForCursors(_LaCanvasData& canvas) {
    const double first = canvas.marks.cursor[0], second = canvas.marks.cursor[1];
    if (first < 0 && second < 0) {
        laCanvas_Beep(canvas);
        return false;
    }
    if (first >= 0) laBookmark_Add(canvas, laAgentId, first);
    if (second >= 0 && second != first) laBookmark_Add(canvas, laAgentId, second);
    return true;
}
