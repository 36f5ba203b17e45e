// What the proxy asks the router and other plug-ins, and what they ask it.
#include "services/servicerouter_proxy/proxy.h"
#include "services/servicerouter_proxy/router_messages.h"
#include "shared/libcxxutil/child_process.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/spec/service_conn_retry_handler.h"

namespace {

constexpr std::chrono::seconds answerLasts{30};
constexpr uint32_t noPlugin = 0xFFFFFFFF;

}  // namespace

std::unique_ptr<RetryHandler> ServiceRouter_Proxy::defaultHandler(std::chrono::milliseconds limit) const {
    if (hooks_.calls) return hooks_.calls(*this);
    return std::make_unique<ServiceConnRetryHandler>(*this, limit);
}

bool ServiceRouter_Proxy::ready(STPStatus& status) const {
    status.clear();
    if (joined_ && transport_ && transport_->bound()) return true;
    status = {"There is no service router.", STPCode::Connection};
    return false;
}

bool ServiceRouter_Proxy::awaitAnswer(RetryHandler* given, const std::function<bool()>& done,
                                      STPStatus& status) {
    const Ref<ServiceRouter_Proxy> hold(this);
    const auto standard = given ? nullptr : defaultHandler(answerLasts);
    transport_->waitUntil(given ? given : standard.get(), [&] { return done() || !alive(); });
    if (done()) return true;
    if (!alive())
        status = {"The connection to the service router is lost.", STPCode::PeerClosed};
    else
        status = {"The service router did not answer in time.", STPCode::TimeOut};
    return false;
}

bool ServiceRouter_Proxy::connectServiceAt(const std::string& host, uint16_t port, STPSpecClass& service,
                                           const ServiceWish& wish, RetryHandler* retry, STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    const Ref<ServiceRouter_Proxy> hold(this);
    if (host.empty()) {
        status = {"Invalid host specified.", STPCode::Misuse};
        return false;
    }
    const std::string place = gen_format("%s:%u", host.c_str(), port);
    Ref<ServiceRouter_Proxy> other = others_.contains(place) ? others_[place] : Ref<ServiceRouter_Proxy>();
    if (!other || !other->alive()) {
        ServiceRouterOptions options;
        options.host = host;
        options.port = port;
        options.namesRouter = true;
        other = ref_Make<ServiceRouter_Proxy>(options, hooks_);
        if (!other->join(WithoutRouter::Fail)) {
            status = {"Unable to connect to ServiceRouter.", STPCode::Connection};
            return false;
        }
        others_[place] = other;
    }
    return other->connectService(service, wish, retry, &status);
}

uint32_t ServiceRouter_Proxy::launchPlugin(const std::vector<std::string>& argv,
                                           const std::string& workingDirectory, StartedBy by,
                                           STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    if (argv.empty() || argv.front().empty()) {
        status = {"Invalid arguments specified when attempting to launch plugin.", STPCode::Misuse};
        return 0;
    }
    const uint8_t clientStarts = by == StartedBy::ThisProcess ? 1 : 0;
    if (!ready(status) || !RequestPluginLaunch({{argv}, ++lastCookie_, clientStarts, workingDirectory},
                                               STPSend::NonBlocking, nullptr, &status)) {
        status = {"Unable to launch plugin.", STPCode::Launch};
        return 0;
    }
    return lastCookie_;
}

bool ServiceRouter_Proxy::setEnvironment(const std::string& name, const std::string& value,
                                         STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    return ready(status) && SetEnvironmentVariable({name, value}, STPSend::NonBlocking, nullptr, &status);
}

std::optional<uint32_t> ServiceRouter_Proxy::awaitPlugin(uint32_t cookie, RetryHandler* retry,
                                                         STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    if (!ready(status)) return std::nullopt;
    if (!awaitAnswer(
            retry, [&] { return started_.contains(cookie); }, status))
        return std::nullopt;
    const auto started = std::move(started_.extract(cookie).mapped());
    if (started.success != 0) return started.plugin_id;
    status = {"Unable to launch plugin.", STPCode::Launch};
    if (!started.error_message.empty()) status.text += ' ' + started.error_message;
    return std::nullopt;
}

bool ServiceRouter_Proxy::connectPlugin(uint16_t port, RetryHandler* retry, STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    constexpr uint32_t noStart = 0;
    if (!ready(status)) return false;
    started_.erase(noStart);
    return RequestPluginConnect({"localhost", port}, STPSend::NonBlocking, nullptr, &status) &&
           awaitPlugin(noStart, retry, &status);
}

void ServiceRouter_Proxy::PluginConnectedEvent(const ServiceRouter_PluginConnectedEvent_Request& request) {
    started_[request.cookie] = request;
}

