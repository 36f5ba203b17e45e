// What the commands share: opening PATH with progress, its legend, and times as typed.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/cli/cell.h"
#include "chronoweave/cli/messages.h"
#include "chronoweave/cli/request.h"
#include "chronoweave/import/import.h"
#include "chronoweave/rtos/legend.h"

// Opens line.path, importing it first where it is a raw file. outputBase is where the store goes, empty for
// beside the source. Progress is a bar on standard error when that is a terminal.
// checkpoint is as in ImportOptions.
OpenedSource cli_Open(const CommandLine& line, const std::string& outputBase = {}, uint32_t checkpoint = 0);

// The exit status of a command that printed its result: Exit_Done, or Exit_Failed with what was met said,
// when opening went not well or the store, which may be null, was found to be damaged since.
int cli_Finish(const OpenedSource& opened, TraceStore* store);
// The exit status of a command line that the store refused: Exit_Usage, but that of cli_Finish where damage
// may be why.
int cli_Refused(const OpenedSource& opened);

// None: there is no file for the system, and the store's own names serve. Unreadable: that of --config.
enum class LegendFound { Yes, None, Unreadable };
// The legend for a store: of --config, else of the operating system. What is wrong with it is said.
LegendFound cli_LoadLegend(const CommandLine& line, const TraceStore& store, Legend& legend);

// A time as typed, in store ticks: seconds from the first event, or ticks with --ticks. An instant between
// two ticks becomes the later one, so that ranges stay half open. Nothing when it is no time.
std::optional<mt_Time> cli_Time(const std::string& text, bool ticks, mt_Time first, uint64_t ticksPerSecond);

// The range of --from and --to, all of the store by default; nothing, with the message said, when they are no
// times.
std::optional<mt_Range> cli_Range(const CommandLine& line, TraceStore& store);

// A number option; the default where it was not given. Nothing, with the message said, when it is no number
// of 32 bits.
std::optional<uint32_t> cli_Number(const std::string& text, const char* option, uint32_t otherwise);

// A tick as the commands show it: seconds from the first event, or the tick.
struct TimeScale {
    mt_Time first = 0;
    bool ticks = false;
    Cell cell(mt_Time tick) const {
        return ticks ? Cell(tick) : Cell::ticks(static_cast<int64_t>(tick - first));
    }
};
