// How active the objects were in a stretch of time: for rows that are shown only where they matter, and for
// their order.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"

struct laActivity {
    double ran = 0;       // how long it executed, time base
    bool active = false;  // it executed, had an event that is shown, or changed its status
};
// By object id.
using laActivities = std::unordered_map<uint32_t, laActivity>;

// Of a lane between two times of the time base, as far as the items know them. Where the cached range cuts a
// stretch, that is no change of the status. The agent's lane counts as active.
laActivity laActivity_Of(const LaItems& items, const LaLooks& looks, const laItem_Line& lane, double low,
                         double high);
// Of all lanes.
laActivities laActivity_InRange(const LaItems& items, const LaLooks& looks, double low, double high);
