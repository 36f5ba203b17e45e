// Merging from the window: every answer, every box, and tools that behave in every way.
#include "chronoweave/analysis/merge_dialogs.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "chronoweave/import/import.h"
#include "chronoweave/import/raw/raw_writer.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/dialog_testing.h"
#include "windlib/dialog/host_testing.h"

namespace {

class MergeDialogs : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([this](std::string_view text) { console += text; });
        canvas.calls.upper.commands["Open"] = [this](const std::string& name) {
            EXPECT_FALSE(gate_Program().Runs(GateWork::Merge));
            opened.push_back(name);
            return loads;
        };
        canvas.calls.progress = [this](double done, double total) {
            EXPECT_LE(far, done);
            EXPECT_LE(far = done, total);
            EXPECT_TRUE(gate_Program().Runs(GateWork::Merge));
            EXPECT_EQ(host.busy, 1);
            EXPECT_EQ(test.message(), "Merging event source files ...");
            return ++asked < stopAt;
        };
        host.drive = [](DialogModel& dialog) { dialog.press("Ok_BS"); };
        ASSERT_TRUE(test.Open({user(5, 1, 2)}));
        around.tool = Tool("exit 0");
    }
    void TearDown() override {
        gen_set_console_sink({});
        EXPECT_EQ(host.busy, 0);
        EXPECT_FALSE(gate_Program().Runs(GateWork::Merge));
        EXPECT_NE(canvas.source.store, nullptr);  // what was shown is only ever replaced by the opening
    }
    // A program of this script, with OUT for what it is to write.
    std::string Tool(const std::string& script) {
        const std::string path = folder / "tool";
        std::ofstream(path) << "#!/bin/sh\nOUT=$4\n" << script << '\n';
        ::chmod(path.c_str(), 0755);
        return path;
    }
    std::string Source(const std::string& name, bool isDamaged = false) {
        RawWriter writer(false);
        writer.header({3, false, 3, 1000, raw_OsKorvantis}, RawHeaderForm::Short);
        EXPECT_TRUE(writer.event(5, mt_UserEvent, 1, {7}));
        const uint8_t junk[] = {0};
        if (isDamaged) writer.raw(junk);
        const std::string path = folder / name;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(writer.bytes().data()),
                   static_cast<std::streamsize>(writer.bytes().size()));
        return path;
    }
    bool Merge(const std::string& output = "out.trr") {
        far = 0;
        host.fileAnswers = {{a, b}, {folder / output}};
        return merge_AskAndLoad(host, canvas, around);
    }

    TestFolder folder;
    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    MergeSurroundings around;
    std::string a = Source("a.trr"), b = Source("b.trr"), console;
    std::vector<std::string> opened;
    bool loads = true;
    int asked = 0, stopAt = 1 << 30;
    double far = 0;  // what progress said last
};

TEST_F(MergeDialogs, TheDialogHasItsItemsAndSurvivesFontsAndSizes) {
    const DialogDescription d = dialogs_MergeOptions();
    EXPECT_EQ(dialog_CheckAll(d), std::vector<std::string>());
    const char* names[] = {"Info_Txt", "Type_Rect", "Natural_B", "NA_Txt1", "NA_Txt2", "HA_B",  "HA_Txt1",
                           "HA_Txt2",  "TA_B",      "TA_Txt1",   "TA_Txt2", "Ok_BS",   "cancel"};
    ASSERT_EQ(d.items.size(), std::size(names));
    for (size_t i = 0; i < std::size(names); ++i) EXPECT_EQ(d.items[i].name, names[i]);
    EXPECT_EQ(d.items[0].text, "Merge options:");
    EXPECT_EQ(d.items[3].text + '|' + d.items[4].text,
              "Merge all events from different sources based on their|recorded timestamps.");
    EXPECT_EQ(d.items[6].text + '|' + d.items[7].text,
              "Adjust event timestamps so that the first events in each source|have the same timestamp.");
    EXPECT_EQ(d.items[9].text + '|' + d.items[10].text,
              "Adjust event timestamps so that the last events in each source|have the same timestamp.");
}

