// Plug-ins that are being started for others: who wants which, and what became of it.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "services/generated/servicerouter_service_messages.h"
#include "shared/libcxxutil/child_process.h"

struct PluginStart {
    uint32_t cookie = 0;  // the plug-in says it when it joins
    uint32_t launcher = 0, launcherCookie = 0;
    std::string program;
    ChildProcess process;  // runs on when this goes; none when the launcher starts it itself
    std::chrono::steady_clock::time_point begun = {};
    std::optional<uint32_t> plugin;  // when it has joined
    // Requests of the launcher for connections with it that came before it offered the service.
    std::vector<ServiceRouter_RequestServiceConnection_Request> waiting;
};

class PluginStarts {
  public:
    using Clock = std::chrono::steady_clock;
    // It is given up when it has not joined so long after its start.
    static constexpr std::chrono::seconds longest{60};

    PluginStart& add(uint32_t launcher, uint32_t launcherCookie, std::string program, Clock::time_point now);
    PluginStart* find(uint32_t cookie);
    PluginStart* findOf(uint32_t launcher, uint32_t launcherCookie);
    PluginStart* findByPlugin(uint32_t plugin);
    void remove(uint32_t cookie) { starts_.erase(cookie); }
    // Those of a launcher that is gone: nobody is told any more. What has not joined yet may still do so.
    void forgetLauncher(uint32_t launcher);
    bool anyPending() const;
    // A start that came to nothing, and why; those that are too old are killed. Nothing when there is none.
    struct Failed {
        uint32_t cookie;
        std::string problem;
    };
    std::optional<Failed> nextFailed(Clock::time_point now);

  private:
    std::map<uint32_t, std::unique_ptr<PluginStart>> starts_;
    uint32_t last_ = 0;
};
