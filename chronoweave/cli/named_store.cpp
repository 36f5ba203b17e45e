#include "chronoweave/cli/named_store.h"

#include "libtrv/event_names.h"
#include "shared/libcxxutil/text.h"

using Json = nlohmann::ordered_json;

bool NamedStore::open(const CommandLine& line, int& status) {
    opened = cli_Open(line);
    if (!opened.store) {
        status = cli_Failure(opened.error);
        return false;
    }
    bool fatal = false;
    hasLegend = cli_LoadLegend(line, *opened.store, legend, fatal);
    if (hasLegend && !legend.misc.separator.empty()) separator = legend.misc.separator.front();
    status = Exit_Failed;
    return !fatal;
}

bool NamedStore::openWithLegend(const CommandLine& line, int& status) {
    if (!open(line, status)) return false;
    if (hasLegend) return true;
    const char* os = mt_GetOsName(&store());
    status = cli_Failure(line.path + ": no configure file for \"" + (os ? os : "") +
                         "\" names its events and statuses; give one with --config");
    return false;
}

std::string NamedStore::event_name(const EventRecord& event, int32_t row) const {
    return hasLegend ? legend.events[static_cast<size_t>(row)].name
                     : mt_EventLongName(event.type, event.subtype);
}

Json NamedStore::status_name(uint16_t code) const {
    if (hasLegend) return text_utf8(legend.statuses[static_cast<size_t>(legend.StatusIndex(code))].name);
    const char* name = mt_StatusName(code);
    return name ? Json(name) : Json(nullptr);
}

Json name_or_null(const std::optional<std::string>& name) {
    return name ? Json(text_utf8(*name)) : Json(nullptr);
}

Json shown_time(const TimeScale& scale, mt_Time tick) {
    return scale.ticks ? Json(tick) : Json(scale.seconds(tick));
}

TimeScale scale_of(const CommandLine& line, TraceStore& store) {
    return {mt_GetTimeRange(store).first, static_cast<double>(mt_GetTicksPerSecond(store)), line.ticks};
}

int closed(RowWriter& rows, const OpenedSource& opened) {
    const bool written = rows.close();
    const int status = cli_Finish(opened);
    return written ? status : Exit_Failed;
}
