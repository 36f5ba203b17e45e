// How failures at the service router are told: on the error stream, and to the caller by a status.
#pragma once

#include <string>

#include "shared/stp_transport/status.h"

// Writes the text, which ends its line, to the error stream, and puts it into the status without that end;
// false.
bool router_Fail(STPStatus& status, const std::string& text, STPCode code = STPCode::Connection);
