// The name of a file that the user chose to have written.
#pragma once

#include <string>

#include "windlib/dialog/host.h"

// chosen, with the extension where it has none. The user is asked about a file that stands under the longer
// name, as the chooser has not: empty where that is to stay.
std::string dialogs_FileToWrite(DialogHost& host, const std::string& chosen, const std::string& extension);
