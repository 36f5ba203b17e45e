#include "chronoweave/traxfunc/input/fields.h"

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/goto.h"
#include "chronoweave/traxfunc/input/time_unit.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr const char* badRange = "Invalid view time range or view time range is too small.";

// A trace of 100 seconds, seen from 20 to 30.
class Fields : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        ASSERT_TRUE(
            test.Open({name_event(0, 0x400, "A"), {99999, mt_TaskChange, 0, words({0x400, 0})}}, "ThreadX"));
        Restart();
    }
    void TearDown() override { gen_set_console_sink({}); }
    void Restart() {
        canvas.fields.message.clear();
        laCanvas_ShowRange(canvas, 20, 30, {.paint = true});
        canvas.marks.cursor[0] = 22;
        canvas.marks.cursor[1] = 25;
        laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
        test.beeps = 0;
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(Fields, TimesOfATraceHaveNoMoreDigitsThanATick) {
    struct Case {
        double ticksPerSecond;
        TimeMode mode;
        double time;
        const char *exact, *shown;
    };
    const double late = 1700001.336, third = 1.0 / 3;
    canvas.axis.tickDigits = 9;
    for (const Case& one : {
             // What a double makes of it is not the trace's: .3359999999 and the like.
             Case{1e9, Time_Second, late, "1700001.336000000", "1700001.336"},
             Case{1e9, Time_Millisecond, 0.0042516416711, "4.251642", "4.251641671100"},
             Case{1e9, Time_Millisecond, 0.004251642, "4.251642", "4.251642"},
             Case{1e9, Time_Nanosecond, late, "1700001336000000", "1700001336000000"},
             Case{1e3, Time_Second, 0.25, "0.250", "0.25"},
             Case{1e3, Time_Millisecond, 0.25, "250", "250"},
             Case{1e3, Time_Second, 0.2501, "0.250", "0.250100000000"},
             Case{3, Time_Second, third, "0.3333333333", "0.333333333333"},
             Case{1, Time_Tick, 17, "17", "17"},
         }) {
        canvas.source.clock.ticksPerSecond = one.ticksPerSecond;
        canvas.axis.timeMode = one.mode;
        EXPECT_EQ(laCanvas_ExactTime(canvas, one.time), one.exact);
        // Between ticks all digits that the axis needs are told.
        const std::string text = laCanvas_TimeText(canvas, one.time);
        EXPECT_EQ(laTime_TrimZeros(one.shown), text);
    }
    canvas.source.clock.ticksPerSecond = 1000;
    canvas.axis.timeMode = Time_Second;
    canvas.marks.cursor[0] = 22.001;
    canvas.marks.cursor[1] = 22.0031;
    laCanvas_UpdateFields(canvas, Fields_Selection);
    EXPECT_EQ(canvas.fields.selFrom, "22.001");
    EXPECT_EQ(canvas.fields.selTo, "22.003100000000");
}

TEST_F(Fields, EveryRowOfTheViewFields) {
    struct Case {
        const char *field, *text;
        double low, high;
        const char* refusal;  // empty when taken
    };
    for (const Case& one : {
             Case{"tf_view_from", "25", 25, 30, ""},
             Case{"tf_view_from", "40", 40, 50, ""},
             Case{"tf_view_from", "30", 30, 40, ""},
             Case{"tf_view_from", "95", 20, 30, badRange},
             Case{"tf_view_to", "28.5", 20, 28.5, ""},
             Case{"tf_view_to", "15", 5, 15, ""},
             Case{"tf_view_to", "8", 0, 8, ""},
             Case{"tf_view_to", "0.5", 20, 30, badRange},
             Case{"tf_view_to", "1", 20, 30, badRange},
             Case{"tf_view_to", "200", 20, 200, ""},
             Case{"tf_view_len", "4", 20, 24, ""},
             Case{"tf_view_len", "0", 20, 30, "View time range is too small."},
             Case{"tf_view_len", "x", 20, 30, "Invalid time."},
             Case{"tf_view_from", "-1", 20, 30, "Invalid time."},
             Case{"tf_view_from", "", 20, 30, "Invalid time."},
             Case{"tf_view_from", "0x10", 20, 30, "Invalid time."},
             Case{"tf_view_to", "1e400", 20, 30, "Invalid time."},
         }) {
        Restart();
        const std::string before = canvas.fields.viewFrom;
        const int newest = canvas.past.historyNewest;
        int told = 0;
        canvas.calls.fieldsChanged = [&] { ++told; };
        const bool refused = *one.refusal != '\0';
        EXPECT_EQ(laCanvas_CommitField(canvas, one.field, one.text), !refused) << one.field << one.text;
        canvas.calls.fieldsChanged = nullptr;
        EXPECT_NEAR(canvas.view.viewLow, one.low, 0.1) << one.field << " " << one.text;
        EXPECT_NEAR(canvas.view.viewHigh, one.high, 0.1) << one.field << " " << one.text;
        EXPECT_EQ(test.message(), one.refusal);
        EXPECT_EQ(test.beeps, refused ? 1 : 0);
        EXPECT_GT(told, 0) << "the window restores its texts";
        EXPECT_TRUE(!refused || canvas.fields.viewFrom == before);
        EXPECT_EQ(canvas.past.historyNewest != newest, !refused) << one.field << " " << one.text;
    }
    EXPECT_TRUE(laCanvas_CommitField(canvas, "tf_view_to", canvas.fields.viewTo));
    EXPECT_FALSE(laCanvas_CommitField(canvas, "tf_nothing", "1"));
}

TEST_F(Fields, EveryRowOfTheSelectionFieldsInTheUnitShown) {
    struct Case {
        const char *field, *text;
        double first, second;
    };
    canvas.axis.timeMode = Time_Millisecond;
    for (const Case& one : {Case{"tf_sel_from", "24000", 24, 25}, Case{"tf_sel_from", "27000", 27, 30},
                            Case{"tf_sel_to", "29500", 22, 29.5}, Case{"tf_sel_to", "21000", 18, 21},
                            Case{"tf_sel_to", "1000", 0, 1}, Case{"tf_sel_len", "500", 22, 22.5}}) {
        Restart();
        EXPECT_TRUE(laCanvas_CommitField(canvas, one.field, one.text));
        EXPECT_NEAR(canvas.marks.cursor[0], one.first, 1e-9) << one.field << " " << one.text;
        EXPECT_NEAR(canvas.marks.cursor[1], one.second, 1e-9) << one.field << " " << one.text;
        EXPECT_EQ(std::stod(canvas.fields.selFrom), one.first * 1000);
    }
    canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100;
    EXPECT_FALSE(laCanvas_CommitField(canvas, "tf_sel_len", "1"));
    EXPECT_TRUE(laCanvas_CommitField(canvas, "tf_sel_from", "3000"));
    EXPECT_EQ(canvas.marks.cursor[0], 3);
    EXPECT_EQ(canvas.marks.cursor[1], -100);
}

TEST_F(Fields, NumbersMayHaveTheirOwnUnitAndLengthsCountFromTheStart) {
    struct Case {
        const char *field, *text;
        double low, high;  // of what the field is about
    };
    for (const Case& one : {Case{"tf_view_from", "25000 ms", 25, 30}, Case{"tf_view_from", "+1s", 21, 30},
                            Case{"tf_view_to", "28.5s", 20, 28.5}, Case{"tf_view_to", " +1500 ms", 20, 21.5},
                            Case{"tf_view_len", "4000ms", 20, 24}, Case{"tf_view_len", "+2 s", 20, 22},
                            Case{"tf_view_len", "3000 ticks", 20, 23}, Case{"tf_sel_from", "23000ms", 23, 25},
                            Case{"tf_sel_to", "+300 ms", 22, 22.3}, Case{"tf_sel_to", "+2", 22, 24},
                            Case{"tf_sel_len", "0.5 s", 22, 22.5}}) {
        Restart();
        EXPECT_TRUE(laCanvas_CommitField(canvas, one.field, one.text)) << one.field << " " << one.text;
        const bool view = std::string_view(one.field).starts_with("tf_view");
        EXPECT_NEAR(view ? canvas.view.viewLow : canvas.marks.cursor[0], one.low, 0.01) << one.text;
        EXPECT_NEAR(view ? canvas.view.viewHigh : canvas.marks.cursor[1], one.high, 0.01) << one.text;
    }
    for (const char* text : {"2 h", "-2 ms", "+-2", "+", "1 2", "ms"}) {
        Restart();
        EXPECT_FALSE(laCanvas_CommitField(canvas, "tf_view_from", text)) << text;
        EXPECT_EQ(test.message(), "Invalid time.");
    }
}

TEST_F(Fields, AbsurdLengthsEndWithTheTrace) {
    const double total = canvas.source.totalLength;
    for (const auto& [field, text] :
         {std::pair{"tf_view_to", "1e9"}, {"tf_view_len", "1e9"}, {"tf_view_len", "5e7 s"}}) {
        Restart();
        EXPECT_TRUE(laCanvas_CommitField(canvas, field, text));
        EXPECT_NEAR(canvas.view.viewHigh, total, 0.1) << field;
    }
    for (const char* field : {"tf_sel_to", "tf_sel_len"}) {
        Restart();
        EXPECT_TRUE(laCanvas_CommitField(canvas, field, "1e9"));
        EXPECT_EQ(canvas.marks.cursor[1], total) << field;
    }
    Restart();
    EXPECT_TRUE(laCanvas_GotoText(canvas, "10 + 1e9"));
    EXPECT_NEAR(canvas.view.viewHigh, total, 0.1);
}

TEST_F(Fields, ARefusalGoesWhenItIsNoLongerTrue) {
    EXPECT_FALSE(laCanvas_CommitField(canvas, "tf_view_from", "x"));
    EXPECT_EQ(test.message(), "Invalid time.");
    EXPECT_TRUE(laCanvas_CommitField(canvas, "tf_sel_from", "23"));
    EXPECT_EQ(test.message(), "") << "what was typed next was taken";
    laCanvas_CommitField(canvas, "tf_view_from", "x");
    laCanvas_ShowRange(canvas, 40, 50);
    EXPECT_EQ(test.message(), "") << "the view is another";
    laCanvas_UpdateFields(canvas, 0, "3 records dropped");
    laCanvas_ShowRange(canvas, 20, 30);
    EXPECT_EQ(test.message(), "3 records dropped") << "this stays true";
}

TEST_F(Fields, TheUnitStandsBesideThem) {
    canvas.source.clock.ticksPerSecond = 1e9;
    for (const auto& [mode, mark] : {std::pair{Time_Second, "s"},
                                     {Time_Millisecond, "ms"},
                                     {Time_Microsecond, "us"},
                                     {Time_Nanosecond, "ns"},
                                     {Time_Tick, "ticks"}}) {
        canvas.axis.timeMode = mode;
        laCanvas_UpdateTotal(canvas);
        EXPECT_EQ(canvas.fields.unit, mark);
        EXPECT_TRUE(laCanvas_TimeWithUnit(canvas, 0.5).ends_with(std::string(" ") + mark));
    }
}

TEST_F(Fields, TheUnitIsChosenInADialog) {
    auto dialog = laTimeUnit_Open(canvas);
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->autoAdjust);
    dialog->unit = Time_Microsecond;
    EXPECT_EQ(laTimeUnit_Result(*dialog), 12);
    dialog->autoAdjust = false;
    EXPECT_TRUE(laTimeUnit_Apply(canvas, laTimeUnit_Result(*dialog)));
    EXPECT_EQ(canvas.axis.timeMode, Time_Microsecond);
    EXPECT_FALSE(canvas.axis.autoAdjustUnit);
    for (int result : {-1, 4, 9, 14, 100}) EXPECT_FALSE(laTimeUnit_Apply(canvas, result)) << result;
    for (const auto& [mode, message] :
         {std::pair{Time_Tick, "Cannot change tick into other units."},
          std::pair{Time_Sequential, "You can't change Sequential into other unit."}}) {
        canvas.axis.timeMode = mode;
        EXPECT_FALSE(laTimeUnit_Open(canvas));
        EXPECT_EQ(test.message(), message);
        EXPECT_FALSE(laTimeUnit_Apply(canvas, 11));
        EXPECT_EQ(canvas.axis.timeMode, mode);
    }
}

