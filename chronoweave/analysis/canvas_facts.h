// What the dialogs and windows of one command know of a canvas's trace, in the canvas's words and unit; the
// canvas and its source must outlive it. With the fields and lists that dialogs fill from it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/engine/trace_facts.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/model.h"

// Where a canvas's trace is walked; store stays null when it has none. Valid while the canvas keeps its
// source.
AnalysisSource analysis_SourceOfCanvas(const _LaCanvasData& canvas);

struct CanvasFacts : TraceFacts {
    // The canvas's store must be there.
    explicit CanvasFacts(_LaCanvasData& of);

    _LaCanvasData& canvas;
};

// A field that holds a time. As long as it stands as it was filled its value is the exact one.
class TimeField {
  public:
    TimeField(DialogModel& model, const TraceFacts& facts, std::string name, std::string text, double value);
    std::optional<double> value() const;
    bool IsEmpty() const;

  private:
    DialogModel& model_;
    const TraceFacts& facts_;
    std::string name_, filled_;
    double value_;
};

// Fills a list with objects, sorted by id, and gives it its columns and their sorting. The rows' ids are the
// objects. An object without a name shows none, or with always the term and its id.
void analysis_FillObjects(DialogModel& model, std::string_view list, const TraceFacts& facts,
                          const std::vector<uint32_t>& objects, bool always);
// Their ids, from the top.
std::vector<uint32_t> analysis_SelectedObjects(const DialogModel& model, std::string_view list);
