// The transport over a scripted wire: bytes, buffers, texts and codes.
#include "shared/stp_transport/transport.h"

#include <gtest/gtest.h>

#include <random>

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/transport_testing.h"

using namespace std::chrono_literals;

namespace {

const STPTransport::Census atRest = [] {
    STPTransport::Census census{};
    census.outCapacity = census.inCapacity = 32768;
    return census;
}();

STPMessage textMessage(STPTransport& transport, std::string body, uint32_t flags = stpOneWay) {
    STPMessage message = transport.newRequest(1, 2, STPKind::Text, 0, flags);
    message.body = std::move(body);
    return message;
}

void expectStatus(const STPStatus& status, STPCode code, const std::string& text) {
    EXPECT_EQ(status.code, code) << status.text;
    EXPECT_EQ(status.text, text);
}

}  // namespace

TEST(Transport, MisuseIsToldByOperation) {
    STPStatus status;
    const auto fresh = ref_Make<STPTransport>();
    EXPECT_FALSE(fresh->tryAccept(STPTransport::AfterAccept::Close, &status));
    expectStatus(status, STPCode::Misuse, "[tryAccept]: Not listening as server");
    fresh->serviceOnce(0ms, &status);
    expectStatus(status, STPCode::Connection, "[serviceOnce]: not bound and not listening.");
    STPTransport* const all[] = {fresh.get()};
    STPTransport::serviceFirst(0ms, all, &status);
    expectStatus(status, STPCode::Connection, "[serviceFirst]: not bound and not listening.");

    ScriptedEnd bound;
    EXPECT_FALSE(bound->connect("127.0.0.1", 1, &status));
    expectStatus(status, STPCode::Misuse, "[connect]: Already connected");
    EXPECT_FALSE(bound->listen(0, nullptr, &status));
    expectStatus(status, STPCode::Misuse, "[listen]: Already connected");
    EXPECT_FALSE(bound->startListenOnFD(0, &status));
    expectStatus(status, STPCode::Misuse, "[startListenOnFD]: Already connected");
    EXPECT_FALSE(bound->tryAccept(STPTransport::AfterAccept::Close, &status));
    expectStatus(status, STPCode::Misuse, "[tryAccept]: Already connected");
    EXPECT_FALSE(bound->bindFD(0, &status));
    expectStatus(status, STPCode::Misuse, "[bindFD]: Already bound");

    STPStatus listenStatus;
    FileDescriptor socket = socket_Listen(0, ListenOn::Loopback, listenStatus);
    ASSERT_TRUE(socket.IsOpen()) << listenStatus.text;
    EXPECT_TRUE(fresh->startListenOnFD(socket.give(), &status));
    EXPECT_FALSE(fresh->connect("127.0.0.1", 1, &status));
    expectStatus(status, STPCode::Misuse, "[connect]: Already listening as server");
    EXPECT_FALSE(fresh->listen(0, nullptr, &status));
    expectStatus(status, STPCode::Misuse, "[listen]: Already listening as server");
    EXPECT_FALSE(fresh->startListenOnFD(0, &status));
    expectStatus(status, STPCode::Misuse, "[startListenOnFD]: Already listening as server");
    EXPECT_FALSE(fresh->bindFD(0, &status));
    expectStatus(status, STPCode::Misuse, "[bindFD]: Already listening");
}

