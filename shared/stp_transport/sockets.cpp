#include "shared/stp_transport/sockets.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <fstream>
#include <functional>
#include <iterator>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "shared/stp_transport/socket_error.h"

namespace {

constexpr int backlog = 5, connectMilliseconds = 30000;

bool setUp(const FileDescriptor& socket) {
    const int on = 1;
    ::setsockopt(socket.number(), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    ::setsockopt(socket.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return socket.SetNonBlocking();
}

FileDescriptor newSocket() {
    return FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

FileDescriptor fail(STPStatus& status, const char* text) {
    status = {text, STPCode::Connection};
    return {};
}

std::optional<in_addr> resolve(const std::string& host) {
    in_addr address{};
    if (::inet_aton(host.c_str(), &address) != 0) return address;
    addrinfo hints{}, *found = nullptr;
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return std::nullopt;
    address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr;
    ::freeaddrinfo(found);
    return address;
}

// 0 or the error of the attempt.
int connectWithin(const FileDescriptor& socket, const sockaddr_in& address, int milliseconds) {
    if (::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return 0;
    if (errno != EINPROGRESS) return errno;
    pollfd entry{socket.number(), POLLOUT, 0};
    int ready;
    do {
        ready = ::poll(&entry, 1, milliseconds);
    } while (ready < 0 && errno == EINTR);
    if (ready <= 0) return ready == 0 ? ETIMEDOUT : errno;
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(socket.number(), SOL_SOCKET, SO_ERROR, &error, &size);
    return error;
}

using NameCall = int (*)(int, sockaddr*, socklen_t*);

std::optional<sockaddr_in> addressBy(NameCall call, int descriptor) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (call(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) return std::nullopt;
    if (address.sin_family != AF_INET) return std::nullopt;
    return address;
}

std::string nameBy(NameCall call, int descriptor) {
    const auto address = addressBy(call, descriptor);
    char text[INET_ADDRSTRLEN];
    if (!address || !::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text)) return {};
    return gen_format("%s:%u", text, ntohs(address->sin_port));
}

// "ADDRESS:PORT" of the table: the address as the machine's word, both in hexadecimal.
std::optional<SocketEnd> tableEnd(std::string_view text) {
    SocketEnd end;
    const size_t colon = text.find(':');
    if (colon == text.npos) return std::nullopt;
    const char* last = text.data() + text.size();
    const char* middle = text.data() + colon;
    if (std::from_chars(text.data(), middle, end.address, 16).ptr != middle) return std::nullopt;
    if (std::from_chars(middle + 1, last, end.port, 16).ptr != last) return std::nullopt;
    return end;
}

std::string_view nextWord(std::string_view& line) {
    line = text_trim(line);
    const size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(end);
    return word;
}

bool sameEnd(const std::optional<SocketEnd>& a, const SocketEnd& b) {
    return a && a->address == b.address && a->port == b.port;
}

std::optional<uint32_t> tableNumber(std::string_view text) {
    uint32_t number = 0;
    const char* last = text.data() + text.size();
    if (text.empty() || std::from_chars(text.data(), last, number).ptr != last) return std::nullopt;
    return number;
}

// What the table of connections says of one end.
struct TableRow {
    std::optional<SocketEnd> local, remote;
    std::string_view state;
    std::optional<uint32_t> user;
    std::string_view inode;  // "0" when no program holds this end
};

TableRow tableRow(std::string_view line) {
    TableRow row;
    nextWord(line);  // the row's number
    row.local = tableEnd(nextWord(line));
    row.remote = tableEnd(nextWord(line));
    row.state = nextWord(line);
    for (int i = 0; i < 3; ++i) nextWord(line);  // queues, timer, retransmissions
    row.user = tableNumber(nextWord(line));
    nextWord(line);  // time-outs
    row.inode = nextWord(line);
    return row;
}

// The first row that fits.
std::optional<TableRow> findRow(std::string_view table, const std::function<bool(const TableRow&)>& fits) {
    while (!table.empty()) {
        const size_t end = std::min(table.find('\n'), table.size());
        const TableRow row = tableRow(table.substr(0, end));
        if (fits(row)) return row;
        table.remove_prefix(std::min(end + 1, table.size()));
    }
    return std::nullopt;
}

}  // namespace

FileDescriptor socket_Connect(const std::string& host, uint16_t port, STPStatus& status) {
    const auto resolved = resolve(host);
    if (!resolved) return fail(status, "[connectToServer]: Unable to resolve host");
    FileDescriptor socket = newSocket();
    if (!socket.IsOpen() || !setUp(socket)) return fail(status, socket_ConnectText(socket_ErrorOf(errno)));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr = *resolved;
    address.sin_port = htons(port);
    const int error = connectWithin(socket, address, connectMilliseconds);
    if (error != 0) return fail(status, socket_ConnectText(socket_ErrorOf(error)));
    return socket;
}

FileDescriptor socket_Listen(uint16_t port, ListenOn where, STPStatus& status) {
    FileDescriptor socket = newSocket();
    if (!socket.IsOpen() || !setUp(socket)) return fail(status, "[GetListenSocket]: Could not create socket");
    const int on = 1;  // a port that was in use a moment ago is free
    ::setsockopt(socket.number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(where == ListenOn::Loopback ? INADDR_LOOPBACK : INADDR_ANY);
    address.sin_port = htons(port);
    if (::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return fail(status, "[getListenSocket]: Could not bind to port");
    if (::listen(socket.number(), backlog) != 0)
        return fail(status, "[getListenSocket]: Could not listen on socket");
    return socket;
}

FileDescriptor socket_Accept(int listening, STPStatus& status) {
    FileDescriptor socket(::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket.IsOpen() && setUp(socket)) return socket;
    // A client that gave up again is as good as none.
    const bool none = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR || errno == ECONNABORTED;
    return none ? FileDescriptor() : fail(status, "[acceptClient]: Could not accept");
}

std::optional<uint16_t> socket_Port(int descriptor) {
    const auto address = addressBy(::getsockname, descriptor);
    if (!address) return std::nullopt;
    return ntohs(address->sin_port);
}

std::string socket_LocalName(int descriptor) {
    return nameBy(::getsockname, descriptor);
}

std::string socket_PeerName(int descriptor) {
    return nameBy(::getpeername, descriptor);
}

std::optional<uint32_t> socket_OwnerInTable(std::string_view table, SocketEnd local, SocketEnd remote) {
    const auto row = findRow(
        table, [&](const TableRow& r) { return sameEnd(r.local, local) && sameEnd(r.remote, remote); });
    if (!row || row->inode != "0") return row ? row->user : std::nullopt;
    constexpr std::string_view listening = "0A";
    const auto listener = findRow(table, [&](const TableRow& r) {
        return r.state == listening && (sameEnd(r.local, local) || sameEnd(r.local, {0, local.port}));
    });
    return listener ? listener->user : std::nullopt;
}

PeerOwner socket_PeerOwner(int descriptor) {
    const auto ours = addressBy(::getsockname, descriptor), theirs = addressBy(::getpeername, descriptor);
    if (!ours || !theirs) return PeerOwner::Unknown;
    if (ntohl(theirs->sin_addr.s_addr) >> 24 != IN_LOOPBACKNET) return PeerOwner::Same;
    std::ifstream file("/proc/net/tcp", std::ios::binary);
    const std::string table(std::istreambuf_iterator<char>(file), {});
    const auto user = socket_OwnerInTable(table, {theirs->sin_addr.s_addr, ntohs(theirs->sin_port)},
                                          {ours->sin_addr.s_addr, ntohs(ours->sin_port)});
    if (!user) return PeerOwner::Unknown;
    return *user == ::geteuid() ? PeerOwner::Same : PeerOwner::Other;
}
