// The link against a server that is a script: what the panel shows, the flags, the time that was waited, and
// what is left behind.
#include "chronoweave/live/target_link.h"

#include <fcntl.h>
#include <sys/wait.h>

#include "chronoweave/live/link_words.h"
#include "chronoweave/live/live_testing.h"

namespace {

constexpr unsigned connected = Target_Connected, logging = Target_LoggingStarted | connected,
                   live = Target_LiveModeEnabled | connected;

struct Command {
    const char* begin;  // of what is sent
    const char* word;   // that acknowledges it; empty for none
    unsigned before, after;
    void (*press)(TargetLink& link);
};
const Command commands[] = {
    {"c ", "established", 0, connected, [](TargetLink& link) { TargetConnect(link, "board -port 5", {}); }},
    {"d", "disconnected from", connected, 0, [](TargetLink& link) { TargetConnect(link, "board", {}); }},
    {"g", "event logging: on", connected, logging, TargetStartStop},
    {"s", "event logging: off", logging, connected, TargetStartStop},
    {"l ", "enabled", connected, live, [](TargetLink& link) { TargetEnable(link, "/folder/run.trr"); }},
    {"n", "disabled", live, connected, TargetDisable},
    {"M ", "", connected, connected, [](TargetLink& link) { TargetSetMask(link, "0x3f"); }},
    {"info", "", connected, connected, TargetInfo},
};

const ServerScript willing = {{"c ", script_Says("established\\n> ")},
                              {"g", script_Says("event logging: on\\n> ")},
                              {"l ", script_Says("live mode enabled\\n> ")}};

// A link in the state that the command is for.
void bring_to(TargetLink& link, unsigned flags) {
    if (flags & connected) TargetConnect(link, "board", {});
    if (flags & Target_LoggingStarted) TargetStartStop(link);
    if (flags & Target_LiveModeEnabled) TargetEnable(link, "/folder/run.trr");
    ASSERT_EQ(link.flags, flags);
}

enum class Ends { AsSent, Unchanged, Refused, Lost };
struct Behaviour {
    const char* name;
    std::string step;   // of the server; empty: it is killed before the command is sent
    std::string shown;  // in the panel
    Ends ends;
    int64_t spent;  // milliseconds
};

std::vector<Behaviour> behaviours(const Command& command) {
    const std::string word = command.word;
    const std::string padding(120, 'x'), rest(80 - word.size(), 'y');
    const std::string lost = words_ServerLost;
    return {
        {"answered", script_Says("so: " + word + " it is\\r\\n> "), "so: " + word + " it is\n", Ends::AsSent,
         0},
        {"refused", script_Says("no\\n> "), "no\n", Ends::Refused, 0},
        {"silent", script_Silent, "", Ends::Unchanged, 5000},
        {"cut", script_Says(word + " and"), "", Ends::Unchanged, 5000},
        {"bad byte", script_Says("a\\n\\377" + word + "\\n> "), "a\n", Ends::Unchanged, 0},
        {"200 characters", script_Says(padding + word + rest + "\\n> "),
         (padding + word + rest).substr(0, 126) + "\n" + (padding + word + rest).substr(126) + "\n",
         word.size() > 6 || word.empty() ? Ends::Refused : Ends::AsSent, 0},
        {"killed before", "", gen_format(words_ShortWrite, EPIPE) + lost, Ends::Lost, 0},
        {"killed after", script_Says("going\\n") + "; " + script_Dies, "going\n" + lost, Ends::Lost, 0},
        {"stopped", script_Stops, "", Ends::Unchanged, 5000},
    };
}

// A connect that is not answered gives the server up.
struct Expected {
    std::string shown;
    unsigned flags;
    bool server;
};
Expected expected_of(const Command& command, const Behaviour& behaviour) {
    const bool connects = command.begin[0] == 'c';
    switch (behaviour.ends) {
        case Ends::AsSent:
            return {behaviour.shown, command.after, true};
        case Ends::Refused:
            return {behaviour.shown, command.before, true};
        case Ends::Unchanged:
            if (connects) return {behaviour.shown + words_ConnectTimeOut, 0, false};
            return {behaviour.shown, command.before, true};
        case Ends::Lost:
            return {behaviour.shown + (connects ? words_ConnectTimeOut : ""), 0, false};
    }
    return {};
}

void check(ScriptedInstallation& installation, const Command& command, const Behaviour& behaviour) {
    SCOPED_TRACE(std::string(command.begin) + ", " + behaviour.name);
    ServerScript script = willing;
    if (!behaviour.step.empty()) script[command.begin] = behaviour.step;
    installation.Script(script);
    const size_t before = open_descriptors();
    {
        ScriptedLink scripted(installation);
        TargetLink& link = scripted.link;
        if (command.before == 0) TargetLinkEnsureServer(link);
        bring_to(link, command.before);
        if (behaviour.step.empty()) scripted.Kill();
        scripted.panel.text.clear();
        scripted.begin = scripted.wait.now;
        command.press(link);
        const Expected expected = expected_of(command, behaviour);
        EXPECT_EQ(scripted.panel.text, expected.shown);
        EXPECT_EQ(link.flags, expected.flags);
        EXPECT_EQ(link.server != nullptr, expected.server);
        EXPECT_EQ(link.alive, expected.server);
        EXPECT_EQ(scripted.SpentMs(), behaviour.spent);
        const bool unanswered = behaviour.ends == Ends::Unchanged && expected.server;
        EXPECT_EQ(scripted.told, unanswered ? words_NoAnswer : "");
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(semaphores_left(), 0u);
    EXPECT_EQ(child_Left(), 0u);
}

class TargetLinkTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
    }
    void TearDown() override { gen_set_console_sink({}); }
    ScriptedInstallation installation;
};

