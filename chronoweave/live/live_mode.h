// Live mode: the server writes the log file, and the canvas shows it as it grows.
#pragma once

#include <functional>
#include <string>

#include "chronoweave/live/live_reader.h"
#include "chronoweave/live/target_link.h"
#include "windlib/dialog/host.h"

struct LiveDesk {
    _LaCanvasData& canvas;
    TargetLink& link;
    const LiveWindow& window;
    DialogHost& host;
};

// A name as typed in full: one with no folder is meant in that of the canvas's file, else in the current one.
std::string live_FullName(const LiveDesk& desk, const std::string& name);
// Both names, extensions left aside, are of one trace.
bool live_SameTrace(const std::string& one, const std::string& other);

// Turns live mode on, with the file of this name, or off when it is on. A file that is there is replaced, if
// the user wants that.
void TargetEnableDisable(const LiveDesk& desk, const std::string& name);
// Live mode was turned on: loads the log file, made where it isn't there, with the refresh on. Nothing
// without Target_LoadPending, which is over then.
void LoadLiveFile(const LiveDesk& desk);
