// The window, driven on the offscreen platform: what it shows must be what a picture file shows.
#include "chronoweave/qt/canvas_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QScrollBar>
#include <QTimer>
#include <QToolTip>
#include <QUrl>
#include <QWheelEvent>
#include <filesystem>
#include <fstream>

#include "chronoweave/qt/picture_view.h"
#include "chronoweave/qt/window_testing.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/legend_edit.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/session.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/arrangement_store.h"
#include "windlib/config/config_dirs.h"
#include "windlib/config/settings.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/picture_file.h"
#include "windlib/qt/platform.h"

namespace {

class Window : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override {
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", trace);
        window->resize(1000, 600);
        window->show();
        QApplication::processEvents();
    }
    void key(int code) {
        QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier);
        QApplication::sendEvent(&window->view(), &press);
    }
    void wheel(QPoint at, int turn, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event(at, at, QPoint(), QPoint(0, turn), Qt::NoButton, modifiers, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(&window->view(), &event);
    }
    _LaCanvasData& canvas() { return window->view().canvas(); }

    TestFolder folder;
    std::string trace = folder / "run.trr";
    std::unique_ptr<CanvasWindow> window = std::make_unique<CanvasWindow>("VOREL Chronoweave", false);
};

}  // namespace

TEST_F(Window, ShowsThePixelsOfThePictureFile) {
    ASSERT_TRUE(window->load(trace));
    EXPECT_EQ(window->windowTitle().toStdString(), trace + " - VOREL Chronoweave");
    canvas().marks.cursor[0] = -100;
    key(Qt::Key_0);
    canvas().axis.timeMode =
        Time_Second;  // the first view made the unit finer, and only a command takes it back
    const QSize size = window->view().size();
    window->view().layOutAndPaint();
    const laPicture& shown = window->view().picture();

    CanvasAlone other;
    testing_OpenAlone(other, folder / "run", trace, size, true);
    const laPicture& picture = other.picture;
    EXPECT_EQ(picture.graphLeft, shown.graphLeft);
    EXPECT_EQ(picture.graphHeight, shown.graphHeight);
    const auto draw = [&](Surface& surface) { laPicture_Draw(*other.canvas, surface, picture, false); };
    ASSERT_EQ(picture_Write(folder / "p.png", picture.width, picture.height, 1, draw).text(), "");
    const QImage file(QString::fromStdString(folder / "p.png"));
    // All but the line under the picture, whose texts the window shows beside its fields.
    EXPECT_EQ(file.convertToFormat(QImage::Format_RGB32).copy(QRect(QPoint(), size)), window->view().image());
}

TEST_F(Window, WithoutADataFileTheCursorStandsInTheMiddle) {
    window->showEmpty();
    // In the time base, whatever unit the axis chose; the middle of an odd width is rounded up.
    EXPECT_NEAR(laCanvas_TimeToPixel(canvas(), canvas().marks.cursor[0], Time_Second),
                canvas().graph->width / 2.0, 1.5);
    EXPECT_LT(canvas().marks.cursor[1], 0);
    EXPECT_NE(window->items().item("tf_sel_from").text, "");
    ASSERT_TRUE(window->load(trace));
    EXPECT_TRUE(canvas().source.storeHasEvents);
}

