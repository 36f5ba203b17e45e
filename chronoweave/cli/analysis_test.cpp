// search, report and check.
#include <cmath>
#include <map>

#include "chronoweave/cli/cli_testing.h"

namespace {

double number(const Json& value) {
    return value.is_null() ? -1 : value.get<double>();
}

// The one row whose fields are these.
Json row_where(const std::vector<Json>& rows, const Json& fields) {
    for (const Json& row : rows) {
        bool fits = true;
        for (const auto& [key, value] : fields.items()) fits = fits && row.contains(key) && row[key] == value;
        if (fits) return row;
    }
    return {};
}

}  // namespace

TEST_F(CliTest, SearchesGiveRowsAndASummary) {
    const std::string base = small();
    const struct {
        Words words;
        std::vector<std::string> rows;
    } cases[] = {
        {{"event", "--event", "userevent"},
         {R"({"objectA":1026,"objectB":null,"timeA":0.00025,"timeB":null})",
          R"({"objectA":1026,"objectB":null,"timeA":0.00025,"timeB":null})",
          R"({"objectA":1026,"objectB":null,"timeA":0.0005,"timeB":null})", R"({"rows":3})"}},
        {{"event", "--ticks", "--from", "251", "--to", "1000", "--objects", "0x402,net"},
         {R"({"objectA":1026,"objectB":null,"timeA":500,"timeB":null})",
          R"({"objectA":1025,"objectB":null,"timeA":1000,"timeB":null})", R"({"rows":2})"}},
        {{"event", "--event", "UserEvent", "--limit", "1", "--ticks"},
         {R"({"objectA":1026,"objectB":null,"timeA":250,"timeB":null})", R"({"rows":1})"}},
        {{"status", "--status", "running", "--ticks", "--to", "400"},
         {R"({"objectA":1025,"objectB":1025,"timeA":0,"timeB":400})",
          R"({"rows":1,"max":400,"min":400,"ave":400})"}},
        {{"status", "--status", "pend"}, {R"({"rows":0,"max":null,"min":null,"ave":null})"}},
        {{"switch", "--ticks"}, {R"({"objectA":1025,"objectB":1025,"timeA":0,"timeB":0})", R"({"rows":1})"}},
        {{"pattern", "--begin", "UserEvent", "--end", "UserEvent", "--same-object", "--ticks"},
         {R"({"objectA":1026,"objectB":1026,"timeA":250,"timeB":250})",
          R"({"rows":1,"max":0,"min":0,"ave":0})"}},
        {{"interval", "--begin", "TaskChange", "--end", "Interrupt", "--objects", "net", "--ticks", "--from",
          "1000", "--to", "0"},
         {R"({"objectA":1025,"objectB":1025,"timeA":0,"timeB":1000})",
          R"({"rows":1,"max":1000,"min":1000,"ave":1000})"}},
        {{"event", "--ticks", "--from", "500", "--to", "250"}, {R"({"rows":0})"}},
    };
    for (const auto& c : cases) {
        Words words{"search"};
        words.insert(words.end(), c.words.begin(), c.words.end());
        words.insert(words.end(), {"--json", base});
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_EQ(lines_of(ran.out), c.rows) << testing::PrintToString(c.words);
    }
    EXPECT_EQ(run({"search", "status", "--status", "PEND", base}).err,
              "chronoweave: Did not find any 'PEND'.\n");
    const Words text = lines_of(run({"search", "status", "--status", "RUNNING", base, "--to", "0.0004"}).out);
    EXPECT_EQ(text.back(), "Number: 1, Interval (in Second): max=0.0004 min=0.0004 ave=0.0004");
    EXPECT_EQ(run({"search", "event", "--event", "UserEvent", "--csv", "--limit", "1", base}).out,
              "objectA,timeA,nameA\n0x402,0.000250,\n");
}

