// How a transport comes to its wire.
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/socket_wire.h"
#include "shared/stp_transport/transport.h"

namespace {

// The upper half of contexts that begin at an end that was connected to, by TCP or in a pair.
constexpr uint16_t acceptedHigh = 1;

}  // namespace

bool STPTransport::canStart(const char* whenBound, const char* whenListening) {
    if (bound()) return fail(STPCode::Misuse, whenBound);
    if (listening()) return fail(STPCode::Misuse, whenListening);
    status_.clear();
    return true;
}

bool STPTransport::connect(const std::string& host, uint16_t port, STPStatus* status) {
    if (!canStart("[connect]: Already connected", "[connect]: Already listening as server"))
        return give(status, false);
    FileDescriptor socket = socket_Connect(host, port, status_);
    if (!socket.IsOpen()) return give(status, false);
    if (options_.peerOwner(socket.number()) != PeerOwner::Same)
        return give(status,
                    fail(STPCode::Connection, "[connect]: the peer at " + socket_PeerName(socket.number()) +
                                                  " does not belong to this user"));
    adopt(std::make_unique<SocketWire>(std::move(socket), options_.poll));
    return give(status, true);
}

bool STPTransport::listen(uint16_t port, RetryHandler* retry, STPStatus* status) {
    if (!canStart("[listen]: Already connected", "[listen]: Already listening as server"))
        return give(status, false);
    listening_ = socket_Listen(port, options_.listenOn, status_);
    if (!listening_.IsOpen()) return give(status, false);
    changed();
    return give(status, awaitClient(AfterAccept::Close, retry));
}

bool STPTransport::startListenOnFD(int socket, STPStatus* status) {
    if (!canStart("[startListenOnFD]: Already connected", "[startListenOnFD]: Already listening as server"))
        return give(status, false);
    listening_ = FileDescriptor(socket);
    listening_.SetNonBlocking();
    changed();
    return give(status, true);
}

bool STPTransport::listenOnFD(int socket, AfterAccept after, RetryHandler* retry, STPStatus* status) {
    if (!startListenOnFD(socket)) return give(status, false);
    return give(status, awaitClient(after, retry));
}

bool STPTransport::awaitClient(AfterAccept after, RetryHandler* retry) {
    const Ref<STPTransport> hold(this);
    waitUntil(retry, [&] { return bound() || acceptClient(after); });
    if (bound()) return true;
    STPStatus why = status_;
    if (why.ok()) why = {"[listen]: reached timeout while waiting for a client", STPCode::TimeOut};
    closeWith(std::move(why));
    return false;
}

bool STPTransport::tryAccept(AfterAccept after, STPStatus* status) {
    if (bound()) return give(status, fail(STPCode::Misuse, "[tryAccept]: Already connected"));
    if (!listening()) return give(status, fail(STPCode::Misuse, "[tryAccept]: Not listening as server"));
    status_.clear();
    return give(status, acceptClient(after));
}

bool STPTransport::acceptClient(AfterAccept after) {
    if (!acceptPending_) return false;
    acceptPending_ = false;
    FileDescriptor socket = socket_Accept(listening_.number(), status_);
    if (!socket.IsOpen()) return false;
    if (options_.peerOwner(socket.number()) != PeerOwner::Same) {
        gen_warning("The connection from %s was refused: it does not belong to this user",
                    socket_PeerName(socket.number()).c_str());
        return false;
    }
    if (after == AfterAccept::LeaveOpen) listening_.give();
    listening_.close();
    defaultFrame_.context.high = acceptedHigh;
    adopt(std::make_unique<SocketWire>(std::move(socket), options_.poll));
    return true;
}

bool STPTransport::bindFD(int socket, STPStatus* status) {
    if (!canStart("[bindFD]: Already bound", "[bindFD]: Already listening")) return give(status, false);
    adopt(std::make_unique<SocketWire>(FileDescriptor(socket), options_.poll));
    return give(status, true);
}

bool STPTransport::bindWire(std::unique_ptr<Wire> wire, STPStatus* status) {
    if (!canStart("[bindFD]: Already bound", "[bindFD]: Already listening")) return give(status, false);
    adopt(std::move(wire));
    return give(status, true);
}

bool STPTransport::bindInProcess(PeerWindow peer, std::function<void()> wake, STPStatus* status) {
    if (!canStart("[bindFD]: Already bound", "[bindFD]: Already listening")) return give(status, false);
    auto wire = std::make_unique<InProcessWire>(peer, std::move(wake));
    inProcess_ = wire.get();
    adopt(std::move(wire));
    return give(status, true);
}

PeerWindow STPTransport::outWindow() {
    return {&out_.offset, &out_.length, &out_.capacity, &out_.buffer};
}

bool STPTransport::linkInProcess(STPTransport& first, STPTransport& second, STPStatus* status) {
    const auto link = std::make_shared<InProcessLink>();
    STPTransport* const ends[] = {&first, &second};
    for (STPTransport* end : ends)
        if (!end->canStart("[bindFD]: Already bound", "[bindFD]: Already listening"))
            return end->give(status, false);
    for (int i = 0; i < 2; ++i) {
        STPTransport* const end = ends[i];
        STPTransport* const peer = ends[1 - i];
        link->serve[i] = [end] { end->handleRead(); };
        auto wire = std::make_unique<InProcessWire>(peer->outWindow(), link, i);
        // A message that nobody waits for is taken up by the loop.
        wire->setWake([link, peer, i] {
            if (link->open[1 - i]) peer->askForTurn();
        });
        end->inProcess_ = wire.get();
        if (i == 1) end->defaultFrame_.context.high = acceptedHigh;
        end->adopt(std::move(wire));
    }
    return first.give(status, true);
}

std::pair<Ref<STPTransport>, Ref<STPTransport>> STPTransport::createInProcessPair(
    STPTransportOptions first, STPTransportOptions second) {
    std::pair pair{ref_Make<STPTransport>(std::move(first)), ref_Make<STPTransport>(std::move(second))};
    linkInProcess(*pair.first, *pair.second);
    return pair;
}
