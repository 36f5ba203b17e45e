#include "services/svc_router/router_plugin.h"

#include <string_view>
#include <utility>

namespace {

constexpr size_t mostServices = 1024;  // of a plug-in
constexpr size_t mostVariables = 256;
constexpr size_t longestValue = 32768;

bool isVariable(const std::string& name, const std::string& value) {
    constexpr std::string_view noPartOfName("=\0", 2);
    return !name.empty() && name.find_first_of(noPartOfName) == name.npos && value.find('\0') == value.npos &&
           name.size() + value.size() <= longestValue;
}

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

void RouterPlugin::SetEnvironmentVariable(const ServiceRouter_SetEnvironmentVariable_Request& request) {
    if (!isVariable(request.name, request.value)) return;
    if (environment_.size() < mostVariables || environment_.contains(request.name))
        environment_[request.name] = request.value;
}

std::vector<std::string> RouterPlugin::environment() const {
    std::vector<std::string> all;
    for (const auto& [name, value] : environment_) all.push_back(name + '=' + value);
    return all;
}

void RouterPlugin::StartPluginEvent(const ServiceRouter_StartPluginEvent_Request& request) {
    introduce();
    router_.startEvent(*this, request);
}

void RouterPlugin::RequestServiceRouterDisconnect(
    const ServiceRouter_RequestServiceRouterDisconnect_Request&) {
    transport()->close();
}
