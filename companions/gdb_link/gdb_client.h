// A debugger for the analyzer's windows: what they ask is done by a gdb.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "companions/gdb_link/gdb_session.h"
#include "services/generated/tra_service_client_impl.h"
#include "shared/libcxxutil/event_loop.h"

class GdbClient : public TRA_client_Impl {
  public:
    // program: the file of what was recorded, for when the process has ended. shown is called when a place
    // was shown. All outlive this.
    GdbClient(GdbSession& gdb, std::string program, EventTasks& tasks,
              std::function<void(const std::string& line)> say, std::function<void()> shown);

  protected:
    ~GdbClient() override;
    TRA_CheckAbility_Reply CheckAbility(const TRA_CheckAbility_Request& request) override;
    void RunCmdInDebugger(const TRA_RunCmdInDebugger_Request& request) override;
    TRA_ShowPositionInDebugger_Reply ShowPositionInDebugger(
        const TRA_ShowPositionInDebugger_Request& request) override;

  private:
    void later(std::function<void()> work);
    void show(const std::string& trace, uint32_t object, uint64_t address);
    void runCommand(const std::string& trace, const std::string& command);

    GdbSession& gdb_;
    std::string program_;
    EventTasks& tasks_;
    std::function<void(const std::string& line)> say_;
    std::function<void()> shown_;
    std::deque<std::function<void()>> work_;
    std::optional<int> task_;
};

// The process of an object: it is (process << 10) | processor.
int gdb_ProcessOf(uint32_t object);
// The object of "attach 0x..."; nothing for any other command.
std::optional<uint32_t> gdb_AttachedObject(const std::string& command);
