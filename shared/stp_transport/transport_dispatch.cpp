// What becomes of packets that came.
#include <algorithm>

#include "shared/stp_transport/transport.h"

namespace {

constexpr uint64_t notYetDeferred = UINT64_MAX;
// From this kind on a handler is called only when its message may be handled now.
constexpr uint32_t firstOrderedKind = static_cast<uint32_t>(STPKind::Negotiation);
constexpr uint32_t tagCreate = 1, tagStart = 2, tagClose = 3;
constexpr uint32_t shrinkFactor = 10;
// So much in the queues ends the reading while the gate holds the handlers; what a peer has sent until then
// stays in the system's buffers and its own.
constexpr size_t bytesToPause = QueueUse::mostBytes / 2;

}  // namespace

bool STPTransport::processInput() {
    const Ref<STPTransport> hold(this);
    const size_t pass = ++pass_;
    bool some = handleDeferred(pass);
    some = processPackets(pass) || some;
    if (in_.length == 0 && in_.capacity > shrinkFactor * in_.initial) in_.reset();
    if (deferred_.size() > 0 || paused()) arrangeTurn();
    return some;
}

void STPTransport::processDeferred() {
    if (bound()) processInput();
}

bool STPTransport::processPackets(size_t pass) {
    bool some = false;
    while (bound() && in_.length > 0 && !inIncomplete_ && !paused()) {
        if (skip_ > 0) {
            const size_t count = std::min<size_t>(skip_, in_.length);
            skip_ -= count;
            in_.taken(count);
            continue;
        }
        const FrameExtent extent = frame_Measure(in_.bytes());
        switch (extent.state) {
            case FrameExtent::State::Incomplete:
                inIncomplete_ = true;
                break;
            case FrameExtent::State::Invalid:
                closeWith({"[handleRead]: remote host sent invalid packet", STPCode::Connection});
                break;
            case FrameExtent::State::TooLong:
                closeWith({"[handleRead]: remote host sent a packet that is too long", STPCode::Connection});
                break;
            case FrameExtent::State::Whole:
                takePacket(extent, pass);
                some = true;
                break;
        }
    }
    return some;
}

void STPTransport::takePacket(const FrameExtent& extent, size_t pass) {
    const std::span<const uint8_t> packet = in_.bytes().first(extent.bytes());
    const STPHeader header = frame_ReadHeader(packet, extent.headerBytes);
    if (forward(extent, header)) return;
    DeferredList::Entry entry{std::make_unique<STPMessage>(), pass, nullptr};
    entry.message->header = header;
    const auto body = packet.subspan(extent.headerBytes);
    entry.message->body.assign(body.begin(), body.end());
    entry.message->finished = true;
    const size_t step = std::min<size_t>(extent.step(), in_.length);
    skip_ = extent.step() - step;
    in_.taken(step);
    dispatch(std::move(entry), notYetDeferred);
}

// The packet's bytes go to the other connection as they are. One that can't take them any more, because its
// far end does not read, is closed; the packet is lost with it.
bool STPTransport::forward(const FrameExtent& extent, const STPHeader& header) {
    const STPRoute route = forwarder_ ? forwarder_->routeOf(header.firstId, header.secondId) : STPRoute{};
    if (route.to == STPRoute::To::Here) return false;
    STPTransport* const far = route.to == STPRoute::To::Peer ? route.peer : nullptr;
    const Ref<STPTransport> hold(far);
    const bool taken = !far || !far->bound() || far->appendOutput(in_.bytes().first(extent.bytes()), {});
    const size_t step = std::min<size_t>(extent.step(), in_.length);
    skip_ = extent.step() - step;
    in_.taken(step);
    if (!taken) far->closeWith({"[forward]: too much waits to be written", STPCode::Connection});
    return true;
}

bool STPTransport::handleDeferred(size_t pass) {
    bool some = false;
    uint64_t last = 0;
    size_t claimed = replies_.taken();
    while (bound()) {
        const auto& entries = deferred_.entries();
        const auto next = std::find_if(entries.upper_bound(last), entries.end(), [&](const auto& entry) {
            return entry.second.pass < pass && mayHandle(entry.second.message->header, entry.first);
        });
        if (next == entries.end()) return some;
        last = next->first;
        DeferredList::Entry entry = deferred_.take(last);
        entry.pass = pass;
        if (dispatch(std::move(entry), last) == Taken::Done) some = true;
        // A reply that was claimed meanwhile may let earlier ones go.
        if (replies_.taken() != claimed) last = 0;
        claimed = replies_.taken();
    }
    return some;
}

STPTransport::Taken STPTransport::dispatch(DeferredList::Entry entry, uint64_t number) {
    const STPHeader& header = entry.message->header;
    if (header.is(STPKind::Ignored)) return Taken::Done;
    if (header.is(STPKind::Sync)) {
        syncs_.emplace_back(header.firstId, header.secondId);
        enforceLimits();
        return Taken::Done;
    }
    if (header.is(STPKind::Channel)) {
        handleChannelMessage(header);
        enforceLimits();
        return Taken::Done;
    }
    return dispatchToHandlers(std::move(entry), number);
}

