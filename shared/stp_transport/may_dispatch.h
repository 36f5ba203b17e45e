// Whether a message may be handled now: a pure function of six rules, on which the order of nested calls
// rests.
#pragma once

#include <cstdint>

#include "shared/stp_transport/frame.h"

// One request that is being sent or handled.
struct STPFrame {
    STPCallContext context = {};
    uint32_t flags = 0;
    uint32_t sequence = 0;  // the sender's
};

struct DispatchState {
    int sendDepth = 0;     // blocking sends in progress
    int messageDepth = 0;  // dispatches and sends in progress
    int orderedWaits = 0;  // waits for a reply that let only their own chain of calls in
    STPFrame top = {};     // what is handled innermost
    // A reply of the message's first id and ordinal is here and not yet claimed.
    bool replyOfOrdinalPending = false;
};

bool stp_MayDispatch(const STPHeader& message, const DispatchState& state);
