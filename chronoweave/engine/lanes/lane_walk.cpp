#include "chronoweave/engine/lanes/lane_walk.h"

#include <algorithm>
#include <array>

#include "libtrv/byte_order.h"

namespace {

// The first bytes of a task's block, which tell its status.
using StatusBytes = std::array<uint8_t, mt_TaskStatusValid + 1>;
StatusBytes status_bytes(uint32_t state) {
    const bool valid = (state & lane_NotValid) == 0;
    return {static_cast<uint8_t>(state >> 8), static_cast<uint8_t>(state),
            static_cast<uint8_t>(valid ? 1 : 0)};
}
std::array<uint8_t, mt_TaskBlockSize> task_block(uint32_t state) {
    std::array<uint8_t, mt_TaskBlockSize> block = {};
    const StatusBytes status = status_bytes(state);
    std::copy(status.begin(), status.end(), block.begin());
    return block;
}

}  // namespace

LaneWalk::LaneWalk(LaneIndex& index, bool bigEndian, uint32_t first, uint32_t end, LaneWants wants,
                   StateTable* state)
    : index_(&index), bigEndian_(bigEndian), wants_(std::move(wants)), at_(first), end_(end) {
    if (state) state->clear();
    if (state && index.BlockCount() > 0 && at_ < index.EndEvent() && Enter(Stop::Every)) TakeState(*state);
}

void LaneWalk::TakeState(StateTable& state) const {
    state.clear();
    for (size_t object = 0; object < now_.size(); ++object) {
        const uint32_t of = summary_.states[now_[object]];
        if (of != lane_Absent)
            state.create(mt_ObjectTask, static_cast<uint32_t>(summary_.objects[object]), task_block(of));
    }
}

void LaneWalk::ChooseWanted(const LaneSummary& summary) {
    kindWanted_.assign(summary.kinds.size(), 0);
    wantsKinds_ = false;
    if (!wants_.kind) return;
    for (size_t kind = 0; kind < summary.kinds.size(); ++kind)
        if (wants_.kind(lane_TypeOf(summary.kinds[kind]), lane_SubtypeOf(summary.kinds[kind])))
            kindWanted_[kind] = wantsKinds_ = true;
    objectWanted_.assign(summary.objects.size(), 1);
    for (size_t object = 0; wants_.object && wantsKinds_ && object < summary.objects.size(); ++object)
        objectWanted_[object] = wants_.object(static_cast<uint32_t>(summary.objects[object])) ? 1 : 0;
}

// The block of the event at the position. One in which nothing can be wanted is behind us at once. Where it
// can't be read all stays as it is.
bool LaneWalk::Enter(Stop stop) {
    const size_t block = index_->BlockOf(at_);
    const LaneHead& head = index_->head(block);
    if (!index_->ReadSummary(block, freshSummary_)) return false;
    ChooseWanted(freshSummary_);
    const bool passed =
        stop == Stop::Wanted && !wantsKinds_ && wants_.changes == LaneWants::Changes::PassedOver;
    const auto wanted = wants_.kind ? LaneIndex::Columns::All : LaneIndex::Columns::Statuses;
    if (!passed && !index_->ReadColumns(block, freshSummary_, wanted, freshColumns_)) return false;
    std::swap(summary_, freshSummary_);
    std::swap(columns_, freshColumns_);
    ++blocks_;
    first_ = head.first;
    firstTick_ = head.firstTick;
    next_ = at_ - head.first;
    last_ = std::min(head.end(), std::max(end_, at_)) - head.first;
    if (passed) {
        next_ = last_;
        return true;
    }
    now_ = summary_.start;
    for (change_ = 0; change_ < columns_.changeAt.size() && columns_.changeAt[change_] < next_; ++change_)
        now_[columns_.changeObject[change_]] = columns_.changeState[change_];
    return true;
}

// Goes to the next event that is to be given; false when there is none in the block.
bool LaneWalk::Find(Stop stop) {
    if (stop == Stop::Every) return next_ < last_;
    uint32_t upTo = last_;
    if (wants_.changes == LaneWants::Changes::Given && change_ < columns_.changeAt.size())
        upTo = static_cast<uint32_t>(std::min<uint64_t>(last_, columns_.changeAt[change_]));
    if (wantsKinds_)
        while (next_ < upTo && !IsWanted(next_)) ++next_;
    else
        next_ = upTo;
    return next_ < last_;
}

void LaneWalk::PutChange(uint32_t object, uint32_t before, uint32_t after) {
    const bool born = before == lane_Absent;
    constexpr size_t most = 10 + mt_TaskBlockSize;
    uint8_t* at = changes_.room(most);
    at[0] = after == lane_Absent ? mt_ChangeDelete : born ? mt_ChangeCreate : mt_ChangeModify;
    store_be16(at + 1, mt_ObjectTask);
    store_be32(at + 3, static_cast<uint32_t>(summary_.objects[object]));
    size_t size = 7;
    if (after != lane_Absent && born) {
        store_be16(at + 7, mt_TaskBlockSize);
        const auto block = task_block(after);
        std::copy(block.begin(), block.end(), at + 9);
        size = 9 + block.size();
    } else if (after != lane_Absent) {
        store_be16(at + 7, mt_TaskStatus);
        const StatusBytes status = status_bytes(after);
        at[9] = static_cast<uint8_t>(status.size());
        std::copy(status.begin(), status.end(), at + 10);
        size = 10 + status.size();
    }
    changes_.took(size);
}

// Of the event that the walk came to.
void LaneWalk::Give(EventRecord& event) {
    event = {};
    event.sequence = sequence();
    event.time = tick();
    const uint32_t number = next_ - 1;
    if (wants_.kind) {
        const uint32_t kind = summary_.kinds[columns_.kinds[number]];
        event.type = lane_TypeOf(kind);
        event.subtype = lane_SubtypeOf(kind);
        store_32(extra_, static_cast<uint32_t>(summary_.objects[columns_.objects[number]]), bigEndian_);
        event.extra = extra_;
    }
    changes_.cut(0);
    for (; change_ < columns_.changeAt.size() && columns_.changeAt[change_] <= number; ++change_) {
        uint32_t& now = now_[columns_.changeObject[change_]];
        const uint32_t after = columns_.changeState[change_];
        if (wants_.changes == LaneWants::Changes::Given)
            PutChange(columns_.changeObject[change_], summary_.states[now], summary_.states[after]);
        now = after;
    }
    event.changes = ChangeList({changes_.data(), changes_.size()});
}

bool LaneWalk::Seek(Stop stop) {
    while (at_ < end_) {
        if (next_ == last_ && !Enter(stop)) return false;
        if (Find(stop)) {
            ++next_;
            at_ = first_ + next_;
            return true;
        }
        next_ = last_;
        at_ = first_ + last_;
    }
    return false;
}

bool LaneWalk::next(EventRecord& event, Stop stop) {
    if (!Advance(stop)) return false;
    Give(event);
    return true;
}