STPTransport::Taken STPTransport::dispatchToHandlers(DeferredList::Entry entry, uint64_t number) {
    STPMessage& message = *entry.message;
    const std::vector<STPHandler*> handlers = handlersOf(message.header);
    const bool awaited = awaited_.contains(message.header.inReplyTo);
    for (STPHandler* handler : handlers) message.header.flags |= handler->addedFlags(message);
    if (!handlers.empty()) {
        const bool ordered = message.header.kind >= firstOrderedKind;
        if ((ordered && !mayHandle(message.header, number)) ||
            callHandlers(handlers, message, !awaited) == Taken::Deferred) {
            if (bound()) defer(std::move(entry), number, *handlers.front());
            return Taken::Deferred;
        }
    }
    if (bound() && (handlers.empty() || awaited)) keepUnhandled(std::move(entry.message));
    return Taken::Done;
}

// One handler may say that it can't take the message now; of several nobody is asked.
STPTransport::Taken STPTransport::callHandlers(const std::vector<STPHandler*>& handlers, STPMessage& message,
                                               bool notAwaited) {
    bool taken = true;
    for (STPHandler* handler : handlers)
        if (isRegistered(handler)) taken = handler->handleMessage(message, notAwaited);
    if (bound())
        status_.clear();  // what failed within the handler is not the failure of who waits further out
    return taken || handlers.size() > 1 ? Taken::Done : Taken::Deferred;
}

std::vector<STPHandler*> STPTransport::handlersOf(const STPHeader& header) const {
    const auto [first, last] = handlers_.equal_range({header.firstId, header.secondId, header.kind});
    std::vector<STPHandler*> handlers;
    for (auto entry = first; entry != last; ++entry) handlers.push_back(entry->second);
    return handlers;
}

bool STPTransport::isRegistered(const STPHandler* handler) const {
    return std::any_of(handlers_.begin(), handlers_.end(),
                       [&](const auto& entry) { return entry.second == handler; });
}

void STPTransport::keepUnhandled(STPMessagePtr message) {
    if (message->header.isReply())
        replies_.add(std::move(message));
    else
        unclaimed_.add(std::move(message));
    enforceLimits();
}

bool STPTransport::gateHolds(const STPHeader& header) const {
    // Replies and negotiation are the bus's own; everything else is a handler of a service.
    if (header.isReply() || header.kind <= firstOrderedKind) return false;
    return !options_.gate->May(GateActivity::ServiceHandler);
}

bool STPTransport::mayHandle(const STPHeader& header, uint64_t number) const {
    if (gateHolds(header) || options_.calls->messageDepth >= STPCallState::mostDepth) return false;
    const DispatchState state{options_.calls->sendDepth, options_.calls->messageDepth,
                              options_.calls->orderedWaits, topFrame(),
                              replies_.hasOrdinal(header.firstId, header.context.ordinal)};
    if (!stp_MayDispatch(header, state)) return false;
    // What one call sent stays in its order, also when a handler could not take the first of it.
    return (header.flags & stpAnyTime) != 0 || !deferred_.hasEarlier(header, number);
}

void STPTransport::defer(DeferredList::Entry entry, uint64_t number, STPHandler& handler) {
    if (!entry.hold && isRegistered(&handler)) entry.hold = handler.holdWhileDeferred();
    if (number == notYetDeferred)
        deferred_.add(std::move(entry));
    else
        deferred_.putBack(number, std::move(entry));
    enforceLimits();
}

bool STPTransport::paused() const {
    const bool full = deferred_.size() >= deferredToPause || use_.bytes >= bytesToPause;
    return full && waits_ == 0 && !options_.gate->May(GateActivity::ServiceHandler);
}

// Sees to it that what waits is looked at again when that which holds it is over, with no new input needed.
// What a handler refused comes again with the next input.
void STPTransport::arrangeTurn() {
    changed();
    if (!options_.gate->May(GateActivity::ServiceHandler))
        askForTurn();
    else if (options_.calls->messageDepth > 0 || options_.calls->sendDepth > 0)
        options_.calls->whenIdle(this, [this] { askForTurn(); });
}

void STPTransport::askForTurn() {
    if (std::exchange(turnAsked_, true)) return;
    options_.gate->WhenMay(GateActivity::ServiceHandler, this, [this] { takeTurn(); });
}

void STPTransport::takeTurn() {
    const Ref<STPTransport> hold(this);
    turnAsked_ = false;
    if (inProcess_)
        handleRead();
    else
        processDeferred();
    if (bound()) changed();
}

void STPTransport::enforceLimits() {
    if (use_.exceeded() || syncs_.size() > QueueUse::mostMessages)
        closeWith({"[handleRead]: too many messages wait, closing connection", STPCode::Connection});
    else if (channels_.size() > mostChannels)
        closeWith({"[handleRead]: too many channels, closing connection", STPCode::Connection});
}

void STPTransport::handleChannelMessage(const STPHeader& header) {
    auto found = findChannel(header.secondId, header.firstId);
    if (header.tag == tagCreate && !found) {
        found = std::make_shared<STPChannel>();
        found->transport = this;
        found->firstId = header.firstId;
        found->secondId = header.secondId;
        channels_[{header.secondId, header.firstId}] = found;
    }
    if (!found) return;
    if (header.tag == tagCreate) found->createReceived = true;
    if (header.tag == tagStart) found->startReceived = true;
    if (header.tag == tagClose) found->closeReceived = true;
}
