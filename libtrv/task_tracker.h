// TaskTracker: what each event type does to the state of tasks. Every writer of the program uses it.
#pragma once

#include "libtrv/store_writer.h"

// The first word of the extra data, in the target's byte order, is the task; records shorter than 4 bytes
// must not come here. Always true.
bool TaskTracker(StoreWriter& writer, const mt_WriteRecord& record);
