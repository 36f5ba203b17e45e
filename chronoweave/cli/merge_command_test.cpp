// merge.
#include "chronoweave/cli/cli_testing.h"

namespace {

class MergeCommandTest : public CliTest {
  protected:
    std::string source(const std::string& name, uint64_t time, bool isDamaged) const {
        Bytes bytes = short_header(false);
        put_record(bytes, raw_event(4, 1, time, 7, false));
        if (isDamaged) append(bytes, {0, 20, 1});
        return write(name, bytes);
    }
};

TEST_F(MergeCommandTest, givesCountsAndTheMergedFile) {
    const std::string a = source("a.trr", 30, false), b = source("b.trr", 10, false), out = path("out.trr");
    const Json counts = rows_of({"merge", "--align", "tail", "-o", out, a, b}).at(0);
    EXPECT_EQ(keys_of(counts), "sources events dropped badBytes unread shortened back far unturned ");
    EXPECT_EQ(counts["sources"], 2);
    EXPECT_EQ(counts["events"], 2);
    const std::vector<Json> events = rows_of({"events", "--ticks", out});
    EXPECT_EQ(column<uint64_t>(events, "tick"), (std::vector<uint64_t>{0, 0}));
}

TEST_F(MergeCommandTest, endsWithOneOnDamageAndKeepsTheOutput) {
    const std::string a = source("a.trr", 30, true), out = path("out.trr");
    const Ran ran = run({"merge", "--json", "-o", out, a});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(Json::parse(ran.out)["badBytes"], 1);
    EXPECT_EQ(Json::parse(ran.out)["unread"], 2);
    EXPECT_NE(ran.err.find("chronoweave: " + a + ": 1 bytes are no part of any event\n"), std::string::npos);
    EXPECT_EQ(rows_of({"events", out}).size(), 1u);
}

TEST_F(MergeCommandTest, refusesInWords) {
    const std::string a = source("a.trr", 30, false);
    const struct {
        Words words;
        int status;
        std::string said;
    } cases[] = {
        {{"merge", a}, 2, "merge: -o is required"},
        {{"merge", "-o", path("out.trr"), "--align", "middle", a}, 2, "natural, head or tail, not middle"},
        {{"merge", "-o", path("out.trr")}, 2, "IN"},
        {{"merge", "-o", a, a}, 1, a + ": it is one of the files to be merged"},
        {{"merge", "-o", path("out.trr"), path("no.trr")}, 1, "no.trr: Cannot open TRR file."},
    };
    for (const auto& c : cases) {
        const Ran ran = run(c.words);
        EXPECT_EQ(ran.status, c.status) << c.said;
        EXPECT_NE(ran.err.find(c.said), std::string::npos) << ran.err;
        EXPECT_EQ(ran.out, "");
    }
    EXPECT_FALSE(std::filesystem::exists(path("out.trr")));
}

}  // namespace
