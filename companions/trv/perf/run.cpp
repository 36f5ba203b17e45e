#include "companions/trv/perf/run.h"

#include <sys/resource.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "companions/trv/perf/held_child.h"
#include "companions/trv/perf/perf_events.h"
#include "companions/trv/server/words.h"
#include "companions/trv/system/task_events.h"
#include "companions/trv/system/time_order.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

const char run_Usage[] = "run COMMAND [ARGUMENT...] the tasks of a command, and which instruction each is at";

namespace {

using namespace std::chrono_literals;
constexpr auto step_time = 10ms;
constexpr uint16_t sample_subtype = 1;  // of the user events that tell an instruction

uint64_t nanoseconds(Instant time) {
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
}

// As the system counts priorities: 120 for a task of nice 0.
uint32_t priority_of(uint32_t task) {
    errno = 0;
    const int nice = ::getpriority(PRIO_PROCESS, task);
    return static_cast<uint32_t>(120 + (errno == 0 ? nice : 0));
}

class Run : public Target {
  public:
    Run(TargetFacts facts, std::vector<std::string> words)
        : facts_(std::move(facts)), words_(std::move(words)) {}

    const TargetFacts& facts() const override { return facts_; }
    // Starts the command the first time. From then on it goes on whether it is logged or not.
    Result start(Instant now) override;
    TargetPoll poll(Instant now, RawWriter& out) override;
    TargetPoll stop(Instant now, RawWriter& out) override;
    std::vector<std::string> info() const override;

    // Makes the child and looks whether it may be watched.
    Result prepare();

  private:
    void readAll(TargetPoll& polled);
    void give(uint64_t until, RawWriter& out);
    void giveOne(const PerfRecord& record, RawWriter& out);
    std::string endText(const ChildEnd& end) const;

    TargetFacts facts_;
    std::vector<std::string> words_;
    PerfEvents events_;
    HeldChild child_;
    TaskEvents tasks_;
    TimeOrder<PerfRecord> order_;
    uint64_t settled_ = 0;  // what is older has been read from all processors
    uint64_t newest_ = 0;
};

Result Run::prepare() {
    if (Result started = child_.start(words_); !started) return started;
    return events_.open(child_.pid());
}

Result Run::start(Instant now) {
    settled_ = nanoseconds(now);
    if (child_.wasLetGo()) {
        events_.setOn(true);
        return {};
    }
    return child_.letGo();
}

void Run::readAll(TargetPoll& polled) {
    events_.read([&](PerfRecord&& record) {
        if (record.kind == PerfRecord::Kind::Lost)
            polled.lost += record.value;
        else
            order_.add(std::move(record));
    });
}

void Run::giveOne(const PerfRecord& record, RawWriter& out) {
    newest_ = record.time;
    const TaskPlace at{record.time, record.processor, record.task};
    switch (record.kind) {
        case PerfRecord::Kind::Begins:
            tasks_.priority(record.task, priority_of(record.task));
            return tasks_.name(at, tasks_.nameOf(static_cast<uint32_t>(record.value)), out);
        case PerfRecord::Kind::Executes:
            tasks_.priority(record.task, priority_of(record.task));
            tasks_.name(at, record.name, out);
            // It is watched from here on, and at work.
            if (!tasks_.processorOf(record.task)) tasks_.runs(at, out);
            return;
        case PerfRecord::Kind::Named:
            return tasks_.name(at, record.name, out);
        case PerfRecord::Kind::Runs:
            return tasks_.runs(at, out);
        case PerfRecord::Kind::Preempted:
            return tasks_.leaves(at, Leaves::Preempted, out);
        case PerfRecord::Kind::Waits:
            return tasks_.leaves(at, Leaves::Waits, out);
        case PerfRecord::Kind::Exited:
            return tasks_.leaves(at, Leaves::Ended, out);
        case PerfRecord::Kind::Sample:
            return tasks_.event(at, mt_UserEvent, sample_subtype, 0,
                                gen_format("PC=0x%llx", static_cast<unsigned long long>(record.value)), out);
        case PerfRecord::Kind::Lost:
            return;
    }
}

void Run::give(uint64_t until, RawWriter& out) {
    order_.release(until, [&](const PerfRecord& record) { giveOne(record, out); });
}

std::string Run::endText(const ChildEnd& end) const {
    const std::string said = child_.lastError();
    if (end.how == ChildEnd::How::Killed)
        return std::string("The command was ended by a signal: ") + ::strsignal(end.number);
    return "The command ended with status " + std::to_string(end.number) +
           (end.number != 0 && !said.empty() ? "; it said: " + said : "");
}

TargetPoll Run::poll(Instant now, RawWriter& out) {
    TargetPoll polled{TargetPoll::State::Waiting, now + step_time, 0, {}};
    const auto end = child_.ended();
    readAll(polled);
    give(end ? UINT64_MAX : settled_, out);
    settled_ = nanoseconds(now);
    if (polled.lost > 0) tasks_.lose(newest_, out);
    if (!end) return polled;
    polled.state = TargetPoll::State::Ended;
    polled.notes.push_back(endText(*end));
    child_.end();
    return polled;
}

TargetPoll Run::stop(Instant, RawWriter& out) {
    TargetPoll polled;
    events_.setOn(false);
    readAll(polled);
    give(UINT64_MAX, out);
    tasks_.lose(newest_, out);
    return polled;
}

std::vector<std::string> Run::info() const {
    if (!child_.wasLetGo()) return {"The command starts with the logging"};
    if (child_.pid() == 0) return {"The command has ended"};
    return {"The command is process " + std::to_string(child_.pid())};
}

}  // namespace

Result run_Connect(std::string_view text, std::unique_ptr<Target>& target) {
    std::vector<std::string> words;
    if (Result split = words_Split(text, words); !split) return split;
    if (words.empty()) return Result::failure("the command is missing");
    auto run = std::make_unique<Run>(target_NanosecondFacts("run " + std::string(text)), std::move(words));
    if (Result prepared = run->prepare(); !prepared) return prepared;
    target = std::move(run);
    return {};
}
