// Where the router waits for plug-ins that connect by themselves.
#pragma once

#include <functional>
#include <optional>

#include "shared/libcxxutil/event_loop.h"
#include "shared/stp_transport/transport.h"

class RouterSocket {
  public:
    // Port 0 lets the system choose. Not open on failure, with the status set. The loop outlives this.
    RouterSocket(uint16_t port, EventLoop& loop, STPStatus& status);
    RouterSocket(const RouterSocket&) = delete;
    RouterSocket& operator=(const RouterSocket&) = delete;
    ~RouterSocket();

    bool isOpen() const { return socket_.IsOpen(); }
    uint16_t port() const { return port_; }
    // What is done with each that connects and belongs to this user.
    void setClient(std::function<void(Ref<STPTransport>)> client) { client_ = std::move(client); }

  private:
    void watch();
    void accept();

    EventLoop& loop_;
    FileDescriptor socket_;
    uint16_t port_ = 0;
    Watch watch_;
    std::optional<int> later_;
    std::function<void(Ref<STPTransport>)> client_;
};
