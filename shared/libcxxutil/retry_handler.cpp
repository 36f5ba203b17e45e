#include "shared/libcxxutil/retry_handler.h"

#include <utility>

namespace {

std::optional<RetryHandler::Clock::time_point>& deadline() {
    static std::optional<RetryHandler::Clock::time_point> moment;
    return moment;
}

}  // namespace

RetryHandler::RetryHandler(std::optional<std::chrono::milliseconds> limit, Now now)
    : limit_(limit), now_(std::move(now)) {}

void RetryHandler::setDeadline(std::optional<Clock::time_point> moment) {
    deadline() = moment;
}

void RetryHandler::start() {
    if (limit_) restart();
}

bool RetryHandler::keepTrying() {
    for (const auto& goesOn : conditions_)
        if (!goesOn()) return false;
    if (!limit_) return true;
    if (deadline() && now_() >= *deadline()) return false;
    return sinceStart() < *limit_;
}
