#include "shared/stp_transport/in_process_wire.h"

#include <poll.h>

#include <algorithm>
#include <cstring>

namespace {

// A wait finds nothing until something else on the thread had its turn; this keeps it from burning the
// processor meanwhile.
constexpr std::chrono::milliseconds nap{5};

}  // namespace

size_t InProcessWire::pending() const {
    return peerIsThere() ? *peer_.length : 0;
}

WireMoved InProcessWire::read(std::span<uint8_t> room) {
    if (!peerIsThere()) return {Moved::End, 0, SocketError::None};
    const size_t count = std::min<size_t>(room.size(), *peer_.length);
    if (count == 0) return {};
    std::memcpy(room.data(), *peer_.buffer + *peer_.offset, count);
    *peer_.offset += static_cast<uint32_t>(count);
    *peer_.length -= static_cast<uint32_t>(count);
    if (*peer_.length == 0) *peer_.offset = 0;
    return {Moved::Some, count, SocketError::None};
}

WireReadiness InProcessWire::wait(WireReadiness, std::chrono::milliseconds longest) {
    const auto link = link_;  // the peer may close this end
    if (link && link->open[1 - end_] && link->serve[1 - end_]) link->serve[1 - end_]();
    if (link && !link->open[end_]) return {};
    if (pending() == 0 && peerIsThere() && longest.count() > 0)
        ::poll(nullptr, 0, static_cast<int>(std::min(longest, nap).count()));
    return {true, false, SocketError::None};
}

void InProcessWire::wake() const {
    const auto wake = wake_;
    if (wake) wake();
}

int InProcessWire::close() {
    if (link_) {
        link_->open[end_] = false;
        link_->serve[end_] = nullptr;
    }
    return 0;
}
