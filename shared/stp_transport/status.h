// How an operation of the service bus ended: a code and a text for the user.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

// The numbers are known to peers and callers: never renumber.
enum class STPCode : uint32_t {
    Ok = 0,             // the text is empty
    Connection = 1,     // connection or system failure
    Misuse = 3,         // such as a wrong order of calls
    Launch = 4,         // a child process could not be launched
    PeerClosed = 5,     // the peer closed the connection
    ChannelClosed = 6,  // the channel is closed
    TimeOut = 7,
    Unsupported = 8,  // the peer does not support the message
};

struct STPStatus {
    std::string text;
    STPCode code = STPCode::Ok;

    bool ok() const { return code == STPCode::Ok; }
    void clear() { *this = STPStatus{}; }
};
