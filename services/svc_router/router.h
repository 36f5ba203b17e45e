// The service router: plug-ins register their services here, are connected with each other, are told when a
// far end is gone, and have other plug-ins started. Packets of connections are handed on unread.
//
// One thread; nothing here waits for a plug-in. One that reads nothing, or dies in whatever state, costs the
// others no more than their connections with it.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "services/servicerouter_proxy/proxy.h"
#include "services/svc_router/connection_table.h"
#include "services/svc_router/plugin_starts.h"
#include "services/svc_router/router_plugin.h"
#include "shared/libcxxutil/event_tasks.h"
#include "shared/libcxxutil/watches.h"
#include "shared/stp_transport/socket_listener.h"

struct RouterSettings {
    uint16_t port = 0;                // where it waits, as plug-ins are told
    std::string sharedServices = {};  // the directory of services that live in shared objects; empty for none
    std::string log = {}, internalLog = {};  // files; empty for none
    EventTasks* tasks = nullptr;             // must be there, as the watches; both outlive the router
    Watches* watches = nullptr;
};

class Router : public RouterFloor {
  public:
    explicit Router(RouterSettings settings);
    ~Router() override;
    Router(const Router&) = delete;
    Router& operator=(const Router&) = delete;

    // A plug-in that has connected. Its number.
    uint32_t add(Ref<STPTransport> transport);
    // Nobody is connected, and nobody is about to.
    bool idle() const { return plugins_.empty() && !starts_.anyPending(); }
    size_t pluginCount() const { return plugins_.size(); }
    const ConnectionTable& connections() const { return connections_; }

    // From the plug-ins.
    STPRoute routeOf(const RouterPlugin& from, uint32_t firstId, uint32_t secondId) override;
    void introduce(RouterPlugin& plugin) override;
    void registered(RouterPlugin& plugin) override;
    void startEvent(RouterPlugin& from, const ServiceRouter_StartPluginEvent_Request& request) override;
    void connect(RouterPlugin& client,
                 const ServiceRouter_RequestServiceConnection_Request& request) override;
    void accepted(RouterPlugin& from, const ServiceRouter_ConnectionAcceptedEvent_Request& request) override;
    void drop(RouterPlugin& from, const ServiceRouter_DropServiceConnection_Request& request) override;
    void launch(RouterPlugin& from, const ServiceRouter_RequestPluginLaunch_Request& request) override;
    void connectOut(RouterPlugin& from, const ServiceRouter_RequestPluginConnect_Request& request) override;
    void locate(RouterPlugin& from) override;
    void idForService(RouterPlugin& from, const std::string& service) override;
    void reserve(RouterPlugin& from, uint32_t count) override;
    void releaseNumbers(RouterPlugin& from, uint32_t first) override;
    void askValue(RouterPlugin& from,
                  const ServiceRouter_RequestValueOfNameOnPlugin_Request& request) override;
    void answerValue(RouterPlugin& from,
                     const ServiceRouter_ValueOfNameOnPluginResponseEvent_Request& request) override;
    void log(const std::string& entry) override;
    void lost(RouterPlugin& plugin) override;

  private:
    struct Plugin {
        Ref<RouterPlugin> service;
        std::unique_ptr<STPSocketListener> listener;
    };
    // A value that was asked of a plug-in, by the number that it is asked under.
    struct Question {
        uint32_t asker = 0, askerCookie = 0, target = 0;
        std::string name;
    };

    RouterPlugin* find(uint32_t plugin);
    RouterPlugin* providerFor(const RouterPlugin& client,
                              const ServiceRouter_RequestServiceConnection_Request& request,
                              uint32_t providing);
    bool mayProvide(const RouterPlugin& candidate, const RouterPlugin& client,
                    const ServiceRouter_RequestServiceConnection_Request& request) const;
    bool isSharedObject(const std::string& service) const;
    void answer(RouterPlugin& client, const std::string& service, const RouterConnection& connection,
                bool accepted);
    void refuse(RouterPlugin& client, const std::string& service);
    void endConnectionsOf(RouterPlugin& plugin);
    void endQuestionsOf(uint32_t plugin);
    void tellStart(uint32_t launcher, uint32_t launcherCookie, uint32_t plugin, const std::string& problem);
    void startFailed(const PluginStart& start, const std::string& problem);
    void retryWaiting(PluginStart& start);
    void lookAtStarts();
    void sweepLater();

    RouterSettings settings_;
    std::map<uint32_t, Plugin> plugins_;  // in the order of their coming
    std::vector<Plugin> gone_;
    ConnectionTable connections_;
    PluginStarts starts_;
    std::map<uint32_t, Question> questions_;
    std::unique_ptr<STPLog> log_, internalLog_;
    uint32_t lastPlugin_ = 0, lastQuestion_ = 0;
    std::optional<int> sweepTask_, startsTask_;
};
