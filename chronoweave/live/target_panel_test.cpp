// The control panel as its user sees it, over a server that is a script.
#include "chronoweave/live/target_panel.h"

#include "chronoweave/live/link_words.h"
#include "chronoweave/live/live_target.h"
#include "chronoweave/live/live_testing.h"
#include "chronoweave/live/panel_description.h"
#include "chronoweave/live/target_mask.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "windlib/config/settings.h"
#include "windlib/dialog/dialog_testing.h"
#include "windlib/dialog/host_testing.h"

namespace {

const ServerScript willing = {{"c ", script_Says("established\\nTarget Event Log Mask: 0x3f\\n> ")},
                              {"d", script_Says("disconnected from it\\n> ")},
                              {"g", script_Says("event logging: on\\n> ")},
                              {"s", script_Says("event logging: off\\n> ")},
                              {"l ", script_Says("enabled\\n> ")},
                              {"n", script_Says("disabled\\n> ")},
                              {"info", script_Says("a board\\n> ")}};

class TargetPanelTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        installation.Script(willing);
        canvas.calls.host = &host;
        LiveWindow window;
        window.load = [this](const std::string& name) { return loaded.push_back(name), true; };
        window.reset = [this] { ++resets, Forget(); };
        window.growing = [] { return static_cast<ImportSession*>(nullptr); };
        window.endGrowing = [] {};
        window.source = [this] { return source; };
        window.draw = [](const std::function<void()>& work) { work(); };
        window.grew = [] {};
        target = std::make_unique<LiveTarget>(canvas, window,
                                              LiveServices{.tasks = &tasks, .settings = &settings});
        wait = std::make_unique<ScriptedWait>(target->link());
        target->link().around.wait = wait.get();
        target->link().around.installation = installation.path();
    }
    void TearDown() override {
        target.reset();
        EXPECT_EQ(server_Reap(std::chrono::milliseconds(0)), 0u);
        gen_set_console_sink({});
    }
    void Forget() { source.clear(); }
    DialogModel& Panel() {
        if (!target->panel().IsOpen()) {
            EXPECT_TRUE(laCanvas_Command(canvas, "Korvantis"));
        }
        return *target->panel().model();
    }
    std::string Text(const char* item) { return Panel().shownText(item); }
    std::string Output() {
        std::string text;
        MScrollList& list = Panel().list("TargetOutput");
        for (int row = 0; row < list.RowCount(); ++row) text += list.Text(row, 0) + "\n";
        return text;
    }
    void Connect() {
        Panel().type("ConnectToTarget", "board -port 7");
        Panel().press("ConnectButton");
        ASSERT_TRUE(target->link().Has(Target_Connected));
    }
    void TypeFile(const std::string& name) { Panel().type("outputFile", name); }

    ScriptedInstallation installation;
    TestFolder folder;
    EventTasks tasks;
    SettingsManager settings{{}, folder / "config"};
    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    std::vector<std::string> loaded;
    std::string source;  // that the window shows
    int resets = 0;
    std::unique_ptr<LiveTarget> target;
    std::unique_ptr<ScriptedWait> wait;
};

TEST_F(TargetPanelTest, HasItsItemsAndSurvivesFontsAndSizes) {
    const DialogDescription description = target_PanelDescription();
    const char* names[] = {"ConnectToTarget", "ConnectButton", "ControlLogging", "TextEventLogging",
                           "LiveMode",        "LiveModeText",  "MaskField",      "MaskButton",
                           "TargetOutput",    "sbox",          "Info",           "Disconnect",
                           "outputFile",      "browseFile"};
    ASSERT_EQ(description.items.size(), std::size(names));
    for (size_t i = 0; i < std::size(names); ++i) EXPECT_EQ(description.items[i].name, names[i]);
    EXPECT_EQ(dialog_CheckAll(description), std::vector<std::string>());
    EXPECT_FALSE(Panel().item("Disconnect").visible);
}

