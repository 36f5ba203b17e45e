#include "libtrv/writer_state.h"

#include <cstring>

namespace {
constexpr size_t key_size = 6;
}

uint32_t WriterState::UsedCount() const {
    return static_cast<uint32_t>(used_.size() / key_size);
}

void WriterState::clear() {
    table_.clear();
    used_.cut(0);
    deletedInBlock_ = false;
    regroup();
}

void WriterState::EnterUsed(uint16_t type, uint32_t id) {
    uint8_t key[key_size];
    store_be16(key, type);
    store_be32(key + 2, id);
    if (deletedInBlock_)  // only then can the key stand there already
        for (size_t at = 0; at < used_.size(); at += key_size)
            if (std::memcmp(used_.data() + at, key, key_size) == 0) return;
    used_.put(key);
}

void WriterState::LoadBegun() {
    used_.cut(0);
    deletedInBlock_ = false;
    for (uint32_t position = 0; position < table_.size(); ++position) {
        const ObjectEntry entry = table_.entry(position);
        EnterUsed(entry.objectType, entry.objectId);
    }
}

void WriterState::BeginBlock() {
    // With nothing deleted, the keys that stand there are those of the table.
    if (deletedInBlock_) LoadBegun();
}

void WriterState::LoadEvent(const EventRecord& event) {
    StateChange change;
    for (ChangeList changes = event.changes; changes.next(change);) {
        if (change.kind == mt_ChangeCreate &&
            table_.find(change.objectType, change.objectId) == StateTable::npos)
            EnterUsed(change.objectType, change.objectId);
        deletedInBlock_ = deletedInBlock_ || change.kind == mt_ChangeDelete;
    }
    mt_ApplyEventToState(table_, event);
}

void WriterState::regroup() {
    for (auto& members : group_) members.clear();
    for (auto& members : running_) members.clear();
    for (uint32_t position = 0; position < table_.size(); ++position) {
        if (!IsTask(position)) continue;
        group_[table_.IdAt(position) & mt_GroupMask].push_back(position);
        if (StatusOf(position) == mt_Running) EnterRunning(position);
    }
}

void WriterState::create(uint16_t type, uint32_t id, std::span<const uint8_t> block) {
    const uint32_t position = table_.create(type, id, block);
    if (position == StateTable::npos) return;
    EnterUsed(type, id);
    if (!IsTask(position)) return;
    group_[id & mt_GroupMask].push_back(position);
    if (StatusOf(position) == mt_Running) EnterRunning(position);
}

void WriterState::remove(uint16_t type, uint32_t id) {
    table_.remove(type, id);
    deletedInBlock_ = true;
    regroup();
}
