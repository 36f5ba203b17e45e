// A raw event file as a target: its events come at the pace at which they were recorded, or another.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "companions/trv/server/target.h"

// FILE [xSPEED]: the file's name, in double quotes where it ends like a speed; x4 is four times as fast, xmax
// as fast as it goes.
Result replay_Connect(std::string_view text, std::unique_ptr<Target>& target);

extern const char replay_Usage[];
