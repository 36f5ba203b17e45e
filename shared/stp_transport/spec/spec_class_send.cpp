// Calls of a service to its peer.
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/spec/spec_class.h"

namespace {

STPKind kindOf(STPBodyForm form) {
    return form == STPBodyForm::Text ? STPKind::Text : STPKind::Binary;
}

void letWindowComeUp(uint32_t flags) {
    STPForegroundHooks& hooks = stp_ForegroundHooks();
    if ((flags & stpBringsWindowUp) != 0 && hooks.allow && !hooks.allow()) ++hooks.failures;
}

// A counter that is up during one step of a call.
class Up {
  public:
    explicit Up(int& counter) : counter_(counter) { ++counter_; }
    Up(const Up&) = delete;
    Up& operator=(const Up&) = delete;
    ~Up() { --counter_; }

  private:
    int& counter_;
};

}  // namespace

void STPSpecClass::logSend(const char* name, const std::string& fields) const {
    if (!sendLog_) return;
    sendLog_->beginEntry(logSource(), STPLogWay::Send);
    if (transport_->status().ok())
        sendLog_->printf("SEND: %s: %s\n", name, fields.c_str());
    else
        sendLog_->printf("SEND FAILED: %s\n", name);
    sendLog_->endEntry(logSource(), STPLogWay::Send);
}

// Sends, and waits for the reply.
STPMessagePtr STPSpecClass::exchange(STPMessage& message, RetryHandler* retry, STPStatus& status) {
    uint32_t sequence = 0;
    {
        const Up up(busy_);
        sequence = transport_->sendMessage(message, retry, &status);
    }
    if (sequence == 0) return nullptr;
    const Up up(busy_);
    return transport_->awaitResponse(sequence, retry, &status);
}

STPMessagePtr STPSpecClass::callTwoWay(STPBodyForm form, size_t row, std::string body,
                                       const std::string& fields, RetryHandler* retry, STPStatus* status) {
    const Ref<STPSpecClass> hold(this);
    STPStatus local;
    STPStatus& result = status ? *status : local;
    result.clear();
    const STPSendRow& sent = sendTable_[row];
    const uint32_t ourFlags = description_.sends[row].flags;
    if (!checkSendAllowed(Needs::BothUp, sent.namedByPeer, result)) return nullptr;
    RetryHandler* const rt = retry ? retry : getRetryHandler();
    GEN_ASSERT(rt != NULL);
    logSend(sent.name.c_str(), fields);
    letWindowComeUp(ourFlags);
    STPMessage message =
        transport_->newRequest(localId_, remoteId_, kindOf(form), sent.id, stpWantsReply | stpOwnContextOnly);
    message.body = std::move(body);
    return exchange(message, rt, result);
}

bool STPSpecClass::callOneWay(STPBodyForm form, size_t row, std::string body, const std::string& fields,
                              STPSend how, RetryHandler* retry, STPStatus* status) {
    const Ref<STPSpecClass> hold(this);
    STPStatus local;
    STPStatus& result = status ? *status : local;
    result.clear();
    const STPSendRow& sent = sendTable_[row];
    const uint32_t ourFlags = description_.sends[row].flags;
    if (!checkSendAllowed(Needs::BothUp, sent.namedByPeer, result)) return false;
    RetryHandler* const rt = retry ? retry : getRetryHandler();
    GEN_ASSERT(rt != NULL);
    logSend(sent.name.c_str(), fields);
    letWindowComeUp(ourFlags);
    STPMessage message = transport_->newRequest(localId_, remoteId_, kindOf(form), sent.id, stpOneWay);
    message.body = std::move(body);
    const Up up(busy_);
    const uint32_t sequence = how == STPSend::Blocking ? transport_->sendMessage(message, rt, &result)
                                                       : transport_->enqueueMessage(message, &result);
    return sequence != 0;
}

std::optional<uint32_t> STPSpecClass::sendCommand(const std::string& text, uint32_t action,
                                                  RetryHandler* retry, STPStatus* status) {
    const Ref<STPSpecClass> hold(this);
    STPStatus local;
    STPStatus& result = status ? *status : local;
    result.clear();
    if (!checkSendAllowed(Needs::BothUp, true, result)) return std::nullopt;
    RetryHandler* const rt = retry ? retry : getRetryHandler();
    GEN_ASSERT(rt != NULL);
    const auto log = [&](STPLog* to, STPLogWay way, const char* what, uint32_t number) {
        if (!to) return;
        to->beginEntry(logSource(), way);
        to->printf("%s: STPCommandSystemMessage: %s [%d]\n", what, text.c_str(), static_cast<int>(number));
        to->endEntry(logSource(), way);
    };
    if (transport_->status().ok())
        log(sendLog_, STPLogWay::Send, "SEND", action);
    else if (sendLog_)
        sendLog_->puts("SEND FAILED: STPCommandSystemMessage\n");
    STPMessage message = transport_->newRequest(localId_, remoteId_, STPKind::Command, stpNoTag,
                                                stpWantsReply | stpOwnContextOnly);
    message.body = text + ' ';
    TextBodyWriter(message.body).number("__action", action);
    const STPMessagePtr reply = exchange(message, rt, result);
    if (!reply) return std::nullopt;
    TextBodyReader fields(reply->body);
    // Peers answer under either name.
    const uint32_t answer = static_cast<uint32_t>(
        textBody_Number(fields.find("__res").value_or(fields.find("__ret").value_or(""))));
    log(receiveLog_, STPLogWay::Receive, "RECV", answer);
    return answer;
}
