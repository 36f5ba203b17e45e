// What search, report and check share: the opened trace with its objects and names, the range of the command
// line, and the objects that it names.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/cli/named_store.h"
#include "chronoweave/engine/search.h"
#include "chronoweave/engine/search_names.h"
#include "chronoweave/engine/trace_facts.h"
#include "shared/libcxxutil/progress_bar.h"

class AnalysisLine : public TraceFacts {
  public:
    explicit AnalysisLine(const CommandLine& line) : line_(line), bar_(!line.quiet) {}
    // False when the command is over, with its exit status in status. A range that is no range is a wrong
    // line.
    bool open(int& status);

    NamedStore named;
    double from = 0, to = 0;  // in seconds

    // Comma-separated ids and names of an option, ascending; nothing, with the message said, when one is
    // none.
    std::optional<std::vector<uint32_t>> objectList(const std::string& text, const char* option,
                                                    bool nameMeansAll = false) const;
    // A request about the range and the line's objects, all when it names none; nothing, with the message
    // said, when one is none.
    std::optional<SearchRequest> request() const;
    // A name of an option as a row; nothing, with the message said, when there is none.
    std::optional<int32_t> event(const std::string& name, const char* option) const;
    std::optional<int32_t> status(const std::string& name, const char* option) const;
    // The object's name, null when it has none.
    Cell nameOf(uint32_t object) const;
    // A time of the trace as the command shows it: seconds, or store ticks with --ticks; and a length, which
    // is the difference of two, or a sum of such.
    Cell shownTime(double time) const;
    Cell shownLength(double length) const;
    // A mean of lengths, which need not be whole ticks.
    Cell shownMean(double length) const;
    // Of the store, for the rows; a store may lack its clock.
    uint64_t clock() const { return std::max<uint64_t>(1, mt_GetTicksPerSecond(named.store())); }
    // The same for a sentence, with its unit.
    std::string shownRange(double length) const;
    // Closes the output and gives the exit status: that of a failure when some of the range, the first of it
    // lost, could not be read; null when all was.
    int finish(RowWriter& rows, const TimeGap* lost) const;
    // The exit status of a line that does not fit the trace, of which the user was told.
    int refused() const;
    void say(std::string_view message) const;  // on standard error, unless quiet

  private:
    bool takeRange();
    const CommandLine& line_;
    ProgressBar bar_;
};
