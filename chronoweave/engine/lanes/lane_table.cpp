#include "chronoweave/engine/lanes/lane_table.h"

#include <numeric>
#include <utility>

// ---- What there is

void LaneTable::Refresh() {
    while (blocks_.size() < index_.BlockCount())
        if (!TakeBlock(static_cast<uint32_t>(blocks_.size()))) return;
}

bool LaneTable::TakeBlock(uint32_t number) {
    LaneSummary summary;
    if (!index_.ReadSummary(number, summary)) return false;
    const uint64_t statuses = std::accumulate(summary.statuses.begin(), summary.statuses.end(), uint64_t{0});
    if (statuses > UINT32_MAX || !NumberObjects(summary)) return index_.Fail(number, LanePart::Summary);
    const LaneHead& head = index_.head(number);
    Block& block = blocks_.emplace_back();
    block.number = number;
    block.first = head.first;
    block.count = head.count;
    block.statusCount = static_cast<uint32_t>(statuses);
    block.firstTick = head.firstTick;
    block.lastTick = head.lastTick;
    lastTicks_.push_back(head.lastTick);
    Share share{number, 0, 0, 0, 0};
    for (size_t at = 0; at < byId_.size(); ++at) {
        Lane& lane = lanes_[byId_[at]];
        const uint32_t entered = summary.statuses[at], events = summary.events[at];
        block.hasFacts = block.hasFacts || summary.priorities[at] > 0 || summary.names[at] > 0;
        if (entered == 0 && events == 0) continue;
        share.statuses = lane.statuses;
        share.events = lane.events;
        lane.shares.push_back(share);
        lane.statuses += entered;
        lane.events += events;
        share.statusAt += entered;
        share.eventAt += events;
    }
    end_ = head.end();
    return true;
}

// The objects of a block are those of the block before and new ones.
bool LaneTable::NumberObjects(const LaneSummary& summary) {
    const auto same = [this](uint64_t object, uint32_t lane) { return object == ObjectOf(lane); };
    if (std::equal(summary.objects.begin(), summary.objects.end(), byId_.begin(), byId_.end(), same))
        return true;
    const size_t before = byId_.size();
    size_t known = 0;
    byId_.clear();
    for (const uint64_t id : summary.objects) {
        const auto object = static_cast<uint32_t>(id);
        uint32_t lane = find(object);
        if (lane == none) {
            lane = objects_.create(mt_ObjectTask, object, {});
            lanes_.emplace_back();
        } else {
            ++known;
        }
        byId_.push_back(lane);
    }
    return known == before;
}

uint32_t LaneTable::FirstSeen(uint32_t lane) const {
    LaneReader reader(*this, lane);
    uint32_t first = end_;
    if (reader.StatusCount() > 0) first = reader.status(0).sequence;
    if (reader.EventCount() > 0) first = std::min(first, reader.event(0).sequence);
    return first;
}

// ---- Blocks. What is damaged is of nothing, and gives zeros.

const LaneTable::Block& LaneTable::WithTimes(uint32_t number) const {
    const Block& block = blocks_[number];
    if (std::exchange(block.times, true)) return block;
    if (const auto bytes = index_.Part(number, LanePart::Times)) {
        ColumnReader reader(*bytes);
        block.tickOf = reader.SteppedAt(block.count);
        if (!reader.AtEnd()) index_.Fail(number, LanePart::Times);
    }
    return block;
}

void LaneTable::OpenCodes(const Block& block) const {
    if (block.kinds != nullptr) return;
    static constexpr uint8_t nothing[4] = {};
    block.states = block.kinds = nothing;
    block.stateCount = block.kindCount = 1;
    const auto bytes = index_.Part(block.number, LanePart::Summary);
    if (!bytes) return;
    ColumnReader reader(*bytes);
    reader.Number();
    const uint32_t kinds = reader.Number(), states = reader.Number();
    const uint8_t* kindsAt = reader.Numbers(kinds);
    const uint8_t* statesAt = reader.Numbers(states);
    if (!reader.ok() || kinds == 0 || states == 0) return;
    block.kinds = kindsAt;
    block.kindCount = kinds;
    block.states = statesAt;
    block.stateCount = states;
}

