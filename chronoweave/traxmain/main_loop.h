// The main loop of the window program, apart from any window system.
#pragma once

#include <chrono>
#include <functional>

#include "shared/libcxxutil/event_tasks.h"

struct MainLoop {
    std::function<void()> processPending;                 // events of the window system
    std::function<void(std::chrono::milliseconds)> wait;  // for the next one, at most so long
    std::function<bool()> goOn;                           // at the end of each round
    std::function<EventTasks::Clock::time_point()> now = EventTasks::Clock::now;
    EventTasks tasks;

    // Rounds until goOn says no. A round whose tasks fail ends there.
    void run();
    // One round; false when the loop ends.
    bool round();

    // A wait ends so much before the next task, and is never longer than this.
    static constexpr std::chrono::milliseconds lead{10}, longestWait{500};
};
