#include "shared/stp_transport/spec/spec_class.h"

#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/stp_retry_handler.h"

namespace {

constexpr uint32_t tagTags = 1, tagFormats = 2, tagAcknowledge = 3;
constexpr char notYetText[] = "Attempted send before negotiation is complete.";

}  // namespace

STPForegroundHooks& stp_ForegroundHooks() {
    static STPForegroundHooks hooks;
    return hooks;
}

STPSpecClass::STPSpecClass(const STPServiceDescription& description) : description_(description) {
    for (const STPTableRow& row : description.sends)
        sendTable_.push_back({row.name, row.format, row.number, row.flags, false, {}});
}

STPSpecClass::~STPSpecClass() {
    retryHandler_.reset();
    if (transport_) transport_->unregisterHandler(handlerLink_);
}

void STPSpecClass::setRetryHandler(std::unique_ptr<RetryHandler> handler) {
    retryHandler_ = std::move(handler);
    retryHandlerFixed_ = true;
}

void STPSpecClass::attach(Ref<STPTransport> transport, uint32_t localId, uint32_t remoteId) {
    if (transport_) transport_->unregisterHandler(handlerLink_);
    transport_ = std::move(transport);
    localId_ = localId != 0 ? localId : getLocalId();
    remoteId_ = remoteId != 0 ? remoteId : getRemoteId();
    if (!transport_) return;
    for (const STPKind kind : {STPKind::Negotiation, STPKind::Command, STPKind::Text, STPKind::Binary})
        transport_->registerHandler(remoteId_, localId_, handlerLink_, kind);
    if (!retryHandlerFixed_) retryHandler_ = std::make_unique<STPRetryHandler>(transport_);
}

void STPSpecClass::assumeNegotiated() {
    negotiated_ = true;
    for (size_t i = 0; i < sendTable_.size(); ++i) {
        sendTable_[i].id = static_cast<uint32_t>(i);
        sendTable_[i].namedByPeer = true;
    }
}

// Waits, and says in the status why that ended without what was waited for.
bool STPSpecClass::waitFor(RetryHandler* retry, const std::function<bool()>& done, STPStatus& status) {
    if (transport_->waitUntil(retry, done)) return true;
    status = transport_->status();
    if (status.ok() && transport_->bound())
        status = {"awaitNegotiate: timed out waiting for reply.", STPCode::TimeOut};
    else if (status.ok())
        status = {"[awaitTags]: virtual connection is down", STPCode::Connection};
    return false;
}

bool STPSpecClass::sendNegotiate(Blocking blocking, RetryHandler*, STPStatus* status) {
    Operation operation(*this, status);
    if (!transport_)
        return operation.fail(STPCode::Misuse, "[sendNegotiate]: cannot send with NULL transport");
    if (!localUp_) return operation.fail(STPCode::Connection, "[sendNegotiate]: virtual connection is down");
    STPMessage message =
        transport_->newRequest(localId_, remoteId_, STPKind::Negotiation, tagTags, stpOneWay);
    message.body = negotiation_WriteTags(description_);
    const uint32_t sequence = blocking == Blocking::Yes
                                  ? transport_->sendAndFlush(message, 1, &operation.status)
                                  : transport_->enqueueMessage(message, &operation.status);
    return sequence != 0;
}

bool STPSpecClass::awaitTags(RetryHandler* retry, STPStatus* status) {
    Operation operation(*this, status);
    if (!transport_)
        return operation.fail(STPCode::Misuse, "[awaitTags]: cannot receive tags on NULL transport");
    if (!remoteUp_) return operation.fail(STPCode::Connection, "[awaitTags]: virtual connection is down");
    while (const STPMessagePtr early = transport_->takeUnclaimed(remoteId_, localId_, STPKind::Negotiation))
        handleMessage(*early);
    return negotiated_ || waitFor(
                              retry, [this] { return negotiated_; }, operation.status);
}

bool STPSpecClass::negotiate(RetryHandler* retry, STPStatus* status) {
    const Ref<STPSpecClass> hold(this);
    return sendNegotiate(Blocking::Yes, retry, status) && awaitTags(retry, status);
}

bool STPSpecClass::awaitNegotiate(RetryHandler* retry, STPStatus* status) {
    Operation operation(*this, status);
    if (!checkSendAllowed(Needs::BothUp, true, operation.status)) return false;
    STPMessage message =
        transport_->newRequest(localId_, remoteId_, STPKind::Negotiation, tagAcknowledge, stpOneWay);
    if (transport_->sendMessage(message, retry, &operation.status) == 0) return false;
    if (!waitFor(
            retry, [this] { return negotiateAcknowledged_; }, operation.status))
        return false;
    negotiateAcknowledged_ = false;
    return true;
}

bool STPSpecClass::requestFormats(RetryHandler* retry, STPStatus* status) {
    Operation operation(*this, status);
    if (!checkSendAllowed(Needs::BothUp, true, operation.status)) return false;
    STPMessage message =
        transport_->newRequest(localId_, remoteId_, STPKind::Negotiation, tagFormats, stpWantsReply);
    const STPMessagePtr reply = exchange(message, retry, operation.status);
    if (!reply) return false;
    negotiation_ReadFormats(reply->body, sendTable_);
    formatsKnown_ = true;
    return true;
}

bool STPSpecClass::checkSendAllowed(Needs needs, bool knownToPeer, STPStatus& status) const {
    constexpr uint32_t takesUnlisted = 1;
    if (!transport_ || !negotiated_)
        status = {notYetText, STPCode::Misuse};
    else if (!localUp_ || (needs == Needs::BothUp && !remoteUp_))
        status = {"[send]: virtual connection is down", STPCode::Connection};
    else if (!knownToPeer && (peer_.flags & takesUnlisted) == 0)
        status = {"[send]: sending a message the other side does not support", STPCode::Unsupported};
    else
        return true;
    return false;
}

void STPSpecClass::setConnectionDown() {
    localUp_ = remoteUp_ = false;
    lost();
}

void STPSpecClass::setLocalDown() {
    localUp_ = false;
    lost();
}

void STPSpecClass::setRemoteDown() {
    remoteUp_ = false;
    lost();
}

void STPSpecClass::lost() {
    const Ref<STPSpecClass> hold(this);
    if (!std::exchange(lossTold_, true)) connectionLost();
}

void STPSpecClass::takeTags(const STPMessage& message) {
    peer_ = negotiation_ReadTags(message.body);
    peerTagMap_ = negotiation_MergeTags(description_.tags, peer_.tags);
    // A peer that negotiates again starts from our own table.
    for (size_t i = 0; i < sendTable_.size(); ++i) {
        sendTable_[i].id = description_.sends[i].number;
        sendTable_[i].flags = description_.sends[i].flags;
        sendTable_[i].namedByPeer = false;
    }
    extraTable_ = negotiation_MergeMessages(sendTable_, peer_);
    negotiated_ = true;
}

void STPSpecClass::handleNegotiation(const STPMessage& message, STPMessage* reply) {
    if (message.header.tag == tagTags) takeTags(message);
    if (message.header.tag == tagFormats && reply)
        reply->body = negotiation_WriteFormats(description_.receives);
    if (message.header.tag == tagAcknowledge) negotiateAcknowledged_ = true;
}
