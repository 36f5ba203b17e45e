// Makes blocks of the lane index of events as they come, whether a store is being written or read.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "chronoweave/engine/lanes/lane_block.h"
#include "chronoweave/engine/lanes/lane_facts.h"
#include "chronoweave/engine/lanes/lane_sums.h"
#include "libtrv/event.h"
#include "libtrv/state_table.h"

class LaneBlockBuilder {
  public:
    // bigEndian: the target's byte order. blockEvents: of a block, 1 to lane_BlockEvents.
    LaneBlockBuilder(bool bigEndian, uint32_t blockEvents);
    // Goes on behind blocks that stand already: of each of them, in order, its head, its summary and its own
    // sums, not those of a higher level.
    void PassOver(const LaneHead& head, const LaneSummary& summary, LaneSums sums);
    // Then the state behind them, or the empty one. False as with Take.
    [[nodiscard]] bool Begin(const StateTable& state);

    // Takes the next event; sequence numbers follow each other. False when a store that has it can't be
    // indexed, and nothing must be taken any more: an event that names no object or goes back in time, or a
    // task whose state is not of this system's form.
    [[nodiscard]] bool Take(const EventRecord& event);
    bool IsFull() const { return count_ == blockEvents_; }
    bool IsEmpty() const { return count_ == 0; }
    // Puts the block of the events taken behind what is in the buffer, its head and its parts, and begins the
    // next one.
    LaneHead Seal(uint64_t mark, ByteBuffer& out);

  private:
    using TaskBlock = std::array<uint8_t, mt_TaskBlockSize>;
    // Of a lane: an event of the block, and the number of its kind in kinds_ or the state that it left.
    struct Entry {
        uint32_t at, value;
    };
    struct Lane {
        uint32_t state = lane_Absent, start = lane_Absent;  // now, and just before the block
        uint32_t touched = 0;                               // serial of the event that touched it
        // Of that event: what was ahead of it, and what it did.
        uint32_t before = lane_Absent;
        LanePriority priorityBefore;
        bool made = false, ranked = false, named = false;
        TaskBlock block = {};  // all zeros while there is no such object
        std::vector<Entry> events, statuses;
    };

    uint32_t PlaceOf(uint32_t object) {
        const Recent& recent = RecentOf(object);
        return recent.object == object && recent.place != StateTable::npos ? recent.place : Find(object);
    }
    uint32_t Find(uint32_t object);
    uint32_t KindOf(uint16_t type, uint16_t subtype) {
        if (type < directTypes && subtype < directSubtypes)
            if (const uint32_t known = directKinds_[size_t{type} * directSubtypes + subtype];
                known != UINT32_MAX)
                return known;
        return NoteKind(type, subtype);
    }
    uint32_t NoteKind(uint16_t type, uint16_t subtype);
    [[nodiscard]] bool Change(const StateChange& change);
    static void Modify(Lane& lane, const StateChange& change);
    static void Replace(Lane& lane, const StateChange& change);
    static void NoteRank(Lane& lane);
    void KeepChanges();
    void KeepFacts(uint32_t place);
    void OrderObjects(LaneSummary& summary);
    void ListStatuses(LaneSummary& summary);
    void ListEvents(LaneSummary& summary);
    void SumEvents(const LaneSummary& summary, LaneSums& sums);
    void SumStatuses(const LaneSummary& summary, LaneSums& sums);
    void PutParts(LaneSummary& summary, LaneSums sums, LaneHead& head);
    void StartNext();

    static constexpr uint32_t directTypes = 8, directSubtypes = 64;
    bool bigEndian_;
    uint32_t blockEvents_;
    StateTable ids_;  // places of lanes; the blocks are empty
    std::vector<Lane> lanes_;
    std::vector<uint32_t> order_, rank_;  // places by id, and the other way round; of all but the newest
    struct Recent {
        uint32_t object = 0, place = StateTable::npos;
    };
    // Tasks are told apart by the upper bits of their ids, and those of two processors by the lower ones.
    Recent& RecentOf(uint32_t object) { return recent_[(object >> 10 ^ object * 37) & (recent_.size() - 1)]; }
    std::array<Recent, 256> recent_;  // of the objects that were asked for last
    std::vector<uint32_t> touched_;   // places, of the event being taken
    uint32_t serial_ = 0;             // of that event
    std::vector<uint32_t> kinds_;     // all that were met
    std::vector<uint32_t> directKinds_;
    std::unordered_map<uint32_t, uint32_t> otherKinds_;
    std::vector<uint32_t> stateNumbers_;  // by state; room to work in, all none between blocks

    uint32_t first_ = 0, count_ = 0;
    mt_Time firstTick_ = 0, lastTick_ = 0;
    std::optional<mt_Time> sumsFrom_;  // the block before's last tick
    std::vector<uint64_t> ticks_;      // of the block's events, from its first one; room for all of them
    LaneLists lists_;                  // room to work in
    LaneFactsBuilder facts_;
    LaneLevels levels_;
    ByteBuffer parts_;
};
