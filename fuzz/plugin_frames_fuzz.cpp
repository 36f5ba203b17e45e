// What a plug-in host sends, in any pieces, to a link that is idle or waits for its answer.
#include <algorithm>

#include "fuzz/support.h"
#include "services/servicerouter_proxy/plugin_client.h"
#include "shared/stp_transport/scripted_wire_testing.h"

namespace {

// Asks back within a request now and then, and may lose its patience.
struct Host : PluginClientHost {
    PluginClient* client = nullptr;
    uint8_t choices;
    int asked = 0;
    explicit Host(uint8_t c) : choices(c) {}
    uint8_t request(const std::string& text, std::string& answer) override {
        std::string inner;
        if ((choices & 1) != 0 && asked++ % 3 == 0) client->runRequest("inner", inner);
        return PluginClientHost::request(text, answer);
    }
    bool goesOn() override { return (choices & 2) != 0 && asked++ < 10; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    if (size < 2) return 0;
    const size_t piece = size_t{1} + data[1];
    const auto script = std::make_shared<WireScript>();
    for (size_t at = 2; at < size; at += piece)
        script->come(std::string(data + at, data + std::min(at + piece, size)));
    if ((data[0] & 4) != 0) script->end();
    PluginClient::Clock::time_point now{};
    script->onWait = [&](std::chrono::milliseconds) { now += std::chrono::seconds(30); };
    Host host(data[0]);
    PluginClient client(std::make_unique<ScriptedWire>(script), host, [&] { return now; });
    host.client = &client;
    std::string reply;
    for (int i = 0; i < 4 && client.connected(); ++i) {
        if ((data[0] >> (3 + i) & 1) != 0)
            client.poll();
        else
            client.runRequest("request", reply);
    }
    // What was written are whole frames.
    std::string_view written = script->written;
    while (!written.empty()) {
        const PluginFrameRead read =
            pluginFrame_Read({reinterpret_cast<const uint8_t*>(written.data()), written.size()});
        fuzz_Check(read.state == PluginFrameRead::State::Whole);
        written.remove_prefix(read.bytes);
    }
    return 0;
}
