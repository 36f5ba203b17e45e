// Turns what an event says from one byte order into the other, as far as the event's type tells what its
// bytes are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// Turns the words of an event's extra data in place: the object, which comes first in every event, and the
// priority of a status change or a Refresh. Names have no byte order. What the rest means is a matter of the
// target's program alone, so it stays; the result is how many bytes that is.
size_t turn_Words(uint16_t type, std::span<uint8_t> extra);
