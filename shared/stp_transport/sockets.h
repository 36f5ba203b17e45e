// TCP sockets over IPv4, and whose program is at the other end.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "shared/libcxxutil/file_descriptor.h"
#include "shared/stp_transport/status.h"

// A connected socket, non-blocking, kept alive and without delay; not open on failure, with the status set.
// The host is a dotted address or a name. Waits at most half a minute.
FileDescriptor socket_Connect(const std::string& host, uint16_t port, STPStatus& status);

// Where a listening socket waits. Loopback is what is meant unless the user says otherwise.
enum class ListenOn { Loopback, AllAddresses };
// A listening socket; port 0 lets the system choose a free one.
FileDescriptor socket_Listen(uint16_t port, ListenOn where, STPStatus& status);
// A client of a listening socket, set up as a connected one. Not open, with the status clear, when none
// waits.
FileDescriptor socket_Accept(int listening, STPStatus& status);
// The port of this end.
std::optional<uint16_t> socket_Port(int descriptor);
// "address:port" of this end, of the far one; empty when the socket has none.
std::string socket_LocalName(int descriptor);
std::string socket_PeerName(int descriptor);

// Whose the far end of a connection over loopback is.
enum class PeerOwner {
    Same,     // this user's, or not on loopback: where a peer from outside is let in, the user said so
    Other,    // another user's
    Unknown,  // it can't be found
};
PeerOwner socket_PeerOwner(int descriptor);
// The user that owns the end local -> remote, in the text of the system's table of TCP connections. Of an end
// that no program has accepted yet, for which some systems name no owner, it is who listens there. Addresses
// in network byte order, ports as numbers.
struct SocketEnd {
    uint32_t address = 0;
    uint16_t port = 0;
};
std::optional<uint32_t> socket_OwnerInTable(std::string_view table, SocketEnd local, SocketEnd remote);
