// Messages that came for a service.
#include <algorithm>

#include "shared/libcxxutil/raised.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/spec/spec_class.h"

namespace {

constexpr std::string_view actionKey = "__action:";
constexpr uint32_t lastEarlyTag = 9;
constexpr int replyRounds = 2;

// The text before it is free and may hold the word as well: the last one is the sender's.
uint32_t actionOf(std::string_view body) {
    body = body.substr(0, body.find('\0'));
    const size_t at = body.rfind(actionKey);
    return at == body.npos ? 0 : static_cast<uint32_t>(textBody_Number(body.substr(at + actionKey.size())));
}

}  // namespace

bool STPSpecClass_HandleMessages::handleMessage(STPMessage& message, bool) {
    const Ref<STPSpecClass> hold(&service_);
    return service_.handleMessage(message);
}

uint32_t STPSpecClass_HandleMessages::addedFlags(const STPMessage& message) {
    return service_.rowFlags(message);
}

std::shared_ptr<void> STPSpecClass_HandleMessages::holdWhileDeferred() {
    ++service_.deferredCount_;
    const Ref<STPSpecClass> hold(&service_);
    // The count ends with the last copy of this; the object is let go with it.
    return std::shared_ptr<void>(&service_, [hold](void*) { --hold->deferredCount_; });
}

void STPSpecClass_HandleMessages::transportClosed() {
    const Ref<STPSpecClass> hold(&service_);
    service_.setConnectionDown();
}

uint32_t STPSpecClass::numberOf(const STPMessage& message) const {
    const bool named = message.header.is(STPKind::Command) || message.header.is(STPKind::Text);
    if (message.header.tag != stpNoTag || !named) return message.header.tag;
    const std::string_view name = TextBodyReader::firstWord(message.body);
    const auto row = std::find_if(description_.receives.begin(), description_.receives.end(),
                                  [&](const STPTableRow& candidate) { return name == candidate.name; });
    return row == description_.receives.end() ? stpNoTag : row->number;
}

const STPTableRow* STPSpecClass::receiveRow(uint32_t number) const {
    const auto row = std::find_if(description_.receives.begin(), description_.receives.end(),
                                  [&](const STPTableRow& candidate) { return candidate.number == number; });
    return row == description_.receives.end() ? nullptr : &*row;
}

uint32_t STPSpecClass::rowFlags(const STPMessage& message) const {
    if (message.header.is(STPKind::Negotiation))
        return message.header.tag < lastEarlyTag ? stpAnyTime : stpOrdered;
    const STPTableRow* const row = receiveRow(numberOf(message));
    return row ? row->flags & (stpOrdered | stpAnyTime) : 0;
}

bool STPSpecClass::handleMessage(STPMessage& message) {
    const Ref<STPTransport> transport = transport_;
    message.header.tag = numberOf(message);
    const STPTransport::HandledScope handled(*transport, message);
    std::optional<STPMessage> reply;
    if ((message.header.flags & stpWantsReply) != 0)
        reply = transport->newReply(localId_, remoteId_, message.header.sequence);
    const STPTableRow* const row =
        message.header.is(STPKind::Negotiation) ? nullptr : receiveRow(message.header.tag);
    const auto foreground = stp_ForegroundHooks().take;
    if (row && (row->flags & stpBringsWindowUp) != 0 && foreground) foreground();
    {
        const Ref<STPSpecClass> hold(this);
        const Raised busy(busy_);
        handleByKind(message, reply ? &*reply : nullptr, message.header.tag);
    }
    if (reply && localUp_) transport->sendAndFlush(*reply, replyRounds);
    return true;
}

void STPSpecClass::handleByKind(STPMessage& message, STPMessage* reply, uint32_t number) {
    switch (static_cast<STPKind>(message.header.kind)) {
        case STPKind::Negotiation:
            return handleNegotiation(message, reply);
        case STPKind::Text:
            return handleAscii(message, reply, number);
        case STPKind::Binary:
            return handleBinary(message, reply, number);
        case STPKind::Command: {
            const uint32_t result = handleCommand(message, reply, number, actionOf(message.body));
            if (reply) TextBodyWriter(reply->body).number("__ret", result);
            return;
        }
        case STPKind::Ignored:
        case STPKind::Sync:
        case STPKind::Channel:
        case STPKind::Reply:
            break;
    }
    gen_fatal("oops");
}

void STPSpecClass::handleAscii(const STPMessage&, STPMessage*, uint32_t) {
    gen_fatal("unexpected stp ascii message");
}

void STPSpecClass::handleBinary(const STPMessage&, STPMessage*, uint32_t) {
    gen_fatal("unexpected stp binary message");
}

uint32_t STPSpecClass::handleCommand(const STPMessage&, STPMessage*, uint32_t, uint32_t) {
    gen_fatal("unexpected stp command message");
    return 0;
}

void STPSpecClass::logReceived(const char* what, const char* name, const std::string& fields) const {
    if (receiveLog_)
        logLine(receiveLog_, STPLogWay::Receive, gen_format("%s: %s: %s\n", what, name, fields.c_str()));
}
