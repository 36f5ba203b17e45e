// svc_router: connects the programs of the suite.
#include <cstdio>
#include <optional>

#include "services/servicerouter_proxy/proxy.h"
#include "services/servicerouter_proxy/router_place.h"
#include "services/svc_router/router.h"
#include "services/svc_router/router_options.h"
#include "services/svc_router/router_socket.h"
#include "shared/libcxxutil/event_loop.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"

namespace {

int failed(const std::string& text) {
    gen_error("%s", text.c_str());
    return 1;
}

// The user's router of this zone takes the client that waits on the port.
bool handOver(const std::string& zone, uint16_t port) {
    ServiceRouterOptions options;
    options.zone = zone;
    const auto proxy = ref_Make<ServiceRouter_Proxy>(options);
    const bool taken =
        proxy->join(ServiceRouter_Proxy::WithoutRouter::Fail) && proxy->connectPlugin(port, nullptr);
    proxy->leave();
    return taken;
}

// Who becomes the router of the zone.
enum class Turn { Own, HandedOver, Failed };
Turn takeTurn(const RouterOptions& options, RouterPlace& place, Result& why) {
    if (options.sharing == RouterOptions::Sharing::Private) return Turn::Own;
    constexpr int tries = 3;  // the other one may be ending, or not be listening yet
    for (int i = 0; i < tries; ++i) {
        why = place.take(options.zone);
        if (why.ok()) return Turn::Own;
        if (options.clientPort && handOver(options.zone, *options.clientPort)) return Turn::HandedOver;
    }
    return Turn::Failed;
}

int serve(const RouterOptions& options, RouterPlace& place) {
    EventLoop loop;
    STPStatus status;
    RouterSocket socket(options.listenPort.value_or(0), loop, status);
    if (!socket.isOpen()) return failed(status.text);
    if (options.sharing == RouterOptions::Sharing::Shared)
        if (const Result told = place.tell(socket.port()); !told) return failed(told.text());
    const std::string own = path_find_program("svc_router");
    Router router({socket.port(), own.empty() ? own : path_join(path_directory(own), "services"), options.log,
                   options.internalLog, &loop.tasks, &loop.watches});
    socket.setClient([&](Ref<STPTransport> transport) { router.add(std::move(transport)); });
    if (options.clientPort) {
        const auto first = ref_Make<STPTransport>();
        if (!first->connect("localhost", *options.clientPort, &status)) return failed(status.text);
        router.add(first);
    } else {
        std::printf("svc_router waits on port %u\n", static_cast<unsigned>(socket.port()));
        std::fflush(stdout);
    }
    while (!process_IsStopAsked() && (!options.clientPort || !router.idle())) loop.round();
    return 0;
}

int run(const RouterOptions& options) {
    RouterPlace place;
    Result why;
    switch (takeTurn(options, place, why)) {
        case Turn::Own:
            return serve(options, place);
        case Turn::HandedOver:
            return 0;
        case Turn::Failed:
            break;
    }
    return failed(why.text());
}

}  // namespace

int main(int argc, char** argv) {
    process_Begin(argv[0]);
    process_CatchStops();
    RouterOptions options;
    const Result parsed = routerOptions_Parse({argv + 1, argv + argc}, options);
    if (!parsed) {
        failed(parsed.text());
        return 2;
    }
    switch (options.answer) {
        case RouterOptions::Answer::Help:
            std::fputs(routerOptions_Help, stdout);
            return 0;
        case RouterOptions::Answer::Version:
            std::printf("svc_router %s\n", CW_VERSION);
            return 0;
        case RouterOptions::Answer::None:
            break;
    }
    return run(options);
}
