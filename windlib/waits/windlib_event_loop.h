// The main loop of a service process with windows.
#pragma once

#include "shared/libcxxutil/svc_event_loop.h"
#include "windlib/waits/wait_windows.h"

class Windlib_EventLoop : public Svc_EventLoop {
  public:
    Windlib_EventLoop(EventLoop& loop, LoopLink& link, WaitWindows& windows)
        : Svc_EventLoop(loop, link), windows_(windows) {}
    // Dispatches the events of windows, runs what is due, and waits for more until the next task. A task that
    // fails ends the loop. Without a display as in a process without windows.
    void iterate() override;

  private:
    WaitWindows& windows_;
};
