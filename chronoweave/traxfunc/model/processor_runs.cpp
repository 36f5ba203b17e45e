#include "chronoweave/traxfunc/model/processor_runs.h"

#include <algorithm>
#include <map>

#include "chronoweave/engine/report_texts.h"
#include "chronoweave/engine/running_objects.h"

namespace {

// From a run on: in order, none reaching into the next, and with what was busy ahead of each.
void settle(LaProcessor& one, size_t first) {
    const auto place = [](const LaRun& run) { return std::pair(run.t0, run.lane); };
    const auto fresh = one.runs.begin() + static_cast<std::ptrdiff_t>(first);
    if (!std::ranges::is_sorted(fresh, one.runs.end(), {}, place))
        std::ranges::stable_sort(fresh, one.runs.end(), {}, place);
    for (size_t i = std::max<size_t>(first, 1); i < one.runs.size(); ++i) {
        LaRun& last = one.runs[i - 1];
        last.t1 = std::min(last.t1, one.runs[i].t0);
        one.runs[i].before = last.before + (last.idle ? 0 : last.t1 - last.t0);
    }
}

void take(LaItems& items, std::vector<LaProcessor> list, std::string_view separator) {
    items.processors = {std::move(list), items.itemsVersion, items.cachedHigh, std::string(separator)};
}

class Maker {
  public:
    Maker(LaItems& items, const LaLooks& looks, int osKind, std::string_view separator)
        : items_(items), looks_(looks), osKind_(osKind), separator_(separator) {}

    bool Make(double from) {
        LaProcessors& all = items_.processors;
        const bool goesOn = all.version == items_.itemsVersion && from <= all.high;
        std::vector<uint32_t> before;
        for (LaProcessor& one : all.list) {
            before.push_back(one.key);
            made_[one.key] = std::move(one);
        }
        FindCuts(goesOn ? from : -1);
        for (auto& [key, one] : made_) Cut(one);
        for (uint32_t i = 0; i < items_.lanes.size(); ++i) Gather(i);
        std::vector<LaProcessor> list;
        for (auto& [key, one] : made_) {
            const auto kept = kept_.find(key);
            settle(one, kept == kept_.end() ? 0 : kept->second);
            if (!one.runs.empty()) list.push_back(std::move(one));
        }
        take(items_, std::move(list), separator_);
        return !std::ranges::equal(before, all.list, {}, {}, &LaProcessor::key);
    }

  private:
    bool Executes(const LaLnSeg& segment) const {
        return looks_.statusLooks[static_cast<size_t>(segment.status)].isExecution;
    }
    uint32_t KeyOf(const laItem_Line& lane) const {
        return RunningObjects::ProcessorOf(osKind_, lane.objectId);
    }

    // From where on each processor's runs are made anew: the begin of the earliest stretch that the end of
    // what is known may have cut. Before all for a time below 0.
    void FindCuts(double known) {
        for (uint32_t i = 0; known >= 0 && i < items_.lanes.size(); ++i) {
            const laItem_Line& lane = items_.lanes[i];
            if (lane.isAgent) continue;
            double& cut = cuts_.try_emplace(KeyOf(lane), known).first->second;
            const LaSegments& segments = lane.segments;
            for (size_t at = segments.FirstEndingFrom(known); at < segments.size(); at = segments.Next(at))
                if (Executes(segments[at])) cut = std::min(cut, segments[at].t0);
        }
        if (known < 0) all_ = true;
    }
    double CutOf(uint32_t key) const {
        const auto cut = cuts_.find(key);
        return all_ || cut == cuts_.end() ? -1 : cut->second;
    }
    void Cut(LaProcessor& one) {
        one.runs.resize(all_ ? 0 : laProcessor_FirstFrom(one, CutOf(one.key)));
        kept_[one.key] = one.runs.size();
    }

    void Gather(uint32_t position) {
        const laItem_Line& lane = items_.lanes[position];
        if (lane.isAgent) return;
        const uint32_t key = KeyOf(lane);
        const double cut = CutOf(key);
        const bool idle = lane.hasName && report_IsIdleName(lane.name, separator_);
        std::vector<LaRun>* runs = nullptr;
        const LaSegments& segments = lane.segments;
        for (size_t at = segments.FirstFrom(cut); at < segments.size(); at = segments.Next(at)) {
            const LaLnSeg segment = segments[at];
            if (!Executes(segment)) continue;
            if (runs == nullptr) {
                LaProcessor& one = made_[key];
                one.key = key;
                runs = &one.runs;
            }
            runs->push_back({segment.t0, segment.t1, 0, position, idle});
        }
    }

    LaItems& items_;
    const LaLooks& looks_;
    const int osKind_;
    const std::string_view separator_;
    std::map<uint32_t, LaProcessor> made_;
    std::map<uint32_t, double> cuts_;
    std::map<uint32_t, size_t> kept_;  // how many runs of each are not made anew
    bool all_ = false;
};

}  // namespace

bool laProcessors_Make(LaItems& items, const LaLooks& looks, int osKind, std::string_view separator,
                       double from) {
    return Maker(items, looks, osKind, separator).Make(from);
}

bool laProcessors_Stand(const LaItems& items, std::string_view separator) {
    const LaProcessors& all = items.processors;
    return all.version == items.itemsVersion && all.high == items.cachedHigh && all.separator == separator;
}

void laProcessors_Take(LaItems& items, std::vector<LaProcessor> made, std::string_view separator) {
    for (LaProcessor& one : made) settle(one, 0);
    std::erase_if(made, [](const LaProcessor& one) { return one.runs.empty(); });
    std::ranges::sort(made, {}, &LaProcessor::key);
    take(items, std::move(made), separator);
}

void laProcessors_Clear(LaItems& items) {
    items.processors = {};
}
