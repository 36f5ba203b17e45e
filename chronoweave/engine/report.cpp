#include "chronoweave/engine/report.h"

#include <algorithm>
#include <unordered_map>

#include "chronoweave/engine/lane_figures.h"
#include "chronoweave/engine/report_tracking.h"

namespace {

using Record = SearchTracker::Record;

// A progress that stops a walk where it first asks.
bool stop_at_once(double, double) {
    return false;
}

// Walks the range with the objects tracked. Each event is told to onEvent(event), or with others of its kind
// and its object to onEvents(object, kind, count). False when the store gives nothing. The end of the range
// is where the walk ended.
template <class Sink, class OnEvent>
bool walk_tracked(AnalysisSource& source, const std::vector<uint32_t>& objects, double from, double to,
                  Sink& sink, WalkEnd& end, OnEvent&& onEvent, const LaneIndex::Visit& onEvents) {
    TrackedWalk<Sink> walk(source, objects, from, to, sink, Passed::Over);
    end = walk.end();
    if (!walk.started()) return false;
    while (walk.next())
        if (const EventRecord* event = walk.event()) onEvent(*event);
    if (onEvents) analysis_CountEvents(source, walk.ByLanes(), onEvents);
    end = walk.end();
    return true;
}
// The same, for sinks that take figures as well: by the lane index alone where that has them. A walk follows
// where progress stopped those, to be stopped in its turn and to say what was seen.
template <class Sink, class OnEvent>
bool track(AnalysisSource& source, const std::vector<uint32_t>& objects, double from, double to, Sink& sink,
           WalkEnd& end, OnEvent&& onEvent, const LaneIndex::Visit& onEvents) {
    Progress progress = source.progress;
    if (from <= to) {
        LaneFigures figures;
        switch (analysis_LaneFigures(source, objects, from, to, sink.ask(), figures)) {
            case LaneAnswer::Given:
                sink.take(figures);
                if (onEvents) analysis_CountEvents(source, figures.span, onEvents);
                end.started = true;
                end.reached = to;
                return true;
            case LaneAnswer::Stopped:
                source.progress = stop_at_once;
                break;
            case LaneAnswer::None:
                break;
        }
    }
    const bool went = walk_tracked(source, objects, from, to, sink, end, onEvent, onEvents);
    source.progress = std::move(progress);
    return went;
}
// The same where the events themselves don't matter.
template <class Sink>
bool track(AnalysisSource& source, const std::vector<uint32_t>& objects, double from, double to, Sink& sink,
           WalkEnd& end) {
    return track(source, objects, from, to, sink, end, [](const EventRecord&) {}, {});
}

class LegendSums {
  public:
    LegendSums(const AnalysisSource& source, LegendStatistics& statistics)
        : source_(source),
          legend_(*source.legend),
          statistics_(statistics),
          ticks_(legend_.statuses.size(), 0) {
        statistics_.eventCounts.assign(legend_.events.size(), 0);
        statistics_.statusCounts.assign(legend_.statuses.size(), 0);
        statistics_.statusTimes.assign(legend_.statuses.size(), 0.0);
    }
    void events(uint16_t type, uint16_t subtype, uint64_t count) {
        const int32_t row = legend_.EventIndex(type, subtype);
        if (row >= 0) statistics_.eventCounts[static_cast<size_t>(row)] += static_cast<uint32_t>(count);
    }
    void entered(const Record& record) { ++statistics_.statusCounts[static_cast<size_t>(record.status)]; }
    void left(const Record& record, double until) {
        const double length = source_.clock.OnTick(until) - record.time;
        ticks_[static_cast<size_t>(record.status)] += static_cast<int64_t>(source_.clock.TicksIn(length));
        close(record.status, until);
    }
    void TookOver(const Record& record) {
        CountSwitches(lastStatus_, 1);
        lastStatus_ = record.status;
    }
    static LaneAsk ask() { return {LaneAsk::Turns::Switches}; }
    void take(const LaneFigures& figures) {
        for (size_t cell = 0; cell < figures.entered.size(); ++cell) {
            statistics_.statusCounts[cell % figures.rows] += figures.entered[cell];
            ticks_[cell % figures.rows] += figures.ticks[cell];
        }
        for (const int32_t row : figures.open)
            if (row >= 0) close(row, figures.closing);
        for (size_t at = 0; at < figures.tookOverAfter.size(); ++at)
            CountSwitches(static_cast<int32_t>(at) - 1, figures.tookOverAfter[at]);
    }
    void finish(const WalkEnd& end);

