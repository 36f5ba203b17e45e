// The services of the suite and their messages by name.
#pragma once

#include <span>

struct ServiceTableRow {
    const char* service;
    const char* side;
    const char* receives;  // names, divided by blanks
    const char* sends;
};
std::span<const ServiceTableRow> service_Table();
