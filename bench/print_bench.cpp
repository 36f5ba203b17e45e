// Printing a view of a million events into a PDF file: how long it takes, against writing the file's bytes,
// and what the program holds at most while it opens, shows and prints them.
#include <filesystem>

#include "bench/inputs.h"
#include "bench/measure.h"
#include "bench/self_measure.h"
#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/print/pages.h"
#include "shared/libcxxutil/paths.h"
#include "windlib/lagraph/recording_page.h"
#ifdef CW_BENCH_QT
#include "windlib/qt/page_device.h"
#endif

namespace {

struct Shown {
    LaGraph graph;
    std::unique_ptr<_LaCanvasData> canvas;
    int list = 0;

    Shown(const BenchPlace& place, const std::string& trace) {
        bench_WithSurface([&](Surface& surface) {
            graph.font = surface.fontMetrics(Font_Application);
            canvas = input_Canvas(place, trace, graph, view_width, view_height);
            if (!canvas) return;
            laPicture_LayOut(*canvas, surface, view_width, view_height, false);
            laCanvas_ShowAll(*canvas);
            list = laPicture_GraphLeft(*canvas, surface, view_width);
        });
    }
    bool print(const std::string& file) {
        const TraxPrintOptions options{
            .range = TraxPrintRange::View, .pages = 1, .foot = TraxPrintFoot::Legend};
        const auto body = [&](PageDevice& page) {
            const TraxPrintSizes sizes = traxPrint_SizesOf(*canvas, list);
            return traxPrint_Pages(*canvas, page, sizes, options).end == TraxPrintEnd::Done;
        };
#ifdef CW_BENCH_QT
        PrintJob job;
        job.turn = PageTurn::Landscape;
        job.file = file;
        return page_WritePdf(job, body).ok();
#else
        RecordingPage page(
            {.width = 14031, .height = 9921, .printerX = 1200, .printerY = 1200, .canDraw = true});
        return body(page) && plain_Copy("/dev/zero", file, 1 << 20);
#endif
    }
};

Outcome print_view(const BenchPlace& place) {
    Shown shown(place, place.hundredTasks);
    if (!shown.canvas || shown.canvas->items.bitmaps.size() < 900'000)
        return outcome_OfTrouble("the trace can't be shown");
    const std::string file = path_join(place.work, "printed.pdf"), copy = path_join(place.work, "copied.pdf");
    bool good = true;
    const auto subject = [&] { good = shown.print(file) && good; };
    const auto baseline = [&] { good = plain_Copy(file, copy, plain_Size(file)) && good; };
    subject();
    Outcome outcome;
    outcome.turns = measure_Turns({.count = 5}, {}, subject, baseline);
    std::error_code none;
    std::filesystem::remove(file, none);
    std::filesystem::remove(copy, none);
    if (!good) return outcome_OfTrouble("it could not be printed");
    outcome.value = outcome.turns.subject;
    outcome.unit = "s";
    outcome.limit = Outcome::AtMost;
    outcome.bound = 5;
    return outcome;
}

Outcome print_memory(const BenchPlace& place) {
    if (input_Store(place, place.hundredTasks).empty()) return outcome_OfTrouble("there is no store");
    return outcome_OfMemory({"--measured-print", place.work, place.hundredTasks}, 200);
}

}  // namespace

int run_MeasuredPrint(const std::string& work, const std::string& trace) {
    BenchPlace place;
    place.work = work;
    const std::string file = path_join(work, "measured.pdf");
    const int status = self_Measure([&] {
        Shown shown(place, trace);
        return shown.canvas && shown.print(file);
    });
    std::error_code none;
    std::filesystem::remove(file, none);
    return status;
}

void register_PrintBenchmarks(const BenchPlace& place) {
    measure_Register("print/100 lanes", [&place] { return print_view(place); });
    measure_Register("print memory/100 lanes", [&place] { return print_memory(place); });
}
