// Calls and waits over a scripted wire: replies, order, channels, limits, and what the gate holds.
#include <gtest/gtest.h>

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/stp_retry_handler.h"
#include "shared/stp_transport/transport_testing.h"

using namespace std::chrono_literals;

namespace {

void expectStatus(const STPStatus& status, STPCode code, const std::string& text) {
    EXPECT_EQ(status.code, code) << status.text;
    EXPECT_EQ(status.text, text);
}

uint32_t request(ScriptedEnd& end, uint32_t flags) {
    STPMessage message = end->newRequest(1, 2, STPKind::Text, 0, flags);
    return end->sendMessage(message, nullptr);
}

}  // namespace

TEST(TransportCalls, AReplyEndsTheWaitAndATimeOutGivesUp) {
    ScriptedEnd end;
    STPStatus status;
    const uint32_t sequence = request(end, stpWantsReply);
    EXPECT_EQ(end.calls.messageDepth, 1);
    RoundsRetry answered(5, [&] { end.come(packet_Of(header_Reply(sequence), "yes")); });
    const STPMessagePtr reply = end->awaitResponse(sequence, &answered, &status);
    ASSERT_NE(reply, nullptr);
    EXPECT_STREQ(reply->body.c_str(), "yes");
    EXPECT_EQ(answered.started, 1);
    EXPECT_EQ(answered.finished, 1);
    RoundsRetry silent(3);
    EXPECT_EQ(end->awaitResponse(request(end, stpWantsReply), &silent, &status), nullptr);
    expectStatus(status, STPCode::TimeOut,
                 "[awaitResponse]: reached timeout while waiting to receive response");
    EXPECT_TRUE(end->bound());
    RoundsRetry closing(3, [&] { end->close(); });
    EXPECT_EQ(end->awaitResponse(request(end, stpWantsReply), &closing, &status), nullptr);
    expectStatus(status, STPCode::PeerClosed,
                 "[awaitResponse]: connection closed while waiting to receive response");
    EXPECT_EQ(closing.rounds, 2);
    EXPECT_EQ(end.calls.messageDepth, 0);
    EXPECT_EQ(end->census().frames, 0u);
    EXPECT_EQ(end->census().awaited, 0u);
}

TEST(TransportCalls, WhatWasNotSentIsNotAwaited) {
    ScriptedEnd end;
    STPMessage handled{header_Text(1, stpWantsReply, {0, 9, 1}), {}};
    const STPTransport::HandledScope scope(*end.transport, handled);
    STPMessage tooLong = end->newRequest(1, 2, STPKind::Text, 0, stpWantsReply);
    tooLong.body.assign(stpMostBody, 'x');
    STPStatus status;
    EXPECT_EQ(end->awaitResponse(end->sendMessage(tooLong, nullptr), nullptr, &status), nullptr);
    EXPECT_EQ(status.code, STPCode::Connection);
    EXPECT_EQ(end->census().frames, 1u);  // the request that is being handled
}

TEST(TransportCalls, TimeOutsFollowTheClock) {
    ScriptedEnd end;
    RetryHandler::Clock::time_point now{};
    end.script->onWait = [&](std::chrono::milliseconds longest) { now += longest; };
    STPRetryHandler limited(end.transport, 25000ms, [&] { return now; });
    STPStatus status;
    EXPECT_EQ(end->awaitResponse(request(end, stpWantsReply), &limited, &status), nullptr);
    EXPECT_EQ(status.code, STPCode::TimeOut);
    EXPECT_EQ(end.script->waits, (std::vector<std::chrono::milliseconds>{10000ms, 10000ms, 5000ms}));
    // The program's deadline shortens a wait as the limit does.
    limited.start();
    RetryHandler::SetDeadline(now + 3000ms);
    limited.wait();
    EXPECT_EQ(end.script->waits.back(), 3000ms);
    EXPECT_FALSE(limited.keepTrying());
    RetryHandler::SetDeadline(std::nullopt);
    TimeoutSTPRetryHandler timeout(end.transport, 500ms, [&] { return now; });
    EXPECT_EQ(timeout.limit(), 1000500ms);
    // A transport that is lost ends the wait without the time.
    request(end, stpOneWay);
    limited.start();
    EXPECT_TRUE(limited.keepTrying());
    end.script->end();
    end->handleRead();
    EXPECT_FALSE(limited.keepTrying());
    std::vector<int> naps;
    STPRetryHandler without(
        Ref<STPTransport>(), std::nullopt, [&] { return now; },
        [&](std::span<pollfd>, int milliseconds) { return naps.push_back(milliseconds), 0; });
    without.wait();
    EXPECT_EQ(naps, std::vector<int>{50});
    EXPECT_FALSE(without.keepTrying());
}

