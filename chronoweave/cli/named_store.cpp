#include "chronoweave/cli/named_store.h"

#include "libtrv/event_names.h"

bool NamedStore::open(const CommandLine& line, int& status) {
    opened = cli_Open(line);
    if (!opened.store) {
        status = cli_Failure(opened.trouble.text());
        return false;
    }
    const LegendFound found = cli_LoadLegend(line, *opened.store, legend);
    hasLegend = found == LegendFound::Yes;
    if (hasLegend && !legend.misc.separator.empty()) separator = legend.misc.separator.front();
    status = Exit_Failed;
    return found != LegendFound::Unreadable;
}

bool NamedStore::openWithLegend(const CommandLine& line, int& status) {
    if (!open(line, status)) return false;
    if (hasLegend) return true;
    const char* os = mt_GetOsName(&store());
    status = cli_Failure(line.path + ": no configure file for \"" + (os ? os : "") +
                         "\" names its events and statuses; give one with --config");
    cli_Finish(opened, opened.store.get());  // damage may be why
    return false;
}

Cell NamedStore::statusName(uint16_t code) const {
    if (hasLegend) return legend.statuses[static_cast<size_t>(legend.StatusIndex(code))].name;
    const char* name = mt_StatusName(code);
    return name ? Cell(name) : Cell();
}

TimeScale scale_of(const CommandLine& line, TraceStore& store) {
    return {mt_GetTimeRange(store).first, line.ticks};
}

int closed(RowWriter& rows, const OpenedSource& opened) {
    const bool written = rows.close();
    const int status = cli_Finish(opened, opened.store.get());
    return written ? status : Exit_Failed;
}
