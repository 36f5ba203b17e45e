#include "chronoweave/traxfunc/fetch/sweep.h"

#include "shared/libcxxutil/text.h"

LaneSweep::LaneSweep(LaItems& items, const LaSource& source, const LaLooks& looks, std::string_view separator,
                     const StateTable& state)
    : items_(items),
      source_(source),
      looks_(looks),
      separator_(separator.empty() ? '\0' : separator[0]),
      state_(state),
      tracker_(looks.legend, source.osKind, state, items.running, Follow::Executions) {}

void LaneSweep::AddLane(uint32_t lane) {
    if (!items_.lanes[lane].isAgent) tracker_.Add(items_.lanes[lane].objectId).lane = lane;
}

void laLn_LearnFacts(laItem_Line& lane, const TraceStore& store, const StateTable& state, uint32_t position,
                     char separator) {
    if (!lane.hasName) {
        auto name = mt_TaskNameAt(store, state, position, separator);
        if (name && !text_trim(*name).empty()) {
            lane.name = std::move(*name);
            lane.hasName = true;
        }
    }
    if (lane.priority == -1)
        if (const auto priority = mt_TaskPriorityAt(state, position))
            lane.priority = static_cast<int32_t>(*priority);
}

void LaneSweep::Look(const Tracker::Record& record, double time, Ends ends) {
    if (record.position == StateTable::npos) return;
    laItem_Line& lane = items_.lanes[record.lane];
    laLn_LearnFacts(lane, *source_.store, state_, record.position, separator_);
    if (record.now < 0 || (lane.openStatus == record.now && ends == Ends::Changed)) return;
    if (lane.openStatus >= 0)
        laLn_AppendSegment(lane, lane.openSince, time, lane.openStatus);
    else if (lane.openSince < 0)
        lane.openSince = time;
    lane.openStatus = record.now;
}

void LaneSweep::TakeProcessor(const Tracker::Record& record, double time) {
    const int64_t left = items_.running.on(record.processor);
    if (!tracker_.TakeOver(record) || left == RunningObjects::none) return;
    const uint32_t from = items_.laneIndex.find(static_cast<uint32_t>(left));
    // The colour of a switch is decided by the status of the one that leaves, as far as the sweep has come.
    laCtx_Append(items_,
                 {time, from, record.lane, looks_.legend.LinkedStatus(items_.lanes[from].openStatus)});
}

void LaneSweep::Begin(double time) {
    AddNewLanes();
    tracker_.All([&](const Tracker::Record& record, Cause) {
        Look(record, time, Ends::Changed);
        if (record.executing) TakeProcessor(record, time);
        return Pass::Goes;
    });
}

void LaneSweep::Step(double time) {
    AddNewLanes();
    tracker_.Step([&](const Tracker::Record& record, Cause cause) {
        if (cause == Cause::Changed) Look(record, time, Ends::Changed);
        if (record.executing) TakeProcessor(record, time);
        return Pass::Goes;
    });
}

void LaneSweep::Break(double time) {
    AddNewLanes();
    tracker_.Forget([&](const Tracker::Record& record) {
        laItem_Line& lane = items_.lanes[record.lane];
        if (lane.openStatus >= 0) laLn_AppendSegment(lane, lane.openSince, time, lane.openStatus);
        laLn_Break(lane);
    });
}

void LaneSweep::End(double time) {
    AddNewLanes();
    tracker_.Each([&](const Tracker::Record& record, Cause) {
        Look(record, time, Ends::Open);
        return Pass::Goes;
    });
}

void LaneSweep::LanesMoved(std::span<const uint32_t> to) {
    for (; known_ < to.size(); ++known_) {
        const uint32_t lane = to[known_];
        if (lane != laNoLane && !items_.lanes[lane].isAgent)
            tracker_.Add(items_.lanes[lane].objectId).lane = known_;
    }
    tracker_.Arrange([to](Tracker::Record& record) { return record.lane = to[record.lane]; });
    known_ = items_.lanes.size();
}
