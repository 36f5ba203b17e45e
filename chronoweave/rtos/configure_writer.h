// The legend as the text of a configure file, which reads back (configure_reader.h) to the same legend.
#pragma once

#include <string>

#include "chronoweave/rtos/legend.h"

// The whole text, with comments that explain the language. osName is the operating system's name in the
// store. Misc values that are the defaults stand behind comment marks, so that the file doesn't pin them.
std::string configure_WriteText(const Legend& legend, const std::string& osName);
