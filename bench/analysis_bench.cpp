// Searches and reports over a whole trace, each against a plain walk of the store, and what a search holds in
// memory.
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <span>
#include <string>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "chronoweave/engine/find.h"
#include "chronoweave/engine/lanes/lane_file.h"
#include "chronoweave/engine/range_figures.h"
#include "chronoweave/engine/report.h"
#include "chronoweave/rtos/configure_reader.h"

namespace {

// How many times the plain walk a search or report may take.
constexpr double event_limit = 3, status_limit = 5;

// A trace to search, with the legend of the source tree.
class Searched {
  public:
    Searched(const BenchPlace& place, const BenchInput& input) {
        const std::string base = input_Store(place, input.file);
        if (!base.empty()) store_ = mt_OpenForRead(base);
        if (!store_ || !configure_Read(legend_, mt_GetOsName(store_.get()), configure_ConsoleCallbacks(), 0))
            return;
        source = analysis_SourceOfStore(*store_, legend_);
        objects = analysis_ObjectsAlive(source, 0, source.totalLength);
    }
    bool good() const { return !objects.empty(); }
    // From now on by the lane index, or by the store alone.
    enum class Way { Index, Store };
    bool go(Way way) {
        Result why;
        if (!index_) index_ = LaneIndex::Open(*store_, why);
        source.lanes = way == Way::Index ? index_ : nullptr;
        return index_ && index_->EndEvent() > mt_GetEventCount(*store_);
    }
    uint32_t events() const { return mt_GetEventCount(*store_); }
    bool walk() {
        uint64_t bytes = 0;
        mt_VisitEventsInTimeRange(*store_, 0, INT64_MAX, nullptr, [&bytes](const EventRecord& event) {
            bytes += event.extra.size();
            return true;
        });
        return bytes > 0;
    }
    // Kinds as in a request. The targets are such that a good part of the events fits, and the rows are not
    // kept.
    SearchResult request(int kind) const {
        SearchResult result;
        SearchRequest& request = result.request;
        request.kind = kind;
        request.objects = request.beginObjects = request.endObjects = objects;
        request.rangeTo = source.totalLength;
        request.target =
            kind == Search_Status ? legend_.StatusByName("RUNNING") : legend_.EventByName("UserEvent");
        if (kind == Search_Switch) request.target = legend_.contextSwitchStatus;
        request.endTarget = legend_.EventByName("TaskChange");
        result.keepLast = 2;
        return result;
    }
    bool search(const SearchResult& request) {
        SearchResult result = request;
        source.running.clear();
        return search_Walk(source, result) && !result.damaged && result.found > 0;
    }

    AnalysisSource source;
    std::vector<uint32_t> objects;

