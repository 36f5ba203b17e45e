#include "companions/trv/tracefs/linux_target.h"

#include <utility>

#include "companions/trv/system/task_events.h"
#include "companions/trv/system/time_order.h"
#include "companions/trv/tracefs/linux_trace.h"
#include "libtrv/store_format.h"

const char linux_Usage[] = "linux                     this machine's scheduler and interrupts (needs rights)";

namespace {

constexpr std::chrono::milliseconds step_time{20}, count_time{1000};
constexpr uint16_t dismiss = 0x15;  // the kernel call that ends an interrupt

uint64_t nanoseconds(Instant time) {
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
}

// Why a task leaves, by the kernel's bits: none, or one above those of a task's own, when it could run on.
Leaves why(uint64_t state) {
    constexpr uint64_t own = 0xFF, dead = 0x30;
    if ((state & own) == 0) return Leaves::Preempted;
    return (state & dead) != 0 ? Leaves::Ended : Leaves::Waits;
}

class Linux : public Target {
  public:
    Linux() : facts_(target_NanosecondFacts("linux")) {}
    Result open() { return trace_.open(); }

    const TargetFacts& facts() const override { return facts_; }
    Result start(Instant now) override {
        settled_ = nanoseconds(now);
        lost_ = trace_.lost();
        return trace_.setOn(true);
    }
    TargetPoll poll(Instant now, RawWriter& out) override;
    TargetPoll stop(Instant now, RawWriter& out) override;
    std::vector<std::string> info() const override { return {"Trace instance: " + trace_.name()}; }

  private:
    void give(uint64_t until, RawWriter& out);
    void giveOne(const LinuxEvent& event, RawWriter& out);
    void takeOver(const LinuxEvent& event, RawWriter& out);
    uint64_t newlyLost();

    TargetFacts facts_;
    LinuxTrace trace_;
    TaskEvents tasks_;
    TimeOrder<LinuxEvent> order_;
    uint64_t settled_ = 0;  // what is older has been read from all processors
    uint64_t newest_ = 0, lost_ = 0;
    Instant counted_{};
};

void Linux::takeOver(const LinuxEvent& event, RawWriter& out) {
    const TaskPlace leaves{event.time, event.processor, event.task},
        next{event.time, event.processor, event.next};
    tasks_.priority(event.task, event.priority);
    tasks_.name(leaves, event.name, out);
    // The idle task waits for nothing.
    tasks_.leaves(leaves, event.task == 0 ? Leaves::Preempted : why(event.state), out);
    tasks_.priority(event.next, event.nextPriority);
    tasks_.name(next, event.nextName, out);
    tasks_.runs(next, out);
}

void Linux::giveOne(const LinuxEvent& event, RawWriter& out) {
    newest_ = event.time;
    const TaskPlace at{event.time, event.processor, event.task};
    switch (event.kind) {
        case LinuxEvent::Kind::Switch:
            return takeOver(event, out);
        case LinuxEvent::Kind::Wakeup:
            tasks_.priority(event.task, event.priority);
            tasks_.name(at, event.name, out);
            // One that still runs is not switched out at all.
            if (!tasks_.processorOf(event.task))
                tasks_.ready({event.time, static_cast<uint32_t>(event.state), event.task}, out);
            return;
        case LinuxEvent::Kind::InterruptBegin:
            return tasks_.event(at, mt_Interrupt, static_cast<uint16_t>(event.state),
                                static_cast<uint32_t>(event.state), event.name, out);
        case LinuxEvent::Kind::InterruptEnd:
            return tasks_.event(at, mt_KernelCall, dismiss, static_cast<uint32_t>(event.state), "", out);
    }
}

void Linux::give(uint64_t until, RawWriter& out) {
    order_.release(until, [&](const LinuxEvent& event) { giveOne(event, out); });
}

uint64_t Linux::newlyLost() {
    const uint64_t lost = trace_.lost();
    return lost - std::exchange(lost_, lost);
}

TargetPoll Linux::poll(Instant now, RawWriter& out) {
    TargetPoll polled{TargetPoll::State::Waiting, now + step_time, 0, {}};
    trace_.read([&](LinuxEvent&& event) { order_.add(std::move(event)); });
    give(settled_, out);
    settled_ = nanoseconds(now);
    if (now - counted_ < count_time) return polled;
    counted_ = now;
    polled.lost = newlyLost();
    if (polled.lost > 0) tasks_.lose(newest_, out);
    return polled;
}

TargetPoll Linux::stop(Instant, RawWriter& out) {
    TargetPoll polled;
    static_cast<void>(trace_.setOn(false));
    trace_.read([&](LinuxEvent&& event) { order_.add(std::move(event)); });
    give(UINT64_MAX, out);
    tasks_.lose(newest_, out);
    polled.lost = newlyLost();
    return polled;
}

}  // namespace

Result linux_Connect(std::string_view text, std::unique_ptr<Target>& target) {
    if (!text.empty()) return Result::failure("linux takes no words", "", "not " + std::string(text));
    auto made = std::make_unique<Linux>();
    if (Result opened = made->open(); !opened) return opened;
    target = std::move(made);
    return {};
}
