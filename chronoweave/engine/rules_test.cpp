#include "chronoweave/engine/rules.h"

#include "chronoweave/engine/engine_testing.h"
#include "shared/libcxxutil/report.h"

class RulesTest : public AnalysisTest {
  protected:
    // "pass: MESSAGE" or "fail: MESSAGE", or the problem.
    std::string check(const std::string& text) {
        std::vector<RuleProblem> problems;
        const auto rules = rules_Read(text, problems);
        if (!problems.empty()) return gen_format("%zu: ", problems[0].line) + problems[0].what;
        if (rules.size() != 1) return "no rule";
        const Result fits =
            result_First(rules_FitsLegend(rules[0], legend_), rules_FitsClock(rules[0], source_.clock));
        if (!fits) return fits.text();
        const ObjectNames names(*store_, '@');
        const RuleOutcome outcome =
            rules_Check(source_, rules[0], everyone(), analysis_WordsOfLegend(legend_, names, source_.clock));
        return (outcome.passed ? "pass: " : "fail: ") + outcome.message;
    }
    void OpenTrace() {
        OpenReady({name_event(0, 0x400, "net"), switch_to(0, 0x400), user(10, 0x400, 2), user(12, 0x400, 3),
                   user(20, 0x400, 2), user(25, 0x400, 3), switch_to(30, 0x800), user(30, 0x400, 2),
                   user(40, 0x800, 3), status_change(80, 0x800, mt_Pend), user(100, 0x400, 3)},
                  "Korvantis", CrowdedLegend());
    }
};

TEST_F(RulesTest, RulesTellTheWorstCaseAndWhereItIs) {
    OpenTrace();
    const struct {
        const char *rule, *result;
    } cases[] = {
        {"interval \"Take\" -> \"Give\" on net max 5ms in 0s..28ms",
         "pass: the worst interval is 5 ms at 0.020 s on 0x400 (net); 0 of 2 are outside"},
        {"interval \"take\" -> \"GIVE\" on 0x400 max 2.5 ms  # comment \"",
         "fail: the worst interval is 70 ms at 0.030 s on 0x400 (net); wanted at most 2.5 ms; 2 of 3 "
         "are "
         "outside"},
        {"interval \"Take\" -> \"Give\" from net to 0x800 between 1ms and 100ms",
         "pass: the worst interval is 30 ms at 0.010 s on 0x400 (net)"},
        {"interval \"Give\" -> \"Status\" on 0x400 max 1s", "fail: no \"Give\" is followed by \"Status\""},
        {"interval \"Give\" -> \"Status\" on 0x400 max 1s or none",
         "pass: no \"Give\" is followed by \"Status\""},
        {"status \"Running\" of * never longer than 50ms",
         "pass: the worst stretch is 50 ms at 0.030 s on 0x800; 0 of 2 are outside"},
        {"status \"Running\" of * never longer than 49ticks",
         "fail: the worst stretch is 50 ms at 0.030 s on 0x800; wanted at most 49 ms; 1 of 2 are "
         "outside"},
        {"status \"EvWait\" of * never longer than 1ms", "pass: the status does not occur"},
        {"status \"Running\" of 0x400 at least 40% in 0s..60ms", "pass: the worst is 50% on 0x400 (net)"},
        {"status \"Running\" of \"n*\" at most 20ms",
         "fail: the worst is 30 ms on 0x400 (net); wanted at most 20 ms"},
        {"load of processor 0 at most 75% in 0..100ms",
         "fail: the load of processor 0 is 80%; wanted at most 75%"},
        {"load of processor * at most 55% without net in 0s..100ms", "pass: the load of processor 0 is 50%"},
        {"load of processor 3 at most 75%", "fail: no object belongs to processor 3"},
        {"count of \"Take\" exactly 3", "pass: counted 3"},
        {"count of \"Take\" on 0x400 in 15ms.. between 3 and 4",
         "fail: counted 2 on 0x400 (net); wanted 3 to 4"},
        {"count of \"Call\" at most 0", "pass: counted 0"},
        {"period of \"Take\" on * 10ms jitter 0s in 0s..40ms",
         "pass: the worst period is 10 ms at 0.010 s on 0x400 (net); "
         "0 of 2 are outside"},
        {"period of \"Give\" on 0x400 10ms jitter 5ms",
         "fail: the worst period is 75 ms at 0.025 s on 0x400 (net); wanted 10 ms, jitter 5 ms; 1 of 2 "
         "are "
         "outside"},
        {"period of \"Switch\" 1s", "fail: \"Switch\" does not occur twice on one object"},
        {"count of \"Take\" on \"nett\" at most 1", "fail: there is no object \"nett\"; near: \"net\""},
        {"count of \"Take\" at most 3 in 20ms..20ms", "pass: counted 1"},
    };
    for (const auto& c : cases) EXPECT_EQ(check(c.rule), c.result) << c.rule;
}

