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
    enum class Serve {
        Painting,  // windows are painted; what the user does is held back
        Modal,     // modal dialogs can be used as well
        Full,      // everything: menus work
    };
    // Waits for events of windows, watched sockets and timers, at most so long (0: not at all), and handles
    // them. Escape, where no menu or dialog takes it, flags the innermost wait. False on failure.
    virtual bool serve(Serve what, std::chrono::milliseconds longest) = 0;
    virtual void idle() = 0;
    virtual void serveTimers() = 0;
    // Where windows can't be served: sockets with no wait, timers, then one wait for the sockets, at most so
    // long.
    virtual void background(std::chrono::milliseconds longest) = 0;
    // The window system failed within a wait.
    virtual void abort() = 0;

    // The wait with this handle is under way, is over; they nest.
    virtual void began(int handle) = 0;
    virtual void ended(int handle) = 0;

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
// The stop has been answered: the wait goes on.
void waitHandle_Resume(int handle);
