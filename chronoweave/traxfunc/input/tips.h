// What a tip says about an item of the picture.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

// Of a stretch, an icon or a context line. An icon that is drawn as an overlap mark, or that hides others, is
// followed by how many events stand there and their names.
// Where the cached range cuts a stretch, its true ends are looked for as long as goOn says so (empty: until
// they are found); what is not known by then is told as "before" and "after".
std::string laTip_Text(_LaCanvasData& canvas, const laItemRef& item, const Progress& goOn = {});
// What it says of the times of a stretch: from when to when, and how long.
std::string laTip_Stretch(_LaCanvasData& canvas, const laItemRef& item, const Progress& goOn);
// The same with so many milliseconds. What is left to look for is noted in canvas.hand.tipItem.
std::string laTip_TextWithin(_LaCanvasData& canvas, const laItemRef& item, int milliseconds);
constexpr int laTip_Longest = 50;  // milliseconds that a tip may take to come
constexpr int laTip_Slice = 20;    // of a look for more when nothing else is to do
// The same of what is no item but lasts as one does: the times of the item's stretch between two texts, of
// which the first is not empty.
std::string laTip_AroundStretch(_LaCanvasData& canvas, const laItemRef& item, std::string ahead,
                                std::string behind, int milliseconds);
// Looks on for a slice for what the last tip did not know. Gives the whole tip once it is known, and an empty
// text until then; none when there is nothing to look for any more.
std::optional<std::string> laTip_More(_LaCanvasData& canvas, int milliseconds = laTip_Slice);
// A time of the trace in the canvas's unit, zeros cut; without the unit's name.
std::string laTip_Time(const _LaCanvasData& canvas, double time);
// The name of an event; for Unknown and wild cards with the codes as logged.
std::string laItem_EventName(const _LaCanvasData& canvas, const laItem_Bitmap& icon);
// The text of an event's extra data, read from the store; empty when the legend has no format for it.
std::string laItem_EventText(_LaCanvasData& canvas, const laItem_Bitmap& icon);
// Its extra data as it is in the trace.
std::string laItem_EventData(const _LaCanvasData& canvas, const laItem_Bitmap& icon);