TEST(Transport, EveryWriteErrorHasItsText) {
    const struct {
        SocketError error;
        const char* text;
    } rows[] = {{SocketError::Interrupted, "[handleWrite]: Call cancelled"},
                {SocketError::Access, "[handleWrite]: Cannot broadcast"},
                {SocketError::Fault, "[handleWrite]: Page fault"},
                {SocketError::Invalid, "[handleWrite]: Socket is not bound"},
                {SocketError::InProgress, "[handleWrite]: Call in progress"},
                {SocketError::NotSocket, "[handleWrite]: Not a valid socket"},
                {SocketError::MessageSize, "[handleWrite]: Too big for message-type socket"},
                {SocketError::NotSupported, "[handleWrite]: Operation not supported"},
                {SocketError::NetDown, "[handleWrite]: Network subsystem has failed"},
                {SocketError::NetReset, "[handleWrite]: Keep-alive failed"},
                {SocketError::Aborted, "[handleWrite]: Virtual circuit terminated"},
                {SocketError::Reset, "[handleWrite]: Virtual circuit reset"},
                {SocketError::NoBuffers, "[handleWrite]: No buffer space is available"},
                {SocketError::NotConnected, "[handleWrite]: Not connected"},
                {SocketError::ShutDown, "[handleWrite]: The socket has been shut down"},
                {SocketError::TimedOut, "[handleWrite]: Low-level timeout failure"},
                {SocketError::HostUnreachable, "[handleWrite]: Host unreachable"},
                {SocketError::NotInitialised, "[handleWrite]: WSA not initialized"},
                {SocketError::Other, "[handleWrite]: write failed"},
                {SocketError::Refused, "[handleWrite]: write failed"}};
    for (const auto& row : rows) {
        ScriptedEnd end;
        end.script->failWrite(row.error);
        STPMessage message = textMessage(*end.transport, "x");
        STPStatus status;
        EXPECT_EQ(end->sendMessage(message, nullptr, &status), 0u);
        expectStatus(status, STPCode::Connection, row.text);
        EXPECT_FALSE(end->bound());
        EXPECT_EQ(end->census(), atRest);
        EXPECT_EQ(end.calls.messageDepth, 0);
        // What ended the connection stays known.
        EXPECT_EQ(end->enqueueMessage(message, &status), 0u);
        expectStatus(status, STPCode::Connection, row.text);
    }
    EXPECT_STREQ(socket_WriteText(SocketError::WouldBlock), "[handleWrite]: Call would block");
    EXPECT_EQ(socket_ErrorOf(EPIPE), SocketError::ShutDown);
    EXPECT_EQ(socket_ErrorOf(ECONNRESET), SocketError::Reset);
    EXPECT_EQ(socket_ErrorOf(EXDEV), SocketError::Other);
}

TEST(Transport, LostPeersAndBadPacketsCloseWithAReason) {
    using Step = WireScript::Step;
    const Step end{Moved::End, {}, 0, SocketError::None, 0};
    const Step failed{Moved::Failed, {}, 0, SocketError::Reset, 0};
    std::string negative = packet_Of(header_Text(1)), shortHeader = negative, huge = negative;
    negative.replace(4, 4, "\xFF\xFF\xFF\xFF");
    shortHeader[0] = 30;
    huge.replace(4, 4, std::string("\0\0\0\x70", 4));
    const struct {
        Step step;
        STPCode code;
        const char* text;
    } rows[] = {
        {end, STPCode::PeerClosed, "[handleRead]: peer has closed connection"},
        {failed, STPCode::Connection, "[handleRead]: read failed, closing connection"},
        {{.bytes = negative}, STPCode::Connection, "[handleRead]: remote host sent invalid packet"},
        {{.bytes = shortHeader}, STPCode::Connection, "[handleRead]: remote host sent invalid packet"},
        {{.bytes = std::string(60, 'x')},
         STPCode::Connection,
         "[handleRead]: remote host sent invalid packet"},
        {{.bytes = huge}, STPCode::Connection, "[handleRead]: remote host sent a packet that is too long"},
    };
    for (const auto& row : rows) {
        ScriptedEnd transport;
        NotingHandler handler;
        transport->registerHandler(2, 1, handler, STPKind::Text);
        transport.script->reads.push_back(row.step);
        STPStatus status;
        transport->serviceOnce(0ms, &status);
        expectStatus(status, row.code, row.text);
        EXPECT_TRUE(transport.script->shutDown && transport.script->closed);
        EXPECT_EQ(handler.closed, 1);
    }
    ScriptedEnd written;
    written.script->writes.push_back(end);
    STPMessage message = textMessage(*written.transport, "x");
    STPStatus status;
    EXPECT_EQ(written->sendAndFlush(message, 2, &status), 0u);
    expectStatus(status, STPCode::PeerClosed, "[handleWrite]: peer has closed connection");
    ScriptedEnd waiting;
    waiting.script->waitError = SocketError::Interrupted;
    waiting->serviceOnce(0ms, &status);
    EXPECT_TRUE(status.ok() && waiting->bound());
    waiting.script->waitError = SocketError::Invalid;
    waiting->serviceOnce(0ms, &status);
    expectStatus(status, STPCode::Connection, "[serviceOnce]: select error, closing connection");
}

