#include <sys/stat.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <set>

#include "chronoweave/cli/cli_testing.h"

TEST_F(CliTest, KeysAreTheContract) {
    const struct {
        Words words;
        const char* keys;
    } cases[] = {
        {{"info"},
         "base formatVersion ticksPerSecond os osKind bigEndian checkpointInterval blocks events firstTick "
         "endTick duration "},
        {{"import", "-o", path("imported")}, "base events dropped badBytes unread seconds "},
        {{"events", "--first", "2"}, "seq tick time type subtype object objectName event extra "},
        {{"state", "--at", "0.001"}, "object status statusName priority name "},
        {{"objects"}, "object name "},
    };
    for (const auto& c : cases) {
        Words words = c.words;
        words.push_back(small());
        const auto rows = rows_of(words);
        ASSERT_FALSE(rows.empty());
        for (const Json& row : rows) EXPECT_EQ(keys_of(row), c.keys) << words[0];
    }
    // "text" comes last, and only where the configure file has a format and the event has data for it.
    const std::string config = path("own.tc");
    std::filesystem::copy_file(CW_SOURCE_DIR "/defaults/chrono_weave/korvantis.tc", config);
    std::ofstream(config, std::ios::app)
        << "TRV_Event:0x4:0x7:Probe:user_event:TRV_Extra=\"n=%4D\":TRV_Visible\n";
    const auto events = rows_of({"events", "--config", config, small()});
    EXPECT_EQ(keys_of(events[2]), "seq tick time type subtype object objectName event extra text ");
    EXPECT_EQ(events[2]["event"], "Probe");
    EXPECT_EQ(events[2]["text"], "n=0");
    EXPECT_EQ(events[0]["text"], rows_of({"events", small()}).at(0)["text"]);
    EXPECT_FALSE(events[1].contains("text"));
}

TEST_F(CliTest, InfoTellsTheFacts) {
    const Json facts = rows_of({"info", small()}).at(0);
    EXPECT_EQ(facts, Json::parse(R"({"base":")" + path("small") +
                                 R"(","formatVersion":3,"ticksPerSecond":1000000,"os":"KORVANTIS","osKind":1,
        "bigEndian":false,"checkpointInterval":100,"blocks":1,"events":6,"firstTick":0,"endTick":1001,
        "duration":0.001001})"));
    EXPECT_EQ(rows_of({"info", "--ticks", path("small.trs")}).at(0)["duration"], 1001);
    EXPECT_NE(run({"info", path("small")}).out.find("\nevents               6\n"), std::string::npos);
}

TEST_F(CliTest, ImportCountsWhatItLeavesOut) {
    Bytes bytes = small_trace();
    append(bytes, {0, 0x53, 2, 'a', 'b', 16, 1, 2, 3});  // two bad bytes, a short record, a cut one
    write("damaged.trr", bytes);
    std::filesystem::create_directory(path("elsewhere"));
    const std::string base = path("elsewhere/x");
    const Json counts = rows_of({"import", path("damaged.trr"), "-o", base}).at(0);
    EXPECT_EQ(counts["base"], base);
    EXPECT_EQ(counts["events"], 6);
    EXPECT_EQ(counts["dropped"], 1);
    EXPECT_EQ(counts["badBytes"], 2);
    EXPECT_EQ(counts["unread"], 4);
    EXPECT_TRUE(std::filesystem::exists(base + ".trv"));
    EXPECT_FALSE(std::filesystem::exists(path("damaged.trs")));
    EXPECT_EQ(run({"import", base + ".trs"}).status, 1);
    rows_of({"import", path("damaged.trr"), "-o", base, "--checkpoint", "300"});
    EXPECT_EQ(rows_of({"info", base}).at(0)["checkpointInterval"], 300);
    for (const char* wrong : {"0", "150", "x", "4294967300"}) {
        const Ran ran = run({"import", path("damaged.trr"), "-o", base, "--checkpoint", wrong});
        EXPECT_EQ(ran.status, 2) << wrong;
        EXPECT_NE(ran.err.find(std::string("--checkpoint: ")), std::string::npos) << ran.err;
        EXPECT_NE(ran.err.find(wrong), std::string::npos) << ran.err;
    }
}

