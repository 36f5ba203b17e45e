// Names as a user types them: of events and statuses, without regard to case, and of objects, by id or name.
// Where a name is not found the failure says so and tells the names that are near.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/engine/search_texts.h"
#include "shared/libcxxutil/result.h"

// The row that the name resolves to; events that are wild cards too, categories not.
Result analysis_FindEvent(const Legend& legend, std::string_view name, int32_t& row);
Result analysis_FindStatus(const Legend& legend, std::string_view name, int32_t& row);

// One object of those known: a number in the manner of C, or a name, exact or else without regard to case. A
// name that several objects bear is refused.
Result analysis_FindObject(std::string_view text, const std::vector<uint32_t>& known,
                           const ObjectNames& names, uint32_t& id);
// All that a text means: "*" for every known one, else one object, or every object of the name when a name
// may stand for several.
Result analysis_FindObjects(std::string_view text, const std::vector<uint32_t>& known,
                            const ObjectNames& names, bool nameMeansAll, std::vector<uint32_t>& ids);

// At most three of the candidates that resemble the text, as "; near: \"A\", \"B\"", or nothing.
std::string analysis_NearNames(std::string_view text, std::span<const std::string> candidates);
