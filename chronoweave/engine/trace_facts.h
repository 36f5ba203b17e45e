// What the questions of one command know of a trace: where to walk, the objects with their names, and the
// words and the unit of time that texts use. It is of the moment when the command began; the store and the
// legend must outlive it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/engine/search_texts.h"

struct TraceFacts {
    TraceFacts() = default;
    TraceFacts(const TraceFacts&) = delete;
    TraceFacts& operator=(const TraceFacts&) = delete;
    // Takes up a source whose store is there. separator joins the parts of names; 0 for none. The words are
    // the legend's, in seconds.
    void Take(const AnalysisSource& of, char separator);

    AnalysisSource source;
    ObjectNames names;
    AnalysisWords words;            // borrows names
    std::vector<uint32_t> objects;  // alive in the whole trace, ascending

    // Any time of the time base in the unit shown, with at most so many decimals (see laTime_Digits).
    std::string Shown(double time, int decimals) const;
    // The number at the start of a text, in the time base; what stands behind it is passed over. None when
    // there is no number.
    std::optional<double> Scan(std::string_view text) const;
};

// " It was stopped at 1.5 Seconds." for a walk that did not come to its end, and what could not be read of
// its range, if anything; empty for one that saw all.
std::string analysis_EndText(const TraceFacts& facts, bool stopped, double reached, const TimeGap* lost);
