// The object of an event, and what its state block says of it.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "libtrv/trace_store.h"
#include "libtrv/trace_store_impl.h"

bool mt_GetEventObject(const TraceStore& store, const EventRecord& event, uint16_t& objectType,
                       uint32_t& objectId) {
    if (event.extra.size() < 4) {
        std::fprintf(stderr, "Invalid Extra Data(length %d) for event with type %d.\n",
                     static_cast<int>(event.extra.size()), event.type);
        return false;
    }
    objectType = mt_ObjectTask;
    objectId = load_32(event.extra.data(), store.bigEndian);
    return true;
}

namespace {

// The block of a task at a position, null when it is no task's or too short to be one.
const uint8_t* task_block(const StateTable& table, uint32_t position) {
    const ObjectEntry entry = table.entry(position);
    return entry.objectType == mt_ObjectTask && entry.block.size() >= mt_TaskBlockSize ? entry.block.data()
                                                                                       : nullptr;
}

std::string name_field(const uint8_t* field) {
    return {reinterpret_cast<const char*>(field),
            ::strnlen(reinterpret_cast<const char*>(field), mt_NameSize)};
}

}  // namespace

std::optional<uint16_t> mt_TaskStatusAt(const StateTable& table, uint32_t position) {
    const uint8_t* block = task_block(table, position);
    if (!block || !block[mt_TaskStatusValid]) return std::nullopt;
    return load_be16(block + mt_TaskStatus);
}

std::optional<uint32_t> mt_TaskPriorityAt(const StateTable& table, uint32_t position) {
    const uint8_t* block = task_block(table, position);
    if (!block || !block[mt_TaskPriorityValid]) return std::nullopt;
    return load_be32(block + mt_TaskPriority);
}

std::optional<std::string> mt_TaskNameAt(const TraceStore& store, const StateTable& table, uint32_t position,
                                         char separator) {
    const uint8_t* block = task_block(table, position);
    if (!block || !block[mt_TaskNameValid]) return std::nullopt;
    std::string name;
    if (store.formatVersion >= 3 && block[mt_TaskPrefixValid]) name = name_field(block + mt_TaskPrefix);
    if (!name.empty()) name.push_back(separator);
    return name + name_field(block + mt_TaskName);
}

bool mt_GetObjectAttribute(const TraceStore& store, const StateTable& table, uint16_t objectType,
                           uint32_t objectId, uint32_t attribute, void* buffer, uint32_t size, char separator,
                           bool& delivered) {
    delivered = false;
    const uint32_t position = table.find(objectType, objectId);
    if (position == StateTable::npos) return false;
    if (attribute == mt_AttributeStatus) {
        const auto status = mt_TaskStatusAt(table, position);
        if ((delivered = status && size >= sizeof *status)) std::memcpy(buffer, &*status, sizeof *status);
    } else if (attribute == mt_AttributePriority) {
        const auto priority = mt_TaskPriorityAt(table, position);
        if ((delivered = priority && size >= sizeof *priority))
            std::memcpy(buffer, &*priority, sizeof *priority);
    } else if (attribute == mt_AttributeName) {
        const auto name = mt_TaskNameAt(store, table, position, separator);
        if ((delivered = name && size > 0)) {
            const size_t length = std::min<size_t>(name->size(), size - 1);
            std::memcpy(buffer, name->data(), length);
            static_cast<char*>(buffer)[length] = '\0';
        }
    }
    return true;
}
