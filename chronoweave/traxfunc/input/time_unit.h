// The time unit as the user changes it: the button steps through the four units, the dialog offers them.
// Traces in ticks or sequence numbers have no other unit: both refuse then, with a beep and a message.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/model/time.h"

struct laTimeUnitDialog {
    std::vector<std::string> units;  // one of them is chosen; their numbers are those of TimeMode
    int unit = Time_Second;
    bool autoAdjust = false;
};
// What the dialog shows at first; none when it is refused.
std::optional<laTimeUnitDialog> laTimeUnit_Open(_LaCanvasData& canvas);
// What it returns: the unit, plus 10 when the box is checked.
int laTimeUnit_Result(const laTimeUnitDialog& dialog);
// Takes a result over. False, and no change, for one that no dialog gives.
bool laTimeUnit_Apply(_LaCanvasData& canvas, int result);

// True when the unit can't be changed; the user was told.
bool laTimeUnit_Refused(_LaCanvasData& canvas);

// Changes the unit shown and draws the axis anew, with no smaller unit than this. Sequential mode is neither
// entered nor left: refused with a message.
void laCanvas_SetTimeMode(_LaCanvasData& canvas, TimeMode mode);
// The next of second, millisecond, microsecond, nanosecond, and round again, as a user's command.
void laCanvas_NextTimeMode(_LaCanvasData& canvas);
