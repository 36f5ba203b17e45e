#include "chronoweave/engine/running_objects.h"

#include <algorithm>

void RunningObjects::enter(uint32_t processor, uint32_t object) {
    if (processor >= objects_.size()) objects_.resize(processor + 1, none);
    objects_[processor] = object;
    empty_ = false;
}

void RunningObjects::clear() {
    if (!empty_) std::fill(objects_.begin(), objects_.end(), none);
    empty_ = true;
}
