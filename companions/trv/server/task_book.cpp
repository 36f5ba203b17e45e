#include "companions/trv/server/task_book.h"

#include <algorithm>

#include "libtrv/byte_order.h"
#include "libtrv/store_format.h"

namespace {

constexpr uint16_t stop_group = 8;  // subtype of a status change
constexpr uint32_t no_priority = 0xFFFFFFFF;
constexpr size_t priority_at = 4, name_at = 8, prefix_at = name_at + mt_NameSize,
                 size_with_prefix = prefix_at + mt_NameSize;

std::string text_at(std::span<const uint8_t> extra, size_t offset) {
    if (extra.size() <= offset) return {};
    const auto field = extra.subspan(offset, std::min<size_t>(extra.size() - offset, mt_NameSize));
    return {field.begin(), std::find(field.begin(), field.end(), 0)};
}

}  // namespace

TaskBook::Entry TaskBook::ensure(uint32_t id) {
    const auto [place, isNew] = places_.try_emplace(id, static_cast<uint32_t>(tasks_.size()));
    if (isNew) tasks_.push_back({.id = id, .status = {}, .priority = {}, .name = {}, .prefix = {}});
    return {tasks_[place->second], isNew};
}

// The task takes a status; who runs is kept by group.
void TaskBook::set(Entry entry, uint16_t status, const SourceRecord& event) {
    Task& task = entry.task;
    if (event.type == mt_Refresh || event.extra.size() >= name_at)
        task.priority =
            event.extra.size() >= name_at ? load_32(event.extra.data() + priority_at, big_) : uint32_t{0};
    if (task.status == status) return;
    auto& running = running_[task.id & mt_GroupMask];
    if (task.status == mt_Running) std::erase(running, places_[task.id]);
    if (status == mt_Running) running.push_back(places_[task.id]);
    task.status = status;
}

void TaskBook::stopRunning(uint32_t id) {
    auto& running = running_[id & mt_GroupMask];
    for (const uint32_t place : running) tasks_[place].status = mt_Ready;
    running.clear();
}

// A task that is first seen by running is held ready, as in the store.
void TaskBook::change(uint32_t id) {
    const Entry entry = ensure(id);
    stopRunning(id);
    entry.task.status = entry.isNew ? mt_Ready : mt_Running;
    if (!entry.isNew) running_[id & mt_GroupMask].push_back(places_[id]);
}

void TaskBook::stopGroup(uint32_t id) {
    for (Task& task : tasks_)
        if (task.status && (task.id & mt_GroupMask) == (id & mt_GroupMask)) task.status = mt_Stopped;
    running_[id & mt_GroupMask].clear();
}

void TaskBook::refresh(Task& task, const SourceRecord& event) {
    task.name = text_at(event.extra, name_at);
    if (event.extra.size() == size_with_prefix) task.prefix = text_at(event.extra, prefix_at);
}

void TaskBook::take(const SourceRecord& event) {
    time_ = std::max(time_, event.time);
    const uint32_t id = load_32(event.extra.data(), big_);
    object_ = id;
    switch (event.type) {
        case mt_TaskChange:
            return change(id);
        case mt_StatusChange:
            if (event.subtype == stop_group) return stopGroup(id);
            return set(ensure(id), event.subtype, event);
        case mt_Refresh: {
            const Entry entry = ensure(id);
            set(entry, event.subtype, event);
            return refresh(entry.task, event);
        }
        case mt_KernelCall: {
            const Entry entry = ensure(id);
            if (!entry.isNew) return;
            entry.task.status = mt_Running;
            running_[id & mt_GroupMask].push_back(places_[id]);
            return;
        }
        default:
            ensure(id);
    }
}

size_t TaskBook::write(mt_Time time, RawWriter& out) const {
    size_t written = 0;
    for (const Task& task : tasks_) {
        if (!task.status) continue;
        ++written;
        bool fits = true;
        if (task.name)
            out.refresh(time, *task.status,
                        {task.id, task.priority.value_or(no_priority), *task.name, task.prefix});
        else if (task.priority)
            fits = out.event(time, mt_StatusChange, *task.status, {task.id, *task.priority});
        else
            fits = out.event(time, mt_StatusChange, *task.status, {task.id});
        if (!fits) --written;
    }
    return written;
}
