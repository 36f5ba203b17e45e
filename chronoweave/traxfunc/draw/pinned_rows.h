// Rows that stay at an edge of the view while what they head is scrolled: those of processors. They lie over
// the lanes below; picture, names and pointer ask here.
#pragma once

#include <vector>

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/view.h"

struct laPinnedRow {
    size_t processor = 0;  // in the list of processors
    int top = 0;           // on the surface
};
// From the top. dataHeight: rows of the data area. At the upper edge they take a third of it at most, and a
// row goes up with the end of its group. At the lower edge, if the view has them there, they take a sixth:
// the nearest of those that are still to come.
std::vector<laPinnedRow> laPinned_Rows(const LaItems& items, const LaLooks& looks, const LaView& view,
                                       int dataHeight);
// What they leave free: all of the data area for none.
LaFreeRows laPinned_Free(const LaItems& items, const LaLooks& looks, const LaView& view, int dataHeight);
// The processor whose row is at a row of the surface, pinned ones first; null for none.
const LaProcessor* laProcessor_AtRow(const LaItems& items, const LaLooks& looks, const LaView& view,
                                     int dataHeight, int y);
