#include "chronoweave/engine/lanes/block_builder.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

constexpr uint32_t none = UINT32_MAX;

uint32_t state_of(const uint8_t* block) {
    return load_be16(block + mt_TaskStatus) | (block[mt_TaskStatusValid] != 0 ? 0 : lane_NotValid);
}
LanePriority priority_of(const uint8_t* block) {
    return {block[mt_TaskPriorityValid] != 0, load_be32(block + mt_TaskPriority)};
}
LaneNameBytes name_of(const uint8_t* block) {
    LaneNameBytes name;
    std::copy(block + lane_NameAt, block + lane_NameEnd, name.begin());
    return name;
}

}  // namespace

LaneBlockBuilder::LaneBlockBuilder(bool bigEndian, uint32_t blockEvents)
    : bigEndian_(bigEndian),
      blockEvents_(std::clamp(blockEvents, 1u, lane_BlockEvents)),
      directKinds_(size_t{directTypes} * directSubtypes, none),
      stateNumbers_(lane_Absent + 1, none) {
    ticks_.resize(blockEvents_);
}

void LaneBlockBuilder::PassOver(const LaneHead& head, const LaneSummary& summary, LaneSums sums) {
    for (const uint64_t object : summary.objects) PlaceOf(static_cast<uint32_t>(object));
    sumsFrom_ = lastTick_ = head.lastTick;
    first_ = head.first;
    levels_.Add(std::move(sums));
}

bool LaneBlockBuilder::Begin(const StateTable& state) {
    for (uint32_t position = 0; position < state.size(); ++position) {
        if (state.TypeAt(position) != mt_ObjectTask) continue;
        if (state.BlockSize(position) != mt_TaskBlockSize) return false;
        Lane& lane = lanes_[PlaceOf(state.IdAt(position))];
        std::copy_n(state.BlockAt(position), mt_TaskBlockSize, lane.block.begin());
        lane.state = lane.start = state_of(lane.block.data());
    }
    return true;
}

uint32_t LaneBlockBuilder::Find(uint32_t object) {
    uint32_t place = ids_.find(mt_ObjectTask, object);
    if (place == StateTable::npos) {
        place = ids_.create(mt_ObjectTask, object, {});
        lanes_.emplace_back();
    }
    RecentOf(object) = {object, place};
    return place;
}

uint32_t LaneBlockBuilder::NoteKind(uint16_t type, uint16_t subtype) {
    const uint32_t kind = lane_Kind(type, subtype);
    const bool direct = type < directTypes && subtype < directSubtypes;
    uint32_t& known = direct ? directKinds_[size_t{type} * directSubtypes + subtype]
                             : otherKinds_.try_emplace(kind, none).first->second;
    if (known == none) {
        known = static_cast<uint32_t>(kinds_.size());
        kinds_.push_back(kind);
    }
    return known;
}

// ---- Events

bool LaneBlockBuilder::Take(const EventRecord& event) {
    constexpr size_t idBytes = 4;
    if (event.extra.size() < idBytes || event.time > INT64_MAX || (first_ > 0 && event.time < lastTick_))
        return false;
    if (count_ == 0) {
        first_ = event.sequence;
        firstTick_ = event.time;
    }
    ++serial_;
    StateChange change;
    for (ChangeList list = event.changes; list.next(change);)
        if (change.objectType == mt_ObjectTask && !Change(change)) return false;
    ticks_[count_] = event.time - firstTick_;
    lanes_[PlaceOf(load_32(event.extra.data(), bigEndian_))].events.push_back(
        {count_, KindOf(event.type, event.subtype)});
    if (!touched_.empty()) KeepChanges();
    lastTick_ = event.time;
    ++count_;
    return true;
}

bool LaneBlockBuilder::Change(const StateChange& change) {
    if (change.kind == mt_ChangeCreate && change.bytes.size() != mt_TaskBlockSize) return false;
    const uint32_t place = PlaceOf(change.objectId);
    Lane& lane = lanes_[place];
    if (lane.touched != serial_) {
        lane.touched = serial_;
        lane.before = lane.state;
        lane.made = lane.ranked = lane.named = false;
        touched_.push_back(place);
    }
    const bool there = lane.state != lane_Absent;
    if (change.kind == mt_ChangeModify) {
        if (there && change.offset + change.bytes.size() <= mt_TaskBlockSize) Modify(lane, change);
    } else if (change.kind != mt_ChangeCreate || !there) {
        Replace(lane, change);
    }
    return true;
}

