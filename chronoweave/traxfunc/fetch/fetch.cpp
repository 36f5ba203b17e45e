#include "chronoweave/traxfunc/fetch/fetch.h"

#include <algorithm>

#include "chronoweave/traxfunc/fetch/sweep.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/source.h"
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

void make_agent(_LaCanvasData& canvas) {
    laItem_Line agent;
    agent.objectId = laAgentId;
    agent.isAgent = true;
    agent.hasName = true;
    agent.name = "__VRL_Agent_For_Hidden_" + laCanvas_Plural(canvas.list.objectTerm) + "__";
    agent.openSince = agent.firstTime = -1.0;
    canvas.items.hiddenAgent = canvas.items.lanes.push_back(std::move(agent));
}

// One fetch over low to high, the lists being empty.
class RangeFetch {
  public:
    RangeFetch(_LaCanvasData& canvas, double low, double high)
        : canvas_(canvas), low_(low), high_(high), rows_(canvas.looks.legend) {}

    // Gives where the fetch ended: high, or earlier when it was stopped. Negative when the store gave
    // nothing.
    double Run() {
        TraceStore& store = *canvas_.source.store;
        const uint64_t first = laSource_TickFrom(canvas_.source, low_);
        const uint64_t end =
            laSource_TickFrom(canvas_.source, high_) + (high_ >= canvas_.source.totalLength ? 1 : 0);
        const auto objects = mt_GetObjectIdsUsedInTimeRange(store, mt_ObjectTask, first, end);
        EventWalk walk;
        if (!mt_StartWalkInTimeRange(store, first, end, &state_, walk)) return -1.0;
        if (canvas_.list.showHiddenAgent) make_agent(canvas_);
        for (uint32_t id : objects)
            if (canvas_.items.laneIndex.find(id) == laNoLane) laLn_New(canvas_.items, id);

        LaneSweep sweep(canvas_, state_);
        if (!walk.gap()) sweep.All(low_, false, true);
        EventRecord event;
        for (uint32_t count = 0; mt_NextEvent(walk, event); ++count) {
            if (count == 0) canvas_.items.firstSequence = event.sequence;
            const double time = TimeOf(event.time);
            if ((count & 0x3FFF) == 0x3FFF && canvas_.calls.progress &&
                !canvas_.calls.progress(time - low_, high_ - low_)) {
                const double reached = std::max(low_, time);
                sweep.All(reached, true, false);
                return reached;
            }
            if (walk.gap()) Bridge(sweep, *walk.gap(), time);
            Take(sweep, event, time, event.sequence - canvas_.items.firstSequence);
        }
        // Nobody knows how long the last statuses held when what follows can't be read.
        if (walk.gap())
            sweep.Break(std::max(low_, TimeOf(walk.gap()->from)));
        else
            sweep.All(high_, true, false);
        return high_;
    }

  private:
    double TimeOf(mt_Time tick) const { return laSource_TimeOf(canvas_.source, tick); }
    // Around a stretch that can't be read: statuses end ahead of it and begin anew behind it.
    void Bridge(LaneSweep& sweep, const mt_Gap& gap, double time) {
        sweep.Break(std::max(low_, TimeOf(gap.from)));
        for (uint32_t position = 0; position < state_.size(); ++position) {
            const uint32_t id = state_.id_at(position);
            if (state_.entry(position).objectType == mt_ObjectTask &&
                canvas_.items.laneIndex.find(id) == laNoLane)
                laLn_New(canvas_.items, id);
        }
        sweep.All(time, false, true);
    }
    void Take(LaneSweep& sweep, const EventRecord& event, double time, uint32_t sequence) {
        StateChange change;
        for (ChangeList list = event.changes; list.next(change);)
            if (change.objectType == mt_ObjectTask) sweep.TouchObject(change.objectId);
        mt_ApplyEventToState(state_, event);
        if (time < low_) return;
        sweep.Step(time);
        uint16_t objectType = 0;
        uint32_t objectId = 0;
        if (!mt_GetEventObject(*canvas_.source.store, event, objectType, objectId)) return;
        uint32_t lane = canvas_.items.laneIndex.find(objectId);
        if (lane == laNoLane) {
            lane = laLn_New(canvas_.items, objectId);
            sweep.Touch(lane);
        }
        const int32_t row = rows_.of(event.type, event.subtype);
        laBm_Append(canvas_.items, {time, lane, sequence, row, event.type, event.subtype});
    }

    _LaCanvasData& canvas_;
    double low_, high_;
    EventRows rows_;
    StateTable state_;
};

}  // namespace

std::string laSource_TellDamage(LaSource& source) {
    if (source.store == nullptr) return {};
    const std::vector<Result> damage = mt_TakeDamage(*source.store);
    for (const Result& one : damage) gen_console("%s\n", one.text().c_str());
    if (damage.empty()) return {};
    source.damage = "The store is damaged: " + damage.front().text();
    if (damage.size() > 1) source.damage += gen_format(" (%zu more on the console)", damage.size() - 1);
    return source.damage;
}

bool laCanvas_IsCached(const _LaCanvasData& canvas, double low, double high) {
    return canvas.items.cachedHigh > canvas.items.cachedLow && low >= canvas.items.cachedLow &&
           std::min(high, canvas.source.totalLength) <= canvas.items.cachedHigh;
}

bool laCanvas_FetchRange(_LaCanvasData& canvas, double low, double high) {
    laCpu_Clear(canvas.items);
    if (canvas.source.store == nullptr) return true;
    if (!canvas.source.storeHasEvents)
        canvas.source.storeHasEvents = mt_GetEventCount(*canvas.source.store) > 0;
    if (!canvas.source.storeHasEvents || canvas.looks.legend.empty()) return true;
    if (canvas.options.prefetch) {
        const double length = high - low;
        low = low < length / 2 ? 0 : low - length / 2;
        high = low + 2 * length;
    }
    high = std::min(high, canvas.source.totalLength);
    if (low > high) return true;
    laCanvas_ClearItems(canvas);
    canvas.list.sortAroundEvent = false;
    const double reached = RangeFetch(canvas, low, high).Run();
    if (reached < 0) {
        laCanvas_ClearItems(canvas);
        return false;
    }
    canvas.items.cachedLow = low;
    canvas.items.cachedHigh = reached;
    return true;
}
