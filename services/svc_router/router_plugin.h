// The router's side of its connection with one plug-in: what comes goes to the router, with who sent it.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "services/generated/servicerouter_service_router_impl.h"

class RouterPlugin;

// What a plug-in's messages ask of the router.
class RouterFloor {
  public:
    virtual ~RouterFloor() = default;
    virtual STPRoute routeOf(const RouterPlugin& from, uint32_t firstId, uint32_t secondId) = 0;
    // The first message of the plug-in has come: it can be talked to.
    virtual void introduce(RouterPlugin& plugin) = 0;
    // Its services have changed.
    virtual void registered(RouterPlugin& plugin) = 0;
    virtual void startEvent(RouterPlugin& from, const ServiceRouter_StartPluginEvent_Request& request) = 0;
    virtual void connect(RouterPlugin& client,
                         const ServiceRouter_RequestServiceConnection_Request& request) = 0;
    virtual void accepted(RouterPlugin& from,
                          const ServiceRouter_ConnectionAcceptedEvent_Request& request) = 0;
    virtual void drop(RouterPlugin& from, const ServiceRouter_DropServiceConnection_Request& request) = 0;
    virtual void launch(RouterPlugin& from, const ServiceRouter_RequestPluginLaunch_Request& request) = 0;
    virtual void connectOut(RouterPlugin& from,
                            const ServiceRouter_RequestPluginConnect_Request& request) = 0;
    virtual void locate(RouterPlugin& from) = 0;
    virtual void idForService(RouterPlugin& from, const std::string& service) = 0;
    virtual void reserve(RouterPlugin& from, uint32_t count) = 0;
    virtual void releaseNumbers(RouterPlugin& from, uint32_t first) = 0;
    virtual void askValue(RouterPlugin& from,
                          const ServiceRouter_RequestValueOfNameOnPlugin_Request& request) = 0;
    virtual void answerValue(RouterPlugin& from,
                             const ServiceRouter_ValueOfNameOnPluginResponseEvent_Request& request) = 0;
    virtual void log(const std::string& entry) = 0;
    virtual void lost(RouterPlugin& plugin) = 0;
};

class RouterPlugin : public ServiceRouter_router_Impl, private STPForwarder {
  public:
    // The router outlives the plug-in's connection.
    RouterPlugin(uint32_t id, RouterFloor& router) : id_(id), router_(router) {}
    // Takes part in the traffic: tells its messages and hands packets on.
    void begin(Ref<STPTransport> transport);
    // Takes part in it no more.
    void end();

    uint32_t id() const { return id_; }
    const std::set<std::string>& services() const { return services_; }
    const std::string& workingDirectory() const { return workingDirectory_; }
    // Of programs that are started for it, "NAME=value" each.
    std::vector<std::string> environment() const;
    bool isOnThisHost() const;
    // A message to the plug-in was put into its outgoing buffer, or was not: one that does not read loses its
    // connection.
    void sent(bool enqueued);

    void connectionLost() override { router_.lost(*this); }

  protected:
    ~RouterPlugin() override = default;

    void RegisterServiceList(const ServiceRouter_RegisterServiceList_Request& request) override;
    void UnregisterService(const ServiceRouter_UnregisterService_Request& request) override;
    void SetWorkingDir(const ServiceRouter_SetWorkingDir_Request& request) override;
    void SetEnvironmentVariable(const ServiceRouter_SetEnvironmentVariable_Request& request) override;
    void StartPluginEvent(const ServiceRouter_StartPluginEvent_Request& request) override;
    void RequestServiceConnection(const ServiceRouter_RequestServiceConnection_Request& request) override {
        router_.connect(*this, request);
    }
    void ConnectionAcceptedEvent(const ServiceRouter_ConnectionAcceptedEvent_Request& request) override {
        router_.accepted(*this, request);
    }
    void DropServiceConnection(const ServiceRouter_DropServiceConnection_Request& request) override {
        router_.drop(*this, request);
    }
    void RequestPluginLaunch(const ServiceRouter_RequestPluginLaunch_Request& request) override {
        router_.launch(*this, request);
    }
    void RequestLocation(const ServiceRouter_RequestLocation_Request&) override { router_.locate(*this); }
    void RequestPluginIdForService(const ServiceRouter_RequestPluginIdForService_Request& request) override {
        router_.idForService(*this, request.serviceName);
    }
    void RequestPluginConnect(const ServiceRouter_RequestPluginConnect_Request& request) override {
        router_.connectOut(*this, request);
    }
    void RequestServiceRouterDisconnect(
        const ServiceRouter_RequestServiceRouterDisconnect_Request& request) override;
    void LogMessageEvent(const ServiceRouter_LogMessageEvent_Request& request) override {
        router_.log(request.entry);
    }
    void ReserveRNBlock(const ServiceRouter_ReserveRNBlock_Request& request) override {
        router_.reserve(*this, request.count);
    }
    void ReleaseRN(const ServiceRouter_ReleaseRN_Request& request) override {
        router_.releaseNumbers(*this, request.first);
    }
    void RequestValueOfNameOnPlugin(
        const ServiceRouter_RequestValueOfNameOnPlugin_Request& request) override {
        router_.askValue(*this, request);
    }
    void ValueOfNameOnPluginResponseEvent(
        const ServiceRouter_ValueOfNameOnPluginResponseEvent_Request& request) override {
        router_.answerValue(*this, request);
    }

  private:
    STPRoute routeOf(uint32_t firstId, uint32_t secondId) override {
        return router_.routeOf(*this, firstId, secondId);
    }
    void introduce();

    uint32_t id_;
    RouterFloor& router_;
    bool introduced_ = false;
    std::set<std::string> services_;
    std::string workingDirectory_;
    std::map<std::string, std::string> environment_;
};
