#include "shared/libcxxutil/event_tasks.h"

#include <algorithm>

int EventTasks::Add(std::chrono::milliseconds interval, Clock::time_point now, Work work) {
    tasks_.push_back({++last_, interval, now + interval, std::move(work)});
    return last_;
}

void EventTasks::Remove(int number) {
    std::erase_if(tasks_, [&](const Task& task) { return task.number == number; });
}

std::optional<std::chrono::milliseconds> EventTasks::Run(Clock::time_point now) {
    std::vector<int> due;
    for (const Task& task : tasks_)
        if (task.due <= now) due.push_back(task.number);
    for (const int number : due) {
        const auto task =
            std::find_if(tasks_.begin(), tasks_.end(), [&](const Task& t) { return t.number == number; });
        if (task == tasks_.end()) continue;  // an earlier one took it out
        task->due = now + task->interval;
        const Work work = task->work;  // it may take itself out
        if (!work()) return std::nullopt;
    }
    auto next = longest;
    for (const Task& task : tasks_) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(task.due - now);
        next = std::clamp(left, std::chrono::milliseconds(0), next);
    }
    return next;
}
