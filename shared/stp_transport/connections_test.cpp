// Real sockets over loopback, pipes, and the in-process forms.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "shared/libcxxutil/event_loop.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/socket_listener.h"
#include "shared/stp_transport/socket_wire.h"
#include "shared/stp_transport/stp_retry_handler.h"
#include "shared/stp_transport/transport_testing.h"

using namespace std::chrono_literals;

namespace {

void expectStatus(const STPStatus& status, STPCode code, const std::string& text) {
    EXPECT_EQ(status.code, code) << status.text;
    EXPECT_EQ(status.text, text);
}

// A process of its own, without a wire.
struct End {
    STPCallState calls;
    Gate gate;
    Ref<STPTransport> transport;
    explicit End(PeerOwner owner = PeerOwner::Same) {
        transport = ref_Make<STPTransport>(
            STPTransportOptions{.calls = &calls, .gate = &gate, .peerOwner = [owner](int) { return owner; }});
    }
    STPTransport* operator->() const { return transport.get(); }
    STPTransportOptions options() { return {.calls = &calls, .gate = &gate}; }
};

// Two transports with counters of their own, connected over loopback.
struct Connected {
    End client, server;
    Connected() {
        Listening listening;
        EXPECT_TRUE(server->startListenOnFD(listening.socket.give()));
        EXPECT_TRUE(client->connect("localhost", listening.port));
        server->serviceOnce(10s);
        EXPECT_TRUE(server->tryAccept(STPTransport::AfterAccept::Close));
    }
};

uint32_t sendText(STPTransport& transport, const std::string& text, uint32_t flags = stpOneWay) {
    STPMessage message = transport.newRequest(2, 1, STPKind::Text, 0, flags);
    message.body = text;
    return transport.sendMessage(message, nullptr);
}

// The process may open nothing as long as this lives.
struct NoMoreDescriptors {
    rlimit before{};
    NoMoreDescriptors() {
        ::getrlimit(RLIMIT_NOFILE, &before);
        const rlimit none{0, before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before); }
};

}  // namespace

TEST(Connections, FailuresToConnectHaveTheirTexts) {
    STPStatus status;
    End end;
    EXPECT_FALSE(end->connect("no such host.invalid", 1, &status));
    expectStatus(status, STPCode::Connection, "[connectToServer]: Unable to resolve host");
    uint16_t freed = 0;
    {
        Listening listening;
        freed = listening.port;
    }
    EXPECT_FALSE(end->connect("127.0.0.1", freed, &status));
    expectStatus(status, STPCode::Connection, "[ConnectToServer]: connection refused");
    EXPECT_STREQ(socket_ConnectText(SocketError::AddressInUse), "[ConnectToServer]: address in use");
    EXPECT_STREQ(socket_ConnectText(SocketError::NotInitialised), "[ConnectToServer]: WSA not initialized");
    EXPECT_STREQ(socket_ConnectText(SocketError::HostUnreachable), "[ConnectToServer]: connection failed");
    Listening taken;
    EXPECT_FALSE(end->listen(taken.port, nullptr, &status));
    expectStatus(status, STPCode::Connection, "[getListenSocket]: Could not bind to port");
    RoundsRetry none(2);
    EXPECT_FALSE(end->listenOnFD(taken.socket.give(), STPTransport::AfterAccept::Close, &none, &status));
    expectStatus(status, STPCode::TimeOut, "[listen]: reached timeout while waiting for a client");
    EXPECT_FALSE(end->listening());
    {
        const NoMoreDescriptors none_;
        EXPECT_FALSE(end->listen(0, nullptr, &status));
        expectStatus(status, STPCode::Connection, "[GetListenSocket]: Could not create socket");
        EXPECT_FALSE(end->connect("127.0.0.1", freed, &status));
        expectStatus(status, STPCode::Connection, "[ConnectToServer]: connection failed");
    }
    BytePipe pipe;
    ASSERT_TRUE(pipe_Make(pipe));
    EXPECT_FALSE(socket_Accept(pipe.read.number(), status).IsOpen());
    expectStatus(status, STPCode::Connection, "[acceptClient]: Could not accept");
}

