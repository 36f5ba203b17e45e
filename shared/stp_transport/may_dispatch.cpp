#include "shared/stp_transport/may_dispatch.h"

bool stp_MayDispatch(const STPHeader& message, const DispatchState& state) {
    // No handler runs in the middle of a blocking send.
    if (state.sendDepth > 0) return false;
    if (state.messageDepth == 0) return true;
    if (message.isReply()) return true;
    // Order within a context goes before everything that follows.
    if (state.replyOfOrdinalPending) return false;
    const bool ordered = (message.flags & stpOrdered) != 0 || state.orderedWaits != 0;
    if ((message.flags & stpAnyTime) != 0 || !ordered) return true;
    const STPCallContext& top = state.top.context;
    return message.context.sameChain(top) && message.context.ordinal > top.ordinal;
}
