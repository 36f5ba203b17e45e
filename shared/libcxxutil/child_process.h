// Child processes: started by an argument vector, never by a shell; with the descriptors that they are given
// and no other; reaped, so that none stays as a zombie.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/result.h"

// How a child ended.
struct ChildEnd {
    enum class How { Exited, Killed };
    How how = How::Exited;
    int number = 0;  // the exit status, or the signal
};

struct ChildOptions {
    std::vector<std::string> arguments = {};  // the program first: a path, or a name that PATH leads to
    std::string program = {};    // to be run in place of the first argument, which it sees all the same
    std::string directory = {};  // to start in; empty for the current one
    // The child's descriptor number and ours. 0, 1 and 2 are handed on unless they are mapped; anything else
    // that we have open is closed in the child.
    struct Mapping {
        int child, ours;
    };
    std::vector<Mapping> descriptors = {};
    std::vector<std::string> environment = {};  // "NAME=value", in place of or beside what we have
};

class ChildProcess {
  public:
    // What becomes of a child that still runs when this goes.
    enum class AtEnd {
        Kill,   // it is killed and reaped
        Leave,  // it goes on, and child_Reap reaps it
    };
    ChildProcess() = default;
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ~ChildProcess() { end(); }

    // Starts the program. A program that can't be run is told here, with the system's reason. Signals are at
    // their defaults in the child. An object that has a child already gives that one up by its AtEnd first.
    Result start(const ChildOptions& options, AtEnd atEnd = AtEnd::Kill);

    bool WasStarted() const { return pid_.has_value() || end_.has_value(); }
    // Whether it runs now; a child that has ended is reaped.
    bool IsRunning();
    // How it ended; nothing while it runs or when none was started.
    std::optional<ChildEnd> ended();
    // Waits until it ends, at most so long.
    std::optional<ChildEnd> WaitForEnd(std::chrono::milliseconds longest);
    // Sends the signal; false when it has ended already.
    bool signal(int number);
    std::optional<pid_t> pid() const { return pid_; }

  private:
    void end();
    enum class Wait { No, Yes };
    void reap(Wait wait);

    std::optional<pid_t> pid_;
    std::optional<ChildEnd> end_;
    AtEnd atEnd_ = AtEnd::Kill;
};

// Reaps children that were left and have ended meanwhile. Starting a child does it too.
void child_Reap();
// How many were left and are not yet reaped.
size_t child_Left();
