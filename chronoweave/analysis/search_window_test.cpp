#include "chronoweave/analysis/search_window.h"

#include <fstream>
#include <random>
#include <sstream>

#include "chronoweave/analysis/histogram.h"
#include "chronoweave/analysis/search_dialogs.h"
#include "chronoweave/analysis/table_text.h"
#include "chronoweave/analysis/window_testing.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "windlib/dialog/dialog_testing.h"

namespace {

using Texts = std::vector<std::string>;

class SearchWindowTest : public AnalysisWindowTest {
  protected:
    void Search(std::initializer_list<Step> chain) {
        steps.assign(chain);
        shown.clear();
        EXPECT_TRUE(Do("Search"));
        host.dropClosed();
    }
    void SearchTakes() { Search({AllObjects(), press("event"), choose("Take")}); }
    void SearchPairs(bool same = false) {
        Search({AllObjects(), press("event_pattern"), pattern("Take", "Give", same)});
    }
    struct ResultCase {
        std::vector<Step> chain;
        std::string title, message, stat;
        Texts columns, first, menu;
    };
    // Searches, and looks at the result's window.
    void Look(const ResultCase& c) {
        steps.assign(c.chain.begin(), c.chain.end());
        ASSERT_TRUE(Do("Search"));
        EXPECT_EQ(test.message(), c.message);
        EXPECT_EQ(Window().title(), c.title);
        EXPECT_EQ(Window().item("t_stat").text, c.stat);
        EXPECT_EQ(Titles(), c.columns);
        EXPECT_EQ(Cells("list", 0), c.first);
        ASSERT_TRUE(Window().rowMenu("list", 0, 0));
        EXPECT_EQ(host.popUpTitle, "Operations");
        Texts menu;
        for (const PopUpRow& row : host.popUp) menu.push_back(row.text);
        EXPECT_EQ(menu, c.menu);
        EXPECT_EQ(canvas.marks.hits.size(), static_cast<size_t>(Window().list("list").RowCount()));
    }
    std::string Selection() const {
        return gen_format("%.3f-%.3f", canvas.marks.cursor[0], canvas.marks.cursor[1]);
    }
};

TEST(SearchDescriptions, SurviveFontsAndSizes) {
    for (const DialogDescription& d :
         {search_ObjectsDialog(true), search_ObjectsDialog(false), search_KindDialog(true),
          search_KindDialog(false), search_ChoiceDialog(), search_PatternDialog(), search_IntervalDialog(),
          search_ResultWindow(true), search_ResultWindow(false)})
        EXPECT_EQ(dialog_CheckAll(d), Texts()) << d.name;
}

TEST_F(SearchWindowTest, EachKindHasItsColumnsTextsAndMenu) {
    Open();
    const Texts times = {"Task ID", "From Time", "To Time", "Interval", "Task Name"};
    const ResultCase cases[] = {
        {{AllObjects(), press("event"), choose("Take")},
         "Search Result for 'Take' in Board",
         "Found 3 instances of event 'Take'.",
         "Number of objects: 3",
         {"Task ID", "Time(in Second)", "Task Name"},
         {"0x1", "0.010", "one"},
         {"&Show Event", popUpSeparator, "&Move Cursor to Event"}},
        {{AllObjects(), press("status"), choose("Running")},
         "Search Result for 'Running' in Board",
         "Found 2 instances of status 'Running'.",
         "Number: 2, Interval (in Second): max=0.052 min=0.043 ave=0.0475",
         times,
         {"0x1", "0.005", "0.048", "0.043", "one"},
         {"&Show Interval", popUpSeparator, "Move Cursor to Start &Point", "Move Cursor to &End Point"}},
        {{AllObjects(), press("event_pattern"), pattern("Take", "Give", true)},
         "Search Result for \"Take*Give\" in Board",
         "",
         "Number: 3, Interval (in Second): max=0.04 min=0.005 ave=0.0216667",
         times,
         {"0x1", "0.010", "0.030", "0.020", "one"},
         {"&Show Interval", popUpSeparator, "Move Cursor to Start &Point", "Move Cursor to &End Point"}},
        {{AllObjects(), press("event_pattern"), pattern("Take", "Give", false)},
         "Search Result for \"Take*Give\" in Board",
         "",
         "Number: 3, Interval (in Second): max=0.04 min=0.005 ave=0.0216667",
         {"From Task", "From Time", "To Task", "To Time", "Interval"},
         {"0x1 (one)", "0.010", "0x1 (one)", "0.030", "0.020"},
         {"&Show Interval", popUpSeparator, "Move Cursor to Start &Point", "Move Cursor to &End Point"}},
        {{AllObjects(), press("ctx_switch")},
         "Search Result for 'ContextSwitch' in Board",
         "Found 2 instances of context switch.",
         "Number of objects: 2",
         {"From Task", "To Task", "Time(in Second)"},
         {"0x1 (one)", "0x1 (one)", "0.005"},
         {"&Show Interval", popUpSeparator, "Move Cursor to Start &Point", "Move Cursor to &End Point"}},
    };
    for (const ResultCase& c : cases) Look(c);
    EXPECT_EQ(canvas.calls.viewWindows.size(), 5u);
    EXPECT_EQ(host.busy, 0);
    ASSERT_TRUE(Do("DelViews"));
    host.dropClosed();
    EXPECT_TRUE(host.windows.empty() && canvas.calls.viewWindows.empty() && canvas.marks.hits.empty());
}

TEST_F(SearchWindowTest, DialogsSayWhatTheyAskForAndArePrefilled) {
    Open();
    canvas.axis.timeMode = Time_Millisecond;
    Search({[](DialogModel& d) {
                EXPECT_EQ(d.title(), "Select Tasks");
                EXPECT_EQ(d.item("t_prompt").text, "Select tasks:");
                EXPECT_EQ(d.item("t_period").text,
                          "Or define period during which tasks are alive (in Millisecond):");
                EXPECT_EQ(d.item("tf_from").text, "0.0");
                EXPECT_EQ(d.item("tf_to").text, "-1.0 (Max: 100)");
                EXPECT_EQ(d.item("list").columnTitles, (Texts{"Task ID", "Task Name"}));
                EXPECT_EQ(d.list("list").Text(1, 0), "0x2");
                d.type("tf_from", "20 and more");
                d.type("tf_to", "60");
                d.press("ok");
            },
            [](DialogModel& d) {
                EXPECT_EQ(d.title(), "Select Object Type");
                EXPECT_EQ(d.item("t_type").text, "Object type to search:");
                EXPECT_EQ(d.item("t_range").text, "A period for searched object(s) (in Millisecond)");
                EXPECT_EQ(d.item("tf_from").text, "20");
                EXPECT_EQ(d.item("tf_to").text, "60 (Max: 100)");
                d.press("event");
            },
            [](DialogModel& d) {
                EXPECT_EQ(d.title(), "Select One Event");
                EXPECT_EQ(d.item("t_prompt").text, "Select one of the events to search:");
                EXPECT_EQ(d.item("list").columnTitles, (Texts{"Event Name", "Code"}));
                EXPECT_EQ(d.list("list").RowCount(), 5);  // no category, "Take" once
                EXPECT_EQ(d.list("list").Text(0, 1), gen_format("0x%x/0x2", mt_UserEvent));
                d.clickRow("list", 0, 0, 2);  // the same as "ok"
            }});
    EXPECT_EQ(Window().list("list").RowCount(), 2);
    EXPECT_EQ(Cells("list", 0)[1], "40");
    // Without a period the range is the whole trace, and its end is exact although its text is short.
    Search({AllObjects(),
            [](DialogModel& d) {
                EXPECT_EQ(d.item("tf_from").text, "0.0");
                EXPECT_EQ(d.item("tf_to").text, "100 (Max: 100)");
                d.press("status");
            },
            [](DialogModel& d) {
                EXPECT_EQ(d.title(), "Select One Status");
                EXPECT_EQ(d.item("list").columnTitles, (Texts{"Status Name", "Code"}));
                EXPECT_EQ(d.list("list").Text(3, 1), "0x3");
                d.press("cancel");
            }});
    EXPECT_EQ(shown, (Texts{"SelectObjects", "SelectObjectType", "SelectOneLegend"}));
    EXPECT_EQ(host.windows.size(), 1u);
    EXPECT_EQ(test.message(), "");
}

TEST_F(SearchWindowTest, RefusalsKeepTheirDialogsOpen) {
    EXPECT_FALSE(Do("Search"));
    EXPECT_EQ(test.message(), "There is source file.");
    Open();
    Search({[](DialogModel& d) {
                d.press("ok");
                EXPECT_EQ(d.message(), "No task is selected.");
                d.type("tf_from", "soon");
                d.press("ok");
                EXPECT_EQ(d.message(), "Invalid time range.");
                EXPECT_FALSE(d.isClosed());
                d.type("tf_from", "");
                d.list("list").SelectAll();
                d.press("ok");
            },
            [](DialogModel& d) {
                d.type("tf_to", "");
                d.press("event_pattern");
                EXPECT_EQ(d.message(), "Invalid time range.");
                d.type("tf_to", "0.1");
                d.press("event_pattern");
            },
            [](DialogModel& d) {
                EXPECT_EQ(d.title(), "Define the event pattern");
                EXPECT_EQ(d.item("same").text, "&Match events on the same task");
                EXPECT_EQ(d.list("begin_objects").SelectionCount(), 2);
                const auto say = [&](const std::set<int>& begin, const std::set<int>& end,
                                     const std::set<int>& from, const std::set<int>& to) {
                    d.select("begin", begin);
                    d.select("end", end);
                    d.select("begin_objects", from);
                    d.select("end_objects", to);
                    d.press("ok");
                };
                say({}, {}, {}, {});
                say({0, 1}, {}, {}, {});
                say({0}, {}, {}, {});
                say({0}, {1, 2}, {}, {});
                say({0}, {0}, {}, {});
                say({0}, {0}, {0}, {});
                d.check("same", true);
                say({0}, {0}, {0}, {1});
                EXPECT_FALSE(d.isClosed());
            }});
    EXPECT_EQ(host.messages,
              (Texts{"No begin-event is selected.", "Multiple begin-events are selected.",
                     "No end-event is selected.", "Multiple end-events are selected.",
                     "No task is selected for begin event(s).", "No task is selected for end event(s).",
                     "No common task is selected for both begin and end event(s)."}));
    host.messages.clear();
    Search({AllObjects(), press("event"), press("ok")});
    EXPECT_EQ(host.messages, Texts{"No object is selected."});
    EXPECT_TRUE(host.windows.empty());
}

TEST_F(SearchWindowTest, NothingFoundIsTold) {
    Open();
    const auto range = [](const char* from, const char* to, const char* kind) {
        return [=](DialogModel& d) {
            d.type("tf_from", from);
            d.type("tf_to", to);
            d.press(kind);
        };
    };
    SearchTakes();
    Search({AllObjects(), range("0.08", "0.02", "event"), choose("Take")});
    EXPECT_EQ(test.message(), "Did not find any 'Take'.");
    EXPECT_EQ(canvas.marks.hits.size(), 3u);  // those of the result that is still open
    Search({AllObjects(), range("0", "0.001", "event_pattern"), pattern("Take", "Give", false)});
    EXPECT_EQ(test.message(), "Did not find instance for event pattern \"Take*Give\".");
    Search({AllObjects(), press("status"), choose("Stopped")});
    EXPECT_EQ(test.message(), "Did not find any 'Stopped'.");
    EXPECT_EQ(host.windows.size(), 1u);
}

TEST_F(SearchWindowTest, AStoppedSearchShowsWhatItFound) {
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 40000; ++i) events.push_back(user(i, 1, 2));
    ASSERT_TRUE(test.Open(events, "ThreadX", PairLegend()));
    canvas.calls.progress = [](double, double) { return false; };
    SearchTakes();
    const int rows = Window().list("list").RowCount();
    EXPECT_GT(rows, 0);
    EXPECT_LT(rows, 40000);
    EXPECT_EQ(test.message(),
              gen_format("Found %d instances of event 'Take'.", rows) + " It was stopped at 16.383 Seconds.");
    Search({AllObjects(), press("event_pattern"), pattern("Take", "Take", true)});
    EXPECT_EQ(test.message(), "The search was stopped at 16.383 Seconds.");
}

