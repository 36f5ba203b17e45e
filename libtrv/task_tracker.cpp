#include "libtrv/task_tracker.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "libtrv/byte_order.h"

namespace {

using NameBytes = std::array<uint8_t, mt_NameSize>;

// What an event says of its task. Extra data that ends early reads as zeros.
struct TaskFields {
    std::optional<uint16_t> status;
    std::optional<uint32_t> priority;
    std::optional<NameBytes> name, prefix;
};

// Sizes and places within the extra data of a Refresh.
constexpr size_t name_at = 8, prefix_at = 39, size_with_prefix = 70;

// Modifies fields of one task of the writer's table, for the first time it differs.
class TaskEditor {
  public:
    TaskEditor(StoreWriter& writer, uint32_t position) : writer_(writer), position_(position) {}

    const uint8_t* block() const { return writer_.state().BlockAt(position_); }
    void put(uint32_t offset, std::span<const uint8_t> bytes) {
        writer_.RecordModifiedAt(position_, static_cast<uint16_t>(offset), bytes);
    }
    void PutValid(uint32_t offset) {
        const uint8_t one[1] = {1};
        if (block()[offset] == 0) put(offset, one);
    }
    void PutStatus(uint16_t status) {
        uint8_t bytes[2];
        store_be16(bytes, status);
        put(mt_TaskStatus, bytes);
    }
    void UpdateStatus(uint16_t status) {
        if (load_be16(block() + mt_TaskStatus) != status) PutStatus(status);
        PutValid(mt_TaskStatusValid);
    }
    void UpdatePriority(uint32_t priority) {
        uint8_t bytes[4];
        store_be32(bytes, priority);
        if (std::memcmp(block() + mt_TaskPriority, bytes, 4) != 0) put(mt_TaskPriority, bytes);
        PutValid(mt_TaskPriorityValid);
    }
    // The terminator is written with the text; a text of full length thereby clears the valid byte behind its
    // field, which is set again at once.
    void UpdateText(uint32_t offset, uint32_t valid, const NameBytes& text, bool& differs) {
        const auto length = static_cast<size_t>(std::find(text.begin(), text.end(), 0) - text.begin());
        for (size_t i = 0; i < length && !differs; ++i)
            differs = int{static_cast<int8_t>(block()[offset + i])} != int{text[i]};
        if (differs) {
            std::array<uint8_t, mt_NameSize + 1> bytes{};
            std::copy_n(text.begin(), length, bytes.begin());
            put(offset, {bytes.data(), length + 1});
        }
        PutValid(valid);
    }

  private:
    StoreWriter& writer_;
    uint32_t position_;
};

std::array<uint8_t, mt_TaskBlockSize> make_block(const TaskFields& fields) {
    std::array<uint8_t, mt_TaskBlockSize> block{};
    store_be16(&block[mt_TaskStatus], fields.status.value_or(0));
    block[mt_TaskStatusValid] = fields.status ? 1 : 0;
    store_be32(&block[mt_TaskPriority], fields.priority.value_or(0xFFFFFFFF));
    block[mt_TaskPriorityValid] = fields.priority ? 1 : 0;
    if (fields.name) {
        std::copy(fields.name->begin(), fields.name->end(), &block[mt_TaskName]);
        block[mt_TaskNameValid] = 1;
    }
    if (fields.prefix) {
        std::copy(fields.prefix->begin(), fields.prefix->end(), &block[mt_TaskPrefix]);
        block[mt_TaskPrefixValid] = 1;
    }
    return block;
}

struct Found {
    uint32_t position;
    bool existed;
};

// The task, created with what fields() says when it is new.
template <class Fields>
Found ensure(StoreWriter& writer, uint32_t id, Fields&& fields) {
    const uint32_t position = writer.state().find(mt_ObjectTask, id);
    if (position != StateTable::npos) [[likely]]
        return {position, true};
    writer.RecordCreated(mt_ObjectTask, id, make_block(fields()));
    return {writer.state().size() - 1, false};
}

TaskFields no_fields() {
    return {};
}
TaskFields running_fields() {
    TaskFields fields;
    fields.status = mt_Running;
    return fields;
}

void task_change(StoreWriter& writer, uint32_t id) {
    const Found found = ensure(writer, id, running_fields);
    // Whoever runs in the group stops, the task itself included: one that this event creates is left ready.
    while (!writer.running(id).empty()) TaskEditor(writer, writer.running(id).front()).PutStatus(mt_Ready);
    if (!found.existed) return;
    TaskEditor task(writer, found.position);
    task.PutStatus(mt_Running);
    task.PutValid(mt_TaskStatusValid);
}

void stop_group(StoreWriter& writer, uint32_t id) {
    for (const uint32_t position : writer.group(id)) TaskEditor(writer, position).PutStatus(mt_Stopped);
}

void status_change(StoreWriter& writer, uint32_t id, uint16_t status, std::optional<uint32_t> priority) {
    const Found found = ensure(writer, id, [&] {
        TaskFields fields;
        fields.status = status;
        fields.priority = priority;
        return fields;
    });
    if (!found.existed) return;
    TaskEditor task(writer, found.position);
    task.UpdateStatus(status);
    if (priority) task.UpdatePriority(*priority);
}

NameBytes text_at(std::span<const uint8_t> extra, size_t offset) {
    NameBytes text{};
    if (extra.size() > offset)
        std::copy_n(extra.begin() + static_cast<ptrdiff_t>(offset),
                    std::min(extra.size() - offset, text.size()), text.begin());
    return text;
}

void refresh(StoreWriter& writer, uint32_t id, const TaskFields& fields) {
    const Found found = ensure(writer, id, [&] { return fields; });
    if (!found.existed) return;
    TaskEditor task(writer, found.position);
    task.UpdateStatus(*fields.status);
    task.UpdatePriority(fields.priority.value_or(0));
    bool differs = false;  // shared: a changed name rewrites the prefix too
    task.UpdateText(mt_TaskName, mt_TaskNameValid, *fields.name, differs);
    if (fields.prefix) task.UpdateText(mt_TaskPrefix, mt_TaskPrefixValid, *fields.prefix, differs);
}

TaskFields refresh_fields(uint16_t status, std::optional<uint32_t> priority, std::span<const uint8_t> extra) {
    TaskFields fields{status, priority, text_at(extra, name_at), std::nullopt};
    if (extra.size() == size_with_prefix) fields.prefix = text_at(extra, prefix_at);
    return fields;
}

}  // namespace

bool TaskTracker(StoreWriter& writer, const mt_WriteRecord& record) {
    constexpr uint16_t stop_subtype = 8;
    const std::span<const uint8_t> extra = record.extra;
    const bool big = writer.BigEndianTarget();
    const uint32_t id = extra.size() >= 4 ? load_32(extra.data(), big) : 0;
    const auto priority = [&] {
        return extra.size() >= 8 ? std::optional(load_32(extra.data() + 4, big)) : std::nullopt;
    };
    switch (record.type) {
        case mt_TaskChange:
            task_change(writer, id);
            return true;
        case mt_KernelCall:
            ensure(writer, id, running_fields);
            return true;
        case mt_StatusChange:
            if (record.subtype == stop_subtype)
                stop_group(writer, id);
            else
                status_change(writer, id, record.subtype, priority());
            return true;
        case mt_Refresh:
            refresh(writer, id, refresh_fields(record.subtype, priority(), extra));
            return true;
        default:
            ensure(writer, id, no_fields);
            return true;
    }
}
