// The lanes of a trace by its lane index, at random access: of each object the statuses that it got and the
// events that it had, by their numbers, by tick and by sequence number. All of it is about the events that
// the index covers; what lies behind them is to be read from the store.
//
// One thread. What is damaged is found when it is come to: what is given from then on has no meaning, but
// lies within bounds, and damage() tells.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "chronoweave/engine/lanes/lane_index.h"
#include "libtrv/state_table.h"

// A status that an object got. Births, deletions and statuses that are not valid any more are some, too.
struct LaneStatus {
    mt_Time tick = 0;
    uint32_t state = lane_Absent;  // a status code, maybe with lane_NotValid; or lane_Absent
    uint32_t sequence = 0;         // of the event that left the object so
};
struct LaneEvent {
    mt_Time tick = 0;
    uint32_t kind = 0;  // lane_Kind
    uint32_t sequence = 0;
};

class LaneTable {
  public:
    // The index outlives the table.
    explicit LaneTable(LaneIndex& index);
    ~LaneTable();
    LaneTable(const LaneTable&) = delete;
    LaneTable& operator=(const LaneTable&) = delete;

    // Takes in what the index has taken in since. Readers stay good.
    void Refresh();
    // Sequence number of the first event that is not covered.
    uint32_t EndEvent() const { return end_; }
    // The first covered event that does not lie ahead of a tick; EndEvent() for none.
    uint32_t FirstFrom(mt_Time tick) const;
    // Of a covered event.
    mt_Time TickOf(uint32_t sequence) const;

    // Lanes are numbered from 0, and keep their numbers. Every object has one that an event made, changed or
    // named.
    uint32_t size() const { return static_cast<uint32_t>(lanes_.size()); }
    uint32_t ObjectOf(uint32_t lane) const { return objects_.IdAt(lane); }
    static constexpr uint32_t none = StateTable::npos;
    // none when the object has no lane.
    uint32_t find(uint32_t object) const { return objects_.find(mt_ObjectTask, object); }
    // The lanes in the order of their objects' ids.
    const std::vector<uint32_t>& ById() const { return byId_; }
    // The first event that made, changed or named the lane's object.
    uint32_t FirstSeen(uint32_t lane) const;

    const Result& damage() const { return index_.damage(); }

  private:
    friend class LaneReader;
    struct Lane {
        std::vector<LaneStatus> statuses;
        std::vector<LaneEvent> events;
    };
    Lane& LaneOf(uint32_t object);
    LaneIndex& index_;
    uint32_t end_ = 1;
    StateTable objects_;  // by lane; the blocks are empty
    std::vector<Lane> lanes_;
    std::vector<uint32_t> byId_;
    std::vector<mt_Time> ticks_;
};

// A place in one lane. Going on to a neighbour or near is cheapest; several may be had of one lane.
class LaneReader {
  public:
    // Of nothing.
    LaneReader() = default;
    // The table outlives the reader.
    LaneReader(const LaneTable& table, uint32_t lane) : table_(&table), lane_(lane) {}

    uint32_t lane() const { return lane_; }
    uint32_t object() const { return table_->ObjectOf(lane_); }

    // Statuses are numbered from 0, in the order of their events. Those of one tick keep it.
    uint32_t StatusCount() const;
    LaneStatus status(uint32_t number);
    // The first one that does not lie ahead of a tick or of an event; StatusCount() for none.
    uint32_t FirstStatusFrom(mt_Time tick);
    uint32_t FirstStatusAt(uint32_t sequence);
    // What the object was in just ahead of a status, number up to StatusCount(): lane_Absent ahead of the
    // first.
    uint32_t StateAhead(uint32_t number) { return number == 0 ? lane_Absent : status(number - 1).state; }

    // Likewise of events.
    uint32_t EventCount() const;
    LaneEvent event(uint32_t number);
    uint32_t FirstEventFrom(mt_Time tick);
    uint32_t FirstEventAt(uint32_t sequence);

  private:
    const LaneTable* table_ = nullptr;
    uint32_t lane_ = 0;
};