TEST_F(CliTest, SearchNamesAreCheckedInWords) {
    const std::string base = small();
    const struct {
        Words words;
        const char* message;
    } cases[] = {
        {{"search", "event", "--event", "UserEvnt"},
         "--event: there is no event \"UserEvnt\"; near: \"UserEvent\""},
        {{"search", "status", "--status", "RUNING"}, "near: \"RUNNING\""},
        {{"search", "event", "--objects", "0x999"}, "--objects: there is no object 0x999 in the trace"},
        {{"search", "event", "--objects", "0x401,"}, "there is no object \"\""},
        {{"search", "pattern", "--begin", "UserEvent"}, "--begin and --end are required"},
        {{"search", "interval", "--begin", "Timer", "--end", "Timer"}, "from one object to one object"},
        {{"search", "pattern", "--begin", "Timer", "--end", "Timer", "--same-object", "--begin-objects",
          "0x401", "--end-objects", "0x402"},
         "no common task"},
        {{"search", "event", "--status", "READY"}, "search event does not take --status"},
        {{"search", "event", "--limit", "-1"}, "--limit"},
        {{"search", "event", "--objects", ""}, "--objects: a value is missing"},
        {{"report", "load", "--idle", ""}, "--idle: a value is missing"},
        {{"search", "event", "-o", ""}, "--output: a value is missing"},
        {{"search", "event", "--from", "noon"}, "--from: not a time: noon"},
        {{"search", "thing"}, "KIND"},
        {{"report", "object"}, "--object is required"},
        {{"report", "objects", "--object", "net"}, "report objects does not take --object"},
        {{"report", "general", "--event", "Timer", "--switch"}, "one of --event, --status and --switch"},
        {{"report", "general", "--sort", "size"}, "--sort"},
        {{"report", "objects", "--from", "2", "--to", "1"}, "Invalid time range."},
    };
    for (const auto& c : cases) {
        Words words = c.words;
        words.push_back(base);
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 2) << testing::PrintToString(words);
        EXPECT_EQ(ran.out, "");
        EXPECT_NE(ran.err.find(c.message), std::string::npos) << ran.err;
    }
}

TEST_F(CliTest, ReportsAgreeWithTheRecordersAccount) {
    // Made from the recorder's own text: run time in nanoseconds of the objects that ran longest, switch-ins
    // and events by type. What a processor ran ahead of its first switch is not in it.
    const struct {
        uint32_t object;
        double nanoseconds;
    } account[] = {{0x1, 24900334},      {0x0, 21678673},     {0x46f000, 10551872}, {0x470800, 10393239},
                   {0x470001, 10214994}, {0x474401, 9495655}, {0x46dc00, 9116267},  {0x475401, 7700876},
                   {0x478401, 5219599},  {0x478400, 3025393}, {0x46c400, 2466740},  {0x46fc01, 1270081}};
    const auto times = rows_of({"report", "general", "--status", "RUNNING", sample()});
    for (const auto& one : account) {
        const Json row = row_where(times, {{"kind", "object"}, {"object", one.object}});
        EXPECT_NEAR(number(row["time"]), one.nanoseconds * 1e-9, 2e-9) << one.object;
    }
    const auto switches = rows_of({"report", "general", "--switch", sample()});
    EXPECT_EQ(switches.back()["kind"], "total");
    EXPECT_EQ(switches.back()["count"], 1252);
    const auto all = rows_of({"report", "objects", sample()});
    EXPECT_EQ(row_where(all, {{"kind", "switch"}})["count"], 1252);
    EXPECT_EQ(row_where(all, {{"kind", "event"}, {"name", "TaskChange"}})["count"], 1252);
    EXPECT_EQ(row_where(all, {{"kind", "category"}, {"name", "User events"}})["count"], 2848);
    EXPECT_EQ(row_where(all, {{"kind", "total"}, {"name", "events"}})["count"], 25587);
    const std::string keys = "kind name code count countPercent time timePercent ";
    for (const Json& row : all) EXPECT_EQ(keys_of(row), keys);
    // One object's times fill the range from when it is first seen.
    const auto one = rows_of({"report", "object", "--object", "0x46f000", sample()});
    EXPECT_NEAR(number(row_where(one, {{"name", "RUNNING"}})["time"]), 10551872e-9, 2e-9);
    EXPECT_NEAR(number(row_where(one, {{"name", "RUNNING"}})["timePercent"]), 100 * 10551872e-9 / 0.132730888,
                1e-3);
    const auto load = rows_of({"report", "load", "--idle", "*@idle", sample()});
    EXPECT_NEAR(number(row_where(load, {{"kind", "processor"}, {"processor", 0}})["time"]),
                0.132730888 - 21678673e-9, 1e-6);
}

TEST_F(CliTest, ChosenObjectsAreSortedAndShownAsTables) {
    const auto rising = rows_of({"report", "general", "--status", "RUNNING", "--sort", "time", "--increasing",
                                 "--objects", "0x46f000,0x470800,0x0", sample()});
    ASSERT_EQ(rising.size(), 4u);
    EXPECT_EQ(rising[0]["object"], 0x470800);
    EXPECT_EQ(rising[2]["object"], 0);
    EXPECT_EQ(keys_of(rising[0]), "kind name code count countPercent time timePercent object ");
    const Words lines = lines_of(run({"report", "objects", "--csv", small()}).out);
    EXPECT_EQ(lines[0], "kind,name,code,count,countPercent,time,timePercent");
    EXPECT_EQ(lines[4], "status,RUNNING,0x3,1,50.00,0.001001,100.00");
    const Ran empty =
        run({"report", "objects", "--ticks", "--from", "0", "--to", "400", small(), "-o", path("r")});
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(lines_of(content(path("r")))[1], "(from 0 to 400 Tick)");
}