TEST_F(TargetLinkTest, EachCommandAgainstWhatAServerCanDo) {
    for (const Command& command : commands)
        for (const Behaviour& behaviour : behaviours(command)) check(installation, command, behaviour);
}

TEST_F(TargetLinkTest, ThreeHundredDescriptorsAreInNobodysWay) {
    std::vector<FileDescriptor> open;
    for (int i = 0; i < 300; ++i) open.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    for (const Command& command : commands)
        for (const Behaviour& behaviour : behaviours(command)) check(installation, command, behaviour);
}

TEST_F(TargetLinkTest, TheFirstAnswerMustComeForConnectAlone) {
    installation.Script(willing, "hello");
    ScriptedLink first(installation);
    TargetConnect(first.link, "board", {});
    EXPECT_EQ(first.panel.text, words_BadResponse);
    EXPECT_EQ(first.SpentMs(), 5000);
    EXPECT_EQ(first.link.server, nullptr);
    ScriptedLink other(installation);
    TargetInfo(other.link);
    EXPECT_EQ(other.panel.text, words_NotConnected);
    EXPECT_NE(other.link.server, nullptr) << "another button leaves the server";
    EXPECT_FALSE(other.link.pollTask) << "only Connect has it polled";
}

TEST_F(TargetLinkTest, WhatCantBeSentIsToldAndSentToNobody) {
    installation.Script(willing);
    ScriptedLink scripted(installation);
    const struct {
        const char* target;
        const char* shown;
    } rows[] = {{"", words_NoTarget},
                {"a\nq", words_NoTarget},
                {"board%d", "trv 1.0\nCannot send message to event server(errno=0).\n"}};
    for (const auto& row : rows) {
        scripted.panel.text.clear();
        TargetConnect(scripted.link, row.target, {});
        EXPECT_EQ(scripted.panel.text, row.shown);
        EXPECT_EQ(scripted.link.flags, 0u);
    }
    EXPECT_EQ(scripted.SpentMs(), 0);
    bring_to(scripted.link, connected);
    scripted.panel.text.clear();
    TargetEnable(scripted.link, "run\n.trr");
    EXPECT_EQ(scripted.panel.text, words_BadFileName);
    EXPECT_EQ(installation.Got(), "c board\n");
}