TEST(TransportCalls, ASendWaitsForItsBytesAndNothingIsHandledMeanwhile) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    end.script->takeNothing();
    STPMessage message = end->newRequest(1, 2, STPKind::Text, 0, stpOneWay);
    RoundsRetry reading(2, [&] { end.come(packet_Of(header_Text(1, stpOneWay | stpAnyTime))); });
    STPStatus status;
    EXPECT_EQ(end->sendMessage(message, &reading, &status), 0u);
    expectStatus(status, STPCode::TimeOut, "[sendMessage]: reached timeout while waiting to send message");
    EXPECT_EQ(handler.seen.size(), 0u);
    EXPECT_EQ(end->census().deferred, 2u);
    EXPECT_EQ(handler.held, 2);
    EXPECT_EQ(end.calls.messageDepth + end.calls.sendDepth, 0);
    // With the send over the loop takes them, without any input.
    EXPECT_EQ(end.gate.RunHeld(), 1u);
    EXPECT_EQ(handler.seen.size(), 2u);
    EXPECT_EQ(handler.held, 0);
}

TEST(TransportCalls, AnOrderedWaitTakesItsOwnChainOnly) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    const uint32_t sequence = request(end, stpWantsReply | stpOwnContextOnly);
    RoundsRetry retry(9, [&] {
        end.come(packet_Of(header_Text(1, stpWantsReply, {0, 9, 1})));  // foreign
        end.come(packet_Of(header_Text(2, stpWantsReply, {0, 1, 2})));  // called back
        end.come(packet_Of(header_Text(3, stpAnyTime, {0, 9, 1})));     // at any time
        end.come(packet_Of(header_Reply(sequence, {0, 1, 1})));
        end.come(packet_Of(header_Text(4, stpWantsReply, {0, 1, 1})));  // behind the reply
    });
    ASSERT_NE(end->awaitResponse(sequence, &retry), nullptr);
    ASSERT_EQ(handler.seen.size(), 2u);
    EXPECT_EQ(handler.seen[0].header.sequence, 2u);
    EXPECT_EQ(handler.seen[1].header.sequence, 3u);
    EXPECT_EQ(end.calls.orderedWaits, 0);
    end->serviceOnce(0ms);
    ASSERT_EQ(handler.seen.size(), 4u);
    EXPECT_EQ(handler.seen[2].header.sequence, 1u);
}

TEST(TransportCalls, ARefusedMessageComesAgainWithTheNextInputAndKeepsItsPlace) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    bool takes = false;
    handler.run = [&](STPMessage&) { return takes; };
    end.come(packet_Of(header_Text(1)) + packet_Of(header_Text(2)));
    EXPECT_EQ(handler.seen.size(), 1u);  // the second of the same call waits behind the first
    EXPECT_EQ(end->census().deferred, 2u);
    end->serviceOnce(1000ms);
    EXPECT_EQ(handler.seen.size(), 2u);
    EXPECT_EQ(end.script->waits.back(), 50ms);  // offered again soon, and no busy loop
    takes = true;
    end.come(packet_Of(header_Text(3, stpOneWay, {0, 10, 1})));
    std::vector<uint32_t> order;
    for (const STPMessage& message : handler.seen) order.push_back(message.header.sequence);
    EXPECT_EQ(order, (std::vector<uint32_t>{1, 1, 1, 2, 3}));
    EXPECT_EQ(end->census().deferred, 0u);
}

