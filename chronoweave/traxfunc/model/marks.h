// What the user set on the picture: cursors, bookmarks, marks of found events. Times are of the time base.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chronoweave/rtos/legend.h"
#include "windlib/lagraph/surface.h"

struct LaBookmark {
    std::string label;
    uint32_t objectId = 0xFFFFFFFF;  // 0xFFFFFFFF for none
    double time = 0;
    Colour colour = 0x0000FF;
    int thickness = 0;
    int style = Line_Dot;
};

struct LaMarks {
    double cursor[2] = {-100.0, -100.0};  // unset below 0
    bool secondShown = true;              // the second cursor is drawn
    bool secondDragged = false;           // in exclusive-or mode, so that it comes and goes without a repaint
    int pendingCursorX = -100;            // column of a temporary cursor; -100 for none
    std::vector<LaBookmark> bookmarks;    // newest first
    std::vector<double> hits;             // found times that are marked, ascending; see hit_marks.h
    uint32_t markedEvent = 0;  // store sequence number of the event with a frame around its icon; 0 for none
};
