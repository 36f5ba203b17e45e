#include "shared/libcxxutil/event_tasks.h"

#include <algorithm>

using std::chrono::milliseconds;

int EventTasks::Add(milliseconds interval, Clock::time_point now, Work work) {
    const auto least = std::max(interval, milliseconds(1));
    tasks_.push_back({++last_, Repeat::Yes, least, now + least, std::move(work)});
    return last_;
}

int EventTasks::Once(milliseconds delay, Clock::time_point now, Work work) {
    tasks_.push_back({++last_, Repeat::No, delay, now + delay, std::move(work)});
    return last_;
}

void EventTasks::Remove(int number) {
    std::erase_if(tasks_, [&](const Task& task) { return task.number == number; });
}

std::optional<milliseconds> EventTasks::Run(Clock::time_point now) {
    std::vector<int> due;
    for (const Task& task : tasks_)
        if (task.due <= now) due.push_back(task.number);
    for (const int number : due) {
        const auto task =
            std::find_if(tasks_.begin(), tasks_.end(), [&](const Task& t) { return t.number == number; });
        if (task == tasks_.end()) continue;  // an earlier one took it out
        task->due = now + task->interval;
        const Work work = task->work;  // it may take itself out
        if (task->repeat == Repeat::No) tasks_.erase(task);
        if (!work()) return std::nullopt;
    }
    return UntilNext(now);
}

milliseconds EventTasks::UntilNext(Clock::time_point now) const {
    auto next = longest;
    for (const Task& task : tasks_)
        next = std::clamp(std::chrono::ceil<milliseconds>(task.due - now), milliseconds(0), next);
    return next;
}
