#include "shared/libcxxutil/event_tasks.h"

#include <algorithm>

using std::chrono::milliseconds;

int EventTasks::Put(Task task) {
    tasks_.push_back(std::move(task));
    if (changed_) changed_();
    return last_;
}

int EventTasks::Add(milliseconds interval, Clock::time_point now, Work work) {
    const auto least = std::max(interval, milliseconds(1));
    return Put({++last_, Repeat::Yes, least, now + least, std::move(work)});
}

int EventTasks::Once(milliseconds delay, Clock::time_point now, Work work) {
    return Put({++last_, Repeat::No, delay, now + delay, std::move(work)});
}

void EventTasks::Remove(int number) {
    std::erase_if(tasks_, [&](const Task& task) { return task.number == number; });
    if (changed_) changed_();
}

std::optional<milliseconds> EventTasks::Run(Clock::time_point now) {
    const auto find = [this](int number) {
        return std::find_if(tasks_.begin(), tasks_.end(), [&](const Task& t) { return t.number == number; });
    };
    std::vector<int> due;
    for (const Task& task : tasks_)
        if (task.due <= now && !task.runs) due.push_back(task.number);
    for (const int number : due) {
        const auto task = find(number);
        if (task == tasks_.end() || task->runs)
            continue;  // an earlier one took it out, or it runs around this
        task->due = now + task->interval;
        task->runs = true;
        const Work work = task->work;  // it may take itself out
        if (task->repeat == Repeat::No) tasks_.erase(task);
        const bool good = work();
        if (const auto again = find(number); again != tasks_.end()) again->runs = false;
        if (!good) return std::nullopt;
    }
    return UntilNext(now);
}

milliseconds EventTasks::UntilNext(Clock::time_point now) const {
    auto next = longest;
    for (const Task& task : tasks_)
        if (!task.runs)
            next = std::clamp(std::chrono::ceil<milliseconds>(task.due - now), milliseconds(0), next);
    return next;
}
