// The program as a service on a screen of its own, with a router and the remote control.
#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "chronoweave/traxmain/driven_session.h"
#include "shared/libcxxutil/child_process.h"

class CanvasWindow;

// A program that runs; what it prints goes to a file.
class DrivenCall {
  public:
    DrivenCall(const std::string& file, const std::vector<std::string>& words);
    bool ended() { return !child_.IsRunning(); }
    // Its exit status; -1 when it does not end.
    int status();
    std::string printed() const;
    bool says(const std::string& words) const { return printed().find(words) != std::string::npos; }
    void interrupt() { child_.signal(SIGTERM); }
    pid_t process() const { return child_.pid().value_or(0); }

  private:
    std::string file_;
    ChildProcess child_;
};

class DrivenService : public DrivenSession {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::unique_ptr<DrivenCall> run(const std::vector<std::string>& words) {
        return std::make_unique<DrivenCall>(folder / ("call" + std::to_string(++calls_)), words);
    }
    std::unique_ptr<DrivenCall> call(std::vector<std::string> words) {
        words.insert(words.begin(), remote_);
        return run(words);
    }
    // A call that is answered, and well.
    void done(Robot& robot, const std::vector<std::string>& words);
    // The window of the trace, with the keyboard.
    CanvasWindow* open(Robot& robot);
    // A client that stays, so that the service outlives its windows: the debugger of the window of the trace.
    std::unique_ptr<DrivenCall> keeper(Robot& robot);

    std::vector<std::string> service;  // the program's arguments

  private:
    // In a folder of its own, where it finds no window program to start.
    std::string remote_ = folder / "chronoweave-remote";
    ChildProcess router_;
    int calls_ = 0;
};

// The point of the drawing area on the screen.
QPoint point_of_picture(CanvasWindow& window, int x, int y);
