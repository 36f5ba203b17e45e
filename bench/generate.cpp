#include "bench/generate.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "libtrv/byte_order.h"
#include "libtrv/store_format.h"

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

class TraceFile {
  public:
    explicit TraceFile(const std::string& name) : file_(std::fopen(name.c_str(), "wb"), &std::fclose) {}
    bool open() const { return file_ != nullptr; }
    void header() {
        uint8_t bytes[28] = {'C', 'W', 'G', 'N', 3, 0, 0, 0};
        bytes[8] = 1;   // operating system
        bytes[10] = 3;  // architecture
        std::memcpy(bytes + 16, &ticks_per_second, 4);
        put(bytes, sizeof bytes);
    }
    void record(uint16_t type, uint16_t subtype, uint64_t time, const void* extra, size_t size) {
        uint8_t bytes[13] = {static_cast<uint8_t>(12 + size)};
        store_be16(bytes + 1, type);
        store_be16(bytes + 3, subtype);
        std::memcpy(bytes + 5, &time, 8);  // little-endian: the low word comes first
        put(bytes, sizeof bytes);
        put(extra, size);
    }
    bool close() { return good_ && std::fclose(file_.release()) == 0; }

  private:
    void put(const void* bytes, size_t size) {
        good_ = std::fwrite(bytes, 1, size, file_.get()) == size && good_;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    bool good_ = true;
};

uint32_t task_id(uint32_t task, uint32_t processors) {
    return (task + 1) << 10 | task % processors;
}

void name_tasks(TraceFile& file, const GeneratedTrace& trace, uint64_t time) {
    for (uint32_t task = 0; task < trace.tasks; ++task) {
        uint8_t extra[39] = {};
        const uint32_t id = task_id(task, trace.processors), priority = 10 + task % 20;
        std::memcpy(extra, &id, 4);
        std::memcpy(extra + 4, &priority, 4);
        std::snprintf(reinterpret_cast<char*>(extra + 8), 31, "task%02u", static_cast<unsigned>(task));
        file.record(mt_Refresh, mt_Pend, time, extra, sizeof extra);
    }
}

}  // namespace

bool generate_Trr(const std::string& name, const GeneratedTrace& trace) {
    TraceFile file(name);
    if (!file.open()) return false;
    Random random(trace.seed);
    uint64_t time = 1'000'000;
    file.header();
    name_tasks(file, trace, time);
    std::vector<uint32_t> running(trace.processors, 0);
    for (uint64_t i = trace.tasks; i < trace.events; ++i) {
        time += 200 + random.below(1800);
        const uint32_t processor = random.below(trace.processors);
        uint32_t words[3] = {task_id(running[processor], trace.processors), random.below(1000),
                             random.below(1u << 20)};
        const uint32_t kind = random.below(100);
        if (kind < 25) {  // a switch to another task of the same processor
            const uint32_t of = (trace.tasks - processor + trace.processors - 1) / trace.processors;
            running[processor] = random.below(of) * trace.processors + processor;
            words[0] = task_id(running[processor], trace.processors);
            file.record(mt_TaskChange, 0, time, words, 4);
        } else if (kind < 60) {
            file.record(mt_KernelCall, static_cast<uint16_t>(random.below(44)), time, words, 12);
        } else if (kind < 75) {
            file.record(mt_UserEvent, static_cast<uint16_t>(random.below(8)), time, words, 8);
        } else if (kind < 90) {  // another task wakes or waits
            words[0] = task_id(random.below(trace.tasks), trace.processors);
            file.record(mt_StatusChange, random.below(2) ? mt_Pend : mt_Ready, time, words, 4);
        } else {
            file.record(kind < 97 ? mt_Interrupt : mt_Timer, static_cast<uint16_t>(random.below(16)), time,
                        words, 4);
        }
    }
    return file.close();
}
