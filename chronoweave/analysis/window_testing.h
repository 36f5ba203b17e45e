// A canvas with the commands of searches and reports, a host that answers as it is told, and a trace whose
// figures are known.
#pragma once

#include <gtest/gtest.h>

#include <deque>

#include "chronoweave/analysis/analysis.h"
#include "chronoweave/analysis/search_window.h"
#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/host_testing.h"

class AnalysisWindowTest : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        canvas.calls.host = &host;
        desk = analysis_Attach(canvas);
        host.drive = [this](DialogModel& dialog) {
            shown.push_back(dialog.description().name);
            if (steps.empty()) return;
            const auto step = steps.front();
            steps.pop_front();
            step(dialog);
        };
    }
    void TearDown() override { gen_set_console_sink({}); }

    // Tasks 1 ("one") and 2 ("two@inner"), one tick a millisecond: 1 takes at 10 and gives at 30, takes again
    // at 40 and gives at 45; 2 takes at 50 and gives at 90. The trace ends at 0.1 seconds.
    static Legend PairLegend() {
        Legend legend = test_legend();
        legend.events.clear();
        const auto add = [&](uint16_t type, uint16_t subtype, const char* name, uint32_t flags) {
            legend.events.push_back(legend_event(type, subtype, name, flags));
        };
        add(0, 0, "Semaphores", LegendEvent_Category | 1);
        add(mt_UserEvent, 2, "Take", LegendEvent_IntervalSearch | 1);
        add(mt_UserEvent, 3, "Give", LegendEvent_IntervalSearch);
        add(mt_StatusChange, 0, "Status", LegendEvent_AnySubtype | 1);
        add(mt_TaskChange, 0, "Switch", LegendEvent_AnySubtype | 1);
        add(mt_UserEvent, 9, "Take", 1);
        add(0xFFFF, 0xFFFF, "Unknown", 1);
        legend.BuildLookups();
        return legend;
    }
    static std::vector<TestEvent> PairEvents() {
        return {name_event(0, 1, "one"),
                name_event(0, 2, "two@inner"),
                status_change(0, 1, mt_Ready),
                status_change(0, 2, mt_Ready),
                switch_to(5, 1),
                user(10, 1, 2),
                user(30, 1, 3),
                user(40, 1, 2),
                user(45, 1, 3),
                status_change(48, 1, mt_Ready),
                switch_to(48, 2),
                user(50, 2, 2),
                user(90, 2, 3),
                user(99, 2, 7)};
    }
    void Open() {
        ASSERT_TRUE(test.Open(PairEvents(), "ThreadX", PairLegend()));
        canvas.source.canvasName = "Board";
        test.ShowAll();
    }
    bool Do(const char* command) { return laCanvas_Command(canvas, command); }
    DialogModel& Window() { return *host.windows.back(); }
    std::vector<std::string> Titles(const char* list = "list") { return Window().item(list).columnTitles; }
    std::vector<std::string> Cells(const char* list, int row) {
        std::vector<std::string> cells;
        for (int column = 0; column < Window().list(list).ColumnCount(); ++column)
            cells.push_back(Window().list(list).Text(row, column));
        return cells;
    }

    // Does as the user in one dialog after the other.
    using Step = std::function<void(DialogModel&)>;
    static Step press(const std::string& name) {
        return [name](DialogModel& d) { EXPECT_TRUE(d.press(name)) << name; };
    }
    static Step AllObjects() {
        return [](DialogModel& d) {
            d.list("list").SelectAll();
            EXPECT_TRUE(d.press("ok"));
        };
    }
    static Step choose(const std::string& text) {
        return [text](DialogModel& d) {
            const MScrollList& list = d.list("list");
            for (int row = 0; row < list.RowCount(); ++row)
                if (list.Text(row, 0) == text) d.select("list", {row});
            EXPECT_TRUE(d.press("ok"));
        };
    }
    // Lists "begin" and "end" by name.
    static Step pattern(const std::string& begin, const std::string& end, bool same) {
        return [=](DialogModel& d) {
            for (const auto& [list, text] : {std::pair{"begin", begin}, {"end", end}})
                for (int row = 0; row < d.list(list).RowCount(); ++row)
                    if (d.list(list).Text(row, 0) == text) d.select(list, {row});
            if (same) d.check("same", true);
            EXPECT_TRUE(d.press("ok"));
        };
    }

    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    std::shared_ptr<SearchDesk> desk;
    std::deque<Step> steps;
    std::vector<std::string> shown;  // names of the dialogs that came up
};
