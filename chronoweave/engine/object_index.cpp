#include "chronoweave/engine/object_index.h"

#include <algorithm>

void ObjectIndex::add(uint32_t object, uint32_t place) {
    if (slots_.size() < (used_ + 1) * 2) {
        std::vector<Slot> old(std::max<size_t>(64, slots_.size() * 2));
        old.swap(slots_);
        used_ = 0;
        for (const Slot& slot : old)
            if (slot.place != none) add(slot.object, slot.place);
    }
    size_t at = Bucket(object);
    while (slots_[at].place != none) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = {object, place};
    ++used_;
}

void ObjectIndex::clear() {
    slots_.clear();
    used_ = 0;
}
