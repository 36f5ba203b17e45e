#include "chronoweave/analysis/legend_window.h"

#include <gtest/gtest.h>

#include "chronoweave/analysis/legend_dialogs.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/legend_edit.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/dialog_testing.h"
#include "windlib/dialog/host_testing.h"

namespace {

// Two categories; "Take" stands in both, once invisible.
Legend window_legend() {
    Legend legend = test_legend();
    const auto add = [&](const char* name, uint32_t flags, int32_t category, uint16_t type) {
        LegendEvent event;
        event.name = name;
        event.iconName = "help";
        event.flags = flags;
        event.category = category;
        event.type = type;
        legend.events.push_back(event);
    };
    add("Semaphores", LegendEvent_Category | 1, 0, 0);
    add("Take", 1, 0, 20);
    add("Give", 0, 0, 21);
    add("Others", LegendEvent_Category | 1, 1, 0);
    add("Take", 1, 1, 22);
    legend.BuildLookups();
    legend.RollUpCategories();
    return legend;
}

class LegendWindowTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        canvas.calls.host = &host;
        legend_Attach(canvas);
    }
    void TearDown() override { gen_set_console_sink({}); }
    void Open() {
        ASSERT_TRUE(test.Open(random_events(3, 200), "ThreadX", window_legend()));
        ASSERT_TRUE(laCanvas_Command(canvas, "Legend"));
        ASSERT_EQ(host.windows.size(), 1u);
        window = host.windows[0].get();
        canvas.looks.legendChanged = false;
    }
    bool Changed() const { return canvas.looks.legendChanged; }
    // The first row of the list that shows this name.
    int Row(const std::string& name, int from = 0) const {
        const MScrollList& list = window->list("list");
        for (int row = from; row < list.RowCount(); ++row)
            if (list.Text(row, 1) == name) return row;
        return -1;
    }
    std::string Visibility(int row) const { return window->list("list").Text(row, 3); }

    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    DialogModel* window = nullptr;
};

TEST(LegendDescriptions, SurviveFontsAndSizes) {
    for (const DialogDescription& d : {legend_Window(), legend_StatusDialog(), legend_IconDialog()})
        EXPECT_EQ(dialog_CheckAll(d), std::vector<std::string>()) << d.name;
}

TEST_F(LegendWindowTest, OpensOnceAndSaysWhatEachRowIs) {
    EXPECT_FALSE(laCanvas_Command(canvas, "Legend"));
    EXPECT_EQ(test.message(), "Legend is not loaded until you open a VOREL Chronoweave source file.");
    Open();
    EXPECT_EQ(window->title(), "Legend for " + canvas.source.canvasName);
    laCanvas_Command(canvas, "Legend");
    EXPECT_EQ(host.raised, window);
    EXPECT_EQ(host.windows.size(), 1u);
    const MScrollList& list = window->list("list");
    const struct {
        const char *name, *kind, *visibility;
    } rows[] = {{"Ready", "Status", "Visible"},      {"EvWait", "Status", "Invisible"},
                {"Preempt", "Switch", "Visible"},    {"Event 7", "  Event", "Invisible"},
                {"Semaphores", "Category", "Mixed"}, {"Others", "Category", "Visible"}};
    for (const auto& row : rows) {
        const int at = Row(row.name);
        ASSERT_GE(at, 0) << row.name;
        EXPECT_EQ(list.Text(at, 0), row.kind);
        EXPECT_EQ(list.Text(at, 3), row.visibility);
    }
    EXPECT_TRUE(list.Cell(Row("Others"), 3).attributes & mslHeading);
    // The filter keeps the category of what fits.
    window->edit("tf_filter", "gIv");
    EXPECT_EQ(list.RowCount(), 2);
    EXPECT_EQ(list.Text(0, 1), "Semaphores");
    window->edit("tf_filter", "");
    EXPECT_EQ(static_cast<size_t>(list.RowCount()), laLegend_RowCount(canvas));
    window->menu("TraxPrint");
    EXPECT_EQ(host.beeps, 1);
    window->menu("Close");
    EXPECT_EQ(canvas.calls.legendWindow, nullptr);
}