TEST(Connections, MessagesGoBothWaysOverLoopback) {
    Connected both;
    EXPECT_EQ(both.client->localName(), both.server->peerName());
    EXPECT_EQ(STPTransport::find(*both.client->descriptor()), both.client.transport.get());
    NotingHandler handler;
    both.server->registerHandler(2, 1, handler, STPKind::Text);
    handler.run = [&](STPMessage& message) {
        STPMessage reply = both.server->newReply(1, 2, message.header.sequence);
        reply.body = "answer";
        EXPECT_NE(both.server->sendAndFlush(reply, 2), 0u);
        return true;
    };
    const uint32_t sequence = sendText(*both.client.transport, "question", stpWantsReply | stpOwnContextOnly);
    both.server->serviceOnce(10s);
    const STPMessagePtr reply = both.client->awaitResponse(sequence, nullptr);
    ASSERT_NE(reply, nullptr);
    EXPECT_STREQ(reply->body.c_str(), "answer");
    both.server->close();
    STPStatus status;
    both.client->serviceOnce(10s, &status);
    expectStatus(status, STPCode::PeerClosed, "[handleRead]: peer has closed connection");
    EXPECT_FALSE(both.client->descriptor());
    int count = 0;
    STPTransport::forEach([&](STPTransport&) { ++count; });
    EXPECT_EQ(count, 2);
}

TEST(Connections, PeersOfOthersAreRefused) {
    const std::string table =
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n"
        "   0: 0100007F:1F90 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 1 1\n"
        "   1: 0100007F:1F90 0100007F:C350 01 00000000:00000000 00:00000000 00000000  1000        0 2 1\n"
        "   3: 0100007F:1F90 0100007F:C351 01 00000000:00000000 00:00000000 00000000     0        0 0 1\n"
        "   4: 0100007F:1F91 0100007F:C351 01 00000000:00000000 00:00000000 00000000     0        0 0 1\n"
        "   2: 0100007F:C350 0100007F:1F90 01 00000000:00000000 02:00000000 00000000    77        0 3 1";
    const SocketEnd server{0x0100007F, 0x1F90}, client{0x0100007F, 0xC350};
    EXPECT_EQ(socket_OwnerInTable(table, client, server), 77u);
    EXPECT_EQ(socket_OwnerInTable(table, server, client), 1000u);
    EXPECT_FALSE(socket_OwnerInTable(table, client, client));
    // Of an end that nobody has accepted yet it is the listener's; where nobody listens it is unknown.
    EXPECT_EQ(socket_OwnerInTable(table, server, {0x0100007F, 0xC351}), 1000u);
    EXPECT_FALSE(socket_OwnerInTable(table, {0x0100007F, 0x1F91}, {0x0100007F, 0xC351}));
    EXPECT_FALSE(socket_OwnerInTable("1: 0100007F:1F90", server, client));

    Connected real;  // found in the system's own table
    EXPECT_EQ(socket_PeerOwner(*real.client->descriptor()), PeerOwner::Same);
    EXPECT_EQ(socket_PeerOwner(*real.server->descriptor()), PeerOwner::Same);
    for (const PeerOwner owner : {PeerOwner::Other, PeerOwner::Unknown}) {
        std::string told;
        gen_set_report_sink([&](int, const std::string& line) { told += line; });
        Listening listening;
        End server_(owner), client_(owner);
        STPStatus status;
        EXPECT_FALSE(client_->connect("127.0.0.1", listening.port, &status));
        EXPECT_EQ(status.code, STPCode::Connection);
        EXPECT_NE(status.text.find("does not belong to this user"), std::string::npos);
        server_->startListenOnFD(listening.socket.give());
        server_->serviceOnce(10s);
        EXPECT_FALSE(server_->tryAccept(STPTransport::AfterAccept::Close, &status));
        EXPECT_TRUE(status.ok());
        EXPECT_TRUE(server_->listening());  // it waits on
        EXPECT_NE(told.find("was refused"), std::string::npos);
        gen_set_report_sink({});
    }
}

TEST(Connections, AListeningSocketMayStayOpen) {
    Listening listening;
    const int number = listening.socket.number();
    End first, second, client, other;
    EXPECT_TRUE(client->connect("127.0.0.1", listening.port));
    EXPECT_TRUE(first->listenOnFD(number, STPTransport::AfterAccept::LeaveOpen, nullptr));
    EXPECT_TRUE(other->connect("127.0.0.1", listening.port));
    EXPECT_TRUE(second->listenOnFD(listening.socket.give(), STPTransport::AfterAccept::Close, nullptr));
    EXPECT_FALSE(End()->connect("127.0.0.1", listening.port));
}

