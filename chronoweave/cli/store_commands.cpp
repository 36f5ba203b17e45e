// info, import, events, state, objects, config check.
#include <chrono>
#include <unordered_map>

#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/named_store.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/rtos/extra_format.h"
#include "libtrv/event_names.h"
#include "shared/libcxxutil/progress_bar.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

int command_Info(const CommandLine& line) {
    const OpenedSource opened = cli_Open(line);
    if (!opened.store) return cli_Failure(opened.trouble.text());
    TraceStore& store = *opened.store;
    {
        // Who asks for facts learns of all damage.
        ProgressBar bar(!line.quiet);
        mt_CheckStore(store, bar.progress());
    }
    const uint32_t events = mt_GetEventCount(store);
    const mt_Range range = mt_GetTimeRange(store);
    const TimeScale scale = scale_of(line, store);
    RowWriter rows(line, {}, mt_GetTicksPerSecond(store));
    if (!rows.good()) return Exit_Failed;
    const mt_Time length = range.end - range.first;
    rows.facts({{"base", opened.base},
                {"formatVersion", mt_GetFormatVersion(store)},
                {"ticksPerSecond", mt_GetTicksPerSecond(store)},
                {"os", mt_GetOsName(&store)},
                {"osKind", static_cast<int>(legend_OsKind(mt_GetOsName(&store)))},
                {"bigEndian", mt_IsBigEndianTarget(store)},
                {"checkpointInterval", mt_GetCheckpointInterval(store)},
                {"blocks", mt_GetBlockCount(store)},
                {"events", events},
                {"firstTick", range.first},
                {"endTick", range.end},
                {"duration", line.ticks ? Cell(length) : scale.cell(range.end)}});
    return closed(rows, opened);
}

int command_Import(const CommandLine& line) {
    const auto checkpoint = cli_Number(line.checkpoint, "--checkpoint", 0);
    if (!checkpoint) return Exit_Usage;
    if (!line.checkpoint.empty() && (*checkpoint == 0 || *checkpoint % mt_CheckpointInterval != 0))
        return cli_UsageError(gen_format("--checkpoint: no multiple of %u: %s", mt_CheckpointInterval,
                                         line.checkpoint.c_str()));
    const auto start = std::chrono::steady_clock::now();
    const OpenedSource opened = cli_Open(line, line.output, *checkpoint);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!opened.imported)
        return cli_Failure(opened.trouble.ok() ? line.path + ": a store already, there is nothing to import"
                                               : opened.trouble.text());
    CommandLine form = line;
    form.output.clear();  // -o names the store
    RowWriter rows(form, {});
    const ImportCounts& counts = opened.counts;
    if (!rows.good()) return Exit_Failed;
    std::vector<Fact> facts{{"base", opened.base},         {"events", counts.events},
                            {"dropped", counts.dropped()}, {"badBytes", counts.badBytes},
                            {"unread", counts.unread},     {"seconds", seconds}};
    if (!line.json)
        facts.push_back({"eventsPerSecond",
                         seconds > 0 ? static_cast<uint64_t>(static_cast<double>(counts.events) / seconds)
                                     : uint64_t{0}});
    rows.facts(facts);
    return closed(rows, opened);
}

namespace {

// The names of objects while a walk goes on: looked up again only when an event changed the object's name.
class ObjectNames {
  public:
    ObjectNames(const TraceStore& store, const StateTable& state, char separator)
        : store_(store), state_(state), separator_(separator) {}
    void changedBy(const EventRecord& event) {
        StateChange change;
        for (ChangeList changes = event.changes; changes.next(change);) {
            const bool elsewhere =
                change.kind == mt_ChangeModify &&
                (change.offset > mt_TaskPrefixValid || change.offset + change.bytes.size() <= mt_TaskName);
            if (!elsewhere) known_.erase(change.objectId);
        }
    }
    void forget() { known_.clear(); }
    // Null when the object has none. Lasts until the object changes.
    Cell of(uint32_t id) {
        const auto [at, fresh] = known_.try_emplace(id);
        if (fresh) {
            const uint32_t position = state_.find(mt_ObjectTask, id);
            if (position != StateTable::npos)
                at->second = mt_TaskNameAt(store_, state_, position, separator_);
        }
        return at->second;
    }

