// Three plug-ins that send the router whatever there is, in any order, and die at any time.
#include <algorithm>
#include <array>
#include <string_view>

#include "fuzz/support.h"
#include "services/generated/servicerouter_service_plugin_impl.h"
#include "services/svc_router/router.h"
#include "shared/stp_transport/scripted_wire_testing.h"

namespace {

struct PlugIn {
    std::shared_ptr<WireScript> script = std::make_shared<WireScript>();
    Ref<STPTransport> transport;
};

// Messages that would start programs and connect elsewhere are not for here.
bool actsOutside(uint32_t tag) {
    const auto rows = ServiceRouter_router_Impl::serviceDescription().receives;
    if (tag >= rows.size()) return false;
    const std::string_view name = rows[tag].name;
    return name == "RequestPluginLaunch" || name == "RequestPluginConnect";
}

std::string packet(const STPHeader& header, std::string body) {
    STPMessage message{header, std::move(body)};
    message.finish();
    std::string bytes(stpHeaderBytes, '\0');
    frame_WriteHeader(reinterpret_cast<uint8_t*>(bytes.data()), header,
                      static_cast<uint32_t>(message.body.size()));
    return bytes + message.body;
}

// One step: who, what, and a body.
struct Step {
    uint8_t who, what, tag, length;
};

class Suite {
  public:
    explicit Suite() : router_({.tasks = &tasks_, .watches = &watches_}) {
        for (PlugIn& plugin : plugins_) add(plugin);
    }
    void run(const Step& step, std::string body) {
        PlugIn& plugin = plugins_[step.who % plugins_.size()];
        if (!plugin.transport->bound()) add(plugin);
        const auto kind = static_cast<uint32_t>(step.what % 5 == 4 ? STPKind::Negotiation : STPKind::Binary);
        const uint32_t number = 0x100 + step.tag % 8;
        if (step.what % 7 == 6)
            plugin.transport->close();
        else if (step.what % 7 == 5)
            plugin.script->come(std::move(body));  // no packet at all, perhaps
        else if (step.what % 7 == 4)
            plugin.script->come(packet({number, number ^ 1, 1, 0, kind, step.tag, stpOneWay, {}}, body));
        else if (!actsOutside(step.tag))
            plugin.script->come(packet({2, 1, 1, 0, kind, step.tag, stpOneWay, {}}, body));
        serve();
    }
    void serve() {
        for (PlugIn& plugin : plugins_)
            if (plugin.transport && plugin.transport->bound())
                plugin.transport->serviceOnce(std::chrono::milliseconds(0));
        tasks_.Run(EventTasks::Clock::now());
    }
    // When all are gone nothing is left.
    void end() {
        for (PlugIn& plugin : plugins_) plugin.transport->close();
        serve();
        fuzz_Check(router_.pluginCount() == 0 && router_.connections().size() == 0 && router_.idle());
    }

  private:
    void add(PlugIn& plugin) {
        plugin = {};
        plugin.transport = ref_Make<STPTransport>(
            STPTransportOptions{.outInitial = 128, .inInitial = 128, .calls = &calls_, .gate = &gate_});
        plugin.transport->bindWire(std::make_unique<ScriptedWire>(plugin.script));
        router_.add(plugin.transport);
        STPHeader tags{2, 1, 1, 0, static_cast<uint32_t>(STPKind::Negotiation), 1, stpOneWay, {}};
        plugin.script->come(
            packet(tags, negotiation_WriteTags(ServiceRouter_plugin_Impl::serviceDescription())));
        serve();
    }

    EventTasks tasks_;
    PollWatches watches_;
    STPCallState calls_;
    Gate gate_;
    Router router_;
    std::array<PlugIn, 3> plugins_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_Silence();
    Suite suite;
    constexpr size_t stepBytes = 4, most = 200;
    size_t steps = 0;
    while (size >= stepBytes && steps++ < most) {
        const Step step{data[0], data[1], data[2], data[3]};
        data += stepBytes;
        size -= stepBytes;
        const size_t length = std::min<size_t>(step.length, size);
        suite.run(step, std::string(data, data + length));
        data += length;
        size -= length;
    }
    suite.end();
    return 0;
}