TEST(TransportCalls, WhatTheGateHoldsComesWhenItMay) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    end->registerHandler(2, 1, handler, STPKind::Negotiation);
    Gate::Token dialog = end.gate.Begin(GateWork::ModalDialog);
    end.come(packet_Of(header_Text(1)) + packet_Of({2, 1, 2, 0, 12, 1, 2, {}}));
    ASSERT_EQ(handler.seen.size(), 1u);
    EXPECT_TRUE(handler.seen[0].header.is(STPKind::Negotiation));
    // Reading stops before the queue overflows, and goes on afterwards.
    std::string flood;
    for (uint32_t i = 0; i < 20000; ++i)
        flood += packet_Of(header_Text(10 + i, stpOneWay, {0, static_cast<uint16_t>(i), 1}));
    end.script->come(flood);
    int rounds = 0;
    while (end->wantsInput() && ++rounds < 10000) end->handleRead();
    EXPECT_FALSE(end->wantsInput());
    EXPECT_EQ(end->census().deferred, STPTransport::deferredToPause);
    EXPECT_TRUE(end->bound());
    dialog.End();
    EXPECT_EQ(end.gate.RunHeld(), 1u);
    EXPECT_TRUE(end->wantsInput());
    while (!end.script->reads.empty()) end->handleRead();
    EXPECT_EQ(handler.seen.size(), 20002u);
    EXPECT_EQ(end->census().deferred, 0u);
    EXPECT_TRUE(end->bound());
}

TEST(TransportCalls, WithinAWaitTheLimitCloses) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    const uint32_t sequence = request(end, stpWantsReply | stpOwnContextOnly);
    std::string flood;
    for (uint32_t i = 0; i < 1000; ++i)
        flood += packet_Of(header_Text(10 + i, stpOneWay, {9, static_cast<uint16_t>(i), 1}));
    RoundsRetry retry(1000, [&] { end.come(flood); });
    STPStatus status;
    EXPECT_EQ(end->awaitResponse(sequence, &retry, &status), nullptr);
    EXPECT_EQ(status.code, STPCode::PeerClosed);
    EXPECT_EQ(retry.rounds, 1000 - 66);
    EXPECT_FALSE(end->bound());
    EXPECT_EQ(handler.held, 0);
    EXPECT_EQ(end.calls.messageDepth, 0);
}

TEST(TransportCalls, EveryQueueHasAnEnd) {
    const struct {
        const char* what;
        std::function<STPHeader(uint32_t)> header;
        size_t most;
        const char* text = "[handleRead]: too many messages wait, closing connection";
    } rows[] = {
        {"unclaimed", [](uint32_t i) { return header_Text(i); }, 65536},
        {"replies", [](uint32_t i) { return header_Reply(i); }, 65536},
        {"syncs", [](uint32_t i) { return STPHeader{i, 1, i, 0, 5, 0, 2, {}}; }, 65536},
        {"channels", [](uint32_t i) { return STPHeader{i, 1, i, 0, 6, 1, 2, {}}; }, 4096,
         "[handleRead]: too many channels, closing connection"},
    };
    for (const auto& row : rows) {
        ScriptedEnd end;
        uint32_t i = 0;
        while (end->bound() && i < 70000) end.come(packet_Of(row.header(++i)));
        EXPECT_EQ(i, row.most + 1) << row.what;
        expectStatus(end->status(), STPCode::Connection, row.text);
    }
    ScriptedEnd full;
    for (uint32_t i = 1; i <= STPTransport::mostChannels; ++i)
        full.come(packet_Of({i, 1, i, 0, 6, 1, 2, {}}));
    STPStatus status;
    EXPECT_EQ(full->createChannel(9, 9, nullptr, &status), nullptr);
    expectStatus(status, STPCode::Connection, "[createChannel]: there are too many channels");
    EXPECT_TRUE(full->bound());
    ScriptedEnd bytes;
    const std::string large = packet_Of(header_Text(1), std::string(8 << 20, 'x'));
    int packets = 0;
    while (bytes->bound() && packets < 100) bytes.come(large), ++packets;
    EXPECT_EQ(packets, 8);  // the eighth passes 64 MiB with what ends it
}

TEST(TransportCalls, ADepthBelowZeroIsToldAndSetRight) {
    std::string told;
    gen_set_report_sink([&](int, const std::string& line) { told += line; });
    STPCallState calls;
    calls.popped();
    gen_set_report_sink({});
    EXPECT_NE(told.find("negative message depth!"), std::string::npos) << told;
    EXPECT_EQ(calls.messageDepth, 0);
}