TEST(Transport, ClosingThatFailsIsPrinted) {
    std::string printed;
    gen_set_report_sink([&](int, const std::string& line) { printed += line; });
    ScriptedEnd end;
    end.script->shutDownError = 5;
    end.script->closeError = 9;
    end->close();
    gen_set_report_sink({});
    EXPECT_EQ(printed,
              "shutdown of socket -1 failed with error: 5\nclose of socket -1 failed with error: 9\n");
    EXPECT_TRUE(end->status().ok());
    EXPECT_TRUE(end->bindWire(std::make_unique<ScriptedWire>(std::make_shared<WireScript>())));
}

TEST(Transport, MessagesAreNumberedAndHaveTheirContext) {
    ScriptedEnd end;
    STPMessage none = textMessage(*end.transport, "x");
    none.header.kind = 0;
    STPStatus status;
    EXPECT_EQ(end->enqueueMessage(none, &status), 0u);
    expectStatus(status, STPCode::Misuse, "[enqueueMessage]: invalid message header");
    EXPECT_FALSE(end->takeSentFlag());
    for (uint32_t i = 1; i <= 2; ++i) {
        STPMessage message = textMessage(*end.transport, "x");
        EXPECT_EQ(end->enqueueMessage(message), i);
        EXPECT_EQ(message.header.context, (STPCallContext{0, static_cast<uint16_t>(i), 1}));
    }
    EXPECT_TRUE(end->takeSentFlag());
    EXPECT_FALSE(end->takeSentFlag());
    EXPECT_EQ(end->lastKind(), 14u);
    end->setLastSequence(0xFFFFFFFE);
    for (const uint32_t expected : {0xFFFFFFFFu, 1u, 2u}) {
        STPMessage message = textMessage(*end.transport, "x");
        EXPECT_EQ(message.header.context.low, static_cast<uint16_t>(expected));
        EXPECT_EQ(end->enqueueMessage(message), expected);
    }
    // Within a request that is handled the chain goes on; its reply has the request's place.
    STPMessage handled{header_Text(50, stpWantsReply, {3, 4, 5}), {}};
    const STPTransport::HandledScope scope(*end.transport, handled);
    EXPECT_EQ(textMessage(*end.transport, "").header.context, (STPCallContext{3, 4, 6}));
    const STPMessage reply = end->newReply(1, 2, 50);
    EXPECT_EQ(reply.header, (STPHeader{1, 2, 0, 50, 0xFFFFFFFF, stpNoTag, 0, {3, 4, 5}}));
}

TEST(Transport, OutputGrowsIsWrittenInPiecesAndShrinks) {
    ScriptedEnd end(64);
    end.script->takeNothing();
    STPMessage big = textMessage(*end.transport, std::string(3 << 20, 'b'));
    EXPECT_EQ(end->sendAndFlush(big, 1), 1u);
    EXPECT_EQ(end.script->written.size(), 0u);
    const size_t whole = end->census().outBytes;
    end->handleWrite();
    EXPECT_EQ(end.script->written.size(), size_t{1} << 20);  // at most 1 MiB a call
    end.script->takeOnly(10);
    end->handleWrite();
    EXPECT_EQ(end->census().outBytes, whole - (size_t{1} << 20) - 10);
    STPMessage small = textMessage(*end.transport, "small");
    EXPECT_EQ(end->enqueueMessage(small), 2u);
    while (end->wantsOutput()) end->serviceOnce(0ms);
    EXPECT_EQ(end->census().outCapacity, 64u);
    const auto headers = headers_Of(end.script->written);
    ASSERT_EQ(headers.size(), 2u);
    EXPECT_EQ(headers[1].sequence, 2u);
}

