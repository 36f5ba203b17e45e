// Damaged stores on the command line: every command tells, gives what can be read, and ends with status 1.
#include <gtest/gtest.h>

#include "chronoweave/cli/cli_testing.h"
#include "libtrv/store_damage_testing.h"

namespace {

// A device that fails to read some of its bytes.
std::unique_ptr<FileDevice> failing(const Bytes& bytes, uint64_t from, uint64_t to) {
    return std::make_unique<FailingDevice>(std::make_shared<Bytes>(bytes), from, to);
}

class DamagedStore : public CliTest {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        for (const char* extension : {".trs", ".tri", ".trv"})
            std::filesystem::copy_file(sample() + extension, base() + extension);
        const std::string stream = content(base() + ".trs"), index = content(base() + ".tri");
        size_ = stream.size();
        const size_t records = (index.size() - 21) / 13;
        const char* record = index.data() + 20 + 13 * (records / 2);
        block_ = load_be32(reinterpret_cast<const uint8_t*>(record) + 9);
        tick_ = load_be64(reinterpret_cast<const uint8_t*>(record) + 1);
        interval_ = mt_GetCheckpointInterval(*mt_OpenForRead(base()));
    }
    void TearDown() override { gf_WrapDevices({}); }
    std::string base() const { return path("damaged"); }

    // Every command that reads a store, the state in the middle of it.
    std::vector<Words> commands() const {
        std::vector<Words> all{{"info", base()},
                               {"events", base()},
                               {"state", base(), "--ticks", "--at", std::to_string(tick_ + 1)},
                               {"objects", base()},
                               {"search", "switch", base()},
                               {"report", "objects", base()},
                               {"report", "load", base()}};
#ifdef CW_CLI_QT
        all.push_back({"render", base(), "-o", path("picture.svg")});
#endif
        return all;
    }
    void expectTold(const std::string& words) const {
        for (const Words& command : commands()) {
            const Ran ran = run(command);
            EXPECT_EQ(ran.status, 1) << command[0] << ": " << ran.err;
            EXPECT_NE(ran.err.find(words), std::string::npos) << command[0] << ": " << ran.err;
            EXPECT_FALSE(ran.out.empty()) << command[0] << " gives what can be read";
        }
    }

    uint64_t size_ = 0, block_ = 0, tick_ = 0;
    uint32_t interval_ = 0;
};

}  // namespace

TEST_F(DamagedStore, AWholeOneIsFine) {
    for (const Words& command : commands()) EXPECT_EQ(run(command).status, 0) << command[0];
}

TEST_F(DamagedStore, ACutStreamIsTold) {
    std::filesystem::resize_file(base() + ".trs", size_ - 20000);
    expectTold("damaged.trs, byte ");
    const std::vector<std::string> events = lines_of(run({"events", base(), "--csv"}).out);
    EXPECT_GT(events.size(), 1000u) << "all that stand ahead of the cut";
}

