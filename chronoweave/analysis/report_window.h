// The windows of statistics reports: tables with bars, and the load of the processors below them.
#pragma once

#include <memory>
#include <optional>

#include "chronoweave/analysis/report_dialogs.h"
#include "windlib/lagraph/surface.h"

// Walks with progress and opens a window; of all objects, or of one. What went wrong is told on the message
// line.
void report_ShowStatistics(const std::shared_ptr<CanvasFacts>& facts, const ReportRange& range,
                           std::optional<uint32_t> object);
void report_ShowChosen(const std::shared_ptr<CanvasFacts>& facts, const SearchRequest& request,
                       ReportOrder order);

// The colour of bars about a status as it is now; NoColour for no status.
Colour report_BarColour(const Legend& legend, int32_t status);
// A share of 0 to 1 as a bar with its text, in a cell at x, y that is h high. Nothing for 0 or less.
void report_DrawBar(Surface& surface, int x, int y, int h, double fraction, Colour colour);

// "Statistics": menu line, "txt_title", "txt_subtitle", list "Status", "t_load", list "load", "close".
DialogDescription report_StatisticsWindow();
// "GenStatistics": menu line, fields from "t_header" to "tf_sorting", list "list", "t_load", list "load",
// "close".
DialogDescription report_ChosenWindow();
