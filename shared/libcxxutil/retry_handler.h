// How a blocking operation goes on: a strategy that says how long to try and what to do while waiting. The
// operation calls start once, then keepTrying and wait in turns, then finish once. keepTrying giving false
// ends the operation with its time-out. A handler may wait while another one waits further out.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

class RetryHandler {
  public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    // No limit: never ends by time.
    explicit RetryHandler(std::optional<std::chrono::milliseconds> limit = std::nullopt,
                          Now now = Clock::now);
    RetryHandler(const RetryHandler&) = delete;
    RetryHandler& operator=(const RetryHandler&) = delete;
    virtual ~RetryHandler() = default;

    // Notes the clock, unless there is no limit.
    virtual void start();
    // False when any condition says so; then true without a limit; false when the program's deadline has
    // passed; otherwise whether the time since start is below the limit.
    virtual bool keepTrying();
    virtual void finish() {}
    virtual void wait() = 0;

    // True means that the wait goes on.
    void AddCondition(std::function<bool()> goesOn) { conditions_.push_back(std::move(goesOn)); }
    std::optional<std::chrono::milliseconds> limit() const { return limit_; }

    // For all handlers with a limit: none of them goes on behind this moment. None by default.
    static void SetDeadline(std::optional<Clock::time_point> deadline);

  protected:
    void SetLimit(std::optional<std::chrono::milliseconds> limit) { limit_ = limit; }
    // Notes the clock whatever the limit.
    void restart() { start_ = now_(); }
    std::chrono::nanoseconds SinceStart() const { return now_() - start_; }
    // Until the limit or the program's deadline, whichever comes first, rounded up; nothing without a limit.
    std::optional<std::chrono::milliseconds> TimeLeft() const;

  private:
    std::optional<std::chrono::milliseconds> limit_;
    Clock::time_point start_{};
    std::vector<std::function<bool()>> conditions_;
    Now now_;
};
