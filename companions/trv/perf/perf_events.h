// The system's account of one process and all that it starts: who ran where and from when to when, and every
// millisecond which instruction was at work. Any user may ask for it about own processes, unless the
// administrator has forbidden it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shared/libcxxutil/result.h"

struct PerfRecord {
    enum class Kind { Runs, Preempted, Waits, Begins, Exited, Named, Executes, Sample, Lost };
    Kind kind = Kind::Runs;
    uint64_t time = 0;  // nanoseconds of the monotonic clock
    uint32_t processor = 0, process = 0, task = 0;
    uint64_t value = 0;  // of Sample the address, of Begins who began it, of Lost how many
    std::string name;    // of Named and Executes
};

class PerfEvents {
  public:
    PerfEvents();
    ~PerfEvents();
    // Watches a process that has not become its program yet: from then on.
    Result open(pid_t process);
    void setOn(bool isOn);
    // Takes what is there, each processor's in its order.
    void read(const std::function<void(PerfRecord&&)>& take);

  private:
    class Buffer;
    std::vector<std::unique_ptr<Buffer>> buffers_;
};
