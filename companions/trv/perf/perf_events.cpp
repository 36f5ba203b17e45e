#include "companions/trv/perf/perf_events.h"

#include <linux/perf_event.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <optional>

#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr uint64_t sample_every = 1'000'000;  // nanoseconds of work
constexpr size_t data_pages = 128;            // with the first page, what any user may have

perf_event_attr attributes() {
    perf_event_attr what{};
    what.size = sizeof what;
    what.type = PERF_TYPE_SOFTWARE;
    what.config = PERF_COUNT_SW_TASK_CLOCK;
    what.sample_period = sample_every;
    what.sample_type = PERF_SAMPLE_IP | PERF_SAMPLE_TID | PERF_SAMPLE_TIME | PERF_SAMPLE_CPU;
    what.disabled = 1;
    what.enable_on_exec = 1;
    what.inherit = 1;
    what.exclude_kernel = 1;
    what.exclude_hv = 1;
    what.comm = 1;
    what.task = 1;
    what.context_switch = 1;
    what.sample_id_all = 1;
    what.use_clockid = 1;
    what.clockid = CLOCK_MONOTONIC;
    return what;
}

// Why the system does not let us watch, in words.
Result refused(int error) {
    if (error != EACCES && error != EPERM) return Result::system("perf_event_open", error);
    std::string level;
    if (!file_read_whole("/proc/sys/kernel/perf_event_paranoid", level)) level = "?";
    return Result::failure(
        "the system does not let its users watch their own programs", "",
        "kernel.perf_event_paranoid is " + std::string(text_trim(level)) + "; 2 or less is needed");
}

// The fields behind every record that is no sample.
struct Trailer {
    uint32_t process, task;
    uint64_t time;
    uint32_t processor, reserved;
};
struct Sample {
    uint64_t address;
    Trailer rest;
};

template <class Part>
Part part_at(const uint8_t* bytes) {
    Part part;
    std::memcpy(&part, bytes, sizeof part);
    return part;
}

void fill(PerfRecord& record, const Trailer& from) {
    record.time = from.time;
    record.processor = from.processor;
    record.process = from.process;
    record.task = from.task;
}

PerfRecord::Kind switch_kind(uint16_t misc) {
    if ((misc & PERF_RECORD_MISC_SWITCH_OUT) == 0) return PerfRecord::Kind::Runs;
    return (misc & PERF_RECORD_MISC_SWITCH_OUT_PREEMPT) != 0 ? PerfRecord::Kind::Preempted
                                                             : PerfRecord::Kind::Waits;
}

// A record of the system as ours; nothing for those that say nothing to us.
std::optional<PerfRecord> decode(const uint8_t* bytes) {
    const auto head = part_at<perf_event_header>(bytes);
    const uint8_t* const body = bytes + sizeof head;
    PerfRecord record;
    if (head.type == PERF_RECORD_SAMPLE) {
        const auto sample = part_at<Sample>(body);
        fill(record, sample.rest);
        record.kind = PerfRecord::Kind::Sample;
        record.value = sample.address;
        return record;
    }
    fill(record, part_at<Trailer>(bytes + head.size - sizeof(Trailer)));
    switch (head.type) {
        case PERF_RECORD_SWITCH:
            record.kind = switch_kind(head.misc);
            return record;
        case PERF_RECORD_FORK:
        case PERF_RECORD_EXIT:
            record.kind = head.type == PERF_RECORD_FORK ? PerfRecord::Kind::Begins : PerfRecord::Kind::Exited;
            // process, parent, task, parent's task
            record.task = part_at<uint32_t>(body + 8);
            record.value = part_at<uint32_t>(body + 12);
            return record;
        case PERF_RECORD_COMM:
            record.kind = (head.misc & PERF_RECORD_MISC_COMM_EXEC) != 0 ? PerfRecord::Kind::Executes
                                                                        : PerfRecord::Kind::Named;
            record.task = part_at<uint32_t>(body + 4);
            record.name = reinterpret_cast<const char*>(body + 8);
            return record;
        case PERF_RECORD_LOST:
            record.kind = PerfRecord::Kind::Lost;
            record.value = part_at<uint64_t>(body + 8);
            return record;
        default:
            return std::nullopt;
    }
}

}  // namespace

// The events of one processor and the memory in which the system leaves them.
class PerfEvents::Buffer {
  public:
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() {
        if (memory_) ::munmap(memory_, bytes());
    }
    // 0, or the system's error number.
    int open(pid_t process, int processor) {
        perf_event_attr what = attributes();
        file_ = FileDescriptor(static_cast<int>(
            ::syscall(SYS_perf_event_open, &what, process, processor, -1, PERF_FLAG_FD_CLOEXEC)));
        if (!file_.IsOpen()) return errno;
        void* const memory = ::mmap(nullptr, bytes(), PROT_READ | PROT_WRITE, MAP_SHARED, file_.number(), 0);
        if (memory == MAP_FAILED) return errno;
        memory_ = static_cast<uint8_t*>(memory);
        return 0;
    }
    void setOn(bool isOn) const {
        ::ioctl(file_.number(), isOn ? PERF_EVENT_IOC_ENABLE : PERF_EVENT_IOC_DISABLE, 0);
    }
    void read(const std::function<void(PerfRecord&&)>& take);

  private:
    static size_t page() { return static_cast<size_t>(::sysconf(_SC_PAGESIZE)); }
    static size_t bytes() { return (1 + data_pages) * page(); }

    FileDescriptor file_;
    uint8_t* memory_ = nullptr;
};

void PerfEvents::Buffer::read(const std::function<void(PerfRecord&&)>& take) {
    auto* const control = reinterpret_cast<perf_event_mmap_page*>(memory_);
    const std::atomic_ref<__u64> head(control->data_head), tail(control->data_tail);
    const uint64_t end = head.load(std::memory_order_acquire);
    uint64_t at = tail.load(std::memory_order_relaxed);
    const uint8_t* const data = memory_ + page();
    const size_t size = data_pages * page();
    std::vector<uint8_t> whole;
    while (at < end) {
        // A head of 8 bytes is never cut by the end of the memory.
        const auto length = part_at<perf_event_header>(data + at % size).size;
        if (length < sizeof(perf_event_header)) break;
        whole.resize(length);
        const size_t first = std::min<size_t>(length, size - at % size);
        std::memcpy(whole.data(), data + at % size, first);
        std::memcpy(whole.data() + first, data, length - first);
        if (auto record = decode(whole.data())) take(std::move(*record));
        at += length;
    }
    tail.store(end, std::memory_order_release);
}

PerfEvents::PerfEvents() = default;
PerfEvents::~PerfEvents() = default;

Result PerfEvents::open(pid_t process) {
    const long processors = ::sysconf(_SC_NPROCESSORS_CONF);
    for (int processor = 0; processor < processors; ++processor) {
        auto buffer = std::make_unique<Buffer>();
        const int error = buffer->open(process, processor);
        if (error == ENODEV) continue;  // it is switched off
        if (error != 0) return refused(error);
        buffers_.push_back(std::move(buffer));
    }
    return buffers_.empty() ? refused(ENODEV) : Result();
}

void PerfEvents::setOn(bool isOn) {
    for (const auto& buffer : buffers_) buffer->setOn(isOn);
}

void PerfEvents::read(const std::function<void(PerfRecord&&)>& take) {
    for (const auto& buffer : buffers_) buffer->read(take);
}
