// check.
#include "chronoweave/cli/analysis_line.h"
#include "chronoweave/cli/commands.h"
#include "chronoweave/engine/rules.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

void tell_problems(const std::string& file, const std::vector<RuleProblem>& problems) {
    for (const RuleProblem& problem : problems)
        cli_SayLine(file + ':' + std::to_string(problem.line) + ": " + problem.what);
}

const char* unit_word(RuleUnit unit) {
    return unit == RuleUnit::Percent ? "%" : unit == RuleUnit::Plain ? "count" : "s";
}

bool write_junit(const CommandLine& line, const std::vector<TimingRule>& rules,
                 const std::vector<RuleOutcome>& outcomes) {
    const Result written =
        file_replace(line.junit, rules_JUnit(std::string(path_file(line.path)), rules, outcomes));
    if (!written) cli_Failure(written.text());
    return written.ok();
}

RowLayout layout_of(const CommandLine& line) {
    RowLayout layout{{{"line", 4},
                      {"rule", -60},
                      {"passed", -6, CellForm::Verdict},
                      {"worst"},
                      {"unit"},
                      {"time"},
                      {"object", 0, CellForm::Id},
                      {"message"}}};
    layout.tables = {"passed", "line", "rule", "message"};
    if (line.csv) layout.tables.insert(layout.tables.begin() + 3, {"worst", "unit", "time", "object"});
    return layout;
}

void put_outcome(RowWriter& rows, const AnalysisLine& analysis, const TimingRule& rule,
                 const RuleOutcome& outcome) {
    rows.row({rule.line, rule.text, outcome.passed, outcome.worst, unit_word(outcome.unit),
              outcome.time ? analysis.shownTime(*outcome.time) : Cell(), outcome.object, outcome.message});
}

int put_outcomes(const CommandLine& line, const AnalysisLine& analysis, const std::vector<TimingRule>& rules,
                 const std::vector<RuleOutcome>& outcomes) {
    RowWriter rows(line, layout_of(line), analysis.clock());
    if (!rows.good()) return Exit_Failed;
    size_t failed = 0;
    for (size_t i = 0; i < rules.size(); ++i) {
        failed += !outcomes[i].passed;
        put_outcome(rows, analysis, rules[i], outcomes[i]);
    }
    rows.note(gen_format("%zu of %zu rules failed", failed, rules.size()));
    if (line.json) rows.facts({{"rules", rules.size()}, {"failed", failed}});
    const bool written = line.junit.empty() || write_junit(line, rules, outcomes);
    const int status = closed(rows, analysis.named.opened);
    return failed > 0 || !written ? Exit_Failed : status;
}

}  // namespace

int command_Check(const CommandLine& line) {
    std::string text;
    if (const Result whole = file_read_whole(line.subject, text); !whole) return cli_UsageError(whole.text());
    std::vector<RuleProblem> problems;
    const std::vector<TimingRule> rules = rules_Read(text, problems);
    tell_problems(line.subject, problems);
    if (!problems.empty()) return Exit_Usage;
    if (rules.empty()) return cli_UsageError(line.subject + ": there is no rule in the file");
    AnalysisLine analysis(line);
    int status = Exit_Usage;
    if (!analysis.open(status)) return status;
    for (const TimingRule& rule : rules)
        if (const Result fits = result_First(rules_FitsLegend(rule, analysis.named.legend),
                                             rules_FitsClock(rule, analysis.source.clock));
            !fits)
            problems.push_back({rule.line, fits.text()});
    tell_problems(line.subject, problems);
    if (!problems.empty()) return analysis.refused();
    std::vector<RuleOutcome> outcomes;
    for (const TimingRule& rule : rules)
        outcomes.push_back(rules_Check(analysis.source, rule, analysis.objects, analysis.words));
    return put_outcomes(line, analysis, rules, outcomes);
}
