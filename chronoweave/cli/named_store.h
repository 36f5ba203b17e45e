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
    // Null where neither the legend nor the store knows the code.
    Cell statusName(uint16_t code) const;
};

TimeScale scale_of(const CommandLine& line, TraceStore& store);
// Closes the output of a command and gives its exit status.
int closed(RowWriter& rows, const OpenedSource& opened);
