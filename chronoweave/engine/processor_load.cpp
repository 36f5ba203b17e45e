#include "chronoweave/engine/processor_load.h"

#include <algorithm>

LoadSums::LoadSums(const AnalysisSource& source, const std::vector<uint32_t>& objects,
                   const std::vector<uint32_t>& idle)
    : source_(source), times_(objects.size(), 0.0), idle_(objects.size(), false) {
    for (size_t at = 0; at < objects.size(); ++at) {
        idle_[at] = std::find(idle.begin(), idle.end(), objects[at]) != idle.end();
        const uint32_t processor = source.ProcessorOf(objects[at]);
        if (processor >= processors_.size()) processors_.resize(processor + 1);
        processors_[processor].there = true;
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
        if (processor.executing > 0) processor.busy += end - processor.since;
        loads.push_back({number, processor.busy, {}});
    }
    for (size_t at = 0; at < objects.size(); ++at)
        if (times_[at] > 0)
            loads[place[source_.ProcessorOf(objects[at])]].objects.push_back({objects[at], times_[at]});
    for (ProcessorLoad& load : loads) load_SortObjects(load.objects);
    return loads;
}

void load_SortObjects(std::vector<ObjectTime>& objects) {
    std::stable_sort(objects.begin(), objects.end(),
                     [](const ObjectTime& a, const ObjectTime& b) { return a.time > b.time; });
}