TEST_F(SearchWindowTest, ClicksLeadToTheCanvas) {
    Open();
    std::string warped;
    test.graph.warpPointer = [&](int x, int) { warped = std::to_string(x); };
    SearchPairs();
    laCanvas_ShowRange(canvas, 0.06, 0.07, {.paint = true});
    // Out of view: the interval with a sixth of it on either side.
    ASSERT_TRUE(Window().clickRow("list", 0, 4));
    EXPECT_NEAR(canvas.view.viewLow, 0.010 - 0.020 / 6, 1e-4);
    EXPECT_NEAR(canvas.view.viewHigh, 0.030 + 0.020 / 6, 1e-4);
    EXPECT_EQ(Selection(), "0.010-0.030");
    EXPECT_EQ(warped, "");
    test.ShowAll();
    ASSERT_TRUE(Window().clickRow("list", 2, 0));  // in view, which stays
    EXPECT_EQ(canvas.view.viewLow, 0);
    EXPECT_EQ(Selection(), "0.050-0.090");
    for (const auto& [column, at] : {std::pair{1, "500"}, {3, "900"}, {0, ""}}) {
        warped.clear();
        ASSERT_TRUE(Window().clickRow("list", 2, column, 1));
        ASSERT_TRUE(Window().clickRow("list", 2, column, 2));
        EXPECT_EQ(warped, at);
    }
    for (const auto& [answer, at] : {std::pair{0, ""}, {2, "100"}, {3, "300"}, {-1, ""}}) {
        warped.clear();
        host.popUpAnswer = answer;
        ASSERT_TRUE(Window().rowMenu("list", 0, 0));
        EXPECT_EQ(warped, at);
    }
    EXPECT_TRUE(Window().clickRow("list", -1, 0));
    SearchTakes();
    ASSERT_TRUE(Window().clickRow("list", 1, 0, 2));
    EXPECT_EQ(warped, "400");
    EXPECT_TRUE(Window().press("quit"));
    EXPECT_EQ(canvas.calls.viewWindows.size(), 1u);
}

