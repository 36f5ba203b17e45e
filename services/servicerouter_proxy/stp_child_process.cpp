#include "services/servicerouter_proxy/stp_child_process.h"

#include <csignal>

using std::chrono::milliseconds;

namespace {

// A program that ends says nothing on the socket, and so is looked after this often.
constexpr milliseconds lookAgain{100};

bool fail(STPStatus& status, STPCode code, const char* text) {
    status = {text, code};
    return false;
}

}  // namespace

std::vector<std::string> STPChildProcess::childArguments(uint16_t port) const {
    std::vector<std::string> all = arguments;
    std::vector<std::string> inserted;
    if (inserts == Inserts::HostAndPort) inserted.emplace_back("localhost");
    inserted.push_back(std::to_string(port));
    const size_t at = std::min(portPosition, all.size());
    all.insert(all.begin() + static_cast<std::ptrdiff_t>(at), inserted.begin(), inserted.end());
    return all;
}

bool STPChildProcess::launch(RetryHandler* retry, STPStatus& status) {
    status.clear();
    if (!transport)
        return fail(status, STPCode::Misuse, "[launch]: transport required to launch STPChildProcess.");
    if (arguments.empty() || arguments.front().empty())
        return fail(status, STPCode::Misuse, "[launch]: command required to launch STPChildProcess.");
    if (isRunning()) return fail(status, STPCode::Misuse, "[launch]: Child is already launched.");
    if (!start(status) || !awaitConnection(retry, status)) {
        const STPStatus why = status;
        transport->close();
        status = why;
        return false;
    }
    return true;
}

bool STPChildProcess::start(STPStatus& status) {
    FileDescriptor listening = socket_Listen(0, ListenOn::Loopback, status);
    const auto port = listening.IsOpen() ? socket_Port(listening.number()) : std::nullopt;
    if (!port || !transport->startListenOnFD(listening.give(), &status)) return false;
    const Result started = process_.start({.arguments = childArguments(*port), .directory = workingDirectory},
                                          ChildProcess::AtEnd::Leave);
    if (!started) return fail(status, STPCode::Launch, "[launch]: Program could not start (not found?).");
    if (!isRunning()) return fail(status, STPCode::Launch, "[launch]: Program died upon launch.");
    return true;
}

bool STPChildProcess::awaitConnection(RetryHandler* retry, STPStatus& status) {
    if (retry) retry->start();
    bool goesOn = true;
    while (goesOn && !transport->tryAccept(STPTransport::AfterAccept::Close, &status) && status.ok()) {
        if (!isRunning()) {
            // It may have had another one connect in its place before it ended.
            transport->serviceOnce(milliseconds(0));
            if (!transport->tryAccept(STPTransport::AfterAccept::Close, &status) && status.ok())
                status = {"[launch]: Program died before connecting.", STPCode::Launch};
            break;
        } else if (retry && !retry->keepTrying()) {
            process_.signal(SIGKILL);
            process_.WaitForEnd(milliseconds(1000));
            status = {"[launch]: Timed out while waiting for child to connect.", STPCode::TimeOut};
        } else if (retry) {
            retry->wait();
        } else {
            transport->serviceOnce(lookAgain);
        }
        goesOn = status.ok();
    }
    if (retry) retry->finish();
    return transport->bound();
}
