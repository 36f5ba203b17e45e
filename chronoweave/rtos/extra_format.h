// The text of an event's extra data: a format string of the configure file, in the manner of formatted
// printing, whose conversions read from the data in the target's byte order.
//
//     %[n]C               copies bytes up to a 0; n is only taken off the remaining length
//     %[S]SIZE[DISPLAY]   sizes 1 2 4 A I C, displays X D C x; S repeats as often as the last value says
#pragma once

#include <string>
#include <string_view>

#include "libtrv/event.h"

constexpr size_t extra_TextLimit = 199;

// Formats the data behind the object id into text. False, and text empty, when the event has no more than the
// id. warn: problems go to the console and set the flag, which may be null; warnUnused: data that the format
// leaves over is one. The value read by the latest conversion is kept for the process: "%S" at the start of a
// format repeats by what an earlier call left.
bool extra_Format(const EventRecord& event, std::string_view format, bool bigEndian, bool warn,
                  bool warnUnused, std::string& text, bool* flag);
