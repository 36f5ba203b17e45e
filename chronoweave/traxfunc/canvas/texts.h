// The texts beside the picture, and what the user is told.
#pragma once

#include <string>
#include <string_view>

#include "chronoweave/traxfunc/canvas/canvas.h"

// A time of the trace, or the difference of two, in the unit shown: rounded to the tick, with the decimals
// that a tick has.
std::string laCanvas_ExactTime(const _LaCanvasData& canvas, double time);
// Any time of the time base in the unit shown, with what its last digits need on this axis, trimmed.
std::string laCanvas_TimeText(const _LaCanvasData& canvas, double time);
// The same with the unit's mark behind it: "1.5 ms".
std::string laCanvas_TimeWithUnit(const _LaCanvasData& canvas, double time);

constexpr int Fields_View = 1, Fields_Selection = 2;
// Rewrites the texts of the fields named by what, and the message line when one is given, and tells the
// window.
void laCanvas_UpdateFields(_LaCanvasData& canvas, int what, const char* message = nullptr,
                           laMessageLasts lasts = laMessageLasts::UntilNext);
// The view changed, or what was typed was taken: a message that was about what was before goes.
void laCanvas_DropOldMessage(_LaCanvasData& canvas);
// Title and value of the total length, and the unit's label.
std::string laCanvas_TotalLengthText(const _LaCanvasData& canvas);
std::string laCanvas_TotalLengthTitle(const _LaCanvasData& canvas);
void laCanvas_UpdateTotal(_LaCanvasData& canvas);

void laCanvas_Beep(const _LaCanvasData& canvas);
// Beep and message.
void laCanvas_Refuse(_LaCanvasData& canvas, std::string_view message);
