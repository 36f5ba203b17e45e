// What a wait needs of the window system: the platform layer fills it, tests stand in for it.
#pragma once

#include <chrono>
#include <string>

// A choice that is put to the user while something waits.
struct WaitQuestion {
    std::string title, text;
    std::string goOn, stop;  // the two buttons
};
enum class WaitAnswer { GoOn, Stop };

class WaitWindows {
  public:
    virtual ~WaitWindows() = default;
    // The program is being quit.
    virtual bool quitting() = 0;
    // There are windows to keep alive; without, waits serve sockets and timers alone.
    virtual bool hasDisplay() = 0;
    // Events of windows are being handled at all.
    virtual bool handlesEvents() = 0;
    // Waits for events of windows, watched sockets and timers, at most so long. False on failure.
    virtual bool waitForInput(std::chrono::milliseconds longest) = 0;
    // Lets the window system do one step: windows are painted. False on failure.
    virtual bool step() = 0;
    // One pass of full event dispatch: menus work. Modal leaves out what a modal dialog would.
    enum class Dispatch { Full, Modal };
    virtual bool dispatch(Dispatch how) = 0;
    virtual void idle() = 0;
    virtual void serveTimers() = 0;
    // Without a display: sockets with no wait, timers, then one wait for the sockets, at most so long.
    virtual void background(std::chrono::milliseconds longest) = 0;
    // The window system failed within a wait.
    virtual void abort() = 0;

    // Whether questions of waits are modeless, with a handle by which they are closed.
    virtual bool waitDialogMode() = 0;
    virtual WaitAnswer ask(const WaitQuestion& question) = 0;
    virtual WaitAnswer askModeless(int handle, const WaitQuestion& question) = 0;
    virtual void closeQuestion(int handle) = 0;
};

// Small numbers by which a dialog tells a wait to stop.
int waitHandle_Make();
void waitHandle_Free(int handle);
// False when there is no such handle any more.
bool waitHandle_Stop(int handle);
bool waitHandle_IsStopped(int handle);
