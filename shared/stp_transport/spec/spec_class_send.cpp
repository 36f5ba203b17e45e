// Calls of a service to its peer.
#include "shared/libcxxutil/raised.h"
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

}  // namespace

void STPSpecClass::logSend(const char* name, const std::string& fields) const {
    if (!sendLog_) return;
    logLine(sendLog_, STPLogWay::Send,
            transport_->status().ok() ? gen_format("SEND: %s: %s\n", name, fields.c_str())
                                      : gen_format("SEND FAILED: %s\n", name));
}

// Sends, and waits for the reply.
STPMessagePtr STPSpecClass::exchange(STPMessage& message, RetryHandler* retry, STPStatus& status) {
    uint32_t sequence = 0;
    {
        const Raised up(busy_);
        sequence = transport_->sendMessage(message, retry, &status);
    }
    if (sequence == 0) return nullptr;
    const Raised up(busy_);
    return transport_->awaitResponse(sequence, retry, &status);
}

// The guard goes first: a class that was never attached has no handler, and is told so by a status.
RetryHandler* STPSpecClass::allowedRetry(Needs needs, bool knownToPeer, RetryHandler* given,
                                         STPStatus& status) {
    if (!checkSendAllowed(needs, knownToPeer, status)) return nullptr;
    RetryHandler* const rt = given ? given : getRetryHandler();
    GEN_ASSERT(rt != NULL);
    return rt;
}

RetryHandler* STPSpecClass::beginCall(size_t row, const std::string& fields, RetryHandler* given,
                                      STPStatus& status) {
    const STPSendRow& sent = sendTable_[row];
    RetryHandler* const rt = allowedRetry(Needs::BothUp, sent.namedByPeer, given, status);
    if (!rt) return nullptr;
    logSend(sent.name.c_str(), fields);
    letWindowComeUp(description_.sends[row].flags);
    return rt;
}

STPMessage STPSpecClass::requestOf(STPBodyForm form, size_t row, std::string body, uint32_t flags) {
    STPMessage message = transport_->newRequest(localId_, remoteId_, kindOf(form), sendTable_[row].id, flags);
    message.body = std::move(body);
    return message;
}

STPMessagePtr STPSpecClass::callTwoWay(STPBodyForm form, size_t row, std::string body,
                                       const std::string& fields, RetryHandler* retry, STPStatus* status) {
    Operation operation(*this, status);
    RetryHandler* const rt = beginCall(row, fields, retry, operation.status);
    if (!rt) return nullptr;
    STPMessage message = requestOf(form, row, std::move(body), stpWantsReply | stpOwnContextOnly);
    return exchange(message, rt, operation.status);
}

bool STPSpecClass::callOneWay(STPBodyForm form, size_t row, std::string body, const std::string& fields,
                              STPSend how, RetryHandler* retry, STPStatus* status) {
    Operation operation(*this, status);
    RetryHandler* const rt = beginCall(row, fields, retry, operation.status);
    if (!rt) return false;
    STPMessage message = requestOf(form, row, std::move(body), stpOneWay);
    const Raised up(busy_);
    const uint32_t sequence = how == STPSend::Blocking
                                  ? transport_->sendMessage(message, rt, &operation.status)
                                  : transport_->enqueueMessage(message, &operation.status);
    return sequence != 0;
}

// Each line of a log is an entry of its own.
void STPSpecClass::logLine(STPLog* to, STPLogWay way, const std::string& line) const {
    if (!to) return;
    to->beginEntry(logSource(), way);
    to->puts(line);
    to->endEntry(logSource(), way);
}

std::optional<uint32_t> STPSpecClass::sendCommand(const std::string& text, uint32_t action,
                                                  RetryHandler* retry, STPStatus* status) {
    Operation operation(*this, status);
    RetryHandler* const rt = allowedRetry(Needs::BothUp, true, retry, operation.status);
    if (!rt) return std::nullopt;
    const auto line = [&](const char* what, uint32_t number) {
        return gen_format("%s: STPCommandSystemMessage: %s [%d]\n", what, text.c_str(),
                          static_cast<int>(number));
    };
    logLine(sendLog_, STPLogWay::Send,
            transport_->status().ok() ? line("SEND", action) : "SEND FAILED: STPCommandSystemMessage\n");
    STPMessage message = transport_->newRequest(localId_, remoteId_, STPKind::Command, stpNoTag,
                                                stpWantsReply | stpOwnContextOnly);
    message.body = text + ' ';
    TextBodyWriter(message.body).number("__action", action);
    const STPMessagePtr reply = exchange(message, rt, operation.status);
    if (!reply) return std::nullopt;
    TextBodyReader fields(reply->body);
    // Peers answer under either name.
    const uint32_t answer = static_cast<uint32_t>(
        textBody_Number(fields.find("__res").value_or(fields.find("__ret").value_or(""))));
    logLine(receiveLog_, STPLogWay::Receive, line("RECV", answer));
    return answer;
}
