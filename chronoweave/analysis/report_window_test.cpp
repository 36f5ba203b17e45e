#include "chronoweave/analysis/report_window.h"

#include "chronoweave/analysis/window_testing.h"
#include "windlib/dialog/dialog_testing.h"

namespace {

using Texts = std::vector<std::string>;

class ReportWindowTest : public AnalysisWindowTest {
  protected:
    void Ask(const char* command, std::initializer_list<Step> chain) {
        steps.assign(chain);
        shown.clear();
        EXPECT_TRUE(Do(command));
        host.dropClosed();
    }
    Texts Names(const char* list) {
        Texts names;
        for (int row = 0; row < Window().list(list).RowCount(); ++row)
            names.push_back(Window().list(list).Text(row, 0));
        return names;
    }
    int Row(const char* list, const std::string& name) {
        const Texts names = Names(list);
        return static_cast<int>(std::find(names.begin(), names.end(), name) - names.begin());
    }
};

TEST(ReportDescriptions, SurviveFontsAndSizes) {
    for (const DialogDescription& d :
         {report_RangeDialog(), report_OrderDialog(), report_StatisticsWindow(), report_ChosenWindow()})
        EXPECT_EQ(dialog_CheckAll(d), Texts()) << d.name;
}

TEST_F(ReportWindowTest, AllObjectsAreSummed) {
    for (const char* command : {"ReportObjects", "ReportTask", "ReportGeneral"}) {
        EXPECT_FALSE(Do(command));
        EXPECT_EQ(test.message(), "No data source is loaded.");
    }
    Open();
    Ask("ReportObjects", {[](DialogModel& d) {
            EXPECT_EQ(d.title(), "Select Time Range");
            EXPECT_EQ(d.item("t_prompt").text, "Please define a period (in Second):");
            EXPECT_EQ(d.item("tf_from").text, "0.000");
            EXPECT_EQ(d.item("tf_to").text, "0.100 (Max: 0.100)");
            d.press("ok");
        }});
    EXPECT_EQ(Window().title(), "Statistics for Board");
    EXPECT_EQ(Window().item("txt_title").text, "Statistics for all Objects in the System");
    EXPECT_EQ(Window().item("txt_subtitle").text, "(from 0 to 0.1 Second)");
    const MScrollList& list = Window().list("Status");
    ASSERT_EQ(list.HeaderRows(), 2);
    Texts titles;
    for (int column = 0; column < 5; ++column)
        for (const std::string& title : list.Column(column).header) titles.push_back(title);
    EXPECT_EQ(titles, (Texts{"Object Name", "", "Object", "Count", "Percent of", "Total Objects", "Time",
                             "(in Seconds)", "Percent of", "Total Time"}));
    EXPECT_EQ(Names("Status"),
              (Texts{"Status Ready", "Status Suspend", "Status Pend", "Status Running", "Status EvWait",
                     "Status Stopped", "Status OffBeat", "Status Unknown", "", "ContextSwitch", "Preempt", "",
                     "Event Category Semaphores", "  Event Take", "  Event Give", "  Event Status",
                     "  Event Switch", "  Event Take", "  Event Unknown"}));
    EXPECT_EQ(Cells("Status", 3), (Texts{"Status Running", "2", "40.0%", "0.095", "47.5%"}));
    EXPECT_EQ(Cells("Status", 10), (Texts{"Preempt", "0", "", "0.000", ""}));
    EXPECT_EQ(Cells("Status", 13), (Texts{"  Event Take", "3", "21.4%", "", ""}));
    EXPECT_EQ(Cells("load", 0), (Texts{"Processor 0", "0.095", "95.0%"}));
    EXPECT_EQ(Cells("load", 1), (Texts{"  Task 0x2 (two@inner)", "0.052", "52.0%"}));
    EXPECT_TRUE(list.IsOwnerDrawn(2) && list.IsOwnerDrawn(4) && !list.IsOwnerDrawn(3));
    EXPECT_EQ(canvas.calls.viewWindows.size(), 1u);
    ASSERT_TRUE(Window().select("Status", {3}));
    ASSERT_TRUE(Window().menu("Copy"));
    EXPECT_EQ(
        host.copied.back(),
        "Object Name\tObject Count\tPercent of Total Objects\tTime (in Seconds)\tPercent of Total Time\n"
        "Status Running\t2\t40.0%\t0.095\t47.5%\n");
    ASSERT_TRUE(Window().menu("Close"));
    EXPECT_TRUE(canvas.calls.viewWindows.empty());
}

TEST_F(ReportWindowTest, AnIdleObjectIsNoLoad) {
    std::vector<TestEvent> events = PairEvents();
    events[1] = name_event(0, 2, "two@idle");
    ASSERT_TRUE(test.Open(events, "ThreadX", PairLegend()));
    Ask("ReportObjects", {press("ok")});
    EXPECT_EQ(Window().item("t_load").text,
              "Processor load: the share of the time in which some task executes (\"idle\" left out)");
    EXPECT_EQ(Cells("load", 0), (Texts{"Processor 0", "0.043", "43.0%"}));
    EXPECT_EQ(Cells("load", 1), (Texts{"  Task 0x2 (two@idle)", "0.052", "52.0%"}));
}

TEST_F(ReportWindowTest, RangesAreCutAndChecked) {
    Open();
    Ask("ReportObjects", {[](DialogModel& d) {
            for (const auto& [from, to] : {std::pair{"-1", "5"},
                                           {"0.05", "-1"},
                                           {"0.05", "0.05"},
                                           {"0.06", "0.05"},
                                           {"5", "6"},
                                           {"", "1"},
                                           {"0", "never"}}) {
                d.type("tf_from", from);
                d.type("tf_to", to);
                d.press("ok");
                EXPECT_EQ(d.message(), "Invalid time range.") << from << ' ' << to;
                EXPECT_FALSE(d.isClosed());
            }
            d.type("tf_from", "0.048");
            d.type("tf_to", "77");
            d.press("ok");
        }});
    EXPECT_EQ(Window().item("txt_subtitle").text, "(from 0.048 to 0.1 Second)");
    EXPECT_EQ(test.beeps, 7);
}

TEST_F(ReportWindowTest, OneObjectIsReported) {
    Open();
    canvas.axis.timeMode = Time_Millisecond;
    Ask("ReportTask", {[](DialogModel& d) {
            EXPECT_EQ(d.title(), "Select One Task");
            EXPECT_EQ(d.item("t_prompt").text, "Select one task:");
            EXPECT_EQ(d.item("t_period").text, "During period (in Millisecond):");
            EXPECT_EQ(d.item("tf_to").text, "100 (Max: 100)");
            d.clickRow("list", 0, 0, 2);  // the same as "ok"
        }});
    EXPECT_EQ(Window().item("txt_title").text, "Statistics for all Objects of the Task with ID 0x1");
    const MScrollList& list = Window().list("Status");
    EXPECT_EQ(list.Column(2).header[1], "Total Objects in the Task");
    EXPECT_EQ(list.Column(4).header[1], "the Task's Total Time");
    EXPECT_EQ(Cells("Status", 3), (Texts{"Status Running", "1", "33.3%", "43", "43.0%"}));
    Ask("ReportTask", {press("ok")});  // no row is a cancel
    EXPECT_EQ(host.windows.size(), 1u);
}

// The answer to the question for the order.
std::function<void(DialogModel&)> answer_order(int increasing, int first) {
    return [=](DialogModel& d) {
        EXPECT_EQ(d.title(), "Select Displaying Order");
        EXPECT_EQ(d.item("t_prompt").text, "Please select the sorting order of result:");
        d.choose("order", increasing);
        d.choose("first", first);
        d.press("ok");
    };
}

std::function<void(DialogModel&)> choose_kind(const char* name) {
    return [=](DialogModel& d) {
        EXPECT_EQ(dialog_Number(d.description(), "event_pattern"), 0);
        d.press(name);
    };
}

TEST_F(ReportWindowTest, ChosenObjectsAreSortedAsAskedFor) {
    Open();
    const struct {
        std::vector<Step> chain;
        Texts names, first;
        std::string type, object, sorting;
    } cases[] = {
        {{AllObjects(), choose_kind("status"), choose("Running"), answer_order(1, 1)},
         {"Task 0x2 (two@inner)", "Task 0x1 (one)"},
         {"Task 0x2 (two@inner)", "1", "50.0%", "0.052", "52.0%"},
         "Status",
         "Running",
         "Descending, Time First"},
        {{AllObjects(), choose_kind("status"), choose("Running"), answer_order(0, 0)},
         {"Task 0x1 (one)", "Task 0x2 (two@inner)"},
         {"Task 0x1 (one)", "1", "50.0%", "0.043", "43.0%"},
         "Status",
         "Running",
         "Increasing, Number First"},
        {{AllObjects(), choose_kind("event"), choose("Take"),
          [](DialogModel& d) {
              EXPECT_FALSE(d.item("first").enabled);
              d.choose("order", 1);
              d.press("ok");
          }},
         {"Task 0x1 (one)", "Task 0x2 (two@inner)"},
         {"Task 0x1 (one)", "2", "66.7%", "0.000", ""},
         "Event",
         "Take",
         "Descending, Number First"},
        {{AllObjects(), choose_kind("ctx_switch"), answer_order(1, 0)},
         {"Task 0x1 (one)", "Task 0x2 (two@inner)"},
         {"Task 0x1 (one)", "1", "50.0%", "0.000", ""},
         "Context Switch",
         "ContextSwitch",
         "Descending, Number First"},
    };
    for (const auto& c : cases) {
        steps.assign(c.chain.begin(), c.chain.end());
        ASSERT_TRUE(Do("ReportGeneral"));
        EXPECT_EQ(Names("list"), c.names) << c.sorting;
        EXPECT_EQ(Cells("list", 0), c.first);
        EXPECT_EQ(Titles(), (Texts{"Task", "Count", "Count Percent", "Time (Second)", "Time Percent"}));
        for (const auto& [field, text] :
             {std::pair<const char*, std::string>{"tf_objtype", c.type},
              {"tf_objname", c.object},
              {"tf_sorting", c.sorting},
              {"t_header", "Statistics for the Selected Object on the Selected Tasks"},
              {"t_tasknum", "Number of Selected Tasks:"},
              {"t_range", "Time Range for Objects is from (in Second):"},
              {"tf_from", "0.000"},
              {"tf_to", "0.100"},
              {"tf_timelen", "0.100"},
              {"tf_tasknum", "2"}})
            EXPECT_EQ(Window().item(field).text, text);
    }
}

TEST_F(ReportWindowTest, TheRangeOfChosenObjectsIsTheTraces) {
    Open();
    // A range before the trace counts from its start; one that ends before it begins is refused.
    Ask("ReportGeneral", {AllObjects(),
                          [](DialogModel& d) {
                              d.type("tf_from", "3");
                              d.press("ctx_switch");
                              EXPECT_EQ(d.message(), "Invalid time range.");
                              d.type("tf_from", "-3");
                              d.press("ctx_switch");
                          },
                          press("ok")});
    EXPECT_EQ(Window().item("tf_from").text, "0.000");
    Ask("ReportGeneral", {AllObjects(), press("ctx_switch"), press("cancel")});
    EXPECT_EQ(host.windows.size(), 1u);
}

TEST(ReportBar, IsAsWideAsItsShareAndBearsIt) {
    for (const auto& [fraction, width, text] : {std::tuple{0.333, 33, "33.3%"},
                                                {0.999, 100, "99.9%"},
                                                {0.001, 0, "0.1%"},
                                                {0.0, -1, ""},
                                                {-1.0, -1, ""}}) {
        RecordingSurface surface(200, 50);
        report_DrawBar(surface, 10, 20, 21, fraction, 0x123456);
        EXPECT_EQ(surface.texts().size(), width < 0 ? 0u : 1u);
        for (const SurfaceOp& drawn : surface.of(SurfaceOp::Text)) {
            EXPECT_EQ(drawn.text, text);
            EXPECT_EQ(drawn.x0, 11 + width + 3);
        }
        ASSERT_EQ(surface.of(SurfaceOp::Fill).size(), width > 0 ? 1u : 0u);
        if (width <= 0) continue;
        const SurfaceOp bar = surface.of(SurfaceOp::Fill)[0];
        EXPECT_EQ((std::array{bar.x0, bar.y0, bar.x1, bar.y1}), (std::array{11, 26, width, 9}));
        EXPECT_EQ(bar.colour, 0x123456u);
    }
    RecordingSurface surface(200, 50);
    report_DrawBar(surface, 0, 0, 9, 0.5, NoColour);
    EXPECT_EQ(surface.of(SurfaceOp::Fill)[0].colour, surface.foreground());
    const Legend legend = test_legend();
    EXPECT_EQ(report_BarColour(legend, legend.StatusByName("Running")), 0x400000u);
    EXPECT_EQ(report_BarColour(legend, -1), NoColour);
}

TEST_F(ReportWindowTest, NoObjectIsTold) {
    ASSERT_TRUE(test.Open({}, "ThreadX", PairLegend()));
    Ask("ReportObjects", {press("ok")});
    EXPECT_EQ(test.message(), "There is no tasks in the file.");
    Ask("ReportTask", {});
    EXPECT_EQ(test.message(), "There is no task.");
    Ask("SearchInterval", {});
    EXPECT_EQ(test.message(), "There is no task.");
    EXPECT_EQ(shown, Texts());
    EXPECT_TRUE(host.windows.empty());
    EXPECT_EQ(host.busy, 0);
}

TEST_F(ReportWindowTest, AStoppedReportSaysHowFarItGoes) {
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 40000; ++i) events.push_back(status_change(i, i % 7 + 1, i % 2));
    ASSERT_TRUE(test.Open(events, "ThreadX", PairLegend()));
    canvas.calls.progress = [](double, double) { return false; };
    Ask("ReportObjects", {press("ok")});
    EXPECT_EQ(test.message(), "The report covers a part. It was stopped at 16.383 Seconds.");
    EXPECT_EQ(Window().item("txt_subtitle").text, "(from 0 to 16.383 Second)");
}

}  // namespace
