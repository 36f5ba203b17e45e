#include "companions/trv/tracefs/linux_trace.h"

#include <event-parse.h>
#include <fcntl.h>
#include <unistd.h>

// One of C that does not say so.
extern "C" {
#include <kbuffer.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "companions/trv/tracefs/tracefs_library.h"
#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/text.h"

const char linux_InstancePrefix[] = "chronoweave-trv-";

namespace {

constexpr char events_lost[] = "overrun: ", events_dropped[] = "dropped events: ";

struct Named {
    const char *system, *event;
    LinuxEvent::Kind kind;
};
constexpr std::array<Named, 5> named_events{{{"sched", "sched_switch", LinuxEvent::Kind::Switch},
                                             {"sched", "sched_wakeup", LinuxEvent::Kind::Wakeup},
                                             {"sched", "sched_wakeup_new", LinuxEvent::Kind::Wakeup},
                                             {"irq", "irq_handler_entry", LinuxEvent::Kind::InterruptBegin},
                                             {"irq", "irq_handler_exit", LinuxEvent::Kind::InterruptEnd}}};

// An event of the kernel with its fields looked up once.
struct Known {
    tep_event* event = nullptr;
    LinuxEvent::Kind kind = LinuxEvent::Kind::Switch;
    tep_format_field *task = nullptr, *priority = nullptr, *name = nullptr, *state = nullptr, *next = nullptr,
                     *nextPriority = nullptr, *nextName = nullptr;
};

Known look_up(tep_event* event, LinuxEvent::Kind kind) {
    const auto field = [&](const char* name) { return tep_find_any_field(event, name); };
    switch (kind) {
        case LinuxEvent::Kind::Switch:
            return {event,
                    kind,
                    field("prev_pid"),
                    field("prev_prio"),
                    field("prev_comm"),
                    field("prev_state"),
                    field("next_pid"),
                    field("next_prio"),
                    field("next_comm")};
        case LinuxEvent::Kind::Wakeup:
            return {event, kind, field("pid"), field("prio"), field("comm"), field("target_cpu")};
        case LinuxEvent::Kind::InterruptBegin:
            return {event, kind, field("common_pid"), nullptr, field("name"), field("irq")};
        case LinuxEvent::Kind::InterruptEnd:
            return {event, kind, field("common_pid"), nullptr, nullptr, field("irq")};
    }
    return {};
}

uint64_t number_of(tep_format_field* field, const tep_record& record) {
    unsigned long long value = 0;
    if (!field || tep_read_number_field(field, record.data, &value) != 0) return 0;
    return value;
}

// A text of a fixed place, or one whose place and length stand in the field.
std::string text_of(tep_format_field* field, const tep_record& record) {
    if (!field) return {};
    auto offset = static_cast<size_t>(field->offset), length = static_cast<size_t>(field->size);
    if ((field->flags & TEP_FIELD_IS_DYNAMIC) != 0) {
        const uint64_t place = number_of(field, record);
        offset = place & 0xFFFF;
        length = place >> 16 & 0xFFFF;
    }
    if (record.size < 0 || offset + length > static_cast<size_t>(record.size)) return {};
    const char* const text = static_cast<const char*>(record.data) + offset;
    return {text, strnlen(text, length)};
}

LinuxEvent decode(const Known& known, const tep_record& record, int processor) {
    LinuxEvent event;
    event.kind = known.kind;
    event.time = record.ts;
    event.processor = static_cast<uint32_t>(processor);
    event.task = static_cast<uint32_t>(number_of(known.task, record));
    event.priority = static_cast<uint32_t>(number_of(known.priority, record));
    event.name = text_of(known.name, record);
    event.state = number_of(known.state, record);
    event.next = static_cast<uint32_t>(number_of(known.next, record));
    event.nextPriority = static_cast<uint32_t>(number_of(known.nextPriority, record));
    event.nextName = text_of(known.nextName, record);
    return event;
}

Result refused(int error) {
    if (error == EACCES || error == EPERM)
        return Result::failure("the kernel's tracing may be used by the administrator alone", "",
                               "start the program as root, or choose the target run, which needs no rights");
    return Result::system("tracefs", error, "the kernel's tracing can't be used");
}

uint64_t count_behind(std::string_view text, std::string_view word) {
    const size_t at = text.find(word);
    if (at == std::string_view::npos) return 0;
    const std::string_view rest = text.substr(at + word.size());
    return scan_number(rest.substr(0, rest.find('\n'))).value_or(0);
}

bool is_running(std::string_view number) {
    const auto process = scan_number(number);
    return process && (::kill(static_cast<pid_t>(*process), 0) == 0 || errno == EPERM);
}

}  // namespace

// The events of a processor, read page by page as the kernel has them. A page that is not full is given, too,
// so that nothing is held back.
struct ProcessorTrace {
    int processor;
    FileDescriptor file;
};

struct LinuxTrace::Parts {
    tracefs_instance* instance = nullptr;
    std::vector<ProcessorTrace> processors;
    std::vector<uint8_t> page;
    kbuffer* buffer = nullptr;
    tep_handle* handle = nullptr;
    std::vector<Known> known;
    std::string name;

    ~Parts() {
        processors.clear();
        if (buffer) kbuffer_free(buffer);
        if (instance) {
            tracefs_trace_off(instance);
            tracefs_event_disable(instance, nullptr, nullptr);
            tracefs_instance_destroy(instance);
            tracefs_instance_free(instance);
        }
        if (handle) tep_free(handle);
    }
};

size_t linux_RemoveStale() {
    size_t removed = 0;
    // All of them: the library never frees an expression that it is given.
    char** const names = tracefs_instances(nullptr);
    for (char** name = names; name && *name; ++name) {
        if (!std::string_view(*name).starts_with(linux_InstancePrefix)) continue;
        if (is_running(std::string_view(*name).substr(sizeof linux_InstancePrefix - 1))) continue;
        tracefs_instance* const instance = tracefs_instance_create(*name);
        if (!instance) continue;
        if (tracefs_instance_destroy(instance) == 0) ++removed;
        tracefs_instance_free(instance);
    }
    if (names) tracefs_list_free(names);
    return removed;
}

LinuxTrace::LinuxTrace() : parts_(std::make_unique<Parts>()) {}
LinuxTrace::~LinuxTrace() = default;

const std::string& LinuxTrace::name() const {
    return parts_->name;
}

Result LinuxTrace::open() {
    errno = 0;
    if (!tracefs_tracing_dir()) return refused(errno ? errno : ENOENT);
    linux_RemoveStale();
    Parts& parts = *parts_;
    parts.name = linux_InstancePrefix + std::to_string(::getpid());
    errno = 0;
    parts.instance = tracefs_instance_create(parts.name.c_str());
    if (!parts.instance) return refused(errno ? errno : EACCES);
    tracefs_trace_off(parts.instance);
    if (tracefs_instance_file_write(parts.instance, "trace_clock", "mono") < 0) return refused(errno);
    tracefs_instance_file_write(parts.instance, "buffer_size_kb", "4096");
    std::array<const char*, 3> systems{"sched", "irq", nullptr};
    parts.handle = tracefs_local_events_system(nullptr, systems.data());
    if (!parts.handle) return refused(errno ? errno : EACCES);
    for (const Named& named : named_events) {
        tep_event* const event = tep_find_event_by_name(parts.handle, named.system, named.event);
        if (!event || tracefs_event_enable(parts.instance, named.system, named.event) != 0)
            return Result::failure("the kernel has no trace point", named.event);
        parts.known.push_back(look_up(event, named.kind));
    }
    return openProcessors();
}

Result LinuxTrace::setOn(bool isOn) {
    const int done = isOn ? tracefs_trace_on(parts_->instance) : tracefs_trace_off(parts_->instance);
    return done == 0 ? Result() : refused(errno);
}

Result LinuxTrace::openProcessors() {
    Parts& parts = *parts_;
    parts.buffer = tep_kbuffer(parts.handle);
    parts.page.resize(static_cast<size_t>(::sysconf(_SC_PAGESIZE)));
    const long processors = ::sysconf(_SC_NPROCESSORS_CONF);
    for (int processor = 0; processor < processors; ++processor) {
        const std::string name = "per_cpu/cpu" + std::to_string(processor) + "/trace_pipe_raw";
        FileDescriptor file(tracefs_instance_file_open(parts.instance, name.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file.IsOpen()) continue;  // it was never there
        file.SetNonBlocking();
        parts.processors.push_back({processor, std::move(file)});
    }
    return parts.buffer && !parts.processors.empty() ? Result() : refused(errno ? errno : ENOENT);
}

void LinuxTrace::readPage(int processor, const std::function<void(LinuxEvent&&)>& take) {
    Parts& parts = *parts_;
    if (kbuffer_load_subbuffer(parts.buffer, parts.page.data()) != 0) return;
    unsigned long long time = 0;
    for (void* data = kbuffer_read_event(parts.buffer, &time); data;
         data = kbuffer_next_event(parts.buffer, &time)) {
        tep_record record{};
        record.ts = time;
        record.data = data;
        record.size = kbuffer_event_size(parts.buffer);
        const int type = tep_data_type(parts.handle, &record);
        for (const Known& one : parts.known)
            if (one.event->id == type) take(decode(one, record, processor));
    }
}

void LinuxTrace::read(const std::function<void(LinuxEvent&&)>& take) {
    Parts& parts = *parts_;
    for (const ProcessorTrace& one : parts.processors)
        while (pipe_Read(one.file, parts.page).what == Moved::Some) readPage(one.processor, take);
}

uint64_t LinuxTrace::lost() const {
    uint64_t lost = 0;
    const long processors = ::sysconf(_SC_NPROCESSORS_CONF);
    for (long processor = 0; processor < processors; ++processor) {
        const std::string file = "per_cpu/cpu" + std::to_string(processor) + "/stats";
        int size = 0;
        char* const text = tracefs_instance_file_read(parts_->instance, file.c_str(), &size);
        if (!text) continue;
        const std::string_view stats(text, static_cast<size_t>(std::max(size, 0)));
        lost += count_behind(stats, events_lost) + count_behind(stats, events_dropped);
        std::free(text);
    }
    return lost;
}
