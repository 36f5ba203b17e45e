// What a writer knows of the objects: their state now, the keys that the block in progress uses, and for each
// group of tasks who is in it and who runs.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "libtrv/byte_buffer.h"
#include "libtrv/event.h"
#include "libtrv/state_table.h"
#include "libtrv/store_format.h"

class WriterState {
  public:
    const StateTable& table() const { return table_; }
    // The keys of the block in progress in packet form, each once; count of them.
    std::span<const uint8_t> used() const { return {used_.data(), used_.size()}; }
    uint32_t UsedCount() const;
    // Positions in the table of the tasks of a group: all of them, and those whose status is running.
    const std::vector<uint32_t>& group(uint32_t id) const { return group_[id & mt_GroupMask]; }
    const std::vector<uint32_t>& running(uint32_t id) const { return running_[id & mt_GroupMask]; }

    void clear();
    // The changes of the record operations. A create of a key that is in already changes nothing.
    void create(uint16_t type, uint32_t id, std::span<const uint8_t> block);
    void modify(uint32_t position, uint32_t offset, std::span<const uint8_t> bytes) {
        const bool touchesStatus = offset < mt_TaskStatusValid && IsTask(position);
        const bool ran = touchesStatus && StatusOf(position) == mt_Running;
        table_.ModifyAt(position, offset, bytes);
        if (!touchesStatus || ran == (StatusOf(position) == mt_Running)) return;
        if (ran)
            LeaveRunning(position);
        else
            EnterRunning(position);
    }
    void remove(uint16_t type, uint32_t id);

    // The next block starts with every object now known.
    void BeginBlock();
    // Takes over a block's state as it was read from the store, then its events one by one, then regroup.
    StateTable& loading() { return table_; }
    void LoadBegun();
    void LoadEvent(const EventRecord& event);
    void regroup();

  private:
    void EnterUsed(uint16_t type, uint32_t id);
    bool IsTask(uint32_t position) const {
        return table_.TypeAt(position) == mt_ObjectTask && table_.BlockSize(position) == mt_TaskBlockSize;
    }
    // In table order, as a walk of the table would meet them; of a group there is one as a rule.
    void EnterRunning(uint32_t position) {
        auto& members = running_[table_.IdAt(position) & mt_GroupMask];
        if (members.empty() || members.back() < position)
            members.push_back(position);
        else
            members.insert(std::lower_bound(members.begin(), members.end(), position), position);
    }
    void LeaveRunning(uint32_t position) {
        auto& members = running_[table_.IdAt(position) & mt_GroupMask];
        if (members.back() == position)
            members.pop_back();
        else
            members.erase(std::find(members.begin(), members.end(), position));
    }
    uint16_t StatusOf(uint32_t position) const { return load_be16(table_.BlockAt(position) + mt_TaskStatus); }

    StateTable table_;
    ByteBuffer used_;
    bool deletedInBlock_ = false;
    std::array<std::vector<uint32_t>, mt_GroupMask + 1> group_, running_;
};
