// live, with the real event server and with one that fails.
#include <sys/stat.h>

#include "chronoweave/cli/cli_testing.h"

namespace {

class LiveCommandTest : public CliTest {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        pathBefore_ = std::getenv("PATH");
        ::setenv("PATH", (CW_BIN ":" + pathBefore_).c_str(), 1);
    }
    void TearDown() override {
        ::setenv("PATH", pathBefore_.c_str(), 1);
        CliTest::TearDown();
    }
    std::string replay(const std::string& words = " xmax") const {
        return "replay " CW_SOURCE_DIR "/samples/build-2cpu.trr" + words;
    }
    // The rows, of which the last says why it ended.
    std::vector<Json> rows(Words words, int status) {
        words.push_back("--json");
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, status) << ran.err;
        std::vector<Json> rows;
        for (const std::string& line : lines_of(ran.out)) rows.push_back(Json::parse(line));
        EXPECT_FALSE(rows.empty()) << ran.err;
        return rows;
    }
    // A server that answers as the real one does, then does this.
    void fakeServer(const std::string& afterLogging) {
        const std::string file = path("trv");
        std::ofstream(file) << "#!/bin/sh\nprintf 'fake\\n> '\nwhile read word rest; do case $word in\n"
                               "c) printf 'established\\n> ';; l) printf 'enabled\\n> ';;\n"
                               "g) printf 'event logging: on\\n> '; "
                            << afterLogging << ";; *) printf '> ';; esac; done\n";
        ::chmod(file.c_str(), 0755);
        ::setenv("PATH", (path("") + ":" CW_BIN ":" + pathBefore_).c_str(), 1);
    }
    std::string pathBefore_;
};

TEST_F(LiveCommandTest, AReplayedTraceIsTheTrace) {
    const auto told = rows({"live", replay(), "-o", path("a.trr"), "--checkpoint", "500"}, 0);
    EXPECT_EQ(keys_of(told.back()), "seconds events dropped lost behind ended ");
    EXPECT_EQ(told.back()["events"], 25587);
    EXPECT_EQ(told.back()["behind"], 0);
    EXPECT_EQ(told.back()["ended"], "the target has ended");
    EXPECT_TRUE(content(path("a.trr")) == content(CW_SOURCE_DIR "/samples/build-2cpu.trr"));
    EXPECT_EQ(rows_of({"info", path("a")})[0]["events"], 25587);
    // An interval of its own would depend on how much of the head there is at first.
    EXPECT_EQ(content(path("a.trs")).size(), content(sample() + ".trs").size());
}

TEST_F(LiveCommandTest, WhatIsThereStays) {
    const std::string file = write("a.trr", small_trace());
    const std::string before = content(file);
    const struct {
        Words words;
        const char* said;
    } cases[] = {
        {{"live", replay(), "-o", file}, "it is there already; --force replaces it"},
        {{"live", "replay " + file + " xmax", "-o", file, "--force"}, "would overwrite what it is made of"},
        {{"live", "replay \"" + file + "\"", "-o", path("a"), "--force"},
         "would overwrite what it is made of"},
        {{"live", "replay " + path("none.trr"), "-o", path("b.trr")}, "can't be connected to"},
        {{"live", "nothing of the kind", "-o", path("b.trr")}, "can't be connected to"},
        {{"live", replay(), "-o", path("nowhere/b.trr")}, "can't be recorded"},
    };
    for (const auto& c : cases) {
        const Ran ran = run(c.words);
        EXPECT_EQ(ran.status, 1) << c.said;
        EXPECT_NE(ran.err.find(c.said), std::string::npos) << ran.err;
        EXPECT_EQ(content(file), before);
        EXPECT_FALSE(std::filesystem::exists(path("b.trr")));
    }
    EXPECT_EQ(run({"live", replay(), "-o", file, "--force"}).status, 0);
    EXPECT_GT(content(file).size(), before.size());
}

TEST_F(LiveCommandTest, EndsWithTheEventsThatWereAskedFor) {
    const auto told =
        rows({"live", "sim 5 50000", "-o", path("a.trr"), "--events", "2000", "--checkpoint", "500"}, 0);
    EXPECT_GE(told.back()["events"], 2000);
    EXPECT_EQ(told.back()["behind"], 0);
    EXPECT_EQ(told.back()["ended"], "the events are there");
    const Json info = rows_of({"info", path("a")})[0];
    EXPECT_EQ(info["events"], told.back()["events"]) << "what came until it ended is in the store";
    EXPECT_EQ(info["checkpointInterval"], 500);
}

TEST_F(LiveCommandTest, ALostServerIsAFailure) {
    fakeServer("printf 'The system lost 7 events.\\n'; exit 3");
    const auto told = rows({"live", "t", "-o", path("a.trr")}, 1);
    EXPECT_EQ(told.back()["ended"], "the event server was lost");
    EXPECT_EQ(told.back()["lost"], 7);
    fakeServer("printf 'Live mode ended: the disk is full\\n'");
    EXPECT_EQ(rows({"live", "t", "-o", path("a.trr")}, 1).back()["ended"],
              "the events can be recorded no more");
}

TEST_F(LiveCommandTest, WrongLinesAreRefused) {
    const std::string file = path("a.trr");
    for (const Words& words : {Words{"live", replay()}, Words{"live", "-o", file},
                               Words{"live", replay(), "-o", file, "--seconds", "x"},
                               Words{"live", replay(), "-o", file, "--seconds", "0"},
                               Words{"live", replay(), "-o", file, "--events", "0"},
                               Words{"live", replay(), "-o", file, "--checkpoint", "150"}})
        EXPECT_EQ(run(words).status, 2);
    EXPECT_FALSE(std::filesystem::exists(file));
}

}  // namespace
