// The sweep: from the state of all objects at one instant to the lanes. A lane whose status changed ends a
// segment there; a lane that executes where another ran before makes a context switch.
//
// The result is that of looking at every lane, in the order of the list, at every instant. The work is less:
// only a lane that an event named can have changed, and only a lane that executes can take over a processor.
// So a step looks at the lanes touched since the last one and at those executing, in list order.
#pragma once

#include <cstdint>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"

class LaneSweep {
  public:
    // The table changes between steps by the events applied to it. Both outlive the sweep.
    LaneSweep(_LaCanvasData& canvas, const StateTable& state);

    // A change names this object, or the lane is new: the next step looks at it. Position in the lane list.
    void Touch(uint32_t lane);
    void TouchObject(uint32_t objectId) {
        const uint32_t lane = canvas_.items.laneIndex.find(objectId);
        if (lane != laNoLane) Touch(lane);
    }
    // All lanes, touched or not; with closing, the open status of each becomes a segment that ends at time.
    void All(double time, bool closing, bool trackSwitches);
    // The lanes that can matter.
    void Step(double time);
    // What follows can't be read: every open status becomes a segment that ends at time, and no status is
    // known until all lanes are looked at again.
    void Break(double time);

  private:
    // Asks for the lane's facts and status, and ends a segment when the status changed.
    void Look(uint32_t lane, double time, bool closing);
    void TakeProcessor(uint32_t lane, double time);
    void LearnFacts(laItem_Line& lane, uint32_t position);
    int32_t StatusRow(uint16_t code);
    LaCpuEntry& CpuOf(uint32_t objectId);
    bool Executing(const laItem_Line& lane) const {
        return lane.openStatus >= 0 &&
               canvas_.looks.statusLooks[static_cast<size_t>(lane.openStatus)].isExecution;
    }
    void NoteExecuting(uint32_t lane, bool executing);

    _LaCanvasData& canvas_;
    const StateTable& state_;
    std::vector<uint32_t> touched_;    // in list order, each once
    std::vector<uint32_t> executing_;  // in list order
    bool settled_ = false;             // the last step saw no lane take over a processor
    std::vector<int32_t> statusRows_;  // by code; -2 for not asked yet
    std::vector<int16_t> cpuOfKey_;    // index in canvas.items.cpus; -1 for none
};

// The processor of an object: on Korvantis the id's low 10 bits, elsewhere one for all.
uint32_t laCpu_Key(const _LaCanvasData& canvas, uint32_t objectId);
// The lane that runs where an object would; laNoLane when none does or the processor was not seen yet.
uint32_t laCpu_RunningLane(const _LaCanvasData& canvas, uint32_t objectId);
