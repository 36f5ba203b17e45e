#include "chronoweave/analysis/detail_walk.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/analysis/canvas_facts.h"
#include "chronoweave/engine/search.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/view.h"
#include "windlib/busy.h"

namespace {

constexpr double sameInstant = 1e-12;
constexpr int mostSteps = 64;  // through the store, for one answer
constexpr size_t fewRows = 64;
constexpr uint32_t firstBlock = 4096, mostBlock = 1u << 20;
constexpr uint32_t progressMask = 0x3FFF;

bool same(double a, double b) {
    return std::fabs(a - b) <= sameInstant;
}

// The first segment that may begin at an instant.
size_t first_near(const LaSegments& segments, double time) {
    return segments.FirstEndingFrom(time - 2 * sameInstant);
}

// The place of a stretch in its lane: for a walk forward the last that fits, for one backward the first.
// Where the lane has been loaded anew it may be cut elsewhere, or no more.
std::optional<size_t> find_stretch(const laItem_Line& lane, const DetailStatus& wanted, bool forward) {
    std::optional<size_t> found;
    const LaStretchEnd& begin = wanted.ends.from;
    if (begin.known == LaEndKnown::Exact && !same(begin.time, wanted.time)) {
        DetailStatus whole = wanted;
        whole.time = begin.time;
        if (const auto place = find_stretch(lane, whole, forward)) return place;
    }
    const LaSegments& segments = lane.segments;
    for (size_t i = first_near(segments, wanted.time); i < segments.size(); i = segments.Next(i)) {
        const LaLnSeg segment = segments[i];
        if (segment.t0 > wanted.time + sameInstant) break;
        if (!same(segment.t0, wanted.time) || segment.status != wanted.status) continue;
        if (forward || !found) found = i;
    }
    return found;
}

// From a place along the lane to one of the status (-1 for any).
std::optional<size_t> follow(const laItem_Line& lane, size_t from, int32_t status, bool forward) {
    const LaSegments& segments = lane.segments;
    for (size_t i = from; forward ? segments.Next(i) < segments.size() : i > 0;) {
        i = forward ? segments.Next(i) : segments.Previous(i);
        if (status < 0 || segments[i].status == status) return i;
    }
    return std::nullopt;
}

DetailStatus stretch_at(const LaItems& items, uint32_t lane, size_t place) {
    const LaLnSeg segment = items.lanes[lane].segments[place];
    return {items.lanes[lane].objectId, segment.status, segment.t0, segment.t1,
            laStretch_Of(items, {laItemType::Line, lane, place})};
}

// The stretch that the store found, in the lane as it is loaded now.
std::optional<size_t> find_found(const laItem_Line& lane, double time, int32_t status, bool forward) {
    std::optional<size_t> found;
    const LaSegments& segments = lane.segments;
    for (size_t i = first_near(segments, time); i < segments.size(); i = segments.Next(i)) {
        const LaLnSeg segment = segments[i];
        if (segment.t0 > time + sameInstant) break;
        if (!same(segment.t0, time) || (status >= 0 && segment.status != status)) continue;
        found = i;
        if (forward) break;
    }
    return found;
}

// The first row of the store (backward the last) that lies behind (ahead of) a time, whatever is there at
// the time itself. The running objects are as the caller left them.
bool step_past(AnalysisSource& source, const StoreStep& step, SearchRow& row) {
    SearchResult result;
    SearchRequest& request = result.request;
    request.kind = step.kind;
    request.target = step.target;
    request.rangeFrom = step.forward ? step.time : 0;
    request.rangeTo = step.forward ? source.totalLength : step.time;
    request.objects = step.onlyObject ? std::vector<uint32_t>{step.object}
                                      : analysis_ObjectsAlive(source, request.rangeFrom, request.rangeTo);
    const auto past = [&step](const SearchRow& one) {
        return !same(one.timeA, step.time) && (one.timeA > step.time) == step.forward;
    };
    const RunningObjects running = source.running;
    for (const size_t limit : {fewRows, size_t{0}}) {
        request.rowLimit = step.forward ? limit : 0;
        result.keepLast = step.forward ? 0 : limit;
        result.rows.clear();
        result.found = 0;
        source.running = running;
        if (!search_Walk(source, result)) return false;
        const auto& rows = result.rows;
        const auto first = std::find_if(rows.begin(), rows.end(), past);
        const auto last = std::find_if(rows.rbegin(), rows.rend(), past);
        if (first != rows.end()) {
            row = step.forward ? *first : *last;
            return true;
        }
        if (rows.size() < limit || result.stopped) return false;
    }
    return false;
}

std::optional<DetailStatus> status_from_store(_LaCanvasData& canvas, const DetailStatus& from, int32_t target,
                                              bool forward) {
    AnalysisSource source = analysis_SourceOfCanvas(canvas);
    if (source.store == nullptr) return std::nullopt;
    const LaStretchEnd& reached = forward ? from.ends.to : from.ends.from;
    if (reached.known == LaEndKnown::Beyond) return std::nullopt;
    StoreStep step{Search_Status, target, from.time, from.object, true, forward};
    // From where the stretch really ends; a search forward begins a tick inside of it.
    if (reached.known == LaEndKnown::Exact)
        step.time = forward
                        ? std::max(from.time, source.clock.TimeOf(source.clock.NearestTick(reached.time) - 1))
                        : reached.time;
    SearchRow row;
    {
        const BusyWork busy(GateWork::Search, canvas.graph->setBusy);
        source.running.clear();
        // Several changes at the present instant can hide what comes behind them.
        const bool found = search_Step(source, step, row) && !same(row.timeA, step.time);
        if (!found && !step_past(source, step, row)) return std::nullopt;
    }
    detail_MoveCursor(canvas, row.timeA, from.object);
    uint32_t at = laNoLane;
    const laItem_Line* lane = laCanvas_FindLane(canvas.items, from.object, &at);
    const auto found = lane ? find_found(*lane, row.timeA, target, forward) : std::nullopt;
    if (!found) return std::nullopt;
    return stretch_at(canvas.items, at, *found);
}

}  // namespace