TEST_F(MergeDialogs, OneAlignmentIsChosen) {
    const struct {
        std::vector<const char*> chosen;
        const char* pressed;
        std::optional<MergeAlign> align;
    } cases[] = {
        {{}, "Ok_BS", MergeAlign::Natural},
        {{"HA_B"}, "Ok_BS", MergeAlign::Head},
        {{"HA_B", "TA_B"}, "Ok_BS", MergeAlign::Tail},
        {{"TA_B", "Natural_B"}, "Ok_BS", MergeAlign::Natural},
        {{"TA_B"}, "cancel", std::nullopt},
        {{"TA_B"}, nullptr, std::nullopt},
    };
    for (const auto& c : cases) {
        host.drive = [&](DialogModel& dialog) {
            for (const char* choice : c.chosen) EXPECT_TRUE(dialog.choose(choice, 0));
            int set = 0;
            for (const char* choice : {"Natural_B", "HA_B", "TA_B"}) set += dialog.item(choice).choice == 0;
            EXPECT_EQ(set, 1);
            if (c.pressed) dialog.press(c.pressed);
        };
        EXPECT_EQ(dialogs_AskMergeAlign(host), c.align);
    }
}

TEST_F(MergeDialogs, ChoosersAreAskedInTheirWords) {
    EXPECT_TRUE(Merge());
    ASSERT_EQ(host.fileQuestions.size(), 2u);
    const FileQuestion &sources = host.fileQuestions[0], &output = host.fileQuestions[1];
    EXPECT_EQ(sources.title, "Select KORVANTIS raw event files (.trr) to merge:");
    EXPECT_EQ(sources.button + '|' + sources.settingsName, "Choose|RawEventFile");
    EXPECT_EQ(sources.of, FileQuestion::Of::Existing);
    EXPECT_EQ(output.title, "Select the files for merged result:");
    EXPECT_EQ(output.button + '|' + output.settingsName, "Choose|");
    EXPECT_EQ(output.suggested, folder / "merged.trr");
    EXPECT_EQ(output.of, FileQuestion::Of::New);
}

TEST_F(MergeDialogs, EachWayOutLeavesTheCanvas) {
    const std::string folderless = "";
    const struct {
        const char* name;
        std::deque<std::vector<std::string>> answers;
        const char* pressed;
        bool done;
        std::vector<std::string> opened;
    } cases[] = {
        {"no sources", {}, "Ok_BS", false, {}},
        {"one source is opened", {{a}}, "Ok_BS", true, {a}},
        {"no output", {{a, b}}, "Ok_BS", false, {}},
        {"an empty output", {{a, b}, {folderless}}, "Ok_BS", false, {}},
        {"no alignment", {{a, b}, {folder / "out.trr"}}, "cancel", true, {}},
        {"merged", {{a, b}, {folder / "out"}}, "Ok_BS", true, {folder / "out.trr"}},
    };
    for (const auto& c : cases) {
        opened.clear();
        host.fileAnswers = c.answers;
        host.drive = [&](DialogModel& dialog) { dialog.press(c.pressed); };
        EXPECT_EQ(merge_AskAndLoad(host, canvas, around), c.done) << c.name;
        EXPECT_EQ(opened, c.opened) << c.name;
        EXPECT_TRUE(host.messages.empty()) << c.name;
        EXPECT_TRUE(host.questions.empty()) << c.name;
    }
}

TEST_F(MergeDialogs, TheToolGetsItsWordsInOrder) {
    around.tool = Tool("for word; do echo \"<$word>\"; done > " + (folder / "words"));
    host.drive = [](DialogModel& dialog) {
        dialog.choose("TA_B", 0);
        dialog.press("Ok_BS");
    };
    host.fileAnswers = {{b, a, folder / "c d;$x.trr"}, {folder / "o ut"}};
    EXPECT_TRUE(merge_AskAndLoad(host, canvas, around));
    std::string words;
    ASSERT_TRUE(file_read_whole(folder / "words", words));
    EXPECT_EQ(words, "<-align>\n<tail>\n<-o>\n<" + (folder / "o ut.trr") + ">\n<" + b + ">\n<" + a + ">\n<" +
                         (folder / "c d;$x.trr") + ">\n");
    EXPECT_EQ(opened, std::vector<std::string>{folder / "o ut.trr"});
    EXPECT_EQ(test.message(), "");
}

