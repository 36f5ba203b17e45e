#include "windlib/waits/windlib_event_loop.h"

#include "shared/libcxxutil/report.h"

void Windlib_EventLoop::iterate() {
    if (!windows_.hasDisplay()) return Svc_EventLoop::iterate();
    RunActions();
    const bool dispatched = windows_.serve(WaitWindows::Serve::Full, std::chrono::milliseconds(0));
    EventLoop& own = loop();
    if (!dispatched || !own.tasks.Run(own.now())) {
        gen_fatal("Error occurred.\n");
        return leave();
    }
    own.gate->RunHeld();
    const auto next = own.gate->Ready() ? std::chrono::milliseconds(0) : own.tasks.UntilNext(own.now());
    if (next > std::chrono::milliseconds(0)) RunIdlers();
    if (!windows_.serve(WaitWindows::Serve::Full, next)) windows_.abort();
}
