// render --page: the options of a printed page, and the canvas that fills it.
#pragma once

#include <optional>

#include "chronoweave/cli/request.h"
#include "chronoweave/traxfunc/print/pages.h"
#include "windlib/dialog/print_host.h"

struct RenderPage {
    PrintJob job;
    TraxPrintOptions options;
};
// False when the options don't go together; everything is said then. Nothing in page without --page.
bool cli_RenderPage(const CommandLine& line, std::optional<RenderPage>& page);

// The size of the picture from which the pages are made, where the user names none: it fills them, and all
// rows are on each.
TraxGraphSize cli_FillingGraph(const RenderPage& page, const TraxPrintSizes& sizes, int rowsHeight,
                               int axisHeight);
