#include "chronoweave/traxfunc/print/print.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "shared/libcxxutil/report.h"
#include "windlib/busy.h"
#include "windlib/dialog/host.h"

namespace {

constexpr const char* jobName = "trvgui.ps";
constexpr const char* deviceError = "Device Error";

void say(_LaCanvasData& canvas, const std::string& text) {
    laCanvas_UpdateFields(canvas, 0, text.c_str());
}

void tell_stopped(_LaCanvasData& canvas, int pages) {
    say(canvas, gen_format("Printing was stopped after %d page%s.", pages, pages == 1 ? "" : "s"));
}

// What went wrong, where there is a box for it.
void tell_failure(_LaCanvasData& canvas, PrintHost& printer, TraxPrintEnd end) {
    switch (end) {
        case TraxPrintEnd::NoFont:
            canvas.calls.host->message("Cann't get proper font.");
            break;
        case TraxPrintEnd::StartFailed:
            printer.showBox(deviceError, "StartPage Failed.");
            break;
        case TraxPrintEnd::EndFailed:
            printer.showBox(deviceError, "EndPage Failed.");
            break;
        case TraxPrintEnd::Done:
        case TraxPrintEnd::CannotDraw:
        case TraxPrintEnd::NothingShown:
        case TraxPrintEnd::Stopped:
            break;
    }
    say(canvas, "Failed to print canvas.");
}

// What is to be printed goes onto the device. Stopped work keeps the pages that it has.
bool print_body(_LaCanvasData& canvas, PrintHost& printer, int listWidth, const TraxPrintOptions& options,
                PageDevice& page, TraxPrinted& printed) {
    {
        const BusyWork busy(GateWork::Print, dialog_Busy(*canvas.calls.host));
        printed = traxPrint_Pages(canvas, page, traxPrint_SizesOf(canvas, listWidth), options);
    }
    if (printed.end == TraxPrintEnd::Done) return true;
    if (printed.end == TraxPrintEnd::Stopped)
        tell_stopped(canvas, printed.pages);
    else
        tell_failure(canvas, printer, printed.end);
    return printed.end == TraxPrintEnd::Stopped && printed.pages > 0;
}

// What was printed on is known when the platform is done with it.
void tell_printed(_LaCanvasData& canvas, const TraxPrinted& printed, const std::string& platform) {
    say(canvas, gen_format("Canvas is printed with zoom rate %f.", printed.zoomRate));
    if (!platform.empty()) say(canvas, platform + gen_format(" Zoom Rate: %f", printed.zoomRate));
}

}  // namespace

int TRAX_Print(_LaCanvasData& canvas, int listWidth, PrintJob job, const TraxPrintOptions& options) {
    DialogHost* host = canvas.calls.host;
    PrintHost* printer = host != nullptr ? host->printHost() : nullptr;
    if (printer == nullptr) {
        laCanvas_Refuse(canvas, "Printing is not there yet.");
        return 0;
    }
    job.name = jobName;
    TraxPrinted printed;
    PrintOutcome outcome = printer->run(job, [&](PageDevice& page) {
        return print_body(canvas, *printer, listWidth, options, page, printed);
    });
    std::replace(outcome.message.begin(), outcome.message.end(), '\n', ' ');
    switch (outcome.end) {
        case PrintOutcome::End::Printed:
            if (printed.end == TraxPrintEnd::Stopped) return 0;
            tell_printed(canvas, printed, outcome.message);
            return 1;
        case PrintOutcome::End::Cancelled:
            return 0;
        case PrintOutcome::End::Failed:
            if (!outcome.message.empty()) host->message(outcome.message);
            return 0;
    }
    return 0;
}