TEST(Connections, OneWaitServesSeveral) {
    Connected a, b;
    NotingHandler handlerA, handlerB;
    a.server->registerHandler(2, 1, handlerA, STPKind::Text);
    b.server->registerHandler(2, 1, handlerB, STPKind::Text);
    sendText(*a.client.transport, "one");
    sendText(*b.client.transport, "two");
    STPTransport* const both[] = {a.server.transport.get(), b.server.transport.get()};
    STPStatus status;
    while (handlerA.seen.size() + handlerB.seen.size() < 2) STPTransport::serviceFirst(10s, both, &status);
    EXPECT_TRUE(status.ok());
    auto failing = ref_Make<STPTransport>(
        STPTransportOptions{.poll = [](std::span<pollfd>, int) { return errno = EINVAL, -1; }});
    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    ASSERT_TRUE(failing->bindFD(pair[0]));
    const FileDescriptor far(pair[1]);
    STPTransport* const one[] = {failing.get()};
    STPTransport::serviceFirst(0ms, one, &status);
    expectStatus(status, STPCode::Connection, "[serviceFirst]: select error");
    EXPECT_TRUE(failing->bound());
    // A descriptor that somebody else closed is told as the system's failure would be.
    int other[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, other), 0);
    End broken;
    ASSERT_TRUE(broken->bindFD(other[0]));
    ::close(other[0]);
    STPTransport* const two[] = {a.server.transport.get(), broken.transport.get()};
    STPTransport::serviceFirst(10s, two, &status);
    expectStatus(status, STPCode::Connection, "[serviceFirst]: select error");
    ASSERT_EQ(::dup2(other[1], other[0]), other[0]);  // for the close to come
    ::close(other[1]);
    failing->serviceOnce(0ms, &status);
    expectStatus(status, STPCode::Connection, "[serviceOnce]: select error, closing connection");
}

TEST(Connections, ALoopServesATransportWithoutWaitsOfItsOwn) {
    Connected both;
    EventLoop loop;
    loop.gate = &both.server.gate;
    NotingHandler handler;
    both.server->registerHandler(2, 1, handler, STPKind::Text);
    STPSocketListener listener(both.server.transport, loop.watches, loop.tasks);
    sendText(*both.client.transport, "one");
    while (handler.seen.empty()) loop.round();
    // Output that the socket does not take at once goes when it can.
    STPMessage large = both.server->newRequest(1, 2, STPKind::Text, 0, stpOneWay);
    large.body.assign(8 << 20, 'x');
    ASSERT_NE(both.server->sendAndFlush(large, 1), 0u);
    EXPECT_TRUE(both.server->wantsOutput());
    const STPSocketListener reader(both.client.transport, loop.watches, loop.tasks);
    while (both.server->wantsOutput()) loop.round();
    // A refused message is offered again without new input.
    int refusals = 2;
    handler.run = [&](STPMessage&) { return refusals-- == 0; };
    sendText(*both.client.transport, "two");
    while (handler.seen.size() < 4) loop.round(10ms);
    EXPECT_EQ(both.server->census().deferred, 0u);
    both.client->close();
    while (both.server->bound()) loop.round();
}

TEST(Connections, APipeServesAsAWire) {
    BytePipe pipe;
    ASSERT_TRUE(pipe_Make(pipe));
    End reader, writer;
    ASSERT_TRUE(reader->bindFD(pipe.read.give()));
    ASSERT_TRUE(writer->bindFD(pipe.write.give()));
    NotingHandler handler;
    reader->registerHandler(2, 1, handler, STPKind::Text);
    sendText(*writer.transport, "over a pipe");
    reader->serviceOnce(10s);
    EXPECT_EQ(handler.seen.size(), 1u);
    reader->close();
    STPStatus status;
    STPMessage message = writer->newRequest(2, 1, STPKind::Text, 0, stpOneWay);
    EXPECT_EQ(writer->sendMessage(message, nullptr, &status), 0u);  // and no signal ends the process
    expectStatus(status, STPCode::PeerClosed, "[handleWrite]: peer has closed connection");
}

