// A simulated system as a target, for learning and for tests: there is nothing to connect to.
#pragma once

#include <memory>
#include <string_view>

#include "companions/trv/server/target.h"

// [TASKS] [RATE] [SEED]: how many tasks, how many events a second, and what chance begins with.
Result sim_Connect(std::string_view text, std::unique_ptr<Target>& target);

extern const char sim_Usage[];