DetailStatus detail_StatusOf(const _LaCanvasData& canvas, const laItemRef& item) {
    return stretch_at(canvas.items, item.lane, item.index);
}

void detail_FindEnds(_LaCanvasData& canvas, DetailStatus& stretch) {
    if (stretch.ends.settled() || canvas.source.store == nullptr) return;
    const BusyWork busy(GateWork::Search, canvas.graph->setBusy);
    laStretch_Find(canvas.source, canvas.looks.legend, {stretch.object, stretch.status}, stretch.ends,
                   canvas.calls.progress);
}

DetailEvent detail_EventOf(const _LaCanvasData& canvas, size_t icon) {
    const laItem_Bitmap item = canvas.items.bitmaps[static_cast<uint32_t>(icon)];
    return {item.time,
            item.lane == laNoLane ? laAgentId : canvas.items.lanes[item.lane].objectId,
            laItem_StoreSequence(canvas.items, item),
            item.event,
            item.type,
            item.subtype};
}

DetailSwitch detail_SwitchOf(const _LaCanvasData& canvas, size_t line) {
    const laItem_Ctx item = canvas.items.ctxLines[static_cast<uint32_t>(line)];
    uint32_t first = static_cast<uint32_t>(line);
    while (first > 0 && same(canvas.items.ctxLines[first - 1].t0, item.t0)) --first;
    return {item.t0, canvas.items.lanes[item.fromLane].objectId, canvas.items.lanes[item.toLane].objectId,
            item.status, static_cast<uint32_t>(line) - first};
}

std::optional<size_t> detail_FindIcon(const _LaCanvasData& canvas, uint32_t sequence) {
    // Where every event has an icon it is known at once.
    const uint32_t place = sequence - canvas.items.firstSequence;
    if (place < canvas.items.bitmaps.size() && canvas.items.bitmaps[place].sequence == place) return place;
    uint32_t first = 0;
    for (uint32_t end = canvas.items.bitmaps.size(); first < end;) {
        const uint32_t middle = first + (end - first) / 2;
        if (laItem_StoreSequence(canvas.items, canvas.items.bitmaps[middle]) < sequence)
            first = middle + 1;
        else
            end = middle;
    }
    if (first == canvas.items.bitmaps.size() ||
        laItem_StoreSequence(canvas.items, canvas.items.bitmaps[first]) != sequence)
        return std::nullopt;
    return first;
}

