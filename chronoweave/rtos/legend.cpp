#include "chronoweave/rtos/legend.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

struct StyleNames {
    const char* longName;
    const char* shortName;
};
constexpr StyleNames styleNames[] = {{"TRV_Solid", "Solid"},
                                     {"TRV_Dash", "Dash"},
                                     {"TRV_Dot", "Dot"},
                                     {"TRV_DashDot", "DashDot"},
                                     {"TRV_DashDotDot", "DashDotDot"}};
constexpr int styleCount = static_cast<int>(std::size(styleNames));

constexpr std::string_view unknownName = "Unknown";

uint32_t event_code(uint16_t type, uint16_t subtype) {
    return static_cast<uint32_t>(type) << 16 | subtype;
}

// Sorts by code and keeps the first row of each.
template <class Nodes>
void make_tree(Nodes& nodes) {
    using Node = typename Nodes::value_type;
    std::stable_sort(nodes.begin(), nodes.end(),
                     [](const Node& a, const Node& b) { return a.code < b.code; });
    const auto same = [](const Node& a, const Node& b) { return a.code == b.code; };
    nodes.erase(std::unique(nodes.begin(), nodes.end(), same), nodes.end());
}

template <class Nodes>
int32_t find_row(const Nodes& nodes, uint32_t code) {
    using Node = typename Nodes::value_type;
    const auto found = std::lower_bound(nodes.begin(), nodes.end(), code,
                                        [](const Node& node, uint32_t wanted) { return node.code < wanted; });
    return found != nodes.end() && found->code == code ? found->row : -1;
}

}  // namespace

OsKind legend_OsKind(std::string_view osName) {
    if (text_equal_nocase(osName, "Korvantis")) return Os_Korvantis;
    if (text_equal_nocase(osName, "ThreadX")) return Os_ThreadX;
    if (text_equal_nocase(osName, "Tolmund")) return Os_Tolmund;
    if (text_equal_nocase(osName, "trace_function_flow")) return Os_TraceFunctionFlow;
    return Os_Other;
}

int legend_LineStyle(std::string_view name) {
    for (int style = 0; style < styleCount; ++style) {
        const StyleNames& names = styleNames[style];
        if (text_equal_nocase(name, names.longName) || text_equal_nocase(name, names.shortName)) return style;
    }
    return Line_Solid;
}

const char* legend_LineStyleName(int style) {
    return styleNames[style >= 0 && style < styleCount ? style : Line_Solid].longName;
}

void Legend::BuildLookups() {
    unknownStatus = contextSwitchStatus = firstExecutionStatus = -1;
    contextSwitchCount = 0;
    statusTree_.clear();
    directStatus_.clear();
    reportedStatuses_.clear();
    for (size_t i = 0; i < statuses.size(); ++i) {
        const LegendStatus& status = statuses[i];
        const auto row = static_cast<int32_t>(i);
        statusTree_.push_back({status.code, row});
        if (unknownStatus < 0 && text_equal_nocase(status.name, unknownName)) unknownStatus = row;
        if (status.isContextSwitch && contextSwitchCount++ == 0) contextSwitchStatus = row;
        if (status.isExecution && firstExecutionStatus < 0) firstExecutionStatus = row;
    }
    make_tree(statusTree_);
    for (uint32_t code = 0; code < directStatuses; ++code)
        directStatus_.push_back(find_row(statusTree_, code));
    BuildEventLookups();
}

void Legend::BuildEventLookups() {
    unknownEvent = anyEvent_ = -1;
    for (Nodes* nodes : {&eventTree_, &anySubtype_, &anyType_}) nodes->clear();
    wildcardEvents.clear();
    directEvents_.clear();
    reportedEvents_.clear();
    for (size_t i = 0; i < events.size(); ++i) {
        const LegendEvent& event = events[i];
        const auto row = static_cast<int32_t>(i);
        if (event.IsCategory()) continue;
        if (unknownEvent < 0 && text_equal_nocase(event.name, unknownName)) unknownEvent = row;
        const bool anyType = (event.flags & LegendEvent_AnyType) != 0;
        const bool anySubtype = (event.flags & LegendEvent_AnySubtype) != 0;
        if (event.IsWildcard()) wildcardEvents.push_back(row);
        if (!event.IsWildcard())
            eventTree_.push_back({event_code(event.type, event.subtype), row});
        else if (!anyType)
            anySubtype_.push_back({event.type, row});
        else if (!anySubtype)
            anyType_.push_back({event.subtype, row});
        else if (anyEvent_ < 0)
            anyEvent_ = row;
    }
    for (Nodes* nodes : {&eventTree_, &anySubtype_, &anyType_}) make_tree(*nodes);
    for (uint32_t type = 0; type < directTypes; ++type)
        for (uint32_t subtype = 0; subtype < directSubtypes; ++subtype)
            directEvents_.push_back(
                ResolveEvent(static_cast<uint16_t>(type), static_cast<uint16_t>(subtype)));
}

