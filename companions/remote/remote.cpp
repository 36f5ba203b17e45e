#include "companions/remote/remote.h"

#include <cstdlib>

#include "services/servicerouter_proxy/router_place.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "shared/stp_transport/spec/service_conn_retry_handler.h"

namespace {

std::string jsonText(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text_utf8(text)) {
        if (c == '"' || c == '\\')
            quoted += std::string("\\") + c;
        else if (static_cast<unsigned char>(c) < ' ')
            quoted += gen_format("\\u%04x", static_cast<unsigned>(c));
        else
            quoted += c;
    }
    return quoted + '"';
}

bool json(RemoteOptions::Form form) {
    return form == RemoteOptions::Form::Json;
}

// The next part of a line, up to a tab.
std::string takePart(std::string_view& line) {
    const size_t tab = std::min(line.find('\t'), line.size());
    std::string part(line.substr(0, tab));
    line.remove_prefix(std::min(tab + 1, line.size()));
    return part;
}

}  // namespace

std::string remote_Json(const std::vector<std::pair<std::string, std::string>>& texts,
                        const std::vector<std::pair<std::string, uint64_t>>& numbers) {
    std::string object;
    const auto add = [&](const std::string& key, const std::string& value) {
        object += (object.empty() ? "{" : ", ") + jsonText(key) + ": " + value;
    };
    for (const auto& [key, text] : texts) add(key, jsonText(text));
    for (const auto& [key, number] : numbers) add(key, std::to_string(number));
    return object + "}";
}

TRA_CheckAbility_Reply RemoteClient::CheckAbility(const TRA_CheckAbility_Request&) {
    return {.powerMmask = abilities_};
}

void RemoteClient::RunCmdInDebugger(const TRA_RunCmdInDebugger_Request& request) {
    if (json(form_))
        return print_(remote_Json({{"asked", "command"},
                                   {"command", request.multiCmd},
                                   {"file", request.dataFile},
                                   {"time", request.time}},
                                  {{"object", request.oid}, {"pc", request.pc}}));
    print_("command " + text_printable(request.multiCmd));
}

TRA_ShowPositionInDebugger_Reply RemoteClient::ShowPositionInDebugger(
    const TRA_ShowPositionInDebugger_Request& request) {
    if (json(form_))
        print_(remote_Json({{"asked", "position"}, {"file", request.dataFile}, {"time", request.time}},
                           {{"object", request.oid}, {"pc", request.pc}}));
    else
        print_(gen_format("position %s object 0x%x time %s pc 0x%x", text_printable(request.dataFile).c_str(),
                          request.oid, text_printable(request.time).c_str(), request.pc));
    return {};
}

Remote::Remote(RemoteOptions options, std::string window, RemoteOutput print, EventLoop& loop,
               std::function<Ref<TRA_client_Impl>()> client)
    : options_(std::move(options)),
      window_(std::move(window)),
      print_(std::move(print)),
      loop_(loop),
      makeClient_(std::move(client)) {}

Remote::~Remote() {
    if (proxy_) proxy_->leave();
}

std::unique_ptr<RetryHandler> Remote::patience(const STPSpecClass& service) const {
    auto retry = std::make_unique<ServiceConnRetryHandler>(service, options_.timeout);
    retry->AddCondition([] { return !process_IsStopAsked(); });
    return retry;
}

// A window that is there and says nothing is at work, or waits for its user.
Result Remote::failure(const STPStatus& status) const {
    if (process_IsStopAsked()) return Result::failure("interrupted");
    if (status.code != STPCode::TimeOut) return Result::failure(status.text);
    return Result::failure(gen_format("The window is busy: it did not answer within %.3g seconds.",
                                      std::chrono::duration<double>(options_.timeout).count()));
}

Result Remote::join() {
    ServiceRouterHooks hooks;
    hooks.watches = &loop_.watches;
    hooks.tasks = &loop_.tasks;
    hooks.calls = [this](const STPSpecClass& service) { return patience(service); };
    proxy_ = ref_Make<ServiceRouter_Proxy>(options_.router, hooks);
    const bool starts = options_.command == RemoteCommand::Open;
    STPStatus status;
    if (proxy_->join(
            starts ? ServiceRouter_Proxy::WithoutRouter::Start : ServiceRouter_Proxy::WithoutRouter::Fail,
            &status))
        return {};
    return Result::failure(status.text);
}

