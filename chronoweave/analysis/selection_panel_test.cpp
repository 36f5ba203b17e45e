#include "chronoweave/analysis/selection_panel.h"

#include "chronoweave/analysis/window_testing.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/cursor.h"

class SelectionPanelTest : public AnalysisWindowTest {
  protected:
    void SetUp() override {
        AnalysisWindowTest::SetUp();
        canvas.axis.autoAdjustUnit = false;
    }
    void Select(double from, double to) {
        laCanvas_SetSelection(canvas, from, to);
        panel.Sync();
        while (panel.Step()) {
        }
    }
    SelectionPanel panel{canvas};
};

TEST_F(SelectionPanelTest, TellsWhatHappened) {
    Open();
    canvas.axis.timeMode = Time_Second;
    EXPECT_FALSE(panel.Sync());
    EXPECT_FALSE(panel.HasFigures());
    Select(0.005, 0.05);
    EXPECT_TRUE(panel.HasFigures());
    EXPECT_EQ(test.message(),
              "0.045 Seconds selected: 8 events, CPU 0 100.0 %; longest ready wait 0.043 (two@inner)");
    EXPECT_EQ(panel.Text(),
              "0.045 Seconds selected\n"
              "Longest ready wait: 0.043 (two@inner)\n"
              "CPU 0\t0.045\t100.0 %\n"
              "one\t0.043\t95.6 %\n"
              "two@inner\t0.002\t4.4 %\n"
              "Events\t8\n"
              "Take\t3\t37.5 %\n"
              "Give\t2\t25.0 %\n"
              "Switch\t2\t25.0 %\n"
              "Status\t1\t12.5 %\n");
    EXPECT_TRUE(panel.model().press("copy"));
    EXPECT_EQ(host.copied, std::vector<std::string>{panel.Text()});
    // The figures stand in the unit that the axis shows.
    Do("changeunit");
    panel.Sync();
    EXPECT_NE(panel.Text().find("45 Millisecond"), std::string::npos) << panel.Text();
}

TEST_F(SelectionPanelTest, GoesWithTheSelectionAndTheTrace) {
    Open();
    Select(0.005, 0.05);
    laCanvas_ClearCursors(canvas);
    panel.Sync();
    EXPECT_FALSE(panel.HasFigures());
    EXPECT_EQ(test.message(), "");
    laCanvas_UpdateFields(canvas, 0, "Said by another.");
    panel.Sync();
    EXPECT_EQ(test.message(), "Said by another.");
    Select(0.005, 0.05);
    EXPECT_EQ(test.message(), "Said by another.");
    // A command begins with an empty line.
    laCanvas_UpdateFields(canvas, 0, "");
    panel.Sync();
    EXPECT_NE(test.message().find("selected"), std::string::npos);
    laCanvas_UpdateFields(canvas, 0, "Said by another.");
    EXPECT_NE(panel.Text(), "");
    laCanvas_SetSelection(canvas, 0.01, 0.09);
    panel.Sync();
    Open();
    EXPECT_FALSE(panel.Step());
    Select(0.06, 0.06);
    EXPECT_FALSE(panel.HasFigures());
    Select(0.06, 5);
    EXPECT_NE(panel.Text().find("two@inner\t0.040\t100.0 %"), std::string::npos) << panel.Text();
}

TEST_F(SelectionPanelTest, FollowsADrag) {
    std::vector<TestEvent> events = {status_change(0, 0x400, mt_Ready), status_change(0, 0x800, mt_Ready)};
    for (mt_Time turn = 0; turn < 20000; ++turn) {
        events.push_back(switch_to(4 * turn, 0x400));
        events.push_back(switch_to(4 * turn + 3, 0x800));
    }
    ASSERT_TRUE(test.Open(events, "Korvantis"));
    int figures = 0;
    std::string told;
    for (int i = 0; i < 100; ++i) {
        laCanvas_SetSelection(canvas, 0.5, 60 + 0.1 * i);
        panel.Sync();
        panel.Step();
        panel.Step();
        if (panel.HasFigures() && panel.Text() != told) ++figures;
        told = panel.Text();
        if (figures > 0) {
            EXPECT_NE(told.find("Events\t~"), std::string::npos);
        }
    }
    EXPECT_GE(figures, 5);
    while (panel.Step()) {
    }
    EXPECT_NE(panel.Text().find("69.400 Seconds selected"), std::string::npos) << panel.Text();
    EXPECT_EQ(panel.Text().find('~'), std::string::npos);
}
