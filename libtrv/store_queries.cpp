// Positioning, walks, lists and attributes.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "libtrv/trace_store.h"
#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/report.h"

namespace {
constexpr size_t entry_head = 10;  // of a state table entry: type, id, length
constexpr size_t key_size = 6;     // of an objects-used key: type, id

// How an event's parse from a stretch of bytes ended.
struct Parsed {
    enum { Whole, NeedMore } result;
    size_t size;  // Whole: bytes of the event; NeedMore: bytes that are certainly needed
};

inline Parsed parse_event(const uint8_t* start, size_t there, EventRecord& event) {
    constexpr size_t head = 16;
    if (there < head) return {Parsed::NeedMore, head};
    event.time = load_be64(start);
    const size_t extra = load_be32(start + 8);
    event.type = load_be16(start + 12);
    event.subtype = load_be16(start + 14);
    event.extra = {start + head, extra};
    const size_t changes = head + extra;
    size_t at = changes;
    for (;;) {
        if (there <= at) return {Parsed::NeedMore, at + 1};
        const uint8_t kind = start[at];
        if (kind == mt_ChangeEnd) break;
        if (kind > mt_ChangeEnd) {
            gen_error("Unrecognized StateChange type\n");
            break;
        }
        const size_t fixed = kind == mt_ChangeCreate ? 9 : kind == mt_ChangeModify ? 10 : 7;
        if (there - at < fixed) return {Parsed::NeedMore, at + fixed};
        const size_t length = kind == mt_ChangeCreate   ? load_be16(start + at + 7)
                              : kind == mt_ChangeModify ? start[at + 9]
                                                        : 0;
        at += fixed + length;
    }
    event.changes = ChangeList({start + changes, at - changes});
    return {Parsed::Whole, at + 1};
}

// In line, since it is all that a walk does per event.
inline bool read_event(GFile& file, EventRecord& event) {
    for (;;) {
        const Parsed parsed = parse_event(file.here(), file.buffered(), event);
        if (parsed.result == Parsed::Whole) {
            file.step(parsed.size);
            return true;
        }
        if (!file.fill(parsed.size)) return false;
    }
}

}  // namespace

bool mt_ReadEvent(GFile& file, EventRecord& event) {
    return read_event(file, event);
}

bool mt_SkipStateTable(GFile& file) {
    const uint32_t count = file.u32();
    for (uint32_t i = 0; i < count; ++i) {
        if (!file.fill(entry_head)) return false;
        file.skip(entry_head + uint64_t{load_be32(file.here() + 6)});
    }
    return true;
}

void mt_SkipObjectsUsed(GFile& file) {
    file.skip(uint64_t{file.u32()} * key_size);
}

bool mt_ReadStateTable(GFile& file, StateTable& table) {
    table.clear();
    const uint32_t count = file.u32();
    for (uint32_t i = 0; i < count; ++i) {
        if (!file.fill(entry_head)) return false;
        const size_t length = load_be32(file.here() + 6);
        if (!file.fill(entry_head + length)) return false;
        const uint8_t* entry = file.step(entry_head + length);
        table.create(load_be16(entry), load_be32(entry + 2), {entry + entry_head, length});
    }
    return true;
}

bool mt_GetEventListAndStateFromTimeRange(TraceStore& store, uint64_t key, bool keyIsTime,
                                          CursorPosition& cursor, StateTable* state) {
    if (state) state->clear();
    if (store.blockTimes.empty()) return false;
    const uint64_t wanted = keyIsTime ? mt_BlockOfTime(store, key) : key / store.checkpointInterval;
    // A sequence number past the last block is looked for from the last one on.
    const auto block = static_cast<uint32_t>(std::min<uint64_t>(wanted, store.blockTimes.size() - 1));
    uint64_t sequence = uint64_t{block} * store.checkpointInterval;
    GFile& file = *store.events;
    file.seek(store.blockOffsets[block]);
    EventRecord event;
    bool whole = true;
    while (whole) {
        cursor = {static_cast<uint32_t>(file.tell()), static_cast<uint32_t>(sequence)};
        if (!file.fill(1)) break;
        const uint8_t type = file.u8();
        if (type == mt_PacketEnd) break;
        if (type == mt_PacketState) {
            whole = state ? mt_ReadStateTable(file, *state) : mt_SkipStateTable(file);
        } else if (type == mt_PacketObjectsUsed) {
            mt_SkipObjectsUsed(file);
        } else if (type == mt_PacketEvent) {
            whole = mt_ReadEvent(file, event);
            ++sequence;
            cursor.sequence = static_cast<uint32_t>(sequence);
            const bool before = whole && (keyIsTime ? mt_Earlier(event.time, key) : sequence < key);
            if (!before) break;
            if (state) mt_ApplyEventToState(*state, event);
        } else {
            gen_error("libtrv: [mt_GetEventListAndStateFromTimeRange]: Unrecognized .trs packet type (%d)",
                      int{type});
            break;
        }
    }
    return true;
}

namespace {

bool start_walk(TraceStore& store, uint64_t key, bool keyIsTime, StateTable* state, EventWalk& walk) {
    walk = {};
    CursorPosition cursor;
    if (!mt_GetEventListAndStateFromTimeRange(store, key, keyIsTime, cursor, state)) return false;
    walk.store = &store;
    walk.nextSequence = cursor.sequence;
    walk.done = false;
    store.events->seek(cursor.offset);
    return true;
}

}  // namespace

