#include "bench/measure.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <map>

namespace {

double now(Clock clock) {
    timespec time{};
    ::clock_gettime(clock == Clock::Wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double take_turn(const TurnOptions& options, const std::function<void()>& work) {
    const double start = now(options.clock);
    double took = 0;
    int times = 0;
    do {
        work();
        ++times;
        took = now(options.clock) - start;
    } while (took < options.least);
    return took / times;
}

std::map<std::string, Outcome>& outcomes() {
    static std::map<std::string, Outcome> all;
    return all;
}

std::string milliseconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, seconds < 0.01 ? "%.3f" : "%.1f", seconds * 1e3);
    return text;
}

void print_row(const std::string& name, const Outcome& outcome) {
    if (!outcome.trouble.empty()) {
        std::printf("%-44s %s\n", name.c_str(), outcome.trouble.c_str());
        return;
    }
    char value[40], bound[40] = "-";
    std::snprintf(value, sizeof value, "%.2f %s", outcome.value, outcome.unit);
    if (outcome.limit != Outcome::NoLimit)
        std::snprintf(bound, sizeof bound, "%s %g %s",
                      outcome.limit == Outcome::AtMost ? "<=" : ">=", outcome.bound, outcome.unit);
    const bool turned = outcome.turns.subject > 0;
    std::printf("%-44s %11s %11s %18s %18s  %s\n", name.c_str(),
                turned ? milliseconds(outcome.turns.subject).c_str() : "-",
                turned ? milliseconds(outcome.turns.baseline).c_str() : "-", value, bound,
                outcome.limit == Outcome::NoLimit ? "-"
                : outcome.passes()                ? "pass"
                                                  : "FAIL");
}

class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override {
        std::printf("%-44s %11s %11s %18s %18s  %s\n", "benchmark", "subject ms", "baseline ms", "measured",
                    "limit", "result");
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const auto found = outcomes().find(run.run_name.function_name);
            if (found != outcomes().end()) print_row(found->first, found->second);
        }
        std::fflush(stdout);
    }
};

}  // namespace

double measure_Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.empty() ? 0 : values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Turns measure_Turns(const TurnOptions& options, const std::function<void(bool subject)>& before,
                    const std::function<void()>& subject, const std::function<void()>& baseline) {
    std::vector<double> subjects, baselines, ratios;
    for (int turn = 0; turn <= options.count; ++turn) {
        if (before) before(true);
        const double s = take_turn(options, subject);
        if (before) before(false);
        const double b = take_turn(options, baseline);
        if (turn == 0) continue;
        subjects.push_back(s);
        baselines.push_back(b);
        ratios.push_back(s / b);
    }
    return {measure_Median(subjects), measure_Median(baselines), measure_Median(ratios)};
}

bool Outcome::passes() const {
    if (!trouble.empty()) return false;
    return limit == NoLimit || (limit == AtMost ? value <= bound : value >= bound);
}

Outcome outcome_OfRatio(const Turns& turns, std::optional<double> atMost) {
    Outcome outcome;
    outcome.turns = turns;
    outcome.value = turns.ratio;
    outcome.unit = "x";
    if (atMost) {
        outcome.limit = Outcome::AtMost;
        outcome.bound = *atMost;
    }
    return outcome;
}

Outcome outcome_OfTrouble(const std::string& why) {
    Outcome outcome;
    outcome.trouble = why;
    return outcome;
}

void measure_Register(const std::string& name, std::function<Outcome()> run) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [name, run](benchmark::State& state) {
                                     for (auto _ : state) {
                                         const Outcome outcome = run();
                                         outcomes()[name] = outcome;
                                         if (!outcome.trouble.empty()) {
                                             state.SkipWithError(outcome.trouble.c_str());
                                             break;
                                         }
                                         state.SetIterationTime(outcome.turns.subject);
                                         state.SetLabel(outcome.unit);
                                         state.counters["ratio"] = outcome.turns.ratio;
                                         state.counters["value"] = outcome.value;
                                         state.counters["pass"] = outcome.passes();
                                         if (outcome.limit != Outcome::NoLimit)
                                             state.counters["limit"] = outcome.bound;
                                     }
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

int measure_RunAll() {
    TableReporter table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return static_cast<int>(std::count_if(outcomes().begin(), outcomes().end(),
                                          [](const auto& row) { return !row.second.passes(); }));
}