TEST_F(TargetLinkTest, AServerThatCantBeStartedIsToldByEveryButton) {
    const size_t before = open_descriptors();
    std::filesystem::remove(installation.folder / "gexec");
    std::filesystem::create_directory(installation.folder / "gexec");
    ScriptedLink scripted(installation);
    const std::string path = ::getenv("PATH");
    ::setenv("PATH", "/nowhere", 1);
    for (const Command& command : commands) {
        if (command.before & (Target_LiveModeEnabled | Target_LoggingStarted) || command.begin[0] == 'l')
            continue;
        scripted.panel.text.clear();
        command.press(scripted.link);
        EXPECT_EQ(scripted.panel.text, words_NoSpawn) << command.begin;
    }
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(semaphores_left(), 0u);
}

// A fault while a command is sent, or its answer read, is told and changes nothing else.
TEST_F(TargetLinkTest, AFaultInTheMiddleIsTold) {
    class FaultyPanel : public RecordingPanel {
      public:
        using RecordingPanel::RecordingPanel;
        void AddLine(const std::string& line) override {
            if (std::exchange(fault, false)) throw std::runtime_error("a fault");
            RecordingPanel::AddLine(line);
        }
        bool fault = false;
    };
    installation.Script({});
    ScriptedLink scripted(installation);
    TargetLink& link = scripted.link;
    FaultyPanel panel(link);
    ASSERT_TRUE(TargetLinkEnsureServer(link));
    link.Set(Target_Connected, true);
    panel.text.clear();
    panel.fault = true;
    EXPECT_FALSE(TargetLinkSend(link, "100%\n"));
    EXPECT_EQ(std::exchange(panel.text, {}), words_SendFailed);
    installation.Script({{"info", script_Says("of much\n> ")}});
    TargetLinkClose(link, LinkEnd::ForNow);
    ASSERT_TRUE(TargetLinkEnsureServer(link));
    link.Set(Target_Connected, true);
    panel.text.clear();
    panel.fault = true;
    TargetInfo(link);
    EXPECT_EQ(panel.text, words_ReplyFailed);
    EXPECT_TRUE(link.server && link.alive && link.Has(Target_Connected));
}

TEST_F(TargetLinkTest, APollShowsWhatCameUnaskedAndNoticesTheEnd) {
    installation.Script(
        {{"c ", script_Says("established\\n> and more\\nTarget Event Log Mask: \\t0x3f \\nhal")},
         {"info", script_Says("f\\n> ")}});
    ScriptedLink scripted(installation);
    TargetConnect(scripted.link, "board", {});
    ASSERT_TRUE(scripted.link.pollTask);
    scripted.panel.text.clear();
    scripted.wait.now += std::chrono::milliseconds(500);
    EXPECT_TRUE(scripted.tasks.Run(scripted.wait.now));
    EXPECT_EQ(scripted.panel.text, "and more\nTarget Event Log Mask: \t0x3f \n");
    EXPECT_EQ(scripted.panel.mask, "0x3f");
    EXPECT_EQ(scripted.link.maskText, "0x3f");
    TargetInfo(scripted.link);
    EXPECT_TRUE(scripted.panel.text.ends_with("half\n")) << scripted.panel.text;
    scripted.Kill();
    scripted.panel.text.clear();
    scripted.wait.now += std::chrono::milliseconds(500);
    EXPECT_TRUE(scripted.tasks.Run(scripted.wait.now));
    EXPECT_EQ(scripted.panel.text, words_ServerLost);
    EXPECT_EQ(scripted.link.flags, 0u);
    EXPECT_EQ(scripted.panel.mask, words_NoMask);
    EXPECT_FALSE(scripted.link.pollTask);
}

TEST_F(TargetLinkTest, WithoutAPanelTheEndIsToldElsewhere) {
    installation.Script(willing);
    ScriptedLink scripted(installation);
    bring_to(scripted.link, connected);
    scripted.link.panel = nullptr;
    scripted.Kill();
    TargetLinkPoll(scripted.link);
    EXPECT_EQ(scripted.told, words_ServerLost);
    EXPECT_EQ(scripted.link.lastMessage, words_ServerLost);
}