TEST_F(SearchWindowTest, WhatIsInvisibleIsTold) {
    Open();
    Search({AllObjects(), press("event"), choose("Give")});
    Window().clickRow("list", 0, 0);
    EXPECT_EQ(test.message(), "Event \"Give\" is invisible.");
    Search({AllObjects(), press("status"), choose("Running")});
    canvas.looks.legend.statuses[3].visible = false;
    Window().clickRow("list", 0, 0);
    EXPECT_EQ(test.message(), "Status \"Running\" is invisible.");
    Search({AllObjects(), press("ctx_switch")});
    canvas.looks.legend.statuses[8].visible = false;
    Window().clickRow("list", 0, 0);
    EXPECT_EQ(test.message(), "\"ContextSwitch\" is invisible.");
}

TEST_F(SearchWindowTest, KeysStepFromHitToHit) {
    Open();
    EXPECT_FALSE(Do("NextHit"));
    EXPECT_EQ(test.message(), "There is no search result.");
    SearchTakes();
    EXPECT_EQ(canvas.marks.hits, (std::vector<double>{0.010, 0.040, 0.050}));
    const struct {
        const char* command;
        double cursor;  // set before; -1 to leave it
        bool done;
        double at;
        const char* message;
    } walk[] = {{"NextHit", -1, true, 0.010, "Hit 1 of 3."},
                {"NextHit", -1, true, 0.040, "Hit 2 of 3."},
                {"NextHit", -1, true, 0.050, "Hit 3 of 3."},
                {"NextHit", -1, false, 0.050, "There is no later hit."},
                {"PrevHit", -1, true, 0.040, "Hit 2 of 3."},
                {"PrevHit", 0.010, false, 0.010, "There is no earlier hit."},
                {"NextHit", 0.045, true, 0.050, "Hit 3 of 3."},
                {"PrevHit", 0.045, true, 0.040, "Hit 2 of 3."}};
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100;
    for (const auto& c : walk) {
        if (c.cursor >= 0) canvas.marks.cursor[0] = canvas.marks.cursor[1] = c.cursor;
        EXPECT_EQ(Do(c.command), c.done);
        EXPECT_EQ(canvas.marks.cursor[0], c.at) << c.message;
        EXPECT_EQ(test.message(), c.message);
    }
    EXPECT_EQ(Window().selectedRow("list"), 1);
    ASSERT_TRUE(Window().sortRows("list", 1));
    ASSERT_TRUE(Window().sortRows("list", 1));  // the latest first: the row goes by its hit
    ASSERT_TRUE(Do("NextHit"));
    EXPECT_EQ(Window().selectedRow("list"), 0);
    ASSERT_TRUE(Do("Close"));
    EXPECT_TRUE(canvas.marks.hits.empty());
    EXPECT_FALSE(Do("PrevHit"));
}