const LaneTable::Block& LaneTable::WithStatuses(uint32_t number) const {
    const Block& block = WithTimes(number);
    if (std::exchange(block.statuses, true)) return block;
    OpenCodes(block);
    if (const auto bytes = index_.Part(number, LanePart::Statuses)) {
        ColumnReader reader(*bytes);
        const FlatView at = reader.FlatAt(block.statusCount), state = reader.FlatAt(block.statusCount);
        if (!reader.AtEnd() && !index_.Fail(number, LanePart::Statuses)) return block;
        block.statusAt = at;
        block.statusState = state;
    }
    return block;
}

const LaneTable::Block& LaneTable::WithEvents(uint32_t number) const {
    const Block& block = WithTimes(number);
    if (std::exchange(block.events, true)) return block;
    OpenCodes(block);
    if (const auto bytes = index_.Part(number, LanePart::Events)) {
        ColumnReader reader(*bytes);
        const FlatView at = reader.FlatAt(block.count), kind = reader.FlatAt(block.count);
        if (!reader.AtEnd() && !index_.Fail(number, LanePart::Events)) return block;
        block.eventAt = at;
        block.eventKind = kind;
    }
    return block;
}

uint32_t LaneTable::BlockFrom(mt_Time tick) const {
    const auto at = std::lower_bound(lastTicks_.begin(), lastTicks_.end(), tick);
    return static_cast<uint32_t>(at - lastTicks_.begin());
}

uint32_t LaneTable::FirstFrom(mt_Time tick) const {
    if (static_cast<int64_t>(tick) < 0) tick = 0;
    const uint32_t number = BlockFrom(tick);
    if (number == blocks_.size()) return end_;
    const Block& block = blocks_[number];
    if (tick <= block.firstTick) return block.first;
    const size_t at = WithTimes(number).tickOf.FirstFrom(tick - block.firstTick);
    return block.first + std::min(static_cast<uint32_t>(at), block.count - 1);
}

mt_Time LaneTable::TickOf(uint32_t sequence) const {
    const auto number = static_cast<uint32_t>(index_.BlockOf(sequence));
    const Block& block = WithTimes(number);
    return TickIn(block, sequence - block.first);
}

// ---- Facts

std::span<const LaneTable::PrioritySet> LaneTable::Priorities(uint32_t lane) const {
    ReadFacts();
    return lanes_[lane].priorities;
}
std::span<const LaneTable::NameSet> LaneTable::Names(uint32_t lane) const {
    ReadFacts();
    return lanes_[lane].names;
}

void LaneTable::ReadFacts() const {
    LaneSummary summary;
    LaneFacts facts;
    for (; factsRead_ < blocks_.size(); ++factsRead_) {
        const Block& block = blocks_[factsRead_];
        if (!block.hasFacts) continue;
        if (!index_.ReadSummary(factsRead_, summary) || !index_.ReadFacts(factsRead_, summary, facts)) return;
        size_t priority = 0, name = 0;
        for (size_t at = 0; at < summary.objects.size(); ++at) {
            Lane& lane = lanes_[find(static_cast<uint32_t>(summary.objects[at]))];
            for (const size_t end = priority + summary.priorities[at]; priority < end; ++priority)
                lane.priorities.push_back(
                    {block.first + facts.priorityAt[priority], facts.priorities[priority]});
            for (const size_t end = name + summary.names[at]; name < end; ++name)
                lane.names.push_back({block.first + facts.nameAt[name], facts.names[name]});
        }
    }
}

// ---- Readers

struct LaneReader::StatusRow {
    static uint32_t Ahead(const Share& share) { return share.statuses; }
    static uint32_t At(const Share& share) { return share.statusAt; }
    static uint32_t Count(const LaneReader& reader) { return reader.StatusCount(); }
    static const Block& Open(const LaneTable& table, uint32_t block) { return table.WithStatuses(block); }
    static uint64_t EventOf(const Block& block, uint32_t at) { return block.statusAt.at(at); }
};
struct LaneReader::EventRow {
    static uint32_t Ahead(const Share& share) { return share.events; }
    static uint32_t At(const Share& share) { return share.eventAt; }
    static uint32_t Count(const LaneReader& reader) { return reader.EventCount(); }
    static const Block& Open(const LaneTable& table, uint32_t block) { return table.WithEvents(block); }
    static uint64_t EventOf(const Block& block, uint32_t at) { return block.eventAt.at(at); }
};