TEST_F(Window, ZoomsAtThePointerAndScrolls) {
    ASSERT_TRUE(window->load(trace));
    key(Qt::Key_0);
    EXPECT_NEAR(canvas().view.viewHigh, canvas().source.totalLength, 1e-9);
    const laPicture& picture = window->view().picture();
    const int x = picture.graphLeft + picture.graphWidth / 4;
    const double pixel = 1 / canvas().view.pixelsPerUnit;
    const double pointed = canvas().view.viewLow + (x - picture.graphLeft) * pixel;
    for (int i = 0; i < 20; ++i) wheel({x, 50}, 120, Qt::ControlModifier);
    EXPECT_LT(canvas().view.viewLength, canvas().source.totalLength / 50);
    EXPECT_NEAR(canvas().view.viewLow + (x - picture.graphLeft) / canvas().view.pixelsPerUnit, pointed,
                pixel);
    const double low = canvas().view.viewLow, length = canvas().view.viewLength;
    wheel({x, 50}, -120, Qt::ShiftModifier);
    EXPECT_GT(canvas().view.viewLow, low);
    EXPECT_NEAR(canvas().view.viewLength, length, length * 1e-9);
    key(Qt::Key_End);
    const double end = canvas().source.totalLength - 1 / canvas().view.pixelsPerUnit;
    EXPECT_GE(canvas().view.viewHigh, end);
    key(Qt::Key_Home);
    EXPECT_EQ(canvas().view.viewLow, 0);
    auto* bar = window->findChild<QScrollBar*>("HScroll");
    bar->setValue(bar->maximum());
    EXPECT_GE(canvas().view.viewHigh, end);
    key(Qt::Key_0);
    auto* rows = window->findChild<QScrollBar*>("VScroll");
    wheel({x, 50}, -120, Qt::NoModifier);
    EXPECT_EQ(rows->value(), 3 * canvas().looks.rowHeight);
    EXPECT_EQ(canvas().view.verticalOffset, rows->value());
}

TEST_F(Window, ADraggedScrollBarIsOneStepOfTheHistory) {
    ASSERT_TRUE(window->load(trace));
    auto* bar = window->findChild<QScrollBar*>("HScroll");
    const int before = canvas().past.historyNewest;
    EXPECT_EQ(before, 0) << "the first picture";
    bar->setSliderDown(true);
    for (int place = 100; place < 1000; place += 100) bar->setValue(place);
    EXPECT_EQ(canvas().past.historyNewest, before);
    bar->setSliderDown(false);
    EXPECT_EQ(canvas().past.historyNewest, before + 1);
    bar->setValue(50);
    EXPECT_EQ(canvas().past.historyNewest, before + 2) << "a click on the bar is a step of its own";
}

TEST_F(Window, WhatIsSavedOfALegendIsWhatTheNextTraceHas) {
    config_SetUserDirectory(folder / "user");
    ASSERT_TRUE(window->load(trace));
    laLegend_ToggleVisible(canvas(), 0);
    canvas().options.refreshInterval = 250;
    const bool shown = canvas().looks.legend.statuses[0].visible;
    window->host().answer = [](const std::string&) { return true; };
    ASSERT_TRUE(window->load(trace));
    EXPECT_EQ(canvas().looks.legend.statuses[0].visible, shown);
    EXPECT_EQ(canvas().looks.legend.path, folder / "user/chrono_weave/korvantis.tc");
    EXPECT_EQ(canvas().options.refreshInterval, 250);
    canvas().options.refreshInterval = 300;
    ASSERT_TRUE(window->load(trace));
    EXPECT_EQ(canvas().options.refreshInterval, 250) << "the file says so";
    config_SetUserDirectory("");
}

TEST_F(Window, ARefusedFileSaysWhyAndLeavesTheWindowUsable) {
    std::string said;
    gen_set_report_sink([&](int, const std::string& line) { said += line; });
    EXPECT_FALSE(window->load(folder / "none.TRR"));
    EXPECT_NE(said.find("Cannot open file."), std::string::npos) << said;
    EXPECT_NE(said.find("Can't open VOREL Chronoweave source file"), std::string::npos) << said;
    EXPECT_EQ(window->message(), "") << "nothing is being loaded any more";
    EXPECT_FALSE(window->load(""));
    EXPECT_EQ(window->message(), "Invalid file name.");
    // A clock that stands still can't be shown: the window is empty, not half of what it was.
    ASSERT_TRUE(window->load(folder / "./run.trr"));
    EXPECT_EQ(CanvasWindow::find(trace), window.get()) << "however its path is written";
    std::string bytes;
    ASSERT_TRUE(file_read_whole(trace, bytes));
    bytes.replace(16, 4, std::string(4, '\0'));
    std::ofstream(folder / "still.trr", std::ios::binary) << bytes;
    EXPECT_FALSE(window->load(folder / "still.trr"));
    EXPECT_EQ(window->windowTitle().toStdString().find("run.trr"), std::string::npos);
    EXPECT_FALSE(canvas().calls.upper.sourceGrows);
    EXPECT_FALSE(CanvasWindow::find(trace));
    gen_set_report_sink({});
    EXPECT_TRUE(window->load(trace));
    window->resize(700, 400);
    QApplication::processEvents();
    EXPECT_EQ(canvas().graph->width, window->view().picture().graphWidth);
}