TEST_F(SearchWindowTest, KeysStepThroughTheResultWorkedWithLast) {
    Open();
    const std::vector<double> takes = {0.010, 0.040, 0.050}, gives = {0.030, 0.045, 0.090};
    SearchTakes();
    Search({AllObjects(), press("event"), choose("Give")});
    EXPECT_EQ(canvas.marks.hits, gives);
    DialogModel &older = *host.windows[0], &newer = *host.windows[1];
    ASSERT_TRUE(older.clickRow("list", 0, 0));
    EXPECT_EQ(canvas.marks.hits, takes);
    ASSERT_TRUE(Do("NextHit"));
    EXPECT_EQ(canvas.marks.cursor[0], 0.040);
    ASSERT_TRUE(newer.activate("list", 1));
    EXPECT_EQ(canvas.marks.hits, gives);
    // A search that finds nothing, and the end of the newer result, leave the older one.
    Search({AllObjects(), press("status"), choose("Stopped")});
    EXPECT_EQ(canvas.marks.hits, gives);
    newer.dismiss();
    EXPECT_EQ(canvas.marks.hits, takes);
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = 0.045;
    ASSERT_TRUE(Do("NextHit"));
    EXPECT_EQ(canvas.marks.cursor[0], 0.050);
    const auto late = older.onActivate;
    older.dismiss();
    EXPECT_TRUE(canvas.marks.hits.empty());
    late("list", 0);  // a click that was on its way
    EXPECT_TRUE(canvas.marks.hits.empty()) << "a closed result leads no more";
    EXPECT_FALSE(Do("NextHit"));
}

