// What of the surface no longer shows the canvas. While no surface is open, as in a window's event, what
// would paint notes it here; when the event is over the window opens the surface and has it painted
// (laCanvas_PaintWanted).
#pragma once

#include <vector>

struct LaWanted {
    enum class Strip {
        Columns,  // of the data area
        Rows,     // of the data area, over the whole width
        Axis,     // columns of the axis strip
    };
    struct Part {
        Strip strip;
        int from, end;  // as of the present view; end is not included
    };

    bool whole = false;   // everything, which makes the rest needless
    bool moved = false;   // the view moved since the surface was painted: what stays can be copied
    bool labels = false;  // of the axis: others than those on the surface
    std::vector<Part> parts;

    bool any() const { return whole || moved || !parts.empty(); }
};

void laWanted_Whole(LaWanted& wanted);
// What was noted before the view moved is not where it was: the whole then.
void laWanted_Moved(LaWanted& wanted);
// Many parts become the whole.
void laWanted_Part(LaWanted& wanted, LaWanted::Part part);
