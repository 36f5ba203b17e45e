#include "services/svc_router/router.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

std::unique_ptr<STPLog> openLog(const std::string& name) {
    if (name.empty()) return nullptr;
    std::FILE* const file = std::fopen(name.c_str(), "ae");
    if (file) return std::make_unique<TimestampedSTPFileLog>(file, STPFileLog::Owns::Yes);
    gen_warning("%s: messages are not logged: %s", name.c_str(), std::strerror(errno));
    return nullptr;
}

constexpr char hostName[] = "localhost";

}  // namespace

Router::Router(RouterSettings settings)
    : settings_(std::move(settings)),
      log_(openLog(settings_.log)),
      internalLog_(openLog(settings_.internalLog)) {}

Router::~Router() {
    if (sweepTask_) settings_.tasks->Remove(*sweepTask_);
    if (startsTask_) settings_.tasks->Remove(*startsTask_);
    auto plugins = std::exchange(plugins_, {});
    for (auto& [id, plugin] : plugins) gone_.push_back(std::move(plugin));
    for (Plugin& plugin : gone_) {
        plugin.listener.reset();
        plugin.service->end();
    }
}

uint32_t Router::add(Ref<STPTransport> transport) {
    const uint32_t id = ++lastPlugin_;
    Plugin& plugin = plugins_[id];
    plugin.service = ref_Make<RouterPlugin>(id, *this);
    plugin.service->setLog(internalLog_.get());
    plugin.service->begin(transport);
    plugin.listener = std::make_unique<STPSocketListener>(transport, *settings_.watches, *settings_.tasks);
    return id;
}

RouterPlugin* Router::find(uint32_t plugin) {
    const auto found = plugins_.find(plugin);
    return found == plugins_.end() ? nullptr : found->second.service.get();
}

// A packet goes on only over a connection that stands, from one of its ends.
STPRoute Router::routeOf(const RouterPlugin& from, uint32_t firstId, uint32_t secondId) {
    if (firstId == from.remoteId() && secondId == from.localId()) return {};
    const STPRoute nowhere{STPRoute::To::Nowhere};
    const RouterConnection* const connection = connections_.find(secondId);
    if (!connection || connection != connections_.find(firstId) || firstId == secondId ||
        connection->state != RouterConnection::State::Standing)
        return nowhere;
    const uint32_t owner = firstId == connection->clientRN ? connection->client : connection->provider;
    const uint32_t other = firstId == connection->clientRN ? connection->provider : connection->client;
    RouterPlugin* const far = find(other);
    return owner == from.id() && far ? STPRoute{STPRoute::To::Peer, far->transport()} : nowhere;
}

void Router::introduce(RouterPlugin& plugin) {
    plugin.sent(plugin.PluginId({plugin.id()}, STPSend::NonBlocking));
    if (log_) plugin.sent(plugin.StartLogging({}, STPSend::NonBlocking));
}

bool Router::mayProvide(const RouterPlugin& candidate, const RouterPlugin& client,
                        const ServiceRouter_RequestServiceConnection_Request& request) const {
    if (candidate.id() == client.id() || !candidate.services().contains(request.serviceName)) return false;
    if (request.local_only != 0 && !candidate.isOnThisHost()) return false;
    return request.no_reuse == 0 || !connections_.serves(candidate.id(), request.serviceName);
}

// The one that was asked for, else the one that has been here longest.
RouterPlugin* Router::providerFor(const RouterPlugin& client,
                                  const ServiceRouter_RequestServiceConnection_Request& request,
                                  uint32_t providing) {
    if (providing != 0) {
        RouterPlugin* const asked = find(providing);
        return asked && asked->services().contains(request.serviceName) ? asked : nullptr;
    }
    const auto found = std::find_if(plugins_.begin(), plugins_.end(), [&](const auto& entry) {
        return mayProvide(*entry.second.service, client, request);
    });
    return found == plugins_.end() ? nullptr : found->second.service.get();
}

