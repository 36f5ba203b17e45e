#include "chronoweave/traxfunc/draw/axis.h"

#include <gtest/gtest.h>

#include <cmath>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/time_unit.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"

namespace {

void set_view(_LaCanvasData& canvas, double low, double length) {
    canvas.view.viewLow = low;
    canvas.view.viewHigh = low + length;
    canvas.view.viewLength = length;
    canvas.view.pixelsPerUnit = canvas.graph->width / length;
}

TEST(Time, ConvertsByStepsOfAThousand) {
    struct Case {
        int from;
        double value;
        int to;
        double result;
    };
    for (const Case& test : {Case{0, 1.5, 1, 1500.0}, Case{0, 1.5, 3, 1.5e9},
                             Case{3, 2500, 1, 2500 / 1000.0 / 1000.0}, Case{2, 7, 2, 7}, Case{4, 7, 0, 7},
                             Case{0, 7, 5, 7}, Case{3, 0.1, 0, 0.1 / 1000.0 / 1000.0 / 1000.0}})
        EXPECT_EQ(
            laTime_Convert(static_cast<TimeMode>(test.from), test.value, static_cast<TimeMode>(test.to)),
            test.result)
            << test.from << " to " << test.to;
}

TEST(Time, MarksWhatLiesOutsideTheView) {
    TestCanvas test(1000, 600);
    set_view(*test.canvas, 2.0, 4.0);
    struct Case {
        double value;
        int mode;
        int x;
    };
    for (const Case& one : {Case{2.0, 0, 0}, Case{6.0, 0, 1000}, Case{6.000001, 0, 1003}, Case{1.999, 0, -2},
                            Case{4.0, 0, 500}, Case{4000.0, 1, 500}, Case{4e9, 3, 500}})
        EXPECT_EQ(laCanvas_TimeToPixel(*test.canvas, one.value, static_cast<TimeMode>(one.mode)), one.x)
            << one.value;
    test.canvas->axis.timeMode = Time_Millisecond;
    EXPECT_DOUBLE_EQ(laCanvas_PixelToUnit(test.canvas->view, test.canvas->axis, 500), 4000.0);
    test.canvas->axis.timeMode = Time_Sequential;
    EXPECT_EQ(laCanvas_TimeToPixel(*test.canvas, 0, Time_Sequential), 0);
    EXPECT_EQ(laCanvas_TimeToPixel(*test.canvas, 8, Time_Sequential), 2000);
    EXPECT_EQ(laCanvas_TimeToPixel(*test.canvas, 1e12, Time_Sequential), 0x7fffffff);
}

TEST(Time, ColumnsAndTimesAgreeInBothDirections) {
    TestCanvas test(1920, 600);
    for (double length : {1e-6, 0.37, 12.0, 5000.0})
        for (double low : {0.0, 3.25, 777.0}) {
            set_view(*test.canvas, low, length);
            const laTimeScale scale(test.canvas->view, test.canvas->axis, test.canvas->graph->width);
            for (int x = 0; x < 1920; x += 37)
                EXPECT_EQ(scale.ToPixel(scale.ToTime(x)), x) << length << " " << low;
            const uint64_t pixel = laCanvas_AbsolutePixel(test.canvas->view, low + length / 2);
            EXPECT_EQ(
                laCanvas_AbsolutePixel(test.canvas->view, laCanvas_AbsoluteTime(test.canvas->view, pixel)),
                pixel);
        }
    test.canvas->view.pixelsPerUnit = 1e18;
    EXPECT_EQ(laCanvas_AbsolutePixel(test.canvas->view, 1e9), UINT64_MAX);
    EXPECT_EQ(laCanvas_AbsolutePixel(test.canvas->view, -3), 0u);
}

TEST(Time, TrimsZerosBehindThePointOnly) {
    for (const auto& [text, trimmed] : {std::pair{"1.500", "1.5"},
                                        {"2.000", "2"},
                                        {"100", "100"},
                                        {"  7.0 ", "7"},
                                        {"0.0", "0"},
                                        {"", ""},
                                        {"   ", ""}})
        EXPECT_EQ(laTime_TrimZeros(text), trimmed);
}

TEST(Axis, CountsTheDecimalsOfAStep) {
    for (const auto& [step, digits] :
         {std::pair{1.0, 0}, {0.5, 1}, {0.001, 3}, {0.25, 2}, {200.0, 0}, {1e-9, 9}})
        EXPECT_EQ(laAxis_DigitsOfStep(step), digits) << step;
}

TEST(Axis, RefinesAStepUntilTheLabelsFit) {
    struct Case {
        double step, length;
        int width, label;
        double result;
    };
    for (const Case& test :
         {Case{0.1, 1.0, 1000, 5, 0.01}, Case{0.1, 1.0, 1000, 15, 0.02}, Case{0.1, 1.0, 1000, 50, 0.05},
          Case{0.1, 1.0, 1000, 100, 0.1}, Case{0.1, 1.0, 1000, 300, 0.5}, Case{1, 1.5, 100, 90, 1}})
        EXPECT_DOUBLE_EQ(laAxis_RefineStep(test.step, test.length, test.width, test.label), test.result)
            << test.label;
}

TEST(Axis, PullsOutTheCommonDigits) {
    const laAxisPrefix near = laAxis_CommonPrefix(12.301, 12.399, 3, true);
    EXPECT_EQ(near.format, 1000 + 2);
    EXPECT_NEAR(near.base, 12.3, 1e-12);
    const laAxisPrefix far = laAxis_CommonPrefix(0, 950, 0, true);
    EXPECT_EQ(far.format, 3000 + 3);
    EXPECT_EQ(far.base, 0);
    const laAxisPrefix whole = laAxis_CommonPrefix(12.5, 130.5, 1, false);
    EXPECT_EQ(whole.format, 3000 + 1 + 3);
    EXPECT_EQ(whole.base, 12.5);
}

TEST(Axis, LabelsAndPatternReadAsOneNumber) {
    struct Case {
        double low, length;
        int width;
        const char* pattern;
        double tick;
        const char* label;
    };
    for (const Case& one : {Case{12.3, 0.1, 1000, "12.3XX", 12.35, "50"}, Case{0, 1, 1000, "0.XX", 0.5, "50"},
                            Case{0, 1000, 1000, "XXX", 250, "250"}, Case{0, 10, 1000, "X.X", 2.5, "2.5"}}) {
        TestCanvas test(one.width, 600);
        set_view(*test.canvas, one.low, one.length);
        laAxis_ChooseStep(test.canvas->axis, test.canvas->view, test.graph);
        EXPECT_EQ(laAxis_PatternText(test.canvas->axis), one.pattern) << one.low;
        EXPECT_EQ(laAxis_FormatTick(test.canvas->axis, one.tick - test.canvas->axis.tickBase), one.label)
            << one.low;
    }
}

// Over many widths and lengths: the decimals show the step whole, its labels have room, neighbours differ.
TEST(Axis, EveryChosenStepCanBeRead) {
    for (int width : {60, 200, 777, 1920, 5000})
        for (double length = 1.3e-9; length < 1e7; length *= 3.7)
            for (double low : {0.0, 1.0, 12345.678}) {
                if (length < low * 1e-9) continue;
                TestCanvas test(width, 300);
                _LaCanvasData& canvas = *test.canvas;
                set_view(canvas, low, length);
                while (canvas.axis.timeMode < Time_Nanosecond &&
                       canvas.view.viewLength * std::pow(1000, static_cast<int>(canvas.axis.timeMode)) < 1)
                    canvas.axis.timeMode = laTime_NextUnit(canvas.axis.timeMode);
                const double step = laAxis_ChooseStep(canvas.axis, canvas.view, *canvas.graph);
                if (canvas.axis.tickDigits < 0) {
                    EXPECT_LT(width, 200);
                    continue;
                }
                const double unit = laTime_Convert(Time_Second, length, canvas.axis.timeMode);
                const double scaled = step * std::pow(10, canvas.axis.tickDigits);
                EXPECT_NEAR(scaled, std::round(scaled), 1e-6) << step << " needs more decimals";
                EXPECT_LE(unit / step, width / 7.0) << step;
                EXPECT_GE(unit / step, 0.4) << width << " " << length;
                const double start = laTime_Convert(Time_Second, low, canvas.axis.timeMode);
                const double tick = std::ceil(start / step) * step;
                EXPECT_NE(laAxis_FormatTick(canvas.axis, tick - canvas.axis.tickBase),
                          laAxis_FormatTick(canvas.axis, tick + step - canvas.axis.tickBase))
                    << step << " at " << low;
            }
}

TEST(Axis, TooNarrowForALabelShowsNoTicks) {
    TestCanvas test(20, 300);
    set_view(*test.canvas, 0, 1);
    EXPECT_EQ(laAxis_ChooseStep(test.canvas->axis, test.canvas->view, test.graph), 1.0);
    EXPECT_EQ(test.canvas->axis.tickDigits, -1);
    laAxis_Draw(*test.canvas, 0, 20);
    EXPECT_TRUE(test.surface.texts().empty());
    EXPECT_EQ(laAxis_PatternText(test.canvas->axis), "");
}

TEST(Axis, RefinesTheUnitByItselfUnlessTheUserSetIt) {
    TestCanvas test(1000, 300);
    set_view(*test.canvas, 0, 1e-5);
    laAxis_Draw(*test.canvas, 0, 1000);
    EXPECT_EQ(test.canvas->axis.timeMode, Time_Microsecond);
    EXPECT_EQ(test.canvas->fields.tickUnit, "Microsecond");
    laCanvas_NextTimeMode(*test.canvas);
    EXPECT_EQ(test.canvas->axis.timeMode, Time_Nanosecond);
    laCanvas_NextTimeMode(*test.canvas);
    EXPECT_EQ(test.canvas->axis.timeMode, Time_Second);
    test.canvas->axis.timeMode = Time_Tick;
    laCanvas_NextTimeMode(*test.canvas);
    EXPECT_EQ(test.message(), "Cannot change tick into other units.");
    laCanvas_SetTimeMode(*test.canvas, Time_Sequential);
    EXPECT_EQ(test.message(), "Can't change unit into or from SEQUENTIAL mode.");
    EXPECT_EQ(test.canvas->axis.timeMode, Time_Tick);
    EXPECT_EQ(test.beeps, 2);
}

TEST(Axis, BandLiesBetweenTheCursors) {
    TestCanvas test(1000, 300);
    set_view(*test.canvas, 1, 1);
    laAxisBand band = laAxis_DrawBand(test.canvas->scene(), 0, 1000);
    EXPECT_EQ(band.left, -1);
    EXPECT_EQ(band.right, -1);
    test.canvas->marks.cursor[0] = 1.5;
    test.canvas->marks.cursor[1] = 0.5;
    test.surface.forget();
    band = laAxis_DrawBand(test.canvas->scene(), 0, 1000);
    EXPECT_EQ(band.left, -1);
    EXPECT_EQ(band.right, 500);
    const auto fills = test.surface.of(SurfaceOp::Fill);
    ASSERT_EQ(fills.size(), 1u);
    EXPECT_EQ(fills[0].x0, 0);
    EXPECT_EQ(fills[0].x1, 501);
}

TEST(Axis, TotalLengthIsTrimmedInEachUnit) {
    TestCanvas test;
    test.canvas->source.totalLength = 1.5;
    EXPECT_EQ(laCanvas_TotalLengthText(*test.canvas), "1.5");
    EXPECT_EQ(laCanvas_TotalLengthTitle(*test.canvas), "Total Time Length(in Seconds)");
    test.canvas->axis.timeMode = Time_Nanosecond;
    EXPECT_EQ(laCanvas_TotalLengthText(*test.canvas), "1500000000");
    test.canvas->axis.timeMode = Time_Tick;
    EXPECT_EQ(laCanvas_TotalLengthTitle(*test.canvas), "Total Tick Length");
}

}  // namespace