TEST_F(CliTest, RangesAreHalfOpen) {
    const std::string base = small();
    using Numbers = std::vector<int>;
    const struct {
        Words range;
        Numbers sequences;
    } cases[] = {
        {{}, {1, 2, 3, 4, 5, 6}},
        {{"--from", "0.00025"}, {3, 4, 5, 6}},
        {{"--from", "0.000250001"}, {5, 6}},
        {{"--from", "0.00025", "--to", "0.0005"}, {3, 4}},
        {{"--to", "0.00025"}, {1, 2}},
        {{"--to", "0.001"}, {1, 2, 3, 4, 5}},
        {{"--to", "0"}, {}},
        {{"--from", "0.0005", "--to", "0.00025"}, {}},
        {{"--from", "1e300"}, {}},
        {{"--ticks", "--from", "250", "--to", "500"}, {3, 4}},
        {{"--ticks", "--from", "251", "--to", "0x1f5"}, {5}},
        {{"--first", "3"}, {3, 4, 5, 6}},
        {{"--first", "0", "--count", "2"}, {1, 2}},
        {{"--count", "1"}, {1}},
        {{"--first", "7"}, {}},
        {{"--object", "0x402"}, {3, 4, 5}},
        {{"--object", "0x402", "--first", "2", "--count", "2"}, {3, 4}},
        {{"--object", "1025", "--from", "0.00025"}, {6}},
        {{"--object", "7"}, {}},
    };
    for (const auto& c : cases) {
        Words words{"events", base};
        words.insert(words.end(), c.range.begin(), c.range.end());
        EXPECT_EQ(column<int>(rows_of(words), "seq"), c.sequences) << testing::PrintToString(c.range);
    }
    EXPECT_EQ(column<int>(rows_of({"objects", base, "--to", "0.0001"}), "object"), Numbers{0x401});
    EXPECT_EQ(column<int>(rows_of({"objects", base}), "object"), (Numbers{0x401, 0x402}));
}

TEST_F(CliTest, TimesReadBackAsTheyAreShown) {
    const auto events = rows_of({"events", "--ticks", sample()});
    ASSERT_EQ(events.size(), 25587u);
    EXPECT_EQ(column<uint64_t>(events, "tick"), column<uint64_t>(events, "time"));
    const Words shown = lines_of(run({"events", "--csv", sample()}).out);
    ASSERT_EQ(shown.size(), events.size() + 1);
    for (size_t i = 1; i < events.size(); i += 1999) {
        if (events[i - 1]["tick"] == events[i]["tick"]) continue;
        std::istringstream line(shown[i + 1]);
        std::string cell;
        for (int column = 0; column < 3; ++column) std::getline(line, cell, ',');
        const std::string end = std::to_string(std::stod(cell) + 1e-4);
        const Ran ran = run({"events", "--json", "--from", cell, "--to", end, sample()});
        EXPECT_EQ(Json::parse(ran.out.substr(0, ran.out.find('\n')))["seq"], i + 1) << cell;
    }
}

TEST_F(CliTest, SequencesAskBehindACheckpoint) {
    const int interval = rows_of({"info", sample()})[0]["checkpointInterval"].get<int>();
    const auto first_two = [&](int first) {
        return column<int>(rows_of({"events", "--first", std::to_string(first), "--count", "2", sample()}),
                           "seq");
    };
    EXPECT_EQ(first_two(interval), (std::vector<int>{interval + 1, interval + 2}));
    EXPECT_EQ(first_two(interval - 1), (std::vector<int>{interval - 1, interval}));
}

