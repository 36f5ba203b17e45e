// Pages on Qt: what a PDF holds, and that nothing on paper is blurred.
#include "windlib/qt/page_device.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <set>

#include "windlib/qt/application_testing.h"
#include "windlib/qt/print_host.h"

namespace {

// A frame of an inch, a text and an icon, in the measures of the device.
bool draw(PageDevice& page) {
    const PageFacts facts = page.facts();
    if (!page.makeFonts("Courier New", facts.printerY / 4, facts.printerY / 8) || !page.startPage())
        return false;
    const int inch = facts.printerX;
    page.surface().drawStyledLine(inch, inch, 2 * inch, inch, 0x000000, inch / 16, 0, 0);
    page.surface().drawStyledLine(inch, inch, inch, 2 * inch, 0x000000, inch / 16, 0, 0);
    page.surface().drawText(inch, 3 * inch, "Printed", 0x000000, NoColour);
    page.drawIcon(2 * inch, 2 * inch, inch, inch, 0);
    return page.endPage();
}

bool draw_two(PageDevice& page) {
    return draw(page) && draw(page);
}

class PageTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
    }
    std::string path(const char* name) const { return folder.filePath(QLatin1String(name)).toStdString(); }
    PrintJob job(const char* name) const {
        return {.name = "a job", .to = PrintJob::To::File, .file = path(name)};
    }
    void write(const char* name, const char* bytes) const {
        QFile file(QString::fromStdString(path(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray content(const char* name) const {
        QFile file(QString::fromStdString(path(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
};

TEST_F(PageTest, SheetsHaveTheirSizes) {
    const struct {
        PagePaper paper;
        PageTurn turn;
        double width, height;  // inches
    } cases[] = {{PagePaper::A4, PageTurn::Portrait, 210 / 25.4, 297 / 25.4},
                 {PagePaper::A4, PageTurn::Landscape, 297 / 25.4, 210 / 25.4},
                 {PagePaper::Letter, PageTurn::Portrait, 8.5, 11},
                 {PagePaper::Letter, PageTurn::Landscape, 11, 8.5}};
    for (const auto& c : cases) {
        PrintJob one = job("sheet.pdf");
        one.paper = c.paper;
        one.turn = c.turn;
        PageFacts facts;
        ASSERT_TRUE(page_WritePdf(one, [&](PageDevice& page) {
            facts = page.facts();
            return draw(page);
        }));
        EXPECT_TRUE(facts.canDraw);
        EXPECT_NEAR(facts.width, c.width * facts.printerX, facts.printerX / 50.0);
        EXPECT_NEAR(facts.height, c.height * facts.printerY, facts.printerY / 50.0);
    }
}

TEST_F(PageTest, FontsAreAsHighAsAskedForAndOfOnePitch) {
    ASSERT_TRUE(page_WritePdf(job("fonts.pdf"), [](PageDevice& page) {
        EXPECT_TRUE(page.makeFonts("Courier New", 300, 200));
        EXPECT_TRUE(page.startPage());
        EXPECT_NEAR(page.surface().fontMetrics(Font_Application).height, 300, 8);
        EXPECT_NEAR(page.surface().fontMetrics(Font_Axis).height, 200, 8);
        EXPECT_EQ(page.surface().textExtent("iiii").width, page.surface().textExtent("WWWW").width);
        return page.endPage();
    }));
}

// A failed page leaves no file behind, and one that stood there as it was; a file that can't be written is
// told.
TEST_F(PageTest, FailuresLeaveNoHalfFile) {
    EXPECT_FALSE(page_WritePdf(job("half.pdf"), [](PageDevice& page) {
        draw(page);
        return false;
    }));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 0);
    const auto refuse = [](PageDevice& page) { return draw(page) && false; };
    write("half.pdf", "an older one");
    EXPECT_FALSE(page_WritePdf(job("half.pdf"), refuse));
    EXPECT_EQ(content("half.pdf"), "an older one");
    QtPrintHost host({}, {});
    host.choosePrinter = [&](QPrintDialog& dialog) {
        dialog.printer()->setOutputFormat(QPrinter::PdfFormat);
        dialog.printer()->setOutputFileName(QString::fromStdString(path("half.pdf")));
        return true;
    };
    EXPECT_EQ(host.run({.name = "a job"}, refuse).end, PrintOutcome::End::Failed);
    EXPECT_EQ(content("half.pdf"), "an older one");
    EXPECT_EQ(host.run({.name = "a job"}, draw).end, PrintOutcome::End::Printed);
    EXPECT_EQ(content("half.pdf").left(5), "%PDF-");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    const Result nowhere = page_WritePdf(job("nowhere/a.pdf"), draw);
    EXPECT_FALSE(nowhere);
    EXPECT_EQ(nowhere.where(), path("nowhere/a.pdf"));
    EXPECT_NE(nowhere.reason(), "");
    PrintJob full = job("");
    full.file = "/dev/full";
    if (!QFileInfo::exists(QStringLiteral("/dev/full"))) GTEST_SKIP();
    EXPECT_FALSE(page_WritePdf(full, draw));
}

// Every edge of a line lies between two pixels, also where a pixel of the painter is two of the device.
TEST_F(PageTest, LinesAreSharpAtAnyRatio) {
    for (const double ratio : {1.0, 2.0}) {
        QImage image(static_cast<int>(400 * ratio), static_cast<int>(400 * ratio), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(0xFFFFFFFFu);
        QtPageDevice page(
            {.device = &image,
             .nextPage = [] { return false; },
             .good = {},
             .facts = {.width = 400, .height = 400, .printerX = 96, .printerY = 96, .canDraw = true}});
        ASSERT_TRUE(page.makeFonts("Courier New", 24, 12));
        ASSERT_TRUE(page.startPage());
        page.surface().drawStyledLine(20, 50, 200, 50, 0x0000FF, 5, 0, 0);
        page.surface().fillRect(30, 100, 33, 7, 0x0000FF);
        page.surface().drawStyledLine(300, 20, 300, 333, 0x0000FF, 3, 2, 1);
        EXPECT_TRUE(page.endPage());
        EXPECT_FALSE(page.startPage()) << "there is no second page";
        EXPECT_TRUE(page.finish());
        std::set<QRgb> colours;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) colours.insert(image.pixel(x, y));
        EXPECT_EQ(colours, (std::set<QRgb>{0xFFFFFFFFu, 0xFF0000FFu})) << ratio;
        EXPECT_EQ(image.pixel(static_cast<int>(30 * ratio), static_cast<int>(100 * ratio)), 0xFF0000FFu);
        EXPECT_EQ(image.pixel(static_cast<int>(30 * ratio) - 1, static_cast<int>(100 * ratio)), 0xFFFFFFFFu);
    }
}

// The pages as a reader of the files shows them.
TEST_F(PageTest, AReaderSeesThePagesWhereTheyWereDrawn) {
    const QString reader = QStandardPaths::findExecutable(QStringLiteral("pdftoppm"));
    if (reader.isEmpty()) GTEST_SKIP() << "there is no pdftoppm";
    ASSERT_TRUE(page_WritePdf(job("two.pdf"), draw_two));
    const QString base = folder.filePath(QStringLiteral("two"));
    ASSERT_EQ(QProcess::execute(reader, {QStringLiteral("-r"), QStringLiteral("192"), QStringLiteral("-png"),
                                         base + QStringLiteral(".pdf"), base}),
              0);
    EXPECT_FALSE(QFileInfo::exists(base + QStringLiteral("-3.png")));
    for (const char* number : {"-1.png", "-2.png"}) {
        const QImage image(base + QLatin1String(number));
        ASSERT_FALSE(image.isNull()) << number;
        EXPECT_NEAR(image.width(), 210 / 25.4 * 192, 2);
        // The corner of the frame at an inch, its lines a sixteenth thick.
        EXPECT_EQ(qGray(image.pixel(192 + 96, 192)), 0);
        EXPECT_EQ(qGray(image.pixel(192, 192 + 96)), 0);
        EXPECT_EQ(qGray(image.pixel(192 + 96, 192 + 20)), 255);
        int dark = 0;
        for (int x = 192; x < 2 * 192; ++x)
            for (int y = 3 * 192 - 40; y < 3 * 192; ++y) dark += qGray(image.pixel(x, y)) < 128 ? 1 : 0;
        EXPECT_GT(dark, 200) << "the text";
    }
}

TEST_F(PageTest, TheHostPrintsPreviewsAndWritesFiles) {
    QtPrintHost host({}, {});
    int drawn = 0;
    const PrintHost::Body body = [&](PageDevice& page) {
        ++drawn;
        return draw(page);
    };
    PrintOutcome outcome = host.run(job("file.pdf"), body);
    EXPECT_EQ(outcome.end, PrintOutcome::End::Printed);
    EXPECT_EQ(outcome.message, "Printed to \"" + path("file.pdf") + "\".");
    EXPECT_EQ(host.run(job("nowhere/file.pdf"), body).end, PrintOutcome::End::Failed);
    PrintJob other = job("");
    other.to = PrintJob::To::Printer;
    EXPECT_EQ(host.run(other, body).end, PrintOutcome::End::Failed) << "nobody is there";
    host.choosePrinter = [](QPrintDialog&) { return false; };
    EXPECT_EQ(host.run(other, body).end, PrintOutcome::End::Cancelled);
    drawn = 0;
    host.choosePrinter = [&](QPrintDialog& dialog) {
        dialog.printer()->setOutputFormat(QPrinter::PdfFormat);
        dialog.printer()->setOutputFileName(QString::fromStdString(path("chosen.pdf")));
        return true;
    };
    outcome = host.run(other, body);
    EXPECT_EQ(outcome.end, PrintOutcome::End::Printed) << outcome.message;
    EXPECT_EQ(drawn, 1);
    EXPECT_GT(QFileInfo(QString::fromStdString(path("chosen.pdf"))).size(), 500);
    other.to = PrintJob::To::Preview;
    EXPECT_EQ(host.run(other, body).end, PrintOutcome::End::Failed) << "nobody is there";
    drawn = 0;
    host.lookAtPreview = [](QPrintPreviewDialog& dialog) {
        auto* view = dialog.findChild<QPrintPreviewWidget*>();
        ASSERT_NE(view, nullptr);
        view->updatePreview();
        EXPECT_EQ(view->pageCount(), 1);
    };
    EXPECT_EQ(host.run(other, body).end, PrintOutcome::End::Cancelled) << "looked at alone";
    EXPECT_GE(drawn, 1);
}

}  // namespace
