// The options of the program that its user sets, and what it keeps of them in its settings.
#pragma once

#include <string>
#include <vector>

#include "windlib/config/settings.h"

struct ProgramOptions {
    bool newTrv = true;            // overlapping icons give way by free space, else by rectangles
    bool prefetch = true;          // a fetch takes twice the range asked for
    bool kernel = false;           // objects with no separator in their name go under "Kernel"
    bool iconButtons = true;       // tool buttons show their icon, else their text
    bool verticalBarRight = true;  // sides of the scroll bars
    bool horizontalBarBottom = true;
    bool bareWheelZooms = false;  // the wheel with no key held zooms, else it scrolls
    bool cursorsSnap = true;      // cursors set by hand go to a near edge or icon
    bool processorRows = true;    // a row for each processor shows who ran there
    bool plainSwitches = false;   // context switches look the same however many stand close together
    bool plainMarks = false;      // marks of overlap are the legend's picture, else numbers
    bool eventTable = false;      // new windows show the table of events
    bool selectionPanel = true;   // a panel tells what happened in the selection
    bool followEnd = false;       // the view keeps the end of a trace that grows at its right edge
    bool darkColours = false;     // windows are dark whatever the desktop's colours are

    bool operator==(const ProgramOptions&) const = default;
};

// The kind that files of traces have among the recent files of the settings.
constexpr const char* program_TraceFiles = "TRVDataFiles";

// The switches of the settings that hold the options, with their defaults.
std::vector<SettingsSwitch> program_Switches();
ProgramOptions program_OptionsOf(const SettingsManager& settings);
// Puts them into the settings; saving is up to the caller.
void program_Keep(const ProgramOptions& options, SettingsManager& settings);
