// The history: a ring of the last 50 views. Moving in it records nothing; every refusal beeps and says why.
#pragma once

#include "chronoweave/traxfunc/canvas/canvas.h"

// Records the view; the newest entry is never repeated. The oldest goes when the ring is full.
void laHistory_Add(_LaCanvasData& canvas);

// To the latest, the earliest, the one before and the one behind the present entry. True when the view moved
// there. None of it is recorded.
bool laHistory_Top(_LaCanvasData& canvas);
bool laHistory_Bottom(_LaCanvasData& canvas);
bool laHistory_Prev(_LaCanvasData& canvas);
bool laHistory_Next(_LaCanvasData& canvas);