// A server that never stops talking holds neither a poll nor, once the user wants no more, a command.
TEST_F(TargetLinkTest, AFloodEnds) {
    installation.Script({{"c ", script_Says("established\\n> ") + "; while :; do printf 'x\\n'; done"}});
    ScriptedLink scripted(installation);
    TargetConnect(scripted.link, "board", {});
    scripted.panel.text.clear();
    TargetLinkPoll(scripted.link);
    EXPECT_LE(scripted.panel.text.size(), 400u);
    EXPECT_TRUE(scripted.link.alive);
    scripted.wait.stop = true;
    struct Hasty : ScriptedWait {
        using ScriptedWait::ScriptedWait;
        Clock::time_point Now() override { return now += std::chrono::milliseconds(1); }
    } hasty(scripted.link);
    hasty.stop = true;
    scripted.link.around.wait = &hasty;
    TargetInfo(scripted.link);
    EXPECT_TRUE(scripted.link.alive);
    scripted.link.around.wait = &scripted.wait;
}

TEST_F(TargetLinkTest, WithoutATimeOutAWaitGoesOnUntilItIsStopped) {
    ServerScript script = willing;
    script["g"] = script_Silent;
    installation.Script(script);
    ScriptedLink scripted(installation);
    bring_to(scripted.link, connected);
    for (const int timeout : {0, -7}) {
        scripted.timeout = timeout;
        TargetStartStop(scripted.link);
        EXPECT_EQ(scripted.SpentMs(), 0);
        EXPECT_EQ(scripted.link.flags, connected);
    }
}

TEST_F(TargetLinkTest, MasksAreReadAsCReadsNumbers) {
    installation.Script(willing);
    ScriptedLink scripted(installation);
    bring_to(scripted.link, connected);
    const struct {
        const char* text;
        const char* sent;  // empty: refused
    } rows[] = {{"0x3f", "0x3f"}, {"12abc", "0xc"}, {"0", "0x0"}, {"010", "0x8"},
                {" 7", "0x7"},    {"", ""},         {"N/A", ""},  {"x12", ""}};
    std::string sent = "c board\n";
    for (const auto& row : rows) {
        scripted.panel.text.clear();
        TargetSetMask(scripted.link, row.text);
        EXPECT_EQ(scripted.panel.text, row.sent[0] ? "" : words_BadMask) << row.text;
        if (row.sent[0]) sent += std::string("M ") + row.sent + "\n";
        EXPECT_EQ(installation.Got(), sent);
    }
}

TEST_F(TargetLinkTest, AThousandConnectsLeaveNothing) {
    installation.Script(willing);
    const size_t before = open_descriptors();
    {
        ScriptedLink scripted(installation);
        for (int i = 0; i < 1000; ++i) {
            TargetConnect(scripted.link, "board", {});
            ASSERT_EQ(scripted.link.flags, connected) << i;
            if (i % 2 == 0) scripted.Kill();
            TargetLinkClose(scripted.link, LinkEnd::ForNow);
        }
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(semaphores_left(), 0u);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

// One that ignores both the command to end and the end of its input is ended by force.
TEST_F(TargetLinkTest, AServerThatDoesntEndIsEnded) {
    installation.Script({{"c ", "trap '' TERM HUP; while :; do :; done"}});
    ScriptedLink scripted(installation);
    ASSERT_TRUE(TargetLinkEnsureServer(scripted.link));
    ASSERT_TRUE(TargetLinkSend(scripted.link, "c board\n"));
    const pid_t pid = *scripted.link.server->child.pid();
    TargetLinkClose(scripted.link, LinkEnd::ForNow);
    EXPECT_EQ(server_Reap(), 1u);
    EXPECT_EQ(server_Reap(std::chrono::milliseconds(0)), 0u);
    EXPECT_LT(::kill(pid, 0), 0);
}

}  // namespace