TEST_F(LegendWindowTest, VisibilityGoesToNamesakesAndRollsUp) {
    Open();
    window->clickRow("list", Row("Take"), 3);
    EXPECT_TRUE(Changed());
    EXPECT_EQ(Visibility(Row("Take")), "Invisible");
    EXPECT_EQ(Visibility(Row("Take", Row("Others"))), "Invisible") << "its namesake";
    EXPECT_EQ(Visibility(Row("Semaphores")), "Invisible");
    EXPECT_EQ(Visibility(Row("Others")), "Invisible");
    window->press("bt_undo");
    EXPECT_FALSE(Changed()) << "nothing is changed any more";
    EXPECT_EQ(Visibility(Row("Semaphores")), "Mixed");
    window->clickRow("list", Row("Semaphores"), 3);
    EXPECT_EQ(Visibility(Row("Give")), "Visible") << "a mixed category becomes visible";
    EXPECT_EQ(Visibility(Row("Semaphores")), "Visible");
    window->clickRow("list", Row("Semaphores"), 3);
    EXPECT_EQ(Visibility(Row("Others")), "Invisible");

    window->clickRow("list", Row("Ready"), 3);
    EXPECT_FALSE(canvas.looks.statusLooks[0].shown);
    // The thickest visible status makes the row high.
    const int before = canvas.looks.rowHeight;
    host.drive = [](DialogModel& dialog) {
        dialog.type("tf_thickness", "40");
        dialog.press("bt_ok");
    };
    window->clickRow("list", Row("Pend"), 2);
    EXPECT_GT(canvas.looks.rowHeight, before);
    window->clickRow("list", Row("Pend"), 3);
    EXPECT_EQ(canvas.looks.rowHeight, before);
    window->clickRow("list", Row("Semaphores"), 2);
    EXPECT_EQ(Visibility(Row("Semaphores")), "Invisible") << "nothing there to click";

    host.drive = [](DialogModel& dialog) { FAIL() << "no dialog comes up: " << dialog.title(); };
    for (const int clicks : {1, 2}) window->clickRow("list", Row("Give"), 3, clicks);
    EXPECT_EQ(Visibility(Row("Give")), "Invisible") << "a double click is two clicks";
    canvas.options.refreshInterval += 100;
    canvas.looks.legendChanged = true;
    window->clickRow("list", Row("Give"), 3);
    while (window->item("bt_undo").enabled) window->press("bt_undo");
    EXPECT_TRUE(Changed()) << "the refresh interval still is";
}

TEST_F(LegendWindowTest, TheDialogOfAStatus) {
    Open();
    std::string title, red;
    int style = -1;
    const auto answer = [&](const char* r, const char* g, const char* b, const char* thickness, bool ok) {
        host.drive = [=, &title, &red, &style](DialogModel& dialog) {
            title = dialog.title();
            red = dialog.item("tf_red").text;
            style = dialog.item("stylePD").choice;
            dialog.type("tf_red", r);
            dialog.type("tf_green", g);
            dialog.type("tf_blue", b);
            dialog.type("tf_thickness", thickness);
            dialog.choose("stylePD", Line_DashDot);
            dialog.press(ok ? "bt_ok" : "bt_cancel");
        };
    };
    answer("0x80", "300", "17", "", true);
    window->clickRow("list", Row("Suspend"), 2);
    EXPECT_EQ(title, "Configure Status \"Suspend\"");
    EXPECT_EQ(red, "0x20");
    EXPECT_EQ(style, Line_Dash);
    const LegendStatus& status = canvas.looks.legend.statuses[1];
    EXPECT_EQ(status.red, 0x8000);
    EXPECT_EQ(status.green, 300);
    EXPECT_EQ(status.blue, 17 << 8);
    EXPECT_EQ(status.thickness, 1) << "an empty field";
    EXPECT_EQ(status.lineStyle, Line_DashDot);
    EXPECT_TRUE(Changed());
    answer("1", "2", "3", "4", false);
    window->activate("list", Row("Suspend"));
    EXPECT_EQ(canvas.looks.legend.statuses[1].red, 0x8000) << "cancelled";
    window->clickRow("list", Row("Preempt"), 2);
    EXPECT_EQ(title, "Configure Context Switch \"Preempt\"");
    // The colour chooser fills the fields.
    host.colourAnswer = 0x123456;
    host.drive = [](DialogModel& dialog) {
        dialog.press("bt_choose");
        dialog.press("bt_ok");
    };
    window->clickRow("list", Row("Suspend"), 2);
    EXPECT_EQ(canvas.looks.legend.statuses[1].green, 0x3400);
    window->menu("Undo");
    window->menu("Undo");
    EXPECT_EQ(canvas.looks.legend.statuses[1].red, 0x2000);
}

