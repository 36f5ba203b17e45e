#include "chronoweave/rtos/configure_loss.h"

#include "chronoweave/rtos/configure_reader.h"

namespace {

bool same_channel(uint16_t a, uint16_t b) {
    return a >> 8 == b >> 8;
}

bool same(const LegendStatus& a, const LegendStatus& b) {
    return a.code == b.code && a.name == b.name && same_channel(a.red, b.red) &&
           same_channel(a.green, b.green) && same_channel(a.blue, b.blue) && a.thickness == b.thickness &&
           a.lineStyle == b.lineStyle && a.isExecution == b.isExecution &&
           a.isContextSwitch == b.isContextSwitch && a.visible == b.visible;
}

const std::string& icon_in_file(const LegendEvent& event) {
    return event.missingIcon.empty() ? event.iconName : event.missingIcon;
}

bool same(const LegendEvent& a, const LegendEvent& b) {
    // A category's visibility is that of its events.
    const uint32_t flags = a.IsCategory() ? ~LegendEvent_VisibilityMask : ~0u;
    if (a.name != b.name || a.category != b.category || ((a.flags ^ b.flags) & flags) != 0) return false;
    if (a.IsCategory()) return true;
    return a.type == b.type && a.subtype == b.subtype && icon_in_file(a) == icon_in_file(b) &&
           a.extraFormat == b.extraFormat;
}

std::string quoted(const char* kind, const std::string& name) {
    return std::string(kind) + " \"" + name + '"';
}

// The first row that differs, where one list is shorter the one behind it.
template <class Row, class Name>
std::optional<std::string> first_loss(const std::vector<Row>& rows, const std::vector<Row>& back,
                                      const Name& name) {
    for (size_t i = 0; i < rows.size(); ++i)
        if (i >= back.size() || !same(rows[i], back[i])) return name(rows[i]);
    if (rows.size() < back.size() && !rows.empty()) return name(rows.back());
    return std::nullopt;
}

std::optional<std::string> first_loss(const LegendMisc& misc, const LegendMisc& back) {
    const std::pair<const char*, bool> items[] = {
        {"TRV_Refresh_Interval", misc.refreshInterval == back.refreshInterval},
        {"TRV_Max_Refreshed_Events", misc.maxRefreshedEvents == back.maxRefreshedEvents},
        {"TRV_Target_Timeout", misc.targetTimeout == back.targetTimeout},
        {"TRV_Extra_Data_Warning", misc.extraDataWarning == back.extraDataWarning},
        {"TRV_Unused_Extra_Data_Warning", misc.unusedExtraDataWarning == back.unusedExtraDataWarning},
        {"TRV_Object_Term", misc.objectTerm == back.objectTerm},
        {"TRV_Overlap", misc.overlapIcon == back.overlapIcon},
        {"TRV_Sort_Field", misc.sortField == back.sortField},
        {"TRV_Sort_In_Ascending_Order", misc.sortAscending == back.sortAscending},
        {"TRV_All_For_Interval_Search", misc.allForIntervalSearch == back.allForIntervalSearch},
        {"TRV_Object_Hierarchy_Separator", misc.separator == back.separator},
        {"TRV_Center_Status", misc.centerStatus == back.centerStatus},
        {"TRV_Tick_Pattern", misc.tickPattern == back.tickPattern},
        {"TRV_Show_Hidden_Object_Agent", misc.showHiddenAgent == back.showHiddenAgent}};
    for (const auto& [item, kept] : items)
        if (!kept) return quoted("misc item", item);
    return std::nullopt;
}

// The first status whose link would be another one. Those that execute are linked to the first context switch
// without a word.
const LegendStatus* first_lost_link(const Legend& legend, const std::vector<LegendStatus>& back) {
    for (size_t i = 0; i < legend.statuses.size(); ++i) {
        const LegendStatus& status = legend.statuses[i];
        int32_t link = back[i].contextSwitchLink;
        if (link < 0 && status.isExecution) link = legend.contextSwitchStatus;
        if (status.contextSwitchLink != link) return &status;
    }
    return nullptr;
}

}  // namespace

std::optional<std::string> configure_FirstLoss(const Legend& legend, const std::string& text) {
    ConfigureCallbacks silent = configure_ConsoleCallbacks();
    silent.message = [](const std::string&) {};
    silent.syntaxError = [](const std::string&, const std::string&) {};
    const int noLimit = 0;
    // The records as they stand: to make a legend of them would speak of missing icons.
    ConfigureReader back(silent, noLimit, LegendMisc());
    back.ReadText(text, legend.path);
    const auto status = [](const LegendStatus& row) {
        return quoted(row.isContextSwitch ? "context switch" : "status", row.name);
    };
    const auto event = [](const LegendEvent& row) {
        return quoted(row.IsCategory() ? "category" : "event", row.name);
    };
    if (auto loss = first_loss(legend.statuses, back.statuses(), status)) return loss;
    if (const LegendStatus* lost = first_lost_link(legend, back.statuses())) return status(*lost);
    if (auto loss = first_loss(legend.events, back.events(), event)) return loss;
    return first_loss(legend.misc, back.misc());
}