TEST_F(CliTest, TheSampleAgreesWithItself) {
    const auto events = rows_of({"events", sample()});
    std::set<uint32_t> seen;
    std::map<uint32_t, size_t> counts;
    for (const Json& event : events) {
        seen.insert(event["object"].get<uint32_t>());
        ++counts[event["object"].get<uint32_t>()];
    }
    const auto objects = column<uint32_t>(rows_of({"objects", sample()}), "object");
    EXPECT_EQ(objects, std::vector<uint32_t>(seen.begin(), seen.end()));
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    const auto one = rows_of({"events", "--object", gen_format("0x%x", most->first), sample()});
    EXPECT_EQ(one.size(), most->second);
    const auto states = rows_of({"state", "--at", "1e9", sample()});
    EXPECT_EQ(column<uint32_t>(states, "object"), objects);
    size_t running = 0;
    for (const Json& state : states) running += state["status"] == 3;
    EXPECT_EQ(running, 2u);  // one on each processor
}

TEST_F(CliTest, StateKnowsWhatWasToldBefore) {
    const auto state_at = [&](const char* at) {
        std::string text;
        for (const Json& row : rows_of({"state", "--at", at, path("small")})) text += row.dump();
        return text;
    };
    small();
    ASSERT_EQ(run({"import", path("small.trr")}).status, 0);
    const std::string net = R"({"object":1025,"status":3,"statusName":"RUNNING","priority":20,"name":"net"})";
    const std::string unknown =
        R"({"object":1026,"status":null,"statusName":null,"priority":null,"name":null})";
    EXPECT_EQ(state_at("0"), "");
    EXPECT_EQ(state_at("0.00025"), net);
    EXPECT_EQ(state_at("0.000251"), net + unknown);
    EXPECT_EQ(run({"state", "--at", "1", "--csv", path("small")}).out,
              "object,status,statusName,priority,name\n0x401,3,RUNNING,20,net\n0x402,,,,\n");
    const Words text = lines_of(run({"state", "--at", "1", path("small")}).out);
    ASSERT_EQ(text.size(), 3u);
    EXPECT_EQ(text[2], "     0x402       -  -                          -  -");
}

TEST_F(CliTest, TablesForPeopleHaveAHeadAndWholeLines) {
    const std::string nasty = write("nasty.trr", small_trace("a,\"b\n\x1B\xFF"));
    EXPECT_EQ(rows_of({"objects", nasty}).at(0)["name"], "a,\"b\n\x1B\xEF\xBF\xBD");
    EXPECT_EQ(run({"objects", "--csv", nasty}).out,
              "object,name\n0x401,\"a,\"\"b\n\x1B\xEF\xBF\xBD\"\n0x402,\n");
    EXPECT_EQ(run({"objects", nasty}).out,
              "    object  name\n     0x401  a,\"b??\xEF\xBF\xBD\n     0x402  -\n");
    // No rows: the head stands all the same, and JSON is empty.
    EXPECT_EQ(run({"objects", "--to", "0", "--csv", nasty}).out, "object,name\n");
    EXPECT_EQ(run({"objects", "--to", "0", "--json", nasty}).out, "");
    const Words events = lines_of(run({"events", "--csv", small()}).out);
    ASSERT_EQ(events.size(), 7u);
    EXPECT_EQ(events[0], "seq,tick,time,type,subtype,object,objectName,event,extra,text");
    EXPECT_EQ(events[5], "5,500,0.000500,4,7,0x402,,UserEvent,0204000000000000,");
}

