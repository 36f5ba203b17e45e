// Bytes in and out.
#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/socket_wire.h"
#include "shared/stp_transport/transport.h"

using std::chrono::milliseconds;

namespace {

constexpr uint32_t mostWrite = 0x100000, leastRoom = 1024;
// A whole packet shorter than this is left to the next reading.
constexpr uint32_t leastPacket = 40;
// So soon a message is offered again to a handler that could not take it.
constexpr milliseconds offerAgain{50};

}  // namespace

bool STPTransport::wantsInput() const {
    return listening() || (bound() && !paused());
}

void STPTransport::serviceOnce(milliseconds longest, STPStatus* status) {
    const Ref<STPTransport> hold(this);
    beginOperation();
    if (!bound() && !listening())
        closeWith({"[serviceOnce]: not bound and not listening.", STPCode::Connection});
    else
        serviceSocket(longest);
    give(status, true);
}

// What came before is handled first; a wait is only as long as nothing was to be done.
milliseconds STPTransport::handleBuffered(milliseconds longest) {
    if (options_.calls->sendDepth > 0 || !somethingToHandle()) return longest;
    return processInput() ? milliseconds(0) : std::min(longest, offerAgain);
}

void STPTransport::serviceSocket(milliseconds longest) {
    longest = handleBuffered(longest);
    if (!bound() && !listening()) return;
    const WireReadiness wanted{wantsInput(), wantsOutput(), SocketError::None};
    const WireReadiness ready =
        wire_ ? wire_->wait(wanted, longest) : wire_Wait(options_.poll, listening_.number(), wanted, longest);
    if (ready.error == SocketError::None)
        takeReadiness(ready);
    else if (ready.error != SocketError::Interrupted)
        closeWith({"[serviceOnce]: select error, closing connection", STPCode::Connection});
}

void STPTransport::takeReadiness(const WireReadiness& ready) {
    if (ready.output) handleWrite();
    if (ready.input && (bound() || listening())) handleRead();
}

bool STPTransport::somethingToHandle() const {
    if (in_.length >= leastPacket && !inIncomplete_ && !paused() &&
        frame_Measure(in_.bytes()).state == FrameExtent::State::Whole)
        return true;
    return std::any_of(deferred_.entries().begin(), deferred_.entries().end(), [&](const auto& entry) {
        return mayHandle(entry.second.message->header, entry.first);
    });
}

void STPTransport::serviceFirst(milliseconds longest, std::span<STPTransport* const> transports,
                                STPStatus* status) {
    const STPStatus selectFailed{"[serviceFirst]: select error", STPCode::Connection};
    std::vector<Ref<STPTransport>> serviced;
    for (STPTransport* transport : transports.first(std::min(transports.size(), mostServiced)))
        serviced.emplace_back(transport);
    STPStatus result;
    std::vector<pollfd> entries;
    for (const auto& transport : serviced) {
        transport->beginOperation();
        if (transport->bound() || transport->listening()) longest = transport->handleBuffered(longest);
        if (!transport->bound() && !transport->listening()) {
            result = {"[serviceFirst]: not bound and not listening.", STPCode::Connection};
            if (status) *status = result;
            return;
        }
        const int events = (transport->wantsInput() ? POLLIN : 0) | (transport->wantsOutput() ? POLLOUT : 0);
        // One without a descriptor is on this thread: it is looked at without a wait.
        if (!transport->descriptor()) longest = milliseconds(0);
        entries.push_back(
            {events != 0 ? transport->descriptor().value_or(-1) : -1, static_cast<short>(events), 0});
    }
    const PollFunction poll = serviced.empty() ? PollFunction(watches_Poll) : serviced[0]->options_.poll;
    if (poll(entries, static_cast<int>(longest.count())) < 0) {
        if (errno != EINTR) result = selectFailed;
    } else {
        for (size_t i = 0; i < serviced.size(); ++i) {
            STPTransport& transport = *serviced[i];
            const bool gone = (entries[i].revents & (POLLHUP | POLLERR)) != 0;
            // One that is not open would be told again at once, for ever.
            if (entries[i].revents & POLLNVAL) result = selectFailed;
            if (!transport.descriptor() && transport.bound())
                transport.serviceSocket(milliseconds(0));
            else
                transport.takeReadiness({(entries[i].revents & POLLIN) != 0 || gone,
                                         (entries[i].revents & POLLOUT) != 0, SocketError::None});
        }
    }
    if (status) *status = result;
}

