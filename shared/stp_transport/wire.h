// What carries the bytes of a transport. No call but wait takes time.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "shared/libcxxutil/byte_pipe.h"
#include "shared/stp_transport/socket_error.h"

struct WireMoved {
    Moved what = Moved::None;
    size_t bytes = 0;
    SocketError error = SocketError::None;  // with Moved::Failed
};

// What is waited for, and what was found.
struct WireReadiness {
    bool input = false, output = false;
    SocketError error = SocketError::None;
};

class Wire {
  public:
    virtual ~Wire() = default;
    // Moved::End means that the peer is gone, for reading as for writing.
    virtual WireMoved read(std::span<uint8_t> room) = 0;
    virtual WireMoved write(std::span<const uint8_t> bytes) = 0;
    // Waits until one of wanted is so, at most so long; a far end that is gone counts as input. The error
    // Interrupted means that a signal came.
    virtual WireReadiness wait(WireReadiness wanted, std::chrono::milliseconds longest) = 0;
    // Both directions, and the end of the wire. 0 or the platform's error number; a wire that is not
    // connected is shut down already.
    virtual int shutDown() { return 0; }
    virtual int close() { return 0; }
    // For a loop that watches it.
    virtual std::optional<int> descriptor() const { return std::nullopt; }
    // "address:port" of this end and the far one; empty where there is no such thing.
    virtual std::string localName() const { return {}; }
    virtual std::string peerName() const { return {}; }
};