TEST_F(CliTest, FailuresSayWhatAndWhere) {
    Bytes cut = short_header(false);
    cut.resize(7);
    // A log image whose ring lies outside of it: the tasks can be read.
    Bytes image = long_header(false, 2, 1);
    put16(image, 1, false);
    image.resize(image.size() + 6);
    for (const uint32_t address : {0x1000u, 0u, 0x9000u, 0x8000u}) put32(image, address, false);
    append(image, task_entry(0x401, 9, "net", true, false));
    put32(image, 0x1000, false);
    const struct {
        const char* name;
        Bytes bytes;
        const char* words;
        size_t rows;
    } cases[] = {
        {"upper.TRR", small_trace(), "Cannot open file.", 0},
        {"cut.trr", cut, "Bad format TRR file.", 0},
        {"empty.trr", {}, "Bad format TRR file.", 0},
        {"other.trr", short_header(false, 2), "Unsupported OS or Architecture.", 0},
        {"bad.core", {1, 1}, "Bad format core file.", 0},
        {"lonely.trs", {}, "lonely.trv", 0},
        {"image.trr", image, "Corrupted log image", 1},
    };
    for (const auto& c : cases) {
        const std::string file = write(c.name, c.bytes);
        for (const char* command : {"events", "objects"}) {
            const Ran ran = run({command, "--json", file});
            EXPECT_EQ(ran.status, 1) << file;
            EXPECT_NE(ran.err.find(c.words), std::string::npos) << file << ": " << ran.err;
            EXPECT_EQ(lines_of(ran.out).size(), c.rows) << file;
        }
    }
    const Ran missing = run({"info", path("missing.trr")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find(path("missing.trr") + ": No such file"), std::string::npos) << missing.err;
    EXPECT_EQ(lines_of(missing.err).size(), 1u);
    EXPECT_EQ(run({"events", small(), "--config", path("none.tc")}).status, 1);
}

TEST_F(CliTest, FactsAsCsvAreAHeadAndARow) {
    const std::string out = run({"info", "--csv", small()}).out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 2);
    EXPECT_EQ(out.substr(0, 19), "base,formatVersion,");
    EXPECT_NE(out.find(",KORVANTIS,1,"), std::string::npos) << out;
}

TEST_F(CliTest, WrongCommandLinesAreToldFromFailures) {
    const std::string trace = small();
    const Words cases[] = {
        {},
        {"shuffle", trace},
        {"info"},
        {"info", trace, trace},
        {"info", "--shiny", trace},
        {"info", "--width", "3", trace},
        {"state", trace},
        {"state", "--at", "noon", trace},
        {"state", "--at", "nan", trace},
        {"events", "--from", "1s", trace},
        {"events", "--ticks", "--to", "0.5", trace},
        {"events", "--first", "x", trace},
        {"events", "--count", "-1", trace},
        {"events", "--first", "4294967296", trace},
        {"events", "--first", "1", "--to", "1", trace},
        {"events", "--object", "net", trace},
        {"config"},
        {"config", "polish", trace},
    };
    for (const Words& words : cases) {
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 2) << testing::PrintToString(words);
        EXPECT_EQ(ran.out, "") << testing::PrintToString(words);
        EXPECT_NE(ran.err, "") << testing::PrintToString(words);
    }
}

TEST_F(CliTest, ResultsGoIntoAFileButNeverOverTheTrace) {
    const std::string trace = small();
    const Ran shown = run({"events", "--json", trace});
    EXPECT_EQ(run({"events", "--json", trace, "-o", path("result")}).out, "");
    EXPECT_EQ(content(path("result")), shown.out);
    const Ran nowhere = run({"events", trace, "--output", path("none/result")});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.err.find(path("none/result") + ": No such file"), std::string::npos);
}

