// Connections of the proxy: services offered, services asked for.
#include <algorithm>

#include "services/servicerouter_proxy/proxy.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/spec/service_conn_retry_handler.h"

namespace {

constexpr std::chrono::milliseconds idleEvery{250};
constexpr std::chrono::seconds connectingLasts{30};

bool fail(STPStatus& status, STPCode code, std::string text) {
    status = {std::move(text), code};
    return false;
}

// Names of files come from outside.
bool isPlainName(const std::string& name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    });
}

}  // namespace

void ServiceRouter_Proxy::offer(ServiceFactory& factory) {
    factories_.push_back(&factory);
    if (alive()) RegisterServiceList({{{factory.name()}}}, STPSend::NonBlocking);
}

void ServiceRouter_Proxy::withdraw(ServiceFactory& factory) {
    if (std::erase(factories_, &factory) == 0) return;
    if (alive()) UnregisterService({factory.name()}, STPSend::NonBlocking);
    for (auto& [number, connection] : connections_)
        if (connection.factory == &factory) connection.factory = nullptr;
}

size_t ServiceRouter_Proxy::clientCount() const {
    return static_cast<size_t>(std::count_if(connections_.begin(), connections_.end(), [](const auto& entry) {
        return entry.second.factory != nullptr;
    }));
}

// The router says which service is meant; one that doesn't can mean only the first.
ServiceFactory* ServiceRouter_Proxy::factoryFor(const std::vector<std::string>& pairs) {
    for (size_t i = 0; i + 1 < pairs.size(); i += 2) {
        if (pairs[i] != router_ServicePair) continue;
        const auto found = std::find_if(factories_.begin(), factories_.end(),
                                        [&](const auto* factory) { return factory->name() == pairs[i + 1]; });
        return found == factories_.end() ? nullptr : *found;
    }
    return factories_.empty() ? nullptr : factories_.front();
}

Ref<STPSpecClass> ServiceRouter_Proxy::createFor(
    ServiceFactory* factory, const ServiceRouter_ConnectionRequestedEvent_Request& request) {
    if (!factory || connections_.contains(request.serviceRN)) return {};
    const bool taken = std::any_of(connections_.begin(), connections_.end(),
                                   [&](const auto& entry) { return entry.second.factory == factory; });
    if (taken && factory->clients() == ServiceFactory::Clients::One) return {};
    return factory->create({transport_, request.serviceRN, request.remoteRN, request.requesting_plugin_id,
                            request.name_value_pairs.data});
}

void ServiceRouter_Proxy::ConnectionRequestedEvent(
    const ServiceRouter_ConnectionRequestedEvent_Request& request) {
    const Ref<ServiceRouter_Proxy> hold(this);
    ServiceFactory* const factory = factoryFor(request.name_value_pairs.data);
    const Ref<STPSpecClass> service = createFor(factory, request);
    if (!alive()) return;
    const uint8_t accept = service ? 1 : 0;
    ConnectionAcceptedEvent({request.serviceRN, request.remoteRN, accept}, STPSend::NonBlocking);
    if (service) keepServing(request, service, *factory);
}

void ServiceRouter_Proxy::keepServing(const ServiceRouter_ConnectionRequestedEvent_Request& request,
                                      const Ref<STPSpecClass>& service, const ServiceFactory& factory) {
    prepare(*service);
    Connection& connection = connections_[request.serviceRN];
    connection.service = service;
    connection.clientRN = request.remoteRN;
    connection.serviceRN = request.serviceRN;
    connection.factory = &factory;
    if (!hooks_.tasks) {
        service->sendNegotiate(Blocking::No, nullptr);
        return;
    }
    const uint32_t number = request.serviceRN, far = request.remoteRN;
    connection.negotiator = std::make_unique<Negotiator>(service, *hooks_.tasks, [this, number, far] {
        const Ref<ServiceRouter_Proxy> hold(this);
        sendDrop(number, far);
        endConnection(number);
    });
}

// Every service of the proxy's waits and logs in the same way.
void ServiceRouter_Proxy::prepare(STPSpecClass& service) {
    if (hooks_.calls)
        service.setRetryHandler(hooks_.calls(service));
    else
        service.setRetryHandler(std::make_unique<ServiceConnRetryHandler>(service, connectingLasts));
    service.setLog(log_.get());
}

bool ServiceRouter_Proxy::connectService(STPSpecClass& service, const ServiceWish& wish, RetryHandler* given,
                                         STPStatus* givenStatus) {
    const Ref<ServiceRouter_Proxy> hold(this);
    const Ref<STPSpecClass> object(&service);
    STPStatus own;
    STPStatus& status = givenStatus ? *givenStatus : own;
    if (!ready(status)) return false;
    const auto standard = defaultHandler(connectingLasts);
    RetryHandler& retry = given ? *given : *standard;
    const auto pending = std::make_shared<PendingConnection>(PendingConnection{wish});
    if (!askForConnection(pending, retry, status) || !acceptReply(pending, status)) return false;
    const uint32_t local = pending->reply.localRN, far = pending->reply.serviceRN;
    Connection connection{object, local, far};
    const bool inProcess = pending->reply.is_shared_object != 0;
    if (inProcess) {
        if (!attachShared(connection, service, pending, status)) return false;
    } else {
        service.attach(transport_, local, far);
    }
    prepare(service);
    connections_[local] = std::move(connection);
    // A handler that was given serves the router's transport, on which nothing of a shared object comes.
    if (service.negotiate(inProcess ? service.getRetryHandler() : &retry, &status)) return true;
    dropService(service);
    return false;
}

