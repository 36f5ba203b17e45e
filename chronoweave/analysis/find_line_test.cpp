#include "chronoweave/analysis/find_line.h"

#include "chronoweave/analysis/window_testing.h"
#include "chronoweave/traxfunc/input/cursor.h"

class FindLineTest : public AnalysisWindowTest {
  protected:
    void SetUp() override {
        AnalysisWindowTest::SetUp();
        Open();
        canvas.axis.autoAdjustUnit = false;
        canvas.axis.timeMode = Time_Second;
        laCanvas_ClearCursors(canvas);
        line = std::make_unique<FindLine>(canvas, desk);
        line->Open();
    }
    void Type(const std::string& text) {
        ASSERT_TRUE(line->model().edit("find", text));
        while (line->Step()) {
        }
    }
    std::string Told() { return line->model().message(); }
    using Times = std::vector<double>;

    std::unique_ptr<FindLine> line;
};

TEST_F(FindLineTest, HitsAreMarkedAndWalked) {
    Type("take");
    EXPECT_EQ(canvas.marks.hits, (Times{0.01, 0.04, 0.05}));
    EXPECT_EQ(Told(), "3 found");
    EXPECT_TRUE(line->Enter(true));
    EXPECT_EQ(canvas.marks.cursor[0], 0.01);
    EXPECT_EQ(Told(), "1 of 3");
    EXPECT_EQ(test.message(), "Hit 1 of 3: Take of one at 0.010 Seconds.");
    EXPECT_TRUE(Do("NextHit"));
    EXPECT_TRUE(line->model().press("next"));
    EXPECT_EQ(Told(), "3 of 3");
    EXPECT_EQ(canvas.marks.cursor[0], 0.05);
    EXPECT_FALSE(Do("NextHit"));
    EXPECT_EQ(test.message(), "There is no later hit.");
    EXPECT_TRUE(Do("PrevHit"));
    EXPECT_TRUE(line->Enter(false));
    EXPECT_EQ(Told(), "1 of 3");
    // Typing on begins anew.
    Type("take two");
    EXPECT_EQ(canvas.marks.hits, Times{0.05});
    Type("running one");
    EXPECT_EQ(canvas.marks.hits, Times{0.005});
    Type("nobody");
    EXPECT_EQ(Told(), "Nothing found");
    EXPECT_TRUE(canvas.marks.hits.empty());
    EXPECT_FALSE(line->Enter(true));
    Type("");
    EXPECT_EQ(Told(), "");
}

TEST_F(FindLineTest, ATimeIsGoneTo) {
    Type("take");
    Type("20 ms");
    EXPECT_EQ(Told(), "Enter goes there");
    EXPECT_TRUE(canvas.marks.hits.empty());
    EXPECT_TRUE(line->Enter(true));
    EXPECT_EQ(canvas.marks.cursor[0], 0.02);
    Type("9 s");
    EXPECT_FALSE(line->Enter(true));
    EXPECT_NE(test.message().find("The trace ends at"), std::string::npos);
}

TEST_F(FindLineTest, HitsOfTheSelectionAreCounted) {
    Type("give");
    EXPECT_EQ(Told(), "3 found");
    laCanvas_SetSelection(canvas, 0.03, 0.0451);
    line->Sync();
    EXPECT_EQ(Told(), "3 found, 2 in the selection");
    laCanvas_SetSelection(canvas, 0.031, 0.032);
    line->Sync();
    EXPECT_EQ(Told(), "3 found, 0 in the selection");
}

TEST_F(FindLineTest, EscapeStopsAndThenCloses) {
    line->model().edit("find", "take");
    EXPECT_NE(Told().find("searched"), std::string::npos);
    line->Escape();
    EXPECT_NE(Told().find("stopped"), std::string::npos);
    EXPECT_FALSE(line->Step());
    EXPECT_TRUE(line->IsOpen());
    line->Escape();
    EXPECT_FALSE(line->IsOpen());
    // What was typed is looked for again.
    line->Open();
    while (line->Step()) {
    }
    EXPECT_EQ(Told(), "3 found");
    line->Escape();
    EXPECT_FALSE(line->IsOpen());
    EXPECT_TRUE(canvas.marks.hits.empty());
    EXPECT_FALSE(Do("NextHit"));
}