// A core file that can't be read is told, and the window goes on with what it showed.
TEST_F(Window, ACoreFileThatCannotBeReadIsTold) {
    ASSERT_TRUE(window->load(trace));
    const std::string version("\x00\x09", 2), format("\x05\x05", 2), size("\x00\x01zzzz", 6);
    for (const std::string& bytes : {version, format, size, std::string()}) {
        std::string said;
        gen_set_report_sink([&](int, const std::string& line) { said += line; });
        std::ofstream(folder / "bad.core", std::ios::binary) << bytes;
        EXPECT_FALSE(window->load(folder / "bad.core"));
        gen_set_report_sink({});
        EXPECT_NE(said.find("ore"), std::string::npos) << said;
        EXPECT_TRUE(canvas().source.storeHasEvents);
    }
    key(Qt::Key_0);
    EXPECT_EQ(window->source(), trace);
}

TEST_F(Window, WhatTheUserArrangedComesBackAndAChangedSourceIsOpenedFresh) {
    SettingsManager settings(program_Switches(), folder / "config");
    ArrangementStore arrangements(folder / "config");
    const CanvasServices services{&settings, &arrangements};
    const auto open = [&] {
        auto* made = new CanvasWindow("VOREL Chronoweave", false, services);
        made->setAttribute(Qt::WA_DeleteOnClose, false);
        made->show();
        EXPECT_TRUE(made->load(trace));
        return std::unique_ptr<CanvasWindow>(made);
    };
    auto first = open();
    first->resize(900, 640);
    QApplication::processEvents();
    _LaCanvasData& left = first->view().canvas();
    first->view().draw([&] {
        laCanvas_ShowRange(left, 0.02, 0.05, {.paint = true});
        laCanvas_SetSelection(left, 0.03, 0.04);
    });
    first->view().command("AddBookmark");
    const double low = left.view.viewLow;
    first->close();
    first.reset();

    SettingsManager later(program_Switches(), folder / "config");
    EXPECT_TRUE(later.Load());
    EXPECT_EQ(later.Recent(program_TraceFiles), std::vector<std::string>{trace});
    auto second = open();
    EXPECT_EQ(second->width(), 900);
    EXPECT_NEAR(second->view().canvas().view.viewLow, low, 1e-6);
    EXPECT_EQ(second->view().canvas().marks.cursor[1], 0.04);
    EXPECT_EQ(second->view().canvas().marks.bookmarks.size(), 2u);
    second->close();
    second.reset();

    std::filesystem::resize_file(trace, 300000);
    auto third = open();
    EXPECT_EQ(third->view().canvas().view.viewLow, 0);
    EXPECT_TRUE(third->view().canvas().marks.bookmarks.empty());
    EXPECT_NE(third->message().find("changed"), std::string::npos) << third->message();
}

