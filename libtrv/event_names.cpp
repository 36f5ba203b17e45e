#include "libtrv/event_names.h"

#include <array>

#include "libtrv/store_format.h"

namespace {

// Kernel calls by subtype. The last two are known to the long form only.
constexpr std::array<const char*, 46> kernel_calls{"SetClockAlarm",
                                                   "ReceiveClockAlarm",
                                                   "SynchronousSend",
                                                   "SynchronousReceive",
                                                   "CreateActivity",
                                                   "AsynchronousReceive",
                                                   "SetClockTime",
                                                   "CreateConnection",
                                                   "AsynchronousSend",
                                                   "StartClose",
                                                   "FinishClose",
                                                   "SynchronousReceiveClockAlarm",
                                                   "AsynchronousReceiveClockAlarm",
                                                   "AddressSpaceAddressFaultOverruns",
                                                   "ContinueActivity",
                                                   "CopyToMemoryRegion",
                                                   "CopyFromMemoryRegion",
                                                   "GetActivityStatus",
                                                   "ResetActivity",
                                                   "SuspendActivity",
                                                   "CheckForActivity",
                                                   "DismissInterrupt",
                                                   "CreateBinarySemaphore",
                                                   "CreateSemaphore",
                                                   "TryToObtainSemaphore",
                                                   "ReleaseSemaphore",
                                                   "GetSemaphoreValue",
                                                   "CreateIODevice",
                                                   "ReadBlockFromIODevice",
                                                   "WriteBlockToIODevice",
                                                   "ReadIODeviceRegister",
                                                   "WriteIODeviceRegister",
                                                   "ReadIODeviceStatus",
                                                   "WriteIODeviceStatus",
                                                   "GetIODeviceOverruns",
                                                   "CreateLink",
                                                   "WaitForSemaphore",
                                                   "CreateTask",
                                                   "RunTask",
                                                   "HaltTask",
                                                   "TrySynchronousSend",
                                                   "WaitForActivity",
                                                   "CreateVirtualClock",
                                                   "CreateVirtualAddressSpace",
                                                   "GetCurrentActivity",
                                                   "TryToClearSemaphore"};
constexpr uint16_t short_calls = 44;
constexpr uint16_t max_event_tag = 0x84;

const char* kernel_call(uint16_t subtype, uint16_t known) {
    if (subtype == max_event_tag) return "MaxEventTag";
    return subtype < known ? kernel_calls[subtype] : nullptr;
}

struct TypeName {
    uint16_t type;
    const char* short_name;
    const char* long_name;
};
constexpr std::array<TypeName, 6> type_names{{{mt_TaskChange, "TaskChange", "TaskChange"},
                                              {mt_Interrupt, "Interrupt", "Interrupt"},
                                              {mt_UserEvent, "UserEvent", "User Event"},
                                              {mt_StatusChange, "StatusChange", "Status Change"},
                                              {mt_Refresh, "Refresh", "Refresh"},
                                              {mt_Timer, "Timer", "Timer"}}};

constexpr std::array<mt_Attribute, 3> task_attributes{
    {{"Status", 1, 2, true}, {"Priority", 1, 4, false}, {"Name", 2, 31, false}}};

constexpr std::array<uint16_t, 5> status_codes{mt_Ready, mt_Suspend, mt_Pend, mt_Running, mt_EvWait};
constexpr std::array<const char*, 5> status_names{"READY", "SUSPEND", "PEND", "RUNNING", "EVWAIT"};

}  // namespace

const char* mt_EventShortName(uint16_t type, uint16_t subtype) {
    if (type == mt_KernelCall) {
        const char* call = kernel_call(subtype, short_calls);
        return call ? call : "UNKOWNKERNCALL";
    }
    for (const TypeName& row : type_names)
        if (row.type == type) return row.short_name;
    return "UNKNOWNEVENT";
}

std::string mt_EventLongName(uint16_t type, uint16_t subtype) {
    if (type == mt_KernelCall) {
        const char* call = kernel_call(subtype, static_cast<uint16_t>(kernel_calls.size()));
        return call ? std::string("Kernel Call: ") + call : "UNKNOWN KERNEL CALL";
    }
    for (const TypeName& row : type_names)
        if (row.type == type) return row.long_name;
    return "UNKNOWN EVENT";
}

const char* mt_ObjectTypeName(uint16_t objectType) {
    return objectType == mt_ObjectTask ? "Task" : nullptr;
}

std::span<const mt_Attribute> mt_ObjectAttributes(uint16_t objectType) {
    if (objectType != mt_ObjectTask) return {};
    return task_attributes;
}

std::span<const uint16_t> mt_StatusCodes(uint32_t attribute) {
    if (attribute != mt_AttributeStatus) return {};
    return status_codes;
}

const char* mt_StatusName(uint16_t code) {
    for (size_t i = 0; i < status_codes.size(); ++i)
        if (status_codes[i] == code) return status_names[i];
    return nullptr;
}

bool mt_StatusIsRunning(uint32_t attribute, uint16_t code) {
    return attribute == mt_AttributeStatus && code == mt_Running;
}
