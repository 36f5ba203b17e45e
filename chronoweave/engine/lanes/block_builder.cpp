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
    columns_.ticks.resize(blockEvents_);
    columns_.kinds.resize(blockEvents_);
    columns_.objects.resize(blockEvents_);
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
    recent_[object >> 10 & (recent_.size() - 1)] = {object, place};
    return place;
}

uint32_t LaneBlockBuilder::KindOf(uint16_t type, uint16_t subtype) {
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
    columns_.ticks[count_] = event.time - firstTick_;
    columns_.objects[count_] = PlaceOf(load_32(event.extra.data(), bigEndian_));
    columns_.kinds[count_] = KindOf(event.type, event.subtype);
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
        lane.priorityBefore = priority_of(lane.block.data());
        lane.named = lane.made = false;
        touched_.push_back(place);
    }
    const bool there = lane.state != lane_Absent;
    if (change.kind == mt_ChangeModify) {
        if (there && change.offset + change.bytes.size() <= mt_TaskBlockSize) Modify(lane, change);
        return true;
    }
    if (change.kind == mt_ChangeCreate && there) return true;
    lane.named = true;
    if (change.kind == mt_ChangeCreate) {
        std::copy(change.bytes.begin(), change.bytes.end(), lane.block.begin());
        lane.state = state_of(lane.block.data());
        lane.made = true;
    } else {
        lane.block = {};
        lane.state = lane_Absent;
    }
    return true;
}

void LaneBlockBuilder::Modify(Lane& lane, const StateChange& change) {
    bytes_Copy(lane.block.data() + change.offset, change.bytes);
    const size_t end = change.offset + change.bytes.size();
    if (change.offset <= mt_TaskStatusValid) lane.state = state_of(lane.block.data());
    lane.named = lane.named || (change.offset < lane_NameEnd && end > lane_NameAt);
}

// What the event left otherwise than it found it. An object that it made and took away again has been there.
void LaneBlockBuilder::KeepChanges() {
    if (touched_.size() == 2 && ids_.IdAt(touched_[0]) > ids_.IdAt(touched_[1]))
        std::swap(touched_[0], touched_[1]);
    else if (touched_.size() > 2)
        std::sort(touched_.begin(), touched_.end(),
                  [this](uint32_t a, uint32_t b) { return ids_.IdAt(a) < ids_.IdAt(b); });
    for (const uint32_t place : touched_) {
        const Lane& lane = lanes_[place];
        if (lane.state != lane.before || (lane.made && lane.state == lane_Absent)) {
            columns_.changeAt.push_back(count_);
            columns_.changeObject.push_back(place);
            columns_.changeState.push_back(lane.state);
        }
        KeepFacts(place);
    }
    touched_.clear();
}

void LaneBlockBuilder::KeepFacts(uint32_t place) {
    const Lane& lane = lanes_[place];
    if (const LanePriority now = priority_of(lane.block.data()); !(now == lane.priorityBefore))
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

void LaneBlockBuilder::NumberStates(LaneSummary& summary) {
    const auto note = [&](uint32_t state) {
        if (stateNumbers_[state] != none) return;
        stateNumbers_[state] = 0;
        summary.states.push_back(state);
    };
    for (const uint32_t state : summary.start) note(state);
    for (const uint32_t state : columns_.changeState) note(state);
    std::sort(summary.states.begin(), summary.states.end());
    for (size_t i = 0; i < summary.states.size(); ++i)
        stateNumbers_[summary.states[i]] = static_cast<uint32_t>(i);
    for (uint32_t& state : summary.start) state = stateNumbers_[state];
    for (uint32_t& state : columns_.changeState) state = stateNumbers_[state];
    for (const uint32_t state : summary.states) stateNumbers_[state] = none;
}

void LaneBlockBuilder::NumberKinds(LaneSummary& summary) {
    std::vector<uint32_t> number(kinds_.size(), none);
    for (uint32_t event = 0; event < count_; ++event) number[columns_.kinds[event]] = 0;
    std::vector<uint32_t> used;
    for (uint32_t kind = 0; kind < number.size(); ++kind)
        if (number[kind] == 0) used.push_back(kind);
    std::sort(used.begin(), used.end(), [this](uint32_t a, uint32_t b) { return kinds_[a] < kinds_[b]; });
    for (uint32_t at = 0; at < used.size(); ++at) {
        number[used[at]] = at;
        summary.kinds.push_back(kinds_[used[at]]);
    }
    for (uint32_t event = 0; event < count_; ++event) columns_.kinds[event] = number[columns_.kinds[event]];
}

namespace {

// Of what stands in the order of events, where each object's share begins, in the order of the objects; and
// how much each has.
std::vector<uint32_t> begins_of(std::span<const uint32_t> places, const std::vector<uint32_t>& rank,
                                std::vector<uint32_t>& counts) {
    counts.assign(rank.size(), 0);
    for (const uint32_t place : places) ++counts[rank[place]];
    std::vector<uint32_t> begins(rank.size() + 1, 0);
    std::partial_sum(counts.begin(), counts.end(), begins.begin() + 1);
    return begins;
}

}  // namespace

LaneBlockBuilder::Begins LaneBlockBuilder::ListStatuses(LaneSummary& summary) {
    Begins begins = begins_of(columns_.changeObject, rank_, summary.statuses), next = begins;
    const size_t count = columns_.changeAt.size();
    lists_.statusAt.resize(count);
    lists_.statusState.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const uint32_t to = next[rank_[columns_.changeObject[i]]]++;
        lists_.statusAt[to] = columns_.changeAt[i];
        lists_.statusState[to] = columns_.changeState[i];
    }
    return begins;
}

