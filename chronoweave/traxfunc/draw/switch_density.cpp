#include "chronoweave/traxfunc/draw/switch_density.h"

#include <algorithm>

Colour laSwitches_Tint(Colour colour, Colour ground, uint32_t count) {
    return colour_Mix(colour, ground, std::max(0.12, 2.0 / std::max(2u, count)));
}
