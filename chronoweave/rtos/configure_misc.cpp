// Misc lines: one table of items, and one way of reading for each kind of value.
#include <algorithm>
#include <array>
#include <limits>

#include "chronoweave/rtos/configure_messages.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/text.h"

namespace messages = configure_messages;

namespace {

struct MiscItem;
// Stores the value of a field; null, or the message for a value of the wrong form.
using MiscTake = const char* (*)(const MiscItem& item, std::string_view field, LegendMisc& misc);

struct MiscItem {
    std::array<const char*, 3> spellings;
    MiscTake take;
    const char* missing;
    const char* wrong;
    int32_t LegendMisc::*number = nullptr;
    bool LegendMisc::*flag = nullptr;
    bool onlyClean = false;  // stored only when nothing stands behind the value
    bool lax = false;        // what stands behind the value is ignored
};

const char* take_number(const MiscItem& item, std::string_view field, LegendMisc& misc) {
    const auto number = scan_number(field);
    if (!number) return item.wrong;
    const auto value = static_cast<int64_t>(std::min<uint64_t>(*number, INT64_MAX));
    const bool negative = field.find('-') != std::string_view::npos;
    using Limits = std::numeric_limits<int32_t>;
    misc.*item.number = negative ? static_cast<int32_t>(*number)
                                 : static_cast<int32_t>(std::min<int64_t>(value, Limits::max()));
    return nullptr;
}

const char* take_flag(const MiscItem& item, std::string_view field, LegendMisc& misc) {
    const auto flag = scan_bool(field);
    if (!flag) return item.wrong;
    misc.*item.flag = *flag;
    return nullptr;
}

const char* take_overlap(const MiscItem&, std::string_view field, LegendMisc& misc) {
    misc.overlapIcon = field;
    return nullptr;
}

const char* take_term(const MiscItem&, std::string_view field, LegendMisc& misc) {
    misc.objectTerm = misc.objectTermLower = field;
    misc.objectTerm.front() = text_upper(field.front());
    misc.objectTermLower.front() = text_lower(field.front());
    return nullptr;
}

const char* take_sort_field(const MiscItem& item, std::string_view field, LegendMisc& misc) {
    const std::array<std::array<const char*, 2>, 2> names{
        {{"object_name", "TRV_Object_Name"}, {"object_id", "TRV_Object_ID"}}};
    for (size_t value = 0; value < names.size(); ++value)
        for (const char* name : names[value])
            if (text_equal_nocase(field, name)) {
                misc.sortField = static_cast<int32_t>(value);
                return nullptr;
            }
    return item.wrong;
}

const char* take_separator(const MiscItem& item, std::string_view field, LegendMisc& misc) {
    const std::string separator = text_unquote(field);
    if (separator.empty() || separator.front() == '\0') return item.wrong;
    if (separator.size() > 1) return messages::SeparatorLong;
    misc.separator = separator;
    return nullptr;
}

MiscItem number_item(std::array<const char*, 3> spellings, const char* text, int32_t LegendMisc::*number,
                     bool onlyClean) {
    return {spellings, take_number, text, text, number, nullptr, onlyClean, false};
}

MiscItem flag_item(std::array<const char*, 3> spellings, const char* missing, const char* wrong,
                   bool LegendMisc::*flag, bool lax = false) {
    return {spellings, take_flag, missing, wrong, nullptr, flag, false, lax};
}

MiscItem text_item(std::array<const char*, 3> spellings, const char* missing, const char* wrong,
                   MiscTake take, bool lax = false) {
    return {spellings, take, missing, wrong, nullptr, nullptr, false, lax};
}

const std::array<MiscItem, 14>& misc_items() {
    using M = LegendMisc;
    namespace m = messages;
    static const std::array<MiscItem, 14> items{
        number_item({"refresh interval", "refresh_interval", "TRV_Refresh_Interval"}, m::RefreshInterval,
                    &M::refreshInterval, true),
        number_item({"max refreshed events", "max_refreshed_events", "TRV_Max_Refreshed_Events"},
                    m::MaxRefreshedEvents, &M::maxRefreshedEvents, true),
        text_item({"overlap", "TRV_Overlap"}, m::Overlap, m::Overlap, take_overlap),
        text_item({"task prefix", "task_term", "TRV_Object_Term"}, m::ObjectTerm, m::ObjectTerm, take_term),
        flag_item({"unused extra data warning", "unused_extra_data_warning", "TRV_Unused_Extra_Data_Warning"},
                  m::UnusedWarning, m::UnusedWarningBool, &M::unusedExtraDataWarning),
        flag_item({"extra data warning", "extra_data_warning", "TRV_Extra_Data_Warning"}, m::ExtraWarning,
                  m::ExtraWarningBool, &M::extraDataWarning),
        flag_item({"TRV_Center_Status"}, m::CenterStatus, m::CenterStatus, &M::centerStatus),
        flag_item({"TRV_Tick_Pattern"}, m::TickPattern, m::TickPattern, &M::tickPattern),
        flag_item({"TRV_Show_Hidden_Object_Agent"}, m::HiddenAgent, m::HiddenAgent, &M::showHiddenAgent),
        number_item({"target timeout", "target_timeout", "TRV_Target_Timeout"}, m::TargetTimeout,
                    &M::targetTimeout, false),
        text_item({"sort_field", "TRV_Sort_Field"}, m::SortField, m::SortFieldBad, take_sort_field, true),
        flag_item({"sort_in_ascending_order", "TRV_Sort_In_Ascending_Order"}, m::SortOrder, m::SortOrderBad,
                  &M::sortAscending, true),
        flag_item({"TRV_All_For_Interval_Search"}, m::AllForInterval, m::AllForIntervalBad,
                  &M::allForIntervalSearch, true),
        text_item({"TRV_Object_Hierarchy_Separator"}, m::Separator, m::SeparatorEmpty, take_separator)};
    return items;
}

const MiscItem* find_item(std::string_view name) {
    for (const MiscItem& item : misc_items())
        for (const char* spelling : item.spellings)
            if (spelling && text_equal_nocase(name, spelling)) return &item;
    return nullptr;
}

}  // namespace

bool ConfigureReader::MiscLine(FieldCursor fields) {
    std::string_view field;
    if (!fields.NextFilled(field)) return Fail(messages::MiscName);
    const MiscItem* item = find_item(field);
    if (!item) return Fail(messages::MiscNotSupported);
    if (!fields.NextFilled(field)) return Fail(item->missing);
    LegendMisc changed = misc_;
    if (const char* wrong = item->take(*item, field, changed)) return Fail(wrong, field);
    if (item->take == take_overlap) overlapLine_ = line_;
    if (!item->onlyClean) misc_ = changed;
    if (!item->lax && !Clean(fields)) return false;
    misc_ = changed;
    return true;
}