TEST_F(TargetPanelTest, LabelsAndFieldsFollowTheFlags) {
    Panel();
    struct Row {
        const char* press;
        const char *connect, *logging, *live;
        bool usable, editable, file;  // the four buttons, the target, the file
    };
    const Row rows[] = {{"", "Connect", "Start", "Enable", false, true, true},
                        {"ConnectButton", "Disconnect", "Start", "Enable", true, false, true},
                        {"ControlLogging", "Disconnect", "Stop", "Enable", true, false, true},
                        {"LiveMode", "Disconnect", "Stop", "Disable", true, false, false},
                        {"LiveMode", "Disconnect", "Stop", "Enable", true, false, true},
                        {"LiveMode", "Disconnect", "Stop", "Disable", true, false, false},
                        {"ConnectButton", "Connect", "Start", "Enable", false, true, true}};
    TypeFile(folder / "run");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.press);
        EXPECT_TRUE(row.press[0] == '\0' || Panel().press(row.press));
        EXPECT_EQ(Text("ConnectButton"), row.connect);
        EXPECT_EQ(Text("ControlLogging"), row.logging);
        EXPECT_EQ(Text("LiveMode"), row.live);
        for (const char* item : {"ControlLogging", "LiveMode", "MaskButton", "Info"})
            EXPECT_EQ(Panel().item(item).enabled, row.usable) << item;
        EXPECT_EQ(Panel().item("ConnectToTarget").readOnly, !row.editable);
        EXPECT_EQ(Panel().item("outputFile").readOnly, !row.file);
        EXPECT_EQ(Panel().item("browseFile").enabled, row.file);
        EXPECT_EQ(canvas.calls.upper.serverConnected, row.usable);
    }
}

TEST_F(TargetPanelTest, ClosingAndOpeningBringsBackWhatStood) {
    Connect();
    Panel().press("ControlLogging");
    Panel().press("Info");
    EXPECT_EQ(Text("MaskField"), "0x3f");
    Panel().dismiss();
    EXPECT_FALSE(target->panel().IsOpen());
    EXPECT_NE(target->link().server, nullptr) << "the server goes on";
    canvas.source.osKind = Os_ThreadX;
    EXPECT_EQ(Text("ConnectButton"), "Disconnect");
    EXPECT_EQ(Text("ControlLogging"), "Stop");
    EXPECT_EQ(Text("ConnectToTarget"), "board -port 7");
    EXPECT_EQ(Text("MaskField"), "0x3f");
    EXPECT_EQ(Output(), "a board\n");
    EXPECT_TRUE(laCanvas_Command(canvas, "Korvantis"));
    EXPECT_EQ(host.raised, target->panel().model()) << "an open one is raised";
    EXPECT_TRUE(laCanvas_CanDo(canvas, "Korvantis"));
}

TEST_F(TargetPanelTest, ANewcomerIsOfferedTargetsAndAnOldHandThoseOfBefore) {
    EXPECT_EQ(Text("ConnectToTarget"), "sim");
    host.popUpAnswer = 3;
    Panel().pullDown("ConnectToTarget");
    EXPECT_EQ(Text("ConnectToTarget"), "linux");
    EXPECT_EQ(host.popUp.size(), 4u);
    Connect();
    Panel().press("ConnectButton");
    Panel().dismiss();
    target->link().targetText.clear();
    EXPECT_EQ(Text("ConnectToTarget"), "board -port 7") << "the newest of those before";
    host.popUpAnswer = 2;
    Panel().pullDown("ConnectToTarget");
    EXPECT_EQ(host.popUp[0].text, "board -port 7");
    EXPECT_EQ(Text("ConnectToTarget"), "sim");
}

TEST_F(TargetPanelTest, TheMasksPullDownTurnsBitsOver) {
    const struct {
        const char* text;
        int chosen;
        const char* after;  // in the field
        unsigned checked;   // bits; ~0u: no menu
    } rows[] = {{"0x3f", -1, "0x3f", 0x3f},
                {"0x3f", 1, "0x0000003e", 0x3f},
                {"63", 0, "0x0000003f", 0x3f},
                {"0x8000", 14, "0x0000a000", 0},
                {"0xffffc001", 2, "0xffffc003", 1},
                {"12abc", 1, "12abc", ~0u},
                {"", 1, "", ~0u},
                {"N/A", 1, "N/A", ~0u}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        host.popUp.clear();
        host.popUpAnswer = row.chosen;
        Panel().type("MaskField", row.text);
        Panel().pullDown("MaskField");
        EXPECT_EQ(Text("MaskField"), row.after);
        ASSERT_EQ(host.popUp.size(), row.checked == ~0u ? 0u : 15u);
        for (size_t bit = 0; bit + 1 < host.popUp.size(); ++bit)
            EXPECT_EQ(host.popUp[bit + 1].checked, (row.checked >> bit & 1) != 0) << bit;
    }
    EXPECT_EQ(installation.Got(), "") << "nothing is sent until the button is pressed";
}

TEST_F(TargetPanelTest, EnterDoesAsTheButtonBesideTheField) {
    Panel().type("ConnectToTarget", "board");
    Panel().key(DialogKey::Enter, "ConnectToTarget");
    EXPECT_TRUE(target->link().Has(Target_Connected));
    TypeFile(folder / "run");
    Panel().key(DialogKey::Enter, "outputFile");
    EXPECT_TRUE(target->link().Has(Target_LiveModeEnabled));
    Panel().key(DialogKey::Enter, "outputFile");
    EXPECT_FALSE(target->link().Has(Target_LiveModeEnabled)) << "also off";
}

