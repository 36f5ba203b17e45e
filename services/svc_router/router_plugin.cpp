#include "services/svc_router/router_plugin.h"

#include <utility>

namespace {

constexpr size_t mostServices = 1024;  // of a plug-in

}  // namespace

void RouterPlugin::begin(Ref<STPTransport> transport) {
    transport->setForwarder(this);
    attach(std::move(transport));
    sendNegotiate(Blocking::No, nullptr);
}

void RouterPlugin::end() {
    const Ref<STPTransport> last(transport());
    if (!last) return;
    last->setForwarder(nullptr);
    last->close();
}

bool RouterPlugin::isOnThisHost() const {
    return transport()->peerName().empty() || transport()->peerName().starts_with("127.");
}

void RouterPlugin::sent(bool enqueued) {
    if (!enqueued && negotiated() && transport()->bound()) transport()->close();
}

void RouterPlugin::introduce() {
    if (!std::exchange(introduced_, true)) router_.introduce(*this);
}

void RouterPlugin::RegisterServiceList(const ServiceRouter_RegisterServiceList_Request& request) {
    introduce();
    for (const std::string& name : request.name_list.data)
        if (!name.empty() && services_.size() < mostServices) services_.insert(name);
    router_.registered(*this);
}

void RouterPlugin::UnregisterService(const ServiceRouter_UnregisterService_Request& request) {
    services_.erase(request.serviceName);
}

void RouterPlugin::SetWorkingDir(const ServiceRouter_SetWorkingDir_Request& request) {
    introduce();
    workingDirectory_ = request.working_dir;
}

void RouterPlugin::StartPluginEvent(const ServiceRouter_StartPluginEvent_Request& request) {
    introduce();
    router_.startEvent(*this, request);
}

void RouterPlugin::RequestServiceRouterDisconnect(
    const ServiceRouter_RequestServiceRouterDisconnect_Request&) {
    transport()->close();
}
