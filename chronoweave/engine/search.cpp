#include "chronoweave/engine/search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <map>

#include "chronoweave/engine/search_tracker.h"

namespace {

using Record = SearchTracker::Record;

constexpr size_t first_rows = 200;
// Times that far apart are one: below any tick, above what a double loses on the way.
constexpr double same_instant = 1e-12;
constexpr double same_instant_slack = 2e-12;
constexpr uint64_t step_rows =
    3;  // of a step forward: what is left of the last thing, the present one, the next

void sort_ids(std::vector<uint32_t>& ids) {
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

// A set of ids for one look-up an event.
class IdSet {
  public:
    explicit IdSet(const std::vector<uint32_t>& sorted) {
        for (uint32_t at = 0; at < sorted.size(); ++at) index_.add(sorted[at], at);
    }
    bool has(uint32_t id) const { return index_.find(id) != ObjectIndex::none; }

  private:
    ObjectIndex index_;
};

class Rows {
  public:
    explicit Rows(SearchResult& result) : result_(result), limit_(result.request.rowLimit) {
        result.rows.reserve(first_rows);
    }
    void add(uint32_t a, uint32_t b, double timeA, double timeB) {
        if (result_.keepLast > 0 && result_.rows.size() == result_.keepLast)
            result_.rows.erase(result_.rows.begin());
        result_.rows.push_back({a, b, timeA, timeB});
        ++result_.found;
    }
    bool full() const { return limit_ > 0 && result_.found >= limit_; }

  private:
    SearchResult& result_;
    uint64_t limit_;
};

class EventSearch {
  public:
    EventSearch(const AnalysisSource& source, const SearchRequest& request, Rows& rows)
        : source_(source), target_(request.target), objects_(request.objects), rows_(rows) {}
    LaneWants wants() const {
        return {LaneWants::Changes::PassedOver,
                [this](uint16_t type, uint16_t subtype) {
                    return source_.legend->EventMatches(type, subtype, target_);
                },
                [this](uint32_t object) { return objects_.has(object); }};
    }
    void interrupt() {}
    void take(const EventRecord& event, double time) {
        if (!source_.legend->EventMatches(event.type, event.subtype, target_)) return;
        uint16_t type = 0;
        uint32_t object = 0;
        if (mt_GetEventObject(*source_.store, event, type, object) && objects_.has(object))
            rows_.add(object, object, time, time);
    }
    void finish(SearchResult&) {}

  private:
    const AnalysisSource& source_;
    int32_t target_;
    IdSet objects_;
    Rows& rows_;
};

// Pairs begins with ends. Of begins of an object that come before its end, the first counts.
class PatternSearch {
  public:
    PatternSearch(const AnalysisSource& source, const SearchRequest& request, Rows& rows)
        : source_(source),
          request_(request),
          same_((request.flags & Search_SameObject) != 0),
          objects_(request.objects),
          begins_(request.beginObjects),
          ends_(request.endObjects),
          rows_(rows) {}

    LaneWants wants() const {
        return {LaneWants::Changes::PassedOver,
                [this](uint16_t type, uint16_t subtype) {
                    return source_.legend->EventMatches(type, subtype, request_.target) ||
                           source_.legend->EventMatches(type, subtype, request_.endTarget);
                },
                [this](uint32_t object) { return begins_.has(object) || ends_.has(object); }};
    }
    // What began ahead of a stretch that can't be read may have ended within it.
    void interrupt() { open_.clear(); }
    void take(const EventRecord& event, double time) {
        const Legend& legend = *source_.legend;
        const bool begin = legend.EventMatches(event.type, event.subtype, request_.target);
        const bool end = legend.EventMatches(event.type, event.subtype, request_.endTarget);
        if (!begin && !end) return;
        uint16_t type = 0;
        uint32_t object = 0;
        if (!mt_GetEventObject(*source_.store, event, type, object)) return;
        if (end && ends_.has(object) && close(object, time)) return;
        // An open begin that nothing can close need not be kept.
        if (begin && begins_.has(object) && (same_ || objects_.has(object))) open_.try_emplace(object, time);
    }
    void finish(SearchResult& result) {
        for (const auto& [object, time] : open_) result.open.push_back({object, object, time, 0});
    }

  private:
    // Closes the object's own begin, or else the lowest object's that is open.
    bool close(uint32_t object, double time) {
        const auto found = same_ ? open_.find(object) : open_.begin();
        if (found == open_.end()) return false;
        rows_.add(found->first, object, found->second, time);
        open_.erase(found);
        return true;
    }

    const AnalysisSource& source_;
    const SearchRequest& request_;
    bool same_;
    IdSet objects_, begins_, ends_;
    Rows& rows_;
    std::map<uint32_t, double> open_;
};

// Stretches of a status.
class StatusSearch {
  public:
    StatusSearch(int32_t target, Rows& rows) : target_(target), rows_(rows) {}
    Pass look(Record& record, double time, bool final) {
        if (record.status >= 0 && record.status == record.now && !final) return Pass::Goes;
        close(record, time);
        record.status = record.now;
        record.time = time;
        return rows_.full() ? Pass::Ends : Pass::Goes;
    }

    void close(const Record& record, double time) {
        if (record.status >= 0 && (target_ < 0 || record.status == target_))
            rows_.add(record.object, record.object, record.time, time);
    }

  private:
    int32_t target_;
    Rows& rows_;
};

// Who takes over a processor from whom. An object that leaves execution stays its processor's running object
// until another takes over, and its record stays executing.
class SwitchSearch {
  public:
    SwitchSearch(const RunningObjects& running, SearchTracker& tracker, Rows& rows)
        : running_(running), tracker_(tracker), rows_(rows) {}

    Pass look(Record& record, double time, bool detect) {
        const bool first = record.status < 0;
        const int64_t runs = running_.on(record.processor);
        if (record.executing && detect && runs != record.object)
            rows_.add(runs < 0 ? predecessor(record) : static_cast<uint32_t>(runs), record.object, time,
                      time);
        if (first || record.executing || !tracker_.IsExecution(record.status)) hold(record, time);
        if (record.executing && (detect || first)) tracker_.TakeOver(record);
        return rows_.full() ? Pass::Ends : Pass::Goes;
    }
    void forget() {
        tracker_.Forget([](const Record&) {});
        lowest_.clear();
    }

  private:
    void hold(Record& record, double time) {
        if (record.status == record.now) return;
        if (record.executing && !tracker_.IsExecution(record.status)) NoteExecuting(record);
        record.status = record.now;
        record.time = time;
    }
    // Of the records that are held to execute, the lowest two of each processor: all that is ever asked for,
    // as none ceases to be one.
    void NoteExecuting(const Record& record) {
        if (record.processor >= lowest_.size()) lowest_.resize(record.processor + 1, {none, none});
        auto& [one, two] = lowest_[record.processor];
        const int64_t id = record.object;
        if (one == none || id < one) {
            two = one;
            one = id;
        } else if (two == none || id < two) {
            two = id;
        }
    }
    // Whom the object took over from when no running object is known.
    uint32_t predecessor(const Record& record) const {
        if (record.processor >= lowest_.size()) return record.object;
        const auto& [one, two] = lowest_[record.processor];
        const int64_t other = one == record.object ? two : one;
        return other == none ? record.object : static_cast<uint32_t>(other);
    }

    static constexpr int64_t none = RunningObjects::none;
    const RunningObjects& running_;
    SearchTracker& tracker_;
    Rows& rows_;
    std::vector<std::array<int64_t, 2>> lowest_;
};

void take_end(const RangeWalk& walk, SearchResult& result) {
    result.stopped = walk.end().stopped;
    result.damaged = walk.end().damaged;
    result.lost = walk.end().lost;
    result.reached = walk.end().reached;
}

template <class Search>
bool walk_events(const AnalysisSource& source, SearchResult& result) {
    const SearchRequest& request = result.request;
    Rows rows(result);
    Search search(source, request, rows);
    RangeWalk walk(source, request.rangeFrom, request.rangeTo, nullptr, search.wants());
    EventRecord event;
    for (double time = 0; !rows.full() && walk.next(event, time);) {
        if (walk.gap()) search.interrupt();
        search.take(event, time);
    }
    search.finish(result);
    take_end(walk, result);
    return walk.started();
}

bool walk_statuses(AnalysisSource& source, SearchResult& result) {
    const SearchRequest& request = result.request;
    Rows rows(result);
    StatusSearch search(request.target, rows);
    TrackedRange range(source, request.objects, request.rangeFrom, request.rangeTo, Follow::Changes,
                       Passed::Over);
    const RangeWalk& walk = range.walk();
    SearchTracker& tracker = range.tracker();
    double time = source.clock.OnTick(request.rangeFrom);
    bool final = false;
    const auto look = [&](Record& record, Cause) { return search.look(record, time, final); };
    // What is not known at the start of the range begins with its first event.
    if (!walk.gap()) tracker.All(look);
    while (!rows.full() && range.next(time)) {
        if (const TimeGap* gap = walk.gap()) {
            tracker.Forget([&](const Record& record) { search.close(record, gap->from); });
            tracker.All(look);
        }
        range.Take();
        tracker.Step(look);
    }
    take_end(walk, result);
    if (rows.full() || result.stopped) return walk.started();
    time = walk.closing();
    final = true;
    tracker.All(look);
    return walk.started();
}

bool walk_switches(AnalysisSource& source, SearchResult& result) {
    const SearchRequest& request = result.request;
    Rows rows(result);
    TrackedRange range(source, request.objects, request.rangeFrom, request.rangeTo, Follow::Executions,
                       Passed::Over);
    const RangeWalk& walk = range.walk();
    SearchTracker& tracker = range.tracker();
    SwitchSearch search(source.running, tracker, rows);
    double time = source.clock.OnTick(request.rangeFrom);
    bool detect = source.running.empty();
    const auto look = [&](Record& record, Cause) { return search.look(record, time, detect); };
    if (walk.gap())
        search.forget();
    else
        tracker.All(look);
    detect = true;
    while (!rows.full() && range.next(time)) {
        if (walk.gap()) {
            search.forget();
            detect = false;
            tracker.All(look);
            detect = true;
        }
        range.Take();
        tracker.Step(look);
    }
    take_end(walk, result);
    return walk.started();
}

}  // namespace

bool search_Walk(AnalysisSource& source, SearchResult& result) {
    if (!source.store || !source.legend || source.legend->empty()) return false;
    const SearchRequest& request = result.request;
    result.reached = request.rangeTo;
    if (!(request.rangeFrom <= request.rangeTo))
        return request.kind >= Search_Event && request.kind <= Search_Switch;
    switch (request.kind) {
        case Search_Event:
            return walk_events<EventSearch>(source, result);
        case Search_Pattern:
            return walk_events<PatternSearch>(source, result);
        case Search_Status:
            return walk_statuses(source, result);
        case Search_Switch:
            return walk_switches(source, result);
        default:
            return false;
    }
}

bool search_Run(AnalysisSource& source, SearchRequest request, SearchResult& result, uint64_t limit) {
    source.running.clear();
    request.rowLimit = limit;
    for (auto* list : {&request.objects, &request.beginObjects, &request.endObjects}) sort_ids(*list);
    // The result of a status search has the columns of a match on the same object.
    if (request.kind == Search_Status) request.flags |= Search_SameObject;
    result = {};
    result.request = std::move(request);
    return search_Walk(source, result);
}

bool search_ShareObjects(SearchRequest& request) {
    if (!(request.flags & Search_SameObject)) return true;
    sort_ids(request.beginObjects);
    sort_ids(request.endObjects);
    std::vector<uint32_t> both;
    std::set_intersection(request.beginObjects.begin(), request.beginObjects.end(),
                          request.endObjects.begin(), request.endObjects.end(), std::back_inserter(both));
    request.beginObjects = request.endObjects = both;
    return !both.empty();
}

std::vector<int32_t> search_IntervalEvents(const Legend& legend, bool all) {
    std::vector<int32_t> rows;
    for (size_t row = 0; row < legend.events.size(); ++row) {
        const LegendEvent& event = legend.events[row];
        if (!event.IsCategory() && (all || (event.flags & LegendEvent_IntervalSearch)))
            rows.push_back(static_cast<int32_t>(row));
    }
    return rows;
}

SearchRequest search_IntervalRequest(const Legend& legend, const IntervalCriteria& criteria) {
    SearchRequest request;
    request.kind = Search_Pattern;
    request.rangeFrom = std::min(criteria.from, criteria.to);
    request.rangeTo = std::max(criteria.from, criteria.to);
    request.target = legend.EventByName(criteria.beginEvent);
    request.endTarget = legend.EventByName(criteria.endEvent);
    request.beginObjects = {criteria.beginObject};
    request.endObjects = {criteria.endObject};
    request.objects = {criteria.beginObject, criteria.endObject};
    sort_ids(request.objects);
    return request;
}

bool search_Step(AnalysisSource& source, const StoreStep& step, SearchRow& row) {
    if (step.forward ? step.time >= source.totalLength : step.time < same_instant) return false;
    const double from = step.forward ? step.time : 0, to = step.forward ? source.totalLength : step.time;
    SearchResult result;
    SearchRequest& request = result.request;
    request.kind = step.kind;
    request.target = step.target;
    request.objects = analysis_ObjectsAlive(source, from, to);
    if (request.objects.empty()) return false;
    if (step.onlyObject) request.objects = {step.object};
    request.rangeFrom = step.forward ? step.time + same_instant : 0;
    request.rangeTo = step.forward ? source.totalLength : step.time - same_instant;
    request.rowLimit = step.forward ? step_rows : 0;
    result.keepLast = step.forward ? 0 : 2;
    if (!search_Walk(source, result)) return false;
    const auto present = [&step](const SearchRow& found) {
        return std::fabs(found.timeA - step.time) <= same_instant_slack && found.objectA == step.object;
    };
    const auto& rows = result.rows;
    if (step.forward) {
        const auto other = std::find_if_not(rows.begin(), rows.end(), present);
        if (other == rows.end()) return false;
        row = *other;
        return true;
    }
    if (rows.empty()) return false;
    if (!present(rows.back())) {
        row = rows.back();
        return true;
    }
    if (rows.size() < 2) return false;
    row = rows.front();
    return true;
}
