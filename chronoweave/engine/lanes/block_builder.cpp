#include "chronoweave/engine/lanes/block_builder.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr uint32_t none = UINT32_MAX;

uint32_t state_of(const uint8_t* block) {
    return load_be16(block + mt_TaskStatus) | (block[mt_TaskStatusValid] != 0 ? 0 : lane_NotValid);
}

// The state after bytes of a task's block were overwritten from an offset on.
uint32_t modified(uint32_t state, size_t offset, std::span<const uint8_t> bytes) {
    uint8_t block[mt_TaskStatusValid + 1] = {static_cast<uint8_t>(state >> 8), static_cast<uint8_t>(state),
                                             static_cast<uint8_t>((state & lane_NotValid) == 0 ? 1 : 0)};
    for (size_t i = 0; i < bytes.size() && offset + i < sizeof block; ++i) block[offset + i] = bytes[i];
    return state_of(block);
}

}  // namespace

LaneBlockBuilder::LaneBlockBuilder(bool bigEndian, uint32_t blockEvents)
    : bigEndian_(bigEndian),
      blockEvents_(std::clamp(blockEvents, 1u, lane_BlockEvents)),
      directKinds_(size_t{directTypes} * directSubtypes, none) {
    MakeRoom();
}

void LaneBlockBuilder::MakeRoom() {
    columns_.ticks.resize(blockEvents_);
    columns_.kinds.resize(blockEvents_);
    columns_.objects.resize(blockEvents_);
}

