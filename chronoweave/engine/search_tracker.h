// The tracker of searches and reports: of chosen objects, with the status that each is held to be in.
#pragma once

#include <vector>

#include "chronoweave/engine/source.h"
#include "chronoweave/engine/tracker.h"

// The walker's own, beside the status that the state has.
struct HeldStatus {
    int32_t status = -1;  // row; -1 for none
    double time = -1.0;   // since when; negative for none
    void Forget() { *this = {}; }
};

class SearchTracker : public ObjectTracker<SearchTracking, HeldStatus> {
  public:
    // Objects ascending.
    SearchTracker(AnalysisSource& source, const StateTable& state, const std::vector<uint32_t>& objects,
                  Follow follow)
        : ObjectTracker(*source.legend, source.osKind, state, source.running, follow) {
        for (const uint32_t object : objects) Add(object);
    }
};

// With Over, events that change no status may be passed over where the source has a lane index, and others
// are told by their changes alone.
enum class Passed { None, Over };

// A walk over a range with objects tracked, which come ascending and outlive it, as does the source.
class TrackedRange {
  public:
    TrackedRange(AnalysisSource& source, const std::vector<uint32_t>& objects, double from, double to,
                 Follow follow, Passed passed);
    TrackedRange(const TrackedRange&) = delete;
    TrackedRange& operator=(const TrackedRange&) = delete;

    // The next event, or as RangeWalk says; its changes are not in the tracker yet. False behind the last
    // one, and then the tracker's state is that of the walk's end.
    bool next(double& time) {
        using Stop = RangeWalk::Stop;
        ofLanes_ = walk_.NextOfLanes(time, tracker_.IsSettled() ? Stop::Wanted : Stop::Every);
        return ofLanes_ || NextOfStore(time);
    }
    // Takes the event's changes into the tracker.
    void Take() {
        if (!ofLanes_) return tracker_.Take(event_, state_);
        if (block_ != walk_.lanes().BlockNumber()) Number();
        walk_.lanes().TakeChanges([this](uint32_t object, uint32_t state) {
            if (places_[object] != ObjectIndex::none) tracker_.Tell(places_[object], rows_[state]);
        });
    }
    // The event last given; only where it comes from the store.
    const EventRecord& event() const { return event_; }
    const RangeWalk& walk() const { return walk_; }
    SearchTracker& tracker() { return tracker_; }

  private:
    bool NextOfStore(double& time);
    void Number();

    const AnalysisSource& source_;
    const std::vector<uint32_t>& objects_;
    StateTable state_;
    RangeWalk walk_;
    SearchTracker tracker_;
    EventRecord event_;
    bool ofLanes_ = false;  // the event
    // Of the index's block: its objects' places, or none, and its states' rows.
    uint32_t block_ = 0;
    std::vector<uint32_t> places_;
    std::vector<int32_t> rows_;
};