TEST_F(Window, SeveralWindowsAreFoundByTheirFiles) {
    ASSERT_TRUE(window->load(trace));
    CanvasWindow* another = window->openAnother();
    std::filesystem::copy_file(trace, folder / "two.trr");
    ASSERT_TRUE(another->load(folder / "two.trr"));
    EXPECT_EQ(CanvasWindow::count(), 2);
    EXPECT_EQ(CanvasWindow::find(trace), window.get());
    EXPECT_EQ(CanvasWindow::find(folder / "x/../two.trr"), nullptr);
    EXPECT_TRUE(CanvasWindow::showTime(folder / "two.trr", 0, "0.1"));
    EXPECT_EQ(another->view().canvas().marks.cursor[0], 0.1);
    EXPECT_NE(canvas().marks.cursor[0], 0.1);
    EXPECT_FALSE(CanvasWindow::showTime("", 0, "9"));
    EXPECT_FALSE(CanvasWindow::showTime("", 0, "soon"));
    // Two windows of one file go together; no name is no file.
    CanvasWindow* twin = window->openAnother();
    ASSERT_TRUE(twin->load(folder / "two.trr"));
    CanvasWindow* empty = window->openAnother();
    CanvasWindow::closeFile("");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(CanvasWindow::count(), 4);
    EXPECT_TRUE(CanvasWindow::showTime(folder / "two.trr", 0, "0.11"));
    EXPECT_EQ(another->view().canvas().marks.cursor[0], 0.11);
    EXPECT_EQ(twin->view().canvas().marks.cursor[0], 0.11);
    CanvasWindow::closeFile(folder / "two.trr");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(CanvasWindow::all(), (std::vector<CanvasWindow*>{window.get(), empty}));
    empty->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST_F(Window, FieldsTakeWhatIsTypedAndADragSelects) {
    ASSERT_TRUE(window->load(trace));
    key(Qt::Key_0);
    canvas().axis.timeMode = Time_Second;
    EXPECT_TRUE(window->items().type("tf_view_from", "0.05"));
    EXPECT_NEAR(canvas().view.viewLow, 0.05, 1e-3);
    EXPECT_TRUE(window->items().type("tf_view_to", "-1"));
    EXPECT_EQ(window->message(), "Invalid time.");
    window->view().layOutAndPaint();  // the names of the rows that came have their width
    const laPicture& picture = window->view().picture();
    const auto mouse = [&](QEvent::Type type, int x) {
        const QPointF at(picture.graphLeft + x, 100);
        QMouseEvent event(type, at, at, Qt::LeftButton, Qt::LeftButton, Qt::AltModifier);
        QApplication::sendEvent(&window->view(), &event);
    };
    mouse(QEvent::MouseButtonPress, 300);
    mouse(QEvent::MouseMove, 200);
    mouse(QEvent::MouseMove, 100);
    mouse(QEvent::MouseButtonRelease, 100);
    EXPECT_LT(canvas().marks.cursor[0], canvas().marks.cursor[1]);
    EXPECT_NEAR((canvas().marks.cursor[1] - canvas().marks.cursor[0]) * canvas().view.pixelsPerUnit, 200, 2);
    EXPECT_FALSE(window->items().item("tf_sel_len").text.empty());
    const QImage dragged = window->view().image().copy();
    window->view().layOutAndPaint();
    EXPECT_EQ(dragged, window->view().image());  // what the drag left is what a whole repaint draws
    EXPECT_NE(window->findChild<QWidget*>("tf_sel_len"), nullptr);
    EXPECT_FALSE(window->findChild<QWidget*>("Overview")->accessibleName().isEmpty());
}

TEST_F(Window, ATipThatCouldNotTellAllCompletesItselfWhenNothingElseIsToDo) {
    ASSERT_TRUE(window->load(trace));
    laCanvas_ShowRange(canvas(), 0.00456, 0.00517);
    uint32_t lane = 0;
    while (canvas().items.lanes[lane].segments.empty() ||
           canvas().items.lanes[lane].segments[0].t0 > canvas().items.cachedLow)
        ++lane;
    const laItemRef cut{laItemType::Line, lane, 0};
    canvas().hand.tipItems = canvas().items.itemsVersion;
    const std::string told = laTip_Text(canvas(), cut);
    canvas().hand.tipItem = cut;
    window->view().graph().showTip("what is known so far");
    ASSERT_TRUE(QToolTip::text().contains("what is known so far"));
    for (int i = 0; i < 100 && QToolTip::text().contains("so far"); ++i) QApplication::processEvents();
    EXPECT_TRUE(QToolTip::text().contains(QString::fromStdString(told).toHtmlEscaped()))
        << QToolTip::text().toStdString() << " instead of " << told;
    QToolTip::hideText();
}

TEST_F(Window, TheFrameOfTheMarkedEventWaitsForAFetch) {
    ASSERT_TRUE(window->load(trace));
    laCanvas_ShowRange(canvas(), 0.0096, 0.0126);
    window->view().layOutAndPaint();
    const QImage plain = window->view().grab().toImage();
    size_t seen = 0;
    while (canvas().items.bitmaps[static_cast<uint32_t>(seen)].time < 0.0106) ++seen;
    canvas().marks.markedEvent =
        laItem_StoreSequence(canvas().items, canvas().items.bitmaps[static_cast<uint32_t>(seen)]);
    EXPECT_NE(window->view().grab().toImage(), plain);
    const Gate::Token fetch = gate_Begin(GateWork::Fetch);
    EXPECT_EQ(window->view().grab().toImage(), plain) << "the items are not looked at";
}

TEST_F(Window, TheNamesFollowTheRowsOfAnotherView) {
    ASSERT_TRUE(window->load(trace));
    for (const auto& [from, to] : {std::pair{0.0096, 0.0126}, {0.0, 0.033}, {0.05, 0.06}}) {
        const double low = from, high = to;  // clang has no bindings in lambdas
        window->view().draw([&] { laCanvas_ShowRange(canvas(), low, high, {.paint = true}); });
        const QImage shown = window->view().image().copy();
        window->view().layOutAndPaint();
        EXPECT_EQ(window->view().image(), shown) << low;
    }
}

TEST_F(Window, TheRowUnderThePointerIsTintedAcrossNamesAndPicture) {
    ASSERT_TRUE(window->load(trace));
    PictureView& view = window->view();
    const int height = canvas().looks.rowHeight, row = 3;
    const auto move = [&](int y) {
        const QPointF at(20, y);
        QMouseEvent event(QEvent::MouseMove, at, view.mapToGlobal(at), Qt::NoButton, Qt::NoButton,
                          Qt::NoModifier);
        QApplication::sendEvent(&view, &event);
        return view.grab().toImage();
    };
    const QImage away = move(view.height() - 3), over = move(row * height + 5);
    ASSERT_EQ(away.size(), over.size());
    for (int y = 0; y < view.picture().dataHeight; ++y)
        for (const int x : {3, view.width() - 3})
            EXPECT_EQ(away.pixel(x, y) != over.pixel(x, y), y / height == row) << x << ' ' << y;
    EXPECT_EQ(move(view.height() - 3), away);
}

TEST_F(Window, ADialogOfACommandLeavesThePictureUpToDate) {
    ASSERT_TRUE(window->load(trace));
    QApplication::processEvents();
    const QImage before = window->view().image().copy();
    QImage meanwhile;
    // As a command that waits for its user: what is zoomed under its dialog is seen under its dialog.
    window->view().draw([&] {
        const double length = canvas().source.totalLength;
        laCanvas_ShowRange(canvas(), length / 4, length / 2, {.paint = true});
        EXPECT_EQ(window->view().image(), before) << "nothing is painted in the middle of work";
        QApplication::processEvents();
        meanwhile = window->view().image().copy();
    });
    EXPECT_NE(meanwhile, before);
    window->view().layOutAndPaint();
    EXPECT_EQ(window->view().image(), meanwhile);
}

TEST_F(Window, ThatIsClosedDoesNotGoUnderWork) {
    ASSERT_TRUE(window->load(trace));
    const QPointer<CanvasWindow> closed = window.release();
    closed->close();
    closed->view().graph().setBusy(true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_FALSE(closed.isNull());
    closed->view().graph().setBusy(false);
    gate_Program().RunHeld();
    EXPECT_TRUE(closed.isNull());
}

TEST_F(Window, ThatIsToldToCloseUnderItsDialogClosesBehindIt) {
    auto* const other = new CanvasWindow("VOREL Chronoweave", false);  // deletes itself when closed
    ASSERT_TRUE(other->load(trace));
    const QPointer<CanvasWindow> alive = other;
    {
        const Gate::Token dialog = gate_Begin(GateWork::ModalDialog);
        EXPECT_FALSE(other->close());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(alive);
    }
    gate_Program().RunHeld();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(alive);
}

TEST_F(Window, AGrowingFileIsReadOn) {
    std::string whole;
    ASSERT_TRUE(file_read_whole(trace, whole));
    {
        std::ofstream cut(trace, std::ios::binary | std::ios::trunc);
        cut << whole.substr(0, whole.size() / 3 + 5);  // in the middle of a record
    }
    ASSERT_TRUE(window->load(trace));
    key(Qt::Key_0);
    const uint32_t before = mt_GetEventCount(*canvas().source.store);
    const double length = canvas().source.totalLength;
    int busy = 0;
    const auto shows = std::exchange(window->view().graph().setBusy, [&busy](bool) { ++busy; });
    EXPECT_TRUE(laCanvas_Command(canvas(), "ReadOn"));
    window->view().graph().setBusy = shows;
    EXPECT_EQ(busy, 0) << "a moment's work looks like none";
    EXPECT_TRUE(window->message().starts_with("Nothing was added since it was last read; "))
        << window->message();
    {
        std::ofstream more(trace, std::ios::binary | std::ios::app);
        more << whole.substr(whole.size() / 3 + 5);
    }
    EXPECT_TRUE(laCanvas_Command(canvas(), "ReadOn"));
    const uint32_t after = mt_GetEventCount(*canvas().source.store);
    EXPECT_EQ(window->message(), std::to_string(after - before) + " more events.");
    EXPECT_GT(canvas().source.totalLength, length);
    const QImage grown = window->view().image().copy();
    window->view().layOutAndPaint();
    EXPECT_EQ(grown, window->view().image()) << "what was added is what a whole repaint draws";
    window->view().command("ShowAll");
    const std::string other = folder / "other.trr";
    std::ofstream(other, std::ios::binary) << whole;
    ASSERT_TRUE(window->load(other));
    EXPECT_EQ(mt_GetEventCount(*canvas().source.store), after) << "as many as read at once";
    ASSERT_TRUE(window->load(folder / "other.trs"));
    EXPECT_FALSE(canvas().calls.upper.sourceGrows) << "a store is what it is";
}

TEST_F(Window, ADarkSchemeReachesThePicture) {
    ASSERT_TRUE(window->load(trace));
    key(Qt::Key_0);
    const QPalette light = QApplication::palette();
    platform_SetDark(true);
    QApplication::processEvents();
    const QImage& image = window->view().image();
    EXPECT_EQ(image.pixelColor(image.width() - 2, 2), QColor(0x1E1E1E));
    const laPicture& picture = window->view().picture();
    EXPECT_EQ(image.pixelColor(picture.graphLeft + 5, picture.dataHeight),
              QColor(0xE0E0E0));  // the axis line
    platform_SetDark(false);
    QApplication::processEvents();
    EXPECT_EQ(QApplication::palette().color(QPalette::Base), light.color(QPalette::Base));
    EXPECT_EQ(image.pixelColor(image.width() - 2, 2), light.color(QPalette::Base));
}

TEST_F(Window, EnterAndEscapeGiveTheKeyboardBackToThePicture) {
    ASSERT_TRUE(window->load(trace));
    window->activateWindow();
    auto* field = window->findChild<QLineEdit*>("tf_view_len");
    const auto type = [&](const char* text, int code) {
        field->setFocus();
        field->selectAll();
        for (const char* at = text; *at; ++at)
            testing_Key(*field, Qt::Key_unknown, QString(QLatin1Char(*at)));
        testing_Key(*field, code);
    };
    type("20 us", Qt::Key_Return);
    EXPECT_NEAR(canvas().view.viewLength, 20e-6, 1e-6);
    EXPECT_TRUE(window->view().hasFocus());
    const QString shown = field->text();
    type("99", Qt::Key_Escape);
    EXPECT_EQ(field->text(), shown);
    EXPECT_TRUE(window->view().hasFocus());
    EXPECT_NEAR(canvas().view.viewLength, 20e-6, 1e-6);
    type("oops", Qt::Key_Return);
    EXPECT_EQ(window->message(), "Invalid time.");
    EXPECT_TRUE(field->hasFocus()) << "it is to be mended";
    auto* other = new QLineEdit(window.get());
    other->show();
    other->setFocus();
    testing_Key(*other, Qt::Key_Return);
    EXPECT_TRUE(other->hasFocus()) << "a field of something else in the window";
}

TEST_F(Window, AFieldShowsTheFirstDigitsOfALongTime) {
    ASSERT_TRUE(window->load(trace));
    key(Qt::Key_End);
    for (int i = 0; i < 40; ++i) wheel({500, 50}, 120, Qt::ControlModifier);
    for (const char* name : {"tf_view_from", "tf_view_to"})
        EXPECT_EQ(window->findChild<QLineEdit*>(QLatin1String(name))->cursorPosition(), 0) << name;
}

TEST_F(Window, WithoutATraceItSaysWhatToDo) {
    window->showEmpty();
    auto* card = window->findChild<QLabel*>("StartCard");
    ASSERT_NE(card, nullptr);
    EXPECT_TRUE(card->isVisible());
    EXPECT_TRUE(card->text().contains(QLatin1String("Ctrl+O")));
    canvas().calls.upper.recentFiles = [&] { return std::vector<std::string>{trace}; };
    window->command("Close");
    EXPECT_TRUE(card->text().contains(QLatin1String("run.trr")));
    Q_EMIT card->linkActivated(
        QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString("Open " + trace))));
    EXPECT_TRUE(canvas().source.storeHasEvents);
    EXPECT_FALSE(card->isVisible());
    window->command("Close");
    EXPECT_TRUE(card->isVisible());
}

