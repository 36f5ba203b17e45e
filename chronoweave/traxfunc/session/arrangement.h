// What the user arranged with a trace: view, cursors, bookmarks, hidden objects, order of the list. As text
// it is a block of key=value lines, to be kept by whoever stores such things and read back when the same
// source is opened again. Nothing here opens a file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/result.h"

// Tells a source from what it was: an arrangement of another one would point at nothing.
struct laSourceIdentity {
    uint64_t size = 0;     // bytes
    int64_t modified = 0;  // its time, in any unit that stays the same
    uint32_t events = 0;
    bool operator==(const laSourceIdentity&) const = default;
};

struct laArrangement {
    laSourceIdentity source;
    double viewLow = 0, viewHigh = 0;  // time base
    int verticalOffset = 0;
    double cursor[2] = {-100.0, -100.0};
    TimeMode timeMode = Time_Second;
    std::vector<LaBookmark> bookmarks;  // newest first
    std::vector<laPath> hiddenPaths;
    int sortField = 0;
    bool sortAscending = true;
    bool flatView = false;
    bool onlyActive = false, mostActiveFirst = false;
};

laArrangement laArrangement_Take(const _LaCanvasData& canvas, const laSourceIdentity& source);
std::string laArrangement_ToText(const laArrangement& arrangement);
// Unknown keys are passed over. Fails, with the line, for a damaged text; the arrangement is as it was then.
Result laArrangement_FromText(std::string_view text, laArrangement& arrangement);
// Puts a canvas on the same source back as it was, without painting. False, with the canvas as it is and the
// message line saying so, when the source is another one by now.
bool laArrangement_Restore(_LaCanvasData& canvas, const laArrangement& arrangement,
                           const laSourceIdentity& source);
