#include "shared/stp_transport/socket_error.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

struct Number {
    int number;
    SocketError error;
};
// Where the platform tells more than the bus has words for, the nearest meaning stands in.
constexpr Number numbers[] = {
    {0, SocketError::None},
    {EINTR, SocketError::Interrupted},
    {EACCES, SocketError::Access},
    {EPERM, SocketError::Access},
    {EFAULT, SocketError::Fault},
    {EINVAL, SocketError::Invalid},
    {EAGAIN, SocketError::WouldBlock},
    {EINPROGRESS, SocketError::InProgress},
    {EALREADY, SocketError::InProgress},
    {ENOTSOCK, SocketError::NotSocket},
    {EBADF, SocketError::NotSocket},
    {EMSGSIZE, SocketError::MessageSize},
    {EOPNOTSUPP, SocketError::NotSupported},
    {ENETDOWN, SocketError::NetDown},
    {ENETRESET, SocketError::NetReset},
    {ECONNABORTED, SocketError::Aborted},
    {ECONNRESET, SocketError::Reset},
    {ENOBUFS, SocketError::NoBuffers},
    {ENOMEM, SocketError::NoBuffers},
    {ENOTCONN, SocketError::NotConnected},
    {ESHUTDOWN, SocketError::ShutDown},
    {EPIPE, SocketError::ShutDown},
    {ETIMEDOUT, SocketError::TimedOut},
    {EHOSTUNREACH, SocketError::HostUnreachable},
    {ENETUNREACH, SocketError::HostUnreachable},
    {EADDRINUSE, SocketError::AddressInUse},
    {ECONNREFUSED, SocketError::Refused},
};

}  // namespace

SocketError socket_ErrorOf(int number) {
    const auto* found = std::find_if(std::begin(numbers), std::end(numbers),
                                     [number](const Number& row) { return row.number == number; });
    return found == std::end(numbers) ? SocketError::Other : found->error;
}

const char* socket_WriteText(SocketError error) {
    switch (error) {
        case SocketError::Interrupted:
            return "[handleWrite]: Call cancelled";
        case SocketError::Access:
            return "[handleWrite]: Cannot broadcast";
        case SocketError::Fault:
            return "[handleWrite]: Page fault";
        case SocketError::Invalid:
            return "[handleWrite]: Socket is not bound";
        case SocketError::WouldBlock:
            return "[handleWrite]: Call would block";
        case SocketError::InProgress:
            return "[handleWrite]: Call in progress";
        case SocketError::NotSocket:
            return "[handleWrite]: Not a valid socket";
        case SocketError::MessageSize:
            return "[handleWrite]: Too big for message-type socket";
        case SocketError::NotSupported:
            return "[handleWrite]: Operation not supported";
        case SocketError::NetDown:
            return "[handleWrite]: Network subsystem has failed";
        case SocketError::NetReset:
            return "[handleWrite]: Keep-alive failed";
        case SocketError::Aborted:
            return "[handleWrite]: Virtual circuit terminated";
        case SocketError::Reset:
            return "[handleWrite]: Virtual circuit reset";
        case SocketError::NoBuffers:
            return "[handleWrite]: No buffer space is available";
        case SocketError::NotConnected:
            return "[handleWrite]: Not connected";
        case SocketError::ShutDown:
            return "[handleWrite]: The socket has been shut down";
        case SocketError::TimedOut:
            return "[handleWrite]: Low-level timeout failure";
        case SocketError::HostUnreachable:
            return "[handleWrite]: Host unreachable";
        case SocketError::NotInitialised:
            return "[handleWrite]: WSA not initialized";
        case SocketError::None:
        case SocketError::AddressInUse:
        case SocketError::Refused:
        case SocketError::Other:
            break;
    }
    return "[handleWrite]: write failed";
}

const char* socket_ConnectText(SocketError error) {
    if (error == SocketError::AddressInUse) return "[ConnectToServer]: address in use";
    if (error == SocketError::Refused) return "[ConnectToServer]: connection refused";
    if (error == SocketError::NotInitialised) return "[ConnectToServer]: WSA not initialized";
    return "[ConnectToServer]: connection failed";
}
