// Watches on sockets and pipes: what is called when a descriptor can be read or written. The platform layer
// serves them with the notifiers of its own loop; PollWatches serves them where there are no windows.
#pragma once

#include <poll.h>

#include <chrono>
#include <functional>
#include <span>
#include <vector>

enum class WatchFor { Input, Output };

class Watches {
  public:
    virtual ~Watches() = default;
    // Calls ready whenever the descriptor has input (or its far end is gone), or takes output, until the
    // watch is removed. It is called again while that is so: it must read or write, or remove the watch. The
    // descriptor stays the caller's and must outlive the watch.
    virtual int add(int descriptor, WatchFor what, std::function<void()> ready) = 0;
    // May be called from within any watch's ready. An unknown number is ignored.
    virtual void remove(int number) = 0;
};

// One watch, removed when this goes; an empty one watches nothing.
class Watch {
  public:
    Watch() = default;
    Watch(Watches& watches, int descriptor, WatchFor what, std::function<void()> ready);
    Watch(Watch&& other) noexcept;
    Watch& operator=(Watch&& other) noexcept;
    ~Watch() { remove(); }
    void remove();
    bool IsOn() const { return watches_ != nullptr; }

  private:
    Watches* watches_ = nullptr;
    int number_ = 0;
};

// The system's poll, or what a test hands in: fills revents, gives how many are set, -1 with errno otherwise.
using PollFunction = std::function<int(std::span<pollfd> entries, int milliseconds)>;
int watches_Poll(std::span<pollfd> entries, int milliseconds);

class PollWatches : public Watches {
  public:
    explicit PollWatches(PollFunction poll = watches_Poll) : poll_(std::move(poll)) {}
    int add(int descriptor, WatchFor what, std::function<void()> ready) override;
    void remove(int number) override;

    // Waits until a descriptor is ready, at most so long (a signal may end it before), and calls what became
    // ready. Gives how many were called. A descriptor that is not open is reported once and watched no more.
    size_t wait(std::chrono::milliseconds longest);

  private:
    struct Entry {
        int number, descriptor;
        WatchFor what;
        std::function<void()> ready;
    };
    void call(int number, size_t& called);

    std::vector<Entry> entries_;
    int last_ = 0;
    PollFunction poll_;
};