TEST(Transport, OutputHasAnEnd) {
    ScriptedEnd end;
    STPStatus status;
    STPMessage tooLong = textMessage(*end.transport, std::string(stpMostBody, 'x'));
    EXPECT_EQ(end->enqueueMessage(tooLong, &status), 0u);
    expectStatus(status, STPCode::Connection, "[enqueueMessage]: the message is too long");
    STPMessage message = textMessage(*end.transport, std::string(stpMostBody - 64, 'x'));
    uint32_t sent = 0;
    while (sent < 100 && end->enqueueMessage(message, &status) != 0) ++sent;
    EXPECT_EQ(sent, 16u);  // each a little below 16 MiB with its header
    EXPECT_EQ(status.code, STPCode::Connection);
    EXPECT_TRUE(end->bound());
    EXPECT_LE(end->census().outBytes, STPTransport::mostOutput);
}

TEST(Transport, AChannelTellsWhyItsControlCouldNotBeSent) {
    ScriptedEnd end;
    STPStatus status;
    end.come(packet_Of({2, 1, 1, 0, 6, 1, 2, {}}));
    const auto channel = end->createChannel(1, 2, nullptr, &status);
    ASSERT_NE(channel, nullptr) << status.text;
    for (const size_t bytes : {stpMostBody - 64, size_t{0}}) {
        STPMessage message = textMessage(*end.transport, std::string(bytes, 'x'));
        while (end->enqueueMessage(message) != 0) {
        }
    }
    EXPECT_FALSE(channel->startChannel(nullptr, &status));
    expectStatus(status, STPCode::Connection, "[enqueueMessage]: too much waits to be written");
    EXPECT_FALSE(channel->closeChannel(nullptr, &status));
    expectStatus(status, STPCode::Connection, "[enqueueMessage]: too much waits to be written");
    EXPECT_TRUE(end->bound());
}

TEST(Transport, WritesBeforeItReadsAndHandlesWhatIsBufferedFirst) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    std::string order;
    STPMessage out = textMessage(*end.transport, "out");
    ASSERT_NE(end->enqueueMessage(out), 0u);
    handler.run = [&](STPMessage&) {
        return order += end.script->written.empty() ? "early " : "late ", true;
    };
    end.script->come(packet_Of(header_Text(1)));
    end->serviceOnce(100ms);
    EXPECT_EQ(order, "late ");
    // While a handler runs, two more come at once; its own round takes them without a wait.
    handler.run = [&](STPMessage& message) {
        if (message.header.sequence == 2) end->serviceOnce(500ms);
        return true;
    };
    end.script->waits.clear();
    end.come(packet_Of(header_Text(2)) + packet_Of(header_Text(3)) + packet_Of(header_Text(4)));
    EXPECT_EQ(handler.seen.size(), 4u);
    EXPECT_EQ(end.script->waits, (std::vector<std::chrono::milliseconds>{0ms}));
}

