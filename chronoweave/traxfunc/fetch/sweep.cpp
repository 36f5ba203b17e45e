#include "chronoweave/traxfunc/fetch/sweep.h"

#include <algorithm>

#include "shared/libcxxutil/text.h"

namespace {

// Inserts into a short list in order; nothing when it is in.
void insert_sorted(std::vector<uint32_t>& list, uint32_t value) {
    if (list.empty() || list.back() < value) {
        list.push_back(value);
        return;
    }
    const auto at = std::lower_bound(list.begin(), list.end(), value);
    if (*at != value) list.insert(at, value);
}

void erase_sorted(std::vector<uint32_t>& list, uint32_t value) {
    const auto at = std::lower_bound(list.begin(), list.end(), value);
    if (at != list.end() && *at == value) list.erase(at);
}

}  // namespace

uint32_t laCpu_Key(const LaSource& source, uint32_t objectId) {
    return source.osKind == Os_Korvantis ? objectId & mt_GroupMask : 0;
}

uint32_t laCpu_RunningLane(const LaItems& items, const LaSource& source, uint32_t objectId) {
    const uint32_t key = laCpu_Key(source, objectId);
    for (const LaCpuEntry& cpu : items.cpus)
        if (cpu.key == key) return cpu.running;
    return laNoLane;
}

LaneSweep::LaneSweep(LaItems& items, const LaSource& source, const LaLooks& looks, std::string_view separator,
                     const StateTable& state)
    : items_(items),
      source_(source),
      looks_(looks),
      separator_(separator.empty() ? '\0' : separator[0]),
      state_(state),
      statusRows_(0x10000, -2),
      cpuOfKey_(mt_GroupMask + 1, -1) {
    for (size_t i = 0; i < items.cpus.size(); ++i) cpuOfKey_[items.cpus[i].key] = static_cast<int16_t>(i);
}

void LaneSweep::Touch(uint32_t lane) {
    insert_sorted(touched_, lane);
}

int32_t LaneSweep::StatusRow(uint16_t code) {
    int32_t& row = statusRows_[code];
    if (row == -2) row = looks_.legend.StatusIndex(code);
    return row;
}

LaCpuEntry& LaneSweep::CpuOf(uint32_t objectId) {
    const uint32_t key = laCpu_Key(source_, objectId);
    int16_t& index = cpuOfKey_[key];
    if (index < 0) {
        index = static_cast<int16_t>(items_.cpus.size());
        items_.cpus.push_back({key, laNoLane});
    }
    return items_.cpus[static_cast<size_t>(index)];
}

void LaneSweep::LearnFacts(laItem_Line& lane, uint32_t position) {
    if (!lane.hasName) {
        auto name = mt_TaskNameAt(*source_.store, state_, position, separator_);
        if (name && !text_trim(*name).empty()) {
            lane.name = std::move(*name);
            lane.hasName = true;
        }
    }
    if (lane.priority == -1)
        if (const auto priority = mt_TaskPriorityAt(state_, position))
            lane.priority = static_cast<int32_t>(*priority);
}

void LaneSweep::NoteExecuting(uint32_t lane, bool executing) {
    if (executing)
        insert_sorted(executing_, lane);
    else
        erase_sorted(executing_, lane);
}

void LaneSweep::Look(uint32_t index, double time, Ends ends) {
    laItem_Line& lane = items_.lanes[index];
    if (lane.isAgent) return;
    const uint32_t position = state_.find(mt_ObjectTask, lane.objectId);
    if (position == StateTable::npos) return;
    LearnFacts(lane, position);
    const auto code = mt_TaskStatusAt(state_, position);
    if (!code) return;
    const int32_t row = StatusRow(*code);
    if (lane.openStatus == row && ends == Ends::Changed) return;
    const bool was = Executing(lane);
    if (lane.openStatus < 0) {
        if (lane.openSince < 0) lane.openSince = time;
    } else {
        laLn_AppendSegment(lane, lane.openSince, time, lane.openStatus);
    }
    lane.openStatus = row;
    if (Executing(lane) != was) NoteExecuting(index, !was);
}

void LaneSweep::TakeProcessor(uint32_t index, double time) {
    const laItem_Line& lane = items_.lanes[index];
    if (!Executing(lane)) return;
    LaCpuEntry& cpu = CpuOf(lane.objectId);
    if (cpu.running == index) return;
    settled_ = false;
    if (cpu.running != laNoLane) {
        // The colour of a switch is decided by the status of the one that leaves, as far as the sweep has
        // come.
        const int32_t left = items_.lanes[cpu.running].openStatus;
        laCtx_Append(items_, {time, cpu.running, index, looks_.legend.LinkedStatus(left)});
    }
    cpu.running = index;
}

void LaneSweep::Begin(double time) {
    settled_ = true;
    for (uint32_t lane = 0; lane < items_.lanes.size(); ++lane) {
        Look(lane, time, Ends::Changed);
        TakeProcessor(lane, time);
    }
    touched_.clear();
}

void LaneSweep::Break(double time) {
    for (uint32_t index = 0; index < items_.lanes.size(); ++index) {
        laItem_Line& lane = items_.lanes[index];
        if (lane.isAgent) continue;
        if (lane.openStatus >= 0) laLn_AppendSegment(lane, lane.openSince, time, lane.openStatus);
        laLn_Break(lane);
    }
    touched_.clear();
    executing_.clear();
    laCpu_Clear(items_);
}

void LaneSweep::End(double time) {
    for (uint32_t lane = 0; lane < items_.lanes.size(); ++lane) Look(lane, time, Ends::Open);
}

void LaneSweep::Step(double time) {
    // With nothing touched, what a step without a take-over found is what this one would find.
    if (touched_.empty() && settled_) return;
    settled_ = true;
    // Walks both lists at once, in list order. A look at a lane may put it into, or take it from, the
    // executing ones, so that list is searched afresh behind each lane; both are short.
    size_t nextTouched = 0;
    for (uint32_t at = 0;;) {
        const uint32_t touched = nextTouched < touched_.size() ? touched_[nextTouched] : laNoLane;
        const auto running = std::lower_bound(executing_.begin(), executing_.end(), at);
        const uint32_t lane = std::min(touched, running == executing_.end() ? laNoLane : *running);
        if (lane == laNoLane) break;
        if (lane == touched) {
            Look(lane, time, Ends::Changed);
            ++nextTouched;
        }
        TakeProcessor(lane, time);
        at = lane + 1;
    }
    touched_.clear();
}
