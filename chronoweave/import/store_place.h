// Where the store of a source goes.
#pragma once

#include <string>

#include "shared/libcxxutil/result.h"

struct StorePlace {
    std::string base;
    bool inCache = false;
};

// The base name for a source's store: wanted when given, else the source's name less its extension. When its
// folder can't be written: a name of its own in the user's cache directory, which is made if need be. Refused
// when it has no file name, lies in a folder that does not exist, or when one of the base's three files is
// the source itself, under whatever name: writing the store would destroy it.
Result store_ChoosePlace(const std::string& source, const std::string& wanted, StorePlace& place);
