// The pointer on the row of a processor: who runs there, and the way to its row.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/input/tips.h"

struct laProcessorHit {
    const LaProcessor* processor = nullptr;  // valid until the items change
    std::optional<size_t> run;               // what runs at the column
    int x = 0;
};
// None where no such row is at the point of the drawing area.
std::optional<laProcessorHit> laProcessor_HitTest(const _LaCanvasData& canvas, int x, int y);
// Who runs, from when to when, and behind whom; of a load curve how busy the processor was and with whom;
// empty for an idle processor. The ends of a run that the cached range cuts are looked for so long; what is
// left is noted, see laTip_More.
std::string laProcessor_Tip(_LaCanvasData& canvas, const laProcessorHit& hit,
                            int milliseconds = laTip_Longest);
// Selects the row of what runs there and brings it into view; a collapsed group opens. Where there is
// nothing, or it is hidden, that is refused with a message.
bool laProcessor_SelectObject(_LaCanvasData& canvas, const laProcessorHit& hit);
