// Watches a window that follows a growing file, from another thread: how long what is written waits until it
// is on the screen, and how long the window takes no events.
#pragma once

#include <QObject>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct LiveStall {
    double wall = 0;       // milliseconds that an event waited for its turn
    double processor = 0;  // of them, the window's thread at work
};

class LiveWatch : public QObject {
  public:
    using Clock = std::chrono::steady_clock;
    // In the window's thread, whose loop handles what is asked of it. The file may not be there yet.
    explicit LiveWatch(std::string file);
    ~LiveWatch() override;

    // The picture now shows what stands in the file below this offset.
    void shown(uint64_t offset);
    // Seconds for which the oldest byte has stood in the file that was not read when read up to offset.
    double unread(uint64_t offset);
    // The longest since the last question.
    LiveStall takeLongestStall();
    // Of all that was shown, milliseconds from the file to the screen; in order of size.
    std::vector<double> takeLatencies();

  private:
    struct Growth {
        Clock::time_point when;
        uint64_t size;
    };
    void watch();
    void answered(Clock::time_point asked, double processorThen);

    std::string file_;
    std::mutex mutex_;  // of growths_
    std::deque<Growth> growths_, unshown_;
    std::vector<double> latencies_;
    LiveStall longest_;
    clockid_t processor_{};  // of the window's thread
    std::atomic<bool> answered_{true}, over_{false};
    std::thread thread_;
};