// The router asks this process to start what it wanted started.
void ServiceRouter_Proxy::StartPlugin(const ServiceRouter_StartPlugin_Request& request) {
    ChildProcess process;
    const Result started = process.start({.arguments = request.argv.data, .directory = request.working_dir},
                                         ChildProcess::AtEnd::Leave);
    if (!started) StartPluginEvent({request.cookie, 0, started.text()}, STPSend::NonBlocking);
}

std::optional<uint32_t> ServiceRouter_Proxy::pluginOfService(const std::string& name, RetryHandler* retry,
                                                             STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    if (!ready(status)) return std::nullopt;
    pluginIds_.erase(name);
    if (!RequestPluginIdForService({name}, STPSend::NonBlocking, nullptr, &status) ||
        !awaitAnswer(
            retry, [&] { return pluginIds_.contains(name); }, status))
        return std::nullopt;
    const uint32_t plugin = pluginIds_.extract(name).mapped();
    if (plugin != noPlugin) return plugin;
    status = {gen_format("No program offers the service \"%s\".", name.c_str()), STPCode::Unsupported};
    return std::nullopt;
}

void ServiceRouter_Proxy::PluginIdForServiceReplyEvent(
    const ServiceRouter_PluginIdForServiceReplyEvent_Request& request) {
    pluginIds_[request.serviceName] = request.plugin_id;
}

std::optional<std::string> ServiceRouter_Proxy::valueOnPlugin(uint32_t plugin, const std::string& name,
                                                              RetryHandler* retry, STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    if (!ready(status)) return std::nullopt;
    const uint32_t cookie = ++lastCookie_;
    values_[cookie] = std::nullopt;
    const bool answered =
        RequestValueOfNameOnPlugin({plugin, cookie, name}, STPSend::NonBlocking, nullptr, &status) &&
        awaitAnswer(
            retry, [&] { return values_[cookie].has_value(); }, status);
    const auto value = std::move(values_.extract(cookie).mapped());
    if (!answered) return std::nullopt;
    if (value->found != 0) return value->value;
    status = {gen_format("The program has no value \"%s\".", name.c_str()), STPCode::Unsupported};
    return std::nullopt;
}

void ServiceRouter_Proxy::ValueOfNameOnPluginEvent(
    const ServiceRouter_ValueOfNameOnPluginEvent_Request& request) {
    if (const auto asked = values_.find(request.cookie); asked != values_.end()) asked->second = request;
}

void ServiceRouter_Proxy::ForwardedRequestValueOfNameOnPlugin(
    const ServiceRouter_ForwardedRequestValueOfNameOnPlugin_Request& request) {
    // What comes from outside ends no program.
    if (request.requesting_plugin_id == noPlugin) {
        gen_warning("The service router's question was refused: \"requesting_plugin_id != -1\"");
        return;
    }
    const auto value = names_.valueOf(request.name);
    const uint8_t found = value ? 1 : 0;
    ValueOfNameOnPluginResponseEvent(
        {request.requesting_plugin_id, request.cookie, request.name, found, value.value_or("")},
        STPSend::NonBlocking);
}

std::optional<ServiceRouter_Proxy::Location> ServiceRouter_Proxy::location(RetryHandler* retry,
                                                                           STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    if (!ready(status)) return std::nullopt;
    location_.reset();
    if (!RequestLocation({}, STPSend::NonBlocking, nullptr, &status)) return std::nullopt;
    awaitAnswer(
        retry, [&] { return location_.has_value(); }, status);
    return std::exchange(location_, std::nullopt);
}

void ServiceRouter_Proxy::LocationEvent(const ServiceRouter_LocationEvent_Request& request) {
    location_ = Location{request.hostname, request.port};
}

std::optional<uint32_t> ServiceRouter_Proxy::reserveNumbers(uint32_t count, RetryHandler* retry,
                                                            STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    if (!ready(status)) return std::nullopt;
    numbersReserved_.reset();
    if (!ReserveRNBlock({count}, STPSend::NonBlocking, nullptr, &status) ||
        !awaitAnswer(
            retry, [&] { return numbersReserved_.has_value(); }, status))
        return std::nullopt;
    const uint32_t first = *std::exchange(numbersReserved_, std::nullopt);
    if (numberBlocks_.contains(first)) return first;
    status = {"The service router has no such numbers left.", STPCode::Connection};
    return std::nullopt;
}

void ServiceRouter_Proxy::RNBlockReservedEvent(const ServiceRouter_RNBlockReservedEvent_Request& request) {
    numbersReserved_ = request.first;
    if (request.count > 0) numberBlocks_[request.first] = request.count;
}

void ServiceRouter_Proxy::releaseNumbers(uint32_t first) {
    const auto block = numberBlocks_.extract(first);
    if (!block.empty() && alive()) ReleaseRN({first, block.mapped()}, STPSend::NonBlocking);
}
