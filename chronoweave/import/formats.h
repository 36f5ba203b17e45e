// The kinds of source that can be imported.
#pragma once

#include <span>

#include "chronoweave/import/source/source.h"

// In the order in which they are asked.
std::span<const SourceFormat* const> import_Formats();
// The first that takes the name; null for none.
const SourceFormat* import_FormatOf(const SourceName& name);
