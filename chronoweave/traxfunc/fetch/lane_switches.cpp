#include "chronoweave/traxfunc/fetch/lane_switches.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "chronoweave/engine/report_texts.h"

namespace {

constexpr uint32_t laneBits = 12, mostLanes = 1u << laneBits, mostLinks = 1u << (32 - 2 * laneBits);

class SwitchReader : public LaItemReader<laItem_Ctx> {
  public:
    uint32_t size() const override { return times_.size(); }
    double TimeAt(uint32_t place) const override { return times_[place]; }
    uint32_t FirstFrom(double time) const override {
        return static_cast<uint32_t>(laPlaces_First(
            times_.size(), [&](size_t place) { return times_[static_cast<uint32_t>(place)] >= time; }));
    }
    laItem_Ctx At(uint32_t place) const override {
        const uint32_t what = what_[place];
        return {times_[place], what >> laneBits & (mostLanes - 1), what & (mostLanes - 1),
                links_[what >> 2 * laneBits]};
    }

    // False when there are too many links.
    bool Append(double time, uint32_t from, uint32_t to, int32_t link) {
        const auto known = std::find(links_.begin(), links_.end(), link);
        const auto number = static_cast<uint32_t>(known - links_.begin());
        if (known == links_.end()) links_.push_back(link);
        times_.push_back(time);
        what_.push_back(number << 2 * laneBits | from << laneBits | to);
        return links_.size() <= mostLinks;
    }

  private:
    Table<double> times_;
    Table<uint32_t> what_;        // link, from, to
    std::vector<int32_t> links_;  // rows
};

// What happens at an event is what the sweep of a fetch makes of it (sweep.h, tracker.h), as long as no two
// execute at once on a processor: then only who is touched can take over.
class SwitchPass {
  public:
    SwitchPass(LaItems& items, const LaLaneRange& range, const LaLooks& looks, int osKind,
               std::optional<std::string_view> separator)
        : items_(items),
          range_(range),
          looks_(looks),
          osKind_(osKind),
          separator_(separator),
          lanes_(items.lanes.size()) {}

    bool Run() {
        if (lanes_.size() > mostLanes) return false;
        Begin();
        for (uint32_t at = range_.first; at < range_.end && crowded_ == 0;)
            if (!TakeBlock(at)) return false;
        if (crowded_ > 0) return false;
        for (uint32_t lane = 0; lane < lanes_.size(); ++lane) {
            items_.lanes[lane].openStatus = lanes_[lane].status;
            if (lanes_[lane].status >= 0) items_.lanes[lane].openSince = range_.range.high;
        }
        for (uint32_t key = 0; key < running_.size(); ++key)
            if (running_[key] != laNoLane) items_.running.enter(key, items_.lanes[running_[key]].objectId);
        return true;
    }
    std::unique_ptr<const SwitchReader> Made() { return std::move(made_); }
    LaLanePass Found() {
        LaLanePass found;
        for (const Lane& lane : lanes_) {
            found.rows.push_back(lane.row);
            // How long it was in the status that it is in no more, nobody knows.
            if (lane.run != none && lane.lost) runs_[lane.processor][lane.run].lane = laNoLane;
        }
        for (uint32_t key = 0; key < runs_.size(); ++key) {
            std::erase_if(runs_[key], [](const LaRun& run) { return run.lane == laNoLane; });
            if (!runs_[key].empty()) found.runs.push_back({.key = key, .runs = std::move(runs_[key])});
        }
        return found;
    }

  private:
    static constexpr uint32_t none = UINT32_MAX;
    struct Lane {
        int32_t status = -1;  // row
        laStatusRow row = laStatusRow::Plain;
        bool executing = false;
        bool lost = false;  // the status is not valid any more
        bool idle = false;  // runs when there is nothing to do
        uint32_t processor = 0;
        uint32_t run = none;  // its open one, by number
    };

    void Begin() {
        for (int32_t row = 0; row < static_cast<int32_t>(looks_.statusLooks.size()); ++row)
            linkOfRow_.push_back(looks_.legend.LinkedStatus(row));
        for (uint32_t i = 0; i < lanes_.size(); ++i) {
            const uint32_t object = items_.lanes[i].objectId;
            lanes_[i].processor = RunningObjects::ProcessorOf(osKind_, object);
            if (lanes_[i].processor >= executing_.size()) {
                executing_.resize(lanes_[i].processor + 1);
                running_.resize(executing_.size(), laNoLane);
                runs_.resize(executing_.size());
            }
            const laItem_Line& shown = items_.lanes[i];
            lanes_[i].idle = separator_ && shown.hasName && report_IsIdleName(shown.name, *separator_);
            const uint32_t known = range_.table->find(object);
            if (known == LaneTable::none) continue;
            LaneReader reader(*range_.table, known);
            static_cast<void>(Take(i, range_.RowOf(reader.StateAhead(reader.FirstStatusAt(range_.first))),
                                   range_.range.low));
        }
    }