void detail_MoveCursor(_LaCanvasData& canvas, double time, uint32_t object) {
    laCanvas_Reveal(canvas, time, object);
    const bool selection = canvas.marks.cursor[0] >= 0 && canvas.marks.cursor[1] >= 0 &&
                           canvas.marks.cursor[0] != canvas.marks.cursor[1];
    if (!selection) laCanvas_ClearCursors(canvas);
    laCanvas_MoveCursor(canvas, 0, time);
}

std::optional<DetailStatus> detail_StepStatus(_LaCanvasData& canvas, const DetailStatus& from,
                                              bool sameStatus, bool forward) {
    const int32_t target = sameStatus ? from.status : -1;
    uint32_t at = laNoLane;
    if (const laItem_Line* lane = laCanvas_FindLane(canvas.items, from.object, &at)) {
        const auto present = find_stretch(*lane, from, forward);
        const size_t edge = forward && !lane->segments.empty() ? lane->segments.Last() : 0;
        const size_t next = present ? follow(*lane, *present, target, forward).value_or(edge) : edge;
        if (next != edge) {
            const DetailStatus found = stretch_at(canvas.items, at, next);
            detail_MoveCursor(canvas, found.time, found.object);
            return found;
        }
    }
    return status_from_store(canvas, from, target, forward);
}

namespace {

// Looks for an event of the store by its legend entry and object.
class EventSeeker {
  public:
    EventSeeker(_LaCanvasData& canvas, const DetailEvent& like, bool sameEvent, bool sameObject)
        : source_(analysis_SourceOfCanvas(canvas)),
          like_(like),
          sameEvent_(sameEvent),
          sameObject_(sameObject),
          count_(canvas.source.store ? mt_GetEventCount(*canvas.source.store) : 0) {}

    // The first that fits behind a sequence number, and the last ahead of one.
    std::optional<DetailEvent> Behind(uint32_t sequence) {
        if (sequence >= count_) return std::nullopt;
        EventWalk walk;
        mt_StartWalkAtEvent(*source_.store, sequence + 1, 0, nullptr, walk);
        EventRecord event;
        while (mt_NextEvent(walk, event) && Tell(event.sequence - sequence, count_ - sequence))
            if (Fits(event)) return Taken(event);
        return std::nullopt;
    }
    std::optional<DetailEvent> Ahead(uint32_t sequence) {
        uint32_t block = firstBlock;
        for (uint32_t end = std::min(sequence, count_ + 1); end > 1;) {
            const uint32_t begin = end > block ? end - block : 1;
            std::optional<DetailEvent> last;
            EventWalk walk;
            mt_StartWalkAtEvent(*source_.store, begin, 0, nullptr, walk);
            EventRecord event;
            while (mt_NextEvent(walk, event) && event.sequence < end) {
                if (!Tell(sequence - end, sequence)) return std::nullopt;
                if (Fits(event)) last = Taken(event);
            }
            if (last) return last;
            end = begin;
            block = std::min(block * 2, mostBlock);
        }
        return std::nullopt;
    }

  private:
    bool Tell(uint32_t done, uint32_t total) {
        return (++seen_ & progressMask) != 0 || !source_.progress || source_.progress(done, total);
    }
    bool Fits(const EventRecord& event) {
        uint16_t type = 0;
        if (event.extra.size() < sizeof(uint32_t) || !mt_GetEventObject(*source_.store, event, type, object_))
            return false;
        return (!sameObject_ || object_ == like_.object) &&
               (!sameEvent_ || source_.legend->EventMatches(event.type, event.subtype, like_.event));
    }
    DetailEvent Taken(const EventRecord& event) const {
        return {source_.clock.TimeOf(event.time),
                object_,
                event.sequence,
                source_.legend->EventIndex(event.type, event.subtype),
                event.type,
                event.subtype};
    }

    AnalysisSource source_;
    DetailEvent like_;
    bool sameEvent_, sameObject_;
    uint32_t count_;
    uint32_t seen_ = 0;
    uint32_t object_ = 0;  // of the event looked at last
};

}  // namespace

