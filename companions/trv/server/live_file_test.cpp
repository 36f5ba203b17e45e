#include "companions/trv/server/live_file.h"

#include <sys/resource.h>

#include <csignal>

#include "companions/trv/server/server_testing.h"

namespace {

class LiveFileTest : public TargetTest {
  protected:
    static std::vector<uint8_t> records(size_t count) {
        RawWriter writer(false);
        for (size_t i = 0; i < count; ++i) EXPECT_TRUE(writer.event(i + 1, mt_UserEvent, 0, {1, 2}));
        return writer.take();
    }
    void write(const std::string& name, const std::vector<uint8_t>& bytes) const {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    TargetFacts facts_ = target_NanosecondFacts("t");
    LiveFile file_{facts_};
};

TEST_F(LiveFileTest, GoesOnWithAFileOfItsKindAndTouchesNoOther) {
    auto whole = facts_.headerBytes;
    const auto three = records(3);
    whole.insert(whole.end(), three.begin(), three.end());
    auto cut = whole, junk = whole, other = whole;
    cut.pop_back();
    junk.push_back(0);
    other[15] = 1;  // another clock
    const struct {
        const char* name;
        std::vector<uint8_t> bytes;
        bool isTaken;
    } cases[] = {{"empty", {}, true},    {"header", facts_.headerBytes, true},
                 {"whole", whole, true}, {"cut", cut, false},
                 {"junk", junk, false},  {"other", other, false},
                 {"tiny", {1, 2}, false}};
    for (const auto& c : cases) {
        write(c.name, c.bytes);
        LiveFile file(facts_);
        EXPECT_EQ(file.enable(path(c.name), records(1)).ok(), c.isTaken) << c.name;
        const auto bytes = bytes_of(path(c.name));
        if (c.isTaken) {
            EXPECT_EQ(events_in(path(c.name)).size(), c.bytes.size() > raw_LongHeaderSize ? 4u : 1u)
                << c.name;
        } else {
            EXPECT_EQ(bytes, c.bytes) << c.name;
        }
    }
    EXPECT_FALSE(file_.enable(folder_, {}).ok());
}

// The disk is full within a record: the file ends with a whole one, and says why.
TEST_F(LiveFileTest, AFullDiskLeavesWholeRecords) {
    ASSERT_TRUE(file_.enable(path("a.trr"), {}).ok());
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit less{1000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &less);
    ASSERT_TRUE(file_.take(records(10), now()).ok());
    EXPECT_TRUE(file_.flush().ok());
    ASSERT_TRUE(file_.take(records(100), now()).ok());
    const Result full = file_.flush();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, old);
    EXPECT_FALSE(full.ok());
    EXPECT_FALSE(file_.isEnabled());
    EXPECT_EQ(events_in(path("a.trr")).size(), 10u);
}

}  // namespace