TEST_F(LegendWindowTest, IconsAndTheMarkOfImportance) {
    Open();
    host.drive = [](DialogModel& dialog) {
        const MScrollList& list = dialog.list("colHeader");
        for (int row = 0; row < list.RowCount(); ++row)
            if (list.Text(row, 0) == "alarm") dialog.select("colHeader", {row});
        EXPECT_EQ(list.Text(dialog.selectedRow("colHeader"), 1), "alarm.svg");
        dialog.press("bt_ok");
    };
    window->clickRow("list", Row("Take"), 2);
    size_t takes = 0;
    for (const LegendEvent& event : canvas.looks.legend.events)
        if (event.name == "Take") takes += event.iconName == "alarm" ? 1u : 0u;
    EXPECT_EQ(takes, 2u) << "with its namesake";
    EXPECT_TRUE(Changed());
    window->select("list", {Row("Give")});
    EXPECT_FALSE(window->item("bt_important").checked);
    window->check("bt_important", true);
    EXPECT_TRUE(
        canvas.looks.legend.events[laLegend_EventOf(canvas, static_cast<size_t>(Row("Give")))].IsImportant());
    host.popUpAnswer = 4;
    window->rowMenu("list", Row("Give"), 1);
    EXPECT_FALSE(window->item("bt_important").checked) << "undone";
    window->select("list", {Row("Others")});
    EXPECT_FALSE(window->item("bt_change").enabled);
    EXPECT_FALSE(window->item("bt_important").enabled);
}

TEST_F(LegendWindowTest, ALookGivesAllStatusesTheirLines) {
    Open();
    const auto ready = [this]() -> const LegendStatus& { return canvas.looks.legend.statuses[0]; };
    window->press("bt_look");
    EXPECT_FALSE(Changed()) << "none is installed for this system";
    canvas.looks.legend.osName = "KORVANTIS";
    host.popUpAnswer = 1;
    window->press("bt_look");
    EXPECT_TRUE(Changed());
    EXPECT_EQ(ready().lineStyle, Line_Dash);
    EXPECT_EQ(ready().red, 0xC700);
    EXPECT_EQ(canvas.looks.statusLooks[0].colour, 0xC78500u);
    EXPECT_EQ(canvas.looks.legend.statuses[6].lineStyle, Line_DashDot) << "it has no line for this one";
    window->press("bt_undo");
    EXPECT_EQ(ready().lineStyle, Line_Solid);
    host.popUpAnswer = -1;
    window->menu("UseLook");
    EXPECT_FALSE(window->item("bt_undo").enabled);
}

TEST_F(LegendWindowTest, GoesWithTheSource) {
    Open();
    laCanvas_Reset(canvas, laResetOf::Source);
    EXPECT_TRUE(host.windows[0]->isClosed());
    EXPECT_EQ(canvas.calls.legendWindow, nullptr);
}

}  // namespace
