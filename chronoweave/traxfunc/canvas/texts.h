// The texts beside the picture, and what the user is told.
#pragma once

#include <string>
#include <string_view>

#include "chronoweave/traxfunc/canvas/canvas.h"

constexpr int Fields_View = 1, Fields_Selection = 2;
// Rewrites the texts of the fields named by what, and the message line when one is given, and tells the
// window.
void laCanvas_UpdateFields(_LaCanvasData& canvas, int what, const char* message = nullptr);
// Title and value of the total length, and the unit's label.
std::string laCanvas_TotalLengthText(const _LaCanvasData& canvas);
std::string laCanvas_TotalLengthTitle(const _LaCanvasData& canvas);
void laCanvas_UpdateTotal(_LaCanvasData& canvas);

void laCanvas_Beep(const _LaCanvasData& canvas);
// Beep and message.
void laCanvas_Refuse(_LaCanvasData& canvas, std::string_view message);
