// Timing checks: requirements on a trace in the words of its legend, one a line of a small text file, and
// what became of them. docs/manual/checks.md tells the form of the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/engine/search_names.h"
#include "shared/libcxxutil/result.h"

enum class RuleUnit { Plain, Seconds, Ticks, Percent };

// A number with its unit, as written; seconds for all units of time but ticks.
struct RuleValue {
    double number = 0;
    RuleUnit unit = RuleUnit::Plain;
};

enum class RuleKind {
    Interval,       // from an event to another
    StatusStretch,  // every single stretch in a status
    StatusTotal,    // all the time in a status
    Load,           // of a processor
    Count,          // of events
    Period          // of an event
};

struct TimingRule {
    RuleKind kind = RuleKind::Count;
    size_t line = 0;                      // in the file, from 1
    std::string text;                     // without comment
    std::string event, endEvent, status;  // names
    std::string object = "*";             // id, name, pattern or *
    std::string endObject;                // of an interval between two objects; empty for the same one
    std::vector<std::string> without;     // objects that are no load
    std::optional<uint32_t> processor;    // none: each
    std::optional<RuleValue> least, most;
    RuleValue period, jitter;
    std::optional<RuleValue> from, to;  // the range, its end included
    bool orNone = false;                // passes when there is nothing to measure
};

// A line that can't be taken.
struct RuleProblem {
    size_t line = 0;
    std::string what;
};

// Reads the text of a file of rules. Rules with problems are left out; all problems are told.
std::vector<TimingRule> rules_Read(std::string_view text, std::vector<RuleProblem>& problems);
// Fails when a name that the rule has of the legend is unknown there.
Result rules_FitsLegend(const TimingRule& rule, const Legend& legend);
// A value of time in seconds.
double rules_Seconds(const RuleValue& value, const TimeBase& clock);
// Fails when the range of a rule ends ahead of its begin by this clock. Where both ends have one
// unit rules_Read has found it.
Result rules_FitsClock(const TimingRule& rule, const TimeBase& clock);

struct RuleOutcome {
    bool passed = false;
    std::string message;          // one sentence: the worst case and where it is
    std::optional<double> worst;  // seconds, percent or a number, by unit
    RuleUnit unit = RuleUnit::Plain;
    std::optional<double> time;  // where the worst case begins; seconds from the first event
    std::optional<uint32_t> object;
    bool damaged = false;  // some of the range can't be read
};
// Tests one rule whose names fit the legend and whose range fits the clock. known are the objects of the
// trace, ascending.
RuleOutcome rules_Check(AnalysisSource& source, const TimingRule& rule, const std::vector<uint32_t>& known,
                        const AnalysisWords& words);

// A JUnit report: one test case per rule, in a suite of the trace's name. Valid UTF-8 XML whatever the names
// hold.
std::string rules_JUnit(const std::string& suite, const std::vector<TimingRule>& rules,
                        const std::vector<RuleOutcome>& outcomes);
