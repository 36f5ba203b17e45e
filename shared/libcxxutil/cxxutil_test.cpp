#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/process_start.h"
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

TEST(Report, SendsNoControlsToATerminal) {
    testing::internal::CaptureStderr();
    gen_console_raw("a\x1B[2J\tb\x9B\nc\xC2\x9B");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "a?[2J\tb\xEF\xBF\xBD\nc?");
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

TEST(Text, IsMadeSafeForATerminal) {
    EXPECT_EQ(text_printable("a\x1B\n\x7F\xC2\x80\xC2\x9F\xC2\xA0\x9B\xC3\xA4"),
              "a?????\xC2\xA0\xEF\xBF\xBD\xC3\xA4");
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

TEST(Paths, KnowOneFileByManyNames) {
    namespace fs = std::filesystem;
    std::string folder = (fs::temp_directory_path() / "paths_XXXXXX").string();
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    const auto in = [&](const char* name) { return folder + '/' + name; };
    std::ofstream(in("file")) << 1;
    fs::create_symlink("file", in("link"));
    fs::create_hard_link(in("file"), in("hard"));
    fs::create_symlink("none", in("dangling"));
    fs::create_symlink("loop", in("loop"));
    const struct {
        const char *one, *other;
        bool same;
    } rows[] = {{"file", "file", true},       {"file", "link", true},     {"hard", "link", true},
                {"file", "./link", true},     {"file", "none", false},    {"none", "none", true},
                {"none", "dangling", true},   {"none", "other", false},   {"none", "./none", true},
                {"no/such", "no/such", true}, {"no/such", "such", false}, {"loop", "none", false}};
    for (const auto& row : rows) {
        EXPECT_EQ(path_same_file(in(row.one), in(row.other)), row.same) << row.one << ' ' << row.other;
        EXPECT_EQ(path_same_file(in(row.other), in(row.one)), row.same) << row.one << ' ' << row.other;
    }
    fs::remove_all(folder);
}

TEST(ProcessStart, WritesFailWhereASignalWouldEndTheProgram) {
    process_LetWritesFail();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    EXPECT_EQ(::write(ends[1], "x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
    ::close(ends[1]);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    std::FILE* file = std::tmpfile();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
    const auto wrote = ::write(::fileno(file), "x", 1);
    const int why = errno;
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(wrote, -1);
    EXPECT_EQ(why, EFBIG);
    std::fclose(file);
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

TEST(Table, LosesAndGetsElementsInFront) {
    for (const uint32_t dropped : {0u, 1u, 255u, 256u, 700u, 999u, 1000u}) {
        Table<uint32_t> table;
        for (uint32_t i = 0; i < 1000; ++i) table.push_back(i);
        const size_t bytes = table.bytes();
        table.DropFront(dropped);
        EXPECT_LE(table.bytes() + (dropped / 256) * 256 * sizeof(uint32_t), bytes);
        for (uint32_t i = 1; i <= 600; ++i) table.push_front(5000 + i);
        for (uint32_t i = 0; i < 600; ++i) table.push_back(1000 + i);
        ASSERT_EQ(table.size(), 2200 - dropped);
        for (uint32_t i = 0; i < 600; ++i) ASSERT_EQ(table[i], 5600 - i);
        for (uint32_t i = 600; i < table.size(); ++i) ASSERT_EQ(table[i], i - 600 + dropped);
    }
}
