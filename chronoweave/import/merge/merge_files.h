// Merging by names: sources of any format into one raw event file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chronoweave/import/merge/merged_source.h"
#include "shared/libcxxutil/progress.h"
#include "shared/libcxxutil/result.h"

struct MergeRequest {
    std::vector<std::string> sources = {};  // raw event files, core files: whatever can be imported
    std::string output = {};
    MergeAlign align = MergeAlign::Natural;
    Progress progress = {};  // in a unit of its own; asked at least once for each mebibyte that is read
};

struct MergeCounts {
    uint64_t sources = 0;
    uint64_t events = 0;     // that the output has
    uint64_t dropped = 0;    // for their lengths
    uint64_t badBytes = 0;   // where an event was expected and none began
    uint64_t unread = 0;     // bytes of events cut by the end of their source
    uint64_t shortened = 0;  // events whose extra data has no room in the output
    uint64_t back = 0;       // times that went back
    uint64_t far = 0;        // times past the last one that there can be
    uint64_t unturned = 0;   // events with bytes that stay in another byte order than the output's
};

struct Merged {
    // Refused or failed: there is no output then, and one that stood there before stands unchanged. Empty
    // words where progress ended it.
    Result result;
    bool stopped = false;
    MergeCounts counts;
    // What the output lacks of the sources, a sentence each with the name of the source ahead.
    std::vector<std::string> damage;
    // What was done to events that are all there.
    std::vector<std::string> notes;
};

// Merges into a file beside the output, which takes the output's place when it is whole. The disk is not
// asked to keep it at once: it can be made again. The output is never one of the sources, under whatever
// name. Sources with no bytes at all add nothing and are told as damage. What is wrong with single bytes and
// records goes to the console as it is met.
Merged merge_Files(const MergeRequest& request);

// Where this is in its environment, the program that merges tells on the descriptor of that number how far it
// is, a line for each step: a number up to merge_ProgressWhole.
inline constexpr char merge_ProgressVariable[] = "TRV_PROGRESS";
inline constexpr int merge_ProgressWhole = 200;

// The name of an alignment, and back: "natural", "head", "tail". False for any other word.
const char* merge_AlignName(MergeAlign align);
[[nodiscard]] bool merge_AlignOf(const std::string& name, MergeAlign& align);
