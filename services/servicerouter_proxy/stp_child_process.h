// Starts a program that connects back: it is told the port of a socket that waits for it.
#pragma once

#include <string>
#include <vector>

#include "shared/libcxxutil/child_process.h"
#include "shared/stp_transport/transport.h"

class STPChildProcess {
  public:
    STPChildProcess() = default;
    STPChildProcess(const STPChildProcess&) = delete;
    STPChildProcess& operator=(const STPChildProcess&) = delete;
    virtual ~STPChildProcess() = default;

    // Whether the host's name goes ahead of the port.
    enum class Inserts { Port, HostAndPort };

    Ref<STPTransport> transport;         // is bound to the child by launch
    std::vector<std::string> arguments;  // the program first
    size_t portPosition = 1;             // in the arguments, where the port goes
    Inserts inserts = Inserts::Port;
    std::string workingDirectory;  // empty for the current one

    // Starts the program and waits until it has connected. False with the reason in the status; the program
    // does not run then. The handler says how long to wait; with none that goes on until the program ends.
    bool launch(RetryHandler* retry, STPStatus& status);
    // It runs on when this goes.
    ChildProcess& process() { return process_; }

  protected:
    virtual bool isRunning() { return process_.IsRunning(); }

  private:
    std::vector<std::string> childArguments(uint16_t port) const;
    bool start(STPStatus& status);
    bool awaitConnection(RetryHandler* retry, STPStatus& status);

    ChildProcess process_;
};