// Most set a status alone.
void LaneBlockBuilder::Modify(Lane& lane, const StateChange& change) {
    uint8_t* const block = lane.block.data();
    if (change.offset == mt_TaskStatus && change.bytes.size() == 2) {
        std::memcpy(block, change.bytes.data(), 2);
        lane.state = load_be16(change.bytes.data()) | (block[mt_TaskStatusValid] != 0 ? 0 : lane_NotValid);
        return;
    }
    const size_t end = change.offset + change.bytes.size();
    if (change.offset <= mt_TaskPriorityValid && end > mt_TaskPriority) NoteRank(lane);
    bytes_Copy(block + change.offset, change.bytes);
    if (change.offset <= mt_TaskStatusValid) lane.state = state_of(block);
    lane.named = lane.named || (change.offset < lane_NameEnd && end > lane_NameAt);
}

// The object is made or taken away.
void LaneBlockBuilder::Replace(Lane& lane, const StateChange& change) {
    NoteRank(lane);
    lane.named = true;
    lane.block = {};
    lane.state = lane_Absent;
    if (change.kind != mt_ChangeCreate) return;
    std::copy(change.bytes.begin(), change.bytes.end(), lane.block.begin());
    lane.state = state_of(lane.block.data());
    lane.made = true;
}

void LaneBlockBuilder::NoteRank(Lane& lane) {
    if (!std::exchange(lane.ranked, true)) lane.priorityBefore = priority_of(lane.block.data());
}

// What the event left otherwise than it found it. An object that it made and took away again has been there.
void LaneBlockBuilder::KeepChanges() {
    for (const uint32_t place : touched_) {
        Lane& lane = lanes_[place];
        if (lane.state != lane.before || (lane.made && lane.state == lane_Absent))
            lane.statuses.push_back({count_, lane.state});
        if (lane.ranked || lane.named) KeepFacts(place);
    }
    touched_.clear();
}

void LaneBlockBuilder::KeepFacts(uint32_t place) {
    const Lane& lane = lanes_[place];
    if (const LanePriority now = priority_of(lane.block.data()); lane.ranked && !(now == lane.priorityBefore))
        facts_.Add(count_, place, now);
    if (lane.named) facts_.Add(count_, place, name_of(lane.block.data()));
}

// ---- A block

void LaneBlockBuilder::OrderObjects(LaneSummary& summary) {
    if (order_.size() != lanes_.size()) {
        order_.resize(lanes_.size());
        std::iota(order_.begin(), order_.end(), 0u);
        std::sort(order_.begin(), order_.end(),
                  [this](uint32_t a, uint32_t b) { return ids_.IdAt(a) < ids_.IdAt(b); });
        rank_.resize(order_.size());
        for (uint32_t at = 0; at < order_.size(); ++at) rank_[order_[at]] = at;
    }
    for (const uint32_t place : order_) {
        summary.objects.push_back(ids_.IdAt(place));
        summary.start.push_back(lanes_[place].start);
    }
}

namespace {

// Numbers codes that are met by their order.
void number_codes(std::vector<uint32_t>& codes, std::vector<uint32_t>& numbers) {
    std::sort(codes.begin(), codes.end());
    for (size_t i = 0; i < codes.size(); ++i) numbers[codes[i]] = static_cast<uint32_t>(i);
}

}  // namespace

void LaneBlockBuilder::ListStatuses(LaneSummary& summary) {
    const auto note = [&](uint32_t state) {
        if (std::exchange(stateNumbers_[state], 0) == none) summary.states.push_back(state);
    };
    lists_.statusAt.clear();
    lists_.statusState.clear();
    for (const uint32_t state : summary.start) note(state);
    for (const uint32_t place : order_) {
        const std::vector<Entry>& statuses = lanes_[place].statuses;
        summary.statuses.push_back(static_cast<uint32_t>(statuses.size()));
        for (const Entry& entry : statuses) {
            note(entry.value);
            lists_.statusAt.push_back(entry.at);
            lists_.statusState.push_back(entry.value);
        }
    }
    number_codes(summary.states, stateNumbers_);
    for (uint32_t& state : summary.start) state = stateNumbers_[state];
    for (uint32_t& state : lists_.statusState) state = stateNumbers_[state];
    for (const uint32_t state : summary.states) stateNumbers_[state] = none;
}

void LaneBlockBuilder::ListEvents(LaneSummary& summary) {
    std::vector<uint8_t> met(kinds_.size(), 0);
    lists_.eventAt.resize(count_);
    lists_.eventKind.resize(count_);
    size_t to = 0;
    for (const uint32_t place : order_) {
        const std::vector<Entry>& events = lanes_[place].events;
        summary.events.push_back(static_cast<uint32_t>(events.size()));
        for (const Entry& entry : events) {
            met[entry.value] = 1;
            lists_.eventAt[to] = entry.at;
            lists_.eventKind[to++] = entry.value;
        }
    }
    std::vector<uint32_t> used, number(kinds_.size(), 0);
    for (uint32_t kind = 0; kind < met.size(); ++kind)
        if (met[kind] != 0) used.push_back(kind);
    std::sort(used.begin(), used.end(), [this](uint32_t a, uint32_t b) { return kinds_[a] < kinds_[b]; });
    for (uint32_t at = 0; at < used.size(); ++at) {
        number[used[at]] = at;
        summary.kinds.push_back(kinds_[used[at]]);
    }
    for (uint32_t& kind : lists_.eventKind) kind = number[kind];
}

