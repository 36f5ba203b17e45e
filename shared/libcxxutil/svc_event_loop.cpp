#include "shared/libcxxutil/svc_event_loop.h"

#include <utility>

namespace {

// What the program's loops share.
struct Shared {
    std::vector<std::unique_ptr<CleanupAction>> cleanup;
    SleepTime* sleep = nullptr;
};

Shared& shared() {
    static Shared state;
    return state;
}

}  // namespace

void Svc_EventLoop::SetDefaultSleepTime(SleepTime* object) {
    shared().sleep = object;
}

void Svc_EventLoop::AddCleanupAction(std::unique_ptr<CleanupAction> action) {
    shared().cleanup.push_back(std::move(action));
}

void Svc_EventLoop::RunCleanupActions() {
    // An action may add one, which then has its turn in the next round.
    const auto actions = std::exchange(shared().cleanup, {});
    for (const auto& action : actions) action->run();
}

void Svc_EventLoop::run() {
    left_ = false;
    while (link_.alive()) {
        iterate();
        if (left_) return;
        if (!isDone()) {
            served_.reset();
            continue;
        }
        const auto now = std::chrono::floor<std::chrono::milliseconds>(loop_.now().time_since_epoch());
        if (served_ && *served_ >= now) continue;
        served_ = now;
        link_.serve();
    }
}

bool Svc_EventLoop::isDone() {
    bool allowed = true;
    for (ExitCondition* condition : exitConditions_) {
        if (condition->ForcesExit()) return true;
        if (!condition->AllowsExit()) allowed = false;
    }
    if (!allowed) return false;
    for (const auto& allows : exitFunctions_)
        if (!allows()) return false;
    return true;
}

void Svc_EventLoop::RunActions() {
    for (LoopAction* action : std::vector(loopActions_)) action->run();
    for (const auto& action : std::vector(loopFunctions_)) action();
    RunCleanupActions();
}

void Svc_EventLoop::iterate() {
    RunActions();
    const bool served = loop_.watches.wait(std::chrono::milliseconds(0)) > 0;
    if (!served && loop_.tasks.UntilNext(loop_.now()) > std::chrono::milliseconds(0)) RunIdlers();
    loop_.round(sleepTime());
}

void Svc_EventLoop::RunIdlers() const {
    for (Idler* idler : std::vector(idlers_)) idler->idle();
}

std::chrono::milliseconds Svc_EventLoop::sleepTime() {
    if (sleepObject_) return sleepObject_->milliseconds();
    if (sleepFunction_) return sleepFunction_();
    if (shared().sleep) return shared().sleep->milliseconds();
    return std::chrono::milliseconds(1000);
}