LaneBlockBuilder::Begins LaneBlockBuilder::ListEvents(LaneSummary& summary) {
    Begins begins = begins_of(std::span(columns_.objects).first(count_), rank_, summary.events),
           next = begins;
    lists_.eventAt.resize(count_);
    lists_.eventKind.resize(count_);
    for (uint32_t event = 0; event < count_; ++event) {
        const uint32_t to = next[rank_[columns_.objects[event]]]++;
        lists_.eventAt[to] = event;
        lists_.eventKind[to] = columns_.kinds[event];
    }
    return begins;
}

void LaneBlockBuilder::SumEvents(const LaneSummary& summary, const Begins& begins, LaneSums& sums) {
    std::vector<uint32_t> counts(summary.kinds.size(), 0);
    for (size_t object = 0; object + 1 < begins.size(); ++object) {
        if (begins[object] == begins[object + 1]) continue;
        for (uint32_t at = begins[object]; at < begins[object + 1]; ++at) ++counts[lists_.eventKind[at]];
        for (size_t kind = 0; kind < counts.size(); ++kind)
            if (const uint32_t count = std::exchange(counts[kind], 0); count > 0)
                sums.events.push_back(
                    {static_cast<uint32_t>(summary.objects[object]), summary.kinds[kind], count});
    }
}

void LaneBlockBuilder::SumStatuses(const LaneSummary& summary, const Begins& begins, LaneSums& sums) {
    struct Sum {
        uint64_t entered = 0, ticks = 0;
    };
    std::vector<Sum> of(summary.states.size());
    // Ticks count from the block's first one, and wrap where the time ahead of that is meant.
    const uint64_t from = sumsFrom_.value_or(firstTick_) - firstTick_, to = lastTick_ - firstTick_;
    for (size_t object = 0; object + 1 < begins.size(); ++object) {
        uint32_t state = summary.start[object];
        uint64_t since = from;
        for (uint32_t at = begins[object]; at < begins[object + 1]; ++at) {
            const uint64_t tick = columns_.ticks[lists_.statusAt[at]];
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
    NumberStates(summary);
    NumberKinds(summary);
    SumStatuses(summary, ListStatuses(summary), sums);
    SumEvents(summary, ListEvents(summary), sums);
    ByteBuffer facts;
    facts_.Seal(rank_, summary.priorities, summary.names, facts);
    parts_.cut(0);
    const auto end = [&](LanePart part) {
        const size_t from = head.OffsetOf(lane_Number(part));
        head.bytes[lane_Number(part)] = static_cast<uint32_t>(parts_.size() - from);
        head.checks[lane_Number(part)] = lane_CheckSum(std::span(parts_.data(), parts_.size()).subspan(from));
    };
    lane_EncodeSummary(summary, parts_);
    end(LanePart::Summary);
    column_PutStepped(parts_, std::span(columns_.ticks).first(count_));
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
    lane_EncodeHead(head, out);
    out.put({parts_.data(), parts_.size()});
    StartNext();
    return head;
}

void LaneBlockBuilder::StartNext() {
    for (Lane& lane : lanes_) lane.start = lane.state;
    for (std::vector<uint32_t>* column : {&columns_.changeAt, &columns_.changeObject, &columns_.changeState})
        column->clear();
    sumsFrom_ = lastTick_;
    count_ = 0;
}
