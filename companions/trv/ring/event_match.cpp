#include "companions/trv/ring/event_match.h"

#include <algorithm>

#include "libtrv/event_names.h"
#include "libtrv/store_format.h"
#include "shared/libcxxutil/text.h"

namespace {

std::optional<uint16_t> read_code(std::string_view text) {
    const auto number = scan_number(text);
    if (!number || *number > UINT16_MAX) return std::nullopt;
    return static_cast<uint16_t>(*number);
}

std::optional<EventMatch> read_numbers(std::string_view text) {
    const size_t colon = text.find(':');
    EventMatch match;
    match.type = read_code(text.substr(0, colon));
    if (!match.type) return std::nullopt;
    if (colon == std::string_view::npos) return match;
    match.subtype = read_code(text.substr(colon + 1));
    if (!match.subtype) return std::nullopt;
    return match;
}

std::optional<EventMatch> read_name(std::string_view text) {
    for (uint16_t type = mt_TaskChange; type <= mt_Timer; ++type)
        if (type != mt_KernelCall && text_equal_nocase(text, mt_EventShortName(type, 0)))
            return EventMatch{type, std::nullopt, {}};
    constexpr uint16_t calls = 256;
    const std::string_view none = mt_EventShortName(mt_KernelCall, calls);
    for (uint16_t call = 0; call < calls; ++call) {
        const std::string_view name = mt_EventShortName(mt_KernelCall, call);
        if (name != none && text_equal_nocase(text, name)) return EventMatch{mt_KernelCall, call, {}};
    }
    return std::nullopt;
}

}  // namespace

EventMatch match_Read(std::string_view text) {
    if (const auto numbers = read_numbers(text)) return *numbers;
    if (const auto name = read_name(text)) return *name;
    return {std::nullopt, std::nullopt, std::string(text)};
}

bool match_Fits(const EventMatch& match, const SourceRecord& event) {
    if (match.type && *match.type != event.type) return false;
    if (match.subtype && *match.subtype != event.subtype) return false;
    if (match.text.empty()) return true;
    const auto behind = event.extra.subspan(std::min<size_t>(4, event.extra.size()));
    return std::search(behind.begin(), behind.end(), match.text.begin(), match.text.end()) != behind.end();
}
