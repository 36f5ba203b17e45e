// One loop for tasks, sockets and what the gate held, where there are no windows: it waits until something is
// ready or the next task is due, and never spins.
#pragma once

#include <chrono>
#include <functional>

#include "shared/libcxxutil/event_tasks.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/watches.h"

struct EventLoop {
    EventTasks tasks;
    PollWatches watches;
    Gate* gate = &gate_Program();
    std::function<EventTasks::Clock::time_point()> now = EventTasks::Clock::now;

    // What is due, what the gate held, then a wait for the sockets, at most until the next task and at most
    // longest. A task that fails ends the round there.
    void round(std::chrono::milliseconds longest = EventTasks::longest);
};
