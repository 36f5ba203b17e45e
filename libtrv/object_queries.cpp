// Which objects a range touches, without reading the events of the blocks inside it.
#include <algorithm>
#include <unordered_set>

#include "libtrv/trace_store.h"
#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/report.h"

namespace {

class ObjectCollector {
  public:
    explicit ObjectCollector(std::optional<uint16_t> type) : type_(type) {}
    void enter(uint16_t type, uint32_t id) {
        if (!type_ || *type_ == type) keys_.insert(uint64_t{type} << 32 | id);
    }
    std::vector<mt_ObjectKey> sorted() const {
        std::vector<mt_ObjectKey> keys;
        keys.reserve(keys_.size());
        for (const uint64_t key : keys_)
            keys.push_back({static_cast<uint16_t>(key >> 32), static_cast<uint32_t>(key)});
        std::sort(keys.begin(), keys.end());
        return keys;
    }

  private:
    std::optional<uint16_t> type_;
    std::unordered_set<uint64_t> keys_;
};

void enter_created(const EventRecord& event, ObjectCollector& found) {
    StateChange change;
    for (ChangeList changes = event.changes; changes.next(change);)
        if (change.kind == mt_ChangeCreate) found.enter(change.objectType, change.objectId);
}

// Enters the objects created by the events from the file's position on, up to the first event not before t1
// or, with one_block, the end of the block. False when the store ended there.
bool enter_created_until(GFile& file, mt_Time t1, bool one_block, ObjectCollector& found) {
    EventRecord event;
    while (file.fill(1)) {
        switch (file.u8()) {
            case mt_PacketEvent:
                if (!mt_ReadEvent(file, event)) return false;
                if (!mt_Earlier(event.time, t1)) return true;
                enter_created(event, found);
                break;
            case mt_PacketState:
                if (!mt_SkipStateTable(file)) return false;
                break;
            case mt_PacketObjectsUsed:
                mt_SkipObjectsUsed(file);
                if (one_block) return true;
                break;
            case mt_PacketEnd:
                return false;
            default:
                return true;
        }
    }
    return false;
}

// The keys of the objects-used packet that opens a block, which lists those of the block before it.
bool enter_objects_used(TraceStore& store, uint32_t block, ObjectCollector& found) {
    GFile& file = *store.events;
    file.seek(store.blockOffsets[block]);
    const uint8_t type = file.u8();
    if (type != mt_PacketObjectsUsed) {
        gen_warning("libtrv: [mt_GetObjectStuffUsedInTimeRange]: expected OBJUSED, got (%d)", int{type});
        return false;
    }
    const uint32_t count = file.u32();
    for (uint32_t i = 0; i < count && file.fill(6); ++i) {
        const uint8_t* key = file.step(6);
        found.enter(load_be16(key), load_be32(key + 2));
    }
    return true;
}

void collect(TraceStore& store, mt_Time t0, mt_Time t1, ObjectCollector& found) {
    StateTable state;
    CursorPosition cursor;
    if (!mt_GetEventListAndStateFromTimeRange(store, t0, true, cursor, &state)) return;
    for (uint32_t position = 0; position < state.size(); ++position) {
        const ObjectEntry entry = state.entry(position);
        found.enter(entry.objectType, entry.objectId);
    }
    const uint32_t a = mt_BlockOfTime(store, t0), b = mt_BlockOfTime(store, t1);
    GFile& file = *store.events;
    file.seek(cursor.offset);
    // Behind the last index record there may be blocks that are not indexed yet: those are read through.
    const bool indexed = a + 1 < store.blockTimes.size();
    if (!enter_created_until(file, t1, indexed, found)) return;
    for (uint32_t block = a + 2; block <= b; ++block)
        if (!enter_objects_used(store, block, found)) return;
    if (a == b) return;
    file.seek(store.blockOffsets[b]);
    enter_created_until(file, t1, false, found);
}

}  // namespace

std::vector<mt_ObjectKey> mt_GetObjectStuffUsedInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1,
                                                           std::optional<uint16_t> objectType) {
    ObjectCollector found(objectType);
    collect(store, t0, t1, found);
    return found.sorted();
}

std::vector<uint32_t> mt_GetObjectIdsUsedInTimeRange(TraceStore& store, uint16_t objectType, mt_Time t0,
                                                     mt_Time t1) {
    std::vector<uint32_t> ids;
    for (const mt_ObjectKey& key : mt_GetObjectStuffUsedInTimeRange(store, t0, t1, objectType))
        ids.push_back(key.objectId);
    return ids;
}

std::vector<uint16_t> mt_GetObjectTypesUsedInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1) {
    std::vector<uint16_t> types;
    for (const mt_ObjectKey& key : mt_GetObjectStuffUsedInTimeRange(store, t0, t1, std::nullopt))
        if (types.empty() || types.back() != key.objectType) types.push_back(key.objectType);
    return types;
}