  private:
    const TraceStore& store_;
    const StateTable& state_;
    char separator_;
    std::unordered_map<uint32_t, std::optional<std::string>> known_;
};

struct EventQuery {
    uint32_t first = 0, count = 0, object = 0;
    bool bySequence = false, byObject = false;
};

std::optional<EventQuery> event_query(const CommandLine& line) {
    EventQuery query;
    query.bySequence = !line.first.empty() || !line.count.empty();
    query.byObject = !line.object.empty();
    if (query.bySequence && (!line.from.empty() || !line.to.empty())) {
        cli_UsageError("--first and --count ask by sequence, --from and --to by time: give one pair");
        return std::nullopt;
    }
    const auto first = cli_Number(line.first, "--first", 1), count = cli_Number(line.count, "--count", 0),
               object = cli_Number(line.object, "--object", 0);
    if (!first || !count || !object) return std::nullopt;
    query.first = *first;
    query.count = *count;
    query.object = *object;
    return query;
}

const RowLayout event_layout{{{"seq", 8},
                              {"tick", 14},
                              {"time", 14},
                              {"type", 4},
                              {"subtype", 7},
                              {"object", 10, CellForm::Id},
                              {"objectName", -20},
                              {"event", -24},
                              {"extra", -24},
                              {"text"}}};

class EventRows {
  public:
    EventRows(NamedStore& named, const TimeScale& scale, const StateTable& state, RowWriter& rows)
        : named_(named),
          scale_(scale),
          names_(named.store(), state, named.separator),
          rows_(rows),
          bigEndian_(mt_IsBigEndianTarget(named.store())) {}

    void changedBy(const EventRecord& event) { names_.changedBy(event); }
    void changedByAny() { names_.forget(); }
    void put(const EventRecord& event, const std::optional<uint32_t>& object) {
        const LegendEvent* known = nullptr;
        if (named_.hasLegend)
            known = &named_.legend
                         .events[static_cast<size_t>(named_.legend.EventIndex(event.type, event.subtype))];
        else
            ownName_ = mt_EventLongName(event.type, event.subtype);
        const bool formatted =
            known && !known->extraFormat.empty() &&
            extra_Format(event, known->extraFormat, bigEndian_, false, false, text_, nullptr);
        rows_.row({event.sequence, event.time, scale_.cell(event.time), event.type, event.subtype, object,
                   object ? names_.of(*object) : Cell(), known ? known->name : ownName_,
                   Cell::hex(event.extra), formatted ? Cell(text_) : Cell::absent()});
    }

  private:
    NamedStore& named_;
    TimeScale scale_;
    ObjectNames names_;
    RowWriter& rows_;
    bool bigEndian_;
    std::string text_, ownName_;
};

std::optional<uint32_t> object_of(const EventRecord& event, bool bigEndian) {
    if (event.extra.size() < 4) return std::nullopt;
    return load_32(event.extra.data(), bigEndian);
}

}  // namespace

