// Whether a legend survives being written: a configure file has no way to say some names and values.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/rtos/legend.h"

// The first entry of the legend that reads back from the text otherwise than it is, as messages name it: its
// kind and, in double quotes, its name. None when all of them read back the same, colours as far as a file
// holds them (the high byte of each channel).
std::optional<std::string> configure_FirstLoss(const Legend& legend, const std::string& text);