TEST_F(Fields, GoToTakesTimesRangesAndLengthsInAnyUnit) {
    struct Case {
        const char* text;
        double low, high;  // high 0 for none; low below 0 for a refusal
    };
    canvas.source.clock.ticksPerSecond = 1000;
    for (const Case& one : {Case{"1.5", 1.5, 0},
                            Case{" 20ms ", 0.02, 0},
                            Case{"1 2", 1, 2},
                            Case{"20ms,35 ms", 0.02, 0.035},
                            Case{"1s + 250us", 1, 1.00025},
                            Case{"1+2", 1, 3},
                            Case{"0.2 .. 1200 ticks", 0.2, 1.2},
                            Case{"1..2", 1, 2},
                            Case{"3 to 4", 3, 4},
                            Case{"3s to 4s", 3, 4},
                            Case{"5-6 S", 5, 6},
                            Case{"1e-3", 0.001, 0},
                            Case{"7 \xC2\xB5s", 7e-6, 0},
                            Case{"1e+2", 100, 0},
                            Case{"", -1, 0},
                            Case{"x", -1, 0},
                            Case{"-1", -1, 0},
                            Case{"1 h", -1, 0},
                            Case{"2 1", -1, 0},
                            Case{"2 + 0", -1, 0},
                            Case{"1 2 3", -1, 0},
                            Case{"1 to", -1, 0},
                            Case{"1e999", -1, 0},
                            Case{"1 +", -1, 0},
                            Case{"..", -1, 0},
                            Case{".", -1, 0},
                            Case{"1s2", 1, 2}}) {
        laGotoTarget target;
        const Result read = laGoto_Parse(canvas, one.text, target);
        EXPECT_EQ(read.ok(), one.low >= 0) << one.text << ": " << read.text();
        EXPECT_EQ(read.text().empty(), read.ok()) << one.text;
        if (!read) continue;
        EXPECT_NEAR(target.low, one.low, 1e-12) << one.text;
        EXPECT_EQ(target.high.has_value(), one.high > 0) << one.text;
        EXPECT_NEAR(target.high.value_or(0), one.high, 1e-12) << one.text;
    }
    laGotoTarget target;
    canvas.axis.timeMode = Time_Tick;
    EXPECT_FALSE(laGoto_Parse(canvas, "5 ms", target));
    canvas.axis.timeMode = Time_Second;
    EXPECT_TRUE(laCanvas_GotoText(canvas, "50"));
    EXPECT_NEAR(canvas.view.viewLow, 45, 0.1);
    EXPECT_TRUE(laCanvas_GotoText(canvas, "10 + 2"));
    EXPECT_NEAR(canvas.view.viewHigh, 12, 0.1);
    EXPECT_FALSE(laCanvas_GotoText(canvas, "101"));
    EXPECT_EQ(test.message(), "The trace ends at 100 Seconds.");
    EXPECT_NEAR(canvas.view.viewHigh, 12, 0.1);
}

}  // namespace