TEST_F(RulesTest, WhatDoesNotEndInTimeFails) {
    OpenTrace();
    const struct {
        const char *rule, *result;
    } cases[] = {
        // The Take at 30 ms ends at 100 ms.
        {"interval \"Take\" -> \"Give\" on net max 20ms in 0s..50ms",
         "pass: the worst interval is 5 ms at 0.020 s on 0x400 (net); 0 of 2 are outside"},
        {"interval \"Take\" -> \"Give\" on net max 20ms in 0s..51ms",
         "fail: the worst interval is 21 ms at 0.030 s on 0x400 (net), and has no end in the range; wanted "
         "at "
         "most 20 ms; 1 of 3 are outside"},
        {"interval \"Take\" -> \"Give\" on net at least 4ms in 0s..90ms",
         "fail: the worst interval is 2 ms at 0.010 s on 0x400 (net); wanted at least 4 ms; 1 of 2 are "
         "outside"},
        {"interval \"Give\" -> \"Status\" on 0x400 max 80ms or none",
         "fail: the worst interval is 88 ms at 0.012 s on 0x400 (net), and has no end in the range; wanted "
         "at "
         "most 80 ms"},
        {"interval \"Give\" -> \"Status\" on 0x400 max 88ms or none",
         "pass: no \"Give\" is followed by \"Status\""},
        {"interval \"Take\" -> \"Status\" from net to 0x800 max 69ms",
         "fail: the worst interval is 70 ms at 0.010 s on 0x400 (net); wanted at most 69 ms"},
        {"period of \"Take\" on * 10ms jitter 0s in 0s..41ms",
         "fail: the worst period is 11 ms at 0.030 s on 0x400 (net), and no further one comes in the range; "
         "wanted 10 ms, jitter 0 s; 1 of 3 are outside"},
        {"period of \"Take\" on * 10ms jitter 59ms",
         "fail: the worst period is 70 ms at 0.030 s on 0x400 (net), and no further one comes in the range; "
         "wanted 10 ms, jitter 59 ms; 1 of 3 are outside"},
        {"period of \"Take\" on * 10ms jitter 60ms",
         "pass: the worst period is 10 ms at 0.010 s on 0x400 (net); 0 of 2 are outside"},
        {"period of \"Take\" on * 10ms in 25ms.. or none",
         "fail: the worst period is 70 ms at 0.030 s on 0x400 (net), and no further one comes in the range; "
         "wanted 10 ms, jitter 0 s"},
    };
    for (const auto& c : cases) EXPECT_EQ(check(c.rule), c.result) << c.rule;
}

TEST_F(RulesTest, ARangeIsHeldAgainstTheTrace) {
    OpenTrace();
    const struct {
        const char *rule, *result;
    } cases[] = {
        {"count of \"Take\" exactly 3 in 0s..100ms", "pass: counted 3"},
        {"count of \"Take\" exactly 3 in 0s..2s",
         "pass: counted 3; the range reaches past the trace, which ends at 0.101 s"},
        {"interval \"Give\" -> \"Status\" on 0x400 max 1s or none in 0s..200ms",
         "pass: no \"Give\" is followed by \"Status\"; the range reaches past the trace, which ends at 0.101 "
         "s"},
        {"count of \"Take\" at most 3 in 1s..2s",
         "fail: the range begins behind the trace, which ends at 0.101 s"},
        {"count of \"Take\" at most 1 in 50ms..20ms", "1: the range ends before it begins"},
        {"count of \"Take\" at most 1 in 2ticks..1ticks", "1: the range ends before it begins"},
        {"count of \"Take\" at most 1 in 1tick..0", "1: the range ends before it begins"},
        {"count of \"Take\" at most 1 in 20ms..19ticks", "the range ends before it begins"},
        {"count of \"Take\" at most 1 in 20ms..20ticks", "pass: counted 1"},
    };
    for (const auto& c : cases) EXPECT_EQ(check(c.rule), c.result) << c.rule;
}

