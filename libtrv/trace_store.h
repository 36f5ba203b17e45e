// The reading half of the store: open one, learn its facts, walk and list its events with the state of all
// objects, and ask which objects a range touches. Ranges are half open in ticks: t0 <= time < t1. One thread;
// queries of one store share its file position and are not reentrant, but for walks, which only must not
// overlap on one store.
//
// A reader may be open on a store that a writer still appends to: it sees whole events only.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "libtrv/event.h"
#include "libtrv/state_table.h"
#include "libtrv/store_format.h"

class FileDevice;
struct TraceStore;
struct TraceStoreDeleter {
    void operator()(TraceStore* store) const;  // mt_Close
};
using TraceStorePtr = std::unique_ptr<TraceStore, TraceStoreDeleter>;

// Opens base.trv, base.trs, base.tri. Null on failure, with what and where in why when it is given.
TraceStorePtr mt_OpenForRead(const std::string& base, std::string* why = nullptr);
// The same by the name of the .trs file: the last 4 characters are dropped.
TraceStorePtr mt_OpenForReadByDataFile(const std::string& name, std::string* why = nullptr);
// For tests: the three devices in place of files. The base is only told in messages.
TraceStorePtr mt_OpenOnDevices(std::unique_ptr<FileDevice> version, std::unique_ptr<FileDevice> events,
                               std::unique_ptr<FileDevice> index, const std::string& base,
                               std::string* why = nullptr);
void mt_Close(TraceStore* store);
// Flushes those files that are open, down to the disk. Null is accepted. False when the disk refused.
bool mt_FlushFiles(TraceStore* store);

// Facts. A null store gives null for the name.
uint64_t mt_GetTicksPerSecond(const TraceStore& store);
const char* mt_GetOsName(const TraceStore* store);
bool mt_IsBigEndianTarget(const TraceStore& store);
uint32_t mt_GetFormatVersion(const TraceStore& store);
uint32_t mt_GetCheckpointInterval(const TraceStore& store);
// Index records now in memory, that is blocks.
uint32_t mt_GetBlockCount(const TraceStore& store);
// Time of the first event of a block; 0 for a number behind the last one. A block holds as many events as the
// checkpoint interval, the last one what is left.
mt_Time mt_GetBlockTime(const TraceStore& store, uint32_t block);
const std::string& mt_GetBaseName(const TraceStore& store);

struct mt_Range {
    mt_Time first = 0;
    mt_Time end = 1;  // one past the last event
};
// The first event's time and one past the last one's, read afresh. An empty store gives 0 and 1.
mt_Range mt_GetTimeRange(TraceStore& store);
// Number of events, read afresh; it is also the sequence number of the last one.
uint32_t mt_GetEventCount(TraceStore& store);
// True when the byte at the tail is no longer 0. The first call on a store that was not scanned yet is true.
bool mt_HasNewData(TraceStore& store);
// Takes in index records appended since the last call.
void mt_RefreshIndex(TraceStore& store);
struct mt_LastBlock {
    uint32_t events = 0;
    mt_Time lastTime = 0;
};
// Reads the last block through and sets the tail. Nothing for a store with no index.
mt_LastBlock mt_ScanLastBlock(TraceStore& store);

// A walk over events: nothing is allocated per event. Fill one by a Start operation, then call mt_NextEvent
// until it is false. The store must outlive it. An event's spans last until the next call.
struct EventWalk {
    TraceStore* store = nullptr;
    uint32_t nextSequence = 0;
    uint32_t remaining = 0;  // with hasLimit
    mt_Time end = 0;         // with hasEnd
    bool hasLimit = false;
    bool hasEnd = false;
    bool done = true;
};
// Positions a walk at the first event not before t0 and ends it before t1. state, when given, becomes the
// state just before t0. False when the store has no block; the walk is then empty and the state too.
bool mt_StartWalkInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, StateTable* state, EventWalk& walk);
// The same from a sequence number, for at most count events (0: no limit). A number that is a multiple of the
// checkpoint interval starts at the event behind it; 0 is the same as 1.
bool mt_StartWalkBySequence(TraceStore& store, uint32_t sequence, uint32_t count, StateTable* state,
                            EventWalk& walk);
[[nodiscard]] bool mt_NextEvent(EventWalk& walk, EventRecord& event);

// Calls visit(const EventRecord&) -> bool for each event of the range until it is false.
template <class Visit>
bool mt_VisitEventsInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, StateTable* state, Visit&& visit) {
    EventWalk walk;
    if (!mt_StartWalkInTimeRange(store, t0, t1, state, walk)) return false;
    EventRecord event;
    while (mt_NextEvent(walk, event))
        if (!visit(static_cast<const EventRecord&>(event))) break;
    return true;
}

// Lists, built on the walks. False when the store has no block.
bool mt_GetEventsInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, EventList& list, StateTable& state);
bool mt_GetEventsBySequence(TraceStore& store, uint32_t sequence, uint32_t count, EventList& list,
                            StateTable& state);

// The packet where a walk would begin: its offset in the .trs and the sequence number of its event.
struct CursorPosition {
    uint32_t offset = 0;
    uint32_t sequence = 0;
};
// The positioning step. key is a time or a sequence number. The event at the cursor is not applied to the
// state.
bool mt_GetEventListAndStateFromTimeRange(TraceStore& store, uint64_t key, bool keyIsTime,
                                          CursorPosition& cursor, StateTable* state);

// Objects that a range touches: those known at t0, and those created from t0 to the end of the range. Blocks
// that lie wholly inside cost one small packet each, so an object of such a block counts whatever its exact
// time.
struct mt_ObjectKey {
    uint16_t objectType = 0;
    uint32_t objectId = 0;
    auto operator<=>(const mt_ObjectKey&) const = default;
};
// Sorted by type, then id, each key once. With a type, only keys of that type.
std::vector<mt_ObjectKey> mt_GetObjectStuffUsedInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1,
                                                           std::optional<uint16_t> objectType);
std::vector<uint32_t> mt_GetObjectIdsUsedInTimeRange(TraceStore& store, uint16_t objectType, mt_Time t0,
                                                     mt_Time t1);
std::vector<uint16_t> mt_GetObjectTypesUsedInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1);

// The object an event belongs to: type 0 and the first word of the extra data in the target's byte order.
// False, with a message on the standard error stream, when there are fewer than 4 bytes.
[[nodiscard]] bool mt_GetEventObject(const TraceStore& store, const EventRecord& event, uint16_t& objectType,
                                     uint32_t& objectId);

// One attribute of an object. False when the object is not in the table; delivered tells whether a value was
// put into the buffer: 2 bytes of status or 4 of priority in host order, or the name as zero-terminated text
// of at most size bytes, its prefix before it and joined by the separator.
bool mt_GetObjectAttribute(const TraceStore& store, const StateTable& table, uint16_t objectType,
                           uint32_t objectId, uint32_t attribute, void* buffer, uint32_t size, char separator,
                           bool& delivered);
// The same for a position of the table, as values.
std::optional<uint16_t> mt_TaskStatusAt(const StateTable& table, uint32_t position);
std::optional<uint32_t> mt_TaskPriorityAt(const StateTable& table, uint32_t position);
std::optional<std::string> mt_TaskNameAt(const TraceStore& store, const StateTable& table, uint32_t position,
                                         char separator);