std::optional<DetailEvent> detail_StepEvent(_LaCanvasData& canvas, const DetailEvent& from, bool sameEvent,
                                            bool sameObject, bool forward) {
    uint32_t reached = from.sequence;
    auto at = detail_FindIcon(canvas, from.sequence);
    if (at && same(detail_EventOf(canvas, *at).time, from.time)) {
        while (forward ? *at + 1 < canvas.items.bitmaps.size() : *at > 0) {
            at = forward ? *at + 1 : *at - 1;
            const DetailEvent one = detail_EventOf(canvas, *at);
            reached = one.sequence;
            if ((sameEvent && one.event != from.event) || (sameObject && one.object != from.object)) continue;
            detail_MoveCursor(canvas, one.time, one.object);
            return one;
        }
    }
    if (!canvas.source.store) return std::nullopt;
    std::optional<DetailEvent> found;
    {
        const BusyWork busy(GateWork::Search, canvas.graph->setBusy);
        EventSeeker seeker(canvas, from, sameEvent, sameObject);
        found = forward ? seeker.Behind(reached) : seeker.Ahead(reached);
    }
    if (found) detail_MoveCursor(canvas, found->time, found->object);
    return found;
}

namespace {

// Two objects may take turns several times at one instant: then the ordinal tells.
std::optional<size_t> find_switch(const _LaCanvasData& canvas, const DetailSwitch& wanted) {
    std::optional<size_t> found;
    for (uint32_t i = 0;
         i < canvas.items.ctxLines.size() && canvas.items.ctxLines[i].t0 <= wanted.time + sameInstant; ++i) {
        if (!same(canvas.items.ctxLines[i].t0, wanted.time)) continue;
        const DetailSwitch one = detail_SwitchOf(canvas, i);
        if (one.fromObject != wanted.fromObject || one.toObject != wanted.toObject) continue;
        if (one.ordinal == wanted.ordinal) return i;
        if (!found) found = i;
    }
    return found;
}

std::optional<size_t> neighbour(const _LaCanvasData& canvas, size_t place, bool forward) {
    if (forward ? place + 1 >= canvas.items.ctxLines.size() : place == 0) return std::nullopt;
    return forward ? place + 1 : place - 1;
}

// The first switch (backward the last) of the list at a time.
std::optional<size_t> switch_at(const _LaCanvasData& canvas, double time, bool forward) {
    std::optional<size_t> found;
    for (uint32_t i = 0;
         i < canvas.items.ctxLines.size() && canvas.items.ctxLines[i].t0 <= time + sameInstant; ++i) {
        if (!same(canvas.items.ctxLines[i].t0, time)) continue;
        found = i;
        if (forward) break;
    }
    return found;
}

// Where nothing of the present instant is left in the list.
std::optional<DetailSwitch> switch_from_store(_LaCanvasData& canvas, const DetailSwitch& from, bool forward) {
    AnalysisSource source = analysis_SourceOfCanvas(canvas);
    if (source.store == nullptr) return std::nullopt;
    StoreStep step{Search_Switch, canvas.looks.legend.contextSwitchStatus, from.time, from.fromObject, false,
                   forward};
    for (int tries = 0; tries < mostSteps; ++tries) {
        SearchRow row;
        {
            const BusyWork busy(GateWork::Search, canvas.graph->setBusy);
            source.running.clear();
            if (forward && tries == 0) source.running.enter(source.ProcessorOf(from.toObject), from.toObject);
            if (!step_past(source, step, row)) return std::nullopt;
        }
        laCanvas_Reveal(canvas, row.timeA, row.objectA);  // what is found takes the cursor along
        if (const auto found = switch_at(canvas, row.timeA, forward)) return detail_SwitchOf(canvas, *found);
        // An object that is seen to run for the first time takes over from itself: that is no switch.
        if (row.objectA != row.objectB && row.timeA > sameInstant)
            return DetailSwitch{row.timeA, row.objectA, row.objectB, canvas.looks.legend.contextSwitchStatus,
                                0};
        step.time = row.timeA;
    }
    return std::nullopt;
}

}  // namespace

std::optional<DetailSwitch> detail_StepSwitch(_LaCanvasData& canvas, const DetailSwitch& from, bool forward) {
    auto present = find_switch(canvas, from);
    if (!present && canvas.source.store) {
        // Those of one instant are told apart by the list alone.
        detail_MoveCursor(canvas, from.time, from.fromObject);
        present = find_switch(canvas, from);
    }
    const auto next = present ? neighbour(canvas, *present, forward) : std::nullopt;
    const auto found =
        next ? std::optional(detail_SwitchOf(canvas, *next)) : switch_from_store(canvas, from, forward);
    if (found) detail_MoveCursor(canvas, found->time, found->fromObject);
    return found;
}
