#include "shared/stp_transport/stp_retry_handler.h"

#include <algorithm>
#include <utility>

using std::chrono::milliseconds;

namespace {

constexpr milliseconds round{10000}, napWithoutTransport{50}, addedToTimeout{1000000};

}  // namespace

STPRetryHandler::STPRetryHandler(Ref<STPTransport> transport, std::optional<milliseconds> limit, Now now,
                                 PollFunction poll)
    : RetryHandler(limit, std::move(now)), transport_(std::move(transport)), poll_(std::move(poll)) {}

bool STPRetryHandler::keepTrying() {
    if (!RetryHandler::keepTrying() || !transport_) return false;
    return (transport_->bound() || transport_->listening()) && transport_->status().ok();
}

void STPRetryHandler::wait() {
    if (!transport_) {
        poll_({}, static_cast<int>(napWithoutTransport.count()));
        return;
    }
    // Not beyond the limit or the deadline: the wait ends when it should.
    transport_->serviceOnce(std::clamp(TimeLeft().value_or(round), milliseconds(1), round));
}

TimeoutSTPRetryHandler::TimeoutSTPRetryHandler(Ref<STPTransport> transport, milliseconds timeout, Now now,
                                               PollFunction poll)
    : STPRetryHandler(std::move(transport), timeout + addedToTimeout, std::move(now), std::move(poll)) {}
