// The history: a ring of the last 50 views. Moving in it records nothing; every refusal beeps and says why.
#pragma once

#include "chronoweave/traxfunc/model/canvas.h"

// Records the view when recording is on; the newest entry is never repeated. The oldest goes when the ring
// is full.
void laHistory_Add(_LaCanvasData& canvas);

// To the latest, the earliest, the one before and the one behind the present entry. True when the view moved
// there. The caller keeps recording off meanwhile; laHistory_Command does.
bool laHistory_Top(_LaCanvasData& canvas);
bool laHistory_Bottom(_LaCanvasData& canvas);
bool laHistory_Prev(_LaCanvasData& canvas);
bool laHistory_Next(_LaCanvasData& canvas);

// A move as a user's command: nothing it does is recorded.
bool laHistory_Command(_LaCanvasData& canvas, bool (*move)(_LaCanvasData&));
