#include "windlib/waits/windlib_retry_handlers.h"

#include "shared/libcxxutil/report.h"

using std::chrono::milliseconds;

namespace {

constexpr milliseconds round{500};
constexpr int ticks = 4;
constexpr char terminateTitle[] = "Terminate Connection";
// The missing blank stands in the text as users know it.
constexpr char startupText[] =
    "Unable to connect to the servicerouter. Would you like to continue waiting for aconnection to be "
    "established?\n"
    "If this happens again, please contact technical support.\n"
    "Continue waiting for connection?";

}  // namespace

void wait_ProcessEvents(WaitWindows& windows, WaitWindows::Serve what) {
    if (!windows.hasDisplay()) return windows.background(round);
    if (!windows.serve(what, round)) windows.abort();
}

WindLibRetryHandler::WindLibRetryHandler(WaitWindows& windows, std::string message, const int* seconds,
                                         std::optional<milliseconds> limit, Now now)
    : RetryHandler(limit, std::move(now)),
      windows_(windows),
      message_(std::move(message)),
      seconds_(seconds) {}

WindLibRetryHandler::~WindLibRetryHandler() {
    while (handle_) WindLibRetryHandler::finish();
}

void WindLibRetryHandler::start() {
    outer_.push_back(handle_);
    handle_ = waitHandle_Make();
    windows_.began(*handle_);
    stopRequested_ = false;
    if (seconds_) SetLimit(milliseconds(1000) * *seconds_);
    RetryHandler::start();
}

bool WindLibRetryHandler::keepTrying() {
    const int* const _handle = handle_ ? &*handle_ : nullptr;
    GEN_ASSERT(_handle != NULL);
    if (windows_.quitting()) return false;
    if (!stopRequested_ && RetryHandler::keepTrying() && !waitHandle_IsStopped(*_handle)) return true;
    if (!askToGoOn()) return false;
    stopRequested_ = false;
    restart();
    return true;
}

bool WindLibRetryHandler::askToGoOn() {
    const WaitQuestion question{terminateTitle, gen_format("%s, Terminate Connection?", message_.c_str()),
                                "Continue", "Terminate"};
    const WaitAnswer answer =
        windows_.waitDialogMode() ? windows_.askModeless(*handle_, question) : windows_.ask(question);
    if (answer == WaitAnswer::Stop) return false;
    waitHandle_Resume(*handle_);
    return true;
}

void WindLibRetryHandler::finish() {
    if (!handle_) return;
    if (windows_.waitDialogMode()) windows_.closeQuestion(*handle_);
    windows_.ended(*handle_);
    waitHandle_Free(*handle_);
    handle_ = outer_.back();
    outer_.pop_back();
}

void WindLibRetryHandler::wait() {
    const int* const _handle = handle_ ? &*handle_ : nullptr;
    GEN_ASSERT(_handle != NULL);
    const bool skipped = limitsRate_ && tickCount_ == 0;
    tickCount_ = (tickCount_ + 1) % ticks;
    if (!windows_.hasDisplay() || !windows_.handlesEvents())
        windows_.background(round);
    else if (!skipped && !windows_.serve(WaitWindows::Serve::Painting, round))
        stopRequested_ = true;
    windows_.idle();
    windows_.serveTimers();
}

ServiceRouterProxyStartup_RetryHandler::ServiceRouterProxyStartup_RetryHandler(
    std::function<bool()> proxyAlive, WaitWindows& windows, milliseconds limit, Now now)
    : RetryHandler(limit, std::move(now)), proxyAlive_(std::move(proxyAlive)), windows_(windows) {}

void ServiceRouterProxyStartup_RetryHandler::start() {
    finish();
    handle_ = waitHandle_Make();
    windows_.began(*handle_);
    restart();
}

bool ServiceRouterProxyStartup_RetryHandler::keepTrying() {
    if (!proxyAlive_()) return false;
    const bool stopped = handle_ && waitHandle_IsStopped(*handle_);
    if (!stopped && SinceStart() < limit()) return true;
    if (!windows_.hasDisplay()) return false;
    if (windows_.ask({terminateTitle, startupText, "Continue", "Terminate"}) == WaitAnswer::Stop)
        return false;
    if (handle_) waitHandle_Resume(*handle_);
    restart();
    return true;
}

void ServiceRouterProxyStartup_RetryHandler::finish() {
    if (!handle_) return;
    windows_.ended(*handle_);
    waitHandle_Free(*handle_);
    handle_.reset();
}
