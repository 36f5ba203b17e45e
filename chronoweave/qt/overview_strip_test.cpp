// The strip over the picture: a long trace is counted in slices.
#include "chronoweave/qt/overview_strip.h"

#include <gtest/gtest.h>

#include <QApplication>

#include "chronoweave/qt/picture_view.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/session/session.h"
#include "libtrv/test_store.h"
#include "libtrv/trace_store.h"
#include "windlib/qt/application_testing.h"

namespace {

// An event a tick.
void write_store(const std::string& base, uint32_t events) {
    const auto writer = StoreWriter::OpenForWrite(base, 1000, "KORVANTIS", true, TaskTracker);
    ASSERT_TRUE(writer);
    writer->SetGrouping(1 << 20);
    for (uint32_t i = 0; i < events; ++i)
        ASSERT_TRUE(writer->AppendEvent(i, mt_UserEvent, 0, words({0x400})));
}

}  // namespace

TEST(OverviewStripTest, ALongTraceIsCountedToItsEndWhenNothingElseIsToDo) {
    testing_StartApplication();
    const TestFolder folder;
    write_store(folder / "run", 250'000);
    Legend legend;
    ASSERT_TRUE(configure_Read(legend, "KORVANTIS", configure_ConsoleCallbacks(), 0));
    PictureView view;
    ASSERT_TRUE(laCanvas_SetUpFromStore(view.canvas(), mt_OpenForRead(folder / "run"), legend, "run.trs"));
    OverviewStrip strip(view);
    strip.resize(400, 40);
    const auto colour = [&](int x) { return strip.grab().toImage().pixel(x, strip.height() - 4); };
    strip.rebuild();
    const QRgb busy = colour(40), quiet = colour(360);
    EXPECT_NE(busy, quiet) << "the end is not counted yet";
    for (int i = 0; i < 100 && colour(360) == quiet; ++i) QApplication::processEvents();
    for (const int x : {40, 200, 360, 390}) EXPECT_EQ(colour(x), busy) << x;
}

TEST(OverviewStripTest, ItsEndsStandWhereThoseOfTheAxisDo) {
    testing_StartApplication();
    const TestFolder folder;
    write_store(folder / "run", 10'000);
    Legend legend;
    ASSERT_TRUE(configure_Read(legend, "KORVANTIS", configure_ConsoleCallbacks(), 0));
    QWidget window;
    PictureView view(&window);
    ASSERT_TRUE(laCanvas_SetUpFromStore(view.canvas(), mt_OpenForRead(folder / "run"), legend, "run.trs"));
    OverviewStrip strip(view, &window);
    window.resize(900, 400);
    view.setGeometry(20, 0, 860, 340);
    strip.setGeometry(0, 350, 900, 40);
    window.show();
    view.layOutAndPaint();
    strip.rebuild();
    const int left = 20 + view.picture().graphLeft, end = left + view.picture().graphWidth;
    const QImage image = strip.grab().toImage();
    const QRgb beside = image.pixel(left - 2, 36), over = image.pixel((left + end) / 2, 36);
    EXPECT_NE(over, beside);
    EXPECT_EQ(image.pixel(end + 2, 36), beside);
    // A press at an end shows that end of the trace.
    testing_Click(strip, QPoint(end - 1, 20));
    EXPECT_NEAR(view.canvas().view.viewHigh, view.canvas().source.totalLength, 0.01);
}
