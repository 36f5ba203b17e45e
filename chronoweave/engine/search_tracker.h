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
