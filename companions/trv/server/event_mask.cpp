#include "companions/trv/server/event_mask.h"

#include <array>

#include "libtrv/store_format.h"

namespace {

using enum EventKind;

// Kernel calls by subtype, as the store names them.
constexpr std::array<EventKind, 46> calls{
    Clock,           // SetClockAlarm
    Clock,           // ReceiveClockAlarm
    SendAndReceive,  // SynchronousSend
    SendAndReceive,  // SynchronousReceive
    CreateAndClose,  // CreateActivity
    SendAndReceive,  // AsynchronousReceive
    Clock,           // SetClockTime
    Connection,      // CreateConnection
    SendAndReceive,  // AsynchronousSend
    CreateAndClose,  // StartClose
    CreateAndClose,  // FinishClose
    Clock,           // SynchronousReceiveClockAlarm
    Clock,           // AsynchronousReceiveClockAlarm
    FatalException,  // AddressSpaceAddressFaultOverruns
    Activity,        // ContinueActivity
    MemoryRegion,    // CopyToMemoryRegion
    MemoryRegion,    // CopyFromMemoryRegion
    Activity,        // GetActivityStatus
    Activity,        // ResetActivity
    Activity,        // SuspendActivity
    Activity,        // CheckForActivity
    Interrupt,       // DismissInterrupt
    Semaphore,       // CreateBinarySemaphore
    Semaphore,       // CreateSemaphore
    Semaphore,       // TryToObtainSemaphore
    Semaphore,       // ReleaseSemaphore
    Semaphore,       // GetSemaphoreValue
    IoDevice,        // CreateIODevice
    IoDevice,        // ReadBlockFromIODevice
    IoDevice,        // WriteBlockToIODevice
    IoDevice,        // ReadIODeviceRegister
    IoDevice,        // WriteIODeviceRegister
    IoDevice,        // ReadIODeviceStatus
    IoDevice,        // WriteIODeviceStatus
    IoDevice,        // GetIODeviceOverruns
    Connection,      // CreateLink
    Semaphore,       // WaitForSemaphore
    Task,            // CreateTask
    Task,            // RunTask
    Task,            // HaltTask
    SendAndReceive,  // TrySynchronousSend
    Activity,        // WaitForActivity
    Clock,           // CreateVirtualClock
    AddressSpace,    // CreateVirtualAddressSpace
    Activity,        // GetCurrentActivity
    Semaphore,       // TryToClearSemaphore
};

}  // namespace

EventKind mask_KindOf(uint16_t type, uint16_t subtype) {
    switch (type) {
        case mt_TaskChange:
            return Task;
        case mt_Interrupt:
            return Interrupt;
        case mt_KernelCall:
            return subtype < calls.size() ? calls[subtype] : Always;
        case mt_UserEvent:
            return UserEvent;
        case mt_StatusChange:
            return Status;
        case mt_Timer:
            return Clock;
        default:
            return Always;
    }
}