int command_Events(const CommandLine& line) {
    const auto query = event_query(line);
    NamedStore named;
    int status = Exit_Usage;
    if (!query || !named.open(line, status)) return status;
    TraceStore& store = named.store();
    const auto range = cli_Range(line, store);
    if (!range) return cli_Refused(named.opened);
    RowWriter rows(line, event_layout, mt_GetTicksPerSecond(store));
    if (!rows.good()) return Exit_Failed;
    StateTable state;
    EventWalk walk;
    const TimeScale scale = scale_of(line, store);
    // With an object asked for, the count is of its events, so the walk itself has no limit.
    uint32_t left = query->byObject && query->count > 0 ? query->count : UINT32_MAX;
    if (query->bySequence)
        mt_StartWalkBySequence(store, query->first, query->byObject ? 0 : query->count, &state, walk);
    else
        mt_StartWalkInTimeRange(store, range->first, range->end, &state, walk);
    EventRows output(named, scale, state, rows);
    const bool bigEndian = mt_IsBigEndianTarget(store);
    EventRecord event;
    uint32_t first = 0;
    while (left > 0 && rows.good() && mt_NextEvent(walk, event)) {
        if (first == 0) first = event.sequence;
        if (walk.gap()) output.changedByAny();
        mt_ApplyEventToState(state, event);
        output.changedBy(event);
        const auto object = object_of(event, bigEndian);
        if (query->byObject && object != query->object) continue;
        output.put(event, object);
        --left;
    }
    ProgressBar bar(!line.quiet);
    // Where nothing was found the index may lack blocks that would have it.
    const uint32_t ahead = first > 0 ? first : query->bySequence ? query->first : 0;
    if (ahead > 0) mt_CheckNumbers(store, ahead - 1, bar.progress());
    return closed(rows, named.opened);
}

int command_State(const CommandLine& line) {
    if (line.at.empty()) return cli_UsageError("state: --at is required");
    NamedStore named;
    int status = Exit_Usage;
    if (!named.open(line, status)) return status;
    TraceStore& store = named.store();
    const mt_Range all = mt_GetTimeRange(store);
    const auto at = cli_Time(line.at, line.ticks, all.first, mt_GetTicksPerSecond(store));
    if (!at) {
        cli_Say("--at: not a time: " + line.at);
        return cli_Refused(named.opened);
    }
    RowWriter rows(
        line,
        {{{"object", 10, CellForm::Id}, {"status", 6}, {"statusName", -16}, {"priority", 10}, {"name"}}});
    if (!rows.good()) return Exit_Failed;
    StateTable state;
    EventWalk walk;
    mt_StartWalkInTimeRange(store, *at, *at, &state, walk);
    for (const uint32_t position : state.sorted()) {
        const auto code = mt_TaskStatusAt(state, position);
        const auto name = mt_TaskNameAt(store, state, position, named.separator);
        rows.row({state.IdAt(position), code, code ? named.statusName(*code) : Cell(),
                  mt_TaskPriorityAt(state, position), name});
    }
    return closed(rows, named.opened);
}

int command_Objects(const CommandLine& line) {
    NamedStore named;
    int status = Exit_Usage;
    if (!named.open(line, status)) return status;
    TraceStore& store = named.store();
    const auto range = cli_Range(line, store);
    if (!range) return cli_Refused(named.opened);
    RowWriter rows(line, {{{"object", 10, CellForm::Id}, {"name"}}});
    if (!rows.good()) return Exit_Failed;
    // Names as they stand at the end of the range.
    StateTable state;
    EventWalk walk;
    mt_StartWalkInTimeRange(store, range->end, range->end, &state, walk);
    for (const uint32_t id : mt_GetObjectIdsUsedInTimeRange(store, mt_ObjectTask, range->first, range->end)) {
        const uint32_t position = state.find(mt_ObjectTask, id);
        const auto name = position == StateTable::npos
                              ? std::nullopt
                              : mt_TaskNameAt(store, state, position, named.separator);
        rows.row({id, name});
    }
    return closed(rows, named.opened);
}

int command_ConfigCheck(const CommandLine& line) {
    const ConfigureCheck check = configure_Check(line.path);
    for (const ConfigureCheck::Message& message : check.messages)
        cli_SayLine(line.path + ": " + std::string(text_trim(message.text)));
    if (check.errors < 0) return Exit_Failed;
    RowWriter rows(line, {});
    if (!rows.good()) return Exit_Failed;
    rows.facts({{"statuses", check.statuses},
                {"events", check.events},
                {"categories", check.categories},
                {"errors", check.errors}});
    if (!rows.close()) return Exit_Failed;
    if (!check.usable)
        return cli_Failure(line.path + ": no legend can be made: a configure file needs statuses and events");
    return check.errors == 0
               ? Exit_Done
               : cli_Failure(gen_format("%s: %d lines with errors", line.path.c_str(), check.errors));
}
