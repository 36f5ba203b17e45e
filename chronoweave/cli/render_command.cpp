// render: the picture of the time line, drawn by the window's own layout and drawing.
#include <algorithm>

#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/opened.h"
#include "chronoweave/cli/render_page.h"
#include "chronoweave/cli/rows.h"
#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/page_device.h"
#include "windlib/qt/picture_file.h"

namespace {

constexpr uint32_t defaultWidth = 1600, leastSide = 200, mostSide = 32000, mostDefaultHeight = 4000;

struct RenderSize {
    int width = 0, height = 0;  // 0: as the rows, or the pages, need
};

std::optional<RenderSize> render_size(const CommandLine& line) {
    // An absent option is 0, which nobody can ask for.
    if (line.width == "0" || line.height == "0") {
        cli_UsageError(gen_format("--width and --height are %u to %u pixels", leastSide, mostSide));
        return std::nullopt;
    }
    const auto width = cli_Number(line.width, "--width", 0), height = cli_Number(line.height, "--height", 0);
    if (!width || !height) return std::nullopt;
    for (const uint32_t side : {*width, *height})
        if ((side < leastSide && side != 0) || side > mostSide) {
            cli_UsageError(gen_format("--width and --height are %u to %u pixels", leastSide, mostSide));
            return std::nullopt;
        }
    return RenderSize{static_cast<int>(*width), static_cast<int>(*height)};
}

// Applies --flat, --processors, --hide and --sort to the object list.
void arrange(_LaCanvasData& canvas, const CommandLine& line) {
    canvas.list.flatView = line.flat;
    canvas.list.processorRows = line.processors;
    if (!line.sort.empty()) canvas.list.sortField = line.sort == "id" ? 1 : 0;
    if (!line.hide.empty()) {
        laPath pattern;
        pattern.components = {line.hide};
        pattern.wildcard = true;
        canvas.taskList->AddHiddenPath(pattern);
    }
}

// The range in the canvas's time base; the whole trace by default.
bool show_range(_LaCanvasData& canvas, const CommandLine& line, const mt_Range& range) {
    const TimeBase& clock = canvas.source.clock;
    const double low = line.from.empty() ? 0 : clock.TimeOf(range.first);
    const double high = line.to.empty() ? canvas.source.totalLength : clock.TimeOf(range.end);
    if (high <= low) return false;
    return laCanvas_ShowRange(canvas, low, high);
}

void put_facts(RowWriter& rows, const _LaCanvasData& canvas, const laPicture& picture,
               const std::string& file) {
    const auto ids = laPicture_RowIds(canvas);
    rows.facts({{"file", file},
                {"low", canvas.view.viewLow},
                {"high", canvas.view.viewHigh},
                {"rows", ids.size()},
                {"rowHeight", picture.rowHeight},
                {"graphLeft", picture.graphLeft},
                {"graphTop", picture.graphTop},
                {"graphWidth", picture.graphWidth},
                {"graphHeight", picture.graphHeight},
                {"objects", Cell::ids(ids)}});
}

// What stands above the axis when all rows do, and the axis.
int rows_height(const _LaCanvasData& canvas) {
    return static_cast<int>(canvas.taskList->rows().size()) * canvas.looks.rowHeight;
}

// Of the whole picture, from what was asked for.
RenderSize picture_size(_LaCanvasData& canvas, Surface& surface, RenderSize asked,
                        const std::optional<RenderPage>& page) {
    const int strip = laAxis_StripHeight(surface.fontMetrics(Font_Axis)), rows = rows_height(canvas);
    if (page) {
        canvas.graph->axisFont = surface.fontMetrics(Font_Axis);
        const int list = laPicture_GraphLeft(canvas, surface, static_cast<int>(defaultWidth));
        TraxPrintSizes sizes = traxPrint_SizesOf(canvas, list);
        TraxGraphSize filling = cli_FillingGraph(*page, sizes, rows, strip);
        if (page->options.foot == TraxPrintFoot::Legend) {
            const int width = list + filling.width;
            sizes.footHeight =
                traxFoot_LayOut(traxFoot_Entries(canvas.scene()), width, sizes.fontHeight).Height();
            filling = cli_FillingGraph(*page, sizes, rows, strip);
        }
        return {asked.width > 0 ? asked.width : list + filling.width,
                asked.height > 0 ? asked.height : filling.height};
    }
    const int below = strip + laPicture_FooterHeight(canvas.graph->font);
    return {asked.width > 0 ? asked.width : static_cast<int>(defaultWidth),
            asked.height > 0
                ? asked.height
                : std::clamp(rows + below, static_cast<int>(leastSide), static_cast<int>(mostDefaultHeight))};
}

// The canvas of an opened source, laid out.
struct Rendered {
    LaGraph graph;
    std::unique_ptr<_LaCanvasData> canvas;
    laPicture picture;
    bool shown = false;
};

struct Wanted {
    const CommandLine& line;
    mt_Range range;
    RenderSize size;
    std::optional<RenderPage> page;
};

void lay_out(Rendered& made, const Wanted& wanted, OpenedSource& opened, Legend legend, Surface& surface) {
    made.graph.font = surface.fontMetrics(Font_Application);
    made.canvas = laCanvas_Create(made.graph, 0);
    _LaCanvasData& canvas = *made.canvas;
    arrange(canvas, wanted.line);
    made.shown =
        laCanvas_SetUpFromStore(canvas, std::move(opened.store), std::move(legend), wanted.line.path);
    if (!made.shown) return;
    arrange(canvas, wanted.line);
    made.shown = !canvas.source.storeHasEvents || show_range(canvas, wanted.line, wanted.range);
    laCanvas_Resort(canvas);
    const RenderSize size = picture_size(canvas, surface, wanted.size, wanted.page);
    const bool footer = !wanted.page;
    // Laid out twice: the view snaps to pixels of the width that the first pass finds.
    laPicture_LayOut(canvas, surface, size.width, size.height, footer);
    if (canvas.source.storeHasEvents)
        made.shown = show_range(canvas, wanted.line, wanted.range) && made.shown;
    made.picture = laPicture_LayOut(canvas, surface, size.width, size.height, footer);
}

std::string what_failed(TraxPrintEnd end) {
    switch (end) {
        case TraxPrintEnd::NoFont:
            return "Cann't get proper font.";
        case TraxPrintEnd::StartFailed:
            return "StartPage Failed.";
        case TraxPrintEnd::EndFailed:
            return "EndPage Failed.";
        case TraxPrintEnd::Done:
        case TraxPrintEnd::CannotDraw:
        case TraxPrintEnd::NothingShown:
        case TraxPrintEnd::Stopped:
            break;
    }
    return "Failed to print canvas.";
}

Result write_pages(Rendered& made, const RenderPage& page) {
    TraxPrinted printed;
    const TraxPrintSizes sizes = traxPrint_SizesOf(*made.canvas, made.picture.graphLeft);
    const auto body = [&](PageDevice& device) {
        printed = traxPrint_Pages(*made.canvas, device, sizes, page.options);
        return printed.end == TraxPrintEnd::Done;
    };
    Result written = page_WritePdf(page.job, body);
    if (printed.end != TraxPrintEnd::Done) return Result::failure(what_failed(printed.end), page.job.file);
    return written;
}

Result write_picture(Rendered& made, const Wanted& wanted) {
    if (wanted.page) return write_pages(made, *wanted.page);
    const laPicture& picture = made.picture;
    const auto draw = [&](Surface& surface) { laPicture_Draw(*made.canvas, surface, picture, false); };
    return picture_Write(wanted.line.output, picture.width, picture.height, 1, draw);
}

}  // namespace

