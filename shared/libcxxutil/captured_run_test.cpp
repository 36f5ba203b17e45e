#include "shared/libcxxutil/captured_run.h"

#include <gtest/gtest.h>

namespace {

CapturedRun shell(
    const std::string& script, const std::function<bool()>& goesOn = [] { return true; }) {
    return run_Captured({.arguments = {"sh", "-c", script}}, 100, goesOn);
}

TEST(CapturedRun, TellsHowAProgramEndedAndWhatItPrinted) {
    const struct {
        const char* script;
        bool succeeded;
        ChildEnd end;
        const char* printed;
    } cases[] = {
        {"echo out; echo err >&2", true, {ChildEnd::How::Exited, 0}, "out\nerr\n"},
        {"echo bad >&2; exit 3", false, {ChildEnd::How::Exited, 3}, "bad\n"},
        {"printf x; kill -9 $$", false, {ChildEnd::How::Killed, 9}, "x"},
        {"exec >&- 2>&-; sleep 0.05; exit 4", false, {ChildEnd::How::Exited, 4}, ""},
        {"read line || echo nothing", true, {ChildEnd::How::Exited, 0}, "nothing\n"},
        {"sleep 60 & echo left", true, {ChildEnd::How::Exited, 0}, "left\n"},
    };
    for (const auto& c : cases) {
        const CapturedRun run = shell(c.script);
        EXPECT_EQ(run.succeeded(), c.succeeded) << c.script;
        ASSERT_TRUE(run.end) << c.script;
        EXPECT_EQ(run.end->how, c.end.how) << c.script;
        EXPECT_EQ(run.end->number, c.end.number) << c.script;
        EXPECT_EQ(run.printed, c.printed);
    }
    const CapturedRun none = run_Captured({.arguments = {"/no/such/program"}}, 100, [] { return true; });
    EXPECT_FALSE(none.succeeded());
    EXPECT_NE(none.started.text(), "");
}

TEST(CapturedRun, KeepsTheEndsOfALongText) {
    const CapturedRun run = shell("echo begin; head -c 10000000 /dev/zero | tr '\\0' x; echo end");
    EXPECT_TRUE(run.succeeded());
    EXPECT_EQ(run.printed, "begin\n" + std::string(94, 'x') + "\n... 9999810 more bytes ...\n" +
                               std::string(96, 'x') + "end\n");
    TextEnds small(3);
    for (const char* part : {"ab", "cd", "ef"}) small.add(part);
    EXPECT_EQ(small.text(), "abcdef");
}

TEST(CapturedRun, EndsAProgramThatIsToStop) {
    for (const char* script : {"sleep 1000", "trap 'exit 0' TERM; while :; do sleep 0.01; done", "exec yes",
                               "exec >&-; exec 2>&-; exec sleep 1000"}) {
        int asked = 0;
        const CapturedRun run = shell(script, [&] { return ++asked < 4; });
        EXPECT_TRUE(run.stopped) << script;
        EXPECT_FALSE(run.succeeded());
        EXPECT_TRUE(run.end) << script;
    }
}

}  // namespace
