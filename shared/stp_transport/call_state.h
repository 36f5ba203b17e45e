// The counters that all transports of a process share: what is being sent, handled and waited for.
#pragma once

#include <functional>
#include <map>

class STPCallState {
  public:
    int messageDepth = 0;  // dispatches and sends in progress
    int sendDepth = 0;     // blocking sends in progress: nothing is handled meanwhile
    int orderedWaits = 0;  // waits that let only their own chain of calls in

    // So deep calls may nest; a message that would go deeper waits.
    static constexpr int mostDepth = 256;

    void pushed() { ++messageDepth; }
    // Below 0 is reported as "negative message depth!" and set right.
    void popped();

    // A transport that has messages waiting is told, once, when nothing is being sent or handled any more.
    void whenIdle(const void* owner, std::function<void()> tell) { waiting_[owner] = std::move(tell); }
    void forget(const void* owner) { waiting_.erase(owner); }
    // Tells them now when that is so.
    void settle();

  private:
    std::map<const void*, std::function<void()>> waiting_;
};

// The program's own.
STPCallState& stp_CallState();
