// A program that is started but waits, before its first instruction, until it is let go: so that it can be
// watched from the beginning. It gets nothing to read, what it prints is dropped, and the end of its errors
// kept. Its addresses are the same in every run.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/child_process.h"
#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/result.h"

class HeldChild {
  public:
    HeldChild() = default;
    HeldChild(const HeldChild&) = delete;
    HeldChild& operator=(const HeldChild&) = delete;
    // Ends it, and all that it started in its process group.
    ~HeldChild() { end(); }

    // The program by a path or by PATH, with its arguments.
    Result start(const std::vector<std::string>& arguments);
    // It may go. A program that can't be run is told here.
    Result letGo();
    pid_t pid() const { return pid_; }
    bool wasLetGo() const { return wasLetGo_; }
    // How it ended; nothing while it runs. Also takes what it has written to its errors.
    std::optional<ChildEnd> ended();
    void end();
    // The last line that it wrote to its errors.
    std::string lastError() const;

  private:
    [[noreturn]] static void become(char* const* arguments, int go, int failed, int errors);
    void takeErrors();

    pid_t pid_ = 0;
    bool wasLetGo_ = false;
    std::optional<ChildEnd> end_;
    FileDescriptor go_, failed_, errors_;
    std::string said_;
};
