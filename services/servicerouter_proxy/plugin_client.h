// The link between a plug-in and the host program that started it: requests with a text, answered by a status
// and a text, in either direction and within each other.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "services/servicerouter_proxy/plugin_frame.h"
#include "shared/libcxxutil/watches.h"
#include "shared/stp_transport/wire.h"

// What the program does for the link.
class PluginHost {
  public:
    virtual ~PluginHost() = default;
    // The host program asks something: a status, and a text for the answer.
    virtual uint8_t request(const std::string& text, std::string& answer) = 0;
    // Called while an answer is waited for, and nothing came.
    virtual void idle() = 0;
    // A minute has passed so: whether to go on.
    virtual bool goesOn() = 0;
};

// Answers that it knows nothing, and gives up after a minute.
class PluginClientHost : public PluginHost {
  public:
    // idle keeps the windows painted; it may be empty.
    explicit PluginClientHost(std::function<void()> idle = {}) : idle_(std::move(idle)) {}
    uint8_t request(const std::string& text, std::string& answer) override;
    void idle() override {
        if (idle_) idle_();
    }
    bool goesOn() override { return false; }

  private:
    std::function<void()> idle_;
};

class PluginClient {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr uint8_t lostStatus = 255;
    static constexpr std::chrono::seconds patience{60};

    // Takes a wire that is connected. The host outlives this.
    PluginClient(std::unique_ptr<Wire> wire, PluginHost& host,
                 std::function<Clock::time_point()> now = Clock::now);
    PluginClient(const PluginClient&) = delete;
    PluginClient& operator=(const PluginClient&) = delete;
    ~PluginClient();
    // Connects to a port of this host; null when nobody of this user is there.
    static std::unique_ptr<PluginClient> connect(uint16_t port, PluginHost& host);

    bool connected() const { return wire_ != nullptr; }
    // Sends the text and waits for its answer: the status, or lostStatus when the connection went away.
    // Requests that come meanwhile are handled first.
    uint8_t runRequest(const std::string& text, std::string& reply);
    // Handles the requests that have come, without any wait.
    void poll();
    // Calls poll whenever something has come, and gone when the connection is lost, from the loop that serves
    // the watches. These outlive this.
    void watch(Watches& watches, std::function<void()> gone);

  private:
    PluginFrame exchange(const std::string& text);
    enum class Turn { Answered, GoOn };
    Turn takeFrame(const PluginFrame& frame, const std::string& text, PluginFrame& answer);
    void handle(const PluginFrame& request);
    std::optional<PluginFrame> nextFrame();
    void fill();
    void send(const PluginFrame& frame);
    void startWatch();
    void drop();

    std::unique_ptr<Wire> wire_;
    PluginHost& host_;
    std::function<Clock::time_point()> now_;
    std::vector<uint8_t> in_;
    uint8_t depth_ = 0;
    int waiting_ = 0;  // requests under way
    bool polling_ = false;
    Watches* watches_ = nullptr;
    Watch watch_;
    std::function<void()> gone_;
};
