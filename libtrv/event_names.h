// The store's own names: of event types and kernel calls, of object types, attributes and status codes. Names
// on screen come from the configure file; these serve where there is none.
#pragma once

#include <cstdint>
#include <span>
#include <string>

const char* mt_EventShortName(uint16_t type, uint16_t subtype);
// Kernel calls read "Kernel Call: " and the call's name.
std::string mt_EventLongName(uint16_t type, uint16_t subtype);

// "Task" for 0, null for any other.
const char* mt_ObjectTypeName(uint16_t objectType);

struct mt_Attribute {
    const char* name;
    int kind;   // 1 number, 2 string
    int width;  // bytes
    bool isStatus;
};
// The attributes of an object type, empty for any but the task.
std::span<const mt_Attribute> mt_ObjectAttributes(uint16_t objectType);
// The status codes of an attribute, empty for any but the status.
std::span<const uint16_t> mt_StatusCodes(uint32_t attribute);
// Null for a code that is not in the table.
const char* mt_StatusName(uint16_t code);
bool mt_StatusIsRunning(uint32_t attribute, uint16_t code);