TEST_F(RulesTest, WrongLinesAreToldByNumber) {
    OpenTrace();
    const struct {
        const char *text, *problem;
    } cases[] = {
        {"", "no rule"},
        {"# nothing\n\n  \t", "no rule"},
        {"\n\ncount", "3: expected \"of\" at the end of the line"},
        {"count of Take at most 1", "1: expected an event in double quotes, not \"Take\""},
        {"count of \"Take", "1: a text in double quotes does not end"},
        {"count of \"Take\\\" at most 1", "1: a text in double quotes does not end"},
        {"count of \"Take\" at most", "1: expected a number at the end of the line"},
        {"count of \"Take\" at most 1 at most 2", "1: the limit is given twice"},
        {"count of \"Take\" at most 1.5", "1: a count is a whole number"},
        {"count of \"Take\"", "1: expected a limit at the end of the line"},
        {"count of \"Take\" at most 1 in 2s", "1: expected \"..\" at the end of the line"},
        {"count of \"Take\" at most 1 in 2s..3",
         "1: the range's end needs a unit of time: s, ms, us, ns or ticks"},
        {"count of \"Take\" between 3 and 2", "1: the lower limit is above the upper one"},
        {"load of processor 1024 at most 5%", "1: expected the number of a processor, or *, not \"1024\""},
        {"load of processor 1 at most 5ms", "1: a load is given in %"},
        {"interval \"a\" \"b\" max 3ms", "1: expected \"->\", not \"b\""},
        {"interval \"a\" -> \"b\" max 1e999s",
         "1: \"e999s\" is no unit; there are s, ms, us, ns, ticks and %"},
        {"period of \"a\" 0s", "1: a period must be longer than 0"},
        {"status \"Running\" of * at most 5% at least 1s", "1: one limit is a time and the other a share"},
        {"count of \"Tak\" at most 1", "there is no event \"Tak\"; near: \"Take\""},
        {"status \"Idle\" of * at most 1s", "there is no status \"Idle\""},
    };
    for (const auto& c : cases) EXPECT_EQ(check(c.text), c.problem) << c.text;
}

TEST_F(RulesTest, JUnitReportsHoldAnyName) {
    TimingRule rule;
    rule.line = 3;
    rule.text = "count of \"<a & b>\\x01\xFF\xEF\xBF\xBF\" at most 1";
    RuleOutcome passed, failed;
    passed.passed = true;
    passed.message = "counted 0";
    failed.message = "1 < \"2\"\x02";
    EXPECT_EQ(
        rules_JUnit("a&b", {rule, rule}, {passed, failed}),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites tests=\"2\" failures=\"1\" errors=\"0\">\n"
        "  <testsuite name=\"a&amp;b\" tests=\"2\" failures=\"1\" errors=\"0\">\n"
        "    <testcase classname=\"a&amp;b\" name=\"line 3: count of &quot;&lt;a &amp; "
        "b&gt;\\x01\xEF\xBF\xBD\xEF\xBF\xBD&quot; at most 1\">\n"
        "      <system-out>counted 0</system-out>\n    </testcase>\n"
        "    <testcase classname=\"a&amp;b\" name=\"line 3: count of &quot;&lt;a &amp; "
        "b&gt;\\x01\xEF\xBF\xBD\xEF\xBF\xBD&quot; at most 1\">\n"
        "      <failure message=\"1 &lt; &quot;2&quot; \"/>\n    </testcase>\n"
        "  </testsuite>\n</testsuites>\n");
}
