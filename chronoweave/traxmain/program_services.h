// What connects the window program with others: the service router and the analyzer's service there, the host
// program that started it as a plug-in, and the way into a debugger over either.
#pragma once

#include <memory>
#include <optional>

#include "chronoweave/live/debugger_link.h"
#include "chronoweave/traxmain/service_windows.h"
#include "chronoweave/traxmain/start_options.h"
#include "services/servicerouter_proxy/plugin_client.h"
#include "services/servicerouter_proxy/proxy.h"
#include "services/tra/tra_service_factory.h"

class QtEventService;
class WaitWindows;

class ProgramServices {
  public:
    // Both outlive this. make gives a new window that is shown, empty.
    ProgramServices(QtEventService& events, WaitWindows& waits, std::function<CanvasWindow*()> make);
    ~ProgramServices();
    ProgramServices(const ProgramServices&) = delete;
    ProgramServices& operator=(const ProgramServices&) = delete;

    // Joins the router that the options name and offers the service there. False when it can't be reached.
    bool joinRouter(const ServiceRouterOptions& options, const std::string& title);
    // Connects to the plug-in host. One that can't be reached, or is of no use, is given up with a message.
    void connectPluginHost(uint16_t port);
    // In service mode: the router is there, and somebody uses the windows, or will.
    bool goesOn();
    laDebugger& debugger() { return *debugger_; }

  private:
    DebuggerSurroundings debuggerSurroundings();
    void endWithoutClients();

    QtEventService& events_;
    WaitWindows& waits_;
    ServiceWindows windows_;
    std::unique_ptr<DebuggerLink> debugger_;
    PluginClientHost pluginHost_;
    std::unique_ptr<PluginClient> plugin_;
    Ref<ServiceRouter_Proxy> proxy_;
    std::unique_ptr<TRA_ServiceFactory> factory_, titleFactory_;
    bool endsWithLastClient_ = false;
    std::optional<int> firstClientTask_;
};
