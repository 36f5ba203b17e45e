// Waits for a program that was started to connect, where there are no windows.
#pragma once

#include "shared/stp_transport/stp_retry_handler.h"

class LaunchRetryHandler : public STPRetryHandler {
  public:
    using STPRetryHandler::STPRetryHandler;
    // In short turns: that the program has ended is not to be seen on the socket.
    void wait() override { transport()->serviceOnce(std::chrono::milliseconds(100)); }
};
