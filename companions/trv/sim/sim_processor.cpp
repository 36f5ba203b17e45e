#include "companions/trv/sim/sim_processor.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "libtrv/byte_order.h"
#include "libtrv/store_format.h"

namespace {

// Kernel calls.
enum : uint16_t { call_Send = 8, call_Dismiss = 0x15, call_Release = 0x19, call_Wait = 0x24 };
constexpr uint16_t disk_interrupt = 14;

constexpr uint64_t overload_once_in = 4000;  // jobs
constexpr uint64_t low_takes_once_in = 48;   // jobs of the last task
constexpr uint64_t high_takes_once_in = 3;   // jobs of the first task
constexpr size_t tasks_with_semaphore = 3;   // on fewer nobody can stand between the two

SimTime nanoseconds(double time) {
    return static_cast<SimTime>(std::max(1LL, std::llround(time)));
}

}  // namespace

SimProcessor::SimProcessor(uint32_t number, std::vector<SimTask> tasks, uint64_t seed)
    : number_(number), idle_{"idle", number, 255, 0, 0}, random_(seed) {
    double jobsPerTime = 0;
    for (SimTask& task : tasks) {
        Task one;
        static_cast<SimTask&>(one) = std::move(task);
        jobsPerTime += 1 / one.period;
        releases_.push({nanoseconds(random_.between(0, one.period)), tasks_.size()});
        tasks_.push_back(std::move(one));
    }
    constexpr double jobs_an_interrupt = 12;
    interruptGap_ = jobs_an_interrupt / jobsPerTime;
    nextInterrupt_ = nanoseconds(random_.between(0, 2 * interruptGap_));
}

// --- events

void SimProcessor::put(RawWriter& out, uint16_t type, uint16_t subtype, uint32_t object,
                       std::initializer_list<uint32_t> words) {
    std::array<uint8_t, 12> extra;
    store_32(extra.data(), object, out.BigEndian());
    size_t size = 4;
    for (const uint32_t word : words) {
        store_32(extra.data() + size, word, out.BigEndian());
        size += 4;
    }
    // Twelve bytes always fit.
    static_cast<void>(out.event(sim_Epoch + now_, type, subtype, std::span(extra).first(size)));
}

void SimProcessor::putText(RawWriter& out, uint16_t type, uint16_t subtype, uint32_t object, uint32_t number,
                           const std::string& text) {
    std::array<uint8_t, raw_LongestExtra> extra{};
    store_32(extra.data(), object, out.BigEndian());
    store_32(extra.data() + 4, number, out.BigEndian());
    const size_t length = std::min(text.size(), extra.size() - 9);
    std::copy_n(text.begin(), length, extra.begin() + 8);
    static_cast<void>(out.event(sim_Epoch + now_, type, subtype, std::span(extra).first(9 + length)));
}

void SimProcessor::begin(RawWriter& out) {
    out.refresh(sim_Epoch + now_, mt_Ready, {idle_.id, idle_.priority, idle_.name});
    for (const Task& task : tasks_)
        out.refresh(sim_Epoch + now_, mt_Pend, {task.id, task.priority, task.name});
    put(out, mt_TaskChange, 0, idle_.id);
}

// --- time

SimTime SimProcessor::stepTime() const {
    if (!running_) return std::numeric_limits<SimTime>::max();
    const Task& task = tasks_[*running_];
    return now_ + (task.steps[task.step].at - task.worked);
}

SimTime SimProcessor::next() const {
    if (interruptEnd_) return *interruptEnd_;
    // What fell into an interrupt is late.
    return std::max(now_, std::min({releases_.top().time, nextInterrupt_, stepTime()}));
}

// Who runs works on, but not within an interrupt.
void SimProcessor::pass(SimTime time) {
    const SimTime passed = time - now_;
    now_ = time;
    if (!running_) {
        idleRan_ += passed;
        return;
    }
    tasks_[*running_].ran += passed;
    if (!interruptEnd_) tasks_[*running_].worked += passed;
}

void SimProcessor::advance(RawWriter& out) {
    const SimTime step = stepTime();
    const SimTime time = next();
    pass(time);
    if (interruptEnd_) return dismiss(out);
    if (releases_.top().time <= time) return release(out);
    if (nextInterrupt_ <= time) return interrupt(out);
    if (step <= time) doStep(out);
}

// --- what happens

void SimProcessor::addStep(Task& task, double share, SimTime work, Act act) {
    task.steps[task.stepCount++] = {static_cast<SimTime>(share * static_cast<double>(work)), act};
}

// What the next job does, and when.
void SimProcessor::plan(Task& task, size_t place) {
    double work = task.work * random_.between(0.6, 1.2);
    const auto count = static_cast<double>(tasks_.size());
    if (place > 0 && random_.oneIn(overload_once_in)) work = task.work * 3 * count;
    const bool isFirst = place == 0, isLast = place + 1 == tasks_.size();
    bool takes = false;
    if (tasks_.size() >= tasks_with_semaphore) {
        takes =
            (isFirst && random_.oneIn(high_takes_once_in)) || (isLast && random_.oneIn(low_takes_once_in));
        // The fault is that the last task keeps it for long.
        if (takes && isLast) work = std::max(work, tasks_[0].period * 2);
    }
    const SimTime whole = nanoseconds(work);
    task.worked = 0;
    task.stepCount = task.step = 0;
    addStep(task, 0, whole, Act::Begin);
    if (takes) {
        addStep(task, 0.1, whole, Act::Take);
        addStep(task, 0.8, whole, Act::Release);
    }
    addStep(task, 0.9, whole, Act::Send);
    addStep(task, 1, whole, Act::Done);
}

