#include "shared/stp_transport/message_queue.h"

#include <algorithm>
#include <utility>

void MessageList::add(STPMessagePtr message) {
    use_.add(*message);
    messages_.push_back(std::move(message));
}

STPMessagePtr MessageList::take(const std::function<bool(const STPMessage&)>& fits) {
    const auto found =
        std::find_if(messages_.begin(), messages_.end(), [&](const auto& message) { return fits(*message); });
    if (found == messages_.end()) return nullptr;
    STPMessagePtr message = std::move(*found);
    messages_.erase(found);
    use_.take(*message);
    return message;
}

void MessageList::clear() {
    for (const auto& message : messages_) use_.take(*message);
    messages_.clear();
}

void ReplyList::add(STPMessagePtr reply) {
    use_.add(*reply);
    ++ordinals_[{reply->header.firstId, reply->header.context.ordinal}];
    const uint32_t inReplyTo = reply->header.inReplyTo;
    replies_.emplace(inReplyTo, std::move(reply));
}

STPMessagePtr ReplyList::take(uint32_t inReplyTo) {
    const auto found = replies_.lower_bound(inReplyTo);
    if (found == replies_.end() || found->first != inReplyTo) return nullptr;
    STPMessagePtr reply = std::move(found->second);
    replies_.erase(found);
    use_.take(*reply);
    const auto ordinal = ordinals_.find({reply->header.firstId, reply->header.context.ordinal});
    if (--ordinal->second == 0) ordinals_.erase(ordinal);
    ++taken_;
    return reply;
}

void ReplyList::clear() {
    for (const auto& [sequence, reply] : replies_) use_.take(*reply);
    replies_.clear();
    ordinals_.clear();
}

DeferredList::Place DeferredList::placeOf(const STPHeader& header) {
    const STPCallContext& context = header.context;
    return {header.firstId, header.secondId,
            uint64_t{context.high} << 32 | uint64_t{context.low} << 16 | context.ordinal};
}

void DeferredList::add(Entry entry) {
    putBack(++last_, std::move(entry));
}

void DeferredList::putBack(uint64_t number, Entry entry) {
    use_.add(*entry.message);
    places_.emplace(placeOf(entry.message->header), number);
    entries_.emplace(number, std::move(entry));
}

DeferredList::Entry DeferredList::take(uint64_t number) {
    const auto found = entries_.find(number);
    Entry entry = std::move(found->second);
    entries_.erase(found);
    use_.take(*entry.message);
    places_.erase({placeOf(entry.message->header), number});
    return entry;
}

bool DeferredList::hasEarlier(const STPHeader& header, uint64_t number) const {
    const Place place = placeOf(header);
    const auto first = places_.lower_bound({place, 0});
    return first != places_.end() && first->first == place && first->second < number;
}

void DeferredList::clear() {
    // What the handlers hold may go with an entry, and come back to ask: the list is empty by then.
    const auto entries = std::exchange(entries_, {});
    places_.clear();
    for (const auto& [number, entry] : entries) use_.take(*entry.message);
}
