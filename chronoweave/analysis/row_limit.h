// Limits the time line to chosen objects by hiding all others, and takes that back.
#pragma once

#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/list/task_list.h"

class RowLimit {
  public:
    explicit RowLimit(_LaCanvasData& canvas) : canvas_(canvas) {}
    // Hides every object of the trace but these; what the user hid stays hidden. all are the trace's objects
    // with their names, where they have one.
    struct Named {
        uint32_t object;
        const std::string* name;
    };
    void Set(const std::vector<uint32_t>& shown, const std::vector<Named>& all);
    // Shows again what Set hid.
    void Lift();

  private:
    void Apply(std::vector<laPath> paths);
    _LaCanvasData& canvas_;
    std::vector<laPath> added_;
    bool set_ = false;
};
