#include "shared/stp_transport/socket_wire.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include "shared/stp_transport/sockets.h"

namespace {

WireMoved failure(int number) {
    const SocketError error = socket_ErrorOf(number);
    // A signal that came between costs nothing but another try.
    if (error == SocketError::WouldBlock || error == SocketError::Interrupted) return {};
    return {Moved::Failed, 0, error};
}

WireMoved fromPipe(const MovedBytes& moved) {
    return {moved.what, moved.bytes, socket_ErrorOf(moved.error)};
}

}  // namespace

WireReadiness wire_Wait(const PollFunction& poll, int descriptor, WireReadiness wanted,
                        std::chrono::milliseconds longest) {
    const int events = (wanted.input ? POLLIN : 0) | (wanted.output ? POLLOUT : 0);
    // With nothing wanted the descriptor is left out: an end that is gone would be told again and again.
    pollfd entry{events != 0 ? descriptor : -1, static_cast<short>(events), 0};
    const auto most =
        std::clamp<std::chrono::milliseconds::rep>(longest.count(), 0, std::numeric_limits<int>::max());
    if (poll({&entry, 1}, static_cast<int>(most)) < 0) return {false, false, socket_ErrorOf(errno)};
    if (entry.revents & POLLNVAL) return {false, false, SocketError::NotSocket};
    const bool gone = (entry.revents & (POLLHUP | POLLERR)) != 0;
    return {wanted.input && ((entry.revents & POLLIN) != 0 || gone),
            wanted.output && ((entry.revents & POLLOUT) != 0 || gone), SocketError::None};
}

SocketWire::SocketWire(FileDescriptor descriptor, PollFunction poll)
    : descriptor_(std::move(descriptor)), form_(Form::Socket), poll_(std::move(poll)) {
    int type = 0;
    socklen_t size = sizeof type;
    if (::getsockopt(descriptor_.number(), SOL_SOCKET, SO_TYPE, &type, &size) != 0) form_ = Form::Plain;
    descriptor_.SetNonBlocking();
}

WireMoved SocketWire::read(std::span<uint8_t> room) {
    if (form_ == Form::Plain) return fromPipe(pipe_Read(descriptor_, room));
    if (room.empty()) return {};
    const ssize_t got = ::recv(descriptor_.number(), room.data(), room.size(), 0);
    if (got < 0) return failure(errno);
    return {got == 0 ? Moved::End : Moved::Some, static_cast<size_t>(got), SocketError::None};
}

WireMoved SocketWire::write(std::span<const uint8_t> bytes) {
    if (form_ == Form::Plain) return fromPipe(pipe_Write(descriptor_, bytes));
    if (bytes.empty()) return {};
    const ssize_t put = ::send(descriptor_.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (put < 0) return failure(errno);
    return {put == 0 ? Moved::End : Moved::Some, static_cast<size_t>(put), SocketError::None};
}

WireReadiness SocketWire::wait(WireReadiness wanted, std::chrono::milliseconds longest) {
    return wire_Wait(poll_, descriptor_.number(), wanted, longest);
}

int SocketWire::shutDown() {
    if (form_ == Form::Plain || ::shutdown(descriptor_.number(), SHUT_RDWR) == 0) return 0;
    return errno == ENOTCONN ? 0 : errno;
}

std::string SocketWire::localName() const {
    return socket_LocalName(descriptor_.number());
}

std::string SocketWire::peerName() const {
    return socket_PeerName(descriptor_.number());
}
