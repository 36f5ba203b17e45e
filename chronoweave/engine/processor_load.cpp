#include "chronoweave/engine/processor_load.h"

#include <algorithm>

LoadSums::LoadSums(const AnalysisSource& source, const std::vector<uint32_t>& objects,
                   const std::vector<uint32_t>& idle)
    : source_(source), times_(objects.size()), idle_(objects.size(), false) {
    for (size_t at = 0; at < objects.size(); ++at) {
        idle_[at] = std::find(idle.begin(), idle.end(), objects[at]) != idle.end();
        const uint32_t processor = source.ProcessorOf(objects[at]);
        if (processor >= processors_.size()) processors_.resize(processor + 1);
        processors_[processor].there = true;
    }
}

void LoadSums::take(const LaneFigures& figures) {
    const TimeBase& clock = source_.clock;
    const double rest = figures.closing - clock.OnTick(figures.closing);
    for (size_t place = 0; place < times_.size(); ++place)
        for (size_t row = 0; row < figures.rows; ++row) {
            if (!source_.legend->statuses[row].isExecution) continue;
            times_[place].ticks += figures.ticks[place * figures.rows + row];
            if (figures.open[place] == static_cast<int32_t>(row)) times_[place].rest += rest;
        }
    for (size_t number = 0; number < figures.loads.size(); ++number) {
        const LaneFigures::Load& load = figures.loads[number];
        Processor& processor = processors_[number];
        processor.busy.ticks += load.ticks;
        processor.since = clock.TimeOf(load.since);
        processor.executing = load.executing - load.closed;
        if (load.executing > 0 && processor.executing == 0)
            processor.busy.add(clock, processor.since, figures.closing);
    }
}

std::vector<ProcessorLoad> LoadSums::Processors(const std::vector<uint32_t>& objects, double end) {
    std::vector<ProcessorLoad> loads;
    std::vector<size_t> place(processors_.size());
    for (uint32_t number = 0; number < processors_.size(); ++number) {
        if (!processors_[number].there) continue;
        place[number] = loads.size();
        Processor& processor = processors_[number];
        // An object that vanished while it executed leaves the processor open.
        const double busy = processor.busy.time(source_.clock);
        loads.push_back({number, processor.executing > 0 ? busy + (end - processor.since) : busy, {}});
    }
    for (size_t at = 0; at < objects.size(); ++at)
        if (const double time = times_[at].time(source_.clock); time > 0)
            loads[place[source_.ProcessorOf(objects[at])]].objects.push_back({objects[at], time});
    for (ProcessorLoad& load : loads) load_SortObjects(load.objects);
    return loads;
}

void load_SortObjects(std::vector<ObjectTime>& objects) {
    std::stable_sort(objects.begin(), objects.end(),
                     [](const ObjectTime& a, const ObjectTime& b) { return a.time > b.time; });
}
