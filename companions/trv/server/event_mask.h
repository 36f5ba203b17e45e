// Which kinds of events are kept: a bit for each of fourteen kinds.
#pragma once

#include <cstdint>

enum class EventKind : uint32_t {
    Status = 0x0001,
    Interrupt = 0x0002,
    SendAndReceive = 0x0004,
    CreateAndClose = 0x0008,
    UserEvent = 0x0010,
    Semaphore = 0x0020,
    Clock = 0x0040,
    Connection = 0x0080,
    AddressSpace = 0x0100,
    Activity = 0x0200,
    MemoryRegion = 0x0400,
    IoDevice = 0x0800,
    Task = 0x1000,
    FatalException = 0x2000,
    Always = 0,  // names of tasks, and what no kind has
};
constexpr uint32_t mask_All = 0x3FFF;

EventKind mask_KindOf(uint16_t type, uint16_t subtype);

inline bool mask_Passes(uint32_t mask, uint16_t type, uint16_t subtype) {
    const auto bit = static_cast<uint32_t>(mask_KindOf(type, subtype));
    return bit == 0 || (mask & bit) != 0;
}