TEST_F(CliTest, ChecksTellFailuresByStatusAndReports) {
    const auto write_rules = [&](const std::string& text) {
        return write("rules.txt", Bytes(text.begin(), text.end()));
    };
    std::string rules = write_rules(
        "# all well\ncount of \"UserEvent\" exactly 3\n"
        "status \"RUNNING\" of net never longer than 2ms\n");
    EXPECT_EQ(run({"check", rules, small()}).status, 0);
    rules = write_rules(
        "count of \"UserEvent\" exactly 4\nstatus \"RUNNING\" of \"net\" never longer than 1us\n"
        "count of \"UserEvent\" at most 9\n");
    const Ran ran = run({"check", rules, small(), "--json", "--junit", path("j.xml")});
    EXPECT_EQ(ran.status, 1);
    const Words lines = lines_of(ran.out);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[3], R"({"rules":3,"failed":2})");
    const Json second = Json::parse(lines[1]);
    EXPECT_EQ(keys_of(second), "line rule passed worst unit time object message ");
    EXPECT_EQ(second["object"], 0x401);
    EXPECT_NEAR(second["worst"].get<double>(), 0.001001, 1e-9);
    EXPECT_NE(content(path("j.xml")).find("tests=\"3\" failures=\"2\""), std::string::npos);
    rules = write_rules("count of \"UserEvent\"\n\nperiod of \"UserEvent\" 3parsec\n");
    const Ran wrong = run({"check", rules, small()});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.out, "");
    EXPECT_EQ(wrong.err, rules + ":1: expected a limit at the end of the line\n" + rules +
                             ":3: \"parsec\" is no unit; there are s, ms, us, ns, ticks and %\n");
    EXPECT_EQ(run({"check", write_rules("count of \"Xq\" at most 1"), small()}).err,
              rules + ":1: there is no event \"Xq\"\n");
    EXPECT_EQ(run({"check", path("none"), small()}).status, 2);
    EXPECT_EQ(run({"check", write_rules(std::string("\0\xFF\"\n..->,#", 8)), small()}).status, 2);
    const Ran nowhere =
        run({"check", write_rules("count of \"Timer\" at most 1"), small(), "--junit", path("no/j")});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.err.find(path("no/j")), std::string::npos);
}

TEST_F(CliTest, EmptyTracesGiveEmptyResults) {
    const std::string empty = write("none.trr", short_header(false, 1, 1, 1000000));
    for (const Words& words : {Words{"search", "event"},
                               {"search", "switch"},
                               {"report", "objects"},
                               {"report", "load"},
                               {"report", "general"}}) {
        Words all = words;
        all.insert(all.end(), {empty, "--json"});
        const Ran ran = run(all);
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_LE(lines_of(ran.out).size(), 1u) << ran.out;
    }
}

TEST_F(CliTest, RangesAndWordsThatMakeNoSenseAreRefused) {
    const std::string base = small();
    const struct {
        Words words;
        const char* said;
    } cases[] = {
        {{"report", "objects", "--from", "500", "--to", "600"}, "Invalid time range."},
        {{"report", "objects", "--from=-1", "--to", "0.0001"}, "Invalid time range."},
        {{"report", "object", "--object", "0x402", "--ticks", "--from", "100", "--to", "100"},
         "Invalid time range."},
        {{"report", "general", "--status", "running", "--from", "500", "--to", "600"}, "Invalid time range."},
        {{"search", "event", "--from=", "--json"}, "--from: a value is missing"},
        {{"search", "event", "--objects=", "--json"}, "--objects: a value is missing"},
        {{"search", "interval", "--begin", "UserEvent", "--end", "Refresh", "--objects", "net"},
         "can't bound an interval"},
    };
    for (const auto& c : cases) {
        Words words = c.words;
        words.push_back(base);
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 2) << testing::PrintToString(c.words);
        EXPECT_NE(ran.err.find(c.said), std::string::npos) << ran.err;
    }
    const Ran past = run({"search", "event", "--ticks", "--from=18446744073709551615", "--json", base});
    EXPECT_EQ(past.status, 0);
    EXPECT_EQ(lines_of(past.out), Words{R"({"rows":0})"}) << "the largest tick is behind the trace";
}
