#include "chronoweave/traxfunc/input/processor_hit.h"

#include <algorithm>
#include <map>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/draw/draw_processors.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t mostNames = 4;  // of those that share a stretch of a load curve

std::string quoted_name(const _LaCanvasData& canvas, uint32_t lane) {
    return '"' +
           text_utf8(
               std::string(laTask_WithoutFake(laCanvas_LaneName(canvas.list, canvas.items.lanes[lane])))) +
           '"';
}

std::string processor_name(const _LaCanvasData& canvas, const LaProcessor& processor) {
    const MslObjectEntry* entry = canvas.taskList->EntryAt(processor.row);
    return entry == nullptr || processor.own ? gen_format("CPU %u", processor.key)
                                             : text_utf8(canvas.taskList->RowText(*entry, 0));
}

// The segment of the lane that a run is.
std::optional<laItemRef> segment_of(const _LaCanvasData& canvas, const LaRun& run) {
    const LaSegments& segments = canvas.items.lanes[run.lane].segments;
    const size_t at = segments.FirstFrom(run.t0);
    if (at == segments.size() || segments[at].t0 != run.t0) return std::nullopt;
    return laItemRef{laItemType::Line, run.lane, at};
}

std::string run_tip(_LaCanvasData& canvas, const LaProcessor& processor, size_t run, int milliseconds) {
    const LaRun& one = processor.runs[run];
    std::string who = canvas.list.objectTerm + ' ' + quoted_name(canvas, one.lane) + " runs on " +
                      processor_name(canvas, processor);
    size_t before = run;
    while (before > 0 && processor.runs[before - 1].lane == one.lane) --before;
    std::string behind = before == 0 ? "" : "\nafter " + quoted_name(canvas, processor.runs[before - 1].lane);
    const auto segment = segment_of(canvas, one);
    if (!segment) return who + behind;
    return laTip_AroundStretch(canvas, *segment, std::move(who), std::move(behind), milliseconds);
}

// Who takes how much of a strip of a load curve.
std::string load_tip(const _LaCanvasData& canvas, const LaProcessor& processor, const laLoadStrip& strip) {
    const laTimeScale scale = canvas.scene().scale();
    const double from = std::max(0.0, scale.BeginOf(strip.from)), to = scale.BeginOf(strip.end);
    std::map<uint32_t, double> times;
    double busy = 0;
    for (size_t i = laProcessor_FirstEndingBehind(processor, from);
         i < processor.runs.size() && processor.runs[i].t0 < to; ++i) {
        const LaRun& run = processor.runs[i];
        if (run.idle) continue;
        const double time = std::min(to, run.t1) - std::max(from, run.t0);
        times[run.lane] += time;
        busy += time;
    }
    std::vector<std::pair<double, uint32_t>> most;
    for (const auto& [lane, time] : times) most.emplace_back(time, lane);
    std::ranges::sort(most, std::greater());
    std::string text = processor_name(canvas, processor) +
                       gen_format(" is busy %.0f %% of ", 100 * busy / (to - from)) +
                       laTip_Time(canvas, from) + " to " + laTip_Time(canvas, to) + " (in " +
                       laTime_UnitName(canvas.axis, true) + "s)";
    for (size_t i = 0; i < std::min(most.size(), mostNames); ++i)
        text +=
            gen_format("\n%.0f %% ", 100 * most[i].first / (to - from)) + quoted_name(canvas, most[i].second);
    return text + (most.size() > mostNames ? gen_format("\nand %zu more", most.size() - mostNames) : "");
}

void open_groups(_LaCanvasData& canvas, const MslObjectEntry& entry) {
    bool opened = false;
    for (MslObjectEntry* at = entry.parent; at != nullptr; at = at->parent)
        if (at->collapsed && canvas.taskList->SetCollapsed(*at, false)) opened = true;
    if (opened) laCanvas_Relayout(canvas);
}

// Between the rows that stay at the edges.
void bring_into_view(_LaCanvasData& canvas, int row) {
    const int rowHeight = canvas.looks.rowHeight, height = laAxis_Top(*canvas.graph);
    const int top = row * rowHeight - canvas.view.verticalOffset;
    const LaFreeRows free = laPinned_Free(canvas.items, canvas.looks, canvas.view, height);
    if (top < free.from || top + rowHeight > free.end) laCanvas_ScrollRows(canvas, top - height / 3);
}

}  // namespace

std::optional<laProcessorHit> laProcessor_HitTest(const _LaCanvasData& canvas, int x, int y) {
    if (canvas.items.processors.list.empty() || x < 0 || x >= canvas.graph->width) return std::nullopt;
    laProcessorHit hit;
    hit.processor = laProcessor_AtRow(canvas.items, canvas.looks, canvas.view, laAxis_Top(*canvas.graph), y);
    if (hit.processor == nullptr) return std::nullopt;
    hit.x = x;
    // What begins in the column goes before what ends in it.
    const laTimeScale scale = canvas.scene().scale();
    const size_t next = laProcessor_FirstFrom(*hit.processor, scale.BeginOf(x + 1));
    if (next == 0) return hit;
    const LaRun& run = hit.processor->runs[next - 1];
    if (!run.idle && run.t1 > scale.BeginOf(x)) hit.run = next - 1;
    return hit;
}

std::string laProcessor_Tip(_LaCanvasData& canvas, const laProcessorHit& hit, int milliseconds) {
    const laLoadStrip strip = laProcessor_LoadAt(canvas.scene(), *hit.processor, hit.x);
    if (strip.from < strip.end) return load_tip(canvas, *hit.processor, strip);
    return hit.run ? run_tip(canvas, *hit.processor, *hit.run, milliseconds) : std::string();
}

bool laProcessor_SelectObject(_LaCanvasData& canvas, const laProcessorHit& hit) {
    if (!hit.run) {
        laCanvas_Refuse(canvas, "Nothing runs at the place.");
        return false;
    }
    const uint32_t lane = hit.processor->runs[*hit.run].lane;
    const MslObjectEntry* entry = canvas.items.lanes[lane].listEntry;
    if (entry != nullptr && entry->row < 0) open_groups(canvas, *entry);
    if (entry == nullptr || entry->row < 0) {
        laCanvas_Refuse(canvas, canvas.list.objectTerm + ' ' + quoted_name(canvas, lane) + " is hidden.");
        return false;
    }
    canvas.taskList->list().SelectOnly(entry->row);
    bring_into_view(canvas, entry->row);
    return true;
}
