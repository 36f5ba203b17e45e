#include "shared/libcxxutil/watches.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "shared/libcxxutil/report.h"

Watch::Watch(Watches& watches, int descriptor, WatchFor what, std::function<void()> ready)
    : watches_(&watches), number_(watches.add(descriptor, what, std::move(ready))) {}

Watch::Watch(Watch&& other) noexcept
    : watches_(std::exchange(other.watches_, nullptr)), number_(other.number_) {}

Watch& Watch::operator=(Watch&& other) noexcept {
    if (this == &other) return *this;
    remove();
    watches_ = std::exchange(other.watches_, nullptr);
    number_ = other.number_;
    return *this;
}

void Watch::remove() {
    if (Watches* watches = std::exchange(watches_, nullptr)) watches->remove(number_);
}

int watches_Poll(std::span<pollfd> entries, int milliseconds) {
    return ::poll(entries.data(), entries.size(), milliseconds);
}

int PollWatches::add(int descriptor, WatchFor what, std::function<void()> ready) {
    entries_.push_back({++last_, descriptor, what, std::move(ready)});
    return last_;
}

void PollWatches::remove(int number) {
    std::erase_if(entries_, [&](const Entry& entry) { return entry.number == number; });
}

void PollWatches::call(int number, size_t& called) {
    const auto entry =
        std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.number == number; });
    if (entry == entries_.end()) return;  // another's ready took it out
    const std::function<void()> ready = entry->ready;
    ++called;
    ready();
}

size_t PollWatches::wait(std::chrono::milliseconds longest) {
    std::vector<pollfd> polled;
    std::vector<int> numbers;
    for (const Entry& entry : entries_) {
        const short events = entry.what == WatchFor::Input ? POLLIN : POLLOUT;
        polled.push_back({entry.descriptor, events, 0});
        numbers.push_back(entry.number);
    }
    const auto most =
        std::clamp<std::chrono::milliseconds::rep>(longest.count(), 0, std::numeric_limits<int>::max());
    if (poll_(polled, static_cast<int>(most)) < 0) {
        if (errno != EINTR) gen_error("The sockets can't be watched: %s", std::strerror(errno));
        return 0;
    }
    size_t called = 0;
    for (size_t i = 0; i < polled.size(); ++i) {
        if (polled[i].revents & POLLNVAL) {
            gen_error("Descriptor %d is watched but not open", polled[i].fd);
            remove(numbers[i]);
        } else if (polled[i].revents != 0) {
            call(numbers[i], called);
        }
    }
    return called;
}
