// The dialogs of statistics reports; each runs to its end through the canvas's host.
#pragma once

#include <optional>

#include "chronoweave/analysis/canvas_facts.h"
#include "chronoweave/engine/report.h"
#include "windlib/dialog/description.h"

struct ReportRange {
    double from = 0, to = 0;  // within the trace, from below to
};
struct ReportObject {
    ReportRange range;
    uint32_t object = 0;
};
struct ReportGeneral {
    SearchRequest request;
    ReportOrder order;
};

// None when cancelled, or without objects to choose from.
std::optional<ReportRange> report_AskRange(CanvasFacts& facts);
std::optional<ReportObject> report_AskObject(CanvasFacts& facts);
// Objects, kind, event or status, and order.
std::optional<ReportGeneral> report_AskGeneral(CanvasFacts& facts);

// "SelectTimeRange": "t_prompt", "tf_from", "tf_to", message line, "ok", "cancel".
DialogDescription report_RangeDialog();
// "SelectOrder": choices "order" (increasing, descending) and "first" (number, time), "ok", "cancel".
DialogDescription report_OrderDialog();
