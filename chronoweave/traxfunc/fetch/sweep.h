// The sweep: from the state of all objects at one instant to the lanes. A lane whose status changed ends a
// segment there; a lane that executes where another ran before makes a context switch. Which lanes a step
// looks at is the tracker's matter.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "chronoweave/engine/tracker.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/source.h"

// Takes from the state what a lane doesn't know yet: its object's name, the bytes of a task's joined by the
// separator (0 for none), and its priority. position: of the object.
void laLn_LearnFacts(laItem_Line& lane, const TraceStore& store, const StateTable& state, uint32_t position,
                     char separator);

class LaneSweep {
  public:
    // The table changes between steps by the events applied to it. All outlive the sweep. Names of tasks are
    // joined by the first character of the separator.
    LaneSweep(LaItems& items, const LaSource& source, const LaLooks& looks, std::string_view separator,
              const StateTable& state);

    // The first look, at all lanes.
    void Begin(double time);
    // A change names this object, or the lane is new: the next step looks at it. Position in the lane list.
    void Touch(uint32_t lane) { TouchObject(items_.lanes[lane].objectId); }
    void TouchObject(uint32_t objectId) {
        AddNewLanes();
        tracker_.Touch(objectId);
    }
    // The lanes that can matter.
    void Step(double time);
    // What follows can't be read: every open status becomes a segment that ends at time, and no status is
    // known until Begin looks at all lanes again.
    void Break(double time);
    // The last look, at all lanes: the open status of each becomes a segment that ends here. Steps may follow
    // when the lanes are open again (laLn_Reopen).
    void End(double time);
    // The lanes of the list stand in another order: to[i] is the place of what was lane i, laNoLane for one
    // that is gone.
    void LanesMoved(std::span<const uint32_t> to);

  private:
    struct OfLane {
        uint32_t lane = laNoLane;  // position in the lane list; the agent has no record
        void Forget() {}
    };
    using Tracker = ObjectTracker<CanvasTracking, OfLane>;
    enum class Ends { Changed, Open };

    void AddNewLanes() {
        while (known_ < items_.lanes.size()) AddLane(known_++);
    }
    void AddLane(uint32_t lane);
    // Takes the lane's facts and status, and ends a segment when the status changed; or in any case.
    void Look(const Tracker::Record& record, double time, Ends ends);
    void TakeProcessor(const Tracker::Record& record, double time);

    LaItems& items_;
    const LaSource& source_;
    const LaLooks& looks_;
    const char separator_;  // 0 for none
    const StateTable& state_;
    Tracker tracker_;
    uint32_t known_ = 0;  // lanes that the tracker has
};
