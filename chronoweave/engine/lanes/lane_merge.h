// The statuses of several lanes in the order of the events: those by which an object came into one of chosen
// states, went from one to another of them, or left them. Who executes when is told by the states that
// execute.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "chronoweave/engine/lanes/lane_table.h"

struct LaneTurn {
    LaneStatus status;
    uint32_t ahead = lane_Absent;  // the state that it ended
    uint32_t lane = 0;
};

class LaneMerge {
  public:
    // chosen: of states as LaneStatus has them. The table outlives the merge. Nothing is given ahead of GoTo.
    LaneMerge(const LaneTable& table, const std::vector<uint32_t>& lanes,
              std::function<bool(uint32_t state)> chosen);

    // The next to be given is the first that does not lie ahead of an event.
    void GoTo(uint32_t sequence);
    // Of one event in the order of the objects' ids. False behind the last one that the table covers.
    [[nodiscard]] bool next(LaneTurn& turn);

  private:
    struct Source {
        LaneReader reader;
        uint32_t object = 0, next = 0;  // number of the status behind the turn
        LaneTurn turn;
    };
    [[nodiscard]] bool Seek(Source& source) const;
    bool IsLater(uint32_t a, uint32_t b) const;

    std::function<bool(uint32_t state)> chosen_;
    std::vector<Source> sources_;
    std::vector<uint32_t> heap_;  // of those that have a turn; the first is that of the earliest
};
