#include "chronoweave/cli/render_page.h"

#include "chronoweave/cli/messages.h"
#include "chronoweave/cli/opened.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int inch = 96;  // pixels, of a screen on which sizes are as on paper

PageFacts facts_of(const PrintJob& job) {
    const double wide = job.paper == PagePaper::A4 ? 210 / 25.4 : 8.5;
    const double high = job.paper == PagePaper::A4 ? 297 / 25.4 : 11;
    const bool portrait = job.turn == PageTurn::Portrait;
    return {.width = static_cast<int>((portrait ? wide : high) * inch),
            .height = static_cast<int>((portrait ? high : wide) * inch),
            .printerX = inch,
            .printerY = inch,
            .canDraw = true};
}

}  // namespace

bool cli_RenderPage(const CommandLine& line, std::optional<RenderPage>& page) {
    const auto refuse = [](const std::string& why) {
        cli_UsageError(why);
        return false;
    };
    if (line.page.empty()) {
        if (line.landscape || line.legend || !line.pages.empty())
            return refuse("--landscape, --pages and --legend need --page a4 or --page letter");
        return true;
    }
    if (line.page != "a4" && line.page != "letter") return refuse("--page: a4 or letter");
    if (!text_equal_nocase(path_extension(line.output), "pdf"))
        return refuse("--page: the name after -o ends in .pdf");
    const auto count = cli_Number(line.pages, "--pages", 1);
    if (!count) return false;
    if (*count < 1 || *count > traxPrint_MostPages)
        return refuse(gen_format("--pages is from 1 to %d", traxPrint_MostPages));
    page.emplace();
    page->job = {.name = "trvgui.ps",
                 .paper = line.page == "a4" ? PagePaper::A4 : PagePaper::Letter,
                 .turn = line.landscape ? PageTurn::Landscape : PageTurn::Portrait,
                 .to = PrintJob::To::File,
                 .file = line.output};
    page->options = {.range = TraxPrintRange::View,
                     .pages = static_cast<int>(*count),
                     .foot = line.legend ? TraxPrintFoot::Legend : TraxPrintFoot::None};
    return true;
}

TraxGraphSize cli_FillingGraph(const RenderPage& page, const TraxPrintSizes& sizes, int rowsHeight,
                               int axisHeight) {
    return traxPrint_FillingGraph(facts_of(page.job), sizes, rowsHeight, axisHeight);
}
