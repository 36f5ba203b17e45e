// The lanes of a trace by its lane index, at random access: of each object the statuses that it got and the
// events that it had, by their numbers, by tick and by sequence number. All of it is about the events that
// the index covers; what lies behind them is to be read from the store.
//
// One thread. What is damaged is found when it is come to: what is given from then on has no meaning, but
// lies within bounds, and damage() tells.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <span>
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
    explicit LaneTable(LaneIndex& index) : index_(index) { Refresh(); }
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

    // What events set, in their order: of an object that is made, too, and of one that is taken away, which
    // has no priority and an empty name from then on. Read when first asked for.
    struct PrioritySet {
        uint32_t sequence;
        LanePriority priority;
    };
    struct NameSet {
        uint32_t sequence;
        LaneNameBytes name;
    };
    std::span<const PrioritySet> Priorities(uint32_t lane) const;
    std::span<const NameSet> Names(uint32_t lane) const;

    const Result& damage() const { return index_.damage(); }

  private:
    friend class LaneReader;
    // What a block has of a lane, where it has something.
    struct Share {
        uint32_t block;
        uint32_t statuses, events;   // of the lane ahead of the block
        uint32_t statusAt, eventAt;  // of its first ones within the block's columns
    };
    struct Lane {
        std::vector<Share> shares;
        uint32_t statuses = 0, events = 0;
        std::vector<PrioritySet> priorities;
        std::vector<NameSet> names;
    };
    // A block's parts where they stand, as they were come to.
    struct Block {
        uint32_t number = 0, first = 1, count = 1, statusCount = 0;
        mt_Time firstTick = 0, lastTick = 0;
        bool hasFacts = false;
        mutable bool times = false, statuses = false, events = false;
        mutable SteppedView tickOf;
        mutable FlatView statusAt, statusState, eventAt, eventKind;
        // Numbers of 32 bits, most significant byte first.
        mutable const uint8_t* states = nullptr;
        mutable const uint8_t* kinds = nullptr;
        mutable uint32_t stateCount = 0, kindCount = 0;
    };
    [[nodiscard]] bool TakeBlock(uint32_t number);
    [[nodiscard]] bool NumberObjects(const LaneSummary& summary);
    void OpenCodes(const Block& block) const;
    const Block& WithTimes(uint32_t block) const;
    const Block& WithStatuses(uint32_t block) const;
    const Block& WithEvents(uint32_t block) const;
    uint32_t BlockFrom(mt_Time tick) const;
    void ReadFacts() const;
    mt_Time TickIn(const Block& block, uint64_t number) const {
        return std::min(block.firstTick + block.tickOf.at(number), block.lastTick);
    }

    LaneIndex& index_;
    uint32_t end_ = 1;
    StateTable objects_;  // by lane; the blocks are empty
    mutable std::vector<Lane> lanes_;
    std::vector<uint32_t> byId_;
    std::deque<Block> blocks_;
    std::vector<mt_Time> lastTicks_;  // of the blocks
    mutable uint32_t factsRead_ = 0;  // blocks whose facts were
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
    uint32_t StatusCount() const { return table_->lanes_[lane_].statuses; }
    LaneStatus status(uint32_t number);
    // The first one that does not lie ahead of a tick or of an event; StatusCount() for none.
    uint32_t FirstStatusFrom(mt_Time tick);
    uint32_t FirstStatusAt(uint32_t sequence);
    // What the object was in just ahead of a status, number up to StatusCount(): lane_Absent ahead of the
    // first.
    uint32_t StateAhead(uint32_t number) { return number == 0 ? lane_Absent : StateOf(number - 1); }
    // A status's state alone, and its tick.
    uint32_t StateOf(uint32_t number);
    mt_Time StatusTick(uint32_t number);

    // Likewise of events.
    uint32_t EventCount() const { return table_->lanes_[lane_].events; }
    LaneEvent event(uint32_t number);
    mt_Time EventTick(uint32_t number);
    uint32_t FirstEventFrom(mt_Time tick);
    uint32_t FirstEventAt(uint32_t sequence);

  private:
    using Block = LaneTable::Block;
    using Share = LaneTable::Share;
    // What is at hand of one of the lane's two rows: those of a share.
    struct Place {
        uint32_t begin = 0, end = 0;  // numbers
        uint32_t at = 0;              // of the first within the block
        uint32_t share = 0;
        const Block* block = nullptr;
    };
    // What the rows differ in.
    struct StatusRow;
    struct EventRow;
    template <class Row>
    void Enter(Place& place, uint32_t number);
    template <class Row>
    uint32_t FirstIn(Place& place, uint32_t block, uint32_t number);
    template <class Row>
    uint32_t FirstFrom(Place& place, mt_Time tick);
    template <class Row>
    uint32_t FirstAt(Place& place, uint32_t sequence);
    const std::vector<Share>& Shares() const { return table_->lanes_[lane_].shares; }

    const LaneTable* table_ = nullptr;
    uint32_t lane_ = 0;
    Place status_, event_;
};
