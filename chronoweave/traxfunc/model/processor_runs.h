// The runs of processors, from the lanes.
#pragma once

#include <string_view>

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"

// Makes them for the present items. from: of earlier times nothing changed since they were made last, but
// what reaches to here; below 0 all is made anew. True when processors came or went. separator: of object
// names.
bool laProcessors_Make(LaItems& items, const LaLooks& looks, int osKind, std::string_view separator,
                       double from);
void laProcessors_Clear(LaItems& items);
