#include "shared/stp_transport/transport.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"

namespace {

// The transports of the process, and those with a descriptor by its number.
struct Registry {
    std::vector<STPTransport*> all;
    std::map<int, STPTransport*> byDescriptor;
    std::pair<int, STPTransport*> found{-1, nullptr};  // the last answer: the loop asks for the same again

    void add(int descriptor, STPTransport* transport) {
        byDescriptor[descriptor] = transport;
        found = {descriptor, transport};
    }
    void removeAll(const STPTransport* transport) {
        std::erase_if(byDescriptor, [&](const auto& entry) { return entry.second == transport; });
        if (found.second == transport) found = {-1, nullptr};
    }
};

Registry& registry() {
    static Registry transports;
    return transports;
}

}  // namespace

STPTransport::STPTransport(STPTransportOptions options)
    : options_(std::move(options)), out_(options_.outInitial), in_(options_.inInitial) {
    defaultFrame_.context.high = options_.contextHigh;
    registry().all.push_back(this);
}

STPTransport::~STPTransport() {
    interest_ = nullptr;
    closeQuietly();
    options_.gate->Forget(this);
    options_.calls->forget(this);
    options_.calls->messageDepth -= static_cast<int>(frames_.size());
    std::erase(registry().all, this);
}

STPTransport* STPTransport::find(int descriptor) {
    if (registry().found.first == descriptor) return registry().found.second;
    const auto entry = registry().byDescriptor.find(descriptor);
    if (entry == registry().byDescriptor.end()) return nullptr;
    registry().found = *entry;
    return entry->second;
}

void STPTransport::forEach(const std::function<void(STPTransport&)>& visit) {
    for (STPTransport* transport : std::vector(registry().all)) {
        const auto& all = registry().all;  // a visit may end others
        if (std::find(all.begin(), all.end(), transport) != all.end()) visit(*transport);
    }
}

std::optional<int> STPTransport::descriptor() const {
    if (wire_) return wire_->descriptor();
    if (listening_.IsOpen()) return listening_.number();
    return std::nullopt;
}

void STPTransport::changed() const {
    const auto interest = interest_;
    if (interest) interest();
}

void STPTransport::beginOperation() {
    // What ended a connection stays known until there is a new one.
    if (bound() || listening()) status_.clear();
}

bool STPTransport::fail(STPCode code, std::string text) {
    status_ = {std::move(text), code};
    return false;
}

bool STPTransport::failLost() {
    return status_.ok() ? fail(STPCode::Connection, socket_WriteText(SocketError::NotConnected)) : false;
}

bool STPTransport::give(STPStatus* status, bool result) const {
    if (status && status != &status_) *status = status_;
    return result;
}

void STPTransport::adopt(std::unique_ptr<Wire> wire) {
    status_.clear();
    wire_ = std::move(wire);
    if (const auto number = wire_->descriptor()) registry().add(*number, this);
    changed();
}

void STPTransport::closeQuietly() {
    ++connection_;
    status_.clear();
    registry().removeAll(this);
    listening_.close();
    acceptPending_ = false;
    defaultFrame_.context.high = options_.contextHigh;
    if (const std::unique_ptr<Wire> wire = std::exchange(wire_, nullptr)) {
        const int number = wire->descriptor().value_or(-1);
        if (const int error = wire->shutDown())
            gen_plain("shutdown of socket %d failed with error: %d\n", number, error);
        if (const int error = wire->close())
            gen_plain("close of socket %d failed with error: %d\n", number, error);
    }
    inProcess_ = nullptr;
    out_.reset();
    in_.reset();
    inIncomplete_ = false;
    skip_ = 0;
    replies_.clear();
    unclaimed_.clear();
    awaited_.clear();
    syncs_.clear();
    dropChannels();
    deferred_.clear();
}

void STPTransport::closeWith(STPStatus why) {
    const Ref<STPTransport> hold(this);
    closeQuietly();
    status_ = std::move(why);
    tellClosed();
}

void STPTransport::close(STPStatus* status) {
    closeWith({});
    give(status, true);
}

void STPTransport::tellClosed() {
    changed();
    std::vector<STPHandler*> handlers;
    for (const auto& [key, handler] : handlers_)
        if (std::find(handlers.begin(), handlers.end(), handler) == handlers.end())
            handlers.push_back(handler);
    for (STPHandler* handler : handlers)
        if (isRegistered(handler)) handler->transportClosed();
}

void STPTransport::registerHandler(uint32_t firstId, uint32_t secondId, STPHandler& handler, STPKind kind) {
    handlers_.emplace(HandlerKey{firstId, secondId, static_cast<uint32_t>(kind)}, &handler);
}

void STPTransport::unregisterHandler(STPHandler& handler) {
    std::erase_if(handlers_, [&](const auto& entry) { return entry.second == &handler; });
}

STPMessagePtr STPTransport::takeUnclaimed(uint32_t firstId, uint32_t secondId, STPKind kind) {
    return unclaimed_.take([&](const STPMessage& message) {
        return message.header.firstId == firstId && message.header.secondId == secondId &&
               message.header.is(kind);
    });
}

STPTransport::Census STPTransport::census() const {
    return {deferred_.size(), unclaimed_.size(), replies_.size(),  awaited_.size(),
            syncs_.size(),    channels_.size(),  handlers_.size(), frames_.size(),
            out_.length,      in_.length,        out_.capacity,    in_.capacity};
}