int32_t Legend::ResolveEvent(uint16_t type, uint16_t subtype) const {
    const int32_t exact = find_row(eventTree_, event_code(type, subtype));
    if (exact >= 0) return exact;
    int32_t first = -1;
    for (const int32_t row : {anyEvent_, find_row(anySubtype_, type), find_row(anyType_, subtype)})
        if (row >= 0 && (first < 0 || row < first)) first = row;
    return first;
}

int32_t Legend::StatusIndex(uint32_t code) const {
    const int32_t row = code < directStatus_.size() ? directStatus_[code] : find_row(statusTree_, code);
    if (row >= 0) return row;
    if (reportedStatuses_.insert(code).second) gen_console("Unknown status: internal code = 0x%x.\n", code);
    return unknownStatus;
}

int32_t Legend::EventIndex(uint16_t type, uint16_t subtype) const {
    const bool direct = type < directTypes && subtype < directSubtypes && !directEvents_.empty();
    const int32_t row = direct ? directEvents_[type * directSubtypes + subtype] : ResolveEvent(type, subtype);
    if (row >= 0) return row;
    if (reportedEvents_.insert(event_code(type, subtype)).second)
        gen_console("Unknown event: type=0x%x, subtype=0x%x.\n", static_cast<unsigned>(type),
                    static_cast<unsigned>(subtype));
    return unknownEvent;
}

int32_t Legend::LinkedStatus(int32_t statusRow) const {
    if (statusRow < 0 || static_cast<size_t>(statusRow) >= statuses.size()) return contextSwitchStatus;
    const int32_t link = statuses[static_cast<size_t>(statusRow)].contextSwitchLink;
    return link < 0 ? contextSwitchStatus : link;
}

bool Legend::EventMatches(uint16_t type, uint16_t subtype, int32_t eventRow) const {
    if (eventRow < 0) return true;
    if (static_cast<size_t>(eventRow) >= events.size()) return false;
    return EventIndex(type, subtype) == eventRow;
}

int32_t Legend::StatusByName(std::string_view name) const {
    for (size_t i = 0; i < statuses.size(); ++i)
        if (text_equal_nocase(statuses[i].name, name)) return static_cast<int32_t>(i);
    return unknownStatus;
}

int32_t Legend::EventByName(std::string_view name) const {
    const auto found = std::find_if(events.begin(), events.end(), [&](const LegendEvent& event) {
        return !event.IsCategory() && text_equal_nocase(event.name, name);
    });
    if (found == events.end()) return unknownEvent;
    if (!found->IsWildcard()) return EventIndex(found->type, found->subtype);
    // Of wild cards of one form the first is the row that events resolve to.
    const auto form = [](const LegendEvent& event) {
        return event.flags & (LegendEvent_AnyType | LegendEvent_AnySubtype);
    };
    for (const int32_t row : wildcardEvents) {
        const LegendEvent& event = events[static_cast<size_t>(row)];
        if (event.type == found->type && event.subtype == found->subtype && form(event) == form(*found))
            return row;
    }
    return unknownEvent;
}

void Legend::RollUpCategories() {
    constexpr uint32_t mixed = 2;
    constexpr uint32_t none = LegendEvent_VisibilityMask;
    uint32_t below = none;  // of the events behind the row, up to the next category
    for (auto event = events.rbegin(); event != events.rend(); ++event) {
        if (!event->IsCategory()) {
            below = below == none || below == event->visibility() ? event->visibility() : mixed;
            continue;
        }
        if (below != none) event->flags = (event->flags & ~LegendEvent_VisibilityMask) | below;
        below = none;
    }
}
