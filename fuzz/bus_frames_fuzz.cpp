// What a peer sends, in any pieces, to a transport whose handlers take, refuse, answer, call or close.
#include <algorithm>

#include "fuzz/support.h"
#include "shared/stp_transport/scripted_wire_testing.h"
#include "shared/stp_transport/transport.h"

namespace {

constexpr int deepestCalls = 8;

struct Handler : STPHandler {
    STPTransport& transport;
    uint8_t choices;
    int depth = 0, held = 0;
    Handler(STPTransport& t, uint8_t c) : transport(t), choices(c) {}

    bool handleMessage(STPMessage& message, bool) override {
        if ((choices & 1) != 0 && message.header.tag % 3 == 0) return false;
        const STPTransport::HandledScope scope(transport, message);
        if ((choices & 2) != 0 && message.header.tag % 5 == 0) transport.close();
        if ((choices & 4) != 0 && depth < deepestCalls) call();
        if ((message.header.flags & stpWantsReply) == 0) return true;
        STPMessage reply = transport.newReply(1, 2, message.header.sequence);
        transport.sendAndFlush(reply, 2);
        return true;
    }
    void call() {
        struct Few : RetryHandler {
            STPTransport& transport;
            int rounds = 3;
            explicit Few(STPTransport& t) : transport(t) {}
            bool keepTrying() override { return rounds-- > 0; }
            void wait() override { transport.serviceOnce(std::chrono::milliseconds(0)); }
        } few(transport);
        ++depth;
        STPMessage request = transport.newRequest(1, 2, STPKind::Text, 0, stpWantsReply | stpOwnContextOnly);
        transport.awaitResponse(transport.sendMessage(request, &few), &few);
        --depth;
    }
    uint32_t addedFlags(const STPMessage& message) override {
        return message.header.tag % 2 == 0 ? stpOrdered : stpAnyTime;
    }
    std::shared_ptr<void> holdWhileDeferred() override {
        ++held;
        return std::shared_ptr<void>(this, [this](void*) { --held; });
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < 2) return 0;
    const uint8_t choices = data[0];
    const size_t piece = size_t{1} + data[1];
    STPCallState calls;
    Gate gate;
    const auto script = std::make_shared<WireScript>();
    for (size_t at = 2; at < size; at += piece)
        script->come(std::string(data + at, data + std::min(at + piece, size)));
    script->end();
    const auto transport = ref_Make<STPTransport>(
        STPTransportOptions{.outInitial = 128, .inInitial = 128, .calls = &calls, .gate = &gate});
    transport->bindWire(std::make_unique<ScriptedWire>(script));
    Handler handler(*transport, choices);
    for (const STPKind kind : {STPKind::Negotiation, STPKind::Command, STPKind::Text, STPKind::Binary})
        transport->registerHandler(2, 1, handler, kind);
    if ((choices & 8) != 0) {
        Gate::Token dialog = gate.Begin(GateWork::ModalDialog);
        transport->serviceOnce(std::chrono::milliseconds(0));
        dialog.End();
    }
    for (size_t i = 0; transport->bound() && i < 2 * size; ++i) {
        transport->serviceOnce(std::chrono::milliseconds(0));
        gate.RunHeld();
    }
    transport->close();
    const STPTransport::Census census = transport->census();
    fuzz_Check(census.deferred + census.unclaimed + census.replies + census.awaited + census.syncs +
                   census.channels + census.frames + census.outBytes + census.inBytes ==
               0);
    fuzz_Check(handler.held == 0 && calls.messageDepth == 0 && calls.sendDepth == 0 &&
               calls.orderedWaits == 0);
    transport->unregisterHandler(handler);
    return 0;
}
