// A message: what a packet says, with its body as bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "shared/stp_transport/frame.h"

struct STPMessage {
    STPHeader header;
    // Text or binary items. finish adds what ends it; that of a received message ends as its sender ended it.
    std::string body;

    // Zero bytes up to a multiple of 4 and a zero word, once.
    void finish() {
        if (finished) return;
        finished = true;
        body.append((4 - body.size() % 4) % 4 + 4, '\0');
    }
    bool finished = false;
};
using STPMessagePtr = std::unique_ptr<STPMessage>;
