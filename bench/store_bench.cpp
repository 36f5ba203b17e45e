// Import, open, walk and object queries, each against plain work on the same bytes.
#include <filesystem>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "bench/self_measure.h"
#include "chronoweave/import/import.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/paths.h"

namespace {

// Reading a file that the processor's caches hold is no measure for anything: limits on walks begin here.
constexpr uint64_t beyond_caches = 16 << 20;

void remove_store(const std::string& base) {
    std::error_code none;
    for (const char* extension : {".trv", ".tri", ".trs", ".trl"})
        std::filesystem::remove(base + extension, none);
}

Outcome import_trace(const BenchPlace& place, const BenchInput& input) {
    const std::string stored = input_Store(place, input.file);
    if (stored.empty()) return outcome_OfTrouble("the trace can't be imported");
    const std::string base = path_join(place.work, "import"), copy = path_join(place.work, "copy");
    const uint64_t size = plain_StoreSize(stored);
    ImportOptions options;
    options.outputBase = base;
    bool good = true;
    // Removing what the turn before left is no part of the work, and the source comes from memory for both.
    const auto before = [&](bool) {
        remove_store(base);
        std::filesystem::remove(copy);
        good = plain_Read(input.file) && good;
    };
    const auto subject = [&] { good = import_OpenSource(input.file, options).store != nullptr && good; };
    const auto baseline = [&] { good = plain_Copy(input.file, copy, size) && good; };
    const Turns turns = measure_Turns({.count = input.large ? 5 : 15}, before, subject, baseline);
    before(true);
    return good ? outcome_OfRatio(turns, 3) : outcome_OfTrouble("an import or a copy failed");
}

// What the lane index adds to an import.
Outcome import_indexed(const BenchPlace& place, const BenchInput& input) {
    ImportOptions options;
    options.outputBase = path_join(place.work, "import");
    bool good = true;
    const auto before = [&](bool indexed) {
        remove_store(options.outputBase);
        options.laneBlock = indexed ? lane_BlockEvents : 0;
        good = plain_Read(input.file) && good;
    };
    const auto import = [&] { good = import_OpenSource(input.file, options).store != nullptr && good; };
    const Turns turns =
        measure_Turns({.count = input.large ? 5 : 15, .clock = Clock::Processor}, before, import, import);
    before(true);
    if (!good) return outcome_OfTrouble("an import failed");
    return outcome_OfRatio(turns, input.large ? std::optional(1.4) : std::nullopt);
}

Outcome open_store(const BenchPlace& place, const BenchInput& input) {
    const std::string base = input_Store(place, input.file);
    bool good = !base.empty();
    const auto subject = [&] {
        const TraceStorePtr store = mt_OpenForRead(base);
        good = store && mt_GetTimeRange(*store).end > 0 && mt_GetEventCount(*store) > 0 && good;
    };
    const auto baseline = [&] { good = plain_Read(base + ".tri") && good; };
    const Turns turns = measure_Turns({.count = 25, .least = 0.02}, {}, subject, baseline);
    if (!good) return outcome_OfTrouble("the store can't be opened");
    return outcome_OfRatio(turns, input.large ? std::optional(20.0) : std::nullopt);
}

// Every event and every change of it is looked at.
uint64_t walk_all(TraceStore& store) {
    uint64_t seen = 0;
    mt_VisitEventsInTimeRange(store, 0, INT64_MAX, nullptr, [&seen](const EventRecord& event) {
        StateChange change;
        for (ChangeList changes = event.changes; changes.next(change);) seen += change.objectId;
        seen += event.time + event.extra.size();
        return true;
    });
    return seen;
}

Outcome walk_store(const BenchPlace& place, const BenchInput& input) {
    const std::string base = input_Store(place, input.file);
    const TraceStorePtr store = base.empty() ? nullptr : mt_OpenForRead(base);
    if (!store) return outcome_OfTrouble("the store can't be opened");
    bool good = true;
    const auto subject = [&] { good = walk_all(*store) > 0 && good; };
    const auto baseline = [&] { good = plain_Read(base + ".trs") && good; };
    const Turns turns = measure_Turns({.count = input.large ? 7 : 25, .least = 0.02}, {}, subject, baseline);
    if (!good) return outcome_OfTrouble("the store can't be read");
    return outcome_OfRatio(turns,
                           plain_Size(base + ".trs") >= beyond_caches ? std::optional(4.0) : std::nullopt);
}

Outcome objects_of_range(const BenchPlace& place, const BenchInput& input) {
    const std::string base = input_Store(place, input.file);
    const TraceStorePtr store = base.empty() ? nullptr : mt_OpenForRead(base);
    if (!store) return outcome_OfTrouble("the store can't be opened");
    const mt_Range range = mt_GetTimeRange(*store);
    bool good = true;
    const auto subject = [&] {
        good =
            !mt_GetObjectStuffUsedInTimeRange(*store, range.first, range.end, std::nullopt).empty() && good;
    };
    const auto baseline = [&] { good = plain_Read(base + ".trs") && good; };
    const Turns turns = measure_Turns({.count = input.large ? 7 : 25, .least = 0.02}, {}, subject, baseline);
    return good ? outcome_OfRatio(turns, std::nullopt) : outcome_OfTrouble("the store can't be read");
}

Outcome import_memory(const BenchPlace& place, const BenchInput& input) {
    const std::string base = path_join(place.work, "import");
    Outcome outcome = outcome_OfMemory({"--measured-import", input.file, base}, 64);
    remove_store(base);
    return outcome;
}

}  // namespace

int run_MeasuredImport(const std::string& file, const std::string& base) {
    ImportOptions options;
    options.outputBase = base;
    return self_Measure([&] { return import_OpenSource(file, options).store != nullptr; });
}

void register_StoreBenchmarks(const BenchPlace& place) {
    using Run = Outcome (*)(const BenchPlace&, const BenchInput&);
    for (const auto& [name, run] : {std::pair<const char*, Run>{"import", import_trace},
                                    {"import with index", import_indexed},
                                    {"import memory", import_memory},
                                    {"open, range and count", open_store},
                                    {"walk", walk_store},
                                    {"objects", objects_of_range}})
        for (const BenchInput& input : place.inputs)
            measure_Register(std::string(name) + "/" + input.name,
                             [&place, input, run = run] { return run(place, input); });
}
