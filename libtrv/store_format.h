// The numbers of the store's file format that more than one place needs. Everything in the three files is
// big-endian; docs/formats.md has the tables. Values here are on disk: never renumber.
#pragma once

#include <cstdint>

using mt_Time = uint64_t;  // ticks; 0 is the first timed event of the run

constexpr uint32_t mt_KindEvents = 4;   // .trs
constexpr uint32_t mt_KindIndex = 5;    // .tri
constexpr uint32_t mt_KindVersion = 6;  // .trv
constexpr uint32_t mt_HeaderSize = 20;

constexpr uint8_t mt_FormatVersion = 3;
constexpr uint32_t mt_CheckpointInterval = 100;

// Packet types of the .trs; 0 also ends the .tri, whose records have type 1.
enum : uint8_t { mt_PacketEnd = 0, mt_PacketEvent = 1, mt_PacketState = 2, mt_PacketObjectsUsed = 3 };

// First byte of a state change.
enum : uint8_t { mt_ChangeCreate = 0, mt_ChangeModify = 1, mt_ChangeDelete = 2, mt_ChangeEnd = 3 };

// Event types.
enum : uint16_t {
    mt_TaskChange = 1,
    mt_Interrupt = 2,
    mt_KernelCall = 3,
    mt_UserEvent = 4,
    mt_StatusChange = 5,
    mt_Refresh = 6,  // TRV_MSG_REFRESH
    mt_Timer = 7
};

constexpr uint16_t mt_ObjectTask = 0;  // the only object type that is written

// The state block of a task: 76 bytes, status and priority big-endian.
constexpr uint32_t mt_TaskBlockSize = 76;
enum : uint32_t {
    mt_TaskStatus = 0,
    mt_TaskStatusValid = 2,
    mt_TaskPriority = 4,
    mt_TaskPriorityValid = 8,
    mt_TaskName = 9,
    mt_TaskNameValid = 40,
    mt_TaskPrefix = 41,
    mt_TaskPrefixValid = 72
};
constexpr uint32_t mt_NameSize = 31;

// Status codes that the store itself knows; others are named by the configure file alone.
enum : uint16_t { mt_Ready = 0, mt_Suspend = 1, mt_Pend = 2, mt_Running = 3, mt_EvWait = 7, mt_Stopped = 10 };

// Attributes of a task.
enum : uint32_t { mt_AttributeStatus = 0, mt_AttributePriority = 1, mt_AttributeName = 2 };

// Tasks of one group share a processor: at most one of them is held running.
constexpr uint32_t mt_GroupMask = 0x3FF;
