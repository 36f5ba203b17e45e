// Waiting on a service where there are no windows.
#pragma once

#include "shared/stp_transport/spec/spec_class.h"
#include "shared/stp_transport/stp_retry_handler.h"

// Gives up when both ends of the service's virtual connection are down. Does not keep the service alive: it
// is used within the service's own calls.
class ServiceConnRetryHandler : public STPRetryHandler {
  public:
    explicit ServiceConnRetryHandler(const STPSpecClass& service,
                                     std::optional<std::chrono::milliseconds> limit = std::nullopt,
                                     Now now = Clock::now)
        : STPRetryHandler(Ref<STPTransport>(service.transport()), limit, std::move(now)), service_(service) {}
    bool keepTrying() override {
        return (service_.localUp() || service_.remoteUp()) && STPRetryHandler::keepTrying();
    }

  private:
    const STPSpecClass& service_;
};