bool mt_StartWalkInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, StateTable* state, EventWalk& walk) {
    if (!start_walk(store, t0, true, state, walk)) return false;
    walk.hasEnd = true;
    walk.end = t1;
    return true;
}

bool mt_StartWalkBySequence(TraceStore& store, uint32_t sequence, uint32_t count, StateTable* state,
                            EventWalk& walk) {
    if (!start_walk(store, sequence, false, state, walk)) return false;
    walk.hasLimit = count != 0;
    walk.remaining = count;
    return true;
}

bool mt_NextEvent(EventWalk& walk, EventRecord& event) {
    if (walk.done) return false;
    GFile& file = *walk.store->events;
    for (bool whole = true; whole && file.fill(1);) {
        const uint8_t type = file.u8();
        if (type == mt_PacketEvent) {
            if (!read_event(file, event)) break;
            if (walk.hasEnd && !mt_Earlier(event.time, walk.end)) break;
            event.sequence = walk.nextSequence++;
            if (walk.hasLimit && --walk.remaining == 0) walk.done = true;
            return true;
        }
        if (type == mt_PacketState)
            whole = mt_SkipStateTable(file);
        else if (type == mt_PacketObjectsUsed)
            mt_SkipObjectsUsed(file);
        else
            break;
    }
    walk.done = true;
    return false;
}

namespace {
bool collect(bool started, EventWalk& walk, EventList& list) {
    list.clear();
    EventRecord event;
    while (started && mt_NextEvent(walk, event)) list.append(event);
    return started;
}
}  // namespace

bool mt_GetEventsInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, EventList& list, StateTable& state) {
    EventWalk walk;
    return collect(mt_StartWalkInTimeRange(store, t0, t1, &state, walk), walk, list);
}

bool mt_GetEventsBySequence(TraceStore& store, uint32_t sequence, uint32_t count, EventList& list,
                            StateTable& state) {
    EventWalk walk;
    return collect(mt_StartWalkBySequence(store, sequence, count, &state, walk), walk, list);
}

bool mt_GetEventObject(const TraceStore& store, const EventRecord& event, uint16_t& objectType,
                       uint32_t& objectId) {
    if (event.extra.size() < 4) {
        std::fprintf(stderr, "Invalid Extra Data(length %d) for event with type %d.\n",
                     static_cast<int>(event.extra.size()), event.type);
        return false;
    }
    objectType = mt_ObjectTask;
    objectId = load_32(event.extra.data(), store.bigEndian);
    return true;
}

namespace {

// The block of a task at a position, null when it is no task's or too short to be one.
const uint8_t* task_block(const StateTable& table, uint32_t position) {
    const ObjectEntry entry = table.entry(position);
    return entry.objectType == mt_ObjectTask && entry.block.size() >= mt_TaskBlockSize ? entry.block.data()
                                                                                       : nullptr;
}

std::string name_field(const uint8_t* field) {
    return {reinterpret_cast<const char*>(field),
            ::strnlen(reinterpret_cast<const char*>(field), mt_NameSize)};
}

}  // namespace

std::optional<uint16_t> mt_TaskStatusAt(const StateTable& table, uint32_t position) {
    const uint8_t* block = task_block(table, position);
    if (!block || !block[mt_TaskStatusValid]) return std::nullopt;
    return load_be16(block + mt_TaskStatus);
}

std::optional<uint32_t> mt_TaskPriorityAt(const StateTable& table, uint32_t position) {
    const uint8_t* block = task_block(table, position);
    if (!block || !block[mt_TaskPriorityValid]) return std::nullopt;
    return load_be32(block + mt_TaskPriority);
}

std::optional<std::string> mt_TaskNameAt(const TraceStore& store, const StateTable& table, uint32_t position,
                                         char separator) {
    const uint8_t* block = task_block(table, position);
    if (!block || !block[mt_TaskNameValid]) return std::nullopt;
    std::string name;
    if (store.formatVersion >= 3 && block[mt_TaskPrefixValid]) name = name_field(block + mt_TaskPrefix);
    if (!name.empty()) name.push_back(separator);
    return name + name_field(block + mt_TaskName);
}

bool mt_GetObjectAttribute(const TraceStore& store, const StateTable& table, uint16_t objectType,
                           uint32_t objectId, uint32_t attribute, void* buffer, uint32_t size, char separator,
                           bool& delivered) {
    delivered = false;
    const uint32_t position = table.find(objectType, objectId);
    if (position == StateTable::npos) return false;
    if (attribute == mt_AttributeStatus) {
        const auto status = mt_TaskStatusAt(table, position);
        if ((delivered = status && size >= sizeof *status)) std::memcpy(buffer, &*status, sizeof *status);
    } else if (attribute == mt_AttributePriority) {
        const auto priority = mt_TaskPriorityAt(table, position);
        if ((delivered = priority && size >= sizeof *priority))
            std::memcpy(buffer, &*priority, sizeof *priority);
    } else if (attribute == mt_AttributeName) {
        const auto name = mt_TaskNameAt(store, table, position, separator);
        if ((delivered = name && size > 0)) {
            const size_t length = std::min<size_t>(name->size(), size - 1);
            std::memcpy(buffer, name->data(), length);
            static_cast<char*>(buffer)[length] = '\0';
        }
    }
    return true;
}
