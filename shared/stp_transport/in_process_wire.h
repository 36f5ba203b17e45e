// The wire of a transport whose peer lives in the same process: it reads from the peer's outgoing window, and
// writes nothing, since the peer reads from ours.
#pragma once

#include <functional>
#include <memory>

#include "shared/stp_transport/byte_window.h"
#include "shared/stp_transport/wire.h"

// What two ends that know each other share: whether the other one is still there.
struct InProcessLink {
    bool open[2] = {true, true};
    std::function<void()> serve[2];  // lets that end take what lies ready for it
};

class InProcessWire : public Wire {
  public:
    // The far party keeps its fields where they are until this wire is closed. wake is called in place of
    // writing; it may be empty.
    InProcessWire(PeerWindow peer, std::function<void()> wake) : peer_(peer), wake_(std::move(wake)) {}
    // One end, 0 or 1, of a link.
    InProcessWire(PeerWindow peer, std::shared_ptr<InProcessLink> link, int end)
        : peer_(peer), link_(std::move(link)), end_(end) {}

    WireMoved read(std::span<uint8_t> room) override;
    WireMoved write(std::span<const uint8_t>) override { return {}; }
    // Never waits for long: the far party is on the same thread. An end that knows its peer lets it take what
    // is there for it.
    WireReadiness wait(WireReadiness wanted, std::chrono::milliseconds longest) override;
    int close() override;

    void wake() const;
    void setWake(std::function<void()> wake) { wake_ = std::move(wake); }
    // How many bytes the peer has for us.
    size_t pending() const;

  private:
    bool peerIsThere() const { return !link_ || link_->open[1 - end_]; }

    PeerWindow peer_;
    std::function<void()> wake_;
    std::shared_ptr<InProcessLink> link_;
    int end_ = 0;
};
