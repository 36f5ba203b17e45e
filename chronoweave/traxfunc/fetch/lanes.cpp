#include "chronoweave/traxfunc/fetch/lanes.h"

#include "chronoweave/engine/lanes/lane_build.h"
#include "shared/libcxxutil/report.h"

void laLanes_Open(LaSource& source) {
    Result why;
    source.laneTable.reset();
    source.lanes = LaneIndex::Open(*source.store, why);
    if (!why.ok()) gen_console("%s; it is not used.\n", why.text().c_str());
}

void laLanes_Close(LaSource& source) {
    source.lanesMade.reset();
    source.laneTable.reset();
    source.lanes.reset();
}

bool laLanes_BeginMaking(LaSource& source) {
    source.lanesMade.reset();
    if (source.store == nullptr || !source.storeHasEvents || mt_IsDamaged(*source.store)) return false;
    if (source.lanes && source.lanes->EndEvent() > mt_GetEventCount(*source.store)) return false;
    source.lanesMade = std::make_unique<LaneBuild>(*source.store, source.lanes.get());
    return true;
}

bool laLanes_Make(LaSource& source, uint32_t events) {
    if (!source.lanesMade) return false;
    if (source.lanesMade->Step(events)) return true;
    const bool made = source.lanesMade->Made();
    if (const Result& trouble = source.lanesMade->trouble(); !trouble.ok())
        gen_console("No lane index is made: %s\n", trouble.text().c_str());
    source.lanesMade.reset();
    if (made) laLanes_Open(source);
    return false;
}
