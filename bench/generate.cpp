#include "bench/generate.h"

#include <memory>
#include <vector>

#include "chronoweave/import/raw/raw_writer.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr uint32_t ticks_per_second = 1'000'000'000;

// splitmix64: small, seeded, the same everywhere.
class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t next() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    uint32_t below(uint32_t n) { return static_cast<uint32_t>((next() >> 32) * n >> 32); }

  private:
    uint64_t state_;
};

uint32_t task_id(uint32_t task, uint32_t processors) {
    return (task + 1) << 10 | task % processors;
}

void name_tasks(RawWriter& writer, const GeneratedTrace& trace, uint64_t time) {
    for (uint32_t task = 0; task < trace.tasks; ++task)
        writer.refresh(time, mt_Pend,
                       {task_id(task, trace.processors), 10 + task % 20, gen_format("task%02u", task)});
}

// The next event at a time: who is running where is kept, so that switches are those of a real schedule.
bool put_event(RawWriter& writer, const GeneratedTrace& trace, Random& random, std::vector<uint32_t>& running,
               uint64_t time) {
    const uint32_t processor = random.below(trace.processors);
    const auto id_of = [&](uint32_t task) { return task_id(task, trace.processors); };
    const uint32_t runs = id_of(running[processor]), second = random.below(1000),
                   third = random.below(1u << 20);
    const uint32_t kind = random.below(100);
    if (kind < 25) {  // a switch to another task of the same processor
        const uint32_t of = (trace.tasks - processor + trace.processors - 1) / trace.processors;
        running[processor] = random.below(of) * trace.processors + processor;
        return writer.event(time, mt_TaskChange, 0, {id_of(running[processor])});
    }
    if (kind < 60)
        return writer.event(time, mt_KernelCall, static_cast<uint16_t>(random.below(44)),
                            {runs, second, third});
    if (kind < 75)
        return writer.event(time, mt_UserEvent, static_cast<uint16_t>(random.below(8)), {runs, second});
    if (kind < 90) {  // another task wakes or waits
        const uint32_t other = id_of(random.below(trace.tasks));
        return writer.event(time, mt_StatusChange, random.below(2) ? mt_Pend : mt_Ready, {other});
    }
    return writer.event(time, kind < 97 ? mt_Interrupt : mt_Timer, static_cast<uint16_t>(random.below(16)),
                        {runs});
}

}  // namespace

bool generate_Trr(const std::string& name, const GeneratedTrace& trace) {
    EventSourceHeader header;
    header.version = 0x300;
    header.architecture = 3;
    header.osCode = raw_OsKorvantis;
    header.ticksPerSecond = ticks_per_second;
    std::unique_ptr<RawFile> file;
    if (!RawFile::create(name, header, RawHeaderForm::Long, file).ok()) return false;
    Random random(trace.seed);
    uint64_t time = 1'000'000;
    name_tasks(file->writer(), trace, time);
    std::vector<uint32_t> running(trace.processors, 0);
    for (uint64_t i = trace.tasks; i < trace.events; ++i) {
        time += 200 + random.below(1800);
        if (!put_event(file->writer(), trace, random, running, time) || !file->put().ok()) return false;
    }
    return file->flush().ok();
}