TEST_F(Window, TheFreezeButtonIsThereForLiveSourcesOnly) {
    ASSERT_TRUE(window->load(trace));
    const auto button = [](CanvasWindow& of) {
        return of.findChild<QWidget*>("NoRefresh")->isVisibleTo(&of);
    };
    EXPECT_FALSE(button(*window));
    CanvasWindow live("VOREL Chronoweave", true);
    live.show();
    live.showEmpty();
    EXPECT_TRUE(button(live));
}

TEST_F(Window, ReadingOnSaysWhatItFound) {
    ASSERT_TRUE(window->load(trace));
    window->command("ReadOn");
    EXPECT_EQ(window->message(), "Nothing was added since it was last read.");
    window->command("Close");
    ASSERT_TRUE(window->load(folder / "run.trs"));
    window->command("ReadOn");
    EXPECT_EQ(window->message(), "Nothing can be added to this source: only a raw event file grows.");
}

TEST_F(Window, TheConsoleIsToldOfWhereTheMessageLineIsFree) {
    window->showEmpty();
    CanvasWindow::tellConsoleAll("first\nsecond\n");
    EXPECT_EQ(window->message(), "On the console: first");
    CanvasWindow::tellConsoleAll("third\n");
    EXPECT_EQ(window->message(), "On the console: first");
}

TEST_F(Window, RowsFollowTheViewWhenItRests) {
    ASSERT_TRUE(window->load(trace));
    key(Qt::Key_0);
    key(Qt::Key_O);
    const auto rows = [&] { return canvas().taskList->rows().size(); };
    const size_t whole = rows();
    for (int i = 0; i < 30; ++i) wheel({500, 50}, 120, Qt::ControlModifier);
    EXPECT_EQ(rows(), whole) << "while it moves";
    for (QTimer* timer : window->view().findChildren<QTimer*>("Settle"))
        QMetaObject::invokeMethod(timer, "timeout");
    EXPECT_LT(rows(), whole);
    EXPECT_GT(rows(), 0u);
}
