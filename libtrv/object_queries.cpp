// Which objects a range touches, without reading the events of the blocks inside it.
#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "libtrv/block_reader.h"
#include "libtrv/trace_store.h"
#include "libtrv/trace_store_impl.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr size_t packet_head = 5;

uint64_t key_of(uint16_t type, uint32_t id) {
    return uint64_t{type} << 32 | id;
}
uint64_t key_at(const uint8_t* bytes) {
    return key_of(load_be16(bytes), load_be32(bytes + 2));
}

class ObjectCollector {
  public:
    void enter(uint64_t key) { keys_.insert(key); }
    bool has(uint64_t key) const { return keys_.contains(key); }
    const std::unordered_set<uint64_t>& keys() const { return keys_; }
    std::vector<mt_ObjectKey> sorted(std::optional<uint16_t> type) const {
        std::vector<mt_ObjectKey> keys;
        keys.reserve(keys_.size());
        for (const uint64_t key : keys_)
            if (!type || *type == key >> 32)
                keys.push_back({static_cast<uint16_t>(key >> 32), static_cast<uint32_t>(key)});
        std::sort(keys.begin(), keys.end());
        return keys;
    }

  private:
    std::unordered_set<uint64_t> keys_;
};

void enter_created(const EventRecord& event, ObjectCollector& found) {
    StateChange change;
    for (ChangeList changes = event.changes; changes.next(change);)
        if (change.kind == mt_ChangeCreate) found.enter(key_of(change.objectType, change.objectId));
}

// Enters the objects created by the events ahead of t1, up to the end of a block. False when the store ended
// there.
bool enter_created_until(BlockReader& reader, mt_Time t1, uint32_t lastBlock, ObjectCollector& found) {
    EventRecord event;
    while (!(reader.BlockIsDone() && reader.block() >= lastBlock)) {
        if (!reader.next(event)) return false;
        if (!mt_Earlier(event.time, t1)) return true;
        enter_created(event, found);
    }
    return true;
}

// The lists of objects used, one after the other. Each holds the objects of the block before its own, so that
// it begins with the list before it unless an object was deleted: only what is new is entered.
class ListsOfObjects {
  public:
    ListsOfObjects(TraceStore& store, ObjectCollector& found)
        : store_(store), file_(store.events->View()), found_(found) {
        for (const uint64_t key : found.keys()) before_.insert(key);
    }

    // The list that opens a block. False when there is none, which is noted.
    bool enter(uint32_t block) {
        if (store_.blockOffsets[block] == mt_UnknownOffset || !read(block)) return false;
        const size_t size = size_t{count_} * mt_KeySize;
        const uint8_t* keys = file_->here();
        if (!known_.empty() && size >= known_.size() && std::memcmp(keys, known_.data(), known_.size()) == 0)
            EnterNew(keys, known_.size(), size);
        else
            EnterAll(keys, size, block);
        return true;
    }

  private:
    bool read(uint32_t block) {
        file_->seek(store_.blockOffsets[block]);
        const bool there = file_->fill(packet_head);
        if (there && *file_->here() == mt_PacketObjectsUsed) {
            count_ = load_be32(file_->step(packet_head) + 1);
            const size_t size = size_t{count_} * mt_KeySize;
            if (file_->fill(size + 1) && file_->here()[size] == mt_PacketState) return true;
        }
        if (there && *file_->here() != mt_PacketObjectsUsed && file_->tell() == store_.blockOffsets[block])
            gen_warning("libtrv: [mt_GetObjectStuffUsedInTimeRange]: expected OBJUSED, got (%d)",
                        int{*file_->here()});
        note(block, file_->error() != 0 ? std::strerror(file_->error()) : "objects may be missing");
        return false;
    }
    void note(uint32_t block, std::string cost) {
        store_.damage.note(mt_DamageKind::Objects, block, block + 1,
                           Result::failure("the list of objects of a block can't be read or is wrong",
                                           mt_PlaceText(store_.events->name(), store_.blockOffsets[block]),
                                           std::move(cost)));
    }
    void EnterNew(const uint8_t* keys, size_t from, size_t size) {
        for (size_t at = from; at < size; at += mt_KeySize) {
            found_.enter(key_at(keys + at));
            before_.insert(key_at(keys + at));
        }
        known_.insert(known_.end(), keys + from, keys + size);
    }
    void EnterAll(const uint8_t* keys, size_t size, uint32_t block) {
        std::unordered_set<uint64_t> missing = std::move(before_);
        before_.clear();
        known_.clear();
        for (size_t at = 0; at < size; at += mt_KeySize) missing.erase(key_at(keys + at));
        EnterNew(keys, 0, size);
        if (before_.size() < count_ || !WereDeleted(missing, block))
            note(block, "objects may be missing or wrong");
    }
    // An object that the list before had is missing here only when it was deleted two blocks ahead.
    bool WereDeleted(std::unordered_set<uint64_t>& missing, uint32_t block) {
        if (missing.empty()) return true;
        BlockReader reader(store_);
        if (block < 2 || !reader.StartNear(block - 2, nullptr)) return false;
        EventRecord event;
        while (reader.next(event) && reader.block() < block - 1) {
            StateChange change;
            for (ChangeList changes = event.changes; changes.next(change);)
                if (change.kind == mt_ChangeDelete) missing.erase(key_of(change.objectType, change.objectId));
        }
        return missing.empty();
    }

    TraceStore& store_;
    std::unique_ptr<GFile> file_;
    ObjectCollector& found_;
    uint32_t count_ = 0;
    std::vector<uint8_t> known_;           // the list before
    std::unordered_set<uint64_t> before_;  // its keys; ahead of the first list, all that was found
};

void collect(TraceStore& store, mt_Time t0, mt_Time t1, ObjectCollector& found) {
    StateTable state;
    BlockReader reader(store);
    if (!mt_PositionByTime(store, t0, &state, reader)) return;
    for (uint32_t position = 0; position < state.size(); ++position) {
        const ObjectEntry entry = state.entry(position);
        found.enter(key_of(entry.objectType, entry.objectId));
    }
    const uint32_t a = mt_BlockOfTime(store, t0), b = mt_BlockOfTime(store, t1);
    // Behind the last index record there may be blocks that are not indexed yet: those are read through.
    const bool indexed = a + 1 < store.blockTimes.size();
    const bool more = enter_created_until(reader, t1, indexed ? a : UINT32_MAX, found);
    if (indexed) reader.FinishBlock();
    if (!more || a >= b) return;
    ListsOfObjects lists(store, found);
    for (uint32_t block = a + 2; block <= b; ++block) lists.enter(block);
    if (!reader.StartNear(b, &state)) return;
    enter_created_until(reader, t1, UINT32_MAX, found);
    reader.FinishBlock();
}

}  // namespace

std::vector<mt_ObjectKey> mt_GetObjectStuffUsedInTimeRange(TraceStore& store, mt_Time t0, mt_Time t1,
                                                           std::optional<uint16_t> objectType) {
    ObjectCollector found;
    collect(store, t0, t1, found);
    return found.sorted(objectType);
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
