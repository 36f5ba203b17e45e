#include "chronoweave/analysis/print_dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "chronoweave/analysis/table_pages.h"
#include "chronoweave/analysis/table_text.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "libtrv/test_store.h"
#include "windlib/dialog/host_testing.h"
#include "windlib/dialog/print_testing.h"

namespace {

class PrintDialog : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(test.Open(random_events(4, 300)));
        test.ShowAll();
        test.graph.font = test.surface.fontMetrics(Font_Application);
        test.graph.axisFont = test.surface.fontMetrics(Font_Axis);
        test.graph.surface = nullptr;
        host.printer = &printer;
        canvas.calls.host = &host;
    }
    // As the user: fills in and presses.
    void Answer(std::function<void(DialogModel&)> fill, const char* button) {
        host.drive = [fill = std::move(fill), button](DialogModel& model) {
            if (fill) fill(model);
            EXPECT_TRUE(model.press(button)) << button;
        };
    }

    RecordingHost host;
    RecordingPrinter printer;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(PrintDialog, TheAnswersBecomeTheJob) {
    canvas.marks.cursor[0] = canvas.source.totalLength / 4;
    canvas.marks.cursor[1] = canvas.source.totalLength / 2;
    const struct {
        const char* what;
        std::function<void(DialogModel&)> fill;
        const char* button;
        bool hasPrinter;
        PrintJob::To to;
        PagePaper paper;
        PageTurn turn;
        size_t pages;
    } cases[] = {
        {"as it opens", {}, "ok", true, PrintJob::To::Printer, PagePaper::A4, PageTurn::Landscape, 1},
        {"preview", {}, "preview", true, PrintJob::To::Preview, PagePaper::A4, PageTurn::Landscape, 1},
        {"letter, upright",
         [](DialogModel& m) {
             m.choose("paper", 1);
             m.choose("turn", 0);
         },
         "ok", true, PrintJob::To::Printer, PagePaper::Letter, PageTurn::Portrait, 1},
        {"three pages of the selection",
         [](DialogModel& m) {
             m.choose("range", 1);
             m.type("pages", " 3 ");
         },
         "pdf", true, PrintJob::To::File, PagePaper::A4, PageTurn::Landscape, 3},
        {"no printer", {}, "ok", false, PrintJob::To::File, PagePaper::A4, PageTurn::Landscape, 1},
    };
    for (const auto& c : cases) {
        printer.jobs.clear();
        printer.page.pages.clear();
        printer.printer = c.hasPrinter;
        Answer(c.fill, c.button);
        host.choices.clear();
        host.fileAnswers = {{"/folder/out"}};
        EXPECT_TRUE(dialogs_AskPrint(canvas, 120)) << c.what;
        ASSERT_EQ(printer.jobs.size(), 1u) << c.what;
        const PrintJob& job = printer.jobs[0];
        EXPECT_EQ(job.to, c.to) << c.what;
        EXPECT_EQ(job.paper, c.paper) << c.what;
        EXPECT_EQ(job.turn, c.turn) << c.what;
        EXPECT_EQ(job.file, c.to == PrintJob::To::File ? "/folder/out.pdf" : "") << c.what;
        EXPECT_EQ(printer.page.pages.size(), c.pages) << c.what;
    }
}

TEST_F(PrintDialog, WaysOutPrintNothing) {
    Answer({}, "cancel");
    EXPECT_FALSE(dialogs_AskPrint(canvas, 120));
    host.drive = {};  // closed by its frame
    EXPECT_FALSE(dialogs_AskPrint(canvas, 120));
    Answer({}, "pdf");
    EXPECT_FALSE(dialogs_AskPrint(canvas, 120));
    TestFolder folder;
    host.askAnswer = false;
    host.fileAnswers = {{folder / "kept"}};
    std::ofstream(folder / "kept.pdf") << "a page";
    EXPECT_FALSE(dialogs_AskPrint(canvas, 120));
    EXPECT_EQ(host.questions,
              std::vector<std::string>{"\"" + (folder / "kept.pdf") + "\" exists already. Replace it?"});
    for (const char* wrong : {"", "0", "-1", "two", "1000", "1 2", "99999999999"}) {
        Answer([=](DialogModel& m) { m.type("pages", wrong); }, "ok");
        EXPECT_FALSE(dialogs_AskPrint(canvas, 120)) << wrong;
        host.drive = [=](DialogModel& model) {
            model.type("pages", wrong);
            model.press("ok");
            EXPECT_FALSE(model.isClosed()) << wrong;
            EXPECT_EQ(model.message(), "The number of pages is from 1 to 999.") << wrong;
        };
        EXPECT_FALSE(dialogs_AskPrint(canvas, 120)) << wrong;
    }
    EXPECT_TRUE(printer.jobs.empty());
}

TEST_F(PrintDialog, PaperAndFootAreAsTheLastTime) {
    const auto shown = [&] {
        std::string text;
        host.drive = [&](DialogModel& m) {
            text = std::to_string(m.item("paper").choice) + std::to_string(m.item("turn").choice) +
                   (m.item("legend").checked ? "l" : "") + m.item("pages").text;
        };
        dialogs_AskPrint(canvas, 120);
        return text;
    };
    EXPECT_EQ(shown(), "011");
    const auto change = [](DialogModel& m) {
        m.choose("paper", 1);
        m.choose("turn", 0);
        m.check("legend", true);
        m.type("pages", "2");
    };
    Answer(change, "cancel");
    dialogs_AskPrint(canvas, 120);
    EXPECT_EQ(shown(), "011") << "what was cancelled is not kept";
    Answer(change, "preview");
    dialogs_AskPrint(canvas, 120);
    EXPECT_EQ(shown(), "10l1");
    host.choices["PrintTurn"] = "sideways";
    EXPECT_EQ(shown(), "11l1");
}