  private:
    void SumCategories();
    // What the range's end lies beside its tick is all that is no whole tick.
    void close(int32_t row, double until) {
        statistics_.statusTimes[static_cast<size_t>(row)] += until - source_.clock.OnTick(until);
    }
    // A switch counts under the context-switch status of whoever took over before.
    void CountSwitches(int32_t before, uint32_t count) {
        const int32_t row = before < 0 ? legend_.contextSwitchStatus : legend_.LinkedStatus(before);
        if (row >= 0 && static_cast<size_t>(row) < legend_.statuses.size())
            statistics_.statusCounts[static_cast<size_t>(row)] += count;
    }
    const AnalysisSource& source_;
    const Legend& legend_;
    LegendStatistics& statistics_;
    std::vector<int64_t> ticks_;  // by row of the status
    int32_t lastStatus_ = -1;     // with which the last object took over
};

// Of each category the counts of the events behind it, each found by its name: two events of one name count
// the first one twice.
void LegendSums::SumCategories() {
    std::unordered_map<std::string, int32_t> rowOfName;
    size_t category = legend_.events.size();
    for (size_t row = 0; row < legend_.events.size(); ++row) {
        const LegendEvent& event = legend_.events[row];
        if (event.IsCategory()) {
            category = row;
            continue;
        }
        if (category == legend_.events.size()) continue;
        const auto [found, fresh] = rowOfName.try_emplace(event.name, -1);
        if (fresh) found->second = legend_.EventByName(event.name);
        if (found->second >= 0)
            statistics_.eventCounts[category] += statistics_.eventCounts[static_cast<size_t>(found->second)];
    }
}

void LegendSums::finish(const WalkEnd& end) {
    statistics_.stopped = end.stopped;
    statistics_.damaged = end.damaged;
    statistics_.lost = end.lost;
    statistics_.rangeTo = end.reached;
    statistics_.rangeLength = statistics_.rangeTo - statistics_.rangeFrom;
    for (const uint32_t count : statistics_.eventCounts)
        statistics_.totalEvents += static_cast<int32_t>(count);
    for (size_t row = 0; row < legend_.statuses.size(); ++row) {
        statistics_.statusTimes[row] += source_.clock.LengthOf(static_cast<double>(ticks_[row]));
        if (legend_.statuses[row].isContextSwitch) continue;
        statistics_.totalStatusCount += statistics_.statusCounts[row];
        statistics_.totalStatusTime += statistics_.statusTimes[row];
    }
    SumCategories();
}

bool usable(const AnalysisSource& source) {
    return source.store && source.legend && !source.legend->empty();
}

// Figures per object.
class ObjectSums {
  public:
    ObjectSums(const AnalysisSource& source, const SearchRequest& request, ChosenReport& report)
        : source_(source), request_(request), report_(report), ticks_(request.objects.size(), 0) {
        for (const uint32_t object : request.objects) {
            index_.add(object, static_cast<uint32_t>(report.figures.size()));
            report.figures.push_back({object, 0, 0});
        }
    }
    bool counts(uint16_t type, uint16_t subtype) const {
        return source_.legend->EventMatches(type, subtype, request_.target);
    }
    void event(const EventRecord& event) {
        if (!counts(event.type, event.subtype)) return;
        uint16_t type = 0;
        uint32_t object = 0;
        if (mt_GetEventObject(*source_.store, event, type, object)) events(object, 1);
    }
    void events(uint32_t object, uint64_t count) {
        const uint32_t at = index_.find(object);
        if (at != ObjectIndex::none) report_.figures[at].count += static_cast<int32_t>(count);
    }
    void entered(const Record& record) {
        if (request_.kind == Search_Status && wanted(record)) ++of(record).count;
    }
    void left(const Record& record, double until) {
        if (request_.kind != Search_Status || !wanted(record)) return;
        ticks_[record.place] +=
            static_cast<int64_t>(source_.clock.NearestTick(until) - source_.clock.NearestTick(record.time));
        // What the range's end lies beside its tick is all that is no whole tick.
        of(record).time += until - source_.clock.OnTick(until);
    }
    LaneAsk ask() const {
        using Turns = LaneAsk::Turns;
        return {request_.kind == Search_Switch ? Turns::Switches : Turns::PassedOver};
    }
    void take(const LaneFigures& figures) {
        for (size_t place = 0; place < figures.open.size(); ++place) {
            if (request_.kind == Search_Switch)
                report_.figures[place].count = static_cast<int32_t>(figures.tookOver[place]);
            for (size_t row = 0; request_.kind == Search_Status && row < figures.rows; ++row) {
                if (request_.target >= 0 && static_cast<int32_t>(row) != request_.target) continue;
                report_.figures[place].count +=
                    static_cast<int32_t>(figures.entered[place * figures.rows + row]);
                ticks_[place] += figures.ticks[place * figures.rows + row];
                if (figures.open[place] == static_cast<int32_t>(row))
                    report_.figures[place].time += figures.closing - source_.clock.OnTick(figures.closing);
            }
        }
    }
    // Times are sums of ticks, so that objects of the same time compare equal.
    void finish() {
        for (size_t at = 0; at < ticks_.size(); ++at)
            report_.figures[at].time += source_.clock.LengthOf(static_cast<double>(ticks_[at]));
    }
    void TookOver(const Record& record) {
        if (request_.kind == Search_Switch) ++of(record).count;
    }

