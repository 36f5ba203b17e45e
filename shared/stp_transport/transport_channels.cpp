// Channels: pairs of small numbers over which messages go.
#include <algorithm>

#include "shared/stp_transport/transport.h"

namespace {

constexpr uint32_t tagCreate = 1, tagStart = 2, tagClose = 3;

}  // namespace

std::shared_ptr<STPChannel> STPTransport::findChannel(uint32_t firstId, uint32_t secondId) const {
    const auto found = channels_.find({firstId, secondId});
    return found == channels_.end() ? nullptr : found->second;
}

std::shared_ptr<STPChannel> STPTransport::createChannel(uint32_t firstId, uint32_t secondId,
                                                        RetryHandler* retry, STPStatus* status) {
    const Ref<STPTransport> hold(this);
    beginOperation();
    auto channel = findChannel(firstId, secondId);
    if (channel && channel->createSent) {
        give(status, fail(STPCode::Misuse, "[createChannel]: Tried to create channel that exists"));
        return nullptr;
    }
    if (!channel && channels_.size() >= mostChannels) {
        give(status, fail(STPCode::Connection, "[createChannel]: there are too many channels"));
        return nullptr;
    }
    if (!channel) channel = channels_[{firstId, secondId}] = std::make_shared<STPChannel>();
    channel->transport = this;
    channel->firstId = firstId;
    channel->secondId = secondId;
    channel->createSent = true;
    const size_t connection = connection_;
    const bool created = sendControl(STPKind::Channel, firstId, secondId, tagCreate) &&
                         waitUntil(retry, [&] { return !wantsOutput() && channel->createReceived; });
    if (created) {
        give(status, true);
        return channel;
    }
    if (connection == connection_ && bound()) {
        channel->closeSent = true;
        channels_.erase({firstId, secondId});
        fail(STPCode::TimeOut, "[createChannel]: reached timeout while waiting to receive create ack");
    } else {
        failLost();
    }
    give(status, false);
    return nullptr;
}

bool STPChannel::startChannel(RetryHandler* retry, STPStatus* result) {
    const Ref<STPTransport> hold(transport);
    const auto end = [&](STPCode code, const char* text) {
        status = {text, code};
        if (result) *result = status;
        return code == STPCode::Ok;
    };
    if (startSent) return end(STPCode::Misuse, "[startChannel]: Channel start already sent.");
    if (closeSent) return end(STPCode::Misuse, "[startChannel]: Channel close already sent.");
    if (closeReceived || !transport)
        return end(STPCode::ChannelClosed, "[startChannel]: Channel has been closed.");
    transport->beginOperation();
    startSent = true;
    const bool sent = transport->sendControl(STPKind::Channel, firstId, secondId, tagStart);
    if (sent) hold->waitUntil(retry, [this] { return startReceived || closeReceived; });
    if (startReceived) return end(STPCode::Ok, "");
    if (closeReceived)
        return end(STPCode::ChannelClosed, "[startChannel]: channel already closed before start");
    if (!sent) return end(hold->status().code, hold->status().text.c_str());
    return end(STPCode::TimeOut, "[startChannel]: reached timeout while waiting to receive start");
}

bool STPChannel::closeChannel(RetryHandler* retry, STPStatus* result) {
    const Ref<STPTransport> hold(transport);
    const auto end = [&](STPCode code, const char* text) {
        status = {text, code};
        if (result) *result = status;
        return code == STPCode::Ok;
    };
    // The text names the other operation; callers know it so.
    if (closeSent || !transport)
        return end(STPCode::ChannelClosed, "[startChannel]: Channel already closed.");
    transport->beginOperation();
    closeSent = true;
    if (!transport->sendControl(STPKind::Channel, firstId, secondId, tagClose))
        return end(hold->status().code, hold->status().text.c_str());
    hold->waitUntil(retry, [&] { return !hold->wantsOutput(); });
    if (!transport) return end(STPCode::ChannelClosed, "[startChannel]: Channel already closed.");
    if (hold->wantsOutput())
        return end(STPCode::TimeOut, "[closeChannel]: reached timeout while waiting to transmit close");
    return end(STPCode::Ok, "");
}

void STPTransport::discardChannel(STPChannel& channel) {
    const auto found = std::find_if(channels_.begin(), channels_.end(),
                                    [&](const auto& entry) { return entry.second.get() == &channel; });
    if (found == channels_.end()) return;
    const std::shared_ptr<STPChannel> last = found->second;
    if (!last->closeSent && last->createSent && bound())
        sendControl(STPKind::Channel, last->firstId, last->secondId, tagClose);
    last->closeSent = true;
    last->transport = nullptr;
    channels_.erase({found->first});
}

void STPTransport::dropChannels() {
    for (const auto& [key, channel] : channels_) {
        channel->closeReceived = true;
        channel->transport = nullptr;
    }
    channels_.clear();
}