TEST_F(CliTest, NoResultIsWrittenOverItsSourcesUnderAnyName) {
    namespace fs = std::filesystem;
    const std::string trace = small(), base = path("small");
    ASSERT_EQ(run({"import", trace}).status, 0);
    const std::string rules = write("ok.rules", {}), config = path("own.tc");
    std::ofstream(rules) << "count of \"UserEvent\" at most 9\n";
    fs::copy_file(CW_SOURCE_DIR "/defaults/chrono_weave/korvantis.tc", config);
    fs::create_symlink(trace, path("link"));
    fs::create_hard_link(path("small.trs"), path("hard"));
    fs::create_directory(path("folder"));
    fs::create_directory_symlink(path("folder"), path("way"));
    fs::create_symlink(path("small.core"), path("to-come"));
    const std::string other = path("folder/../ok.rules");
    const struct {
        Words words;
        int status;
    } cases[] = {
        {{"events", trace, "-o", path("small.trr")}, 1},
        {{"events", trace, "-o", path("small.tri")}, 1},
        {{"events", base, "-o", path("small.trr")}, 1},  // the base name stands for the source too
        {{"events", path("small.trs"), "-o", path("./folder/../small.trv")}, 1},
        {{"events", base, "-o", path("small.core")}, 1},  // which does not stand, and would be the source
        {{"events", base, "-o", path("to-come")}, 1},
        {{"info", trace, "-o", path("link")}, 1},
        {{"search", "event", base, "-o", path("hard")}, 1},
        {{"report", "objects", base, "-o", path("hard")}, 1},
        {{"render", base, "-o", path("hard")}, 1},
        {{"check", rules, base, "--junit", trace}, 1},
        {{"check", rules, base, "-o", path("small.trs")}, 1},
        {{"check", rules, base, "--junit", other}, 2},
        {{"check", rules, base, "-o", other}, 2},
        {{"check", rules, base, "-o", path("folder/new"), "--junit", path("way/new")}, 2},
        {{"events", trace, "--config", config, "-o", path("folder/../own.tc")}, 2},
        {{"config", "check", config, "-o", path("folder/../own.tc")}, 1},
    };
    for (const auto& c : cases) {
        std::map<std::string, std::string> before;
        for (const char* name : {"small.trr", "small.trs", "small.tri", "small.trv", "ok.rules", "own.tc"})
            before[name] = content(path(name));
        const Ran ran = run(c.words);
        EXPECT_EQ(ran.status, c.status) << testing::PrintToString(c.words) << ran.err;
        EXPECT_EQ(lines_of(ran.err).size(), 1u) << ran.err;
        for (const auto& [name, bytes] : before) EXPECT_EQ(content(path(name)), bytes) << name;
        EXPECT_FALSE(fs::exists(path("small.core")) || fs::exists(path("folder/new")));
    }
    // Names that only look alike are free.
    EXPECT_EQ(run({"events", base, "-o", path("folder/small.trs")}).status, 0);
    EXPECT_EQ(run({"check", rules, base, "-o", path("a"), "--junit", path("b")}).status, 0);
}

TEST_F(CliTest, AStoreInTheCacheIsToldAndKeptEvenWhenQuiet) {
    const std::string trace = small();
    ::setenv("XDG_CACHE_HOME", path("cache").c_str(), 1);
    const Ran ran = run({"import", "-q", "--csv", trace, "-o", "/proc/small"});
    const std::string base = path("cache/chronoweave/small");
    EXPECT_EQ(ran.status, 0);
    EXPECT_NE(ran.err.find("chronoweave: /proc: the folder can't be written, the store is " + base),
              std::string::npos)
        << ran.err;
    ::unsetenv("XDG_CACHE_HOME");
}

TEST_F(CliTest, MessagesHoldNoControls) {
    const std::string name = path("a\x1B[2J\nb\x9B\xC2\x9B.trr");
    const std::string safe = path("a?[2J b\xEF\xBF\xBD?.trr");
    const Words lines[] = {{"info", name},
                           {"info", "--shiny\x1B", name},
                           {"events", "--config", name, small()},
                           {"config", "check", name},
                           {"check", name, small()},
                           {"events", "--from", name, small()}};
    for (const Words& words : lines) {
        const Ran ran = run(words);
        EXPECT_NE(ran.status, 0);
        EXPECT_NE(ran.err, "");
        EXPECT_EQ(ran.err.find('\x1B'), std::string::npos) << testing::PrintToString(words);
        EXPECT_EQ(ran.err.find('\x9B'), std::string::npos) << testing::PrintToString(words);
    }
    EXPECT_NE(run({"info", name}).err.find(safe), std::string::npos);
}

