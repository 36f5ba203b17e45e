// The main loop of a process with services: it goes on as long as the link to the service router lives,
// serves sockets, timers and actions, and offers to end when everybody agrees.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "shared/libcxxutil/event_loop.h"

// Work for when nothing else is to be done: no socket was ready and no task is due.
class Idler {
  public:
    virtual ~Idler() = default;
    virtual void idle() = 0;
};

class ExitCondition {
  public:
    virtual ~ExitCondition() = default;
    virtual bool AllowsExit() = 0;
    // The process ends whatever the others say.
    virtual bool ForcesExit() = 0;
};

// Runs once, at the end of the round that it was added in.
class CleanupAction {
  public:
    virtual ~CleanupAction() = default;
    virtual void run() = 0;
};

// Runs every round.
class LoopAction {
  public:
    virtual ~LoopAction() = default;
    virtual void run() = 0;
};

class SleepTime {
  public:
    virtual ~SleepTime() = default;
    virtual std::chrono::milliseconds milliseconds() = 0;
};

// The link that keeps the process alive.
class LoopLink {
  public:
    virtual ~LoopLink() = default;
    virtual bool alive() = 0;
    // The process may end: gives the far side what it needs to let it go.
    virtual void serve() = 0;
};

class Svc_EventLoop {
  public:
    // Both outlive the loop.
    Svc_EventLoop(EventLoop& loop, LoopLink& link) : loop_(loop), link_(link) {}
    Svc_EventLoop(const Svc_EventLoop&) = delete;
    Svc_EventLoop& operator=(const Svc_EventLoop&) = delete;
    virtual ~Svc_EventLoop() = default;

    // Rounds while the link is alive. While isDone is true the link is served, once for each millisecond of
    // the clock at most.
    virtual void run();
    // Whether a condition forces the end, or all conditions and all exit functions allow it.
    virtual bool isDone();
    // Loop actions, loop functions, cleanup actions, the sockets with no wait, the tasks, then one wait over
    // the sockets: sleepTime, or until the next task when that comes first. Idlers run before the wait of a
    // round that had nothing else to do.
    virtual void iterate();
    // The object's, else the function's, else the program's default, else 1000 ms.
    virtual std::chrono::milliseconds sleepTime();

    // What is added is not owned and outlives the loop.
    void AddExitCondition(ExitCondition& condition) { exitConditions_.push_back(&condition); }
    void AddExitFunction(std::function<bool()> allowsExit) {
        exitFunctions_.push_back(std::move(allowsExit));
    }
    void AddLoopAction(LoopAction& action) { loopActions_.push_back(&action); }
    void AddLoopFunction(std::function<void()> action) { loopFunctions_.push_back(std::move(action)); }
    void AddIdler(Idler& idler) { idlers_.push_back(&idler); }
    void SetSleepTime(SleepTime* object) { sleepObject_ = object; }
    void SetSleepTime(std::function<std::chrono::milliseconds()> function) {
        sleepFunction_ = std::move(function);
    }
    // Null takes the default out again.
    static void SetDefaultSleepTime(SleepTime* object);
    // For the whole program: run and dropped at the end of the next round's actions.
    static void AddCleanupAction(std::unique_ptr<CleanupAction> action);

  protected:
    void RunActions();
    void RunIdlers() const;
    // run ends with this round.
    void leave() { left_ = true; }
    EventLoop& loop() { return loop_; }

  private:
    static void RunCleanupActions();

    EventLoop& loop_;
    LoopLink& link_;
    std::vector<ExitCondition*> exitConditions_;
    std::vector<std::function<bool()>> exitFunctions_;
    std::vector<LoopAction*> loopActions_;
    std::vector<std::function<void()>> loopFunctions_;
    std::vector<Idler*> idlers_;
    SleepTime* sleepObject_ = nullptr;
    std::function<std::chrono::milliseconds()> sleepFunction_;
    bool left_ = false;
    std::optional<std::chrono::milliseconds> served_;  // the clock when the link was served
};
