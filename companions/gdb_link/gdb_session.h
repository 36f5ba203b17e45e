// One gdb, driven through its machine interface: attached to a process, or with a program file loaded.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "companions/gdb_link/mi_record.h"
#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/child_process.h"
#include "shared/libcxxutil/watches.h"

// Where an address lies in the sources.
struct SourcePlace {
    std::string function, file;
    int line = 0;
};

class GdbSession {
  public:
    // gdb: the program, looked for on PATH. print takes what gdb says to its user; what that is while no
    // command runs is heard by the watches, which may be null and outlive this.
    GdbSession(std::string gdb, std::function<void(const std::string&)> print, Watches* watches = nullptr);
    GdbSession(const GdbSession&) = delete;
    GdbSession& operator=(const GdbSession&) = delete;
    ~GdbSession();

    // Attaches to the process as long as it lives, else loads the program file, and shows the line of the
    // address. The failure says what did not work. gdb is started where it does not run.
    Result show(int pid, const std::string& program, uint64_t address, SourcePlace& place);
    // Attaches to the process.
    Result attach(int pid);
    // A command as its user types it.
    Result command(const std::string& text);
    bool isRunning() { return process_.IsRunning(); }

    static constexpr std::chrono::seconds patience{30};

  private:
    Result start();
    Result run(const std::string& miCommand, MiRecord& answer);
    Result load(const std::string& program);
    Result detach();
    enum class Wait { No, Yes };
    std::optional<MiRecord> next(Wait wait, std::chrono::steady_clock::time_point until);
    void take(const MiRecord& record);
    void readUnasked();
    void stop();

    std::string gdb_;
    std::function<void(const std::string&)> print_;
    Watches* watches_;
    ChildProcess process_;
    FileDescriptor to_, from_;
    Watch watch_;  // of from_
    std::string in_;
    std::string said_;  // to its user, since the last command began
    uint32_t token_ = 0;
    int attached_ = 0;     // process; 0 for none
    std::string program_;  // that is loaded
};

// "0x401136 is in work (spin.c:12)." of gdb's own words.
std::optional<SourcePlace> gdb_PlaceOf(const std::string& text);
