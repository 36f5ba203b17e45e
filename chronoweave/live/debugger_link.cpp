#include "chronoweave/live/debugger_link.h"

#include <algorithm>
#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

constexpr char route[] = "route debugserver.name.tgtlnk forward_to_pr";

std::string time_text(double time) {
    return gen_format("%.12Lg", static_cast<long double>(time));
}

// The bus carries the low half of an address.
uint32_t pc_of(const laDebuggerPlace& place) {
    return static_cast<uint32_t>(place.pc.value_or(0));
}

}  // namespace

DebuggerLink::~DebuggerLink() {
    for (const int task : tasks_) around_.tasks->Remove(task);
}

laDebuggerCan DebuggerLink::Ask(const _LaCanvasData& canvas) {
    laDebuggerCan can;
    can.link = static_cast<bool>(around_.plugin());
    const std::shared_ptr<DebuggerService> service = around_.service(canvas);
    if (!service) return can;
    const uint32_t bits = service->Abilities(around_.file(canvas));
    can.listens = (bits & Debugger_Listens) != 0;
    can.shows = (bits & Debugger_Shows) != 0;
    can.commands = (bits & Debugger_Commands) != 0;
    can.timeTravel = (bits & Debugger_TimeTravel) != 0;
    return can;
}

// Work that waits for other programs starts from the loop, within nothing else.
void DebuggerLink::Later(std::function<void()> work) {
    const auto number = std::make_shared<int>(0);
    *number = around_.tasks->Once(std::chrono::milliseconds(0), EventTasks::Clock::now(),
                                  [this, number, work = std::move(work)] {
                                      std::erase(tasks_, *number);
                                      work();
                                      return true;
                                  });
    tasks_.push_back(*number);
}

void DebuggerLink::AskLater(const _LaCanvasData& canvas, std::function<void(const laDebuggerCan&)> told) {
    const _LaCanvasData* const asked = &canvas;
    Later([this, asked, watch = laDebuggerWatch(canvas), told = std::move(told)] {
        if (!watch.holds()) return;
        const laDebuggerCan can = Ask(*asked);
        if (watch.holds()) told(can);
    });
}

// Of several clicks before the debugger is told, the last one counts.
void DebuggerLink::PointLater(const _LaCanvasData& canvas, const laDebuggerPlace& place) {
    if (!around_.service(canvas)) return;
    const _LaCanvasData* const from = &canvas;
    if (!pointed_.insert_or_assign(from, place).second) return;
    Later([this, from, watch = laDebuggerWatch(canvas)] {
        const laDebuggerPlace last = pointed_.extract(from).mapped();
        if (!watch.holds() || !Ask(*from).shows || !watch.holds()) return;
        if (const auto service = around_.service(*from))
            service->ShowPosition(around_.file(*from), last.objectId, time_text(last.time), pc_of(last));
    });
}

void DebuggerLink::GotoLater(const _LaCanvasData& canvas, const laDebuggerPlace& place,
                             std::function<void(const std::string& problem)> failed) {
    const _LaCanvasData* const from = &canvas;
    Later([this, from, watch = laDebuggerWatch(canvas), place, failed = std::move(failed)] {
        if (!watch.holds()) return;
        const std::string problem = Goto(*from, place);
        if (!problem.empty() && watch.holds()) failed(problem);
    });
}

std::string DebuggerLink::Goto(const _LaCanvasData& canvas, const laDebuggerPlace& place) {
    const uint32_t id = place.objectId;
    if (around_.plugin() && place.pc) {
        const uint32_t address = pc_of(place);
        return GotoByPlugin(canvas, id, address)
                   ? std::string()
                   : gen_format("Failed to show task 0x%x at address 0x%x.", id, address);
    }
    const laDebuggerWatch watch(canvas);
    const laDebuggerCan can = Ask(canvas);
    if (!watch.holds()) return {};
    return can.shows && Show(canvas, place) ? std::string() : "The debugger does not show positions.";
}

bool DebuggerLink::GotoByPlugin(const _LaCanvasData& canvas, uint32_t objectId, uint32_t address) {
    const From from{canvas};
    around_.busy(true);
    const bool shown =
        Run(from,
            gen_format("attach 0x%x; route debugger.pid.%d e 0x%x", objectId, static_cast<int>(objectId),
                       address),
            ReportLost::Yes, AutoConnect::Allowed) ||
        Run(from, gen_format("__raisewindow; e 0x%x", address), ReportLost::No, AutoConnect::Forbidden);
    around_.busy(false);
    return shown;
}

