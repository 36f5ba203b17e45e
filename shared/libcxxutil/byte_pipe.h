// Byte pipes between processes: two ends, of which one is usually handed to a child.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "shared/libcxxutil/file_descriptor.h"
#include "shared/libcxxutil/result.h"

// What came of a transfer that does not wait.
enum class Moved {
    Some,    // bytes says how many, at least one
    None,    // not now: nothing to read, or no room to write
    End,     // the far end is gone; nothing else gives this
    Failed,  // error is the system's number
};
struct MovedBytes {
    Moved what = Moved::None;
    size_t bytes = 0;
    int error = 0;
};

// Both ends are closed in children unless they are mapped for them.
struct BytePipe {
    FileDescriptor read, write;
};
// Result tells why there are no more pipes.
Result pipe_Make(BytePipe& pipe);

// One transfer from or to any descriptor; one that blocks makes the call wait. An empty span is None. Writing
// to an end that nobody reads gives End, and no signal ends the process.
MovedBytes pipe_Read(const FileDescriptor& from, std::span<uint8_t> room);
MovedBytes pipe_Write(const FileDescriptor& to, std::span<const uint8_t> bytes);