  private:
    TraceStorePtr store_;
    std::shared_ptr<LaneIndex> index_;
    Legend legend_;
};

Outcome against_walk(const BenchPlace& place, const BenchInput& input, double limit,
                     const std::function<bool(Searched&)>& work) {
    Searched searched(place, input);
    if (!searched.good()) return outcome_OfTrouble("the trace can't be searched");
    bool good = true;
    const auto subject = [&] { good = work(searched) && good; };
    const auto baseline = [&] { good = searched.walk() && good; };
    const Turns turns =
        measure_Turns({.count = 5, .least = 0.02, .clock = Clock::Processor}, {}, subject, baseline);
    if (!good) return outcome_OfTrouble("a search or report gave nothing");
    return outcome_OfRatio(turns, input.large ? std::optional(limit) : std::nullopt);
}

// The same question by the store and by its lane index.
Outcome against_store(const BenchPlace& place, const BenchInput& input, std::optional<double> least,
                      const std::function<bool(Searched&)>& work) {
    Searched searched(place, input);
    if (!searched.good() || !searched.go(Searched::Way::Index))
        return outcome_OfTrouble("the trace has no index");
    bool good = true;
    const auto before = [&](bool store) { searched.go(store ? Searched::Way::Store : Searched::Way::Index); };
    const auto ask = [&] { good = work(searched) && good; };
    const Turns turns = measure_Turns({.count = 5, .clock = Clock::Processor}, before, ask, ask);
    if (!good) return outcome_OfTrouble("a search or report gave nothing");
    Outcome outcome = outcome_OfRatio(turns, std::nullopt);
    if (least && input.large) {
        outcome.limit = Outcome::AtLeast;
        outcome.bound = *least;
    }
    return outcome;
}

// An event that stands in few places is found among all others.
Outcome rare_event(const BenchPlace& place, const BenchInput& input) {
    const auto rare = [](Searched& searched) {
        SearchResult request = searched.request(Search_Event);
        request.request.target = searched.source.legend->EventByName("Refresh");
        return searched.search(request);
    };
    Outcome outcome = against_store(place, input, std::nullopt, rare);
    outcome.value = outcome.turns.baseline * 1e3;
    outcome.unit = "ms";
    if (input.large) outcome.limit = Outcome::AtMost;
    outcome.bound = 40;
    return outcome;
}

Outcome index_size(const BenchPlace& place, const BenchInput& input) {
    const std::string base = input_Store(place, input.file);
    const TraceStorePtr store = base.empty() ? nullptr : mt_OpenForRead(base);
    if (!store) return outcome_OfTrouble("the store can't be opened");
    Outcome outcome;
    outcome.value =
        static_cast<double>(plain_Size(lane_NameBeside(base))) / std::max(1u, mt_GetEventCount(*store));
    outcome.unit = "bytes an event";
    if (input.large) outcome.limit = Outcome::AtMost;
    outcome.bound = 12;
    return outcome.value > 0 ? outcome : outcome_OfTrouble("there is no index");
}

uint64_t memory_bytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(field + ":", 0) == 0)
            return std::strtoull(line.c_str() + field.size() + 1, nullptr, 10) * 1024;
    return 0;
}

// By how much memory grows at most in searches and reports over the whole trace.
Outcome search_memory(const BenchPlace& place, const BenchInput& input) {
    Searched searched(place, input);
    if (!searched.good()) return outcome_OfTrouble("the trace can't be searched");
    std::ofstream("/proc/self/clear_refs") << 5;  // the peak begins anew
    const uint64_t before = memory_bytes("VmRSS");
    bool good = true;
    for (const int kind : {Search_Event, Search_Pattern, Search_Status, Search_Switch})
        good = searched.search(searched.request(kind)) && good;
    LegendStatistics statistics;
    good = report_AllObjects(searched.source, 0, searched.source.totalLength, statistics) ==
               ReportOutcome::Done &&
           good;
    const uint64_t most = memory_bytes("VmHWM");
    if (!good || before == 0 || most == 0) return outcome_OfTrouble("a search gave nothing");
    Outcome outcome;
    outcome.value = static_cast<double>(most > before ? most - before : 0) / (1 << 20);
    outcome.unit = "MiB";
    outcome.limit = Outcome::AtMost;
    outcome.bound = 4;
    return outcome;
}

bool found(Searched& searched, const char* typed) {
    const ObjectNames names;
    FindWalk walk(searched.source, names, find_Parse(typed), 0, searched.source.totalLength / 100);
    while (walk.Step(8192)) {
    }
    return walk.count() > 0;
}

bool figures_exact(Searched& searched) {
    RangeTally tally(searched.source, {}, 0, searched.source.totalLength);
    while (tally.Step()) {
    }
    return tally.Figures() != nullptr && tally.Figures()->exact;
}

// How long the figures of a selection take: until the first ones are there, or until they are exact, which
// counts per million events.
enum class FiguresUntil { First, Exact };
Outcome figures_time(const BenchPlace& place, const BenchInput& input, FiguresUntil until) {
    Searched searched(place, input);
    if (!searched.good()) return outcome_OfTrouble("the trace can't be searched");
    std::vector<double> seconds;
    uint64_t events = 0;
    for (int turn = 0; turn < 15; ++turn) {
        const auto start = std::chrono::steady_clock::now();
        RangeTally tally(searched.source, {}, 0, searched.source.totalLength * (1 - 0.001 * turn));
        while (tally.Step() && !(until == FiguresUntil::First && tally.Figures())) {
        }
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (!tally.Figures() || tally.Figures()->events == 0)
            return outcome_OfTrouble("there were no figures");
        events = tally.Figures()->events;
    }
    Outcome outcome;
    const bool first = until == FiguresUntil::First;
    outcome.value =
        measure_Median(seconds) * (first ? 1e3 : 1e6 / static_cast<double>(std::max<uint64_t>(1, events)));
    outcome.unit = first ? "ms" : "s/M";
    outcome.limit = Outcome::AtMost;
    outcome.bound = first ? 50 : 1;
    return outcome;
}

