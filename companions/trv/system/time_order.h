// Events of several processors, each one's in the order of time, brought into one order: those of a processor
// that were read late still find their place, as nothing is given on before it is old enough.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// An Event has a member time.
template <class Event>
class TimeOrder {
  public:
    void add(Event event) { waiting_.push_back(std::move(event)); }
    // Calls visit for the events up to and with a time, by time; those of one time as they were added.
    template <class Visit>
    void release(uint64_t until, Visit&& visit) {
        std::stable_sort(waiting_.begin(), waiting_.end(),
                         [](const Event& a, const Event& b) { return a.time < b.time; });
        size_t count = 0;
        while (count < waiting_.size() && waiting_[count].time <= until) visit(waiting_[count++]);
        waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(count));
    }
    size_t size() const { return waiting_.size(); }

  private:
    std::vector<Event> waiting_;
};
