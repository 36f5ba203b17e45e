// What the tests of the transport share: a transport on a scripted wire, packets made by hand, handlers that
// write down what they see, and waits that end when a test says so.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "shared/stp_transport/scripted_wire_testing.h"
#include "shared/stp_transport/transport.h"

inline std::string packet_Of(STPHeader header, std::string body = {}) {
    STPMessage message{header, std::move(body)};
    message.finish();
    std::string packet(stpHeaderBytes, '\0');
    frame_WriteHeader(reinterpret_cast<uint8_t*>(packet.data()), header,
                      static_cast<uint32_t>(message.body.size()));
    return packet + message.body;
}

// The headers of the packets in a stream, which must hold whole ones only.
inline std::vector<STPHeader> headers_Of(std::string_view stream) {
    std::vector<STPHeader> headers;
    while (!stream.empty()) {
        const std::span bytes(reinterpret_cast<const uint8_t*>(stream.data()), stream.size());
        const FrameExtent extent = frame_Measure(bytes);
        if (extent.state != FrameExtent::State::Whole) {
            ADD_FAILURE() << "no whole packet";
            break;
        }
        headers.push_back(frame_ReadHeader(bytes, extent.headerBytes));
        stream.remove_prefix(extent.step());
    }
    return headers;
}

// A process of its own: counters, a gate, a transport on a scripted wire that is bound.
struct ScriptedEnd {
    STPCallState calls;
    Gate gate;
    std::shared_ptr<WireScript> script = std::make_shared<WireScript>();
    Ref<STPTransport> transport;

    explicit ScriptedEnd(uint32_t initial = 32768) {
        transport = ref_Make<STPTransport>(
            STPTransportOptions{.outInitial = initial, .inInitial = initial, .calls = &calls, .gate = &gate});
        EXPECT_TRUE(transport->bindWire(std::make_unique<ScriptedWire>(script)));
    }
    STPTransport* operator->() const { return transport.get(); }
    // What comes next is read and handled.
    void come(std::string bytes) {
        script->come(std::move(bytes));
        while (transport->bound() && !script->reads.empty()) transport->handleRead();
    }
};

// A socket that listens on a port of the system's choice.
struct Listening {
    FileDescriptor socket;
    uint16_t port = 0;
    Listening() {
        STPStatus status;
        socket = socket_Listen(0, ListenOn::Loopback, status);
        EXPECT_TRUE(socket.IsOpen()) << status.text;
        port = socket_Port(socket.number()).value_or(0);
    }
};

// Writes down the messages of channel 2, 1 and what the test does with them.
struct NotingHandler : STPHandler {
    std::vector<STPMessage> seen;
    std::vector<bool> notAwaited;
    std::function<bool(STPMessage&)> run;  // true when empty
    uint32_t added = 0;
    int closed = 0, held = 0;

    bool handleMessage(STPMessage& message, bool unawaited) override {
        seen.push_back(message);
        notAwaited.push_back(unawaited);
        return run ? run(message) : true;
    }
    uint32_t addedFlags(const STPMessage&) override { return added; }
    std::shared_ptr<void> holdWhileDeferred() override {
        ++held;
        return std::shared_ptr<void>(this, [this](void*) { --held; });
    }
    void transportClosed() override { ++closed; }
};

// Does something in each round of a wait, and gives up after so many.
struct RoundsRetry : RetryHandler {
    int rounds, started = 0, finished = 0;
    std::function<void()> inRound;
    explicit RoundsRetry(int most, std::function<void()> round = {})
        : rounds(most), inRound(std::move(round)) {}
    void start() override { ++started; }
    bool keepTrying() override { return rounds-- > 0; }
    void finish() override { ++finished; }
    void wait() override {
        if (inRound) inRound();
    }
};

inline STPHeader header_Text(uint32_t sequence, uint32_t flags = stpOneWay,
                             STPCallContext context = {0, 9, 1}) {
    return {2, 1, sequence, 0, static_cast<uint32_t>(STPKind::Text), 0, flags, context};
}
inline STPHeader header_Reply(uint32_t inReplyTo, STPCallContext context = {0, 1, 1}) {
    return {2, 1, 1, inReplyTo, static_cast<uint32_t>(STPKind::Reply), stpNoTag, 0, context};
}