TEST(Transport, APacketIsTheSameWhereverItIsCut) {
    std::string odd = packet_Of(header_Text(2), "12345");
    odd[4] = 5;  // a body of 5 bytes: three of padding follow
    odd.resize(44 + 8);
    const std::string stream = packet_Of(header_Text(1), "first") + odd + packet_Of(header_Text(3), "third");
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        ScriptedEnd end(48);
        NotingHandler handler;
        end->registerHandler(2, 1, handler, STPKind::Text);
        end.come(stream.substr(0, cut));
        end.come(stream.substr(cut));
        ASSERT_EQ(handler.seen.size(), 3u) << cut;
        EXPECT_EQ(handler.seen[1].body, "12345");
        EXPECT_STREQ(handler.seen[2].body.c_str(), "third");
        EXPECT_EQ(end->census().inBytes, 0u);
    }
}

TEST(Transport, PacketsDoubledOrSwappedDoTheSameWhereverTheyAreCut) {
    const STPHeader unknown{4, 3, 2, 0, static_cast<uint32_t>(STPKind::Text), 0, stpOneWay, {0, 8, 1}};
    const std::vector<std::string> packets{
        packet_Of(header_Text(1), "a:0x1 "),  packet_Of(unknown, "b"),
        packet_Of(header_Reply(7), "c"),      packet_Of({2, 1, 3, 0, 5, 0, 2, {}}),
        packet_Of({2, 1, 4, 0, 6, 1, 2, {}}), packet_Of({2, 1, 5, 0, 6, 2, 2, {}}),
    };
    const auto feed = [](const std::string& stream, size_t texts, size_t unclaimed, size_t replies,
                         size_t syncs) {
        for (size_t cut = 0; cut <= stream.size(); ++cut) {
            ScriptedEnd end(48);
            NotingHandler handler;
            end->registerHandler(2, 1, handler, STPKind::Text);
            end.come(stream.substr(0, cut));
            end.come(stream.substr(cut));
            const STPTransport::Census census = end->census();
            ASSERT_EQ(handler.seen.size(), texts) << cut;
            ASSERT_EQ(census.unclaimed, unclaimed) << cut;
            ASSERT_EQ(census.replies, replies) << cut;
            ASSERT_EQ(census.syncs, syncs) << cut;
            ASSERT_EQ(census.channels, 1u) << cut;
            ASSERT_EQ(census.inBytes + census.deferred, 0u) << cut;
            ASSERT_TRUE(end->bound()) << cut;
        }
    };
    const auto joined = [](const std::vector<std::string>& parts) {
        std::string stream;
        for (const std::string& part : parts) stream += part;
        return stream;
    };
    for (size_t i = 0; i < packets.size(); ++i) {
        std::vector<std::string> doubled = packets;
        doubled.insert(doubled.begin() + static_cast<std::ptrdiff_t>(i), packets[i]);
        feed(joined(doubled), 1 + (i == 0), 1 + (i == 1), 1 + (i == 2), 1 + (i == 3));
        for (size_t j = i + 1; j < packets.size(); ++j) {
            std::vector<std::string> swapped = packets;
            std::swap(swapped[i], swapped[j]);
            feed(joined(swapped), 1, 1, 1, 1);
        }
    }
}

TEST(Transport, StreamsWithBytesCutDoubledOrSwappedNeverHurt) {
    const std::string stream = packet_Of(header_Text(1, stpWantsReply), "a:0x1 ") +
                               packet_Of(header_Reply(7), "b") + packet_Of({2, 1, 3, 0, 5, 0, 2, {}}) +
                               packet_Of({2, 1, 4, 0, 6, 1, 2, {}});
    for (size_t at = 0; at + 4 < stream.size(); ++at) {
        std::string cut = stream, doubled = stream, swapped = stream;
        cut.erase(at, 1);
        doubled.insert(at, 1, stream[at]);
        std::swap(swapped[at], swapped[at + 1]);
        for (const std::string& damaged : {cut, doubled, swapped, stream.substr(0, at), stream.substr(at)}) {
            ScriptedEnd end;
            NotingHandler handler;
            end->registerHandler(2, 1, handler, STPKind::Text);
            end.come(damaged);
            end.script->end();
            end->handleRead();
            EXPECT_FALSE(end->bound());
            EXPECT_FALSE(end->status().ok());
            EXPECT_EQ(handler.closed, 1);
        }
    }
}

