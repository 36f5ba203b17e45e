#include "chronoweave/rtos/configure_writer.h"

#include <algorithm>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr const char* object = "TRV_Object";
constexpr const char* status_ = "TRV_Status";
constexpr const char* execution = "TRV_Execution";
constexpr const char* contextSwitch = "TRV_Context_Switch";
constexpr const char* switchLink = "TRV_Context_Switch_Link";
constexpr const char* category = "TRV_Event_Category";
constexpr const char* event_ = "TRV_Event";
constexpr const char* importantEvent = "TRV_Important_Event";
constexpr const char* intervalSearch = "TRV_Interval_Search";
constexpr const char* extra = "TRV_Extra";

const char* visibility(bool visible) {
    return visible ? "TRV_Visible" : "TRV_Invisible";
}

std::string header(const std::string& osName, const std::string& term) {
    std::string text =
        gen_format("// Chronoweave Configure File for Operating System \"%s\"\n\n", osName.c_str());
    text +=
        "// General information about the syntax:\n"
        "// 1. Comments are leaded by \"//\" and occupy the whole line. So, don't\n"
        "// put comments with option definitions in the same line.\n"
        "// 2. If a definition spans multiple lines, put \"\\\" at the end of the line\n"
        "// to be continued \n"
        "// 3. The keywords start with \"TRV_\", and are case insensitive.\n\n\n";
    text += gen_format("// %s's statuses\n// Format:\n//     %s:%s:<INTERNAL_CODE>:[%s=|%s=]\\\n",
                       term.c_str(), object, status_, execution, contextSwitch);
    return text + gen_format("//     <STATUS_NAME>:<RGB>:<STYLE>:<THICKNESS>:%s|%s\n\n", visibility(true),
                             visibility(false));
}

// A status of the name that means a context switch by itself goes without the prefix.
std::string status_prefix(const LegendStatus& status) {
    if (status.isExecution) return std::string(execution) + "=";
    const bool plain = !status.isContextSwitch || text_equal_nocase(status.name, "Context Switch");
    return plain ? "" : std::string(contextSwitch) + "=";
}

std::string status_line(const LegendStatus& status) {
    const unsigned rgb = static_cast<unsigned>(status.red >> 8) << 16 |
                         static_cast<unsigned>(status.green >> 8) << 8 |
                         static_cast<unsigned>(status.blue >> 8);
    return gen_format("%s:%s:0x%x:%s%s:0x%x:%s:%d:%s\n", object, status_, status.code,
                      status_prefix(status).c_str(), status.name.c_str(), rgb,
                      legend_LineStyleName(status.lineStyle), status.thickness, visibility(status.visible));
}

// Several statuses may share a code, of which the file means the first: the finished "Unknown" and "Context
// Switch" do. A link to a later one is left away where a reading makes it by itself.
bool comes_by_itself(const Legend& legend, const LegendStatus& status) {
    const LegendStatus& link = legend.statuses[static_cast<size_t>(status.contextSwitchLink)];
    const auto first = [&](auto fits) {
        const auto found = std::find_if(legend.statuses.begin(), legend.statuses.end(), fits);
        return found == legend.statuses.end() ? nullptr : &*found;
    };
    return status.isExecution &&
           first([&](const LegendStatus& one) { return one.code == link.code; }) != &link &&
           first([](const LegendStatus& one) { return one.isContextSwitch; }) == &link;
}

std::string links(const Legend& legend, const std::string& term) {
    std::string lines;
    for (const LegendStatus& status : legend.statuses) {
        const auto link = static_cast<size_t>(status.contextSwitchLink);
        if (status.contextSwitchLink < 0 || link >= legend.statuses.size()) continue;
        if (comes_by_itself(legend, status)) continue;
        lines += gen_format("%s:%s:0x%x:0x%x\n", object, switchLink, status.code, legend.statuses[link].code);
    }
    if (lines.empty()) return {};
    return gen_format("\n// %s status's context switch links\n// Format:\n", term.c_str()) +
           gen_format("//     %s:%s:<defined_status_code>:\\\n//    <defined_context_switch_code>\n\n",
                      object, switchLink) +
           lines;
}

std::string event_header() {
    return std::string("\n// Event Categories and Events\n// Format: \n") +
           gen_format("//     %s:<CATEGORY_NAME>:%s|%s\n", category, visibility(true), visibility(false)) +
           gen_format("//     %s:<TYPE>:<SUBTYPE>:[%s=]<EVENT_NAME>:<BITMAP's_NAME>:\\\n", event_,
                      intervalSearch) +
           gen_format("//     [%s=\"<EXTRA_DATA_FORMAT>\":]%s|%s\n", extra, visibility(true),
                      visibility(false));
}

std::string code(uint16_t number, bool any) {
    return any ? "*" : gen_format("0x%x", number);
}

std::string quoted_format(const std::string& format) {
    std::string text = "\"";
    for (const char c : format) {
        if (c == '\\' || c == '"' || c == '\'') text += '\\';
        text += c;
    }
    return text + '"';
}

