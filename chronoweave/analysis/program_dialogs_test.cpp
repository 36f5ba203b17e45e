#include "chronoweave/analysis/program_dialogs.h"

#include <gtest/gtest.h>

#include "chronoweave/analysis/dialog_commands.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/menus.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "windlib/dialog/host_testing.h"

namespace {

class ProgramDialogs : public testing::Test {
  protected:
    // Types into a field of the next dialog and presses a button.
    void Answer(const char* field, const char* text, const char* button) {
        host.drive = [=](DialogModel& model) {
            EXPECT_TRUE(model.edit(field, text));
            EXPECT_TRUE(model.press(button));
        };
    }
    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(ProgramDialogs, OnlyANewPeriodIsTaken) {
    int restarted = 0;
    canvas.calls.upper.refreshIntervalChanged = [&] { ++restarted; };
    const struct {
        const char *text, *button;
        int period;
        bool changed;
    } cases[] = {
        {"250", "bs_ok", 250, true}, {" 250 ", "bs_ok", 250, false},       {"300", "cancel", 250, false},
        {"0", "bs_ok", 250, false},  {"-5", "bs_ok", 250, false},          {"soon", "bs_ok", 250, false},
        {"", "bs_ok", 250, false},   {"99999999999", "bs_ok", 250, false}, {"40 ms", "bs_ok", 40, true}};
    for (const auto& one : cases) {
        restarted = 0;
        canvas.looks.legendChanged = false;
        Answer("tf_val", one.text, one.button);
        dialogs_AskRefreshInterval(host, canvas);
        EXPECT_EQ(canvas.options.refreshInterval, one.period) << one.text;
        EXPECT_EQ(restarted, one.changed ? 1 : 0) << one.text;
        EXPECT_EQ(canvas.looks.legendChanged, one.changed) << one.text;
    }
    host.drive = [](DialogModel& model) {
        EXPECT_EQ(model.item("tf_val").text, "40");
        EXPECT_EQ(model.title(), "Get Value");
    };
    dialogs_AskRefreshInterval(host, canvas);
}

TEST_F(ProgramDialogs, TheCanvasTakesAName) {
    Answer("tf_val", "Night run", "bs_ok");
    EXPECT_TRUE(dialogs_AskCanvasName(host, canvas, "old"));
    EXPECT_EQ(canvas.source.canvasName, "Night run");
    Answer("tf_val", "", "bs_ok");
    EXPECT_FALSE(dialogs_AskCanvasName(host, canvas, "old"));
    EXPECT_EQ(canvas.source.canvasName, "Night run");
    EXPECT_FALSE(canvas.looks.legendChanged);
}

TEST_F(ProgramDialogs, OptionsAreTheCheckBoxes) {
    ProgramOptions options;
    host.drive = [](DialogModel& model) {
        for (const char* box : {"newtrv", "prefetch", "icons", "right", "bottom", "snap", "processors"})
            EXPECT_TRUE(model.item(box).checked) << box;
        for (const char* box : {"wheel", "kernel", "dark", "marks", "switches"})
            EXPECT_FALSE(model.item(box).checked) << box;
        for (const char* box : {"wheel", "marks", "switches"}) EXPECT_TRUE(model.check(box, true));
        EXPECT_TRUE(model.check("snap", false));
        EXPECT_TRUE(model.check("bottom", false));
        EXPECT_TRUE(model.key(DialogKey::Enter));
    };
    ProgramOptions wanted = options;
    wanted.bareWheelZooms = wanted.plainMarks = wanted.plainSwitches = true;
    wanted.cursorsSnap = wanted.horizontalBarBottom = false;
    EXPECT_EQ(dialogs_AskOptions(host, options), wanted);
    host.drive = [](DialogModel& model) { model.key(DialogKey::Escape); };
    EXPECT_FALSE(dialogs_AskOptions(host, options));
    for (const bool right : {false, true}) {
        for (const bool bottom : {false, true}) {
            host.drive = [=](DialogModel& model) {
                model.choose("side", right ? 1 : 0);
                model.choose("end", bottom ? 1 : 0);
                model.press("ok");
                EXPECT_EQ(model.result(), (right ? 10 : 0) + (bottom ? 0 : 1));
            };
            const auto sides = dialogs_AskScrollPos(host, options);
            ASSERT_TRUE(sides);
            EXPECT_EQ(sides->verticalBarRight, right);
            EXPECT_EQ(sides->horizontalBarBottom, bottom);
        }
    }
    host.drive = {};
    EXPECT_FALSE(dialogs_AskScrollPos(host, options));
}

TEST_F(ProgramDialogs, BookmarksAreEdited) {
    ASSERT_TRUE(test.Open({name_event(0, 0x400, "One"), name_event(5000, 0x800, "Two")}));
    laBookmark_Add(canvas, laAgentId, 1);
    laBookmark_Add(canvas, 0x800, 4);
    host.colourAnswer = 0x00FF00;
    host.drive = [&](DialogModel& model) {
        const auto cell = [&](size_t row, size_t column) {
            return model.item("marks").rows[row].cells[column];
        };
        ASSERT_EQ(model.item("marks").rows.size(), 2u);
        EXPECT_EQ(cell(0, 2), "Two");
        EXPECT_EQ(cell(1, 3), "#0000FF");
        EXPECT_TRUE(model.select("marks", {1}));
        EXPECT_TRUE(model.type("label", "it's {late}"));
        EXPECT_EQ(cell(1, 0), "it's {late}");
        EXPECT_EQ(canvas.marks.bookmarks[1].label, "it\\'s {late}");
        EXPECT_TRUE(model.edit("f_marks", "late"));
        EXPECT_EQ(model.item("marks").rows.size(), 1u)
            << "the one that fits, and it is the one that is changed";
        EXPECT_TRUE(model.press("colour"));
        EXPECT_EQ(canvas.marks.bookmarks[1].colour, 0x00FF00u);
        EXPECT_TRUE(model.edit("f_marks", ""));
        EXPECT_EQ(model.selectedRow("marks"), 1);
        EXPECT_TRUE(model.activate("marks", 1));
        EXPECT_TRUE(canvas.view.viewLow <= 1 && canvas.view.viewHigh >= 1);
        EXPECT_TRUE(model.press("delete"));
        EXPECT_EQ(canvas.marks.bookmarks.size(), 1u);
        EXPECT_EQ(model.selectedRow("marks"), 0);
        EXPECT_TRUE(model.press("delete"));
        EXPECT_FALSE(model.press("goto"));
        EXPECT_TRUE(model.press("close"));
    };
    dialogs_EditBookmarks(host, canvas);
    EXPECT_TRUE(canvas.marks.bookmarks.empty());
}

TEST_F(ProgramDialogs, ACommandIsFoundByItsName) {
    MenuRegistry menus;
    laMenus_Register(menus);
    for (const char* name : {"TraxFile", "TraxView", "TraxReport", "TraxConfig", "TraxBookmark"})
        laCanvas_MenuHook(menus, name, canvas);
    host.drive = [](DialogModel& model) {
        EXPECT_TRUE(model.edit("filter", "search"));
        EXPECT_TRUE(model.item("commands").rows.empty()) << "without a source";
        EXPECT_FALSE(model.press("run"));
        EXPECT_TRUE(model.edit("filter", "CANVAS"));
        ASSERT_EQ(model.item("commands").rows.size(), 1u);
        EXPECT_EQ(model.item("commands").rows[0].cells[1], "Config");
        EXPECT_TRUE(model.key(DialogKey::Enter, "filter"));
    };
    EXPECT_EQ(dialogs_AskCommand(host, menus, canvas), "CanvasName");
    host.drive = {};
    EXPECT_EQ(dialogs_AskCommand(host, menus, canvas), "");
}

TEST_F(ProgramDialogs, KeysAndVersionAreShown) {
    host.drive = [](DialogModel& model) {
        const bool keys = model.description().name == "KeySheet";
        EXPECT_TRUE(!keys || model.item("keys").rows.size() > 15u);
        EXPECT_TRUE(keys || model.item("t_version").text.find('.') != std::string::npos);
        EXPECT_TRUE(model.key(DialogKey::Enter));
        EXPECT_TRUE(model.isClosed());
    };
    dialogs_ShowKeys(host);
    dialogs_ShowAbout(host);
}

// Each command shows its dialog, gives its window what was answered, and leaves the keyboard to the picture.
TEST_F(ProgramDialogs, CommandsShowTheirDialogs) {
    ASSERT_TRUE(test.Open({name_event(0, 0x400, "One"), name_event(5000, 0x800, "Two")}));
    canvas.calls.host = &host;
    ProgramOptions options;
    std::string title = "old", shown;
    int closed = 0;
    dialogs_Attach(canvas, {.options = [&] { return options; },
                            .setOptions = [&](const ProgramOptions& wanted) { options = wanted; },
                            .title = [&] { return title; },
                            .setTitle = [&](const std::string& name) { title = name; },
                            .closed = [&] { ++closed; }});
    host.drive = [&](DialogModel& model) {
        shown = model.description().name;
        if (shown == "getValue") model.type("tf_val", "Night run");
        if (shown == "Options") model.check("dark", true);
        if (shown == "ScrollPos") model.choose("side", 0);
        if (!model.key(DialogKey::Enter)) model.dismiss();
    };
    const struct {
        const char *command, *dialog;
    } cases[] = {{"About", "About"},       {"KeySheet", "KeySheet"},   {"HideTasks", "HideTasks"},
                 {"GoToTime", "GotoTime"}, {"TimeUnit", "TimeUnit"},   {"EditBookmarks", "EditBookmarks"},
                 {"Options", "Options"},   {"CanvasName", "getValue"}, {"ScrollPos", "ScrollPos"}};
    laBookmark_Add(canvas, laAgentId, 1);
    for (const auto& [command, dialog] : cases) {
        shown.clear();
        EXPECT_TRUE(laCanvas_Command(canvas, command)) << command;
        EXPECT_EQ(shown, dialog);
    }
    EXPECT_EQ(closed, static_cast<int>(std::size(cases)));
    EXPECT_TRUE(options.darkColours);
    EXPECT_FALSE(options.verticalBarRight);
    EXPECT_EQ(title, "Night run");
    EXPECT_TRUE(laCanvas_Command(canvas, "IconButton"));
    EXPECT_FALSE(options.iconButtons);
    canvas.calls.host = nullptr;
    EXPECT_FALSE(laCanvas_Command(canvas, "Options"));
}

// The file has the names that users know; each option is kept under one of its own.
TEST(ProgramOptionsTest, EachIsKeptUnderItsName) {
    SettingsManager settings(program_Switches(), "/nowhere");
    EXPECT_EQ(program_OptionsOf(settings), ProgramOptions{});
    for (const SettingsSwitch& each : program_Switches()) {
        settings.SetOn(each.name, !each.on);
        const ProgramOptions other = program_OptionsOf(settings);
        EXPECT_NE(other, ProgramOptions{}) << each.name;
        settings.SetOn(each.name, each.on);
        EXPECT_EQ(program_OptionsOf(settings), ProgramOptions{}) << each.name;
        program_Keep(other, settings);
        EXPECT_EQ(settings.IsOn(each.name), !each.on) << each.name;
        program_Keep({}, settings);
    }
}

}  // namespace
