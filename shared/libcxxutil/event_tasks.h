// The tasks of the event loop: what is called when its time comes, between the events of the window system.
// The clock is handed in with each call; nothing here waits.
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

    // Calls work every interval from now on. The number takes it out again; a task may take itself out. An
    // interval below a millisecond is one, so that no task keeps the loop busy.
    int Add(std::chrono::milliseconds interval, Clock::time_point now, Work work);
    // Calls work once, when the delay is over; 0 means the next Run.
    int Once(std::chrono::milliseconds delay, Clock::time_point now, Work work);
    void Remove(int number);

    // Calls the tasks whose time has come, but none from within itself; gives the time to the next one, at
    // most longest, or nothing when a task failed.
    std::optional<std::chrono::milliseconds> Run(Clock::time_point now);
    // The time to the next task that does not run now, rounded up so that it is due when the wait is over; at
    // most longest.
    std::chrono::milliseconds UntilNext(Clock::time_point now) const;

    // Called whenever UntilNext may have become shorter or longer from outside of Run.
    void SetChanged(std::function<void()> changed) { changed_ = std::move(changed); }

    static constexpr std::chrono::milliseconds longest{5000};

  private:
    enum class Repeat { No, Yes };
    struct Task {
        int number;
        Repeat repeat;
        std::chrono::milliseconds interval;
        Clock::time_point due;
        Work work;
        bool runs = false;
    };
    int Put(Task task);

    std::vector<Task> tasks_;
    std::function<void()> changed_;
    int last_ = 0;
};
