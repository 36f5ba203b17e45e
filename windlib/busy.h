// Long work as the user sees it: the busy pointer with progress and Escape, for as long as this lives, while
// the gate knows what goes on.
#pragma once

#include <functional>
#include <utility>

#include "shared/libcxxutil/gate.h"

class BusyWork {
  public:
    // show nests and may be empty.
    BusyWork(GateWork work, std::function<void(bool busy)> show)
        : token_(gate_Begin(work)), show_(std::move(show)) {
        if (show_) show_(true);
    }
    ~BusyWork() {
        if (show_) show_(false);
    }
    BusyWork(const BusyWork&) = delete;
    BusyWork& operator=(const BusyWork&) = delete;

  private:
    Gate::Token token_;  // ends last: what was held runs when the windows look as they should
    std::function<void(bool busy)> show_;
};
