// The adapter with a gdb that a script plays, and with the real one where there is one.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "companions/gdb_link/gdb_client.h"
#include "companions/gdb_link/recorded_process.h"
#include "shared/libcxxutil/captured_run.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/stp_transport/transport.h"

namespace {

// A program that answers as the lines of a shell's "case" say; it writes down what it is told.
class FakeGdb {
  public:
    explicit FakeGdb(const std::string& cases)
        : folder_(std::filesystem::temp_directory_path() / ("cw_gdb_" + std::to_string(::getpid()))) {
        std::filesystem::create_directories(folder_);
        std::ofstream(program()) << "#!/bin/sh\nwhile read -r line; do\n  echo \"$line\" >> " << log()
                                 << "\n  t=${line%%-*}\n  case \"$line\" in\n"
                                 << cases << "\n  *) echo \"$t^done\";;\n  esac\ndone\n";
        std::filesystem::permissions(program(), std::filesystem::perms::owner_all);
    }
    ~FakeGdb() { std::filesystem::remove_all(folder_); }
    FakeGdb(const FakeGdb&) = delete;
    FakeGdb& operator=(const FakeGdb&) = delete;
    std::string program() const { return folder_ / "gdb"; }
    std::string log() const { return folder_ / "log"; }
    std::string told() const {
        std::ifstream file(log());
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    std::filesystem::path folder_;
};

constexpr char listsWork[] =
    R"(  *list*) printf '~"0x401136 is in work (src/a b.c:12).\\n"\n'; echo "$t^done";;)";

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(MiRecords, AreTakenApart) {
    const MiRecord done = mi_Parse("12^done,frame={addr=\"0x1\",file=\"a\\\"b.c\",line=\"3\"}");
    EXPECT_EQ(done.kind, MiRecord::Kind::Result);
    EXPECT_EQ(done.token, 12u);
    EXPECT_EQ(done.name, "done");
    EXPECT_EQ(mi_Field(done, "file"), "a\"b.c");
    EXPECT_EQ(mi_Field(done, "ile"), std::nullopt);
    EXPECT_EQ(mi_Parse("~\"a\\tb\\n\"").rest, "a\tb\n");
    EXPECT_EQ(mi_Parse("*stopped,reason=\"exited\"").kind, MiRecord::Kind::Async);
    for (const char* odd : {"", "(gdb) ", "12", "&\"log\"", "~", "^", "99999999999999^done"}) mi_Parse(odd);
    EXPECT_EQ(mi_Quote("a\"\\\nb"), "\"a\\\"\\\\ b\"");
    const struct {
        const char* text;
        int line;
    } places[] = {{"0x1 is in f(int) (/x y/a.c:7).\n7\tx\n", 7},
                  {"0x1 is in f (a.c:x).", 0},
                  {"No line", 0},
                  {" is in ", 0}};
    for (const auto& row : places)
        EXPECT_EQ(gdb_PlaceOf(row.text).value_or(SourcePlace{}).line, row.line) << row.text;
}

TEST(GdbClient, ReadsProcessesAndCommands) {
    EXPECT_EQ(gdb_ProcessOf(1234 << 10 | 3), 1234);
    EXPECT_EQ(gdb_AttachedObject("attach 0x5a400"), 0x5a400u);
    EXPECT_EQ(gdb_AttachedObject("attach 0x5a400; route x"), 0x5a400u);
    for (const char* other : {"attach", "attach 0x", "attach 0x5g", "rewindscope -tid 0x1", ""})
        EXPECT_EQ(gdb_AttachedObject(other), std::nullopt) << other;
}

TEST(GdbClient, KnowsAProcessThatBeganAfterTheRecordingAsAnotherOne) {
    namespace fs = std::filesystem;
    const fs::path trace = fs::temp_directory_path() / ("cw_recorded_" + std::to_string(::getpid()));
    std::ofstream(trace) << "x";
    constexpr int nobody = 0x7FFFFFF0;
    EXPECT_TRUE(recorded_MayBe(::getpid(), trace));
    fs::last_write_time(trace, fs::last_write_time(trace) - std::chrono::hours(24 * 365));
    EXPECT_NE(recorded_Begin(::getpid()).has_value(), recorded_MayBe(::getpid(), trace));
    EXPECT_EQ(recorded_Begin(nobody), std::nullopt);
    EXPECT_TRUE(recorded_MayBe(nobody, trace)) << "that it has ended is said elsewhere";
    fs::remove(trace);
    EXPECT_TRUE(recorded_MayBe(::getpid(), trace));
}

TEST(GdbSession, AttachesToAProcessThatLivesElseLoadsItsProgram) {
    const FakeGdb fake(listsWork);
    std::string said;
    GdbSession gdb(fake.program(), [&](const std::string& text) { said += text; });
    SourcePlace place;
    ASSERT_TRUE(gdb.show(::getpid(), "/p/prog", 0x401136, place));
    EXPECT_EQ(place.function + "|" + place.file + "|" + std::to_string(place.line), "work|src/a b.c|12");
    EXPECT_TRUE(has(said, "is in work"));
    ASSERT_TRUE(gdb.show(::getpid(), "/p/prog", 0x401136, place));
    const std::string attach = "-target-attach " + std::to_string(::getpid());
    EXPECT_TRUE(has(fake.told(), attach));
    EXPECT_FALSE(has(fake.told().substr(fake.told().find(attach) + 5), attach)) << "once";
    constexpr int nobody = 0x7FFFFFF0;
    ASSERT_TRUE(gdb.show(nobody, "/p/prog", 0x401136, place));
    EXPECT_TRUE(has(fake.told(), "-target-detach"));
    EXPECT_TRUE(has(fake.told(), "-file-exec-and-symbols \"/p/prog\""));
    const Result none = gdb.show(nobody, "", 1, place);
    EXPECT_EQ(none.text(), "the process has ended, and no program file is named");
}

TEST(GdbSession, WhatGdbSaysUnaskedIsHeard) {
    const FakeGdb fake(
        "  *continue*) echo \"$t^running\"; echo '*stopped'; sleep 0.1; echo '~\"Breakpoint 1\"';;\n"
        "  *quit*) exit 0;;");
    EventLoop loop;
    std::string said;
    GdbSession gdb(
        fake.program(), [&](const std::string& text) { said += text; }, &loop.watches);
    ASSERT_TRUE(gdb.command("continue"));
    for (int i = 0; i < 100 && said.empty(); ++i) loop.round(std::chrono::milliseconds(100));
    EXPECT_EQ(said, "Breakpoint 1");
    EXPECT_FALSE(gdb.command("quit")) << "its end is seen";
    EXPECT_TRUE(gdb.command("help")) << "and another one is started";
}

TEST(GdbSession, FailuresSayWhatDidNotWork) {
    const auto text = [](const std::string& cases) {
        const FakeGdb fake(cases);
        GdbSession gdb(fake.program(), [](const std::string&) {});
        SourcePlace place;
        constexpr int nobody = 0x7FFFFFF0;
        return gdb.show(nobody, "/p/prog", 0x10, place).text();
    };
    EXPECT_TRUE(has(text("  *file-exec*) echo \"$t^error,msg=\\\"No such file.\\\"\";;"), "No such file."));
    EXPECT_TRUE(has(text("  *list*) exit 1;;"), "gdb has ended"));
    EXPECT_TRUE(has(text("  *confirm*) exit 1;;"), "gdb has ended"));
    EXPECT_EQ(text("  *nothing*) ;;"), "no source line is known for the address 0x10");
    GdbSession none("/no/gdb", [](const std::string&) {});
    EXPECT_FALSE(none.command("help"));
}

TEST(GdbSession, TheRealOneFindsTheLineOfAnAddress) {
    if (path_find_program("gdb").empty()) GTEST_SKIP() << "no gdb here";
    const CapturedRun where = run_Captured({.arguments = {CW_SPIN, "0"}}, 1000, [] { return true; });
    const uint64_t address = std::strtoull(where.printed.c_str(), nullptr, 16);
    ASSERT_NE(address, 0u) << where.printed;
    GdbSession gdb("gdb", [](const std::string&) {});
    SourcePlace place;
    constexpr int nobody = 0x7FFFFFF0;
    const Result shown = gdb.show(nobody, CW_SPIN, address, place);
    ASSERT_TRUE(shown) << shown.text();
    EXPECT_EQ(place.function, "add_up");
    EXPECT_TRUE(place.file.ends_with("spin.c")) << place.file;
    EXPECT_GT(place.line, 5);
}