// To the service of a window that runs, or else of one that is started.
Result Remote::connect() {
    client_ = makeClient_();
    STPStatus status;
    if (proxy_->connectService(*client_, {.name = "TRA"}, nullptr, &status)) return {};
    const bool none = status.code == STPCode::Unsupported;
    if (!none || options_.command != RemoteCommand::Open || window_.empty()) return failure(status);
    return connectStarted();
}

// The window comes to the display of who asks for it, not to that of the router.
void Remote::handOnDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "QT_QPA_PLATFORM"})
        if (const char* const value = std::getenv(name)) proxy_->setEnvironment(name, value);
}

Result Remote::connectStarted() {
    STPStatus status;
    handOnDisplay();
    std::vector<std::string> argv{window_};
    if (!options_.router.zone.empty()) argv.insert(argv.end(), {"-sr_zone", options_.router.zone});
    const uint32_t cookie = proxy_->launchPlugin(argv, {}, ServiceRouter_Proxy::StartedBy::Router, &status);
    if (cookie == 0 || !proxy_->awaitPlugin(cookie, nullptr, &status)) return failure(status);
    client_ = makeClient_();
    const ServiceWish wish{.name = "TRA", .startCookie = cookie};
    return proxy_->connectService(*client_, wish, nullptr, &status) ? Result() : failure(status);
}

Result Remote::run() {
    for (const std::string& warning : options_.router.warnings) gen_warning("%s", warning.c_str());
    const bool opens = options_.command == RemoteCommand::Open;
    // Where no router runs there is no window that is served: nothing to list or to close.
    if (!opens && !options_.router.namesRouter && !routerPlace_Port(options_.router.zone)) return {};
    if (Result joined = join(); !joined) return joined;
    switch (options_.command) {
        case RemoteCommand::Open:
            return open();
        case RemoteCommand::Close:
            return close();
        case RemoteCommand::List:
            return list();
    }
    return {};
}

Result Remote::open() {
    if (Result connected = connect(); !connected) return connected;
    STPStatus status;
    const uint32_t isNew = options_.window == RemoteOptions::Window::New ? 1 : 0;
    const uint32_t reload = options_.load == RemoteOptions::Load::Again ? 1 : 0;
    const auto opened =
        client_->OpenFile({options_.file, options_.title, reload, isNew, 1}, nullptr, &status);
    if (!opened) return failure(status);
    if (opened->win == 0) return Result::failure("no window could be opened", options_.file);
    if (!options_.time.empty()) {
        const auto scrolled = client_->ScrollToPosition(
            {options_.file, 0, 0, 0, 0, options_.object.value_or(0), options_.time}, nullptr, &status);
        if (!scrolled) return failure(status);
    }
    const bool listens = options_.after == RemoteOptions::After::Listen;
    if (json(options_.form))
        print_(remote_Json({{"file", options_.file}}, {{"window", opened->win}}));
    else if (listens)
        print_(gen_format("window 0x%x ", opened->win) + text_printable(options_.file));
    if (listens) listen();
    return {};
}

void Remote::listen() {
    while (!process_IsStopAsked() && proxy_->alive() && client_->remoteUp()) loop_.round();
}

// The message has no answer; a question behind it tells that it was handled.
Result Remote::close() {
    const Result connected = connect();
    STPStatus status;
    if (!connected) return connected.what().starts_with("No program") ? Result() : connected;
    if (!client_->CloseFile({options_.file}, STPSend::Blocking, nullptr, &status)) return failure(status);
    return client_->ScrollToPosition({.dataFile = options_.file}, nullptr, &status) ? Result()
                                                                                    : failure(status);
}

Result Remote::list() {
    STPStatus status;
    const auto plugin = proxy_->pluginOfService("TRA", nullptr, &status);
    if (!plugin) return status.code == STPCode::Unsupported ? Result() : failure(status);
    const auto lines = proxy_->valueOnPlugin(*plugin, "TRA.windows", nullptr, &status);
    if (!lines) return failure(status);
    std::string_view left = *lines;
    while (!left.empty()) {
        const size_t end = std::min(left.find('\n'), left.size());
        printWindow(std::string(left.substr(0, end)));
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return {};
}

void Remote::printWindow(const std::string& line) const {
    std::string_view left = line;
    const std::string number = takePart(left), file = takePart(left), title = takePart(left);
    if (json(options_.form))
        print_(
            remote_Json({{"file", file}, {"title", title}}, {{"window", scan_number(number).value_or(0)}}));
    else
        print_(number + "  " + text_printable(file.empty() ? "-" : file));
}
