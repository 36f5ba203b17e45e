// A command as a target: its tasks are watched from its first instruction to its end.
#pragma once

#include <memory>
#include <string_view>

#include "companions/trv/server/target.h"

// COMMAND [ARGUMENT...], divided by blanks, with double quotes; no shell has a part in it.
Result run_Connect(std::string_view text, std::unique_ptr<Target>& target);

extern const char run_Usage[];
