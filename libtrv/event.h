// An event as queries hand it out: a view for walks, a record for lists, and the changes that it made to
// state.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "libtrv/byte_order.h"
#include "libtrv/state_table.h"
#include "libtrv/store_format.h"

// One change of object state. bytes is the block of a create, the overwriting bytes of a modify, empty for a
// delete.
struct StateChange {
    uint8_t kind = mt_ChangeEnd;
    uint16_t objectType = 0;
    uint32_t objectId = 0;
    uint16_t offset = 0;
    std::span<const uint8_t> bytes;
};

// The changes of one event, in file order, still in file form; iterate with
//     StateChange change;
//     for (ChangeList list = event.changes; list.next(change);) ...
// The bytes were checked when the event was read.
class ChangeList {
  public:
    ChangeList() = default;
    explicit ChangeList(std::span<const uint8_t> bytes)
        : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}
    bool empty() const { return at_ == end_; }
    std::span<const uint8_t> bytes() const { return {at_, end_}; }
    bool next(StateChange& change) {
        if (at_ == end_) return false;
        change.kind = at_[0];
        change.objectType = load_be16(at_ + 1);
        change.objectId = load_be32(at_ + 3);
        change.offset = 0;
        size_t head = 7, length = 0;
        if (change.kind == mt_ChangeCreate) {
            length = load_be16(at_ + 7);
            head = 9;
        } else if (change.kind == mt_ChangeModify) {
            change.offset = load_be16(at_ + 7);
            length = at_[9];
            head = 10;
        }
        change.bytes = {at_ + head, length};
        at_ += head + length;
        return true;
    }

  private:
    const uint8_t* at_ = nullptr;
    const uint8_t* end_ = nullptr;
};

// One event. In a walk the spans point into the walk's buffer and last until its next step; in an EventList
// they last as long as the list. extra is in the target's byte order. sequence counts from 1.
struct EventRecord {
    mt_Time time = 0;
    uint32_t sequence = 0;
    uint16_t type = 0;
    uint16_t subtype = 0;
    std::span<const uint8_t> extra;
    ChangeList changes;
};

// A stretch of time whose events can't be read: behind one event, up to the next one that can.
constexpr mt_Time mt_NoTime = INT64_MAX;
struct mt_Gap {
    mt_Time from = 0;
    mt_Time to = mt_NoTime;  // mt_NoTime: nothing behind it can be read
};

// Events with their bytes, held in one arena of large blocks.
class EventList {
  public:
    size_t size() const { return records_.size(); }
    bool empty() const { return records_.empty(); }
    const EventRecord& operator[](size_t index) const { return records_[index]; }
    auto begin() const { return records_.begin(); }
    auto end() const { return records_.end(); }
    // Appends a copy of the event and its bytes.
    void append(const EventRecord& event);
    void clear();

  private:
    std::span<const uint8_t> keep(std::span<const uint8_t> bytes);
    std::vector<EventRecord> records_;
    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
    size_t used_ = 0, room_ = 0;
};

// Applies the event's changes to the table, in order. A create does nothing when the key is in already; a
// modify does nothing when the key is not in or the block is too short.
void mt_ApplyEventToState(StateTable& table, const EventRecord& event);
