// The order of the lanes. What names a lane by its place in the list follows when that changes.
#pragma once

#include <cstdint>
#include <span>

#include "chronoweave/traxfunc/model/items.h"

// to[i] is the new place of lane i, each from 0 on given once; laNoLane for a lane that goes, of which no
// item is left. The rows of the list are to be made anew.
void laItems_MoveLanes(LaItems& items, std::span<const uint32_t> to);