  private:
    bool wanted(const Record& record) const {
        return request_.target < 0 || record.status == request_.target;
    }
    ObjectFigures& of(const Record& record) { return report_.figures[record.place]; }
    const AnalysisSource& source_;
    const SearchRequest& request_;
    ChosenReport& report_;
    std::vector<int64_t> ticks_;  // in the wanted status
    ObjectIndex index_;
};

// None has to be looked at one by one that the index covers.
WalkEnd count_events(const AnalysisSource& source, double from, double to, ObjectSums& sums) {
    RangeWalk walk(source, from, to, nullptr, LaneWants{});
    EventRecord event;
    for (double time = 0; walk.next(event, time);) sums.event(event);
    analysis_CountEvents(source, walk.ByLanes(), [&sums](uint32_t object, uint32_t kind, uint64_t count) {
        if (sums.counts(lane_TypeOf(kind), lane_SubtypeOf(kind))) sums.events(object, count);
    });
    return walk.end();
}

void sort_figures(ChosenReport& report) {
    const ReportOrder order = report.order;
    report.sorted.clear();
    for (const ObjectFigures& figures : report.figures) report.sorted.push_back(&figures);
    std::stable_sort(report.sorted.begin(), report.sorted.end(),
                     [order](const ObjectFigures* a, const ObjectFigures* b) {
                         if (!order.increasing) std::swap(a, b);
                         if (order.timeFirst && a->time != b->time) return a->time < b->time;
                         return a->count != b->count ? a->count < b->count : a->time < b->time;
                     });
}

}  // namespace