// Type and subtype as a line has them, "TYPE:SUBTYPE".
std::string codes(const LegendEvent& event) {
    return code(event.type, event.flags & LegendEvent_AnyType) + ":" +
           code(event.subtype, event.flags & LegendEvent_AnySubtype);
}

std::string event_line(const LegendEvent& event) {
    if (event.IsCategory()) {
        const bool mixed = event.visibility() > 1;
        return gen_format("\n%s:%s%s%s\n", category, event.name.c_str(), mixed ? "" : ":",
                          mixed ? "" : visibility(event.visibility() == 1));
    }
    std::string line = std::string(event_) + ":" + codes(event) + ":";
    if (event.flags & LegendEvent_IntervalSearch) line += std::string(intervalSearch) + "=";
    line += event.name + ":" + (event.missingIcon.empty() ? event.iconName : event.missingIcon) + ":";
    if (!event.extraFormat.empty()) line += std::string(extra) + "=" + quoted_format(event.extraFormat) + ":";
    return line + visibility(event.visibility() != 0) + "\n";
}

std::string important_events(const Legend& legend) {
    std::string lines;
    for (const LegendEvent& event : legend.events)
        if (event.IsImportant()) lines += std::string(importantEvent) + ":" + codes(event) + "\n";
    if (lines.empty()) return {};
    return gen_format(
               "\n// Events whose icons are never hidden under others\n// Format:\n//     "
               "%s:<TYPE>:<SUBTYPE>\n\n",
               importantEvent) +
           lines;
}

// The misc lines. A value that is the default goes behind a comment mark.
class MiscLines {
  public:
    void Number(const char* item, int32_t value, int32_t standard) {
        Put(item, std::to_string(value), value == standard);
    }
    void Flag(const char* item, bool value, bool standard) {
        Put(item, value ? "true" : "false", value == standard);
    }
    void Put(const char* item, const std::string& value, bool isDefault) {
        last_ = std::string(isDefault ? "//" : "") + "TRV_Misc:" + item + ":" + value + "\n";
        text += last_;
    }
    // The line of the item before once more.
    void Repeat() { text += last_; }

    std::string text = "\n// Misc \n\n";

  private:
    std::string last_;
};

std::string separator_text(const std::string& separator) {
    const auto c = static_cast<unsigned char>(separator.empty() ? '@' : separator.front());
    if (c < 0x20 || c == 0x7F) return gen_format("\"\\x%02x\"", c);
    // Within the quotes these two need the escape that the reader takes off.
    const bool escaped = c == '"' || c == '\\';
    return std::string(escaped ? "\"\\" : "\"") + static_cast<char>(c) + '"';
}

std::string misc(const LegendMisc& misc) {
    MiscLines lines;
    lines.Number("TRV_Refresh_Interval", misc.refreshInterval, 1000);
    lines.Number("TRV_Max_Refreshed_Events", misc.maxRefreshedEvents, 600);
    lines.Number("TRV_Target_Timeout", misc.targetTimeout, 5000);
    lines.Flag("TRV_Extra_Data_Warning", misc.extraDataWarning, true);
    lines.Flag("TRV_Unused_Extra_Data_Warning", misc.unusedExtraDataWarning, true);
    const bool noTerm = misc.objectTerm.empty() || misc.objectTerm == "Task";
    lines.Put("TRV_Object_Term", noTerm ? "Task" : misc.objectTerm, noTerm);
    const bool noIcon = misc.overlapIcon.empty();
    lines.Put("TRV_Overlap", noIcon ? "<YOUR_OVERLAP_ICON>" : misc.overlapIcon, noIcon);
    if (misc.sortField == 0 || misc.sortField == 1)
        lines.Put("TRV_Sort_Field", misc.sortField == 0 ? "TRV_Object_Name" : "TRV_Object_ID",
                  misc.sortField == 0);
    else
        lines.Repeat();
    lines.Flag("TRV_Sort_In_Ascending_Order", misc.sortAscending, true);
    lines.Flag("TRV_All_For_Interval_Search", misc.allForIntervalSearch, false);
    lines.Put("TRV_Object_Hierarchy_Separator", separator_text(misc.separator),
              misc.separator.empty() || misc.separator == "@");
    lines.Flag("TRV_Center_Status", misc.centerStatus, false);
    lines.Flag("TRV_Tick_Pattern", misc.tickPattern, true);
    lines.Flag("TRV_Show_Hidden_Object_Agent", misc.showHiddenAgent, false);
    return lines.text;
}

}  // namespace

std::string configure_WriteText(const Legend& legend, const std::string& osName) {
    const std::string& term = legend.misc.objectTerm;
    std::string text = header(osName, term);
    for (const LegendStatus& status : legend.statuses) text += status_line(status);
    text += links(legend, term) + event_header();
    for (const LegendEvent& event : legend.events) text += event_line(event);
    return text + important_events(legend) + misc(legend.misc);
}
