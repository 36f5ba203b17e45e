#include "chronoweave/traxfunc/print/print.h"

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/host_testing.h"
#include "windlib/dialog/print_testing.h"

namespace {

class Print : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(test.Open(random_events(4, 300)));
        test.ShowAll();
        host.printer = &printer;
        canvas.calls.host = &host;
        canvas.calls.fieldsChanged = [this] { messages.push_back(canvas.fields.message); };
        test.graph.axisFont = test.surface.fontMetrics(Font_Axis);
        test.graph.font = test.surface.fontMetrics(Font_Application);
        test.graph.surface = nullptr;
    }
    int Run(TraxPrintOptions options = {}) { return TRAX_Print(canvas, 123, {}, options); }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    RecordingHost host;
    RecordingPrinter printer;
    std::vector<std::string> messages;
};

struct WayOut {
    const char* what;
    void (*spoil)(RecordingPrinter&, _LaCanvasData&);
    int result;
    std::vector<std::string> said;  // all of the message line; RATE stands for the zoom rate
    std::vector<std::string> boxes = {};
    std::vector<std::pair<std::string, std::string>> titled = {};
};

void fail(RecordingPrinter& printer) {
    printer.outcome = {PrintOutcome::End::Failed, ""};
}

const WayOut waysOut[] = {
    {"printed",
     [](RecordingPrinter&, _LaCanvasData&) {},
     1,
     {"Canvas is printed with zoom rate RATE.", "Printed on a printer. Zoom Rate: RATE"}},
    {"nothing to say",
     [](RecordingPrinter& printer, _LaCanvasData&) { printer.outcome.message.clear(); },
     1,
     {"Canvas is printed with zoom rate RATE."}},
    {"cancelled",
     [](RecordingPrinter& printer, _LaCanvasData&) {
         printer.draws = 0;
         printer.outcome = {PrintOutcome::End::Cancelled, ""};
     },
     0,
     {}},
    {"refused by the platform",
     [](RecordingPrinter& printer, _LaCanvasData&) {
         printer.draws = 0;
         printer.outcome = {PrintOutcome::End::Failed, "No\nspooler."};
     },
     0,
     {},
     {"No spooler."}},
    {"no font",
     [](RecordingPrinter& printer, _LaCanvasData&) {
         printer.page.hasFonts = false;
         fail(printer);
     },
     0,
     {"Failed to print canvas."},
     {"Cann't get proper font."}},
    {"no page",
     [](RecordingPrinter& printer, _LaCanvasData&) {
         printer.page.failStart = 1;
         fail(printer);
     },
     0,
     {"Failed to print canvas."},
     {},
     {{"Device Error", "StartPage Failed."}}},
    {"nothing to draw on",
     [](RecordingPrinter& printer, _LaCanvasData&) {
         printer.page = RecordingPage({.width = 1123, .height = 794, .printerX = 96, .printerY = 96});
         fail(printer);
     },
     0,
     {"Failed to print canvas."}},
    {"page not ended",
     [](RecordingPrinter& printer, _LaCanvasData&) {
         printer.page.failEnd = 1;
         fail(printer);
     },
     0,
     {"Failed to print canvas."},
     {},
     {{"Device Error", "EndPage Failed."}}},
    {"stopped",
     [](RecordingPrinter& printer, _LaCanvasData& canvas) {
         canvas.calls.progress = [](double, double) { return false; };
         fail(printer);
     },
     0,
     {"Printing was stopped after 0 pages."}},
};

TEST_F(Print, SaysHowItWent) {
    for (const WayOut& way : waysOut) {
        RecordingPrinter fresh;
        host.printer = &fresh;
        host.messages.clear();
        messages.clear();
        canvas.calls.progress = {};
        way.spoil(fresh, canvas);
        EXPECT_EQ(Run(), way.result) << way.what;
        const double rate = traxPrint_Geometry(fresh.page.facts(),
                                               traxPrint_WithNames(canvas, traxPrint_SizesOf(canvas, 123)))
                                .zoomRate;
        std::vector<std::string> said = way.said;
        for (std::string& text : said)
            if (const size_t at = text.find("RATE"); at != std::string::npos)
                text.replace(at, 4, gen_format("%f", rate));
        EXPECT_EQ(messages, said) << way.what;
        EXPECT_EQ(host.messages, way.boxes) << way.what;
        EXPECT_EQ(fresh.boxes, way.titled) << way.what;
        EXPECT_EQ(host.busy, 0) << way.what;
        EXPECT_EQ(fresh.jobs.back().name, "trvgui.ps");
    }
}

TEST_F(Print, TheGateKnowsIt) {
    bool printing = false, painting = true;
    canvas.calls.progress = [&](double, double) {
        printing = gate_Program().Runs(GateWork::Print);
        painting = gate_May(GateActivity::Painting);
        return true;
    };
    EXPECT_EQ(Run(), 1);
    EXPECT_TRUE(printing);
    EXPECT_FALSE(painting) << "the window would paint the canvas of a page";
    EXPECT_FALSE(gate_Program().Runs(GateWork::Print));
}

TEST_F(Print, WithoutAPrinterOfThePlatformItIsRefused) {
    host.printer = nullptr;
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(canvas.fields.message, "Printing is not there yet.");
    canvas.calls.host = nullptr;
    EXPECT_EQ(Run(), 0);
}

TEST_F(Print, APreviewDrawsAsOftenAsItIsLookedAt) {
    printer.draws = 3;
    EXPECT_EQ(Run(), 1);
    EXPECT_EQ(printer.drawn, (std::vector<bool>{true, true, true}));
    EXPECT_EQ(printer.page.pages.size(), 3u);
}

}  // namespace
