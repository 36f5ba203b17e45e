#include "chronoweave/live/link_wait.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "windlib/waits/wait_windows.h"

using std::chrono::milliseconds;

namespace {

constexpr milliseconds longestServe{500};

// A signal ends a poll early: it goes on for what is left.
bool has_input(const FileDescriptor& from, std::optional<milliseconds> longest) {
    const auto until = LinkWait::Clock::now() + longest.value_or(milliseconds(0));
    for (;;) {
        pollfd entry{from.number(), POLLIN, 0};
        const auto left = std::chrono::ceil<milliseconds>(until - LinkWait::Clock::now());
        const int wait = longest ? static_cast<int>(std::max<int64_t>(0, left.count())) : -1;
        const int ready = ::poll(&entry, 1, wait);
        if (ready >= 0 || errno != EINTR) return ready > 0;
    }
}

}  // namespace

LinkWait::Came PlainLinkWait::ForInput(const FileDescriptor& from, std::optional<milliseconds> longest) {
    return has_input(from, longest) ? Came::Input : Came::Nothing;
}

void WindowLinkWait::Begin() {
    if (handle_) return;
    handle_ = waitHandle_Make();
    windows_.began(*handle_);
}

void WindowLinkWait::End() {
    if (!handle_) return;
    windows_.ended(*handle_);
    waitHandle_Free(*handle_);
    handle_.reset();
    if (std::exchange(isLong_, false) && onLong) onLong(Long::Ends);
}

void WindowLinkWait::NoteLong() {
    if (!std::exchange(isLong_, true) && onLong) onLong(Long::Begins);
}

// False when the user, or the end of the program, stopped the wait.
bool WindowLinkWait::Serve(milliseconds longest) {
    if (windows_.quitting()) return false;
    if (!windows_.hasDisplay() || !windows_.handlesEvents())
        windows_.background(longest);
    else if (!windows_.serve(WaitWindows::Serve::Painting, longest))
        return false;
    return !waitHandle_IsStopped(*handle_);
}

LinkWait::Came WindowLinkWait::ForInput(const FileDescriptor& from, std::optional<milliseconds> longest) {
    if (has_input(from, milliseconds(0))) return Came::Input;
    if (!handle_) return has_input(from, longest.value_or(milliseconds(0))) ? Came::Input : Came::Nothing;
    const Clock::time_point begin = Now();
    bool came = false;
    // Only so that a wait of the windows ends when there is something to read.
    Watch watch(watches_, from.number(), WatchFor::Input, [&] {
        came = true;
        watch.remove();
    });
    while (!came) {
        const auto spent = std::chrono::floor<milliseconds>(Now() - begin);
        if (longest && spent >= *longest) return Came::Nothing;
        if (spent >= longestServe) NoteLong();
        if (!Serve(longest ? std::min(longestServe, *longest - spent) : longestServe)) return Came::Stopped;
    }
    return Came::Input;
}

bool WindowLinkWait::GoesOn() {
    return !handle_ || Serve(milliseconds(0));
}
