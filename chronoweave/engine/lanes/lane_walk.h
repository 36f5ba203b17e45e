// A walk over events by the lane index: those of a stretch that are wanted, one by one and in order, made up
// from what the index has of them. The others are passed over without being looked at.
#pragma once

#include <functional>

#include "chronoweave/engine/lanes/lane_index.h"
#include "libtrv/event.h"
#include "libtrv/state_table.h"

// Which events are wanted: those that changed a status, and those of chosen kinds and objects.
struct LaneWants {
    enum class Changes { PassedOver, Given } changes = Changes::PassedOver;
    std::function<bool(uint16_t type, uint16_t subtype)> kind;  // empty: no events for their kind
    std::function<bool(uint32_t object)> object;                // of those; empty: of all
};

class LaneWalk {
  public:
    // Over nothing.
    LaneWalk() = default;
    // Events first to ahead of end, all covered by the index, which outlives the walk. state, when given,
    // becomes that just ahead of them: of tasks alone, with nothing known but their statuses.
    LaneWalk(LaneIndex& index, bool bigEndian, uint32_t first, uint32_t end, LaneWants wants,
             StateTable* state);

    enum class Stop { Wanted, Every };
    // The next event that is wanted, or with Every just the next one. Of what it changed only statuses of
    // tasks are told, and only where changes are given. Its kind and its object, all of its extra data, are
    // told only where some kinds are wanted. Its spans last until the next call. False behind the last one,
    // and where the index is damaged.
    [[nodiscard]] bool next(EventRecord& event, Stop stop);
    // The same without making up the event: what is asked of it is asked below.
    [[nodiscard]] bool Advance(Stop stop) {
        return (stop == Stop::Wanted && !wantsKinds_ && GoToChange()) || Seek(stop);
    }
    uint32_t sequence() const { return at_ - 1; }
    mt_Time tick() const { return firstTick_ + columns_.ticks[next_ - 1]; }
    // The statuses that it changed: each(object, state), numbers of the summary's. Once for an event, and for
    // each one ahead of the next, where the states are to be kept.
    template <class Each>
    void TakeChanges(Each&& each) {
        const uint32_t event = next_ - 1;
        for (; change_ < columns_.changeAt.size() && columns_.changeAt[change_] <= event; ++change_) {
            now_[columns_.changeObject[change_]] = columns_.changeState[change_];
            each(columns_.changeObject[change_], columns_.changeState[change_]);
        }
    }
    // Of the block that the event is in, which has a number of its own in this walk.
    const LaneSummary& summary() const { return summary_; }
    uint32_t BlockNumber() const { return blocks_; }
    // The state behind the event, whose changes were all taken.
    void TakeState(StateTable& state) const;
    // Sequence number of the event behind the one last given; of the first one that could not be looked at,
    // where the walk ended ahead of its end.
    uint32_t position() const { return at_; }

  private:
    // To the next event that changed something, where there is one in the block; only where no kind is wanted
    // there.
    bool GoToChange() {
        if (change_ >= columns_.changeAt.size() || columns_.changeAt[change_] >= last_ ||
            wants_.changes == LaneWants::Changes::PassedOver)
            return false;
        next_ = columns_.changeAt[change_] + 1;
        at_ = first_ + next_;
        return true;
    }
    [[nodiscard]] bool Seek(Stop stop);
    [[nodiscard]] bool Enter(Stop stop);
    void ChooseWanted(const LaneSummary& summary);
    bool IsWanted(uint32_t number) const {
        return kindWanted_[columns_.kinds[number]] != 0 && objectWanted_[columns_.objects[number]] != 0;
    }
    bool Find(Stop stop);
    void Give(EventRecord& event);
    void PutChange(uint32_t object, uint32_t before, uint32_t after);

    LaneIndex* index_ = nullptr;
    bool bigEndian_ = false;
    LaneWants wants_;
    uint32_t at_ = 0, end_ = 0;

    // Of the block that was entered: its events from next_ up to last_ are left.
    uint32_t first_ = 0, next_ = 0, last_ = 0, blocks_ = 0;
    mt_Time firstTick_ = 0;
    LaneSummary summary_, freshSummary_;  // fresh: of a block that is being entered
    LaneColumns columns_, freshColumns_;
    std::vector<uint8_t> kindWanted_, objectWanted_;
    bool wantsKinds_ = false;    // any of its kinds
    size_t change_ = 0;          // the next entry
    std::vector<uint32_t> now_;  // number of its state, by object
    ByteBuffer changes_;
    uint8_t extra_[4] = {};
};