TEST_F(SearchWindowTest, AResultOpensAsWideAsItsColumns) {
    std::vector<TestEvent> events = PairEvents();
    const std::string name(40, 'n');
    events[0] = name_event(0, 1, name);
    events[1] = name_event(0, 2, "x" + name);
    ASSERT_TRUE(test.Open(events, "ThreadX", PairLegend()));
    Search({AllObjects(), press("ctx_switch")});
    const std::string cell = Cells("list", 1)[1];
    ASSERT_GT(cell.size(), 35u);
    const DialogMetrics font = dialog_TestFont(20, false);
    const auto opened = [&](const DialogDescription& d) {
        DialogLayout layout(d, font);
        EXPECT_EQ(layout.open().check, "");
        return layout.width();
    };
    EXPECT_GT(opened(Window().description()),
              font.textWidth(cell) * 2 + font.textWidth(Cells("list", 1)[2]) + 30);
    SearchTakes();
    EXPECT_EQ(opened(Window().description()), opened(search_ResultWindow(false)));
}

TEST_F(SearchWindowTest, OnlyTheRowsOfAResultAreShownAndAllAgain) {
    std::vector<TestEvent> events = PairEvents();
    events.insert(events.begin(), {name_event(0, 3, "two"), name_event(0, 4, "four")});
    ASSERT_TRUE(test.Open(events, "ThreadX", PairLegend()));
    test.ShowAll();
    const auto visible = [this] {
        std::set<uint32_t> ids;
        for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
            if (canvas.items.lanes[i].row >= 0) ids.insert(canvas.items.lanes[i].objectId);
        return ids;
    };
    const std::set<uint32_t> all = visible();
    canvas.taskList->AddHiddenPath({{"four"}, false, 4});
    const auto ends = [](DialogModel& d) {
        d.type("tf_from", "0.049");
        d.press("event");
    };
    Search({AllObjects(), ends, choose("Take")});  // on task 2 alone
    ASSERT_TRUE(Window().check("only_rows", true));
    // "two" stands for the group of "two@inner", and is not hidden with it.
    EXPECT_EQ(visible(), (std::set<uint32_t>{2, 3}));
    DialogModel& first = Window();
    SearchTakes();
    ASSERT_TRUE(Window().check("only_rows", true));
    EXPECT_FALSE(first.item("only_rows").checked);
    EXPECT_EQ(visible(), (std::set<uint32_t>{1, 2, 3}));
    ASSERT_TRUE(Window().check("only_rows", false));
    EXPECT_EQ(visible().size(), all.size() - 1);  // what the user hid stays hidden
    ASSERT_TRUE(Window().check("only_rows", true));
    Window().dismiss();
    EXPECT_EQ(visible().size(), all.size() - 1);
    EXPECT_EQ(canvas.taskList->HiddenPaths().size(), 1u);
}