void STPTransport::makeRoom() {
    if (in_.room().size() >= leastRoom) return;
    const uint32_t wanted = in_.initial + 2 * in_.length;
    GEN_ASSERT(wanted >= in_.initial);
    if (wanted <= in_.capacity && in_.capacity - in_.length >= leastRoom)
        in_.compact();
    else
        in_.reallocate(wanted);
}

// True when there may be more to read at once.
bool STPTransport::readOnce() {
    makeRoom();
    const WireMoved moved = wire_->read(in_.room());
    switch (moved.what) {
        case Moved::Some:
            in_.added(moved.bytes);
            inIncomplete_ = false;
            return true;
        case Moved::None:
            return false;
        case Moved::End:
            closeWith({"[handleRead]: peer has closed connection", STPCode::PeerClosed});
            return false;
        case Moved::Failed:
            break;
    }
    closeWith({"[handleRead]: read failed, closing connection", STPCode::Connection});
    return false;
}

void STPTransport::handleRead() {
    const Ref<STPTransport> hold(this);
    if (listening()) {
        acceptPending_ = true;
        return;
    }
    if (!bound()) return;
    if (!inProcess_) {
        readOnce();
    } else if (!paused()) {  // a watched socket is not asked then; the other party asks unwatched
        // All that the peer has; it can't grow while we copy. A peer that is gone is found by the first read.
        do {
            if (!readOnce()) break;
        } while (inProcess_ && inProcess_->pending() > 0);
    }
    if (bound()) processInput();
}

void STPTransport::handleWrite() {
    const Ref<STPTransport> hold(this);
    if (inProcess_) return inProcess_->wake();
    if (!bound() || out_.length == 0) return;
    const WireMoved moved = wire_->write(out_.bytes().first(std::min(out_.length, mostWrite)));
    switch (moved.what) {
        case Moved::Some:
            break;
        case Moved::None:
            return;
        case Moved::End:
            return closeWith({"[handleWrite]: peer has closed connection", STPCode::PeerClosed});
        case Moved::Failed:
            if (moved.error == SocketError::WouldBlock) return;
            return closeWith({socket_WriteText(moved.error), STPCode::Connection});
    }
    out_.taken(moved.bytes);
    if (out_.length > 0) return;
    if (out_.capacity > out_.initial) out_.reset();
    changed();
}

bool STPTransport::appendOutput(std::span<const uint8_t> first, std::span<const uint8_t> second) {
    const size_t count = first.size() + second.size(), padding = (4 - count % 4) % 4;
    const size_t bytes = count + padding;
    if (bytes + out_.length > mostOutput) return false;
    const bool wasEmpty = out_.length == 0;
    if (out_.room().size() < bytes) {
        if (out_.capacity - out_.length >= bytes)
            out_.compact();
        else
            out_.reallocate(out_.length + std::max(static_cast<uint32_t>(bytes), out_.length));
    }
    uint8_t* to = std::copy(first.begin(), first.end(), out_.room().data());
    to = std::copy(second.begin(), second.end(), to);
    std::fill_n(to, padding, uint8_t{0});
    out_.added(bytes);
    if (wasEmpty) changed();
    return true;
}

bool STPTransport::enqueue(STPMessage& message) {
    if (message.header.kind == 0) return fail(STPCode::Misuse, "[enqueueMessage]: invalid message header");
    if (!bound()) return failLost();
    message.finish();
    if (message.body.size() > stpMostBody)
        return fail(STPCode::Connection, "[enqueueMessage]: the message is too long");
    const uint32_t sequence = sequence_ == UINT32_MAX ? 1 : sequence_ + 1;
    message.header.sequence = sequence;
    uint8_t header[stpHeaderBytes];
    frame_WriteHeader(header, message.header, static_cast<uint32_t>(message.body.size()));
    const auto* body = reinterpret_cast<const uint8_t*>(message.body.data());
    if (!appendOutput(header, {body, message.body.size()}))
        return fail(STPCode::Connection, "[enqueueMessage]: too much waits to be written");
    sequence_ = sequence;
    sentFlag_ = true;
    lastKind_ = message.header.kind;
    lastTag_ = message.header.tag;
    return true;
}

uint32_t STPTransport::enqueueMessage(STPMessage& message, STPStatus* status) {
    beginOperation();
    return give(status, enqueue(message)) ? message.header.sequence : 0;
}
