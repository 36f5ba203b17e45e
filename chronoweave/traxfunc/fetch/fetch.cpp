#include "chronoweave/traxfunc/fetch/fetch.h"

#include <algorithm>
#include <optional>

#include "chronoweave/traxfunc/fetch/sweep.h"
#include "shared/libcxxutil/report.h"

namespace {

// Rows of event codes, asked of the legend once per code and fetch, so that an unknown code is reported once.
class EventRows {
  public:
    explicit EventRows(const Legend& legend) : legend_(legend), slots_(1024) {}
    int32_t of(uint16_t type, uint16_t subtype) {
        const uint32_t code = uint32_t{type} << 16 | subtype;
        Slot& slot = slots_[(code * 0x9E3779B1u) >> 22];
        if (slot.row == -2 || slot.code != code) slot = {code, legend_.EventIndex(type, subtype)};
        return slot.row;
    }

  private:
    struct Slot {
        uint32_t code = 0;
        int32_t row = -2;
    };
    const Legend& legend_;
    std::vector<Slot> slots_;
};

void make_agent(LaItems& items, const LaList& list) {
    laItem_Line agent;
    agent.objectId = laAgentId;
    agent.isAgent = true;
    agent.hasName = true;
    agent.name = "__VRL_Agent_For_Hidden_" + laCanvas_Plural(list.objectTerm) + "__";
    agent.openSince = -1.0;
    items.hiddenAgent = items.lanes.push_back(std::move(agent));
}

// One fetch over a range, the items being empty.
class RangeFetch {
  public:
    RangeFetch(LaItems& items, const LaSource& source, const LaLooks& looks, const LaList& list,
               laFetchRange range)
        : items_(items),
          source_(source),
          list_(list),
          range_(range),
          rows_(looks.legend),
          sweep_(items, source, looks, list.separator, state_) {}

    // Gives where the fetch ended: the range's end, or earlier when it was stopped. None when the store gave
    // nothing.
    std::optional<double> Run(const Progress& progress) {
        EventWalk walk;
        if (!Begin(walk)) return std::nullopt;
        if (!walk.gap()) sweep_.Begin(range_.low);
        EventRecord event;
        for (uint32_t count = 0; mt_NextEvent(walk, event); ++count) {
            if (count == 0) items_.firstSequence = event.sequence;
            const double time = laSource_TimeOf(source_, event.time);
            if ((count & 0x3FFF) == 0x3FFF && progress &&
                !progress(time - range_.low, range_.high - range_.low)) {
                const double reached = std::max(range_.low, time);
                sweep_.End(reached);
                return reached;
            }
            if (walk.gap()) Bridge(*walk.gap(), time);
            Take(event, time, event.sequence - items_.firstSequence);
        }
        // Nobody knows how long the last statuses held when what follows can't be read.
        if (walk.gap())
            sweep_.Break(EndAhead(*walk.gap()));
        else
            sweep_.End(range_.high);
        return range_.high;
    }

  private:
    // Puts the walk and the state at the start, and makes the lanes of the objects of the range.
    bool Begin(EventWalk& walk) {
        TraceStore& store = *source_.store;
        const uint64_t first = laSource_TickFrom(source_, range_.low);
        const uint64_t end =
            laSource_TickFrom(source_, range_.high) + (range_.high >= source_.totalLength ? 1 : 0);
        const auto objects = mt_GetObjectIdsUsedInTimeRange(store, mt_ObjectTask, first, end);
        if (!mt_StartWalkInTimeRange(store, first, end, &state_, walk)) return false;
        if (list_.showHiddenAgent) make_agent(items_, list_);
        for (uint32_t id : objects)
            if (items_.laneIndex.find(id) == laNoLane) laLn_New(items_, id);
        return true;
    }

    double EndAhead(const mt_Gap& gap) const {
        return std::max(range_.low, laSource_TimeOf(source_, gap.from));
    }
    // Around a stretch that can't be read: statuses end ahead of it and begin anew behind it.
    void Bridge(const mt_Gap& gap, double time) {
        sweep_.Break(EndAhead(gap));
        for (uint32_t position = 0; position < state_.size(); ++position) {
            const uint32_t id = state_.id_at(position);
            if (state_.entry(position).objectType == mt_ObjectTask && items_.laneIndex.find(id) == laNoLane)
                laLn_New(items_, id);
        }
        sweep_.Begin(time);
    }

    void Take(const EventRecord& event, double time, uint32_t sequence) {
        StateChange change;
        for (ChangeList list = event.changes; list.next(change);)
            if (change.objectType == mt_ObjectTask) sweep_.TouchObject(change.objectId);
        mt_ApplyEventToState(state_, event);
        if (time < range_.low) return;
        sweep_.Step(time);
        uint16_t objectType = 0;
        uint32_t objectId = 0;
        if (!mt_GetEventObject(*source_.store, event, objectType, objectId)) return;
        uint32_t lane = items_.laneIndex.find(objectId);
        if (lane == laNoLane) {
            lane = laLn_New(items_, objectId);
            sweep_.Touch(lane);
        }
        const int32_t row = rows_.of(event.type, event.subtype);
        laBm_Append(items_, {time, lane, sequence, row, event.type, event.subtype});
    }

    LaItems& items_;
    const LaSource& source_;
    const LaList& list_;
    laFetchRange range_;
    EventRows rows_;
    StateTable state_;
    LaneSweep sweep_;
};

}  // namespace

laFetchRange laFetch_RangeFor(const LaSource& source, laFetchRange asked, laFetchAhead ahead) {
    if (ahead == laFetchAhead::Yes) {
        const double length = asked.high - asked.low;
        asked.low = asked.low < length / 2 ? 0 : asked.low - length / 2;
        asked.high = asked.low + 2 * length;
    }
    asked.high = std::min(asked.high, source.totalLength);
    return asked;
}

bool laFetch_Items(LaItems& items, const LaSource& source, const LaLooks& looks, const LaList& list,
                   laFetchRange range, const Progress& progress) {
    const auto reached = RangeFetch(items, source, looks, list, range).Run(progress);
    if (!reached) {
        laItems_Clear(items);
        return false;
    }
    items.cachedLow = range.low;
    items.cachedHigh = *reached;
    return true;
}

std::string laSource_TellDamage(LaSource& source) {
    if (source.store == nullptr) return {};
    const std::vector<Result> damage = mt_TakeDamage(*source.store);
    for (const Result& one : damage) gen_console("%s\n", one.text().c_str());
    if (damage.empty()) return {};
    source.damage = "The store is damaged: " + damage.front().text();
    if (damage.size() > 1) source.damage += gen_format(" (%zu more on the console)", damage.size() - 1);
    return source.damage;
}

bool laCanvas_IsCached(const LaItems& items, const LaSource& source, double low, double high) {
    return items.cachedHigh > items.cachedLow && low >= items.cachedLow &&
           std::min(high, source.totalLength) <= items.cachedHigh;
}
