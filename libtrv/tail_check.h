// Tells an unfinished append, which may stand behind the end mark of a store, from events that an overwritten
// byte has cut off.
#pragma once

#include <cstdint>

#include "libtrv/gfile.h"
#include "libtrv/store_format.h"

// Behind a mark with no more bytes than these, itself included, nothing is hidden.
constexpr size_t mt_LeastTail = 2;
// True when what stands at the mark is no beginning of an append, and whole events of the store lead from
// behind the mark to the end of the file, or that at least ends as a store does. atBlockEnd: the mark stands
// where a block would begin. last is the time of the last event.
bool mt_TailHidesEvents(FileDevice& device, uint64_t mark, bool atBlockEnd, mt_Time last);
