// The index of a store in memory: read from the .tri, and made anew from the stream where the .tri is
// damaged.
#pragma once

#include <cstdint>

#include "libtrv/store_format.h"

struct TraceStore;

enum class IndexScan { Whole, BadRecord };

// Reads the whole index of a store that is being opened. Damage is noted, and what it cost is made anew.
IndexScan index_Read(TraceStore& store);
// Enters a block that was found in the stream behind all that the index knows.
void index_Append(TraceStore& store, mt_Time time, uint64_t offset);
// Reads what was appended since. A record of an unknown type is noted, and nothing is taken then.
void index_Refresh(TraceStore& store);
