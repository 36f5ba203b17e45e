// The reading half of the store: open one, learn its facts, walk and list its events with the state of all
// objects, and ask which objects a range touches. Ranges are half open in ticks: t0 <= time < t1. One thread.
// Every walk and query has a position of its own, so that any of them may run while others go on.
//
// A reader may be open on a store that a writer still appends to: it sees whole events only.
//
// A store may be damaged. A query then gives what can be read, going on at the next block that the index
// leads to, and what is missing is noted: whoever can tell the user takes it with mt_TakeDamage.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "libtrv/event.h"
#include "libtrv/state_table.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/progress.h"
#include "shared/libcxxutil/result.h"

class BlockReader;
class FileDevice;
struct TraceStore;
struct TraceStoreDeleter {
    void operator()(TraceStore* store) const;  // mt_Close
};
using TraceStorePtr = std::unique_ptr<TraceStore, TraceStoreDeleter>;

// Opens base.trv, base.trs, base.tri. Null on failure, which goes to trouble when that is given. Times of
// 2^63 ticks and more, which come ahead of all others in ranges, are told here by a warning.
TraceStorePtr mt_OpenForRead(const std::string& base, Result* trouble = nullptr);
// The same by the name of the .trs file: the last 4 characters are dropped.
TraceStorePtr mt_OpenForReadByDataFile(const std::string& name, Result* trouble = nullptr);
// For tests: the three devices in place of files. The base is only told in messages.
TraceStorePtr mt_OpenOnDevices(std::unique_ptr<FileDevice> version, std::unique_ptr<FileDevice> events,
                               std::unique_ptr<FileDevice> index, const std::string& base,
                               Result* trouble = nullptr);
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

// What was found to be damaged since the last call: in which file and where, and what that costs. Each
// finding is given once, whichever query meets it first.
std::vector<Result> mt_TakeDamage(TraceStore& store);
// True when any damage was found so far, taken or not.
bool mt_IsDamaged(const TraceStore& store);
// Reads the whole store, so that all damage that can be found is. False when progress, which is told of
// blocks, stopped it.
bool mt_CheckStore(TraceStore& store, const Progress& progress);
// Finds damage by which the events behind a number of them would not have the numbers that queries give
// them: an index that lacks a block. Most blocks are told from two by their sizes, without reading them.
bool mt_CheckNumbers(TraceStore& store, uint32_t events, const Progress& progress);

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

// A walk over events, with a position and a buffer of its own: nothing is allocated per event, and other
// queries on the store do not disturb it. The store must outlive it. An event's spans last until the next
// call. A state given at the start must outlive the walk; its owner brings it forward by the events.
class EventWalk {
  public:
    EventWalk();  // over nothing
    ~EventWalk();
    EventWalk(EventWalk&&) noexcept;
    EventWalk& operator=(EventWalk&&) noexcept;

    // The next event; false behind the last one, and then at every later call.
    [[nodiscard]] bool next(EventRecord& event);
    // What could not be read just ahead of the event last given, or, once there are no more, behind the last
    // one; ahead of the first event, between the state and the start of the walk. Null when nothing is
    // missing there. With the event behind a gap the state becomes the one just ahead of that event, and what
    // a caller derives from it must be derived anew; statuses are known up to the gap's start and no further.
    const mt_Gap* gap() const;
    // Gaps met so far.
    uint32_t gaps() const;
    // A walk that came to the end of the store, with no end of its own, goes on behind its last event: next
    // then gives what was appended since. False for any other, and where damage ended it.
    [[nodiscard]] bool resume();

  private:
    friend bool mt_StartWalkInTimeRange(TraceStore&, mt_Time, mt_Time, StateTable*, EventWalk&);
    friend bool mt_StartWalkBySequence(TraceStore&, uint32_t, uint32_t, StateTable*, EventWalk&);
    friend bool mt_StartWalkAtEvent(TraceStore&, uint32_t, uint32_t, StateTable*, EventWalk&);
    BlockReader& begin(TraceStore& store);
    bool finish(std::optional<mt_Gap> behind);

    std::unique_ptr<BlockReader> reader_;
    std::optional<mt_Gap> gapBehind_;  // of a walk that is over
    uint64_t left_ = 0;                // events that may still be given
    mt_Time end_ = 0;                  // with hasEnd
    bool hasEnd_ = false;
    bool over_ = true;
};

// Positions a walk at the first event not before t0 and ends it before t1. state, when given, becomes the
// state just before t0. False when the store has no block; the walk is then empty and the state too.
bool mt_StartWalkInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1, StateTable* state, EventWalk& walk);
// The same from a sequence number, for at most count events (0: no limit). A number that is a multiple of the
// checkpoint interval starts at the event behind it, and 0 at the first one.
bool mt_StartWalkBySequence(TraceStore& store, uint32_t sequence, uint32_t count, StateTable* state,
                            EventWalk& walk);
// The same from exactly the event of a sequence number, which counts from 1, or from the next one that can be
// read.
bool mt_StartWalkAtEvent(TraceStore& store, uint32_t sequence, uint32_t count, StateTable* state,
                         EventWalk& walk);
[[nodiscard]] inline bool mt_NextEvent(EventWalk& walk, EventRecord& event) {
    return walk.next(event);
}

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
