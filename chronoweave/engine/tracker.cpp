#include "chronoweave/engine/tracker.h"

ObjectTracker::ObjectTracker(const AnalysisSource& source, const StateTable& state,
                             const std::vector<uint32_t>& objects, bool followExecuting)
    : source_(source), state_(state), followExecuting_(followExecuting), records_(objects.size()) {
    for (uint32_t at = 0; at < objects.size(); ++at) {
        records_[at].object = objects[at];
        records_[at].index = at;
        records_[at].processor = source.processorOf(objects[at]);
        index_.add(objects[at], at);
    }
}

void ObjectTracker::look(uint32_t at) {
    Record& record = records_[at];
    // A position holds until something is removed from the state.
    uint32_t& position = record.position;
    if (position >= state_.size() || state_.id_at(position) != record.object ||
        state_.entry(position).objectType != mt_ObjectTask)
        position = state_.find(mt_ObjectTask, record.object);
    const auto code = position == StateTable::npos ? std::nullopt : mt_TaskStatusAt(state_, position);
    record.now = code ? source_.legend->StatusIndex(*code) : -1;
    const bool executes = isExecution(record.now);
    if (executes == record.executing) return;
    record.executing = executes;
    if (executes) return insert(executing_, at);
    executing_.erase(std::lower_bound(executing_.begin(), executing_.end(), at));
}
