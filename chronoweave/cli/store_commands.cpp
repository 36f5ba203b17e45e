// info, import, events, state, objects, config check.
#include <chrono>
#include <unordered_map>

#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/named_store.h"
#include "chronoweave/import/extra_format.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

using Json = nlohmann::ordered_json;

namespace {

std::string hex_text(std::span<const uint8_t> bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

}  // namespace

int command_Info(const CommandLine& line) {
    const OpenedSource opened = cli_Open(line);
    if (!opened.store) return cli_Failure(opened.error);
    TraceStore& store = *opened.store;
    const uint32_t events = mt_GetEventCount(store);
    const mt_Range range = mt_GetTimeRange(store);
    const TimeScale scale = scale_of(line, store);
    RowWriter rows(line, {});
    if (!rows.good()) return Exit_Failed;
    Json facts{{"base", text_utf8(opened.base)},
               {"formatVersion", mt_GetFormatVersion(store)},
               {"ticksPerSecond", mt_GetTicksPerSecond(store)},
               {"os", text_utf8(mt_GetOsName(&store))},
               {"osKind", static_cast<int>(legend_OsKind(mt_GetOsName(&store)))},
               {"bigEndian", mt_IsBigEndianTarget(store)},
               {"checkpointInterval", mt_GetCheckpointInterval(store)},
               {"blocks", mt_GetBlockCount(store)},
               {"events", events},
               {"firstTick", range.first},
               {"endTick", range.end}};
    facts["duration"] = line.ticks ? Json(range.end - range.first) : Json(scale.seconds(range.end));
    rows.facts(facts);
    return closed(rows, opened);
}

int command_Import(const CommandLine& line) {
    const auto start = std::chrono::steady_clock::now();
    const OpenedSource opened = cli_Open(line, line.output);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!opened.imported)
        return cli_Failure(opened.error.empty() ? line.path + ": a store already, there is nothing to import"
                                                : opened.error);
    CommandLine form = line;
    form.output.clear();  // -o names the store
    RowWriter rows(form, {});
    const ImportCounts& counts = opened.counts;
    Json facts{{"base", text_utf8(opened.base)}, {"events", counts.events}, {"dropped", counts.dropped()},
               {"badBytes", counts.badBytes},    {"unread", counts.unread}, {"seconds", seconds}};
    if (!line.json)
        facts["eventsPerSecond"] =
            seconds > 0 ? static_cast<uint64_t>(static_cast<double>(counts.events) / seconds) : 0;
    rows.facts(facts);
    return closed(rows, opened);
}

namespace {

// The names of objects while a walk goes on: looked up again only when an event changed the object.
class ObjectNames {
  public:
    ObjectNames(const TraceStore& store, const StateTable& state, char separator)
        : store_(store), state_(state), separator_(separator) {}
    void changed_by(const EventRecord& event) {
        StateChange change;
        for (ChangeList changes = event.changes; changes.next(change);) known_.erase(change.objectId);
    }
    const Json& of(uint32_t id) {
        const auto [at, fresh] = known_.try_emplace(id);
        if (fresh) {
            const uint32_t position = state_.find(mt_ObjectTask, id);
            if (position != StateTable::npos)
                at->second = name_or_null(mt_TaskNameAt(store_, state_, position, separator_));
        }
        return at->second;
    }

  private:
    const TraceStore& store_;
    const StateTable& state_;
    char separator_;
    std::unordered_map<uint32_t, Json> known_;
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

const std::vector<Column> event_columns{{"seq", 8},
                                        {"tick", 14},
                                        {"time", 14, ColumnForm::Seconds},
                                        {"type", 4},
                                        {"subtype", 7},
                                        {"object", 10, ColumnForm::Id},
                                        {"objectName", -20},
                                        {"event", -24},
                                        {"extra", -24},
                                        {"text"}};

class EventRows {
  public:
    EventRows(NamedStore& named, const TimeScale& scale, const StateTable& state, RowWriter& rows)
        : named_(named),
          scale_(scale),
          names_(named.store(), state, named.separator),
          rows_(rows),
          bigEndian_(mt_IsBigEndianTarget(named.store())) {}

    void changed_by(const EventRecord& event) { names_.changed_by(event); }
    void put(const EventRecord& event, const std::optional<uint32_t>& object) {
        const int32_t row = named_.hasLegend ? named_.legend.EventIndex(event.type, event.subtype) : -1;
        Json values{{"seq", event.sequence},
                    {"tick", event.time},
                    {"time", shown_time(scale_, event.time)},
                    {"type", event.type},
                    {"subtype", event.subtype},
                    {"object", nullptr},
                    {"objectName", nullptr},
                    {"event", text_utf8(named_.event_name(event, row))},
                    {"extra", hex_text(event.extra)}};
        if (object) {
            values["object"] = *object;
            values["objectName"] = names_.of(*object);
        }
        const std::string* format =
            row < 0 ? nullptr : &named_.legend.events[static_cast<size_t>(row)].extraFormat;
        if (format && !format->empty() &&
            extra_Format(event, *format, bigEndian_, false, false, text_, nullptr))
            values["text"] = text_utf8(text_);
        rows_.row(values);
    }

  private:
    NamedStore& named_;
    TimeScale scale_;
    ObjectNames names_;
    RowWriter& rows_;
    bool bigEndian_;
    std::string text_;
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
    if (!range) return Exit_Usage;
    RowWriter rows(line, event_columns);
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
    while (left > 0 && mt_NextEvent(walk, event)) {
        mt_ApplyEventToState(state, event);
        output.changed_by(event);
        const auto object = object_of(event, bigEndian);
        if (query->byObject && object != query->object) continue;
        output.put(event, object);
        --left;
    }
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
    if (!at) return cli_UsageError("--at: not a time: " + line.at);
    RowWriter rows(
        line,
        {{"object", 10, ColumnForm::Id}, {"status", 6}, {"statusName", -16}, {"priority", 10}, {"name"}});
    if (!rows.good()) return Exit_Failed;
    StateTable state;
    EventWalk walk;
    mt_StartWalkInTimeRange(store, *at, *at, &state, walk);
    for (const uint32_t position : state.sorted()) {
        const auto code = mt_TaskStatusAt(state, position);
        const auto priority = mt_TaskPriorityAt(state, position);
        rows.row({{"object", state.id_at(position)},
                  {"status", code ? Json(*code) : Json(nullptr)},
                  {"statusName", code ? named.status_name(*code) : Json(nullptr)},
                  {"priority", priority ? Json(*priority) : Json(nullptr)},
                  {"name", name_or_null(mt_TaskNameAt(store, state, position, named.separator))}});
    }
    return closed(rows, named.opened);
}

int command_Objects(const CommandLine& line) {
    NamedStore named;
    int status = Exit_Usage;
    if (!named.open(line, status)) return status;
    TraceStore& store = named.store();
    const auto range = cli_Range(line, store);
    if (!range) return Exit_Usage;
    RowWriter rows(line, {{"object", 10, ColumnForm::Id}, {"name"}});
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
        rows.row({{"object", id}, {"name", name_or_null(name)}});
    }
    return closed(rows, named.opened);
}

int command_ConfigCheck(const CommandLine& line) {
    const ConfigureCheck check = configure_Check(line.path);
    for (const ConfigureCheck::Message& message : check.messages)
        std::fprintf(stderr, "%s: %s\n", line.path.c_str(), std::string(text_trim(message.text)).c_str());
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
