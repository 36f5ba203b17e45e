// Which event ends a wait, as the user writes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "chronoweave/import/source/source.h"

struct EventMatch {
    std::optional<uint16_t> type, subtype;
    std::string text;  // to be found behind the object; empty for anything
};

// TYPE or TYPE:SUBTYPE in numbers, the name of a type or of a kernel call, without regard to case, or any
// other text, which then stands in the event's extra data.
EventMatch match_Read(std::string_view text);
bool match_Fits(const EventMatch& match, const SourceRecord& event);