TEST(TransportCalls, CallsThatNestTooDeepWait) {
    NotingHandler handler;  // outlives what is deferred for it
    ScriptedEnd end;
    end->registerHandler(2, 1, handler, STPKind::Text);
    handler.run = [&](STPMessage& message) {
        const STPTransport::HandledScope scope(*end.transport, message);
        STPHeader deeper = message.header;
        ++deeper.context.ordinal;
        ++deeper.sequence;
        end.come(packet_Of(deeper));
        return true;
    };
    end.come(packet_Of(header_Text(1, stpWantsReply)));
    EXPECT_EQ(handler.seen.size(), 256u);
    EXPECT_EQ(end->census().deferred, 1u);
    EXPECT_EQ(end.calls.messageDepth, 0);
}

TEST(TransportCalls, SyncsCountForTheReversedIdsOnly) {
    ScriptedEnd end;
    STPStatus status;
    RoundsRetry wrong(2, [&] { end.come(packet_Of({1, 2, 1, 0, 5, 0, 2, {}})); });
    EXPECT_FALSE(end->awaitSync(1, 2, &wrong, &status));
    expectStatus(status, STPCode::TimeOut,
                 "[awaitSync]: reached timeout while waiting to receive sync packet");
    RoundsRetry right(2, [&] { end.come(packet_Of({2, 1, 1, 0, 5, 0, 2, {}})); });
    EXPECT_TRUE(end->awaitSync(1, 2, &right, &status));
    EXPECT_TRUE(status.ok());
    const auto headers = headers_Of(end.script->written);
    EXPECT_EQ(headers.back().kind, 5u);
    EXPECT_EQ(headers.back().tag, 0u);
}

TEST(TransportCalls, ChannelsAreCreatedStartedAndClosed) {
    ScriptedEnd end;
    STPStatus status;
    const auto control = [](uint32_t tag) { return packet_Of({2, 1, 1, 0, 6, tag, 2, {}}); };
    RoundsRetry silent(1);
    EXPECT_EQ(end->createChannel(1, 2, &silent, &status), nullptr);
    expectStatus(status, STPCode::TimeOut,
                 "[createChannel]: reached timeout while waiting to receive create ack");
    EXPECT_EQ(end->census().channels, 0u);
    RoundsRetry created(2, [&] { end.come(control(1)); });
    const auto channel = end->createChannel(1, 2, &created, &status);
    ASSERT_NE(channel, nullptr) << status.text;
    EXPECT_EQ(end->createChannel(1, 2, nullptr, &status), nullptr);
    expectStatus(status, STPCode::Misuse, "[createChannel]: Tried to create channel that exists");
    RoundsRetry none(1);
    EXPECT_FALSE(channel->startChannel(&none, &status));
    expectStatus(status, STPCode::TimeOut, "[startChannel]: reached timeout while waiting to receive start");
    EXPECT_FALSE(channel->startChannel(&none, &status));
    expectStatus(status, STPCode::Misuse, "[startChannel]: Channel start already sent.");
    EXPECT_TRUE(channel->closeChannel(nullptr, &status));
    EXPECT_FALSE(channel->closeChannel(nullptr, &status));
    expectStatus(status, STPCode::ChannelClosed, "[startChannel]: Channel already closed.");
    std::vector<uint32_t> tags;
    for (const STPHeader& header : headers_Of(end.script->written)) tags.push_back(header.tag);
    EXPECT_EQ(tags, (std::vector<uint32_t>{1, 1, 2, 3}));
    end->discardChannel(*channel);
    EXPECT_EQ(end->census().channels, 0u);
}

