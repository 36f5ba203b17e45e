#include "chronoweave/traxfunc/fetch/left_side.h"

#include <algorithm>
#include <optional>
#include <string>

#include "chronoweave/traxfunc/model/lane_order.h"
#include "shared/libcxxutil/text.h"

namespace {

class LeftDrop {
  public:
    LeftDrop(LaItems& items, const LaSource& source, const LaLooks& looks, std::string_view separator,
             double low)
        : items_(items),
          source_(source),
          looks_(looks),
          separator_(separator.empty() ? '\0' : separator[0]),
          low_(low) {}

    laLeftDrop Run(uint32_t ordered, std::vector<uint32_t>& moved) {
        if (!ReadStart() || !FindFacts()) return laLeftDrop::NotPossible;
        for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
            TakeFacts(items_.lanes[i], facts_[i]);
            CutLane(items_.lanes[i]);
        }
        items_.bitmaps.kept().DropFront(laBm_FirstAt(items_, low_));
        CutSwitches();
        ForgetRunning();
        items_.cachedLow = low_;
        ++items_.itemsVersion;
        OrderRest(ordered, moved);
        return laLeftDrop::Done;
    }

  private:
    struct Facts {
        bool known = false;  // the store knows the object at low
        std::string name;    // empty for none
        std::optional<uint32_t> priority;
    };

    // The state and the first event that a fetch from low on would begin with.
    bool ReadStart() {
        EventWalk walk;
        if (!mt_StartWalkInTimeRange(*source_.store, source_.clock.TickFrom(low_), INT64_MAX, &state_, walk))
            return false;
        EventRecord event;
        first_ = mt_NextEvent(walk, event) ? event.sequence : UINT32_MAX;
        return walk.gaps() == 0 && walk.gap() == nullptr;
    }

    // What a lane would know of its object from a look at low. What it knows already and the state doesn't
    // say was learned behind low and stays, unless the object lost it before.
    bool FindFacts() {
        facts_.resize(items_.lanes.size());
        for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
            const laItem_Line& lane = items_.lanes[i];
            const uint32_t position =
                lane.isAgent ? StateTable::npos : state_.find(mt_ObjectTask, lane.objectId);
            if (position == StateTable::npos) continue;
            Facts& facts = facts_[i];
            facts.known = mt_TaskStatusAt(state_, position).has_value();
            if (facts.known && (lane.segments.empty() || lane.segments.back().t1 < low_)) return false;
            facts.priority = mt_TaskPriorityAt(state_, position);
            if (facts.priority == 0xFFFFFFFF && lane.priority != -1) return false;
            const auto name = mt_TaskNameAt(*source_.store, state_, position, separator_);
            if (!name) continue;
            if (text_trim(*name).empty() && lane.hasName) return false;
            facts.name = *name;
        }
        return true;
    }

    static void TakeFacts(laItem_Line& lane, Facts& facts) {
        if (facts.priority) lane.priority = static_cast<int32_t>(*facts.priority);
        if (text_trim(facts.name).empty()) return;
        lane.name = std::move(facts.name);
        lane.hasName = true;
    }

    void CutLane(laItem_Line& lane) const {
        std::vector<LaLnSeg>& segments = lane.segments.kept();
        const auto first = std::partition_point(segments.begin(), segments.end(),
                                                [&](const LaLnSeg& one) { return one.t1 < low_; });
        segments.erase(segments.begin(), first);
        if (!segments.empty()) segments.front().t0 = std::max(segments.front().t0, low_);
        lane.firstBegin = {};
        lane.icons.DropFront(lane.icons.FirstFrom(low_));
    }

    bool IsBehindStart(uint32_t sequence) const { return items_.firstSequence + sequence >= first_; }

    // A processor that was idle at low has no switch from the one that ran before.
    void CutSwitches() {
        Table<laItem_Ctx>& lines = items_.ctxLines.kept();
        lines.DropFront(laCtx_FirstAt(items_, low_));
        uint32_t end = 0;  // behind the last one that goes
        for (uint32_t i = 0; i < lines.size(); ++i)
            if (!IsBehindStart(lines[i].leftAt)) end = i + 1;
        uint32_t kept = end;
        for (uint32_t i = end; i-- > 0;)
            if (IsBehindStart(lines[i].leftAt)) lines[--kept] = lines[i];
        lines.DropFront(kept);
        const std::vector<laItem_Ctx> atStart = SwitchesAtStart();
        for (auto line = atStart.rbegin(); line != atStart.rend(); ++line) lines.push_front(*line);
    }

    // Where several execute on one processor at low, the first look takes one behind the other for a switch.
    std::vector<laItem_Ctx> SwitchesAtStart() const {
        std::vector<laItem_Ctx> made;
        std::vector<uint32_t> running(mt_GroupMask + 1, laNoLane);
        for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
            if (!facts_[i].known || !looks_.statusLooks[StatusAtStart(i)].isExecution) continue;
            uint32_t& before = running[RunningObjects::ProcessorOf(source_.osKind, items_.lanes[i].objectId)];
            if (before != laNoLane)
                made.push_back({low_, before, i,
                                looks_.legend.LinkedStatus(items_.lanes[before].segments.front().status), 0});
            before = i;
        }
        return made;
    }
    // The object was in a status ahead of low: its first stretch, cut there, is of it.
    size_t StatusAtStart(uint32_t lane) const {
        return static_cast<size_t>(items_.lanes[lane].segments.front().status);
    }

    void ForgetRunning() {
        for (uint32_t processor = 0; processor < items_.running.end(); ++processor) {
            const int64_t object = items_.running.on(processor);
            if (object == RunningObjects::none) continue;
            const laItem_Line& lane = items_.lanes[items_.laneIndex.find(static_cast<uint32_t>(object))];
            const bool runs =
                lane.openStatus >= 0 && looks_.statusLooks[static_cast<size_t>(lane.openStatus)].isExecution;
            if (!runs && !IsBehindStart(lane.ranUntil)) items_.running.leave(processor);
        }
    }

    // Lanes of objects that the store never came to know are there for their icons, in the order of those.
    void OrderRest(uint32_t ordered, std::vector<uint32_t>& moved) {
        moved.clear();
        if (ordered >= items_.lanes.size()) return;
        std::vector<std::pair<uint32_t, uint32_t>> rest;  // first icon, lane
        for (uint32_t i = ordered; i < items_.lanes.size(); ++i)
            if (!items_.lanes[i].icons.empty()) rest.emplace_back(laBm_OfLane(items_, i, 0), i);
        std::sort(rest.begin(), rest.end());
        moved.assign(items_.lanes.size(), laNoLane);
        for (uint32_t i = 0; i < ordered; ++i) moved[i] = i;
        for (const auto& [icon, lane] : rest) moved[lane] = ordered++;
        laItems_MoveLanes(items_, moved);
    }

    LaItems& items_;
    const LaSource& source_;
    const LaLooks& looks_;
    const char separator_;  // 0 for none
    const double low_;
    StateTable state_;    // just ahead of low
    uint32_t first_ = 0;  // number of the first event not before low
    std::vector<Facts> facts_;
};

}  // namespace

laLeftDrop laItems_DropLeft(LaItems& items, const LaSource& source, const LaLooks& looks,
                            std::string_view separator, double low, uint32_t ordered,
                            std::vector<uint32_t>& moved) {
    return LeftDrop(items, source, looks, separator, low).Run(ordered, moved);
}
