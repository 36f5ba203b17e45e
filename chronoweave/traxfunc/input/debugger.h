// The debugger that events and objects of canvases are shown in. A canvas knows it by this interface alone;
// which way leads to it, and whether there is one, is the business of the floors above.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

// What the debugger can do for a canvas now.
struct laDebuggerCan {
    bool listens = false;  // a debugger has opened or scrolled the canvas, and is there
    bool shows = false;    // it shows positions
    bool commands = false;
    bool timeTravel = false;
    bool link = false;  // commands can go to the host program that started this one

    bool attaches() const { return commands || link; }
};

// A place of the trace.
struct laDebuggerPlace {
    uint32_t objectId = 0;
    double time = 0;
    std::optional<uint64_t> pc = {};  // what the object was executing
};

class laDebugger {
  public:
    virtual ~laDebugger() = default;
    // Asks the debugger. That waits, and serves other programs meanwhile: the canvas may be gone afterwards.
    virtual laDebuggerCan Ask(const _LaCanvasData& canvas) = 0;
    // Asks when the present work is over; told is not called for a canvas that is gone by then.
    virtual void AskLater(const _LaCanvasData& canvas, std::function<void(const laDebuggerCan&)> told) = 0;
    // These wait as well. False when the debugger did not take it, which was told.
    virtual bool Attach(const _LaCanvasData& canvas, uint32_t objectId) = 0;
    virtual bool Rewindscope(const _LaCanvasData& canvas, uint32_t objectId) = 0;
    virtual bool Show(const _LaCanvasData& canvas, const laDebuggerPlace& place) = 0;
    // Shows the place and opens the view of the past there.
    virtual bool ShowPast(const _LaCanvasData& canvas, const laDebuggerPlace& place) = 0;
    // The place was clicked: a debugger that has the canvas follows, when the present work is over. Nothing
    // is told, whatever comes of it.
    virtual void PointLater(const _LaCanvasData& canvas, const laDebuggerPlace& place) = 0;
    // An event's place, when the present work is over. A failure, if any, is given to the function unless the
    // canvas is gone by then.
    virtual void GotoLater(const _LaCanvasData& canvas, const laDebuggerPlace& place,
                           std::function<void(const std::string& problem)> failed) = 0;
};

// That a canvas has a debugger. The canvas alone owns it.
struct laDebuggerSeat {
    laDebugger& debugger;
};

// The canvas's debugger, which outlives the canvas or is taken away before: by null.
void laDebugger_Set(_LaCanvasData& canvas, laDebugger* debugger);
// Null when the canvas has none.
laDebugger* laDebugger_Of(const _LaCanvasData& canvas);
// Tells, after something that serves other programs, whether a canvas is there and has its debugger still.
class laDebuggerWatch {
  public:
    explicit laDebuggerWatch(const _LaCanvasData& canvas) : seat_(canvas.calls.upper.debugger) {}
    bool holds() const { return !seat_.expired(); }

  private:
    std::weak_ptr<const laDebuggerSeat> seat_;
};
inline laDebuggerCan laDebugger_Ask(const _LaCanvasData& canvas) {
    laDebugger* const debugger = laDebugger_Of(canvas);
    return debugger ? debugger->Ask(canvas) : laDebuggerCan{};
}

// The number behind "PC=" in an event's extra data.
std::optional<uint64_t> laDebugger_Address(std::string_view extraData);

// The rows of context menus, by the names of their commands.
inline constexpr char laDebugger_AttachHere[] = "DebugHere", laDebugger_AttachSelected[] = "DebugSelected",
                      laDebugger_ShowHere[] = "ShowInDebugger", laDebugger_PastHere[] = "RewindscopeHere",
                      laDebugger_PastSelected[] = "RewindscopeSelected";
// Makes them commands of the canvas.
void laDebugger_Attach(_LaCanvasData& canvas, laDebugger& debugger);
// A click at a point of the drawing area: the canvas's debugger, if it has one, is told the object and the
// time there.
void laDebugger_Point(_LaCanvasData& canvas, int x, int y);
// Whether an object can be attached to: 0 and -1 are none, and a fake one is made up for the picture.
bool laDebugger_IsTask(const laItem_Line& lane);
