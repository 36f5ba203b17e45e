// check.
#include <cstdio>

#include "chronoweave/analysis/rules.h"
#include "chronoweave/cli/analysis_line.h"
#include "chronoweave/cli/commands.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

using Json = nlohmann::ordered_json;

namespace {

int tell_problems(const std::string& file, const std::vector<RuleProblem>& problems) {
    for (const RuleProblem& problem : problems)
        std::fprintf(stderr, "%s:%zu: %s\n", file.c_str(), problem.line, text_utf8(problem.what).c_str());
    return Exit_Usage;
}

const char* unit_word(RuleUnit unit) {
    return unit == RuleUnit::Percent ? "%" : unit == RuleUnit::Plain ? "count" : "s";
}

Json outcome_row(const TimingRule& rule, const RuleOutcome& outcome, const AnalysisLine& analysis,
                 const CommandLine& line) {
    Json row{{"line", rule.line},
             {"rule", text_utf8(rule.text)},
             {"passed", outcome.passed},
             {"worst", outcome.worst ? Json(*outcome.worst) : Json(nullptr)},
             {"unit", unit_word(outcome.unit)},
             {"time", outcome.time ? analysis.shownTime(*outcome.time) : Json(nullptr)},
             {"object", outcome.object ? Json(*outcome.object) : Json(nullptr)},
             {"message", text_utf8(outcome.message)}};
    if (!line.json) row["passed"] = outcome.passed ? "pass" : "FAIL";
    return row;
}

bool write_junit(const CommandLine& line, const std::vector<TimingRule>& rules,
                 const std::vector<RuleOutcome>& outcomes) {
    std::string why;
    if (file_replace(line.junit, rules_JUnit(std::string(path_file(line.path)), rules, outcomes), &why))
        return true;
    cli_Failure(line.junit + ": " + why);
    return false;
}

std::vector<Column> columns_of(const CommandLine& line) {
    std::vector<Column> columns{{"passed", -6}, {"line", 4}, {"rule", -60}};
    if (line.csv)
        columns.insert(
            columns.end(),
            {{"worst"}, {"unit"}, {"time", 0, ColumnForm::Seconds}, {"object", 0, ColumnForm::Id}});
    columns.push_back({"message"});
    return columns;
}

int put_outcomes(const CommandLine& line, const AnalysisLine& analysis, const std::vector<TimingRule>& rules,
                 const std::vector<RuleOutcome>& outcomes) {
    RowWriter rows(line, columns_of(line));
    if (!rows.good()) return Exit_Failed;
    size_t failed = 0;
    for (size_t i = 0; i < rules.size(); ++i) {
        failed += !outcomes[i].passed;
        rows.row(outcome_row(rules[i], outcomes[i], analysis, line));
    }
    rows.note(gen_format("%zu of %zu rules failed", failed, rules.size()));
    if (line.json) rows.row({{"rules", rules.size()}, {"failed", failed}});
    const bool written = line.junit.empty() || write_junit(line, rules, outcomes);
    const int status = closed(rows, analysis.named.opened);
    return failed > 0 || !written ? Exit_Failed : status;
}

}  // namespace

int command_Check(const CommandLine& line) {
    std::string text, why;
    if (!file_read_whole(line.subject, text, fileMostBytes, &why))
        return cli_UsageError(line.subject + ": " + why);
    std::vector<RuleProblem> problems;
    const std::vector<TimingRule> rules = rules_Read(text, problems);
    if (!problems.empty()) return tell_problems(line.subject, problems);
    if (rules.empty()) return cli_UsageError(line.subject + ": there is no rule in the file");
    for (const std::string& name : {line.junit, line.output})
        if (!name.empty() && name == line.subject)
            return cli_UsageError(name + ": the result would overwrite the rules");
    AnalysisLine analysis(line);
    int status = Exit_Usage;
    if (!analysis.open(status)) return status;
    for (const TimingRule& rule : rules)
        if (!rules_FitsLegend(rule, analysis.named.legend, why)) problems.push_back({rule.line, why});
    if (!problems.empty()) return tell_problems(line.subject, problems);
    std::vector<RuleOutcome> outcomes;
    for (const TimingRule& rule : rules)
        outcomes.push_back(rules_Check(analysis.source, rule, analysis.objects, analysis.words));
    return put_outcomes(line, analysis, rules, outcomes);
}
