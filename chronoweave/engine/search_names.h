// Names as a user types them: of events and statuses, without regard to case, and of objects, by id or name.
// When a name is not found, why says so and tells the names that are near.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/engine/search_texts.h"

// The row that the name resolves to; events that are wild cards too, categories not.
std::optional<int32_t> analysis_FindEvent(const Legend& legend, std::string_view name, std::string& why);
std::optional<int32_t> analysis_FindStatus(const Legend& legend, std::string_view name, std::string& why);

// One object of those known: a number in the manner of C, or a name, exact or else without regard to case. A
// name that several objects bear is refused.
std::optional<uint32_t> analysis_FindObject(std::string_view text, const std::vector<uint32_t>& known,
                                            const ObjectNames& names, std::string& why);
// All that a text means: "*" for every known one, else one object, or every object of the name when a name
// may stand for several.
std::optional<std::vector<uint32_t>> analysis_FindObjects(std::string_view text,
                                                          const std::vector<uint32_t>& known,
                                                          const ObjectNames& names, bool nameMeansAll,
                                                          std::string& why);

// At most three of the candidates that resemble the text, as "; near: \"A\", \"B\"", or nothing.
std::string analysis_NearNames(std::string_view text, std::span<const std::string> candidates);
