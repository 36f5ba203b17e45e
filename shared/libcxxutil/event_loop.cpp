#include "shared/libcxxutil/event_loop.h"

#include <algorithm>

void EventLoop::round(std::chrono::milliseconds longest) {
    if (!tasks.Run(now())) return;
    gate->RunHeld();
    // Asked again: what ran may have taken its time or added a task.
    const auto next = gate->Ready() ? std::chrono::milliseconds(0) : tasks.UntilNext(now());
    watches.wait(std::min(next, longest));
}
