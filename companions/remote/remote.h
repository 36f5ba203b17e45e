// Steers the windows of the analyzer from outside: a client of its service.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "companions/remote/remote_options.h"
#include "services/generated/tra_service_client_impl.h"
#include "services/servicerouter_proxy/proxy.h"
#include "shared/libcxxutil/event_loop.h"

// Writes a line of output.
using RemoteOutput = std::function<void(const std::string& line)>;

// The client's side of the service: a debugger that says what it is asked.
class RemoteClient : public TRA_client_Impl {
  public:
    RemoteClient(uint32_t abilities, RemoteOptions::Form form, RemoteOutput print)
        : abilities_(abilities), form_(form), print_(std::move(print)) {}

  protected:
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request& request) override;
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request& request) override;
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request& request) override;

  private:
    uint32_t abilities_;
    RemoteOptions::Form form_;
    RemoteOutput print_;
};

class Remote {
  public:
    // window: the program that is started where none serves; empty for none. client makes the client's side;
    // the loop serves it and outlives this.
    Remote(RemoteOptions options, std::string window, RemoteOutput print, EventLoop& loop,
           std::function<Ref<TRA_client_Impl>()> client);
    ~Remote();
    Remote(const Remote&) = delete;
    Remote& operator=(const Remote&) = delete;

    // Does what the options say.
    Result run();

  private:
    Result join();
    Result connect();
    void handOnDisplay();
    Result connectStarted();
    Result open();
    Result close();
    Result list();
    void listen();
    void printWindow(const std::string& line) const;
    std::unique_ptr<RetryHandler> patience(const STPSpecClass& service) const;
    Result failure(const STPStatus& status) const;

    RemoteOptions options_;
    std::string window_;
    RemoteOutput print_;
    EventLoop& loop_;
    std::function<Ref<TRA_client_Impl>()> makeClient_;
    Ref<ServiceRouter_Proxy> proxy_;
    Ref<TRA_client_Impl> client_;
};

// What a script reads.
std::string remote_Json(const std::vector<std::pair<std::string, std::string>>& texts,
                        const std::vector<std::pair<std::string, uint64_t>>& numbers);