TEST_F(CliTest, ConfigCheckReportsEveryBadLine) {
    const Ran good = run({"config", "check", "--json", CW_SOURCE_DIR "/defaults/chrono_weave/korvantis.tc"});
    EXPECT_EQ(good.status, 0) << good.err;
    const Json counts = Json::parse(good.out);
    EXPECT_EQ(keys_of(counts), "statuses events categories errors ");
    EXPECT_GT(counts["events"], 20);
    const std::string file = path("bad.tc");
    std::filesystem::copy_file(CW_SOURCE_DIR "/defaults/chrono_weave/korvantis.tc", file);
    std::ofstream(file, std::ios::app) << "TRV_Event:nonsense\nTRV_Object:TRV_Status:zz\n";
    const Ran bad = run({"config", "check", "--json", file});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(Json::parse(bad.out)["errors"], 2);
    EXPECT_NE(bad.err.find(file + ": "), std::string::npos);
    EXPECT_EQ(run({"config", "check", path("none.tc")}).status, 1);
    EXPECT_EQ(run({"config", "check", write("empty.tc", {})}).status, 1);
}

TEST_F(CliTest, RenderPrintsPages) {
    const std::string trace = small();
    const auto render = [&](Words more) {
        more.insert(more.begin(), {"render", "--json", trace, "-o"});
        return run(more);
    };
    const Ran ran = render({path("page.pdf"), "--page", "a4", "--landscape", "--pages", "3", "--legend"});
    if (ran.err.find("without Qt") != std::string::npos) GTEST_SKIP() << ran.err;
    ASSERT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(keys_of(Json::parse(ran.out)),
              "file low high rows rowHeight graphLeft graphTop graphWidth graphHeight objects ");
    const std::string pdf = content(path("page.pdf"));
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    EXPECT_NE(pdf.find("/Count 3"), std::string::npos);
    EXPECT_EQ(render({path("l.PDF"), "--page", "letter", "--width", "900", "--height", "300"}).status, 0);
    for (const Words& wrong : {Words{path("p.pdf"), "--page", "a3"},
                               {path("p.png"), "--page", "a4"},
                               {path("p.pdf"), "--landscape"},
                               {path("p.pdf"), "--pages", "2"},
                               {path("p.pdf"), "--legend"},
                               {path("p.pdf"), "--page", "a4", "--pages", "0"},
                               {path("p.pdf"), "--page", "a4", "--pages", "1000"},
                               {path("p.pdf"), "--page", "a4", "--pages", "x"}}) {
        const Ran refused = render(wrong);
        EXPECT_EQ(refused.status, 2) << testing::PrintToString(wrong);
        EXPECT_NE(refused.err, "") << testing::PrintToString(wrong);
    }
    EXPECT_FALSE(std::filesystem::exists(path("p.pdf")));
    EXPECT_EQ(render({path("nowhere/p.pdf"), "--page", "a4"}).status, 1);
}