TEST(Transport, TheIncomingBufferGrowsAndShrinks) {
    ScriptedEnd end(64);
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    const std::string packet = packet_Of(header_Text(1), std::string(5000, 'x'));
    end.come(packet.substr(0, packet.size() - 1));
    EXPECT_GE(end->census().inCapacity, packet.size());
    end.come(packet.substr(packet.size() - 1));
    EXPECT_EQ(handler.seen.size(), 1u);
    EXPECT_EQ(end->census().inCapacity, 64u);
    EXPECT_EQ(end->census().inBytes, 0u);
}

TEST(Transport, KindsGoWhereTheyBelong) {
    ScriptedEnd end;
    end.come(packet_Of({2, 1, 1, 0, 4, 0, 0, {}}));
    EXPECT_EQ(end->census(), [] {
        auto c = atRest;
        return c;
    }());
    end.come(packet_Of(header_Text(2)) + packet_Of(header_Reply(77)));
    EXPECT_EQ(end->census().unclaimed, 1u);
    EXPECT_EQ(end->census().replies, 1u);
    EXPECT_EQ(end->takeUnclaimed(2, 1, STPKind::Binary), nullptr);
    EXPECT_NE(end->takeUnclaimed(2, 1, STPKind::Text), nullptr);
    // A reply that nobody waited for is found later.
    EXPECT_NE(end->awaitResponse(77, nullptr), nullptr);
    // Several handlers all see it; one that another took out does not.
    NotingHandler first, second, third;
    for (NotingHandler* handler : {&first, &second, &third})
        end->registerHandler(2, 1, *handler, STPKind::Text);
    first.run = [&](STPMessage&) { return end->unregisterHandler(second), false; };
    end.come(packet_Of(header_Text(3)));
    EXPECT_EQ(first.seen.size(), 1u);
    EXPECT_EQ(second.seen.size(), 0u);
    EXPECT_EQ(third.seen.size(), 1u);
    EXPECT_TRUE(third.notAwaited[0]);
    EXPECT_EQ(end->census().deferred, 0u);
}

TEST(Transport, AForwarderMovesPacketsUnread) {
    ScriptedEnd near, far;
    struct Router : STPForwarder {
        STPTransport* to = nullptr;
        STPRoute routeOf(uint32_t, uint32_t secondId) override {
            if (secondId == 7) return {STPRoute::To::Nowhere};
            return secondId == 1 ? STPRoute{STPRoute::To::Peer, to} : STPRoute{};
        }
    } router;
    router.to = far.transport.get();
    near->setForwarder(&router);
    std::string longer = packet_Of(header_Text(1), "x"), odd = packet_Of(header_Text(2), "12345");
    longer.replace(0, 4, std::string("\x30\0\0\0", 4));  // a header that nobody here knows all of
    longer.insert(44, "LAST");
    odd[4] = 5;
    odd.resize(52);
    STPHeader own = header_Text(3);
    own.secondId = 9;
    STPHeader gone = header_Text(5);
    gone.secondId = 7;
    near.come(longer + packet_Of(gone) + odd + packet_Of(own));
    far->handleWrite();
    std::string expected = odd;
    expected.replace(49, 3, 3, '\0');
    EXPECT_EQ(far.script->written, longer + expected);
    EXPECT_EQ(near->census().unclaimed, 1u);
    // A far side that reads nothing is closed when it has too much; the near one stays.
    far.script->writes.assign(1000, {Moved::None, {}, 0, SocketError::None, 0});
    const std::string large = packet_Of(header_Text(4), std::string(stpMostBody - 8, 'x'));
    for (int i = 0; i < 16; ++i) near.come(large);
    EXPECT_FALSE(far->bound());
    expectStatus(far->status(), STPCode::Connection, "[forward]: too much waits to be written");
    EXPECT_TRUE(near->bound());
}
