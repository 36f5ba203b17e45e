// A window that follows a file, and the target's panel on it.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QToolButton>
#include <filesystem>
#include <fstream>

#include "chronoweave/live/live_target.h"
#include "chronoweave/live/live_words.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/event_dock.h"
#include "chronoweave/qt/find_strip.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/qt/selection_corner.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/view.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/files.h"
#include "windlib/config/settings.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/platform.h"

namespace {

class LiveWindowTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override {
        ASSERT_TRUE(file_read_whole(CW_SOURCE_DIR "/samples/build-2cpu.trr", whole).ok());
        window->resize(1000, 600);
        window->show();
        QApplication::processEvents();
    }
    void write(size_t bytes) const { std::ofstream(trace, std::ios::binary) << whole.substr(0, bytes); }
    void append(size_t from, size_t end) const {
        std::ofstream(trace, std::ios::binary | std::ios::app) << whole.substr(from, end - from);
    }
    _LaCanvasData& canvas() { return window->view().canvas(); }
    void tick() {
        window->target()->reader().RefreshTick();
        QApplication::processEvents();
    }

    void readAll() {
        tick();
        for (int i = 0; i < 1000 && window->target()->reader().IsReading(); ++i)
            QApplication::processEvents();
    }
    // What is done between the window's events is done.
    static void rest(CanvasWindow& one) {
        QApplication::processEvents();
        while (one.findChild<FindStrip*>()->line().Step()) {
        }
        while (one.findChild<SelectionCorner*>()->panel().Step()) {
        }
        one.findChild<EventDock*>()->table().Sync();
    }

    TestFolder folder;
    std::string trace = folder / "run.trr", whole;
    SettingsManager settings{{}, folder / "config"};
    QtEventService events;
    std::unique_ptr<CanvasWindow> window = std::make_unique<CanvasWindow>(
        "VOREL Chronoweave", true, CanvasServices{.settings = &settings, .events = &events});
};

}  // namespace

TEST_F(LiveWindowTest, WaitsForTheFirstRecordsAndFollows) {
    write(5);
    EXPECT_FALSE(window->load(trace));
    EXPECT_NE(window->message().find("Waiting for events"), std::string::npos);
    tick();
    EXPECT_EQ(canvas().source.store, nullptr);
    write(whole.size() / 3 + 5);
    tick();
    ASSERT_NE(canvas().source.store, nullptr);
    const uint32_t before = mt_GetEventCount(*canvas().source.store);
    append(whole.size() / 3 + 5, whole.size());
    readAll();
    EXPECT_GT(mt_GetEventCount(*canvas().source.store), before);
    EXPECT_GE(canvas().view.viewHigh, canvas().source.totalLength) << "the end is in view";
    const QImage grown = window->view().image().copy();
    window->view().layOutAndPaint();
    EXPECT_EQ(grown, window->view().image()) << "what was added is what a whole repaint draws";
    // Frozen, it stays.
    EXPECT_TRUE(laCanvas_Command(canvas(), "NoRefresh"));
    append(whole.size() / 2, whole.size());
    tick();
    EXPECT_EQ(window->view().image(), grown);
    std::filesystem::remove(trace);
    EXPECT_TRUE(laCanvas_Command(canvas(), "NoRefresh"));
    tick();
    EXPECT_NE(window->message().find("is gone"), std::string::npos) << window->message();
    EXPECT_FALSE(canvas().calls.upper.sourceGrows);
}

// Followed at its end, the picture moves by copies.
TEST_F(LiveWindowTest, AViewThatMovesAlongIsThatOfAWholeRepaint) {
    write(whole.size() / 4);
    ASSERT_TRUE(window->load(trace));
    canvas().options.followEnd = true;
    const double end = canvas().source.totalLength;
    window->view().draw([&] { laCanvas_ShowRange(canvas(), end - 0.01, end, {.paint = true}); });
    QApplication::processEvents();
    for (int piece = 0; piece < 40; ++piece) {
        const double low = canvas().view.viewLow;
        append(std::filesystem::file_size(trace), std::filesystem::file_size(trace) + 3001);
        readAll();
        QApplication::processEvents();
        const QImage moved = window->view().image().copy();
        window->view().layOutAndPaint();
        ASSERT_EQ(moved, window->view().image()) << piece;
        EXPECT_GT(canvas().view.viewLow, low);
        EXPECT_NEAR(canvas().view.viewHigh, canvas().source.totalLength, 0.0001);
    }
}

