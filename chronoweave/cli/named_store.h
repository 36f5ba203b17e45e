// A store with its legend, for the commands that name things.
#pragma once

#include <string>

#include "chronoweave/cli/opened.h"
#include "chronoweave/cli/rows.h"
#include "libtrv/event.h"

// The store's own names serve where there is no legend.
struct NamedStore {
    OpenedSource opened;
    Legend legend;
    bool hasLegend = false;
    char separator = '@';

    // False when the command is over, with its exit status in status.
    bool open(const CommandLine& line, int& status);
    // The same for commands that can do nothing without a legend.
    bool openWithLegend(const CommandLine& line, int& status);
    TraceStore& store() const { return *opened.store; }
    std::string event_name(const EventRecord& event, int32_t row) const;
    nlohmann::ordered_json status_name(uint16_t code) const;
};

nlohmann::ordered_json name_or_null(const std::optional<std::string>& name);
nlohmann::ordered_json shown_time(const TimeScale& scale, mt_Time tick);
TimeScale scale_of(const CommandLine& line, TraceStore& store);
// Closes the output of a command and gives its exit status.
int closed(RowWriter& rows, const OpenedSource& opened);
