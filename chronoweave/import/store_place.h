// Where the store of a source goes.
#pragma once

#include <string>

struct StorePlace {
    std::string base;
    bool inCache = false;
};

// The base name for a source's store: wanted when given, else the source's name less its extension. When its
// folder can't be written: a name of its own in the user's cache directory, which is made if need be.
StorePlace store_ChoosePlace(const std::string& source, const std::string& wanted);

// The first of the base's three files that is the source itself, under whatever name; empty when none is.
// Writing the store would destroy the source.
std::string store_FileThatIsSource(const std::string& source, const std::string& base);
