#include "shared/stp_transport/socket_listener.h"

#include <utility>

namespace {

constexpr std::chrono::milliseconds offerAgain{50};

}  // namespace

STPSocketListener::STPSocketListener(Ref<STPTransport> transport, Watches& watches, EventTasks& tasks,
                                     std::function<EventTasks::Clock::time_point()> now)
    : transport_(std::move(transport)), watches_(watches), tasks_(tasks), now_(std::move(now)) {
    transport_->setInterestListener([this] { update(); });
    update();
}

STPSocketListener::~STPSocketListener() {
    transport_->setInterestListener(nullptr);
    if (again_) tasks_.Remove(*again_);
}

void STPSocketListener::update() {
    const auto descriptor = transport_->descriptor();
    if (descriptor != watched_) {
        input_.remove();
        output_.remove();
        watched_ = descriptor;
    }
    if (!descriptor) return;
    if (!transport_->wantsInput())
        input_.remove();
    else if (!input_.IsOn())
        input_ = Watch(watches_, *descriptor, WatchFor::Input, [this] {
            transport_->handleRead();
            served();
        });
    if (!transport_->wantsOutput())
        output_.remove();
    else if (!output_.IsOn())
        output_ = Watch(watches_, *descriptor, WatchFor::Output, [this] {
            transport_->handleWrite();
            served();
        });
}

// A message that its handler could not take is offered again soon, with or without new input.
void STPSocketListener::served() {
    update();
    if (again_ || transport_->census().deferred == 0) return;
    again_ = tasks_.Once(offerAgain, now_(), [this] {
        again_.reset();
        transport_->processDeferred();
        served();
        return true;
    });
}
