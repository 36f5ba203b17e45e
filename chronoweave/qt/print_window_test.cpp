// Printing from the window: its road through the dialog, and that the window is as it was.
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPushButton>
#include <QTimer>
#include <filesystem>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/qt/window_testing.h"
#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/print/print.h"
#include "chronoweave/traxfunc/session/session.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/files.h"
#include "windlib/lagraph/recording_page.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/picture_file.h"
#include "windlib/qt/print_host.h"

namespace {

class PrintWindow : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
    }
    void SetUp() override {
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", trace);
        window->resize(1000, 600);
        window->show();
        QApplication::processEvents();
        ASSERT_TRUE(window->load(trace));
        QApplication::processEvents();
    }
    _LaCanvasData& canvas() { return window->view().canvas(); }
    QtPrintHost& printer() { return static_cast<QtPrintHost&>(*window->host().printHost()); }
    // Presses a button of the dialog that comes up next.
    void pressNext(const char* button) {
        QTimer::singleShot(0, window.get(), [button] {
            QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            auto* found = dialog->findChild<QPushButton*>(QLatin1String(button));
            EXPECT_NE(found, nullptr) << button;
            if (found)
                found->click();
            else
                dialog->close();
        });
    }

    TestFolder folder;
    std::string trace = folder / "run.trr";
    std::unique_ptr<CanvasWindow> window = std::make_unique<CanvasWindow>("VOREL Chronoweave", false);
};

}  // namespace

TEST_F(PrintWindow, CtrlPLeadsThroughTheDialogToThePreview) {
    const QImage before = window->view().image();
    int pages = -1;
    printer().lookAtPreview = [&](QPrintPreviewDialog& dialog) {
        auto* view = dialog.findChild<QPrintPreviewWidget*>();
        ASSERT_NE(view, nullptr);
        view->updatePreview();
        pages = view->pageCount();
    };
    pressNext("preview");
    testing_Key(*window, Qt::Key_P, {}, Qt::ControlModifier);
    EXPECT_EQ(pages, 1);
    QApplication::processEvents();
    EXPECT_EQ(window->view().image(), before);
    pages = -1;
    pressNext("cancel");
    window->command("TraxPrint");
    EXPECT_EQ(pages, -1);
}

TEST_F(PrintWindow, WhatHappensToTheWindowMeanwhileShowsAfterwards) {
    canvas().marks.cursor[0] = canvas().source.totalLength / 4;
    canvas().marks.cursor[1] = canvas().source.totalLength / 2;
    const double low = canvas().view.viewLow;
    int asked = 0;
    canvas().calls.progress = [&](double, double) {
        if (++asked == 1) {
            window->resize(900, 500);
            QApplication::processEvents();
            window->view().repaint();
        }
        return true;
    };
    PrintJob job;
    job.to = PrintJob::To::File;
    job.file = folder / "page.pdf";
    EXPECT_EQ(TRAX_Print(canvas(), window->view().picture().graphLeft, job,
                         {.range = TraxPrintRange::Selection, .pages = 2}),
              1);
    EXPECT_GT(asked, 0);
    QApplication::processEvents();
    for (int i = 0; i < 20 && gate_Program().Ready(); ++i) gate_Program().RunHeld();
    QApplication::processEvents();
    EXPECT_EQ(canvas().view.viewLow, low);
    EXPECT_EQ(window->view().image().size(), window->view().size());
    const QImage shown = window->view().image();
    window->view().layOutAndPaint();
    EXPECT_EQ(window->view().image(), shown);
    EXPECT_TRUE(window->message().find("Zoom Rate: ") != std::string::npos) << window->message();
    std::string bytes;
    ASSERT_TRUE(file_read_whole(job.file, bytes));
    EXPECT_EQ(bytes.substr(0, 5), "%PDF-");
}

// The command line's canvas, made for the purpose, prints what the window's does, whatever was done in that.
TEST_F(PrintWindow, ThePageIsThatOfTheCommandLine) {
    laCanvas_ShowAll(canvas());
    window->view().layOutAndPaint();
    canvas().axis.timeMode = Time_Second;
    canvas().marks.cursor[0] = canvas().source.totalLength / 4;
    canvas().marks.cursor[1] = canvas().source.totalLength / 2;
    const QSize size = window->view().size();
    const PageFacts sheet{.width = 7016, .height = 4960, .printerX = 600, .printerY = 600, .canDraw = true};
    const TraxPrintOptions options{.range = TraxPrintRange::View, .pages = 2, .foot = TraxPrintFoot::Legend};
    RecordingPage ours(sheet), theirs(sheet);
    ASSERT_EQ(traxPrint_Pages(canvas(), ours, traxPrint_SizesOf(canvas(), window->view().picture().graphLeft),
                              options)
                  .end,
              TraxPrintEnd::Done);
    CanvasAlone other;
    testing_OpenAlone(other, folder / "run", trace, size, false);
    other.canvas->axis.timeMode = Time_Second;
    ASSERT_EQ(traxPrint_Pages(*other.canvas, theirs,
                              traxPrint_SizesOf(*other.canvas, other.picture.graphLeft), options)
                  .end,
              TraxPrintEnd::Done);
    EXPECT_EQ(ours.pages.size(), 2u);
    EXPECT_EQ(ours.text(), theirs.text());
}