TEST_F(MergeDialogs, AnOutputInTheWayIsRefusedInWords) {
    const std::string shown = folder / "shown.trr";
    around.isShown = [&](const std::string& file) { return file == shown; };
    EXPECT_FALSE(Merge("a.trr"));
    EXPECT_FALSE(Merge("shown.trr"));
    host.askAnswer = false;
    EXPECT_FALSE(Merge("a"));
    host.askAnswer = true;
    EXPECT_FALSE(Merge("b"));
    around.tool.clear();
    EXPECT_FALSE(Merge());
    const std::string other = " Choose another file for the merged result.";
    EXPECT_EQ(
        host.messages,
        (std::vector<std::string>{
            "\"" + a + "\" is one of the files to be merged." + other,
            "\"" + shown + "\" is the trace of a window." + other,
            "\"" + b + "\" is one of the files to be merged." + other,
            "The program \"trv\", which merges, was found neither beside this program nor on the PATH."}));
    EXPECT_EQ(host.questions, (std::vector<std::string>{"\"" + a + "\" exists already. Replace it?",
                                                        "\"" + b + "\" exists already. Replace it?"}));
    EXPECT_TRUE(opened.empty());
    EXPECT_EQ(asked, 0);
}

TEST_F(MergeDialogs, AToolThatFailsIsShownInItsOwnWords) {
    const std::string failed = "Failed to merge event files, here are the error messages: \n";
    const struct {
        const char* script;
        std::string box;
    } cases[] = {
        {"echo one; echo two >&2; exit 1", "one\ntwo\n"},
        {"exit 7", "trv ended with status 7.\n"},
        {"printf half > \"$OUT\"; echo dying; kill -9 $$", "dying\ntrv was ended by signal 9.\n"},
        {"printf 'a\\033[1m%%s\\377\\n\\n'; exit 2", "a?[1m%s\xEF\xBF\xBD\n"},
    };
    for (const auto& c : cases) {
        around.tool = Tool(c.script);
        EXPECT_FALSE(Merge());
        ASSERT_FALSE(host.messages.empty());
        EXPECT_EQ(host.messages.back(), failed + c.box);
        EXPECT_EQ(test.message(), "");
    }
    around.tool = folder / "missing";
    EXPECT_FALSE(Merge());
    EXPECT_EQ(host.messages.back().substr(0, failed.size()), failed);
    EXPECT_NE(host.messages.back().find("No such file or directory"), std::string::npos);
    EXPECT_TRUE(opened.empty());
}

TEST_F(MergeDialogs, AFloodOfWordsFitsIntoABox) {
    around.tool = Tool("yes 'a line of the tool' | head -c 10485760; echo last; exit 1");
    EXPECT_FALSE(Merge());
    ASSERT_EQ(host.messages.size(), 1u);
    const std::string& box = host.messages.front();
    EXPECT_LT(box.size(), 1000u);
    EXPECT_NE(box.find(" more lines ...\n"), std::string::npos);
    EXPECT_TRUE(box.ends_with("last\n"));
    EXPECT_NE(console.find(" more bytes ..."), std::string::npos);
}

TEST_F(MergeDialogs, ProgressIsWhatTheToolSays) {
    around.tool = Tool(
        "echo $TRV_PROGRESS; echo 50 >&3; printf 1 >&3; sleep 0.1\n"
        "printf '50\\nmany\\n999\\n' >&3; sleep 0.1; exit 1");
    EXPECT_FALSE(Merge());
    EXPECT_EQ(far, 150);
    EXPECT_TRUE(host.messages.back().ends_with("\n3\n"));
}

TEST_F(MergeDialogs, EscapeEndsAToolThatHangs) {
    around.tool = Tool("sleep 1000");
    stopAt = 3;
    EXPECT_FALSE(Merge());
    EXPECT_EQ(asked, 3);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_TRUE(opened.empty());
    EXPECT_EQ(test.message(), "Merging was stopped.");
}

TEST_F(MergeDialogs, TheOutputIsLoadedAndDamageShown) {
    around.tool = CW_MERGE_TOOL;
    b = Source("b.trr", true);
    EXPECT_TRUE(Merge());
    EXPECT_EQ(opened, std::vector<std::string>{folder / "out.trr"});
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_NE(host.messages[0].find("trv: " + b + ": 1 bytes are no part of any event\n"), std::string::npos)
        << host.messages[0];
    EXPECT_EQ(import_OpenSource(folder / "out.trr", {}).counts.events, 2u);
    loads = false;  // the canvas tells why
    EXPECT_FALSE(Merge());
}

}  // namespace
