#include "chronoweave/traxfunc/fetch/lane_items.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "chronoweave/traxfunc/fetch/lane_names.h"
#include "chronoweave/traxfunc/fetch/lane_readers.h"
#include "chronoweave/traxfunc/fetch/lane_switches.h"
#include "chronoweave/traxfunc/model/processor_runs.h"

namespace {

constexpr double mostTicks = 0x1p50;

class Maker {
  public:
    Maker(LaItems& items, LaSource& source, const LaLooks& looks, const LaList& list, laFetchRange range)
        : items_(items), source_(source), looks_(looks), list_(list), made_(std::make_shared<LaLaneRange>()) {
        made_->clock = source.clock;
        made_->range = range;
    }

    bool Run(uint32_t least) {
        if (!MayBe() || !FindEvents(least) || !FindRows()) return false;
        MakeLanes();
        const auto separator =
            list_.processorRows ? std::optional<std::string_view>(list_.separator) : std::nullopt;
        LaLanePass pass;
        if (!laLaneSwitches_Make(items_, made_, looks_, source_.osKind, separator, pass)) return false;
        for (uint32_t i = 0; i < items_.lanes.size(); ++i)
            if (const uint32_t known = made_->table->find(items_.lanes[i].objectId); known != LaneTable::none)
                items_.lanes[i].segments.ReadFrom(laSegments_Reader(made_, known, pass.rows[i]));
        items_.bitmaps.ReadFrom(laBitmaps_Reader(made_, items_.laneIndex));
        items_.firstSequence = made_->first;
        items_.cachedLow = made_->range.low;
        items_.cachedHigh = made_->range.high;
        if (separator) laProcessors_Take(items_, std::move(pass.runs), *separator);
        return made_->table->damage().ok();
    }

  private:
    bool MayBe() const {
        return source_.lanes && source_.lanes->damage().ok() && !source_.liveRefresh &&
               !list_.showHiddenAgent && !mt_IsDamaged(*source_.store);
    }

    // The range's events, all of them covered.
    bool FindEvents(uint32_t least) {
        const uint32_t count = mt_GetEventCount(*source_.store);
        if (count < least || source_.lanes->EndEvent() == 1) return false;
        if (!source_.laneTable)
            source_.laneTable = std::make_shared<LaneTable>(*source_.lanes);
        else
            source_.laneTable->Refresh();
        const LaneTable& table = *source_.laneTable;
        endTick_ = laFetch_EndTick(source_, made_->range);
        made_->index = source_.lanes;
        made_->table = source_.laneTable;
        made_->first = table.FirstFrom(source_.clock.TickFrom(made_->range.low));
        made_->end = table.FirstFrom(endTick_);
        const bool covered = made_->end < table.EndEvent() || table.EndEvent() == count + 1;
        if (!covered || made_->end - made_->first < std::max(1u, least)) return false;
        const double from = static_cast<double>(table.TickOf(made_->first) - source_.clock.baseTick),
                     to = static_cast<double>(table.TickOf(made_->end - 1) - source_.clock.baseTick);
        return std::max(from, to) < mostTicks;
    }

    // The rows of all codes that the blocks of the range have. No row of a status may stand for two codes.
    bool FindRows() {
        std::map<uint32_t, int32_t> statuses, events;
        LaneSummary summary;
        for (uint32_t at = made_->first; at < made_->end;) {
            const size_t block = made_->index->BlockOf(at);
            if (!made_->index->ReadSummary(block, summary)) return false;
            for (const uint32_t state : summary.states)
                if ((state & (lane_NotValid | lane_Absent)) == 0 && !statuses.contains(state))
                    statuses[state] = looks_.legend.StatusIndex(state);
            for (const uint32_t kind : summary.kinds)
                if (!events.contains(kind))
                    events[kind] = looks_.legend.EventIndex(lane_TypeOf(kind), lane_SubtypeOf(kind));
            at = made_->index->head(block).end();
        }
        std::set<int32_t> rows;
        for (const auto& [code, row] : statuses) {
            if (!rows.insert(row).second) return false;
            made_->statuses.Add(code, row);
        }
        for (const auto& [kind, row] : events) {
            made_->events.Add(kind, row);
            made_->eventRows.push_back(static_cast<uint16_t>(row));
        }
        return true;
    }

    // Lanes of objects in the order of their ids, behind them those that are there for their events alone, in
    // the order of these.
    void MakeLanes() {
        const mt_Time first = source_.clock.TickFrom(made_->range.low);
        for (const uint32_t id :
             mt_GetObjectIdsUsedInTimeRange(*source_.store, mt_ObjectTask, first, endTick_))
            if (items_.laneIndex.find(id) == laNoLane) laLn_New(items_, id);
        MakeLanesOfEvents();
        for (uint32_t i = 0; i < items_.lanes.size(); ++i) {
            laItem_Line& lane = items_.lanes[i];
            const uint32_t known = made_->table->find(lane.objectId);
            if (known == LaneTable::none) continue;
            lane.icons.ReadFrom(laIcons_Reader(made_, known));
            laLaneNames_Learn(lane, *source_.store, *made_, known, list_.separator);
        }
    }
    void MakeLanesOfEvents() {
        const LaneTable& table = *made_->table;
        std::vector<std::pair<uint32_t, uint32_t>> others;  // first event in the range, object
        for (uint32_t lane = 0; lane < table.size(); ++lane) {
            if (items_.laneIndex.find(table.ObjectOf(lane)) != laNoLane) continue;
            LaneReader reader(table, lane);
            const uint32_t number = reader.FirstEventAt(made_->first);
            if (number == reader.EventCount()) continue;
            const uint32_t sequence = reader.event(number).sequence;
            if (sequence < made_->end) others.emplace_back(sequence, table.ObjectOf(lane));
        }
        std::sort(others.begin(), others.end());
        for (const auto& [sequence, object] : others) laLn_New(items_, object);
    }

    LaItems& items_;
    LaSource& source_;
    const LaLooks& looks_;
    const LaList& list_;
    std::shared_ptr<LaLaneRange> made_;
    mt_Time endTick_ = 0;
};

}  // namespace

bool laLaneItems_Make(LaItems& items, LaSource& source, const LaLooks& looks, const LaList& list,
                      laFetchRange range, uint32_t least) {
    if (Maker(items, source, looks, list, range).Run(least)) return true;
    laItems_Clear(items);
    return false;
}
