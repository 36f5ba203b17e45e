// Category lines and event lines.
#include "chronoweave/rtos/configure_messages.h"
#include "chronoweave/rtos/configure_reader.h"
#include "shared/libcxxutil/text.h"

namespace messages = configure_messages;

namespace {

void set_visibility(ConfigureEvent& event, uint32_t visibility) {
    event.flags = (event.flags & ~LegendEvent_VisibilityMask) | visibility;
}

// A type or subtype: a number, or the wild card, which sets the flag.
bool take_code(std::string_view field, uint16_t& code, uint32_t& flags, uint32_t wildcard) {
    if (field.front() == '*') {
        flags |= wildcard;
        return true;
    }
    const auto number = scan_number(field);
    code = static_cast<uint16_t>(number.value_or(0));
    return number.has_value();
}

bool is_extra(std::string_view field) {
    return text_starts_nocase(field, "extra") || text_starts_nocase(field, "TRV_Extra");
}

std::string lower(std::string_view name) {
    std::string folded(name);
    for (char& c : folded) c = text_lower(c);
    return folded;
}

}  // namespace

bool ConfigureReader::CategoryLine(FieldCursor fields) {
    std::string_view field;
    if (!fields.NextFilled(field)) return Fail(messages::CategoryName);
    ConfigureEvent category;
    category.name = field;
    category.flags = LegendEvent_Category;
    category.category = events_.empty() ? 0 : events_.back().category + 1;
    if (!fields.Next(field)) return Fail(messages::CategoryVisibility);
    const auto visible = configure_ScanVisibility(field);
    categoryVisibility_ = visible.value_or(true) ? 1 : 0;
    set_visibility(category, categoryVisibility_);
    events_.push_back(std::move(category));
    eventLines_.push_back(line_);
    eventNames_.push_back(nullptr);
    if (field.empty()) return true;
    return visible ? Clean(fields) : Fail(messages::UnknownItem, field);
}

bool ConfigureReader::EventLine(FieldCursor fields) {
    std::string_view field;
    if (!fields.NextFilled(field)) return Fail(messages::EventInformation);
    ConfigureEvent event;
    event.category = events_.empty() ? -1 : events_.back().category;
    event.flags = event.category < 0 ? 1 : categoryVisibility_;
    if (!take_code(field, event.type, event.flags, LegendEvent_AnyType)) return Fail(messages::EventType);
    if (!fields.NextFilled(field) || !take_code(field, event.subtype, event.flags, LegendEvent_AnySubtype))
        return Fail(messages::EventSubtype);
    return EventName(fields, event) && EventOptions(fields, event);
}

// Names events by type and subtype, as their own lines do, which stand ahead of it.
bool ConfigureReader::ImportantLine(FieldCursor fields) {
    std::string_view field;
    ConfigureEvent named;
    if (!fields.NextFilled(field)) return Fail(messages::EventInformation);
    if (!take_code(field, named.type, named.flags, LegendEvent_AnyType)) return Fail(messages::EventType);
    if (!fields.NextFilled(field) || !take_code(field, named.subtype, named.flags, LegendEvent_AnySubtype))
        return Fail(messages::EventSubtype);
    constexpr uint32_t wild = LegendEvent_AnyType | LegendEvent_AnySubtype;
    bool found = false;
    for (ConfigureEvent& event : events_) {
        if (event.IsCategory() || event.type != named.type || event.subtype != named.subtype ||
            (event.flags & wild) != (named.flags & wild))
            continue;
        event.flags |= LegendEvent_Important;
        found = true;
    }
    return (found || Fail(messages::ImportantUnknown)) && Clean(fields);
}

bool ConfigureReader::EventName(FieldCursor& fields, ConfigureEvent& event) {
    std::string_view field;
    if (!fields.NextFilled(field)) return Fail(messages::EventNameMissing);
    event.name = field;
    if (text_starts_nocase(field, "TRV_Interval_Search")) {
        event.flags |= LegendEvent_IntervalSearch;
        event.name = configure_BehindEquals(field);
        if (event.name.empty()) return Fail(messages::EventNameEmpty);
    }
    const auto namesakes = names_.find(lower(event.name));
    event.iconName = namesakes == names_.end() ? event.name : events_[namesakes->second.last].iconName;
    return true;
}

// Icon, extra data format and visibility, in this order, each of which may be left away.
bool ConfigureReader::EventOptions(FieldCursor& fields, ConfigureEvent& event) {
    const auto ended = [&] {
        AddEvent(std::move(event), false);
        return true;
    };
    std::string_view field;
    if (!fields.Next(field)) return Fail(messages::EventIcon);
    if (field.empty()) return ended();
    auto visible = configure_ScanVisibility(field);
    if (!visible) {
        const bool extraFirst = is_extra(field);
        if (!extraFirst)
            event.iconName = field;
        else if (!ExtraFormat(field, event))
            return false;
        if (!fields.Next(field)) return Fail(messages::EventMore);
        if (field.empty()) return ended();
        if (!extraFirst && is_extra(field)) {
            if (!ExtraFormat(field, event)) return false;
            if (!fields.Next(field)) return Fail(messages::EventMore);
            if (field.empty()) return ended();
        }
        visible = configure_ScanVisibility(field);
    }
    if (visible) set_visibility(event, *visible ? 1 : 0);
    // Even with a text that is no visibility, the namesakes follow.
    AddEvent(std::move(event), true);
    return visible ? Clean(fields) : Fail(messages::UnknownItem, field);
}

bool ConfigureReader::ExtraFormat(std::string_view field, ConfigureEvent& event) {
    const size_t quote = field.find('"');
    if (quote == std::string_view::npos) return Fail(messages::EventExtraQuote);
    event.extraFormat = text_unquote(field.substr(quote));
    return true;
}

void ConfigureReader::AddEvent(ConfigureEvent event, bool spreadVisibility) {
    Namesakes& namesakes = names_[lower(event.name)];
    namesakes.last = events_.size();
    ++namesakes.count;
    if (spreadVisibility) {
        namesakes.spreadCount = namesakes.count;
        namesakes.spreadVisibility = event.visibility();
    }
    events_.push_back(std::move(event));
    eventLines_.push_back(line_);
    eventNames_.push_back(&namesakes);
}

void ConfigureReader::SpreadVisibility() {
    for (auto& [name, namesakes] : names_) namesakes.seen = 0;
    for (size_t row = 0; row < events_.size(); ++row) {
        Namesakes* namesakes = eventNames_[row];
        if (namesakes && namesakes->seen++ < namesakes->spreadCount)
            set_visibility(events_[row], namesakes->spreadVisibility);
    }
}
