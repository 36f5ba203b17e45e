#include "libtrv/writer_state.h"

#include <algorithm>
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

bool WriterState::IsTask(uint32_t position) const {
    return table_.entry(position).objectType == mt_ObjectTask &&
           table_.BlockSize(position) == mt_TaskBlockSize;
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
        const uint32_t of = table_.IdAt(position) & mt_GroupMask;
        group_[of].push_back(position);
        if (StatusOf(position) == mt_Running) running_[of].push_back(position);
    }
}

void WriterState::create(uint16_t type, uint32_t id, std::span<const uint8_t> block) {
    const uint32_t position = table_.create(type, id, block);
    if (position == StateTable::npos) return;
    EnterUsed(type, id);
    if (!IsTask(position)) return;
    group_[id & mt_GroupMask].push_back(position);
    if (StatusOf(position) == mt_Running) running_[id & mt_GroupMask].push_back(position);
}

void WriterState::modify(uint32_t position, uint32_t offset, std::span<const uint8_t> bytes) {
    const bool touches_status = offset < mt_TaskStatusValid && IsTask(position);
    const bool ran = touches_status && StatusOf(position) == mt_Running;
    table_.ModifyAt(position, offset, bytes);
    if (!touches_status || ran == (StatusOf(position) == mt_Running)) return;
    auto& members = running_[table_.IdAt(position) & mt_GroupMask];
    if (ran)
        members.erase(std::find(members.begin(), members.end(), position));
    else  // in table order, as a walk of the table would meet them
        members.insert(std::lower_bound(members.begin(), members.end(), position), position);
}

void WriterState::remove(uint16_t type, uint32_t id) {
    table_.remove(type, id);
    deletedInBlock_ = true;
    regroup();
}
