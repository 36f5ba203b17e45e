// A wire over an open descriptor: a socket, or a plain file descriptor such as a pipe's.
#pragma once

#include "shared/libcxxutil/watches.h"
#include "shared/stp_transport/wire.h"

class SocketWire : public Wire {
  public:
    // The descriptor is made non-blocking.
    explicit SocketWire(FileDescriptor descriptor, PollFunction poll = watches_Poll);
    WireMoved read(std::span<uint8_t> room) override;
    WireMoved write(std::span<const uint8_t> bytes) override;
    WireReadiness wait(WireReadiness wanted, std::chrono::milliseconds longest) override;
    int shutDown() override;
    int close() override { return descriptor_.close(); }
    std::optional<int> descriptor() const override { return descriptor_.number(); }
    std::string localName() const override;
    std::string peerName() const override;

  private:
    enum class Form { Socket, Plain };
    FileDescriptor descriptor_;
    Form form_;
    PollFunction poll_;
};

// Waits on one descriptor as Wire::wait does.
WireReadiness wire_Wait(const PollFunction& poll, int descriptor, WireReadiness wanted,
                        std::chrono::milliseconds longest);
