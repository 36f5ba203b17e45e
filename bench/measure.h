// How the benchmarks measure: a subject and a plain baseline take turns in one run, and the median of the
// ratios of the turns is what counts, so that a busy machine slows both alike. Each outcome becomes one row
// of a table.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Seconds, medians over all turns.
struct Turns {
    double subject = 0, baseline = 0;
    double ratio = 0;  // median of the ratios of the turns, not the ratio of the medians
};

enum class Clock { Wall, Processor };
struct TurnOptions {
    int count = 5;
    double least = 0;  // seconds: shorter work is repeated within a turn until it takes that long
    Clock clock = Clock::Wall;
};
// Takes turns, after one of each that doesn't count. before is called ahead of each, outside the time, with
// true for the subject; it may be empty.
Turns measure_Turns(const TurnOptions& options, const std::function<void(bool subject)>& before,
                    const std::function<void()>& subject, const std::function<void()>& baseline);
double measure_Median(std::vector<double> values);

// What a benchmark has to show. The limit holds for value.
struct Outcome {
    Turns turns;
    double value = 0;
    const char* unit = "";
    enum Limit { NoLimit, AtMost, AtLeast } limit = NoLimit;
    double bound = 0;
    std::string trouble;  // not empty: could not be measured, and why

    bool passes() const;
};
// Outcomes that are about their ratio.
Outcome outcome_OfRatio(const Turns& turns, std::optional<double> atMost);
Outcome outcome_OfTrouble(const std::string& why);

// Registers a benchmark that runs once; its counters are "ratio", "value", "limit" and "pass".
void measure_Register(const std::string& name, std::function<Outcome()> run);
// Runs those that the command line of Google Benchmark chooses and prints the table as it grows. The number
// of outcomes that failed.
int measure_RunAll();
