#include "companions/trv/system/task_events.h"

#include <algorithm>
#include <array>

#include "libtrv/byte_order.h"
#include "libtrv/store_format.h"

namespace {

constexpr uint32_t processor_bits = 10;
constexpr uint16_t elsewhere = mt_Suspend, ended = mt_Suspend;

uint16_t status_of(Leaves why) {
    switch (why) {
        case Leaves::Preempted:
            return mt_Ready;
        case Leaves::Waits:
            return mt_Pend;
        case Leaves::Ended:
            return ended;
    }
    return mt_Pend;
}

}  // namespace

uint32_t TaskEvents::id(const TaskPlace& at) {
    return at.task << processor_bits | (at.processor & mt_GroupMask);
}

std::string TaskEvents::shownName(uint32_t task, const Task& known) const {
    if (task == 0) return "idle";
    const std::string number = std::to_string(task);
    // The number stays whole: it tells tasks of one name apart.
    const size_t room = mt_NameSize - 1 - number.size();
    return (known.name.empty() ? "task" : known.name).substr(0, room) + '/' + number;
}

std::string TaskEvents::nameOf(uint32_t task) const {
    const auto at = tasks_.find(task);
    return at == tasks_.end() ? std::string() : at->second.name;
}

std::optional<uint32_t> TaskEvents::processorOf(uint32_t task) const {
    const auto at = tasks_.find(task);
    if (at == tasks_.end() || !at->second.on) return std::nullopt;
    for (const Object& object : at->second.objects)
        if (object.processor == *at->second.on && object.status == mt_Running) return object.processor;
    return std::nullopt;
}

void TaskEvents::name(const TaskPlace& at, std::string_view name, RawWriter& out) {
    Task& task = tasks_[at.task];
    if (task.name == name || name.empty()) return;
    task.name = name;
    for (const Object& object : task.objects)
        out.refresh(at.time, object.status,
                    {id({at.time, object.processor, at.task}), task.priority, shownName(at.task, task)});
}

void TaskEvents::put(const TaskPlace& at, uint16_t status, RawWriter& out) {
    // Two words always fit.
    static_cast<void>(out.event(at.time, mt_StatusChange, status, {id(at), tasks_[at.task].priority}));
}

TaskEvents::Object& TaskEvents::enter(const TaskPlace& at, uint16_t status, RawWriter& out) {
    Task& task = tasks_[at.task];
    if (task.on && *task.on != at.processor && at.task != 0)
        for (Object& object : task.objects)
            if (object.processor == *task.on && object.status != elsewhere) {
                object.status = elsewhere;
                put({at.time, object.processor, at.task}, elsewhere, out);
            }
    task.on = at.processor;
    for (Object& object : task.objects)
        if (object.processor == at.processor) return object;
    out.refresh(at.time, status, {id(at), task.priority, shownName(at.task, task)});
    return task.objects.emplace_back(Object{at.processor, status});
}

void TaskEvents::runs(const TaskPlace& at, RawWriter& out) {
    enter(at, mt_Ready, out).status = mt_Running;
    static_cast<void>(out.event(at.time, mt_TaskChange, 0, {id(at)}));
}

void TaskEvents::leaves(const TaskPlace& at, Leaves why, RawWriter& out) {
    const uint16_t status = status_of(why);
    Object& object = enter(at, status, out);
    if (object.status == status) return;
    object.status = status;
    put(at, status, out);
}

void TaskEvents::ready(const TaskPlace& at, RawWriter& out) {
    Object& object = enter(at, mt_Ready, out);
    if (object.status == mt_Ready || object.status == mt_Running) return;
    object.status = mt_Ready;
    put(at, mt_Ready, out);
}

void TaskEvents::lose(uint64_t time, RawWriter& out) {
    for (auto& [number, task] : tasks_)
        for (Object& object : task.objects) {
            if (object.status != mt_Running) continue;
            object.status = mt_Stopped;
            put({time, object.processor, number}, mt_Stopped, out);
        }
}

void TaskEvents::event(const TaskPlace& at, uint16_t type, uint16_t subtype, uint32_t number,
                       std::string_view text, RawWriter& out) {
    enter(at, mt_Ready, out);
    std::array<uint8_t, raw_LongestExtra> extra{};
    store_32(extra.data(), id(at), out.BigEndian());
    store_32(extra.data() + 4, number, out.BigEndian());
    const size_t length = std::min(text.size(), extra.size() - 9);
    std::copy_n(text.begin(), length, extra.begin() + 8);
    static_cast<void>(out.event(at.time, type, subtype, std::span(extra).first(9 + length)));
}