TEST_F(SearchWindowTest, TablesAreCopiedAndSaved) {
    Open();
    SearchTakes();
    ASSERT_TRUE(Window().menu("Copy"));
    ASSERT_TRUE(Window().select("list", {1}));
    ASSERT_TRUE(Window().menu("Copy"));
    EXPECT_EQ(host.copied, (Texts{"Task ID\tTime(in Second)\tTask Name\n0x1\t0.010\tone\n"
                                  "0x1\t0.040\tone\n0x2\t0.050\ttwo@inner\n",
                                  "Task ID\tTime(in Second)\tTask Name\n0x1\t0.040\tone\n"}));
    ASSERT_TRUE(Window().menu("SaveCsv"));  // cancelled
    host.saveAnswer = test.folder / "hits.csv";
    ASSERT_TRUE(Window().menu("SaveCsv"));
    std::stringstream text;
    text << std::ifstream(host.saveAnswer).rdbuf();
    EXPECT_EQ(text.str(),
              "Task ID,Time(in Second),Task Name\n0x1,0.010,one\n"
              "0x1,0.040,one\n0x2,0.050,two@inner\n");
    EXPECT_TRUE(host.messages.empty());
    host.saveAnswer = test.folder / "nowhere/hits.csv";
    ASSERT_TRUE(Window().menu("SaveCsv"));
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_NE(host.messages[0].find(host.saveAnswer), std::string::npos);
    ASSERT_TRUE(Window().menu("Close"));
    EXPECT_TRUE(canvas.calls.viewWindows.empty());
}

TEST(TableText, CellsAreQuotedForTheirForm) {
    MScrollList list;
    list.SetSize(1, 2);
    list.SetHeaderRows(2);
    for (const auto& [row, column, text] :
         {std::tuple{0, 0, "Percent of"}, {1, 0, "Time"}, {0, 1, "Name"}, {1, 1, ""}})
        list.SetHeader(row, column, text);
    list.SetText(0, 0, "a\tb\nc");
    list.SetText(0, 1, "say \"x\", y");
    EXPECT_EQ(table_ForClipboard(list), "Percent of Time\tName\na b c\tsay \"x\", y\n");
    MScrollList empty;
    EXPECT_EQ(table_AsCsv({&list, &empty}), "Percent of Time,Name\n\"a\tb\nc\",\"say \"\"x\"\", y\"\n");
}

TEST_F(SearchWindowTest, ABarOfTheHistogramSelectsItsRows) {
    Open();
    SearchPairs();
    EXPECT_EQ(Window().item("t_lengths").text,
              "Lengths (in Second): min=0.005 max=0.04 mean=0.0216667 median=0.02\n"
              "95th percentile=0.04 99th percentile=0.04 jitter (max - min)=0.035");
    RecordingSurface surface(408, 100);
    Window().painter("histogram")(surface, 408, 100);
    EXPECT_EQ(surface.counts[SurfaceOp::Fill], 3u);  // lengths 5, 20 and 40 in four bars
    ASSERT_TRUE(Window().sortRows("list", 4));
    for (const auto& [x, row] : {std::pair{20, 0}, {150, 1}, {400, 2}}) {
        ASSERT_TRUE(Window().picture("histogram", x, 50));
        EXPECT_EQ(Window().selectedRow("list"), row);
    }
    ASSERT_TRUE(Window().picture("histogram", 1, 50));  // beside the bars
    EXPECT_EQ(Window().selectedRow("list"), 2);
    // Between 5 and 40 a bar ends at 1.68 times where it begins: 20 stands two thirds of the way.
    ASSERT_TRUE(Window().check("log_lengths", true));
    for (const auto& [x, row] : {std::pair{20, 0}, {250, 1}, {400, 2}}) {
        ASSERT_TRUE(Window().picture("histogram", x, 50));
        EXPECT_EQ(Window().selectedRow("list"), row);
    }
    SearchPairs();
    EXPECT_TRUE(Window().item("log_lengths").checked);
    EXPECT_TRUE(canvas.marks.hits.size() == 3 && !Window().item("only_rows").checked);
}

