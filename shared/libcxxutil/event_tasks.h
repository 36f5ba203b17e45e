// The tasks of the event loop: what is called when its time comes, between the events of the window system.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

class EventTasks {
  public:
    using Clock = std::chrono::steady_clock;
    // False reports failure: the round of the loop ends there.
    using Work = std::function<bool()>;

    // Calls work every interval from now on. The number takes it out again; a task may take itself out.
    int Add(std::chrono::milliseconds interval, Clock::time_point now, Work work);
    void Remove(int number);

    // Calls the tasks whose time has come; gives the time to the next one, at most longest, or nothing when a
    // task failed.
    std::optional<std::chrono::milliseconds> Run(Clock::time_point now);

    static constexpr std::chrono::milliseconds longest{5000};

  private:
    struct Task {
        int number;
        std::chrono::milliseconds interval;
        Clock::time_point due;
        Work work;
    };
    std::vector<Task> tasks_;
    int last_ = 0;
};
