// Results are never written over what they are made of, under whatever name: a link, another spelling, a file
// that does not stand yet.
#pragma once

#include "chronoweave/cli/request.h"

// False when an output of the line is the trace (a base name stands for its source and the store's files),
// the rules, the configure file, or the other output; status is then the exit status, and all is said.
bool cli_OutputsAreFree(const CommandLine& line, int& status);

// The output that is a file of the store with this base, empty when none is.
std::string cli_OutputInStore(const CommandLine& line, const std::string& base);