bool chosen(Searched& searched, int kind) {
    ChosenReport report;
    return report_ChosenObjects(searched.source, searched.request(kind).request, {}, report) ==
               ReportOutcome::Done &&
           report.totalCount > 0;
}

}  // namespace

namespace {

struct Question {
    const char* name;
    double limit;
    std::function<bool(Searched&)> work;
};

// What the lane index is held to.
void register_by_index(const BenchPlace& place, const BenchInput& input, std::span<const Question> all) {
    for (const Question& one : all) {
        const bool report = std::string(one.name).starts_with("report");
        measure_Register(std::string(one.name) + ", by index/" + input.name, [&place, input, one, report] {
            return against_store(place, input, report ? std::optional(5.0) : std::nullopt, one.work);
        });
    }
    measure_Register("rare event/" + input.name, [&place, input] { return rare_event(place, input); });
    measure_Register("lane index/" + input.name, [&place, input] { return index_size(place, input); });
}

}  // namespace

void register_AnalysisBenchmarks(const BenchPlace& place) {
    const Question all[] = {
        {"search event", event_limit, [](Searched& s) { return s.search(s.request(Search_Event)); }},
        {"search pattern", event_limit, [](Searched& s) { return s.search(s.request(Search_Pattern)); }},
        {"search status", status_limit, [](Searched& s) { return s.search(s.request(Search_Status)); }},
        {"search switch", status_limit, [](Searched& s) { return s.search(s.request(Search_Switch)); }},
        {"find event", event_limit, [](Searched& s) { return found(s, "event:UserEvent"); }},
        {"find status", status_limit, [](Searched& s) { return found(s, "status:RUNNING"); }},
        {"selection figures", status_limit, figures_exact},
        {"report objects", status_limit,
         [](Searched& s) {
             LegendStatistics statistics;
             return report_AllObjects(s.source, 0, s.source.totalLength, statistics) == ReportOutcome::Done;
         }},
        {"report object", status_limit,
         [](Searched& s) {
             LegendStatistics statistics;
             return report_OneObject(s.source, s.objects[0], 0, s.source.totalLength, statistics) ==
                    ReportOutcome::Done;
         }},
        {"report general, event", event_limit, [](Searched& s) { return chosen(s, Search_Event); }},
        {"report general, status", status_limit, [](Searched& s) { return chosen(s, Search_Status); }},
        {"report general, switch", status_limit, [](Searched& s) { return chosen(s, Search_Switch); }},
        {"report load", status_limit,
         [](Searched& s) {
             LoadReport report;
             return report_ProcessorLoad(s.source, {}, 0, s.source.totalLength, report) ==
                    ReportOutcome::Done;
         }},
    };
    std::vector<BenchInput> selected = place.inputs;
    if (!place.hundredTasks.empty()) selected.push_back({"hundred", place.hundredTasks});
    if (!place.thousandTasks.empty()) selected.push_back({"thousand", place.thousandTasks});
    for (const BenchInput& input : selected) {
        measure_Register("selection figures, first/" + input.name,
                         [&place, input] { return figures_time(place, input, FiguresUntil::First); });
        measure_Register("selection figures, exact/" + input.name,
                         [&place, input] { return figures_time(place, input, FiguresUntil::Exact); });
    }
    for (const BenchInput& input : place.inputs) {
        for (const auto& one : all)
            measure_Register(std::string(one.name) + "/" + input.name, [&place, input, one] {
                return against_walk(place, input, one.limit, one.work);
            });
        register_by_index(place, input, all);
        if (input.large)
            measure_Register("search memory/" + input.name,
                             [&place, input] { return search_memory(place, input); });
    }
}
