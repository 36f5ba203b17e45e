// The sweep: from the state of all objects at one instant to the lanes. A lane whose status changed ends a
// segment there; a lane that executes where another ran before makes a context switch.
//
// The result is that of looking at every lane, in the order of the list, at every instant. The work is less:
// only a lane that an event named can have changed, and only a lane that executes can take over a processor.
// So a step looks at the lanes touched since the last one and at those executing, in list order.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"

class LaneSweep {
  public:
    // The table changes between steps by the events applied to it. All outlive the sweep. Names of tasks are
    // joined by the first character of the separator.
    LaneSweep(LaItems& items, const LaSource& source, const LaLooks& looks, std::string_view separator,
              const StateTable& state);

    // The first look, at all lanes.
    void Begin(double time);
    // A change names this object, or the lane is new: the next step looks at it. Position in the lane list.
    void Touch(uint32_t lane);
    void TouchObject(uint32_t objectId) {
        const uint32_t lane = items_.laneIndex.find(objectId);
        if (lane != laNoLane) Touch(lane);
    }
    // The lanes that can matter.
    void Step(double time);
    // What follows can't be read: every open status becomes a segment that ends at time, and no status is
    // known until Begin looks at all lanes again.
    void Break(double time);
    // The last look, at all lanes: the open status of each becomes a segment that ends here.
    void End(double time);

  private:
    enum class Ends { Changed, Open };
    // Asks for the lane's facts and status, and ends a segment when the status changed; or in any case.
    void Look(uint32_t lane, double time, Ends ends);
    void TakeProcessor(uint32_t lane, double time);
    void LearnFacts(laItem_Line& lane, uint32_t position);
    int32_t StatusRow(uint16_t code);
    LaCpuEntry& CpuOf(uint32_t objectId);
    bool Executing(const laItem_Line& lane) const {
        return lane.openStatus >= 0 && looks_.statusLooks[static_cast<size_t>(lane.openStatus)].isExecution;
    }
    void NoteExecuting(uint32_t lane, bool executing);

    LaItems& items_;
    const LaSource& source_;
    const LaLooks& looks_;
    const char separator_;  // 0 for none
    const StateTable& state_;
    std::vector<uint32_t> touched_;    // in list order, each once
    std::vector<uint32_t> executing_;  // in list order
    bool settled_ = false;             // the last step saw no lane take over a processor
    std::vector<int32_t> statusRows_;  // by code; -2 for not asked yet
    std::vector<int16_t> cpuOfKey_;    // index in items.cpus; -1 for none
};

// The processor of an object: on Korvantis the id's low 10 bits, elsewhere one for all.
uint32_t laCpu_Key(const LaSource& source, uint32_t objectId);
// The lane that runs where an object would; laNoLane when none does or the processor was not seen yet.
uint32_t laCpu_RunningLane(const LaItems& items, const LaSource& source, uint32_t objectId);
