// An instance of the kernel's tracing, this program's own: made, read and removed without touching what
// others trace.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "shared/libcxxutil/result.h"

struct LinuxEvent {
    enum class Kind { Switch, Wakeup, InterruptBegin, InterruptEnd };
    Kind kind = Kind::Switch;
    uint64_t time = 0;  // nanoseconds of the monotonic clock
    uint32_t processor = 0;
    uint32_t task = 0;  // of Switch who leaves, of Wakeup who is woken; else who was interrupted
    uint32_t priority = 0;
    std::string name;
    uint64_t state = 0;  // of Switch why the task leaves; of Wakeup where it is to run; else the interrupt
    uint32_t next = 0;   // of Switch who takes over
    uint32_t nextPriority = 0;
    std::string nextName;
};

class LinuxTrace {
  public:
    LinuxTrace();
    ~LinuxTrace();
    LinuxTrace(const LinuxTrace&) = delete;
    LinuxTrace& operator=(const LinuxTrace&) = delete;

    // Makes the instance, and removes those that earlier runs could not remove. A refusal says in words what
    // the system lacks, or the user.
    Result open();
    Result setOn(bool isOn);
    // Takes what is there, each processor's in its order.
    void read(const std::function<void(LinuxEvent&&)>& take);
    // How many the kernel has lost so far, on all processors.
    uint64_t lost() const;
    const std::string& name() const;

  private:
    struct Parts;
    Result openProcessors();
    void readPage(int processor, const std::function<void(LinuxEvent&&)>& take);
    std::unique_ptr<Parts> parts_;
};

// How the names of instances begin; behind it stands the number of the process whose they are.
extern const char linux_InstancePrefix[];
// Removes the instances of processes that are no more; gives how many.
size_t linux_RemoveStale();