TEST(HistogramFigures, ALogarithmicScaleSpreadsWhatALinearOneHeaps) {
    std::vector<double> lengths = {0, 0};
    for (int power = -6; power <= 0; ++power)
        for (int i = 1; i <= 9; ++i) lengths.push_back(i * std::pow(10.0, power));
    const Histogram linear(lengths), spread(lengths, HistogramScale::Logarithmic);
    EXPECT_GT(linear.counts().front(), lengths.size() / 2);
    EXPECT_EQ(spread.counts().front(), 2u);  // of 0
    EXPECT_LT(*std::max_element(spread.counts().begin(), spread.counts().end()), lengths.size() / 4);
    EXPECT_EQ(spread.BarOf(9), spread.counts().size() - 1);
    EXPECT_EQ(spread.BarOf(1e-6), 1u);
    size_t last = 0;
    for (double length = 1e-6; length <= 9; length *= 1.3) {
        const size_t bar = spread.BarOf(length);
        EXPECT_TRUE(bar == last || bar == last + 1 || last == 0) << length;
        last = bar;
    }
    RecordingSurface surface(600, 100);
    spread.draw(surface, 600, 100);
    const Texts shown = surface.texts();
    for (const char* text : {"0", "9", "0.001", "1"})
        EXPECT_NE(std::find(shown.begin(), shown.end(), text), shown.end()) << text;
    EXPECT_EQ(Histogram({0, 0}, HistogramScale::Logarithmic).counts(), std::vector<uint32_t>{2});
    EXPECT_EQ(Histogram({3, 3}, HistogramScale::Logarithmic).counts(), std::vector<uint32_t>{2});
    EXPECT_EQ(Histogram({0, 3}, HistogramScale::Logarithmic).counts(), (std::vector<uint32_t>{1, 1}));
}

TEST(HistogramFigures, AreThoseOfSortedLengths) {
    std::mt19937 random(5);
    for (size_t count = 1; count < 300; count += 1 + count / 7) {
        std::vector<double> lengths;
        for (size_t i = 0; i < count; ++i) lengths.push_back(static_cast<double>(random() % 1000) / 8);
        const Histogram histogram(lengths);
        std::vector<double> sorted = lengths;
        std::sort(sorted.begin(), sorted.end());
        const LengthFigures& f = histogram.figures();
        EXPECT_EQ(f.min, sorted.front());
        EXPECT_EQ(f.max, sorted.back());
        EXPECT_EQ(f.jitter, sorted.back() - sorted.front());
        EXPECT_EQ(f.median, (sorted[(count - 1) / 2] + sorted[count / 2]) / 2);
        for (const auto& [percent, value] : {std::pair{95.0, f.percentile95}, {99.0, f.percentile99}}) {
            const auto notAbove = std::upper_bound(sorted.begin(), sorted.end(), value) - sorted.begin();
            const auto below = std::lower_bound(sorted.begin(), sorted.end(), value) - sorted.begin();
            EXPECT_GE(100.0 * static_cast<double>(notAbove), percent * static_cast<double>(count));
            EXPECT_LT(100.0 * static_cast<double>(below), percent * static_cast<double>(count));
        }
        std::vector<uint32_t> counts(histogram.counts().size(), 0);
        double sum = 0;
        for (const double length : lengths) {
            ++counts[histogram.BarOf(length)];
            sum += length;
        }
        EXPECT_NEAR(f.mean, sum / static_cast<double>(count), 1e-9);
        EXPECT_EQ(counts, histogram.counts());
    }
    EXPECT_EQ(Histogram(std::vector<double>{}).figures().count, 0u);
    EXPECT_EQ(Histogram(std::vector<double>{2, 2, 2}).counts(), std::vector<uint32_t>{3});
}