TEST_F(CliTest, RenderDrawsTheRowsThatItNames) {
    const std::string trace = small();
    const Ran ran = run({"render", "--json", trace, "-o", path("picture.png"), "--width", "600"});
    if (ran.err.find("without Qt") != std::string::npos) GTEST_SKIP() << ran.err;
    ASSERT_EQ(ran.status, 0) << ran.err;
    const Json facts = Json::parse(ran.out);
    EXPECT_EQ(keys_of(facts),
              "file low high rows rowHeight graphLeft graphTop graphWidth graphHeight objects ");
    EXPECT_EQ(facts["rows"], facts["objects"].size());
    std::set<uint32_t> ids;
    for (const Json& id : facts["objects"])
        if (!id.is_null()) ids.insert(id.get<uint32_t>());
    EXPECT_EQ(ids, (std::set<uint32_t>{0x401, 0x402}));
    EXPECT_NEAR(facts["low"].get<double>(), 0, 1e-5);
    EXPECT_NEAR(facts["high"].get<double>(), 0.001001, 1e-5);
    EXPECT_LE(facts["graphLeft"].get<int>() + facts["graphWidth"].get<int>(), 600);
    EXPECT_EQ(content(path("picture.png")).substr(0, 4), "\x89PNG");
    EXPECT_EQ(run({"render", trace, "-o", path("picture.svg"), "--hide", "net"}).status, 0);
    EXPECT_NE(content(path("picture.svg")).find("<svg"), std::string::npos);
    EXPECT_EQ(run({"render", trace, "-o", path("picture.pdf")}).status, 0);
    EXPECT_EQ(content(path("picture.pdf")).substr(0, 5), "%PDF-");
    const Ran odd = run({"render", trace, "-o", path("picture.doc")});
    EXPECT_EQ(odd.status, 1);
    EXPECT_NE(odd.err.find("picture.doc"), std::string::npos);
    for (const Words& wrong :
         {Words{}, {"-o", path("p.png"), "--width", "0"}, {"-o", path("p.png"), "--sort", "size"}}) {
        Words words{"render", trace};
        words.insert(words.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(run(words).status, 2);
    }
}

TEST_F(CliTest, HelpCompletionAndManualKnowEveryCommand) {
    const Ran completion = run({"--print-completion"}), manual = run({"--print-man"}), help = run({"--help"});
    for (const std::string name : {"info", "import", "events", "state", "objects", "render", "config check",
                                   "search", "report", "check", "merge"}) {
        const std::string first = name.substr(0, name.find(' '));
        EXPECT_NE(cli_FindCommand(name), nullptr) << name;
        EXPECT_NE(completion.out.find("\n    " + first + ") words=\""), std::string::npos) << name;
        const std::string subject = name == "search" || name == "report" ? " KIND"
                                    : name == "check"                    ? " RULES"
                                                                         : "";
        const std::string path = name == "merge" ? " IN...\n" : " PATH\n";
        EXPECT_NE(manual.out.find("\n.B " + name + subject + path), std::string::npos) << name;
        EXPECT_NE(help.out.find("\n  " + first + " "), std::string::npos) << name;
        EXPECT_EQ(run({first, "--help"}).status, 0) << name;
    }
    EXPECT_NE(manual.out.find("--object ID"), std::string::npos);
    EXPECT_NE(completion.out.find("--object "), std::string::npos);
    EXPECT_EQ(run({"--version"}).out.substr(0, 12), "chronoweave ");
}

// Opening a pipe would wait for whoever writes into it.
TEST_F(CliTest, APipeInPlaceOfAFileIsRefusedAtOnce) {
    std::filesystem::create_directory(path("folder.trr"));
    for (const char* name : {"run.trr", "run.core", "run.trs", "run", "other.trv", "legend.tc", "rules"})
        ASSERT_EQ(::mkfifo(path(name).c_str(), 0600), 0);
    for (const char* name : {"run.trr", "run.core", "run.trs", "run", "other", "folder.trr"})
        for (const Words& command : {Words{"info"}, {"import"}, {"events"}, {"report", "objects"}}) {
            Words words = command;
            words.push_back(path(name));
            const Ran ran = run(words);
            EXPECT_EQ(ran.status, 1) << name << ran.err;
            EXPECT_NE(ran.err.find(path(name)), std::string::npos) << name << ran.err;
        }
    EXPECT_NE(run({"events", small(), "--config", path("legend.tc")}).status, 0);
    EXPECT_EQ(run({"check", path("rules"), small()}).status, 2);
    EXPECT_NE(run({"config", "check", path("legend.tc")}).status, 0);
}
