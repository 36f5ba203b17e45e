// The window about an object's place among its relatives: the part of the tree of names that it stands in.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/description.h"

using ObjectOpener = void (*)(_LaCanvasData& canvas, uint32_t objectId);

// Opens one; in it open is called for a relative that the user opens. Nothing in tick mode, for an object
// that the canvas doesn't have, and where it has no host.
void object_OpenInfo(_LaCanvasData& canvas, uint32_t objectId, ObjectOpener open);
// One list, "list".
DialogDescription object_InfoWindow(const std::string& term);
// "0x%x", or "Unknown" for one below 0.
std::string object_PriorityText(int32_t priority);
