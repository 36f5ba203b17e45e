// A process's connection to the service router: it finds the router or starts it, joins it, offers services
// there, and asks it for connections to the services of others.
//
//     const auto proxy = ref_Make<ServiceRouter_Proxy>(options, hooks);
//     proxy->offer(factory);
//     if (!proxy->join(ServiceRouter_Proxy::WithoutRouter::Start, &status)) ...
//     proxy->connectService(*client, {.name = "TRA"}, nullptr, &status);
//
// All its connections share one transport, on which each end of each has a number that the router gave it (an
// RN). One thread; calls that wait serve the transport meanwhile.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "services/generated/servicerouter_service_plugin_impl.h"
#include "services/servicerouter_proxy/name_value_resolver.h"
#include "services/servicerouter_proxy/negotiator.h"
#include "services/servicerouter_proxy/service_factory.h"
#include "services/servicerouter_proxy/shared_service.h"
#include "services/servicerouter_proxy/sr_options.h"
#include "shared/libcxxutil/svc_event_loop.h"
#include "shared/stp_transport/socket_listener.h"

// What the process gives the proxy of itself. All of it outlives the proxy.
struct ServiceRouterHooks {
    // Of the program's loop; both or none. With none the proxy is served within waits alone.
    Watches* watches = nullptr;
    EventTasks* tasks = nullptr;
    // How to wait: at start-up, and for answers of services. Empty: without windows, half a minute long.
    std::function<std::unique_ptr<RetryHandler>(Ref<STPTransport>)> joining = {};
    std::function<std::unique_ptr<RetryHandler>(const STPSpecClass&)> calls = {};
    // Opens the shared object of a service.
    std::function<std::unique_ptr<SharedLibrary>(const std::string& path, STPStatus&)> openLibrary =
        sharedLibrary_Open;
    STPTransportOptions transport = {};
};

// Is told of every connection that ends, by this side's number.
class ConnectionDiedListener {
  public:
    virtual ~ConnectionDiedListener() = default;
    virtual void connectionDied(uint32_t localRN) = 0;
};

// What a service is asked for with.
struct ServiceWish {
    std::string name;
    uint32_t providingPlugin = 0;  // 0: any
    std::vector<std::string> nameValuePairs = {};
    enum class From { Anywhere, ThisHost };
    From from = From::Anywhere;
    // Of a plug-in that launchPlugin is starting: the answer waits until it offers the service. 0: none.
    uint32_t startCookie = 0;
};

class ServiceRouter_Proxy : public ServiceRouter_plugin_Impl, public LoopLink {
  public:
    explicit ServiceRouter_Proxy(ServiceRouterOptions options, ServiceRouterHooks hooks = {});

    enum class WithoutRouter { Fail, Start };
    // Joins the router that the options name. Where they name none: the user's shared one, or one that is
    // started. Failure has its text in the status and on the error stream.
    bool join(WithoutRouter otherwise, STPStatus* status = nullptr);
    // Over a transport that leads to a router.
    bool joinOver(Ref<STPTransport> transport, STPStatus* status = nullptr);
    // Gives up all connections and the one to the router. Nothing is left of the proxy's on any transport.
    void leave();

    // The router is there.
    bool alive() override;
    void serve() override;
    const Ref<STPTransport>& routerTransport() const { return transport_; }
    // By the number that the router gave; 0 before.
    uint32_t pluginId() const { return pluginId_; }

    // Offers a service from now on, before or after joining. The factory outlives the proxy, or is withdrawn.
    void offer(ServiceFactory& factory);
    // Its clients keep what they have.
    void withdraw(ServiceFactory& factory);
    // How many clients have one of the services offered.
    size_t clientCount() const;

    // Connects the object, which is not attached yet, to a service and negotiates. It is kept alive, and its
    // connection goes down when the far end does. Waits; the handler may be null.
    bool connectService(STPSpecClass& service, const ServiceWish& wish, RetryHandler* retry,
                        STPStatus* status = nullptr);
    // The same with another router.
    bool connectServiceAt(const std::string& host, uint16_t port, STPSpecClass& service,
                          const ServiceWish& wish, RetryHandler* retry, STPStatus* status = nullptr);
    // Ends the connection of an object of this proxy's; nothing for any other.
    void dropService(STPSpecClass& service);

    // Who starts a plug-in: the router, or this process when the router asks it back.
    enum class StartedBy { Router, ThisProcess };
    // Has another program started, which then joins the router. A cookie, by which it is asked for; 0 on
    // failure.
    uint32_t launchPlugin(const std::vector<std::string>& argv, const std::string& workingDirectory,
                          StartedBy by, STPStatus* status = nullptr);
    // What programs that the router starts for this one have in their environment, from now on.
    bool setEnvironment(const std::string& name, const std::string& value, STPStatus* status = nullptr);
    // The number of the plug-in, when it has joined; nothing with the reason in the status.
    std::optional<uint32_t> awaitPlugin(uint32_t cookie, RetryHandler* retry, STPStatus* status = nullptr);

    // Has the router connect to a program that waits on a port of this host, as if that had joined by itself.
    bool connectPlugin(uint16_t port, RetryHandler* retry, STPStatus* status = nullptr);

    // Questions to the router. Nothing on failure, with the reason in the status.
    std::optional<uint32_t> pluginOfService(const std::string& name, RetryHandler* retry,
                                            STPStatus* status = nullptr);
    std::optional<std::string> valueOnPlugin(uint32_t plugin, const std::string& name, RetryHandler* retry,
                                             STPStatus* status = nullptr);
    struct Location {
        std::string host;
        uint32_t port = 0;
    };
    std::optional<Location> location(RetryHandler* retry, STPStatus* status = nullptr);
    // Numbers for local use, which the router gives to nobody else: the first of so many.
    std::optional<uint32_t> reserveNumbers(uint32_t count, RetryHandler* retry, STPStatus* status = nullptr);
    void releaseNumbers(uint32_t first);

