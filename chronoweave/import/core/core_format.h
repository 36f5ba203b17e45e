// Core files as a format: by the extension "core", and under a raw file's name by their first bytes.
#pragma once

#include "chronoweave/import/source/source.h"

extern const SourceFormat core_Format;