// Puts the request in its row and waits for its answer.
bool ServiceRouter_Proxy::askForConnection(const Pending& pending, RetryHandler& retry, STPStatus& status) {
    using State = PendingConnection::State;
    pending_.push_back(pending);
    sendNext(pending->wish.name);
    if (awaitAnswer(
            &retry, [&] { return pending->state == State::Answered; }, status))
        return true;
    // An answer that still comes is that of a connection that nobody wants.
    if (pending->state == State::Sent)
        pending->state = State::Abandoned;
    else
        std::erase(pending_, pending);
    return false;
}

bool ServiceRouter_Proxy::acceptReply(const Pending& pending, STPStatus& status) {
    const char* const name = pending->wish.name.c_str();
    if (pending->reply.wasFound == 0)
        return fail(status, STPCode::Unsupported, gen_format("No program offers the service \"%s\".", name));
    if (pending->reply.wasAccepted == 0)
        return fail(status, STPCode::Unsupported,
                    gen_format("The service \"%s\" takes no further client.", name));
    return true;
}

// Sends the first request of a name, unless one of that name is under way.
void ServiceRouter_Proxy::sendNext(const std::string& name) {
    using State = PendingConnection::State;
    const auto first = std::find_if(pending_.begin(), pending_.end(),
                                    [&](const Pending& pending) { return pending->wish.name == name; });
    if (first == pending_.end() || (*first)->state != State::Queued) return;
    (*first)->state = State::Sent;
    const ServiceWish& wish = (*first)->wish;
    ServiceRouter_RequestServiceConnection_Request request;
    request.serviceName = name;
    request.providingPluginID = wish.providingPlugin;
    request.name_value_pairs.data = wish.nameValuePairs;
    request.local_only = wish.from == ServiceWish::From::ThisHost ? 1 : 0;
    request.client_cookie = wish.startCookie;
    request.client_start = wish.startCookie != 0 ? 1 : 0;
    request.no_reuse = options_.reuse == ServiceRouterOptions::Reuse::New ? 1 : 0;
    RequestServiceConnection(request, STPSend::NonBlocking);
}

void ServiceRouter_Proxy::ConnectionReplyEvent(const ServiceRouter_ConnectionReplyEvent_Request& request) {
    using State = PendingConnection::State;
    const auto found = std::find_if(pending_.begin(), pending_.end(), [&](const Pending& pending) {
        return pending->wish.name == request.serviceName && pending->state != State::Queued;
    });
    const Pending pending = found == pending_.end() ? nullptr : *found;
    if (pending) pending_.erase(found);
    if (pending && pending->state == State::Sent) {
        pending->state = State::Answered;
        pending->reply = request;
    } else if (request.wasAccepted != 0) {
        sendDrop(request.localRN, request.serviceRN);
    }
    sendNext(request.serviceName);
}

bool ServiceRouter_Proxy::attachShared(Connection& connection, STPSpecClass& service, const Pending& pending,
                                       STPStatus& status) {
    const std::string& name = pending->wish.name;
    if (!isPlainName(name))
        return fail(status, STPCode::Unsupported, gen_format("\"%s\" names no shared object.", name.c_str()));
    const std::string directory =
        options_.directory.empty() ? path_directory(path_find_program("svc_router")) : options_.directory;
    auto library = hooks_.openLibrary(path_join(path_join(directory, "services"), name + ".so"), status);
    connection.shared = library ? SharedService::start(std::move(library), name, status) : nullptr;
    if (!connection.shared) return false;
    const uint32_t local = connection.clientRN, far = service.getRemoteId();
    connection.serviceRN = far;
    service.attach(connection.shared->transport(), local, far);
    if (!connection.shared->connect(local, far, status)) return false;
    if (hooks_.tasks) {
        SharedService* const shared = connection.shared.get();
        connection.idleTask = hooks_.tasks->Add(idleEvery, EventTasks::Clock::now(), [shared] {
            shared->driveIdle();
            return true;
        });
    }
    return true;
}

void ServiceRouter_Proxy::dropService(STPSpecClass& service) {
    const Ref<ServiceRouter_Proxy> hold(this);
    const auto found = std::find_if(connections_.begin(), connections_.end(), [&](const auto& entry) {
        return entry.second.service.get() == &service;
    });
    if (found == connections_.end()) return;
    const uint32_t local = found->first;
    const Connection& connection = found->second;
    if (!connection.shared)
        sendDrop(local, local == connection.clientRN ? connection.serviceRN : connection.clientRN);
    endConnection(local);
}

void ServiceRouter_Proxy::sendDrop(uint32_t localRN, uint32_t farRN) {
    if (alive()) DropServiceConnection({localRN, farRN}, STPSend::NonBlocking);
}

void ServiceRouter_Proxy::ConnectionDroppedEvent(
    const ServiceRouter_ConnectionDroppedEvent_Request& request) {
    const Ref<ServiceRouter_Proxy> hold(this);
    for (const uint32_t number : {request.serviceRN, request.remoteRN})
        if (connections_.contains(number)) endConnection(number);
}

// What hangs on the connection goes only when its service has been told: a call of it may be under way.
void ServiceRouter_Proxy::endConnection(uint32_t localRN) {
    auto node = connections_.extract(localRN);
    if (node.empty()) return;
    Connection& connection = node.mapped();
    if (connection.idleTask && hooks_.tasks) hooks_.tasks->Remove(*connection.idleTask);
    connection.negotiator.reset();
    connection.service->setConnectionDown();
    for (ConnectionDiedListener* listener : std::vector(listeners_))
        if (std::find(listeners_.begin(), listeners_.end(), listener) != listeners_.end())
            listener->connectionDied(localRN);
}
