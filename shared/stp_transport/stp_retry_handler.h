// Waiting on a transport where there are no windows.
#pragma once

#include "shared/libcxxutil/retry_handler.h"
#include "shared/stp_transport/transport.h"

// Serves the transport, and goes on as long as it is connected (or still waits for its client) and its status
// shows no failure.
class STPRetryHandler : public RetryHandler {
  public:
    // Holds the transport; one that is null makes keepTrying false and every wait a nap of 50 ms.
    explicit STPRetryHandler(Ref<STPTransport> transport,
                             std::optional<std::chrono::milliseconds> limit = std::nullopt,
                             Now now = Clock::now, PollFunction poll = watches_Poll);
    bool keepTrying() override;
    void wait() override;

  protected:
    STPTransport* transport() const { return transport_.get(); }

  private:
    Ref<STPTransport> transport_;
    PollFunction poll_;
};

// Its limit is a thousand seconds above the number that it is given: callers' numbers rest on that.
class TimeoutSTPRetryHandler : public STPRetryHandler {
  public:
    TimeoutSTPRetryHandler(Ref<STPTransport> transport, std::chrono::milliseconds timeout,
                           Now now = Clock::now, PollFunction poll = watches_Poll);
};
