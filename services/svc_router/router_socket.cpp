#include "services/svc_router/router_socket.h"

#include "shared/libcxxutil/report.h"

namespace {

// So long nobody is accepted when the system could not: it has no descriptors left.
constexpr std::chrono::milliseconds pauseAfterFailure{1000};

}  // namespace

RouterSocket::RouterSocket(uint16_t port, EventLoop& loop, STPStatus& status)
    : loop_(loop), socket_(socket_Listen(port, ListenOn::Loopback, status)) {
    if (!socket_.IsOpen()) return;
    port_ = socket_Port(socket_.number()).value_or(0);
    socket_.SetNonBlocking();
    watch();
}

RouterSocket::~RouterSocket() {
    if (later_) loop_.tasks.Remove(*later_);
}

void RouterSocket::watch() {
    watch_ = Watch(loop_.watches, socket_.number(), WatchFor::Input, [this] { accept(); });
}

void RouterSocket::accept() {
    STPStatus status;
    FileDescriptor client = socket_Accept(socket_.number(), status);
    if (!status.ok()) {
        gen_warning("%s", status.text.c_str());
        watch_.remove();
        later_ = loop_.tasks.Once(pauseAfterFailure, loop_.now(), [this] {
            later_.reset();
            watch();
            return true;
        });
        return;
    }
    if (!client.IsOpen()) return;
    if (socket_PeerOwner(client.number()) != PeerOwner::Same) {
        gen_warning("The connection from %s was refused: it does not belong to this user",
                    socket_PeerName(client.number()).c_str());
        return;
    }
    const auto transport = ref_Make<STPTransport>();
    if (transport->bindFD(client.give(), &status) && client_) client_(transport);
}
