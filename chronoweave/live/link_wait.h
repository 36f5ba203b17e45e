// How the link waits for the server: with windows that paint and an Escape that ends the wait, or with none.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "shared/libcxxutil/event_tasks.h"
#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/watches.h"

class WaitWindows;

class LinkWait {
  public:
    using Clock = EventTasks::Clock;
    enum class Came {
        Input,    // there is something to read, if only the end
        Nothing,  // the time is over
        Stopped   // the user wants no more
    };
    virtual ~LinkWait() = default;
    virtual Clock::time_point Now() { return Clock::now(); }
    // A wait for a whole answer begins and ends: until then the user's commands are held.
    virtual void Begin() {}
    virtual void End() {}
    // At most so long; with no limit until the user stops it, where there is one.
    virtual Came ForInput(const FileDescriptor& from, std::optional<std::chrono::milliseconds> longest) = 0;
    // Asked now and then while an answer keeps coming: false when the user stopped it.
    virtual bool GoesOn() { return true; }

    // A wait between Begin and End has become one that the user notices; such a wait is over.
    enum class Long { Begins, Ends };
    std::function<void(Long)> onLong;
};

// Where there are no windows.
class PlainLinkWait : public LinkWait {
  public:
    Came ForInput(const FileDescriptor& from, std::optional<std::chrono::milliseconds> longest) override;
};

// Among windows; both outlive it.
class WindowLinkWait : public LinkWait {
  public:
    WindowLinkWait(Watches& watches, WaitWindows& windows) : watches_(watches), windows_(windows) {}
    ~WindowLinkWait() override { WindowLinkWait::End(); }
    void Begin() override;
    void End() override;
    Came ForInput(const FileDescriptor& from, std::optional<std::chrono::milliseconds> longest) override;
    bool GoesOn() override;

  private:
    bool Serve(std::chrono::milliseconds longest);
    void NoteLong();

    Watches& watches_;
    WaitWindows& windows_;
    std::optional<int> handle_;  // of the wait under way
    bool isLong_ = false;
};
