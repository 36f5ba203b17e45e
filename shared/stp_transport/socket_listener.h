// Serves a transport from a loop that watches descriptors: no wait of its own, and no look at a socket that
// has nothing to say.
#pragma once

#include <functional>

#include "shared/libcxxutil/event_tasks.h"
#include "shared/libcxxutil/watches.h"
#include "shared/stp_transport/transport.h"

class STPSocketListener {
  public:
    // Watches the transport's descriptor as long as this lives. The watches and the tasks outlive it.
    STPSocketListener(Ref<STPTransport> transport, Watches& watches, EventTasks& tasks,
                      std::function<EventTasks::Clock::time_point()> now = EventTasks::Clock::now);
    STPSocketListener(const STPSocketListener&) = delete;
    STPSocketListener& operator=(const STPSocketListener&) = delete;
    ~STPSocketListener();

  private:
    void update();
    void served();

    Ref<STPTransport> transport_;
    Watches& watches_;
    EventTasks& tasks_;
    std::function<EventTasks::Clock::time_point()> now_;
    std::optional<int> watched_;
    Watch input_, output_;
    std::optional<int> again_;  // the task that offers refused messages again
};