ReportOutcome report_AllObjects(AnalysisSource& source, double from, double to,
                                LegendStatistics& statistics) {
    if (!usable(source)) return ReportOutcome::Failed;
    statistics = {};
    statistics.rangeFrom = from;
    statistics.rangeTo = to;
    const auto objects = analysis_ObjectsAlive(source, from, to);
    if (objects.empty()) return ReportOutcome::NoObjects;
    LegendSums sums(source, statistics);
    WalkEnd end;
    const auto count = [&](const EventRecord& event) { sums.events(event.type, event.subtype, 1); };
    const auto counts = [&](uint32_t, uint32_t kind, uint64_t number) {
        sums.events(lane_TypeOf(kind), lane_SubtypeOf(kind), number);
    };
    if (!track(source, objects, from, to, sums, end, count, counts)) return ReportOutcome::Failed;
    sums.finish(end);
    return ReportOutcome::Done;
}

ReportOutcome report_OneObject(AnalysisSource& source, uint32_t object, double from, double to,
                               LegendStatistics& statistics) {
    if (!usable(source)) return ReportOutcome::Failed;
    statistics = {};
    statistics.rangeFrom = from;
    statistics.rangeTo = to;
    statistics.object = object;
    LegendSums sums(source, statistics);
    WalkEnd end;
    const auto count = [&](const EventRecord& event) {
        uint16_t type = 0;
        uint32_t of = 0;
        if (mt_GetEventObject(*source.store, event, type, of) && of == object)
            sums.events(event.type, event.subtype, 1);
    };
    const auto counts = [&](uint32_t of, uint32_t kind, uint64_t number) {
        if (of == object) sums.events(lane_TypeOf(kind), lane_SubtypeOf(kind), number);
    };
    if (!track(source, {object}, from, to, sums, end, count, counts)) return ReportOutcome::Failed;
    sums.finish(end);
    return ReportOutcome::Done;
}

ReportOutcome report_ChosenObjects(AnalysisSource& source, const SearchRequest& request, ReportOrder order,
                                   ChosenReport& report) {
    const int kind = request.kind;
    if (!usable(source) || (kind != Search_Event && kind != Search_Status && kind != Search_Switch))
        return ReportOutcome::Failed;
    report = {};
    report.request = request;
    auto& objects = report.request.objects;
    std::sort(objects.begin(), objects.end());
    objects.erase(std::unique(objects.begin(), objects.end()), objects.end());
    if (objects.empty()) return ReportOutcome::NoObjects;
    report.order = order;
    if (kind == Search_Event) report.order.timeFirst = false;
    report.rangeFrom = std::max(0.0, request.rangeFrom);
    report.rangeTo = std::min(request.rangeTo, source.totalLength);
    ObjectSums sums(source, report.request, report);
    WalkEnd end;
    const bool backward = report.rangeFrom > report.rangeTo;
    end.started = backward;
    end.reached = report.rangeTo;
    if (!backward && kind == Search_Event)
        end = count_events(source, report.rangeFrom, report.rangeTo, sums);
    else if (!backward)
        track(source, objects, report.rangeFrom, report.rangeTo, sums, end);
    if (!end.started) return ReportOutcome::Failed;
    sums.finish();
    report.stopped = end.stopped;
    report.damaged = end.damaged;
    report.lost = end.lost;
    report.rangeTo = end.reached;
    for (const ObjectFigures& figures : report.figures) report.totalCount += figures.count;
    sort_figures(report);
    return ReportOutcome::Done;
}

ReportOutcome report_ProcessorLoad(AnalysisSource& source, const std::vector<uint32_t>& idle, double from,
                                   double to, LoadReport& report) {
    if (!usable(source)) return ReportOutcome::Failed;
    report = {};
    report.rangeFrom = from;
    const auto objects = analysis_ObjectsAlive(source, from, to);
    if (objects.empty()) return ReportOutcome::NoObjects;
    LoadSums sums(source, objects, idle);
    WalkEnd end;
    if (!track(source, objects, from, to, sums, end)) return ReportOutcome::Failed;
    report.stopped = end.stopped;
    report.damaged = end.damaged;
    report.lost = end.lost;
    report.rangeTo = end.reached;
    report.processors = sums.Processors(objects, report.rangeTo);
    return ReportOutcome::Done;
}