void SimProcessor::release(RawWriter& out) {
    const Release due = releases_.top();
    releases_.pop();
    Task& task = tasks_[due.task];
    releases_.push({due.time + nanoseconds(task.period), due.task});
    if (task.active) {
        ++missed_;
        return putText(out, mt_UserEvent, sim_DeadlineMissed, task.id, static_cast<uint32_t>(task.jobs),
                       "deadline missed: " + task.name);
    }
    task.active = true;
    ++task.jobs;
    plan(task, due.task);
    putText(out, mt_Timer, 0, task.id, static_cast<uint32_t>(task.jobs), "release");
    put(out, mt_StatusChange, mt_Ready, task.id, {task.priority});
    ready_.push(due.task);
    reschedule(out);
}

void SimProcessor::interrupt(RawWriter& out) {
    putText(out, mt_Interrupt, disk_interrupt, shown(running_).id, disk_interrupt, "disk");
    interruptEnd_ = now_ + nanoseconds(interruptGap_ * random_.between(0.001, 0.01));
}

void SimProcessor::dismiss(RawWriter& out) {
    put(out, mt_KernelCall, call_Dismiss, shown(running_).id, {disk_interrupt, 0});
    interruptEnd_.reset();
    nextInterrupt_ = now_ + nanoseconds(random_.between(0, 2 * interruptGap_));
}

void SimProcessor::doStep(RawWriter& out) {
    const size_t place = *running_;
    Task& task = tasks_[place];
    switch (task.steps[task.step].act) {
        case Act::Begin:
            putText(out, mt_UserEvent, sim_JobBegins, task.id, static_cast<uint32_t>(task.jobs),
                    "job " + std::to_string(task.jobs));
            break;
        case Act::Take:
            return take(place, out);
        case Act::Release:
            ++task.step;
            return giveBack(place, out);
        case Act::Send:
            put(out, mt_KernelCall, call_Send, task.id, {tasks_[(place + 1) % tasks_.size()].id, 16});
            break;
        case Act::Done:
            return done(place, out);
    }
    ++task.step;
}

void SimProcessor::take(size_t place, RawWriter& out) {
    ++tasks_[place].step;
    put(out, mt_KernelCall, call_Wait, tasks_[place].id, {1, holder_ ? 1u : 0u});
    if (!holder_) {
        holder_ = place;
        return;
    }
    waiter_ = place;
    isInversionTold_ = false;
    put(out, mt_StatusChange, mt_Pend, tasks_[place].id, {tasks_[place].priority});
    dispatch(out);
}

void SimProcessor::giveBack(size_t place, RawWriter& out) {
    put(out, mt_KernelCall, call_Release, tasks_[place].id, {1, 0});
    holder_ = std::exchange(waiter_, std::nullopt);
    if (!holder_) return;
    put(out, mt_StatusChange, mt_Ready, tasks_[*holder_].id, {tasks_[*holder_].priority});
    ready_.push(*holder_);
    reschedule(out);
}

void SimProcessor::done(size_t place, RawWriter& out) {
    tasks_[place].active = false;
    put(out, mt_StatusChange, mt_Pend, tasks_[place].id, {tasks_[place].priority});
    dispatch(out);
}

// Whoever is more urgent than the one that runs takes over.
void SimProcessor::reschedule(RawWriter& out) {
    if (ready_.empty() || (running_ && ready_.top() > *running_)) return;
    put(out, mt_StatusChange, mt_Ready, shown(running_).id, {shown(running_).priority});
    if (running_) ready_.push(*running_);
    dispatch(out);
}

void SimProcessor::dispatch(RawWriter& out) {
    running_.reset();
    if (!ready_.empty()) {
        running_ = ready_.top();
        ready_.pop();
    }
    put(out, mt_TaskChange, 0, shown(running_).id);
    noticeInversion(out);
}

// A task that needs not wait runs, while a more urgent one waits for one that is less so.
void SimProcessor::noticeInversion(RawWriter& out) {
    if (!waiter_ || !holder_ || !running_ || isInversionTold_) return;
    if (*running_ <= *waiter_ || *running_ >= *holder_) return;
    isInversionTold_ = true;
    ++inversions_;
    putText(out, mt_UserEvent, sim_Inversion, tasks_[*waiter_].id,
            static_cast<uint32_t>(tasks_[*running_].id),
            "priority inversion: waits for " + tasks_[*holder_].name + " behind " + tasks_[*running_].name);
}

std::vector<SimProcessor::Account> SimProcessor::accounts() const {
    std::vector<Account> accounts{{idle_.id, idle_.name, idleRan_}};
    for (const Task& task : tasks_) accounts.push_back({task.id, task.name, task.ran});
    return accounts;
}
