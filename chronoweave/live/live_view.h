// The canvas after its source grew: what is new comes into the picture, and the view follows it.
#pragma once

#include "chronoweave/live/follow.h"
#include "chronoweave/traxfunc/canvas/canvas.h"

// What following asks of a canvas whose store holds events; previousBase is the first tick as it was.
FollowFacts live_Facts(const _LaCanvasData& canvas, uint64_t previousBase);
// Takes in what the store has gained and moves the view. Of a view that stays no more is repainted than
// changed. False when the view can't be shown: the message line says so, and what was shown is drawn again.
bool live_Follow(_LaCanvasData& canvas);