// The share that has a number, which there is: often the next one or the one before.
template <class Row>
void LaneReader::Enter(Place& place, uint32_t number) {
    const std::vector<Share>& shares = Shares();
    const auto behind = std::partition_point(
        shares.begin(), shares.end(), [number](const Share& share) { return Row::Ahead(share) <= number; });
    const auto share = std::prev(behind);
    place.share = static_cast<uint32_t>(share - shares.begin());
    place.begin = Row::Ahead(*share);
    place.end = behind == shares.end() ? Row::Count(*this) : Row::Ahead(*behind);
    place.at = Row::At(*share);
    place.block = &Row::Open(*table_, share->block);
}

// The first that belongs to an event of the block, by its number there, or of a later one.
template <class Row>
uint32_t LaneReader::FirstIn(Place& place, uint32_t block, uint32_t number) {
    const std::vector<Share>& shares = Shares();
    const auto share = std::partition_point(shares.begin(), shares.end(),
                                            [block](const Share& s) { return s.block < block; });
    if (share == shares.end()) return Row::Count(*this);
    uint32_t low = Row::Ahead(*share);
    if (share->block > block) return low;
    const auto next = std::next(share);
    uint32_t high = next == shares.end() ? Row::Count(*this) : Row::Ahead(*next);
    if (low == high) return low;
    if (place.block == nullptr || place.begin != low || place.end != high) Enter<Row>(place, low);
    while (low < high) {
        const uint32_t middle = low + (high - low) / 2;
        if (Row::EventOf(*place.block, place.at + (middle - place.begin)) < number)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

template <class Row>
uint32_t LaneReader::FirstAt(Place& place, uint32_t sequence) {
    if (sequence >= table_->end_) return Row::Count(*this);
    const auto number = static_cast<uint32_t>(table_->index_.BlockOf(std::max(1u, sequence)));
    return FirstIn<Row>(place, number, std::max(1u, sequence) - table_->blocks_[number].first);
}

template <class Row>
uint32_t LaneReader::FirstFrom(Place& place, mt_Time tick) {
    return FirstAt<Row>(place, table_->FirstFrom(tick));
}

uint32_t LaneReader::StateOf(uint32_t number) {
    if (number - status_.begin >= status_.end - status_.begin) Enter<StatusRow>(status_, number);
    const Block& block = *status_.block;
    const uint64_t state = block.statusState.at(status_.at + (number - status_.begin));
    return load_be32(block.states + 4 * std::min<uint64_t>(state, block.stateCount - 1));
}

mt_Time LaneReader::StatusTick(uint32_t number) {
    if (number - status_.begin >= status_.end - status_.begin) Enter<StatusRow>(status_, number);
    const Block& block = *status_.block;
    const uint64_t event = block.statusAt.at(status_.at + (number - status_.begin));
    return table_->TickIn(block, std::min<uint64_t>(event, block.count - 1));
}

mt_Time LaneReader::EventTick(uint32_t number) {
    if (number - event_.begin >= event_.end - event_.begin) Enter<EventRow>(event_, number);
    const Block& block = *event_.block;
    const uint64_t event = block.eventAt.at(event_.at + (number - event_.begin));
    return table_->TickIn(block, std::min<uint64_t>(event, block.count - 1));
}

LaneStatus LaneReader::status(uint32_t number) {
    const uint32_t state = StateOf(number);
    const Block& block = *status_.block;
    const uint64_t event =
        std::min<uint64_t>(block.statusAt.at(status_.at + (number - status_.begin)), block.count - 1);
    return {table_->TickIn(block, event), state, block.first + static_cast<uint32_t>(event)};
}

LaneEvent LaneReader::event(uint32_t number) {
    if (number - event_.begin >= event_.end - event_.begin) Enter<EventRow>(event_, number);
    const Block& block = *event_.block;
    const uint32_t at = event_.at + (number - event_.begin);
    const uint64_t event = std::min<uint64_t>(block.eventAt.at(at), block.count - 1);
    const uint64_t kind = std::min<uint64_t>(block.eventKind.at(at), block.kindCount - 1);
    return {table_->TickIn(block, event), load_be32(block.kinds + 4 * kind),
            block.first + static_cast<uint32_t>(event)};
}

uint32_t LaneReader::FirstStatusFrom(mt_Time tick) {
    return FirstFrom<StatusRow>(status_, tick);
}
uint32_t LaneReader::FirstStatusAt(uint32_t sequence) {
    return FirstAt<StatusRow>(status_, sequence);
}
uint32_t LaneReader::FirstEventFrom(mt_Time tick) {
    return FirstFrom<EventRow>(event_, tick);
}
uint32_t LaneReader::FirstEventAt(uint32_t sequence) {
    return FirstAt<EventRow>(event_, sequence);
}
