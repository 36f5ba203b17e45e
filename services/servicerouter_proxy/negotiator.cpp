#include "services/servicerouter_proxy/negotiator.h"

#include <algorithm>

#include "shared/stp_transport/spec/service_conn_retry_handler.h"

namespace {

constexpr std::chrono::milliseconds longestPause{1000};

}  // namespace

Negotiator::Negotiator(Ref<STPSpecClass> service, EventTasks& tasks, std::function<void()> failed,
                       std::function<EventTasks::Clock::time_point()> now)
    : service_(std::move(service)),
      tasks_(tasks),
      failed_(std::move(failed)),
      now_(std::move(now)),
      begun_(now_()) {
    service_->sendNegotiate(STPSpecClass::Blocking::No, nullptr);
    lookLater();
}

Negotiator::~Negotiator() {
    if (task_) tasks_.Remove(*task_);
}

void Negotiator::lookLater() {
    task_ = tasks_.Once(pause_, now_(), [this] {
        task_.reset();
        dispatch();
        return true;
    });
    pause_ = std::min(pause_ * 2, longestPause);
}

void Negotiator::dispatch() {
    ServiceConnRetryHandler atOnce(*service_, std::chrono::milliseconds(0));
    if (service_->awaitTags(&atOnce) || task_) return;
    const auto failed = failed_;  // it may end this
    if (service_->localUp() && service_->remoteUp() && now_() - begun_ < longest)
        lookLater();
    else
        failed();
}