int command_Render(const CommandLine& line) {
    if (line.output.empty())
        return cli_UsageError("render: -o FILE is required, a name that ends in .png, .svg or .pdf");
    if (!line.sort.empty() && line.sort != "name" && line.sort != "id")
        return cli_UsageError("--sort: name or id");
    const auto size = render_size(line);
    std::optional<RenderPage> page;
    if (!size || !cli_RenderPage(line, page)) return Exit_Usage;
    OpenedSource opened = cli_Open(line);
    if (!opened.store) return cli_Failure(opened.trouble.text());
    const auto range = cli_Range(line, *opened.store);
    if (!range) return cli_Refused(opened);
    Legend legend;
    if (cli_LoadLegend(line, *opened.store, legend) != LegendFound::Yes) {
        cli_Finish(opened, opened.store.get());  // damage may be why
        return Exit_Failed;
    }

    picture_StartHeadless();
    const Wanted wanted{line, *range, *size, page};
    Rendered made;
    picture_Measure([&](Surface& surface) { lay_out(made, wanted, opened, std::move(legend), surface); });
    if (!made.shown)
        return cli_Failure(line.path +
                           ": nothing can be shown in that range: " + made.canvas->fields.message);
    if (const Result written = write_picture(made, wanted); !written) return cli_Failure(written.text());
    CommandLine facts = line;
    facts.output.clear();  // -o names the picture
    RowWriter rows(facts, {});
    put_facts(rows, *made.canvas, made.picture, line.output);
    return rows.close() ? cli_Finish(opened, made.canvas->source.store.get()) : Exit_Failed;
}
