#include "shared/libcxxutil/retry_handler.h"

#include <algorithm>
#include <utility>

namespace {

std::optional<RetryHandler::Clock::time_point>& deadline() {
    static std::optional<RetryHandler::Clock::time_point> moment;
    return moment;
}

}  // namespace

RetryHandler::RetryHandler(std::optional<std::chrono::milliseconds> limit, Now now)
    : limit_(limit), now_(std::move(now)) {}

void RetryHandler::SetDeadline(std::optional<Clock::time_point> moment) {
    deadline() = moment;
}

void RetryHandler::start() {
    if (limit_) restart();
}

bool RetryHandler::keepTrying() {
    for (const auto& goesOn : conditions_)
        if (!goesOn()) return false;
    const auto left = TimeLeft();
    return !left || *left > std::chrono::milliseconds(0);
}

std::optional<std::chrono::milliseconds> RetryHandler::TimeLeft() const {
    if (!limit_) return std::nullopt;
    auto left = *limit_ - SinceStart();
    if (deadline()) left = std::min<std::chrono::nanoseconds>(left, *deadline() - now_());
    return std::chrono::ceil<std::chrono::milliseconds>(left);
}