TEST_F(FindLineTest, ResultsLeadAgainWhenItCloses) {
    steps = {AllObjects(), press("event"), choose("Give")};
    EXPECT_TRUE(Do("Search"));
    EXPECT_EQ(canvas.marks.hits, (Times{0.03, 0.045, 0.09}));
    Type("take");
    EXPECT_EQ(canvas.marks.hits, (Times{0.01, 0.04, 0.05}));
    Window().clickRow("list", 0, 0);
    EXPECT_EQ(canvas.marks.hits, (Times{0.03, 0.045, 0.09}));
    EXPECT_TRUE(line->StepHit(true));
    EXPECT_EQ(canvas.marks.hits, (Times{0.01, 0.04, 0.05}));
    line->Close();
    EXPECT_EQ(canvas.marks.hits, (Times{0.03, 0.045, 0.09}));
}

TEST_F(FindLineTest, AnotherTraceIsSearchedAnew) {
    Type("take");
    ASSERT_TRUE(
        test.Open({name_event(0, 1, "one"), switch_to(1, 1), user(7, 1, 2)}, "ThreadX", PairLegend()));
    EXPECT_FALSE(line->StepHit(true));
    EXPECT_FALSE(line->Step() && line->Step());
    line->Sync();
    while (line->Step()) {
    }
    EXPECT_EQ(Told(), "1 found");
    EXPECT_EQ(canvas.marks.hits, Times{0.007});
}

TEST_F(FindLineTest, DialogsComeFilled) {
    Type("two take");
    laCanvas_SetSelection(canvas, 0.02, 0.06);
    const auto selected = [](DialogModel& dialog, const char* list) {
        std::string names;
        for (const int row : dialog.list(list).SelectedRows()) names += dialog.list(list).Text(row, 0) + ' ';
        return names;
    };
    host.popUpAnswer = 0;
    steps = {[&](DialogModel& dialog) {
                 EXPECT_EQ(selected(dialog, "list"), "0x2 ");
                 dialog.press("ok");
             },
             [&](DialogModel& dialog) {
                 EXPECT_EQ(dialog.item("tf_from").text, "0.02");
                 EXPECT_EQ(dialog.item("tf_to").text.substr(0, 5), "0.06 ");
                 dialog.press("event");
             },
             [&](DialogModel& dialog) {
                 EXPECT_EQ(selected(dialog, "list"), "Take ");
                 dialog.press("ok");
             }};
    EXPECT_TRUE(line->model().press("search"));
    EXPECT_EQ(shown, (std::vector<std::string>{"SelectObjects", "SelectObjectType", "SelectOneLegend"}));
    EXPECT_EQ(canvas.marks.hits, Times{0.05});
    shown.clear();
    host.popUpAnswer = 5;
    steps = {[&](DialogModel& dialog) {
        EXPECT_EQ(dialog.item("begin").choice, 0);
        EXPECT_EQ(selected(dialog, "begin_objects"), "0x2 ");
        EXPECT_EQ(dialog.item("tf_from").text, "0.02");
        dialog.press("cancel");
    }};
    EXPECT_TRUE(line->model().press("search"));
    EXPECT_EQ(shown, std::vector<std::string>{"SearchInterval"});
}

TEST_F(FindLineTest, RangesAreFilledByButtonsAndListsFiltered) {
    laCanvas_SetSelection(canvas, 0.02, 0.06);
    steps = {[&](DialogModel& dialog) {
                 dialog.edit("f_list", "INNER");
                 EXPECT_EQ(dialog.list("list").RowCount(), 1);
                 EXPECT_EQ(dialog.selectedIds("list"), std::vector<uint64_t>{2});
                 dialog.edit("f_list", "");
                 EXPECT_EQ(dialog.list("list").RowCount(), 2);
                 EXPECT_EQ(dialog.selectedIds("list"), std::vector<uint64_t>{2});
                 dialog.press("all_rows");
                 EXPECT_EQ(dialog.selectedIds("list").size(), 2u);
                 dialog.press("ok");
             },
             [&](DialogModel& dialog) {
                 const auto range = [&](const char* button) {
                     EXPECT_TRUE(dialog.press(button));
                     return dialog.item("tf_from").text + ' ' + dialog.item("tf_to").text;
                 };
                 EXPECT_EQ(range("r_selection"), "0.02 0.06");
                 EXPECT_EQ(range("r_all"), "0 0.1");
                 EXPECT_EQ(range("r_view"), "0 0.1");
                 dialog.press("r_selection");
                 dialog.press("event");
             },
             choose("Take")};
    EXPECT_TRUE(Do("Search"));
    EXPECT_EQ(canvas.marks.hits, (Times{0.04, 0.05}));
    laCanvas_ClearCursors(canvas);
    steps = {[&](DialogModel& dialog) {
        EXPECT_FALSE(dialog.press("r_selection"));
        dialog.press("cancel");
    }};
    Do("ReportObjects");
}
