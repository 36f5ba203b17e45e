// The analyzer as a service: one object for each client, usually a debugger. The client opens, scrolls and
// closes windows; the analyzer asks it what it can do, and to run a command or to show a position.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "services/generated/tra_service_server_impl.h"
#include "services/tra/tra_program.h"

// What a client may be able to do, by the bits of its answer.
enum class TraAbility : uint32_t {
    Listens = 1,        // it is a debugger
    ShowsPosition = 2,  // ShowPositionInDebugger
    RunsCommands = 4,   // RunCmdInDebugger
    TimeTravel = 8,     // it has a view of the past
};

class TRA_Server : public TRA_server_Impl {
  public:
    // Enters the program's list. The program outlives this, or ends the list first.
    explicit TRA_Server(TraProgram& program);

    // The client's abilities for a file, all bits. Asked once for a file, as long as another one is not asked
    // about; a client that does not answer can do nothing, and is asked again the next time. The call waits:
    // windows may come and go within it.
    uint32_t abilities(const std::string& file);
    bool can(TraAbility ability, const std::string& file) {
        return (abilities(file) & static_cast<uint32_t>(ability)) != 0;
    }
    void connectionLost() override;

    // All that there are now.
    static const std::vector<TRA_Server*>& all();
    // At the end of the program: the list is emptied, and nobody calls the program any more.
    static void endAll();

  protected:
    ~TRA_Server() override;

    TRA_OpenFile_Reply OpenFile(const TRA_OpenFile_Request& request) override;
    TRA_ScrollToPosition_Reply ScrollToPosition(const TRA_ScrollToPosition_Request& request) override;
    void CloseFile(const TRA_CloseFile_Request& request) override;

  private:
    // What becomes of a window that shows the file already.
    enum class Found { Leave, Raise, Reload };
    static Found found(uint32_t reload, uint32_t raise);
    TraWindow* openNew(const std::string& file);
    TraWindow* take(TraWindow* window, const std::string& file, Found what);
    uint32_t own(TraWindow* window);

    TraProgram* program_;
    std::optional<std::string> lastFile_;
    uint32_t lastAbility_ = 0;
};
