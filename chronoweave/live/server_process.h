// The event server as a child process: started by the launcher with a pipe for commands, a pipe for replies
// and a semaphore's name. The launcher makes the reply pipe the server's output and becomes the server, so
// that the pipe's end is the server's end.
//
//     -LAUNCHER REPLIES SEMAPHORE 0 -stdin SERVER
//
// REPLIES is the number of the reply pipe in the child, SEMAPHORE a name of the system that exists as long as
// the server does and is held by us.
#pragma once

#include <chrono>
#include <string>

#include "shared/libcxxutil/child_process.h"
#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/result.h"

// A named semaphore, made and held; its name goes when this goes.
class HeldSemaphore {
  public:
    HeldSemaphore() = default;
    HeldSemaphore(HeldSemaphore&& other) noexcept;
    HeldSemaphore& operator=(HeldSemaphore&& other) noexcept;
    ~HeldSemaphore() { Drop(); }
    // Of initial and largest count 1, taken at once. One that a process of the same number left is replaced.
    Result Make(const std::string& name);
    const std::string& name() const { return name_; }

  private:
    void Drop();
    std::string name_;
    void* semaphore_ = nullptr;
};

struct ServerProcess {
    ChildProcess child;
    FileDescriptor commands;  // we write; doesn't block
    FileDescriptor replies;   // we read; doesn't block
    HeldSemaphore semaphore;
};

struct ServerPrograms {
    std::string launcher, server;
};
// Those of the installation directory; where one isn't there, the one beside this program or on the search
// path.
ServerPrograms server_Programs(const std::string& installation);

// Starts it. After a failure nothing is left of it.
Result server_Start(const ServerPrograms& programs, ServerProcess& server);

// The server was told to end and has lost its input: it may take its time.
void server_Retire(ServerProcess server);
// To be called now and then: looks after those that were retired, and ends by force who takes longer than
// that. Gives how many have not ended.
inline constexpr std::chrono::milliseconds server_TimeToEnd{2000};
size_t server_Reap(std::chrono::milliseconds longest = server_TimeToEnd);
