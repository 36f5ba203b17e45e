// Waits that keep the windows alive: painted while a call waits for its answer, with a question for the user
// when that takes too long. The loop serves the sockets of transports meanwhile, by the watches that it has
// on them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/retry_handler.h"
#include "shared/stp_transport/spec/spec_class.h"
#include "windlib/waits/wait_windows.h"

class WindLibRetryHandler : public RetryHandler {
  public:
    // seconds is looked at anew at each start, so that the limit follows a setting; null keeps the limit that
    // there is. Windows and seconds outlive the handler.
    WindLibRetryHandler(WaitWindows& windows, std::string message, const int* seconds = nullptr,
                        std::optional<std::chrono::milliseconds> limit = std::nullopt, Now now = Clock::now);
    ~WindLibRetryHandler() override;
    void start() override;
    // The question stands between a limit that is over, or a stop, and false.
    bool keepTrying() override;
    void finish() override;
    void wait() override;

    // One round in four leaves the window system alone. On by default.
    void setLimitsRate(bool on) { limitsRate_ = on; }
    void requestStop() { stopRequested_ = true; }
    // Of the innermost wait under way.
    std::optional<int> handle() const { return handle_; }

  protected:
    WaitWindows& windows() { return windows_; }

  private:
    bool askToGoOn();

    WaitWindows& windows_;
    int tickCount_ = 0;
    bool stopRequested_ = false, limitsRate_ = true;
    std::string message_;
    std::optional<int> handle_;
    std::vector<std::optional<int>> outer_;  // handles of waits further out
    const int* seconds_;
};

// Gives up without a question when the transport is gone.
class STPWindLibRetryHandler : public WindLibRetryHandler {
  public:
    STPWindLibRetryHandler(Ref<STPTransport> transport, WaitWindows& windows, std::string message,
                           const int* seconds = nullptr,
                           std::optional<std::chrono::milliseconds> limit = std::nullopt,
                           Now now = Clock::now)
        : WindLibRetryHandler(windows, std::move(message), seconds, limit, std::move(now)),
          transport_(std::move(transport)) {}
    bool keepTrying() override {
        return transport_ && transport_->bound() && WindLibRetryHandler::keepTrying();
    }

  private:
    Ref<STPTransport> transport_;
};

// One round of a wait with full dispatch of events.
void wait_ProcessEvents(WaitWindows& windows, WaitWindows::Serve what);

// The windows stay fully alive: menus work during the call.
class STPWindLibEventProcessingRetryHandler : public STPWindLibRetryHandler {
  public:
    using STPWindLibRetryHandler::STPWindLibRetryHandler;
    void wait() override { wait_ProcessEvents(windows(), served_); }
    void serves(WaitWindows::Serve what) { served_ = what; }

  private:
    WaitWindows::Serve served_ = WaitWindows::Serve::Full;
};

// Gives up when both ends of the service's virtual connection are down as well. Used within the service's own
// calls, which keep it alive.
class ConnWindLibRetryHandler : public STPWindLibRetryHandler {
  public:
    ConnWindLibRetryHandler(const STPSpecClass& service, WaitWindows& windows, std::string message,
                            const int* seconds = nullptr,
                            std::optional<std::chrono::milliseconds> limit = std::nullopt,
                            Now now = Clock::now)
        : STPWindLibRetryHandler(Ref<STPTransport>(service.transport()), windows, std::move(message), seconds,
                                 limit, std::move(now)),
          service_(service) {}
    bool keepTrying() override {
        return (service_.localUp() || service_.remoteUp()) && STPWindLibRetryHandler::keepTrying();
    }

  private:
    const STPSpecClass& service_;
};

class ConnWindLibEventProcessingRetryHandler : public ConnWindLibRetryHandler {
  public:
    using ConnWindLibRetryHandler::ConnWindLibRetryHandler;
    void wait() override { wait_ProcessEvents(windows(), served_); }
    void serves(WaitWindows::Serve what) { served_ = what; }

  private:
    WaitWindows::Serve served_ = WaitWindows::Serve::Full;
};

// Waits for the service router to answer at start-up.
class ServiceRouterProxyStartup_RetryHandler : public RetryHandler {
  public:
    // proxyAlive tells whether the link to the router is there.
    ServiceRouterProxyStartup_RetryHandler(std::function<bool()> proxyAlive, WaitWindows& windows,
                                           std::chrono::milliseconds limit, Now now = Clock::now);
    ~ServiceRouterProxyStartup_RetryHandler() override { finish(); }
    void start() override;
    bool keepTrying() override;
    void finish() override;
    void wait() override { wait_ProcessEvents(windows_, WaitWindows::Serve::Full); }

    std::optional<int> handle() const { return handle_; }

  private:
    std::function<bool()> proxyAlive_;
    WaitWindows& windows_;
    std::optional<int> handle_;
};
