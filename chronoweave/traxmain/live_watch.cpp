#include "chronoweave/traxmain/live_watch.h"

#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds lookEvery{1}, askEvery{4};

double seconds_of(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double milliseconds_since(LiveWatch::Clock::time_point when) {
    return std::chrono::duration<double, std::milli>(LiveWatch::Clock::now() - when).count();
}

}  // namespace

LiveWatch::LiveWatch(std::string file) : file_(std::move(file)) {
    ::pthread_getcpuclockid(::pthread_self(), &processor_);
    thread_ = std::thread([this] { watch(); });
}

LiveWatch::~LiveWatch() {
    over_ = true;
    thread_.join();
}

void LiveWatch::watch() {
    uint64_t size = 0;
    Clock::time_point asked{};
    while (!over_) {
        struct stat facts {};
        const Clock::time_point now = Clock::now();
        if (::stat(file_.c_str(), &facts) == 0 && static_cast<uint64_t>(facts.st_size) > size) {
            size = static_cast<uint64_t>(facts.st_size);
            const std::lock_guard lock(mutex_);
            growths_.push_back({now, size});
            unshown_.push_back({now, size});
        }
        if (answered_ && now - asked >= askEvery) {
            asked = now;
            answered_ = false;
            QMetaObject::invokeMethod(
                this, [this, now, then = seconds_of(processor_)] { answered(now, then); },
                Qt::QueuedConnection);
        }
        std::this_thread::sleep_for(lookEvery);
    }
}

void LiveWatch::answered(Clock::time_point asked, double processorThen) {
    longest_.wall = std::max(longest_.wall, milliseconds_since(asked));
    longest_.processor = std::max(longest_.processor, 1e3 * (seconds_of(processor_) - processorThen));
    answered_ = true;
}

void LiveWatch::shown(uint64_t offset) {
    const std::lock_guard lock(mutex_);
    for (; !unshown_.empty() && unshown_.front().size <= offset; unshown_.pop_front())
        latencies_.push_back(milliseconds_since(unshown_.front().when));
}

double LiveWatch::unread(uint64_t offset) {
    const std::lock_guard lock(mutex_);
    while (!growths_.empty() && growths_.front().size <= offset) growths_.pop_front();
    return growths_.empty() ? 0 : milliseconds_since(growths_.front().when) / 1e3;
}

LiveStall LiveWatch::takeLongestStall() {
    return std::exchange(longest_, {});
}

std::vector<double> LiveWatch::takeLatencies() {
    std::sort(latencies_.begin(), latencies_.end());
    return std::exchange(latencies_, {});
}
