// C++ from service descriptions.
#pragma once

#include <string>
#include <vector>

#include "services/descriptions/description.h"

struct EmittedFile {
    std::string name, text;
};

// Of a service with classes: the structures of its messages, and for each side a class with its tables, its
// calls and its dispatcher.
std::vector<EmittedFile> emit_Service(const DescribedService& service);
// One table of all services: which side receives and sends what.
std::vector<EmittedFile> emit_Tables(const std::vector<DescribedService>& services);