TEST_F(DamagedStore, AnOverwrittenBlockIsToldAndWhatFollowsIsGiven) {
    const auto whole = lines_of(run({"events", base(), "--csv"}).out);
    std::fstream stream(base() + ".trs", std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(static_cast<std::streamoff>(block_));
    stream << std::string(500, '\xE5');
    stream.close();
    expectTold("damaged.trs, byte ");
    const auto events = lines_of(run({"events", base(), "--csv"}).out);
    EXPECT_EQ(events.size(), whole.size() - interval_) << "one block is missing";
    EXPECT_EQ(events.back(), whole.back());
}

TEST_F(DamagedStore, ACutIndexIsMadeAnew) {
    const auto whole = lines_of(run({"events", base(), "--csv"}).out);
    std::filesystem::resize_file(base() + ".tri", 50);
    expectTold("damaged.tri, byte 46: the index ends without an end mark");
    EXPECT_EQ(lines_of(run({"events", base(), "--csv"}).out), whole);
}

TEST_F(DamagedStore, AnIndexThatLacksABlockIsToldWhereNothingIsFoundToo) {
    const size_t count = lines_of(run({"events", base(), "--csv"}).out).size() - 1;
    std::string index = content(base() + ".tri");
    index.erase(20 + 13 * 2, 13);
    write("damaged.tri", Bytes(index.begin(), index.end()));
    // By the index there are no events of these numbers.
    const Ran ran = run({"events", base(), "--first", std::to_string(count - 2), "--count", "3"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.err.find("the index lacks this block"), std::string::npos) << ran.err;
}

TEST_F(DamagedStore, AVersionFileThatIsCutBeforeItsClockIsTold) {
    std::filesystem::resize_file(base() + ".trv", 22);
    for (const Words& command : commands()) {
        const Ran ran = run(command);
        EXPECT_EQ(ran.status, 1) << command[0] << ": " << ran.err;
        EXPECT_NE(ran.err.find("damaged.trv, byte 22: the file ends"), std::string::npos) << ran.err;
    }
}

TEST_F(DamagedStore, AReadErrorIsTold) {
    const std::string stream = content(base() + ".trs");
    const Bytes bytes(stream.begin(), stream.end());
    gf_WrapDevices([&](std::unique_ptr<FileDevice> device, const std::string& name) {
        return name == base() + ".trs" ? failing(bytes, block_ + 2, block_ + 3) : std::move(device);
    });
    expectTold("Input/output error");
}

namespace {

class DamageAtRandom : public CliTest {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        const std::string rules =
            "count of \"UserEvent\" at most 99999\nstatus \"RUNNING\" of * never longer than 1000s\n";
        rules_ = write("rules", Bytes(rules.begin(), rules.end()));
        for (const char* extension : {".trv", ".trs", ".tri"}) write("run" + std::string(extension), {});
    }
    void TearDown() override { gf_WrapDevices({}); }

    // The store's files are this from now on.
    void put(const DamagedImage& one) {
        gf_WrapDevices([one](std::unique_ptr<FileDevice> device, const std::string& name) {
            if (name.ends_with(".trv")) return failing(one.image.version, 0, 0);
            if (name.ends_with(".trs")) return failing(one.image.events, one.failFrom, one.failTo);
            if (name.ends_with(".tri")) return failing(one.image.index, one.indexFailFrom, one.indexFailTo);
            return device;
        });
    }
    // Every command over the whole of the store and over a part of it.
    std::vector<Words> commands(std::mt19937& random, mt_Time end, uint32_t events) const {
        const mt_Time from = random() % (end - 1), to = from + 1 + random() % (end - from);
        const std::vector<Words> ranges{{}, {"--ticks", "--from", number(from), "--to", number(to)}};
        const std::vector<Words> ranged{
            {"events", "--csv"},
            {"events", "--object", "0x400"},
            {"objects"},
            {"search", "event", "--event", "UserEvent"},
            {"search", "switch"},
            {"search", "status", "--status", "READY"},
            {"search", "pattern", "--begin", "UserEvent", "--end", "Timer"},
            {"report", "objects"},
            {"report", "object", "--object", "0x400"},
            {"report", "load"},
            {"report", "general", "--status", "RUNNING"},
#ifdef CW_CLI_QT
            {"render", "-o", path("picture.svg")},
#endif
        };
        std::vector<Words> all{{"info"},
                               {"check", rules_},
                               {"state", "--ticks", "--at", number(from)},
                               {"events", "--first", number(1 + from % events), "--count", "3"}};
        for (const Words& command : ranged)
            for (const Words& range : ranges) {
                all.push_back(command);
                all.back().insert(all.back().end(), range.begin(), range.end());
            }
        for (Words& command : all) command.push_back(path("run"));
        return all;
    }
    Ran answer(const Words& words) const {
        Ran ran = run(words);
        if (words[0] == "render" && ran.status == 0) ran.out += content(path("picture.svg"));
        return ran;
    }
    static std::string number(uint64_t value) {
        return std::to_string(value);
    }

    std::string rules_;
};

}  // namespace

// Each command either gives what it gives of the sound store, or ends with status 1 and says why.
// CW_DAMAGE_SEEDS sets which stores are damaged.
TEST_F(DamageAtRandom, IsAnsweredRightOrWithStatus1) {
    const DamageSeeds seeds(12);
    constexpr uint32_t intervals[] = {100, 40, 200};
    for (unsigned seed = seeds.first; seed < seeds.end; ++seed) {
        const unsigned which = seed % 3;
        const StoreImage whole = image_of(tracked(random_events(which, 350 + 150 * which)), intervals[which]);
        Damager damager(whole, seed);
        const DamagedImage damaged = damager.next(), sound{whole, "", 0, 0, 0, 0};
        const TraceStorePtr store = open_image(whole);
        for (const Words& words :
             commands(damager.random(), mt_GetTimeRange(*store).end, mt_GetEventCount(*store))) {
            const std::string what =
                "seed " + number(seed) + ": " + damaged.what + ": " + testing::PrintToString(words);
            put(sound);
            const Ran right = answer(words);
            ASSERT_EQ(right.status, 0) << what << right.err;
            put(damaged);
            const Ran got = answer(words);
            if (got.status == 1)
                EXPECT_NE(got.err, "") << what;
            else
                EXPECT_EQ(std::make_pair(got.status, got.out == right.out), std::make_pair(0, true)) << what;
        }
    }
}