TEST_F(TargetPanelTest, LiveModeMakesTheFileAndLoadsItWithTheRefreshOn) {
    Connect();
    TypeFile(folder / "run");
    canvas.source.liveRefresh = false;
    Panel().press("LiveMode");
    EXPECT_EQ(Text("outputFile"), folder / "run.trr");
    EXPECT_EQ(installation.Got(), "c board -port 7\nl " + (folder / "run.trr") + "\n");
    EXPECT_EQ(std::filesystem::file_size(folder / "run.trr"), 0u);
    EXPECT_EQ(loaded, std::vector<std::string>{folder / "run.trr"});
    EXPECT_TRUE(canvas.source.liveRefresh);
    EXPECT_FALSE(target->link().Has(Target_LoadPending));
    EXPECT_TRUE(host.questions.empty());
}

TEST_F(TargetPanelTest, AFileThatIsThereIsReplacedIfTheUserWantsThat) {
    std::ofstream(folder / "run.trr") << "old";
    source = folder / "run.trs";
    Connect();
    TypeFile("run");
    host.askAnswer = false;
    Panel().press("LiveMode");
    EXPECT_EQ(host.questions,
              std::vector<std::string>{"run.trr already exists and will be overwritten.  Continue?"});
    EXPECT_EQ(std::filesystem::file_size(folder / "run.trr"), 3u);
    EXPECT_EQ(installation.Got(), "c board -port 7\n");
    host.askAnswer = true;
    Panel().press("LiveMode");
    EXPECT_GE(resets, 1) << "it is the canvas's";
    EXPECT_EQ(std::filesystem::file_size(folder / "run.trr"), 0u);
    EXPECT_EQ(Text("outputFile"), "run.trr") << "the field keeps what was typed";
    EXPECT_EQ(loaded.size(), 1u);
}

TEST_F(TargetPanelTest, AnotherTraceIsKeptUnlessTheUserLetsItGo) {
    ASSERT_TRUE(test.Open(random_events(1, 50), "Korvantis"));
    source = folder / "other.trs";
    Connect();
    for (const bool answer : {false, true}) {
        host.askAnswer = answer;
        host.questions.clear();
        loaded.clear();
        std::filesystem::remove(folder / "run.trr");
        TypeFile("run.trr");
        Panel().press("LiveMode");
        EXPECT_EQ(host.questions, std::vector<std::string>{"Load file run.trr into canvas?"});
        EXPECT_EQ(loaded.size(), answer ? 1u : 0u);
        Panel().press("LiveMode");
    }
}

TEST_F(TargetPanelTest, NamesThatCantBeSentReplaceNothing) {
    std::ofstream(folder / "a%d.trr") << "old";
    Connect();
    for (const std::string& name : {folder / "a%d.trr", std::string("a\nb"), std::string()}) {
        TypeFile(name);
        Panel().press("LiveMode");
        EXPECT_FALSE(target->link().Has(Target_LiveModeEnabled));
    }
    EXPECT_TRUE(host.questions.empty());
    EXPECT_EQ(std::filesystem::file_size(folder / "a%d.trr"), 3u);
    EXPECT_EQ(installation.Got(), "c board -port 7\n");
    EXPECT_TRUE(Output().ends_with("(errno=0).\nInvalid file name.\nInvalid file name.\n")) << Output();
}

TEST_F(TargetPanelTest, AChosenFileIsTheLogFile) {
    Connect();
    host.fileAnswers.push_back({folder / "chosen.trr"});
    Panel().press("browseFile");
    EXPECT_EQ(Text("outputFile"), folder / "chosen.trr");
    EXPECT_EQ(host.fileQuestions.back().title, "Save To?");
    EXPECT_TRUE(target->link().Has(Target_LoadPending));
    Panel().press("browseFile");
    EXPECT_EQ(Text("outputFile"), folder / "chosen.trr") << "cancelled";
}

TEST_F(TargetPanelTest, TheOutputFollowsItsEndAndKeepsItsNewestLines) {
    Panel();
    MScrollList& list = Panel().list("TargetOutput");
    list.SetViewHeight(100);
    for (int i = 0; i < TargetPanel::mostLines + 50; ++i)
        ShowPanelMessage(target->link(), "line " + std::to_string(i) + "\n");
    EXPECT_LE(list.RowCount(), TargetPanel::mostLines);
    EXPECT_EQ(list.Text(list.RowCount() - 1, 0), "line " + std::to_string(TargetPanel::mostLines + 49));
    EXPECT_EQ(list.ViewTop() + list.ViewHeight(), list.TopOf(list.RowCount()));
}

}  // namespace
