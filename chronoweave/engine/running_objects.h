// Who runs on each processor. Processors are the group numbers of object ids.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/rtos/legend.h"
#include "libtrv/trace_store.h"

class RunningObjects {
  public:
    static constexpr int64_t none = -1;

    // The processor of an object by the kind of operating system: the low 10 bits of the id on Korvantis,
    // elsewhere one for all.
    static uint32_t ProcessorOf(int osKind, uint32_t object) {
        return osKind == Os_Korvantis ? object & mt_GroupMask : 0;
    }
    // The object that runs there; none when that is not known.
    int64_t on(uint32_t processor) const { return processor < objects_.size() ? objects_[processor] : none; }
    // The processor is one of ProcessorOf.
    void enter(uint32_t processor, uint32_t object);
    // Nobody is known to run there any more.
    void leave(uint32_t processor) {
        if (processor < objects_.size()) objects_[processor] = none;
    }
    // Processors are below this.
    uint32_t end() const { return static_cast<uint32_t>(objects_.size()); }
    void clear();
    bool empty() const { return empty_; }

  private:
    std::vector<int64_t> objects_;
    bool empty_ = true;
};
