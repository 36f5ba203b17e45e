#include "services/servicerouter_proxy/proxy.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "services/servicerouter_proxy/launch_retry_handler.h"
#include "services/servicerouter_proxy/router_messages.h"
#include "services/servicerouter_proxy/router_place.h"
#include "services/servicerouter_proxy/stp_child_process.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint32_t transportBytes = 32768;
constexpr std::chrono::seconds joiningLasts{30};

std::string currentDirectory() {
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

}  // namespace

ServiceRouter_Proxy::ServiceRouter_Proxy(ServiceRouterOptions options, ServiceRouterHooks hooks)
    : options_(std::move(options)), hooks_(std::move(hooks)) {
    hooks_.transport.outInitial = hooks_.transport.inInitial = transportBytes;
}

ServiceRouter_Proxy::~ServiceRouter_Proxy() {
    attach({});  // nothing that the transport tells is for this object any more
    leave();
}

void ServiceRouter_Proxy::leave() {
    joined_ = false;
    if (transport_ && transport_->bound() && transport_->wantsOutput()) transport_->handleWrite();
    while (!connections_.empty()) endConnection(connections_.begin()->first);
    listener_.reset();
    for (const auto& [place, other] : std::exchange(others_, {})) other->leave();
    if (transport_) transport_->close();
}

bool ServiceRouter_Proxy::alive() {
    return joined_ && transport_ && transport_->bound();
}

void ServiceRouter_Proxy::serve() {
    if (transport_) transport_->processDeferred();
}

std::unique_ptr<RetryHandler> ServiceRouter_Proxy::joiningHandler(const Ref<STPTransport>& transport) const {
    if (hooks_.joining) return hooks_.joining(transport);
    return std::make_unique<LaunchRetryHandler>(transport, joiningLasts);
}

bool ServiceRouter_Proxy::join(WithoutRouter otherwise, STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    return findTransport(otherwise, status) && joinOver(transport_, &status);
}

bool ServiceRouter_Proxy::findTransport(WithoutRouter otherwise, STPStatus& status) {
    if (options_.namesRouter) {
        if (options_.port && connectRouter(options_.host, *options_.port, status)) return true;
    } else {
        const auto shared = options_.sharing == ServiceRouterOptions::Sharing::Shared
                                ? routerPlace_Port(options_.zone)
                                : std::nullopt;
        if (shared && connectRouter("localhost", *shared, status)) return true;
        if (otherwise == WithoutRouter::Start) return startRouter(status);
    }
    return router_Fail(status, "Unable to connect to a running or launch a new servicerouter.\n");
}

bool ServiceRouter_Proxy::connectRouter(const std::string& host, uint16_t port, STPStatus& status) {
    transport_ = ref_Make<STPTransport>(hooks_.transport);
    return transport_->connect(host, port, &status);
}

// Where the options say it lies, or beside this program, or on PATH.
std::string ServiceRouter_Proxy::routerProgram() const {
    if (options_.directory.empty()) return path_find_program("svc_router");
    const std::string program = path_join(options_.directory, "svc_router");
    return ::access(program.c_str(), X_OK) == 0 ? program : std::string();
}

std::vector<std::string> ServiceRouter_Proxy::routerArguments(const std::string& program) const {
    std::vector<std::string> arguments{program, "-connect_servicerouter"};
    const auto add = [&](const char* option, const std::string& value) {
        if (value.empty()) return;
        arguments.emplace_back(option);
        arguments.push_back(value);
    };
    add("-log", options_.routerLog);
    add("-sr_log_internal", options_.routerInternalLog);
    if (options_.sharing == ServiceRouterOptions::Sharing::Private) arguments.emplace_back("-not_shared");
    add("-sr_zone", options_.zone);
    return arguments;
}

bool ServiceRouter_Proxy::startRouter(STPStatus& status) {
    STPChildProcess router;
    router.transport = transport_ = ref_Make<STPTransport>(hooks_.transport);
    const std::string program = routerProgram();
    STPStatus why{"svc_router is not there", STPCode::Launch};
    if (!program.empty()) {
        router.arguments = routerArguments(program);
        router.portPosition = 2;  // behind -connect_servicerouter
        const auto retry = joiningHandler(transport_);
        if (router.launch(retry.get(), why)) return true;
    }
    gen_warning("%s", why.text.c_str());
    return router_Fail(status, "Unable to launch new servicerouter.\n", STPCode::Launch);
}

bool ServiceRouter_Proxy::joinOver(Ref<STPTransport> transport, STPStatus* given) {
    STPStatus own;
    STPStatus& status = given ? *given : own;
    const Ref<ServiceRouter_Proxy> hold(this);
    transport_ = std::move(transport);
    attach(transport_);
    // Waits among windows are served by the loop's watches.
    if (hooks_.watches && hooks_.tasks)
        listener_ = std::make_unique<STPSocketListener>(transport_, *hooks_.watches, *hooks_.tasks);
    const auto retry = joiningHandler(transport_);
    joined_ = true;
    if (!negotiate(retry.get(), &status)) {
        router_Fail(status,
                    gen_format("Negotiation with ServiceRouter failed during initialization: %s.\n",
                               status.text.c_str()),
                    status.code);
        joined_ = false;
    } else if (!introduce(retry.get(), status)) {
        joined_ = false;
    }
    if (!joined_) return false;
    openLog();
    return true;
}

// What the router must know of this process.
bool ServiceRouter_Proxy::introduce(RetryHandler* retry, STPStatus& status) {
    if (options_.startCookie &&
        !StartPluginEvent({*options_.startCookie, 1, ""}, STPSend::Blocking, retry, &status))
        return router_Fail(status, "Unable to give the ServiceRouter the client start cookie.\n");
    if (!SetWorkingDir({currentDirectory()}, STPSend::Blocking, retry, &status))
        return router_Fail(status, "Unable to send our working directory to the ServiceRouter.\n");
    ServiceRouter_RegisterServiceList_Request services;
    for (const ServiceFactory* factory : factories_) services.name_list.data.push_back(factory->name());
    if (!RegisterServiceList(services, STPSend::Blocking, retry, &status))
        return router_Fail(status, "Failed to send list of available services.\n");
    return true;
}

void ServiceRouter_Proxy::openLog() {
    if (options_.log.empty() || log_) return;
    if (std::FILE* const file = std::fopen(options_.log.c_str(), "ae"))
        log_ = std::make_unique<TimestampedSTPFileLog>(file, STPFileLog::Owns::Yes);
    else
        gen_warning("%s: messages are not logged: %s", options_.log.c_str(), std::strerror(errno));
}

void ServiceRouter_Proxy::StartLogging(const ServiceRouter_StartLogging_Request&) {
    if (log_) return;
    log_ = std::make_unique<ForwardingSTPLog>(
        [this](const std::string& entry) { LogMessageEvent({entry}, STPSend::NonBlocking); });
    for (const auto& [number, connection] : connections_) connection.service->setLog(log_.get());
}

void ServiceRouter_Proxy::PluginId(const ServiceRouter_PluginId_Request& request) {
    pluginId_ = request.plugin_id;
    // Calls that begin at different plug-ins meet on one connection; each has its own contexts.
    transport_->setContextHigh(static_cast<uint16_t>(pluginId_));
}

void ServiceRouter_Proxy::connectionLost() {
    const Ref<ServiceRouter_Proxy> hold(this);
    while (!connections_.empty()) endConnection(connections_.begin()->first);
}
