// Requests, replies, and the waits between them.
#include <algorithm>

#include "shared/libcxxutil/raised.h"
#include "shared/stp_transport/transport.h"

using std::chrono::milliseconds;

namespace {

constexpr milliseconds roundWithoutHandler{10000};

}  // namespace

STPMessage STPTransport::newRequest(uint32_t firstId, uint32_t secondId, STPKind kind, uint32_t tag,
                                    uint32_t flags) {
    if (frames_.empty())
        defaultFrame_.context.low = static_cast<uint16_t>(sequence_ == UINT32_MAX ? 1 : sequence_ + 1);
    STPMessage message;
    message.header = {firstId, secondId, 0, 0, static_cast<uint32_t>(kind), tag, flags, topFrame().context};
    ++message.header.context.ordinal;
    return message;
}

STPMessage STPTransport::newReply(uint32_t firstId, uint32_t secondId, uint32_t inReplyTo) const {
    STPMessage message;
    message.header = {
        firstId, secondId,          0, inReplyTo, static_cast<uint32_t>(STPKind::Reply), stpNoTag,
        0,       topFrame().context};
    return message;
}

void STPTransport::pushFrame(const STPHeader& header, uint32_t ownSequence) {
    frames_.push_back({header.context, header.flags, ownSequence});
    options_.calls->pushed();
}

void STPTransport::popFrameOf(uint32_t ownSequence) {
    const auto frame = std::find_if(frames_.rbegin(), frames_.rend(), [&](const STPFrame& candidate) {
        return candidate.sequence == ownSequence;
    });
    if (frame == frames_.rend()) return;
    frames_.erase(std::next(frame).base());
    options_.calls->popped();
    options_.calls->settle();
}

STPTransport::HandledScope::HandledScope(STPTransport& transport, const STPMessage& message)
    : transport_(&transport),
      frames_(transport.frames_.size()),
      depth_(transport.options_.calls->messageDepth) {
    transport.pushFrame(message.header, 0);
}

STPTransport::HandledScope::~HandledScope() {
    STPCallState& calls = *transport_->options_.calls;
    transport_->frames_.resize(std::min(transport_->frames_.size(), frames_));
    calls.messageDepth = depth_;
    calls.settle();
}

bool STPTransport::waitUntil(RetryHandler* retry, const std::function<bool()>& done) {
    const Ref<STPTransport> hold(this);
    const size_t connection = connection_;
    bool result = false;
    if (retry) retry->start();
    {
        const Raised waiting(waits_);
        changed();  // reading goes on within a wait
        while (!(result = done()) && connection == connection_ && status_.ok()) {
            if (!retry) {
                serviceOnce(roundWithoutHandler);
                continue;
            }
            if (!retry->keepTrying()) break;
            retry->wait();
        }
    }
    if (retry) retry->finish();
    changed();
    return result;
}

bool STPTransport::writeOut(RetryHandler* retry, const char* timeOut) {
    if (inProcess_) {
        inProcess_->wake();
        return bound();
    }
    const size_t connection = connection_;
    {
        const Raised sending(options_.calls->sendDepth);
        handleWrite();
        if (wantsOutput()) waitUntil(retry, [this] { return !wantsOutput(); });
    }
    options_.calls->settle();
    if (!bound() || connection != connection_) return failLost();
    return wantsOutput() ? fail(STPCode::TimeOut, timeOut) : status_.ok();
}

bool STPTransport::sendWritten(STPMessage& message, RetryHandler* retry, const char* timeOut) {
    if (!enqueue(message)) return false;
    const uint32_t sequence = message.header.sequence;
    pushFrame(message.header, sequence);
    const bool sent = writeOut(retry, timeOut);
    if (!sent || (message.header.flags & stpOneWay) != 0) popFrameOf(sequence);
    return sent;
}

uint32_t STPTransport::sendMessage(STPMessage& message, RetryHandler* retry, STPStatus* status) {
    const Ref<STPTransport> hold(this);
    beginOperation();
    const bool sent =
        sendWritten(message, retry, "[sendMessage]: reached timeout while waiting to send message");
    return give(status, sent) ? message.header.sequence : 0;
}

uint32_t STPTransport::sendAndFlush(STPMessage& message, int rounds, STPStatus* status) {
    const Ref<STPTransport> hold(this);
    beginOperation();
    bool sent = enqueue(message);
    const size_t connection = connection_;
    if (sent && inProcess_) rounds = 1;
    for (; sent && rounds > 0 && bound() && out_.length > 0; --rounds) handleWrite();
    if (sent && connection != connection_) sent = failLost();
    return give(status, sent) ? message.header.sequence : 0;
}

STPMessagePtr STPTransport::waitForReply(uint32_t sequence, RetryHandler* retry) {
    if (STPMessagePtr reply = replies_.take(sequence)) return reply;
    const size_t connection = connection_;
    if (bound()) {
        int unordered = 0;
        const auto frame = std::find_if(frames_.rbegin(), frames_.rend(),
                                        [&](const STPFrame& f) { return f.sequence == sequence; });
        const bool ordered = frame != frames_.rend() && (frame->flags & stpOwnContextOnly) != 0;
        const Raised waiting(ordered ? options_.calls->orderedWaits : unordered);
        awaited_.insert(sequence);
        waitUntil(retry, [&] { return replies_.has(sequence); });
        if (connection == connection_) awaited_.erase(sequence);
    }
    STPMessagePtr reply = connection == connection_ ? replies_.take(sequence) : nullptr;
    if (!reply && bound() && connection == connection_)
        fail(STPCode::TimeOut, "[awaitResponse]: reached timeout while waiting to receive response");
    else if (!reply)
        fail(STPCode::PeerClosed, "[awaitResponse]: connection closed while waiting to receive response");
    return reply;
}

STPMessagePtr STPTransport::awaitResponse(uint32_t sequence, RetryHandler* retry, STPStatus* status) {
    const Ref<STPTransport> hold(this);
    // What was not sent has no answer; why stands in the status.
    if (sequence == 0) {
        give(status, false);
        return nullptr;
    }
    beginOperation();
    STPMessagePtr reply = waitForReply(sequence, retry);
    popFrameOf(sequence);
    give(status, reply != nullptr);
    return reply;
}

bool STPTransport::sendControl(STPKind kind, uint32_t firstId, uint32_t secondId, uint32_t tag) {
    STPMessage message = newRequest(firstId, secondId, kind, tag, stpOneWay);
    if (!enqueue(message)) return false;
    handleWrite();
    return bound() || failLost();
}

bool STPTransport::takeSync(uint32_t firstId, uint32_t secondId) {
    const auto found = std::find(syncs_.begin(), syncs_.end(), ChannelKey{firstId, secondId});
    if (found == syncs_.end()) return false;
    syncs_.erase(found);
    return true;
}

bool STPTransport::awaitSync(uint32_t firstId, uint32_t secondId, RetryHandler* retry, STPStatus* status) {
    const Ref<STPTransport> hold(this);
    beginOperation();
    if (!sendControl(STPKind::Sync, firstId, secondId, 0)) return give(status, false);
    const size_t connection = connection_;
    if (waitUntil(retry, [&] { return !wantsOutput() && takeSync(secondId, firstId); }))
        return give(status, true);
    if (connection != connection_ || !status_.ok()) return give(status, failLost());
    return give(status,
                fail(STPCode::TimeOut, "[awaitSync]: reached timeout while waiting to receive sync packet"));
}
