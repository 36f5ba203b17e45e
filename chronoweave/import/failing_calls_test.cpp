// An import whose n-th call of the system fails, for every n: there is never a wrong store with nothing said,
// and what is left opens and holds the first events of the whole.
#include "chronoweave/import/failing_calls_testing.h"
#include "chronoweave/import/import_testing.h"

namespace {

class FailingCallsTest : public ImportTest {
  protected:
    static constexpr uint32_t events_there = 12000;

    void SetUp() override {
        ImportTest::SetUp();
        // Names of an earlier run must not be taken for one that stands there before the first import.
        setenv("XDG_CACHE_HOME", path("cache").c_str(), 1);
        Bytes bytes = short_header(true);
        for (uint32_t i = 0; i < events_there; ++i)
            put_record(bytes, raw_event(1 + i % 7, i % 11, 1 + i, 1 + i * 7 % 41, true, 4 + i % 9));
        trace_ = write("run.trr", bytes);
        whole_ = events(*import_OpenSource(trace_, {}).store);
    }
    void TearDown() override {
        faults = {};
        unsetenv("XDG_CACHE_HOME");
        ImportTest::TearDown();
    }

    // The import with the n-th call failing. False when it made fewer calls.
    bool run(Fault fault, int error, int n) {
        faults = {fault, error, n, 0, 0, {}};
        const OpenedSource source = import_OpenSource(trace_, {});
        const Faults met = std::exchange(faults, Faults{});
        const std::string where = met.last + " at call " + std::to_string(n) + ": " + source.trouble.text();
        check(source, where);
        console();
        return met.calls >= n;
    }

    void check(const OpenedSource& source, const std::string& where) {
        const TraceStorePtr left = mt_OpenForRead(source.base.empty() ? path("run") : source.base);
        const std::string read = left ? events(*left) : "";
        EXPECT_EQ(whole_.compare(0, read.size(), read), 0) << where;
        if (source.trouble.ok()) {
            ASSERT_TRUE(source.store) << where;
            EXPECT_EQ(source.counts.events, events_there) << where;
            EXPECT_EQ(read, whole_) << where;
            return;
        }
        if (source.store) {
            EXPECT_EQ(mt_GetEventCount(*source.store), source.counts.events) << where;
        }
        if (source.counts.refused == 0) return;
        EXPECT_EQ(source.counts.events + source.counts.refused, events_there) << where;
        EXPECT_NE(
            source.trouble.text().find(gen_format("%llu events could not be taken into the store, which ",
                                                  static_cast<unsigned long long>(source.counts.refused))),
            std::string::npos)
            << where;
        // The store that every import here replaces.
        EXPECT_NE(source.trouble.text().find("The earlier store \"" + path("run") + "\" was removed."),
                  std::string::npos)
            << where;
        EXPECT_EQ(source.trouble.text().find("Success"), std::string::npos) << where;
    }

    std::string trace_, whole_;
};

TEST_F(FailingCallsTest, everyCallFailsOnceAndFromThereOn) {
    for (const Fault fault : {Fault::Fails, Fault::FailsOn, Fault::Short}) {
        int n = 1;
        while (run(fault, fault == Fault::Fails ? EIO : ENOSPC, n) && !HasFatalFailure()) {
            ++n;
            // What stands there before is whole again.
            ASSERT_EQ(import_OpenSource(trace_, {}).trouble.text(), "");
        }
        EXPECT_GT(n, 20) << "the calls are not counted";
    }
}

TEST_F(FailingCallsTest, anEarlierStoreThatIsGoneIsNamedWhereNoNewOneCouldBeMade) {
    // The creating of the new .trs, and whatever comes behind it.
    int n = 1;
    OpenedSource source;
    do {
        ASSERT_EQ(import_OpenSource(trace_, {}).trouble.text(), "");
        faults = {Fault::FailsOn, EACCES, n++, 0, 0, {}};
        source = import_OpenSource(trace_, {});
    } while (std::exchange(faults, Faults{}).last != "open" ||
             source.trouble.text().find(".trs: ") == std::string::npos);
    EXPECT_EQ(
        source.trouble.text().substr(0, source.trouble.text().find("\nCan't")),
        path("run.trs") + ": Permission denied\nThe earlier store \"" + path("run") + "\" was removed.");
}

}  // namespace