bool Router::isSharedObject(const std::string& service) const {
    const bool plain = !service.empty() && std::all_of(service.begin(), service.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
    if (settings_.sharedServices.empty() || !plain) return false;
    return path_is_readable_file(path_join(settings_.sharedServices, service + ".so"));
}

void Router::connect(RouterPlugin& client, const ServiceRouter_RequestServiceConnection_Request& request) {
    const std::string& name = request.serviceName;
    uint32_t providing = request.providingPluginID;
    if (PluginStart* const start =
            request.client_cookie == 0 ? nullptr : starts_.findOf(client.id(), request.client_cookie)) {
        const RouterPlugin* const started = start->plugin ? find(*start->plugin) : nullptr;
        if (!started || !started->services().contains(name)) return start->waiting.push_back(request);
        providing = *start->plugin;
    }
    RouterPlugin* const provider = providerFor(client, request, providing);
    if (!provider && isSharedObject(name)) {
        const uint32_t number = connections_.reserve(client.id(), 1).value_or(0);
        client.sent(client.ConnectionReplyEvent({name, number, 1, 1, 1, 0}, STPSend::NonBlocking));
        return;
    }
    if (!provider) return refuse(client, name);
    const RouterConnection& connection = connections_.add(client.id(), provider->id(), name);
    ServiceRouter_ConnectionRequestedEvent_Request event{
        client.id(), connection.serviceRN, connection.clientRN, {{router_ServicePair, name}}};
    auto& pairs = event.name_value_pairs.data;
    pairs.insert(pairs.end(), request.name_value_pairs.data.begin(), request.name_value_pairs.data.end());
    provider->sent(provider->ConnectionRequestedEvent(event, STPSend::NonBlocking));
}

void Router::refuse(RouterPlugin& client, const std::string& service) {
    client.sent(client.ConnectionReplyEvent({service, 0, 0, 0, 0, 0}, STPSend::NonBlocking));
}

void Router::answer(RouterPlugin& client, const std::string& service, const RouterConnection& connection,
                    bool accepted) {
    const uint8_t taken = accepted ? 1 : 0;
    client.sent(client.ConnectionReplyEvent({service, connection.clientRN, 1, 0, taken, connection.serviceRN},
                                            STPSend::NonBlocking));
}

void Router::accepted(RouterPlugin& from, const ServiceRouter_ConnectionAcceptedEvent_Request& request) {
    RouterConnection* const connection = connections_.find(request.serviceRN);
    if (!connection || connection->provider != from.id() || connection->serviceRN != request.serviceRN ||
        connection->state != RouterConnection::State::Requested)
        return;
    connection->state = RouterConnection::State::Standing;
    const RouterConnection answered = *connection;
    if (request.accept == 0) connections_.remove(request.serviceRN);
    if (RouterPlugin* const client = find(answered.client))
        answer(*client, answered.service, answered, request.accept != 0);
}

// Either end may give a connection up, and names its own number first.
void Router::drop(RouterPlugin& from, const ServiceRouter_DropServiceConnection_Request& request) {
    const RouterConnection* const found = connections_.find(request.localRN);
    if (!found || (found->client != from.id() && found->provider != from.id())) return;
    const RouterConnection connection = *found;
    connections_.remove(request.localRN);
    if (RouterPlugin* const other = find(connection.otherPlugin(from.id())))
        other->sent(
            other->ConnectionDroppedEvent({connection.serviceRN, connection.clientRN}, STPSend::NonBlocking));
}

void Router::locate(RouterPlugin& from) {
    from.sent(from.LocationEvent({hostName, settings_.port}, STPSend::NonBlocking));
}

void Router::idForService(RouterPlugin& from, const std::string& service) {
    constexpr uint32_t none = 0xFFFFFFFF;
    const auto found = std::find_if(plugins_.begin(), plugins_.end(), [&](const auto& entry) {
        return entry.second.service->services().contains(service);
    });
    const uint32_t id = found == plugins_.end() ? none : found->first;
    from.sent(from.PluginIdForServiceReplyEvent({service, id}, STPSend::NonBlocking));
}

void Router::reserve(RouterPlugin& from, uint32_t count) {
    const auto first = connections_.reserve(from.id(), count);
    from.sent(from.RNBlockReservedEvent({first.value_or(0), first ? count : 0}, STPSend::NonBlocking));
}

void Router::releaseNumbers(RouterPlugin& from, uint32_t first) {
    connections_.release(from.id(), first);
}

void Router::log(const std::string& entry) {
    if (!log_) return;
    const STPLogSource source{"ServiceRouter", 1};
    log_->beginEntry(source, STPLogWay::Receive);
    log_->puts(entry);
    log_->endEntry(source, STPLogWay::Receive);
}

// The connection of a plug-in is gone, seen within its transport's work: the object goes later.
void Router::lost(RouterPlugin& plugin) {
    const auto found = plugins_.find(plugin.id());
    if (found == plugins_.end()) return;
    gone_.push_back(std::move(found->second));
    plugins_.erase(found);
    sweepLater();
    endConnectionsOf(plugin);
    endQuestionsOf(plugin.id());
    connections_.releaseAll(plugin.id());
    starts_.forgetLauncher(plugin.id());
    if (const PluginStart* const start = starts_.findByPlugin(plugin.id())) {
        if (RouterPlugin* const launcher = find(start->launcher))
            for (const auto& request : start->waiting) refuse(*launcher, request.serviceName);
        starts_.remove(start->cookie);
    }
}

void Router::endConnectionsOf(RouterPlugin& plugin) {
    for (const RouterConnection& connection : connections_.ofPlugin(plugin.id())) {
        connections_.remove(connection.clientRN);
        RouterPlugin* const other = find(connection.otherPlugin(plugin.id()));
        if (!other) continue;
        const bool asked = connection.state == RouterConnection::State::Requested;
        if (asked && connection.provider == plugin.id())
            answer(*other, connection.service, connection, false);
        else
            other->sent(other->ConnectionDroppedEvent({connection.serviceRN, connection.clientRN},
                                                      STPSend::NonBlocking));
    }
}

void Router::sweepLater() {
    if (sweepTask_) return;
    sweepTask_ = settings_.tasks->Once(std::chrono::milliseconds(0), EventTasks::Clock::now(), [this] {
        sweepTask_.reset();
        for (Plugin& plugin : std::exchange(gone_, {})) {
            plugin.listener.reset();
            plugin.service->end();
        }
        return true;
    });
}
