// render: the picture of the time line, drawn by the window's own layout and drawing.
#include <algorithm>

#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/opened.h"
#include "chronoweave/cli/rows.h"
#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/session.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/picture_file.h"

namespace {

constexpr uint32_t defaultWidth = 1600, leastSide = 200, mostSide = 32000, mostDefaultHeight = 4000;

struct RenderSize {
    int width = 0, height = 0;  // height 0: as the rows need
};

std::optional<RenderSize> render_size(const CommandLine& line) {
    const auto width = cli_Number(line.width, "--width", defaultWidth),
               height = cli_Number(line.height, "--height", 0);
    if (!width || !height) return std::nullopt;
    for (const uint32_t side : {*width, *height})
        if ((side < leastSide && side != 0) || side > mostSide || *width == 0) {
            cli_UsageError(gen_format("--width and --height are %u to %u pixels", leastSide, mostSide));
            return std::nullopt;
        }
    return RenderSize{static_cast<int>(*width), static_cast<int>(*height)};
}

// Applies --flat, --hide and --sort to the object list.
void arrange(_LaCanvasData& canvas, const CommandLine& line) {
    canvas.list.flatView = line.flat;
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

}  // namespace

int command_Render(const CommandLine& line) {
    if (line.output.empty())
        return cli_UsageError("render: -o FILE is required, a name that ends in .png, .svg or .pdf");
    if (!line.sort.empty() && line.sort != "name" && line.sort != "id")
        return cli_UsageError("--sort: name or id");
    const auto size = render_size(line);
    if (!size) return Exit_Usage;
    OpenedSource opened = cli_Open(line);
    if (!opened.store) return cli_Failure(opened.error);
    const auto range = cli_Range(line, *opened.store);
    if (!range) return cli_Refused(opened);
    Legend legend;
    bool fatal = false;
    if (!cli_LoadLegend(line, *opened.store, legend, fatal)) {
        cli_Finish(opened, opened.store.get());  // damage may be why
        return Exit_Failed;
    }

    picture_StartHeadless();
    LaGraph graph;
    std::unique_ptr<_LaCanvasData> canvas;
    laPicture picture;
    bool shown = false;
    picture_Measure([&](Surface& surface) {
        graph.font = surface.fontMetrics(Font_Application);
        canvas = laCanvas_Create(graph, 0);
        arrange(*canvas, line);
        shown = laCanvas_SetUpFromStore(*canvas, std::move(opened.store), std::move(legend), line.path);
        if (!shown) return;
        arrange(*canvas, line);
        shown = !canvas->source.storeHasEvents || show_range(*canvas, line, *range);
        laCanvas_Resort(*canvas);
        int height = size->height;
        if (height == 0) {
            const int rows = static_cast<int>(canvas->taskList->rows().size()) * canvas->looks.rowHeight;
            const int below =
                laAxis_StripHeight(surface.fontMetrics(Font_Axis)) + laPicture_FooterHeight(graph.font);
            height =
                std::clamp(rows + below, static_cast<int>(leastSide), static_cast<int>(mostDefaultHeight));
        }
        // Laid out twice: the view snaps to pixels of the width that the first pass finds.
        picture = laPicture_LayOut(*canvas, surface, size->width, height);
        if (canvas->source.storeHasEvents) shown = show_range(*canvas, line, *range) && shown;
        picture = laPicture_LayOut(*canvas, surface, size->width, height);
    });
    if (!shown)
        return cli_Failure(line.path + ": nothing can be shown in that range: " + canvas->fields.message);
    const auto draw = [&](Surface& surface) { laPicture_Draw(*canvas, surface, picture, false); };
    if (const Result drawn = picture_Write(line.output, picture.width, picture.height, 1, draw); !drawn)
        return cli_Failure(drawn.text());
    CommandLine facts = line;
    facts.output.clear();  // -o names the picture
    RowWriter rows(facts, {});
    put_facts(rows, *canvas, picture, line.output);
    return rows.close() ? cli_Finish(opened, canvas->source.store.get()) : Exit_Failed;
}