TEST_F(SearchWindowTest, IntervalsAreSearchedByOneDialog) {
    EXPECT_FALSE(Do("SearchInterval"));
    EXPECT_EQ(test.message(), "");
    Open();
    const auto ask = [this](const Step& step) {
        steps = {step};
        EXPECT_TRUE(Do("SearchInterval"));
        host.dropClosed();
    };
    ask([](DialogModel& d) {
        EXPECT_EQ(d.title(), "Criteria for searching intervals based on event pattern");
        EXPECT_EQ(d.item("begin").choices, (Texts{"Take", "Give"}));  // the marked ones
        EXPECT_EQ(d.item("t_range").text, "&Within (in Second):");
        EXPECT_EQ(d.item("tf_from").text, "0");
        EXPECT_EQ(d.item("tf_to").text, "0.100");
        EXPECT_EQ(d.selectedRow("begin_objects"), 0);
        d.choose("end", 1);
        d.press("ok");
    });
    EXPECT_EQ(Titles(), (Texts{"From Task", "From Time", "To Task", "To Time", "Interval"}));
    EXPECT_EQ(Window().title(), "Search Result for \"Take*Give\" in Board");
    EXPECT_EQ(Window().list("list").RowCount(), 2);
    // The wrong way round; from one object to another.
    ask([](DialogModel& d) {
        d.choose("end", 1);
        d.select("end_objects", {1});
        d.type("tf_from", "0.095");
        d.type("tf_to", "0.035");
        d.press("ok");
    });
    ASSERT_EQ(Window().list("list").RowCount(), 1);
    EXPECT_EQ(Cells("list", 0), (Texts{"0x1 (one)", "0.040", "0x2 (two@inner)", "0.090", "0.050"}));
    const size_t windows = host.windows.size();
    ask([](DialogModel& d) {
        d.type("tf_to", " ");
        d.press("ok");
        EXPECT_TRUE(d.isClosed());  // an empty field ends the search
    });
    ask([](DialogModel& d) {
        d.type("tf_to", "x");
        d.press("ok");
        EXPECT_EQ(d.message(), "Invalid time range.");
    });
    EXPECT_EQ(host.windows.size(), windows);
    canvas.options.allForIntervalSearch = true;
    ask([](DialogModel& d) {
        EXPECT_EQ(d.item("begin").choices, (Texts{"Take", "Give", "Status", "Switch", "Take", "Unknown"}));
    });
    canvas.options.allForIntervalSearch = false;
    for (LegendEvent& event : canvas.looks.legend.events) event.flags &= ~LegendEvent_IntervalSearch;
    shown.clear();
    EXPECT_TRUE(Do("SearchInterval"));
    EXPECT_TRUE(shown.empty());
    EXPECT_EQ(test.message(), "");
}

TEST_F(SearchWindowTest, AThousandObjectsAndAMillionRowsAreShown) {
    std::vector<TestEvent> events;
    for (uint32_t i = 0; i < 2000; ++i) events.push_back(user(i, i / 2 + 1, i % 2 ? 3 : 2));
    ASSERT_TRUE(test.Open(events, "ThreadX", PairLegend()));
    Search({[](DialogModel& d) {
                EXPECT_EQ(d.list("list").RowCount(), 1000);
                d.list("list").SelectAll();
                d.press("ok");
            },
            press("event_pattern"), pattern("Take", "Give", true)});
    EXPECT_EQ(Window().list("list").RowCount(), 1000);
    const auto desk = std::make_shared<SearchDesk>();
    const auto facts = std::make_shared<CanvasFacts>(canvas);
    SearchResult result;
    result.request.kind = Search_Status;
    result.request.target = 0;
    for (uint32_t i = 0; i < 1000000; ++i)
        result.rows.push_back({i % 1000, i % 1000, i * 1e-6, i * 1e-6 + (i * 7919 % 1000) * 1e-6});
    search_OpenResult(desk, facts, std::move(result));
    EXPECT_EQ(Window().list("list").RowCount(), 1000000);
    EXPECT_TRUE(Window().list("list").IsLazy()) << "rows are made when they are seen";
    EXPECT_EQ(Window().list("list").Text(999999, 0), "0x3e7");
    Window().dismiss();
}

}  // namespace