// Names that come make the column wider, and none that go out of view make it narrower, until another trace
// is loaded.
TEST_F(LiveWindowTest, ThePictureDoesNotMoveToAndFro) {
    const auto names = [this] { return window->view().picture().nameWidth; };
    write(whole.size() / 8);
    ASSERT_TRUE(window->load(trace));
    QApplication::processEvents();
    const int first = names();
    int widest = first;
    for (int piece = 0; piece < 60; ++piece) {
        append(std::filesystem::file_size(trace), std::filesystem::file_size(trace) + 9001);
        readAll();
        ASSERT_GE(names(), widest) << piece;
        widest = names();
    }
    EXPECT_GT(widest, first);
    const std::string other = folder / "other.trr";
    std::ofstream(other, std::ios::binary) << whole.substr(0, whole.size() / 8);
    ASSERT_TRUE(window->load(other));
    QApplication::processEvents();
    EXPECT_EQ(names(), first);
}

// What stands beside the picture is that of a window that has the whole trace.
TEST_F(LiveWindowTest, FindingTheEventsTheSelectionAndDetailsGoAlong) {
    const std::string done = folder / "done.trr";
    std::ofstream(done, std::ios::binary) << whole;
    write(whole.size() / 4);
    ASSERT_TRUE(window->load(trace));
    CanvasWindow* const other = window->openAnother();
    ASSERT_TRUE(other->load(done));
    const auto prepare = [](CanvasWindow& one) {
        one.command("Find");
        one.findChild<FindStrip*>()->line().model().edit("find", "task:cc1");
        one.command("EventTable");
        laCanvas_ShowRange(one.view().canvas(), 0.0, 0.1, {.paint = true});
        laCanvas_SetSelection(one.view().canvas(), 0.02, 0.06);
        one.view().layOutAndPaint();
        rest(one);
    };
    for (CanvasWindow* one : {window.get(), other}) prepare(*one);
    canvas().calls.openDetail({laItemType::Bitmap, 0, canvas().items.bitmaps.size() - 1});
    DialogModel& detail = *canvas().calls.viewWindows.back();
    const std::string newest = detail.item("tf_time").text;
    detail.press("g_next");
    EXPECT_EQ(detail.item("tf_time").text, newest) << "nothing is behind it yet";
    for (const size_t share : {2u, 1u}) {
        append(std::filesystem::file_size(trace), whole.size() / share);
        readAll();
    }
    laCanvas_ShowRange(canvas(), 0.0, 0.1, {.paint = true});
    window->view().layOutAndPaint();
    const auto seen = [](CanvasWindow& one) {
        rest(one);
        EventTable& table = one.findChild<EventDock*>()->table();
        const MScrollList& rows = table.model().list("list");
        std::string text = one.findChild<FindStrip*>()->line().model().message() + '\n' +
                           one.findChild<SelectionCorner*>()->panel().Text() + '\n' +
                           std::to_string(rows.RowCount()) + ' ' + table.model().message() + '\n';
        for (int row = 0; row < rows.RowCount(); row += 97)
            for (int column = 0; column < rows.ColumnCount(); ++column) text += rows.Text(row, column) + '\t';
        return text;
    };
    EXPECT_NE(seen(*other).find(" found"), std::string::npos);
    EXPECT_TRUE(seen(*window) == seen(*other)) << seen(*window).substr(0, 200) << seen(*other).substr(0, 200);
    EXPECT_TRUE(canvas().marks.hits == other->view().canvas().marks.hits);
    EXPECT_FALSE(canvas().marks.hits.empty());
    detail.press("g_next");
    EXPECT_NE(detail.item("tf_time").text, newest) << "what came is walked to";
    delete other;
}

TEST_F(LiveWindowTest, ThePanelOpensOnceAndKeepsItsPlace) {
    ASSERT_TRUE(laCanvas_Command(canvas(), "Korvantis"));
    DialogModel& panel = *window->target()->panel().model();
    QWidget* shown = window->host().windowOf(panel);
    ASSERT_TRUE(shown && shown->isVisible());
    auto* target = shown->findChild<QLineEdit*>("ConnectToTarget");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->text(), "sim");
    EXPECT_EQ(target->placeholderText(), "<Target Name or IP Address> [-port <Port Number>]");
    QAction* arrow = target->findChild<QAction*>("ConnectToTarget_PullDown");
    ASSERT_TRUE(arrow);
    const auto* button = target->findChild<QToolButton*>();
    EXPECT_TRUE(button && button->defaultAction() == arrow && button->isVisible());
    int offered = 0;
    panel.onPullDown = [&](const std::string&) { ++offered; };
    arrow->trigger();
    testing_Key(*target, Qt::Key_Down);
    EXPECT_GE(offered, 1);
    EXPECT_TRUE(laCanvas_Command(canvas(), "Korvantis"));
    EXPECT_EQ(window->host().openWindows(), 1u);
    shown->setGeometry(60, 70, 700, 420);
    panel.dismiss();
    QApplication::processEvents();
    EXPECT_TRUE(settings.Position("TRVGUI KORVANTIS Control Panel"));
    ASSERT_TRUE(laCanvas_Command(canvas(), "Korvantis"));
    EXPECT_EQ(window->host().windowOf(*window->target()->panel().model())->geometry(),
              QRect(60, 70, 700, 420));
    window.reset();
    QApplication::processEvents();
}
