#include "shared/stp_transport/call_state.h"

#include <utility>

#include "shared/libcxxutil/report.h"

void STPCallState::popped() {
    if (--messageDepth >= 0) return;
    gen_fatal("negative message depth!");
    messageDepth = 0;
}

void STPCallState::settle() {
    if (messageDepth > 0 || sendDepth > 0) return;
    for (const auto& [owner, tell] : std::exchange(waiting_, {})) tell();
}

STPCallState& stp_CallState() {
    static STPCallState state;
    return state;
}