bool LaneBlockBuilder::Begin(const StateTable& state) {
    for (uint32_t position = 0; position < state.size(); ++position) {
        if (state.TypeAt(position) != mt_ObjectTask) continue;
        if (state.BlockSize(position) != mt_TaskBlockSize) return false;
        const uint32_t place = PlaceOf(state.IdAt(position));
        lanes_[place].state = lanes_[place].start = state_of(state.BlockAt(position));
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
    if (change.kind == mt_ChangeModify && change.offset > mt_TaskStatusValid) return true;
    if (change.kind == mt_ChangeCreate && change.bytes.size() != mt_TaskBlockSize) return false;
    const uint32_t place = PlaceOf(change.objectId);
    Lane& lane = lanes_[place];
    if (lane.touched != serial_) {
        lane.touched = serial_;
        lane.before = lane.state;
        touched_.push_back(place);
    }
    const bool there = lane.state != lane_Absent;
    if (change.kind == mt_ChangeCreate)
        lane.state = there ? lane.state : state_of(change.bytes.data());
    else if (change.kind != mt_ChangeModify)
        lane.state = lane_Absent;
    else if (there && change.offset + change.bytes.size() <= mt_TaskBlockSize)
        lane.state = modified(lane.state, change.offset, change.bytes);
    return true;
}

// What the event left otherwise than it found it.
void LaneBlockBuilder::KeepChanges() {
    if (touched_.size() == 2 && ids_.IdAt(touched_[0]) > ids_.IdAt(touched_[1]))
        std::swap(touched_[0], touched_[1]);
    else if (touched_.size() > 2)
        std::sort(touched_.begin(), touched_.end(),
                  [this](uint32_t a, uint32_t b) { return ids_.IdAt(a) < ids_.IdAt(b); });
    for (const uint32_t place : touched_) {
        if (lanes_[place].state == lanes_[place].before) continue;
        columns_.changeAt.push_back(count_);
        columns_.changeObject.push_back(place);
        columns_.changeState.push_back(lanes_[place].state);
    }
    touched_.clear();
}

// Objects in the order of their ids; rank: by place.
void LaneBlockBuilder::SummarizeObjects(LaneSummary& summary, std::vector<uint32_t>& rank) {
    std::vector<uint32_t> order(lanes_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [this](uint32_t a, uint32_t b) { return ids_.IdAt(a) < ids_.IdAt(b); });
    rank.resize(order.size());
    for (uint32_t at = 0; at < order.size(); ++at) {
        rank[order[at]] = at;
        summary.objects.push_back(ids_.IdAt(order[at]));
    }
    SummarizeStates(summary, order);
    for (uint32_t& object : columns_.objects) object = rank[object];
    for (uint32_t& object : columns_.changeObject) object = rank[object];
}

void LaneBlockBuilder::SummarizeStates(LaneSummary& summary, const std::vector<uint32_t>& order) {
    for (const uint32_t place : order) summary.start.push_back(lanes_[place].start);
    std::vector<uint32_t> number(lane_Absent + 1, none);
    for (const uint32_t state : summary.start) number[state] = 0;
    for (const uint32_t state : columns_.changeState) number[state] = 0;
    for (uint32_t state = 0; state <= lane_Absent; ++state) {
        if (number[state] == none) continue;
        number[state] = static_cast<uint32_t>(summary.states.size());
        summary.states.push_back(state);
    }
    for (uint32_t& state : summary.start) state = number[state];
    for (uint32_t& state : columns_.changeState) state = number[state];
}

void LaneBlockBuilder::SummarizeKinds(LaneSummary& summary) {
    std::vector<uint32_t> number(kinds_.size(), none);
    for (const uint32_t kind : columns_.kinds) number[kind] = 0;
    std::vector<uint32_t> used;
    for (uint32_t kind = 0; kind < number.size(); ++kind)
        if (number[kind] == 0) used.push_back(kind);
    std::sort(used.begin(), used.end(), [this](uint32_t a, uint32_t b) { return kinds_[a] < kinds_[b]; });
    for (uint32_t at = 0; at < used.size(); ++at) {
        number[used[at]] = at;
        summary.kinds.push_back(kinds_[used[at]]);
    }
    for (uint32_t& kind : columns_.kinds) kind = number[kind];
}

// Events are put in the order of their objects by counting; of each object its kinds are counted.
void LaneBlockBuilder::CountEvents(LaneSummary& summary) {
    std::vector<uint32_t> begin(summary.objects.size() + 1, 0), kinds(count_);
    for (const uint32_t object : columns_.objects) ++begin[object + 1];
    for (size_t object = 1; object < begin.size(); ++object) begin[object] += begin[object - 1];
    std::vector<uint32_t> next = begin;
    for (uint32_t event = 0; event < count_; ++event)
        kinds[next[columns_.objects[event]]++] = columns_.kinds[event];
    std::vector<uint32_t> counts(summary.kinds.size(), 0);
    for (uint32_t object = 0; object + 1 < begin.size(); ++object) {
        if (begin[object] == begin[object + 1]) continue;
        for (uint32_t at = begin[object]; at < begin[object + 1]; ++at) ++counts[kinds[at]];
        for (uint32_t kind = 0; kind < counts.size(); ++kind) {
            if (counts[kind] == 0) continue;
            summary.ofObject.push_back(object);
            summary.ofKind.push_back(kind);
            summary.count.push_back(counts[kind]);
            counts[kind] = 0;
        }
    }
}

LaneHead LaneBlockBuilder::Seal(uint64_t mark, ByteBuffer& out) {
    columns_.ticks.resize(count_);
    columns_.kinds.resize(count_);
    columns_.objects.resize(count_);
    LaneSummary summary;
    std::vector<uint32_t> rank;
    SummarizeObjects(summary, rank);
    SummarizeKinds(summary);
    CountEvents(summary);
    summary.changes = static_cast<uint32_t>(columns_.changeAt.size());
    ByteBuffer parts;
    lane_EncodeSummary(summary, parts);
    const size_t summaryBytes = parts.size();
    lane_EncodeColumns(columns_, parts);
    const std::span<const uint8_t> all(parts.data(), parts.size());
    LaneHead head{mark, first_, count_, firstTick_, lastTick_};
    head.summaryBytes = static_cast<uint32_t>(summaryBytes);
    head.columnBytes = static_cast<uint32_t>(all.size() - summaryBytes);
    head.summaryCheck = lane_CheckSum(all.first(summaryBytes));
    head.columnCheck = lane_CheckSum(all.subspan(summaryBytes));
    lane_EncodeHead(head, out);
    out.put(all);
    for (Lane& lane : lanes_) lane.start = lane.state;
    columns_.clear();
    MakeRoom();
    count_ = 0;
    return head;
}
