// Merging raw event files from the canvas window: the user names sources, output and alignment, a program of
// its own merges, and the canvas loads what came of it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "chronoweave/import/merge/merged_source.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/description.h"
#include "windlib/dialog/host.h"

// What merging asks of the program around it.
struct MergeSurroundings {
    // Whether a window shows the trace of this file, or its store.
    std::function<bool(const std::string& file)> isShown;
    std::string tool;  // the program that merges; empty: there is none
};

// How times are brought together, "MergeOptions": one of the choices "Natural_B", "HA_B" and "TA_B", each
// over two lines of explanation, in the frame "Type_Rect" under the heading "Info_Txt"; "Ok_BS", "cancel".
DialogDescription dialogs_MergeOptions();
// None when the user cancelled.
std::optional<MergeAlign> dialogs_AskMergeAlign(DialogHost& host);

// "TraxMergeEventFiles": asks, merges and loads. False when the user cancelled a choice of files, and when
// nothing was merged or loaded; the user was told then. The canvas keeps what it shows in every such case. A
// single source is loaded as it is. Escape ends the merging.
bool merge_AskAndLoad(DialogHost& host, _LaCanvasData& canvas, const MergeSurroundings& around);
