// `import` while the n-th call of the system fails, for every n: what the user is told, and with which
// status.
#include <gtest/gtest.h>

#include <cstring>
#include <regex>

#include "chronoweave/cli/cli_testing.h"
#include "chronoweave/import/failing_calls_testing.h"

namespace {

constexpr uint64_t event_count = 12000;
constexpr int stale = ENOTDIR;  // stands in errno before an import, and is never the reason

class ImportFaults : public CliTest {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        setenv("XDG_CACHE_HOME", path("cache").c_str(), 1);
        Bytes bytes = short_header(true);
        for (uint32_t i = 0; i < event_count; ++i)
            put_record(bytes, raw_event(1 + i % 7, i % 11, 5 + i, 1 + i * 7 % 41, true, 4 + i % 9));
        write("run.trr", bytes);
        ASSERT_EQ(run({"import", path("run.trr")}).status, 0);
        whole_ = events(*mt_OpenForRead(path("run")));
    }
    void TearDown() override {
        faults = {};
        unsetenv("XDG_CACHE_HOME");
        CliTest::TearDown();
    }

    // The import with the n-th call failing. False when it made fewer calls.
    bool importFailing(Fault fault, int error, int n) {
        int status = 0;
        const std::string trace = path("run.trr");
        const char* const argv[] = {"chronoweave", "import", "--json", trace.c_str()};
        const auto line = cli_Parse(4, argv, status);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        faults = {fault, error, n, 0, 0, {}};
        errno = stale;
        ran_.status = cli_Run(*line);
        met_ = std::exchange(faults, Faults{});
        std::fflush(stdout);
        ran_.out = testing::internal::GetCapturedStdout();
        ran_.err = testing::internal::GetCapturedStderr();
        return met_.calls >= n;
    }
    bool said(const std::string& words) const { return ran_.err.find(words) != std::string::npos; }

    // What is left, what was said and the status must fit together.
    void check(Fault fault, int error, int n) const {
        const std::string where = met_.last + " at call " + std::to_string(n) + ": " + ran_.err;
        const std::string base = path("run");
        const TraceStorePtr left = mt_OpenForRead(base);
        const std::string read = left ? events(*left) : "";
        EXPECT_EQ(whole_.compare(0, read.size(), read), 0) << where;
        EXPECT_FALSE(said(std::strerror(stale)) || said("Success")) << where;
        if (ran_.status == 0) {
            const std::string made = Json::parse(ran_.out).at("base");
            EXPECT_EQ(events(*mt_OpenForRead(made)), whole_) << where;
            EXPECT_TRUE(made == base ? ran_.err.empty() : said("the store is " + made)) << where;
            return;
        }
        ASSERT_EQ(ran_.status, 1) << where;
        EXPECT_TRUE(fault == Fault::Short || said(std::strerror(error))) << where;
        EXPECT_TRUE(read == whole_ || said("The earlier store \"" + base + "\" was removed.")) << where;
        checkMissing(left ? mt_GetEventCount(*left) : 0, left ? mt_GetTimeRange(*left).end : 0, where);
    }
    // Where events are missing: how many, and at what time the store ends.
    void checkMissing(uint64_t kept, mt_Time end, const std::string& where) const {
        std::smatch found;
        const std::regex words(
            "([0-9]+) events could not be taken into the store, which (is empty|ends at ([0-9.]+) s)");
        if (!std::regex_search(ran_.err, found, words)) {
            EXPECT_TRUE(kept == 0 || kept == event_count) << where;
            return;
        }
        EXPECT_EQ(std::stoull(found[1]) + kept, event_count) << where;
        if (kept > 0) {
            EXPECT_EQ(std::llround(std::stod(found[3]) * 1000) + 1, static_cast<long long>(end)) << where;
        }
    }

    std::string whole_;
    Ran ran_;
    Faults met_;
};

}  // namespace

TEST_F(ImportFaults, EndWithStatus1AndSayWhatIsMissing) {
    for (const Fault fault : {Fault::Fails, Fault::FailsOn, Fault::Short}) {
        const int error = fault == Fault::Fails ? EIO : ENOSPC;
        int n = 1, failed = 0;
        for (; importFailing(fault, error, n) && !HasFatalFailure(); ++n) {
            check(fault, error, n);
            failed += ran_.status;
            ASSERT_EQ(run({"import", path("run.trr")}).status, 0);  // what stands there before is whole again
        }
        EXPECT_GT(n, 20) << "the calls are not counted";
        EXPECT_GT(failed, n / 3);
    }
}