TEST_F(PrintDialog, TheSelectionNeedsBothCursors) {
    host.drive = [](DialogModel& model) { EXPECT_FALSE(model.choose("range", 1)); };
    dialogs_AskPrint(canvas, 120);
    canvas.marks.cursor[0] = 0;
    canvas.marks.cursor[1] = canvas.source.totalLength;
    host.drive = [](DialogModel& model) { EXPECT_TRUE(model.choose("range", 1)); };
    dialogs_AskPrint(canvas, 120);
}

TEST_F(PrintDialog, ItSaysWhenThereIsNoPrinter) {
    printer.printer = false;
    host.drive = [](DialogModel& model) {
        EXPECT_EQ(model.message(), "There is no printer: a PDF file is made.");
    };
    dialogs_AskPrint(canvas, 120);
}

class TablePaper : public PrintDialog {
  protected:
    static void Fill(MScrollList& list, int rows) {
        list.SetSize(0, 2);
        list.SetHeaderRows(1);
        list.SetHeader(0, 0, "Name");
        list.SetHeader(0, 1, "Count");
        for (int row = 0; row < rows; ++row) {
            list.InsertRows(row, 1);
            list.SetText(row, 0, "row " + std::to_string(row));
            list.SetText(row, 1, std::to_string(row * row));
        }
    }
};

TEST_F(TablePaper, RowsGoOnFromPageToPageUnderTheirTitles) {
    MScrollList list, empty, more;
    Fill(list, 150);
    Fill(empty, 0);
    Fill(more, 1);
    Answer({}, "ok");
    ASSERT_TRUE(dialogs_PrintTables(host, "Report", {&list, &empty, &more}, {}));
    ASSERT_EQ(printer.jobs.size(), 1u);
    EXPECT_EQ(printer.jobs[0].name, "Report");
    std::vector<std::string> rows;
    ASSERT_GE(printer.page.pages.size(), 3u);
    for (size_t i = 0; i < printer.page.pages.size(); ++i) {
        const std::vector<std::string> texts = printer.page.texts(i);
        EXPECT_EQ(std::count(texts.begin(), texts.end(), "Name"), 1);
        EXPECT_EQ(texts[0], "Report");
        EXPECT_EQ(texts[1], "Page " + std::to_string(i + 1));
        for (const std::string& text : texts)
            if (text.starts_with("row ")) rows.push_back(text);
    }
    ASSERT_EQ(rows.size(), 151u);
    for (int row = 0; row < 150; ++row)
        EXPECT_EQ(rows[static_cast<size_t>(row)], "row " + std::to_string(row));
    const PageFacts facts = printer.page.facts();
    for (const auto& ops : printer.page.pages)
        for (const SurfaceOp& op : ops) EXPECT_LE(op.y0, facts.height - 38) << op.text;
    const auto endOf = [&](const char* text) {
        for (const SurfaceOp& op : printer.page.pages[0])
            if (op.kind == SurfaceOp::Text && op.text == text)
                return op.x0 + printer.page.surface().textExtent(text).width;
        return -1;
    };
    EXPECT_NE(endOf("9"), endOf("1600"));
    list.SetRightAligned(1, true);
    printer.page.pages.clear();
    dialogs_PrintTables(host, "Report", {&list}, {});
    EXPECT_EQ(endOf("9"), endOf("1600")) << "numbers end where numbers end";
}

TEST_F(TablePaper, StopsAndFailsWithWords) {
    MScrollList list;
    Fill(list, 500);
    EXPECT_EQ(table_DrawPages(printer.page, "t", {&list},
                              [](double done, double total) {
                                  EXPECT_EQ(total, 500);
                                  return done == 0;
                              }),
              TablePrinted::Stopped);
    EXPECT_EQ(printer.page.pages.size(), 1u);
    const auto print = [&](const Progress& progress) {
        Answer({}, "ok");
        return dialogs_PrintTables(host, "t", {&list}, progress).value_or("none");
    };
    EXPECT_EQ(print({}), "Printed on\na printer.");
    EXPECT_EQ(print([](double done, double) { return done == 0; }),
              "Printing was stopped early. Printed on\na printer.");
    EXPECT_EQ(printer.drawn, (std::vector<bool>{true, true}));
    print([](double, double) { return false; });
    EXPECT_EQ(printer.drawn.back(), false) << "there is no page to be kept";
    EXPECT_TRUE(host.messages.empty());
    printer.page.failStart = static_cast<int>(printer.page.pages.size()) + 3;
    printer.outcome = {PrintOutcome::End::Failed, ""};
    Answer({}, "ok");
    EXPECT_FALSE(dialogs_PrintTables(host, "t", {&list}, {}));
    EXPECT_EQ(host.messages, (std::vector<std::string>{"Failed to print the table."}));
    EXPECT_EQ(host.busy, 0);
}

}  // namespace
