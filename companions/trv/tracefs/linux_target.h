// This machine's scheduler as a target, by the kernel's own tracing.
#pragma once

#include <memory>
#include <string_view>

#include "companions/trv/server/target.h"

// Takes no words. Refused where the user may not trace the system, or the program was built without it.
Result linux_Connect(std::string_view text, std::unique_ptr<Target>& target);

extern const char linux_Usage[];
