// From the picture into a debugger, by one of two routes that is chosen at each command: the bus, where a
// debugger has opened or scrolled the canvas's window, or the link to the host program that started this one.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "chronoweave/traxfunc/input/debugger.h"
#include "shared/libcxxutil/event_tasks.h"

// A debugger on the bus.
class DebuggerService {
  public:
    virtual ~DebuggerService() = default;
    // The bits of its answer for the file.
    virtual uint32_t Abilities(const std::string& file) = 0;
    // The time is a text. False when the message did not get there.
    virtual bool RunCommand(const std::string& file, const std::string& command, uint32_t objectId,
                            const std::string& time, uint32_t pc) = 0;
    virtual bool ShowPosition(const std::string& file, uint32_t objectId, const std::string& time,
                              uint32_t pc) = 0;
};
enum DebuggerBit : uint32_t {
    Debugger_Listens = 1,
    Debugger_Shows = 2,
    Debugger_Commands = 4,
    Debugger_TimeTravel = 8
};

// What the link needs. All outlive it; all must be set.
struct DebuggerSurroundings {
    EventTasks* tasks = nullptr;
    // Who opened the canvas's window last; null for nobody. It may go within its calls.
    std::function<std::shared_ptr<DebuggerService>(const _LaCanvasData&)> service;
    std::function<std::string(const _LaCanvasData&)> file;  // that the canvas shows
    // Sends a text to the host program: 1 done, 0 refused, 255 the link is gone. Empty: there is none.
    std::function<std::function<uint8_t(const std::string&)>()> plugin;
    std::function<void()> dropPlugin;
    // The target that the canvas's panel names; empty where the server is not used or none is named.
    std::function<std::string(const _LaCanvasData&)> target;
    std::function<void()> beep;
    std::function<void(const std::string&)> error;     // to be acknowledged
    std::function<bool(const std::string&)> question;  // true for yes
    std::function<void(bool)> busy;                    // the pointer
};

class DebuggerLink : public laDebugger {
  public:
    explicit DebuggerLink(DebuggerSurroundings around) : around_(std::move(around)) {}
    DebuggerLink(const DebuggerLink&) = delete;
    DebuggerLink& operator=(const DebuggerLink&) = delete;
    ~DebuggerLink() override;

    laDebuggerCan Ask(const _LaCanvasData& canvas) override;
    void AskLater(const _LaCanvasData& canvas, std::function<void(const laDebuggerCan&)> told) override;
    bool Attach(const _LaCanvasData& canvas, uint32_t objectId) override;
    bool Rewindscope(const _LaCanvasData& canvas, uint32_t objectId) override;
    bool Show(const _LaCanvasData& canvas, const laDebuggerPlace& place) override;
    bool ShowPast(const _LaCanvasData& canvas, const laDebuggerPlace& place) override;
    void PointLater(const _LaCanvasData& canvas, const laDebuggerPlace& place) override;
    void GotoLater(const _LaCanvasData& canvas, const laDebuggerPlace& place,
                   std::function<void(const std::string& problem)> failed) override;

    // What of the second route is told to the user.
    enum class ReportLost { No, Yes };
    enum class AutoConnect { Forbidden, Allowed };
    // Sends a command by the second route. True when the debugger took it.
    bool RunDebuggerCommand(const _LaCanvasData& canvas, const std::string& command, ReportLost reportLost,
                            AutoConnect autoConnect);
    // The whole way of an event's "Go" with gotoDebugger: the problem, empty when it was shown.
    std::string Goto(const _LaCanvasData& canvas, const laDebuggerPlace& place);

  private:
    enum class Sent { Refused, Done, Lost };
    Sent Send(const std::string& command);
    void Probe();
    bool RunByEitherRoute(const _LaCanvasData& canvas, const std::string& command,
                          const laDebuggerPlace& place);
    // The canvas of a command, which may go while that is sent.
    struct From {
        const _LaCanvasData& canvas;
        laDebuggerWatch watch{canvas};
    };
    bool Run(const From& from, const std::string& command, ReportLost reportLost, AutoConnect autoConnect);
    std::optional<bool> ConnectTarget(const From& from, const std::string& command, ReportLost reportLost);
    bool GotoByPlugin(const _LaCanvasData& canvas, uint32_t objectId, uint32_t address);
    void Later(std::function<void()> work);

    DebuggerSurroundings around_;
    bool routeProbed_ = false;         // the probe was sent once
    bool routeKnown_ = false;          // and taken: commands can be wrapped
    bool autoConnectRefused_ = false;  // the user does not want to be asked again
    // The last click of each canvas that is not told yet.
    std::map<const _LaCanvasData*, laDebuggerPlace> pointed_;
    std::vector<int> tasks_;
};
