// What a tip says about an item of the picture.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Of a stretch, an icon or a context line. An icon that is drawn as an overlap mark, or that hides others, is
// followed by how many events stand there and their names.
std::string laTip_Text(_LaCanvasData& canvas, const laItemRef& item);
// A time of the trace in the canvas's unit, zeros cut; without the unit's name.
std::string laTip_Time(const _LaCanvasData& canvas, double time);
// The name of an event; for Unknown and wild cards with the codes as logged.
std::string laItem_EventName(const _LaCanvasData& canvas, const laItem_Bitmap& icon);
// The text of an event's extra data, read from the store; empty when the legend has no format for it.
std::string laItem_EventText(_LaCanvasData& canvas, const laItem_Bitmap& icon);