bool DebuggerLink::Show(const _LaCanvasData& canvas, const laDebuggerPlace& place) {
    const std::shared_ptr<DebuggerService> service = around_.service(canvas);
    if (service &&
        service->ShowPosition(around_.file(canvas), place.objectId, time_text(place.time), pc_of(place)))
        return true;
    around_.beep();
    return false;
}

bool DebuggerLink::ShowPast(const _LaCanvasData& canvas, const laDebuggerPlace& place) {
    const laDebuggerWatch watch(canvas);
    return Show(canvas, place) && watch.holds() && RunByEitherRoute(canvas, "rewindscope", place);
}

bool DebuggerLink::Attach(const _LaCanvasData& canvas, uint32_t objectId) {
    return RunByEitherRoute(canvas, gen_format("attach 0x%x", objectId), {objectId, 0, {}});
}

bool DebuggerLink::Rewindscope(const _LaCanvasData& canvas, uint32_t objectId) {
    return RunByEitherRoute(canvas, gen_format("rewindscope -tid 0x%x", objectId), {objectId, 0, {}});
}

bool DebuggerLink::RunByEitherRoute(const _LaCanvasData& canvas, const std::string& command,
                                    const laDebuggerPlace& place) {
    const From from{canvas};
    if (const std::shared_ptr<DebuggerService> service = around_.service(canvas)) {
        const std::string file = around_.file(canvas);
        const bool takes = (service->Abilities(file) & Debugger_Commands) != 0;
        if (!from.watch.holds()) return false;
        if (takes && service->RunCommand(file, command, place.objectId, time_text(place.time), pc_of(place)))
            return true;
    }
    return Run(from, command, ReportLost::Yes, AutoConnect::Allowed);
}

DebuggerLink::Sent DebuggerLink::Send(const std::string& command) {
    constexpr uint8_t refused = 0, done = 1;
    const auto plugin = around_.plugin();
    if (!plugin) return Sent::Lost;
    const uint8_t status = plugin(command);
    return status == done ? Sent::Done : status == refused ? Sent::Refused : Sent::Lost;
}

void DebuggerLink::Probe() {
    if (routeProbed_) return;
    routeProbed_ = true;
    routeKnown_ = Send(std::string(route) + " {}") == Sent::Done;
}

bool DebuggerLink::RunDebuggerCommand(const _LaCanvasData& canvas, const std::string& command,
                                      ReportLost reportLost, AutoConnect autoConnect) {
    return Run({canvas}, command, reportLost, autoConnect);
}

bool DebuggerLink::Run(const From& from, const std::string& command, ReportLost reportLost,
                       AutoConnect autoConnect) {
    if (!around_.plugin()) {
        if (reportLost == ReportLost::Yes) around_.beep();
        return false;
    }
    if (command.empty()) return true;
    Probe();
    const bool wraps = routeKnown_ && !command.starts_with(route);
    const Sent sent = Send(wraps ? std::string(route) + " {" + command + "}" : command);
    if (sent == Sent::Done) return true;
    if (sent == Sent::Lost) {
        around_.dropPlugin();
        if (reportLost == ReportLost::No) return false;
        around_.beep();
        around_.error("Plugin connection to VOREL is lost.");
        return false;
    }
    if (!autoConnectRefused_ && autoConnect == AutoConnect::Allowed && from.watch.holds())
        if (const auto second = ConnectTarget(from, command, reportLost)) return *second;
    if (reportLost == ReportLost::Yes) around_.beep();
    return false;
}

// The debugger may have refused because it is not connected to the target. What came of the second try;
// nothing where there was none.
std::optional<bool> DebuggerLink::ConnectTarget(const From& from, const std::string& command,
                                                ReportLost reportLost) {
    const std::string target = around_.target(from.canvas);
    if (target.empty()) return std::nullopt;
    if (Send("remote -noprocess tgtlnk -port udp@" + target) == Sent::Done)
        return Run(from, command, reportLost, AutoConnect::Forbidden);
    autoConnectRefused_ = !around_.question("Cannot automatically connect to \"" + target +
                                            "\" with tgtlnk. Try again next time?");
    return std::nullopt;
}
