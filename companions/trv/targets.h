// The kinds of targets that the event server knows, in one table.
#pragma once

#include <string>

#include "companions/trv/server/server.h"

// "KIND ..." as it stands behind the command c.
Result targets_Connect(const std::string& text, Connection& connection);
// A line for each kind.
std::string targets_Usage();
