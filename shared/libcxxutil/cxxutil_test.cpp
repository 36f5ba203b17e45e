#include <gtest/gtest.h>

#include <csignal>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/return_point.h"
#include "shared/libcxxutil/table.h"
#include "shared/libcxxutil/text.h"
#include "shared/libcxxutil/tick_text.h"

TEST(Report, ComposesTheLineOfEachLevel) {
    gen_set_short_name("/usr/bin/-tool");
    const struct {
        int level;
        const char* line;
    } rows[] = {{0, "tool: text\n"},
                {1, "tool: disaster: text\n"},
                {2, "tool: fatal: text\n"},
                {3, "tool: error: text\n"},
                {4, "tool: warning: text\n"},
                {5, "tool: info: text\n"},
                {6, "text\n"},
                {7, "tool: text\n"}};
    for (const auto& row : rows) EXPECT_EQ(gen_compose(row.level, "text"), row.line) << row.level;
    EXPECT_EQ(gen_compose(6, "ends\n"), "ends\n");
    gen_use_alternative_prefixes(true);
    EXPECT_EQ(gen_compose(2, "text"), "tool: ERROR: FATAL: text\n");
    EXPECT_EQ(gen_compose(0, "text"), "tool: ERROR: text\n");
    gen_use_alternative_prefixes(false);
}

TEST(Report, CountsByLevelAndTakesUserTextAsIs) {
    std::string seen;
    gen_set_report_sink([&](int, const std::string& line) { seen += line; });
    gen_set_console_sink([&](std::string_view text) { seen += text; });
    const unsigned errors = gen_error_count[3], total = gen_error_total;
    gen_set_short_name("t");
    gen_error("file %s", "100%s%n");
    gen_warning("w");
    gen_console("no newline");
    EXPECT_EQ(seen, "t: error: file 100%s%n\nt: warning: w\nChronoweave: no newline");
    EXPECT_EQ(gen_error_count[3], errors + 1);
    EXPECT_EQ(gen_error_total, total + 1);
    gen_set_report_sink({});
    gen_set_console_sink({});
}

TEST(ReturnPoint, CatchesAFaultAndNests) {
    gen_install_signal_handlers();
    EXPECT_FALSE(gen_guarded([] {
        EXPECT_TRUE(gen_guarded([] {}));
        std::raise(SIGSEGV);
        ADD_FAILURE() << "went on behind the fault";
    }));
    EXPECT_EQ(gen_return_depth(), 0);
    EXPECT_FALSE(gen_guarded([] { gen_return_to_point(); }));  // a second fault is caught as the first was
    std::signal(SIGSEGV, SIG_DFL);
}

TEST(Text, ScansNumbersLikeC) {
    const struct {
        const char* text;
        std::optional<uint64_t> value;
    } rows[] = {{"0", 0},
                {"10", 10},
                {"0x1F", 31},
                {"010", 8},
                {" 7", 7},
                {"-1", ~0ull},
                {"", {}},
                {"0x", {}},
                {"08", {}},
                {"1 ", {}},
                {"12a", {}},
                {"+3", 3},
                {"18446744073709551615", ~0ull},
                {"18446744073709551616", {}}};
    for (const auto& row : rows) EXPECT_EQ(scan_number(row.text), row.value) << row.text;
    EXPECT_EQ(scan_double(" 1.5e-3 "), 1.5e-3);
    EXPECT_FALSE(scan_double("nan") || scan_double("1,5") || scan_double(""));
    EXPECT_EQ(scan_bool("YES"), true);
    EXPECT_EQ(scan_bool("False"), false);
    EXPECT_FALSE(scan_bool("maybe"));
}

TEST(Text, UnquotesAndEscapes) {
    EXPECT_EQ(text_unquote("\"a\\\"b\\x41\\101\\n\" rest"), "a\"bAA\n");
    EXPECT_EQ(text_unquote("\"\\x02\""), std::string(1, '\x02'));
    EXPECT_EQ(text_unquote("plain"), "plain");
    size_t used = 0;
    text_unquote("\"ab\"cd", &used);
    EXPECT_EQ(used, 4u);
    const std::string odd = "a\\\"'b";
    EXPECT_EQ(text_unquote("\"" + text_escape(odd) + "\""), odd);
}

