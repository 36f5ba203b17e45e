#include "windlib/lagraph/scroll_bar.h"

#include <gtest/gtest.h>

namespace {

TEST(ScrollBar, PositionStaysInsideTheRange) {
    ScrollBarModel bar;
    bar.setRange(1000, 300);
    bar.setPosition(5000);
    EXPECT_EQ(bar.position(), 700u);
    EXPECT_TRUE(bar.atEnd());
    bar.setRange(500, 300);
    EXPECT_EQ(bar.position(), 200u);
    bar.setRange(100, 300);
    EXPECT_EQ(bar.position(), 0u);
    EXPECT_TRUE(bar.atStart() && bar.atEnd());
}

TEST(ScrollBar, TellsOnlyOfMovesByTheUserThatChangeSomething) {
    ScrollBarModel bar;
    int told = 0;
    bar.onChange = [&] { ++told; };
    bar.setRange(1000, 100);
    bar.setPosition(10);
    bar.userMoved(10);
    EXPECT_EQ(told, 0);
    bar.userMoved(11);
    bar.userMoved(90000);
    bar.userMoved(900);
    EXPECT_EQ(told, 2);
}

TEST(ScrollBar, NativeValuesMapBackAndTheEndsMapToTheEnds) {
    struct Case {
        uint64_t range, visible;
    };
    for (const Case& test : {Case{1000, 100}, Case{ScrollBarModel::nativeLimit + 50, 60},
                             Case{ScrollBarModel::nativeLimit * 2, 1000}, Case{uint64_t{1} << 40, 1920},
                             Case{~uint64_t{0}, 1920}}) {
        ScrollBarModel bar;
        bar.setRange(test.range, test.visible);
        EXPECT_EQ(bar.fromNative(0), 0u) << test.range;
        EXPECT_EQ(bar.fromNative(bar.nativeMaximum()), bar.maximum()) << test.range;
        bar.setPosition(bar.maximum());
        EXPECT_EQ(bar.nativePosition(), bar.nativeMaximum()) << test.range;
        uint32_t last = 0;
        for (uint64_t part = 0; part <= 64; ++part) {
            bar.setPosition(bar.maximum() / 64 * part);
            EXPECT_GE(bar.nativePosition(), last) << test.range;
            last = bar.nativePosition();
            const uint64_t back = bar.fromNative(last);
            const uint64_t step = bar.maximum() / bar.nativeMaximum() + 1;
            EXPECT_LE(back > bar.position() ? back - bar.position() : bar.position() - back, step)
                << test.range;
        }
    }
}

TEST(ScrollBar, OnlyTrueEndsShowAsEnds) {
    ScrollBarModel bar;
    bar.setRange(uint64_t{1} << 60, 100);
    bar.setPosition(1);
    EXPECT_EQ(bar.nativePosition(), 1u);
    bar.setPosition(bar.maximum() - 1);
    EXPECT_EQ(bar.nativePosition(), ScrollBarModel::nativeScaled - 1);
}

}  // namespace