TEST(TransportCalls, ChannelsOfThePeerAreKnownReversed) {
    ScriptedEnd end;
    STPStatus status;
    end.come(packet_Of({2, 1, 1, 0, 6, 1, 2, {}}) + packet_Of({2, 1, 2, 0, 6, 2, 2, {}}));
    const auto theirs = end->findChannel(1, 2);
    ASSERT_NE(theirs, nullptr);
    EXPECT_EQ(theirs->firstId, 2u);
    EXPECT_TRUE(theirs->createReceived && theirs->startReceived);
    const auto ours = end->createChannel(1, 2, nullptr, &status);  // is acknowledged already
    EXPECT_EQ(ours, theirs);
    EXPECT_TRUE(ours->startChannel(nullptr, &status));
    end.come(packet_Of({4, 3, 3, 0, 6, 1, 2, {}}));
    const auto other = end->createChannel(3, 4, nullptr, &status);
    end.come(packet_Of({4, 3, 4, 0, 6, 3, 2, {}}));
    EXPECT_FALSE(other->startChannel(nullptr, &status));
    expectStatus(status, STPCode::ChannelClosed, "[startChannel]: Channel has been closed.");
    end.come(packet_Of({6, 5, 3, 0, 6, 1, 2, {}}));
    const auto third = end->createChannel(5, 6, nullptr, &status);
    RoundsRetry closes(2, [&] { end.come(packet_Of({6, 5, 4, 0, 6, 3, 2, {}})); });
    EXPECT_FALSE(third->startChannel(&closes, &status));
    expectStatus(status, STPCode::ChannelClosed, "[startChannel]: channel already closed before start");
    ASSERT_TRUE(other->closeChannel(nullptr));
    EXPECT_FALSE(other->startChannel(nullptr, &status));
    expectStatus(status, STPCode::Misuse, "[startChannel]: Channel close already sent.");
    // A channel that is still open says so when it goes; one that outlives the connection is closed.
    end->discardChannel(*ours);
    EXPECT_EQ(headers_Of(end.script->written).back().tag, 3u);
    end->close();
    EXPECT_FALSE(third->closeChannel(nullptr, &status));
    EXPECT_EQ(status.code, STPCode::ChannelClosed);
    ScriptedEnd stuck;
    stuck.come(packet_Of({2, 1, 1, 0, 6, 1, 2, {}}));
    const auto slow = stuck->createChannel(1, 2, nullptr, &status);
    stuck.script->takeNothing();
    RoundsRetry none(1);
    EXPECT_FALSE(slow->closeChannel(&none, &status));
    expectStatus(status, STPCode::TimeOut, "[closeChannel]: reached timeout while waiting to transmit close");
}

TEST(TransportCalls, AHandlerMayCloseAndTheLastReleaseMayComeWithin) {
    STPCallState calls;
    Gate gate;
    auto script = std::make_shared<WireScript>();
    auto transport = ref_Make<STPTransport>(STPTransportOptions{.calls = &calls, .gate = &gate});
    ASSERT_TRUE(transport->bindWire(std::make_unique<ScriptedWire>(script)));
    NotingHandler handler;
    transport->registerHandler(2, 1, handler, STPKind::Text);
    handler.run = [&](STPMessage& message) {
        const STPTransport::HandledScope scope(*transport, message);
        transport->close();
        return false;
    };
    script->come(packet_Of(header_Text(1)) + packet_Of(header_Text(2)));
    STPStatus status;
    transport->serviceOnce(0ms, &status);
    EXPECT_EQ(handler.seen.size(), 1u);
    EXPECT_EQ(transport->census().deferred, 0u);
    EXPECT_FALSE(transport->bound());

    auto again = std::make_shared<WireScript>();
    ASSERT_TRUE(transport->bindWire(std::make_unique<ScriptedWire>(again)));  // it can connect again
    handler.run = [&](STPMessage&) {
        transport->unregisterHandler(handler);
        transport = {};
        return true;
    };
    again->come(packet_Of(header_Text(3)) + packet_Of(header_Text(4)));
    transport->serviceOnce(0ms);
    EXPECT_TRUE(again->closed);
    EXPECT_EQ(handler.seen.size(), 2u);
    EXPECT_EQ(calls.messageDepth, 0);
}

TEST(TransportCalls, WhatFailsWithinAHandlerDoesNotEndTheWaitAround) {
    ScriptedEnd end;
    NotingHandler handler;
    end->registerHandler(2, 1, handler, STPKind::Text);
    handler.run = [&](STPMessage&) { return end->connect("127.0.0.1", 1), true; };
    const uint32_t sequence = request(end, stpWantsReply);
    RoundsRetry retry(3, [&] {
        end.come(packet_Of(header_Text(1, stpOneWay | stpAnyTime, {0, 9, 2})));
        if (handler.seen.size() == 2) end.come(packet_Of(header_Reply(sequence)));
    });
    EXPECT_NE(end->awaitResponse(sequence, &retry), nullptr);
}