    // The block of an event, which becomes the first one behind it.
    bool TakeBlock(uint32_t& at) {
        const size_t block = range_.index->BlockOf(at);
        const LaneHead& head = range_.index->head(block);
        if (!range_.index->ReadSummary(block, summary_) ||
            !range_.index->ReadColumns(block, summary_, LaneIndex::Columns::Statuses, columns_))
            return false;
        NumberBlock();
        const uint32_t from = at - head.first, end = std::min(range_.end, head.end()) - head.first;
        const auto& events = columns_.changeAt;
        size_t next =
            static_cast<size_t>(std::lower_bound(events.begin(), events.end(), from) - events.begin());
        while (next < events.size() && events[next] < end && crowded_ == 0)
            if (!TakeEvent(next, head.firstTick)) return false;
        at = head.first + end;
        return true;
    }

    // What the block's numbers of objects and states stand for.
    void NumberBlock() {
        laneOfObject_.clear();
        for (const uint64_t object : summary_.objects)
            laneOfObject_.push_back(items_.laneIndex.find(static_cast<uint32_t>(object)));
        rowOfState_.clear();
        for (const uint32_t state : summary_.states) rowOfState_.push_back(range_.RowOf(state));
    }

    // All that one event changed: by object, and so in the order of the lanes.
    bool TakeEvent(size_t& next, mt_Time firstTick) {
        const uint32_t event = columns_.changeAt[next];
        const double time = range_.clock.TimeOf(firstTick + columns_.ticks[event]);
        for (; next < columns_.changeAt.size() && columns_.changeAt[next] == event; ++next) {
            const uint32_t lane = laneOfObject_[columns_.changeObject[next]];
            if (lane == laNoLane || !Take(lane, rowOfState_[columns_.changeState[next]], time)) return false;
        }
        return true;
    }

    bool Take(uint32_t number, int32_t row, double time) {
        Lane& lane = lanes_[number];
        if (lane.status >= 0 && (row == CodeRows::none || row == lane.status)) lane.row = laStatusRow::Gapped;
        lane.lost = row == CodeRows::none;
        if (!lane.lost && row != lane.status) {
            EndRun(lane, time);
            lane.status = row;
            SetExecuting(lane, looks_.statusLooks[static_cast<size_t>(row)].isExecution);
            if (lane.executing) BeginRun(number, time);
        }
        if (!lane.executing) return true;
        const uint32_t left = std::exchange(running_[lane.processor], number);
        return left == number || left == laNoLane ||
               made_->Append(time, left, number, linkOfRow_[static_cast<size_t>(lanes_[left].status)]);
    }

    void BeginRun(uint32_t number, double time) {
        if (!separator_) return;
        Lane& lane = lanes_[number];
        std::vector<LaRun>& runs = runs_[lane.processor];
        lane.run = static_cast<uint32_t>(runs.size());
        runs.push_back({time, range_.range.high, 0, number, lane.idle});
    }
    void EndRun(Lane& lane, double time) {
        if (lane.run != none) runs_[lane.processor][lane.run].t1 = time;
        lane.run = none;
    }

    void SetExecuting(Lane& lane, bool executing) {
        if (executing == lane.executing) return;
        lane.executing = executing;
        uint32_t& count = executing_[lane.processor];
        if (executing && ++count == 2) ++crowded_;
        if (!executing && --count == 1) --crowded_;
    }

    LaItems& items_;
    const LaLaneRange& range_;
    const LaLooks& looks_;
    const int osKind_;
    const std::optional<std::string_view> separator_;
    std::vector<Lane> lanes_;
    std::vector<std::vector<LaRun>> runs_;  // by processor
    std::vector<uint32_t> executing_;       // how many, by processor
    std::vector<uint32_t> running_;         // lane that executed last, by processor
    std::vector<int32_t> linkOfRow_;        // of switches away from a status
    // Of the block at hand, by its numbers.
    std::vector<uint32_t> laneOfObject_;
    std::vector<int32_t> rowOfState_;
    uint32_t crowded_ = 0;  // processors on which more than one does
    std::unique_ptr<SwitchReader> made_ = std::make_unique<SwitchReader>();
    LaneSummary summary_;
    LaneColumns columns_;
};

}  // namespace

bool laLaneSwitches_Make(LaItems& items, const std::shared_ptr<const LaLaneRange>& range,
                         const LaLooks& looks, int osKind, std::optional<std::string_view> separator,
                         LaLanePass& pass) {
    SwitchPass made(items, *range, looks, osKind, separator);
    if (!made.Run()) return false;
    items.ctxLines.ReadFrom(made.Made());
    pass = made.Found();
    return true;
}