    // What others may ask this process by name.
    NameValueResolver& names() { return names_; }
    void addListener(ConnectionDiedListener& listener) { listeners_.push_back(&listener); }
    void removeListener(ConnectionDiedListener& listener) { std::erase(listeners_, &listener); }

    void connectionLost() override;

  protected:
    ~ServiceRouter_Proxy() override;

    void ConnectionRequestedEvent(const ServiceRouter_ConnectionRequestedEvent_Request& request) override;
    void ConnectionReplyEvent(const ServiceRouter_ConnectionReplyEvent_Request& request) override;
    void ConnectionDroppedEvent(const ServiceRouter_ConnectionDroppedEvent_Request& request) override;
    void LocationEvent(const ServiceRouter_LocationEvent_Request& request) override;
    void PluginId(const ServiceRouter_PluginId_Request& request) override;
    void PluginIdForServiceReplyEvent(
        const ServiceRouter_PluginIdForServiceReplyEvent_Request& request) override;
    void PluginConnectedEvent(const ServiceRouter_PluginConnectedEvent_Request& request) override;
    void StartPlugin(const ServiceRouter_StartPlugin_Request& request) override;
    void StartLogging(const ServiceRouter_StartLogging_Request& request) override;
    void RNBlockReservedEvent(const ServiceRouter_RNBlockReservedEvent_Request& request) override;
    void ForwardedRequestValueOfNameOnPlugin(
        const ServiceRouter_ForwardedRequestValueOfNameOnPlugin_Request& request) override;
    void ValueOfNameOnPluginEvent(const ServiceRouter_ValueOfNameOnPluginEvent_Request& request) override;

  private:
    // A connection that stands, by this side's number.
    struct Connection {
        Ref<STPSpecClass> service;
        uint32_t clientRN = 0, serviceRN = 0;
        const ServiceFactory* factory = nullptr;  // when this side serves
        std::unique_ptr<Negotiator> negotiator = {};
        std::unique_ptr<SharedService> shared = {};
        std::optional<int> idleTask = {};  // of the shared object
    };
    // A request for a connection. The router's answer bears the name alone, so one of a name is sent at a
    // time.
    struct PendingConnection {
        ServiceWish wish;
        enum class State { Queued, Sent, Answered, Abandoned } state = State::Queued;
        ServiceRouter_ConnectionReplyEvent_Request reply = {};
    };
    using Pending = std::shared_ptr<PendingConnection>;

    // Joining.
    bool findTransport(WithoutRouter otherwise, STPStatus& status);
    bool connectRouter(const std::string& host, uint16_t port, STPStatus& status);
    bool startRouter(STPStatus& status);
    std::string routerProgram() const;
    std::vector<std::string> routerArguments(const std::string& program) const;
    bool introduce(RetryHandler* retry, STPStatus& status);
    std::unique_ptr<RetryHandler> joiningHandler(const Ref<STPTransport>& transport) const;
    void openLog();
    // Connections.
    Ref<STPSpecClass> createFor(ServiceFactory* factory,
                                const ServiceRouter_ConnectionRequestedEvent_Request& request);
    ServiceFactory* factoryFor(const std::vector<std::string>& pairs);
    void keepServing(const ServiceRouter_ConnectionRequestedEvent_Request& request,
                     const Ref<STPSpecClass>& service, const ServiceFactory& factory);
    void prepare(STPSpecClass& service);
    void sendNext(const std::string& name);
    bool askForConnection(const Pending& pending, RetryHandler& retry, STPStatus& status);
    bool acceptReply(const Pending& pending, STPStatus& status);
    bool attachShared(Connection& connection, STPSpecClass& service, const Pending& pending,
                      STPStatus& status);
    void endConnection(uint32_t localRN);
    void sendDrop(uint32_t localRN, uint32_t farRN);
    // Questions.
    bool ready(STPStatus& status) const;
    std::unique_ptr<RetryHandler> defaultHandler(std::chrono::milliseconds limit) const;
    bool awaitAnswer(RetryHandler* retry, const std::function<bool()>& done, STPStatus& status);

    ServiceRouterOptions options_;
    ServiceRouterHooks hooks_;
    Ref<STPTransport> transport_;
    std::unique_ptr<STPSocketListener> listener_;
    std::vector<ServiceFactory*> factories_;
    std::map<uint32_t, Connection> connections_;
    std::vector<Pending> pending_;
    std::vector<ConnectionDiedListener*> listeners_;
    std::map<std::string, Ref<ServiceRouter_Proxy>> others_;  // by host and port
    std::map<uint32_t, uint32_t> numberBlocks_;               // reserved: the first, how many
    std::unique_ptr<STPLog> log_;
    NameValueResolver names_;
    uint32_t pluginId_ = 0, lastCookie_ = 0;
    bool joined_ = false;

    // Answers that are waited for.
    std::map<uint32_t, ServiceRouter_PluginConnectedEvent_Request> started_;                    // by cookie
    std::map<uint32_t, std::optional<ServiceRouter_ValueOfNameOnPluginEvent_Request>> values_;  // by cookie
    std::map<std::string, uint32_t> pluginIds_;                                                 // by service
    std::optional<Location> location_;
    std::optional<uint32_t> numbersReserved_;
};

// The pair by which the router tells which service a connection is for.
inline constexpr char router_ServicePair[] = "service";
