// The lane index of a canvas's store: opened with it, made in slices where there is none.
#pragma once

#include <cstdint>

#include "chronoweave/traxfunc/model/source.h"

// Opens the index of a store that was just taken. What is wrong with one that stands there goes to the
// console, and it is not used.
void laLanes_Open(LaSource& source);
// Lets both go, ahead of the store.
void laLanes_Close(LaSource& source);
// The store, which nobody writes to, gets an index if it has none that covers it. False when there is nothing
// to make.
bool laLanes_BeginMaking(LaSource& source);
// Goes on with so many events. False once it is over; the index, if there is one now, is used from then on.
bool laLanes_Make(LaSource& source, uint32_t events);