void LaneBlockBuilder::SumEvents(const LaneSummary& summary, LaneSums& sums) {
    std::vector<uint32_t> counts(summary.kinds.size(), 0);
    size_t at = 0;
    for (size_t object = 0; object < summary.events.size(); ++object) {
        if (summary.events[object] == 0) continue;
        for (const size_t end = at + summary.events[object]; at < end; ++at) ++counts[lists_.eventKind[at]];
        for (size_t kind = 0; kind < counts.size(); ++kind)
            if (const uint32_t count = std::exchange(counts[kind], 0); count > 0)
                sums.events.push_back(
                    {static_cast<uint32_t>(summary.objects[object]), summary.kinds[kind], count});
    }
}

void LaneBlockBuilder::SumStatuses(const LaneSummary& summary, LaneSums& sums) {
    struct Sum {
        uint64_t entered = 0, ticks = 0;
    };
    std::vector<Sum> of(summary.states.size());
    // Ticks count from the block's first one, and wrap where the time ahead of that is meant.
    const uint64_t from = sumsFrom_.value_or(firstTick_) - firstTick_, to = lastTick_ - firstTick_;
    size_t at = 0;
    for (size_t object = 0; object < summary.statuses.size(); ++object) {
        uint32_t state = summary.start[object];
        uint64_t since = from;
        for (const size_t end = at + summary.statuses[object]; at < end; ++at) {
            const uint64_t tick = ticks_[lists_.statusAt[at]];
            of[state].ticks += tick - since;
            since = tick;
            state = lists_.statusState[at];
            ++of[state].entered;
        }
        of[state].ticks += to - since;
        for (size_t number = 0; number < of.size(); ++number) {
            const Sum sum = std::exchange(of[number], {});
            if (summary.states[number] == lane_Absent || (sum.entered == 0 && sum.ticks == 0)) continue;
            sums.statuses.push_back({static_cast<uint32_t>(summary.objects[object]), summary.states[number],
                                     sum.entered, sum.ticks});
        }
    }
}

LaneHead LaneBlockBuilder::Seal(uint64_t mark, ByteBuffer& out) {
    LaneHead head;
    head.mark = mark;
    head.first = first_;
    head.count = count_;
    head.firstTick = firstTick_;
    head.lastTick = lastTick_;
    LaneSummary summary;
    LaneSums sums;
    OrderObjects(summary);
    ListStatuses(summary);
    ListEvents(summary);
    SumStatuses(summary, sums);
    SumEvents(summary, sums);
    PutParts(summary, std::move(sums), head);
    lane_EncodeHead(head, out);
    out.put({parts_.data(), parts_.size()});
    StartNext();
    return head;
}

void LaneBlockBuilder::PutParts(LaneSummary& summary, LaneSums sums, LaneHead& head) {
    parts_.cut(0);
    const auto end = [&](LanePart part) {
        const size_t from = head.OffsetOf(lane_Number(part));
        head.bytes[lane_Number(part)] = static_cast<uint32_t>(parts_.size() - from);
        head.checks[lane_Number(part)] = lane_CheckSum(std::span(parts_.data(), parts_.size()).subspan(from));
    };
    ByteBuffer facts;  // which the summary counts
    facts_.Seal(rank_, summary.priorities, summary.names, facts);
    lane_EncodeSummary(summary, parts_);
    end(LanePart::Summary);
    column_PutStepped(parts_, std::span(ticks_).first(count_));
    end(LanePart::Times);
    lane_EncodePairs(lists_.statusAt, lists_.statusState, parts_);
    end(LanePart::Statuses);
    lane_EncodePairs(lists_.eventAt, lists_.eventKind, parts_);
    end(LanePart::Events);
    lane_EncodeSums(levels_.Add(std::move(sums)), summary.objects, parts_);
    end(LanePart::Sums);
    parts_.put({facts.data(), facts.size()});
    end(LanePart::Facts);
    constexpr uint8_t slack[column_Slack] = {};
    parts_.put(slack);
}

void LaneBlockBuilder::StartNext() {
    for (Lane& lane : lanes_) {
        lane.start = lane.state;
        lane.events.clear();
        lane.statuses.clear();
    }
    sumsFrom_ = lastTick_;
    count_ = 0;
}