TEST(InProcess, APairCarriesCallsAndServesItsPeerWhileItWaits) {
    End a, b;
    auto [first, second] = STPTransport::createInProcessPair(a.options(), b.options());
    EXPECT_TRUE(first->inProcess() && second->bound());
    NotingHandler handler, back;
    second->registerHandler(2, 1, handler, STPKind::Text);
    first->registerHandler(1, 2, back, STPKind::Text);
    back.run = [&, end = first.get()](STPMessage& message) {
        const STPTransport::HandledScope scope(*end, message);
        STPMessage reply = end->newReply(2, 1, message.header.sequence);
        return end->sendAndFlush(reply, 2) != 0;
    };
    handler.run = [&, end = second.get()](STPMessage& message) {
        const STPTransport::HandledScope scope(*end, message);
        STPMessage nested = end->newRequest(1, 2, STPKind::Text, 0, stpWantsReply | stpOwnContextOnly);
        EXPECT_NE(end->awaitResponse(end->sendMessage(nested, nullptr), nullptr), nullptr);
        STPMessage reply = end->newReply(1, 2, message.header.sequence);
        return end->sendAndFlush(reply, 2) != 0;
    };
    // More than the buffers hold at first.
    const uint32_t sequence = sendText(*first, std::string(100000, 'x'), stpWantsReply | stpOwnContextOnly);
    EXPECT_NE(first->awaitResponse(sequence, nullptr), nullptr);
    EXPECT_EQ(back.seen.size(), 1u);
    // A message that nobody waits for is taken up by the loop.
    handler.run = {};
    sendText(*first, "one way");
    EXPECT_EQ(b.gate.RunHeld(), 1u);
    EXPECT_EQ(handler.seen.size(), 2u);
    STPStatus status;
    EXPECT_FALSE(STPTransport::linkInProcess(*first, *second, &status));
    EXPECT_EQ(status.code, STPCode::Misuse);
    second->close();
    first->serviceOnce(0ms, &status);
    expectStatus(status, STPCode::PeerClosed, "[handleRead]: peer has closed connection");
    EXPECT_TRUE(STPTransport::linkInProcess(*first, *second, &status));
}

TEST(InProcess, AHeldEndLeavesWhatItCantHandleWithItsPeer) {
    End a, b;
    auto [first, second] = STPTransport::createInProcessPair(a.options(), b.options());
    NotingHandler handler;
    second->registerHandler(2, 1, handler, STPKind::Text);
    handler.run = [&](STPMessage&) { return handler.seen.clear(), true; };
    Gate::Token dialog = b.gate.Begin(GateWork::ModalDialog);
    const auto send = [&, end = first.get()](size_t count) {
        for (size_t i = 0; i < count; ++i) sendText(*end, std::string(1000, 'x'));
        second->handleRead();
    };
    send(STPTransport::deferredToPause);
    const size_t atPause = second->census().inBytes;
    for (int i = 0; i < 3; ++i) send(1000);
    EXPECT_EQ(second->census().deferred, STPTransport::deferredToPause);
    EXPECT_EQ(second->census().inBytes, atPause);
    EXPECT_GT(first->census().outBytes, 3000u * 1000u);
    dialog.End();
    while (b.gate.RunHeld() > 0) {
    }
    EXPECT_EQ(first->census().outBytes + second->census().inBytes + second->census().deferred, 0u);
}

TEST(InProcess, AnotherPartyReadsFromTheFieldsAndIsWoken) {
    End end;
    uint32_t offset = 4, length = 0, capacity = 256;
    std::vector<uint8_t> bytes(capacity);
    uint8_t* buffer = bytes.data();
    int wakes = 0;
    ASSERT_TRUE(end->bindInProcess({&offset, &length, &capacity, &buffer}, [&] { ++wakes; }));
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    sendText(*end.transport, "out");
    EXPECT_EQ(wakes, 1);
    const PeerWindow window = end->outWindow();
    const std::string read(*window.buffer + *window.offset, *window.buffer + *window.offset + *window.length);
    EXPECT_EQ(headers_Of(read).size(), 1u);
    *window.offset = *window.length = 0;
    const std::string packet = packet_Of(header_Text(1), "in");
    std::copy(packet.begin(), packet.end(), buffer + 4);
    length = static_cast<uint32_t>(packet.size());
    end->serviceOnce(0ms);
    ASSERT_EQ(handler.seen.size(), 1u);
    EXPECT_STREQ(handler.seen[0].body.c_str(), "in");
    EXPECT_EQ(offset + length, 0u);
    EXPECT_EQ(end->census().outBytes, 0u);
}
