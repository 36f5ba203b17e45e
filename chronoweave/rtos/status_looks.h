// Looks of the statuses to choose from: the lines of a configure file beside the one in use, taken without
// its events. "NAME.WORD.tc" beside the default file "NAME.tc" of an operating system is its look WORD.
#pragma once

#include <string>
#include <vector>

#include "chronoweave/rtos/legend.h"
#include "shared/libcxxutil/result.h"

struct LegendLook {
    std::string name;  // for the user
    std::string path;
};
// The looks for an operating system: "Default", of the installation, then the others by name. Of two files of
// one name that in the user's directory goes before the site's and the default.
std::vector<LegendLook> legend_Looks(const std::string& osName);
// Gives statuses of the same codes their colour, thickness and style in the file at a path. What it has no
// line for stays. It fails, and changes nothing, where the file can't be read or holds no status.
Result legend_UseLook(const std::string& path, std::vector<LegendStatus>& statuses);
