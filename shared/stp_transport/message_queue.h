// The messages that wait in a transport, within one limit for all queues together, and the replies among them
// by what nested calls ask.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "shared/stp_transport/message.h"

// What all the queues of one transport may hold.
struct QueueUse {
    static constexpr size_t mostMessages = size_t{64} << 10, mostBytes = size_t{64} << 20;
    size_t messages = 0, bytes = 0;

    void add(const STPMessage& message) {
        ++messages;
        bytes += message.body.size();
    }
    void take(const STPMessage& message) {
        --messages;
        bytes -= message.body.size();
    }
    bool exceeded() const { return messages > mostMessages || bytes > mostBytes; }
};

// Messages in the order of their coming.
class MessageList {
  public:
    explicit MessageList(QueueUse& use) : use_(use) {}
    MessageList(const MessageList&) = delete;
    MessageList& operator=(const MessageList&) = delete;
    ~MessageList() { clear(); }

    size_t size() const { return messages_.size(); }
    void add(STPMessagePtr message);
    // The first that fits; null when none does.
    STPMessagePtr take(const std::function<bool(const STPMessage&)>& fits);
    void clear();

  private:
    std::list<STPMessagePtr> messages_;
    QueueUse& use_;
};

// Replies that nobody has claimed yet, by the request that they answer.
class ReplyList {
  public:
    explicit ReplyList(QueueUse& use) : use_(use) {}
    ReplyList(const ReplyList&) = delete;
    ReplyList& operator=(const ReplyList&) = delete;
    ~ReplyList() { clear(); }

    size_t size() const { return replies_.size(); }
    void add(STPMessagePtr reply);
    bool has(uint32_t inReplyTo) const { return replies_.contains(inReplyTo); }
    // The one that came first; null when there is none.
    STPMessagePtr take(uint32_t inReplyTo);
    // Whether one of this first id has this ordinal.
    bool hasOrdinal(uint32_t firstId, uint16_t ordinal) const {
        return ordinals_.contains({firstId, ordinal});
    }
    // Counts the replies that were taken, for whoever waits for such a change.
    size_t taken() const { return taken_; }
    void clear();

  private:
    std::multimap<uint32_t, STPMessagePtr> replies_;
    std::map<std::pair<uint32_t, uint16_t>, size_t> ordinals_;
    size_t taken_ = 0;
    QueueUse& use_;
};

// Messages that could not be handled when they came, oldest first.
class DeferredList {
  public:
    struct Entry {
        STPMessagePtr message;
        size_t pass = 0;             // of the input in which it was deferred
        std::shared_ptr<void> hold;  // what the handler keeps alive meanwhile
    };
    explicit DeferredList(QueueUse& use) : use_(use) {}
    DeferredList(const DeferredList&) = delete;
    DeferredList& operator=(const DeferredList&) = delete;
    ~DeferredList() { clear(); }

    size_t size() const { return entries_.size(); }
    // Numbers grow from 1.
    const std::map<uint64_t, Entry>& entries() const { return entries_; }
    void add(Entry entry);
    // Puts an entry that was taken back to its place.
    void putBack(uint64_t number, Entry entry);
    Entry take(uint64_t number);
    // Whether one of the same ids and the same place in a chain of calls waits before this number.
    bool hasEarlier(const STPHeader& header, uint64_t number) const;
    void clear();

  private:
    struct Place {
        uint32_t firstId, secondId;
        uint64_t context;
        auto operator<=>(const Place&) const = default;
    };
    static Place placeOf(const STPHeader& header);

    std::map<uint64_t, Entry> entries_;
    std::set<std::pair<Place, uint64_t>> places_;
    uint64_t last_ = 0;
    QueueUse& use_;
};