TEST(Text, ReplacesInvalidUtf8ByteByByte) {
    EXPECT_EQ(text_utf8("gr\xC3\xBCn"), "gr\xC3\xBCn");
    EXPECT_EQ(text_utf8("a\xFF\xC3"), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(text_utf8("\xED\xA0\x80"), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, MatchesWildCards) {
    EXPECT_TRUE(text_matches("T*1", "Task@1"));
    EXPECT_TRUE(text_matches("*", ""));
    EXPECT_TRUE(text_matches("a?c", "abc"));
    EXPECT_FALSE(text_matches("a?c", "ac"));
    EXPECT_TRUE(text_matches("a\\*b", "a*b"));
    EXPECT_FALSE(text_matches("a\\*b", "axb"));
    EXPECT_TRUE(text_matches("*a*a*a*a*b", std::string(200, 'a') + "b"));
}

TEST(TickText, HasTheDecimalsOfATickAndNoOthers) {
    constexpr uint64_t ns = 1000000000;
    const struct {
        TickScale scale;
        double time;
        int most;
        const char* text;
    } rows[] = {
        {{ns, 1}, 1700001.336, 10, "1700001.336000000"},  // the double is 1700001.3359999999
        {{ns, 1000}, 4.2516416711, 7, "4.251642"},
        {{ns, 1000000}, 7.0004, 4, "7.000"},
        {{ns, ns}, 12.4, 1, "12"},
        {{1000, ns}, 3e6, 1, "3000000"},  // a tick is a million units
        {{1000000, 1}, 0.00025, 9, "0.000250"},
        {{1000000, 1}, 0.0000006, 9, "0.000001"},  // between two ticks: the nearer one
        {{4, 1}, 0.25, 10, "0.25"},
        {{40000000, 1}, 25e-9, 10, "0.000000025"},
        {{24000000, 1}, 1.0 / 24000000, 10, "0.0000000417"},
        {{3, 1}, 0.6666, 3, "0.667"},
        {{3, 1}, 0.9999, 2, "1.00"},
        {{ns, 1}, 1.5, 2, "1.50"},
        {{ns, 1}, -0.000000001, 9, "-0.000000001"},
        {{ns, 1}, -1e-12, 9, "0.000000000"},
        {{60, 60}, 7, 3, "7"},
        {{ns, 1}, 1e22, 0, "10000000000000000000000"},
    };
    for (const auto& row : rows) EXPECT_EQ(tick_Text(row.scale, row.time, row.most), row.text);
    // Ticks that a double no longer tells apart.
    char text[TickWriter::room];
    EXPECT_EQ(std::string(text, TickWriter({ns, 1}, 9).put(INT64_MAX, text)), "9223372036.854775807");
    EXPECT_EQ(std::string(text, TickWriter({ns, 1}, 9).put(INT64_MIN, text)), "-9223372036.854775808");
    EXPECT_EQ(std::string(text, TickWriter({7, 1}, 17).put(INT64_MAX, text)),
              "1317624576693539401.00000000000000000");
}

TEST(Paths, CutTheLastComponentOnly) {
    EXPECT_EQ(path_extension("run.v2.trr"), "trr");
    EXPECT_EQ(path_extension("my.dir/run"), "");
    EXPECT_EQ(path_without_extension("my.dir/run.trr"), "my.dir/run");
    EXPECT_EQ(path_without_extension("my.dir/run"), "my.dir/run");
    EXPECT_EQ(path_directory("run"), ".");
    EXPECT_EQ(path_directory("/run"), "/");
    EXPECT_EQ(path_file("a/b"), "b");
}

TEST(Table, KeepsOrderAcrossChunksAndMiddleInsertions) {
    Table<int> table;
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(table.push_back(i), static_cast<uint32_t>(i));
    int* first = &table[0];
    table.insert(500, -1);
    EXPECT_EQ(first, &table[0]);
    EXPECT_EQ(table[499], 499);
    EXPECT_EQ(table[500], -1);
    EXPECT_EQ(table[1000], 999);
    table.insert(table.size(), 7);
    EXPECT_EQ(table.back(), 7);
}
