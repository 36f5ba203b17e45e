// Holds a service while it is negotiated with its peer in the background.
#pragma once

#include <functional>

#include "shared/libcxxutil/event_tasks.h"
#include "shared/stp_transport/spec/spec_class.h"

class Negotiator {
  public:
    // Sends what this side has to tell at once, and looks for the peer's answer by and by. failed is called,
    // once, from the tasks, when none has come in time. The tasks outlive this.
    Negotiator(Ref<STPSpecClass> service, EventTasks& tasks, std::function<void()> failed,
               std::function<EventTasks::Clock::time_point()> now = EventTasks::Clock::now);
    Negotiator(const Negotiator&) = delete;
    Negotiator& operator=(const Negotiator&) = delete;
    ~Negotiator();

    // Looks for the answer now, without any wait.
    void dispatch();

    static constexpr std::chrono::seconds longest{60};

  private:
    void lookLater();

    Ref<STPSpecClass> service_;
    EventTasks& tasks_;
    std::function<void()> failed_;
    std::function<EventTasks::Clock::time_point()> now_;
    EventTasks::Clock::time_point begun_;
    std::chrono::milliseconds pause_{10};
    std::optional<int> task_;
};
