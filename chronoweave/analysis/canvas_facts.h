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

// A range of times of the time base.
struct TimeSpan {
    double from = 0, to = 0;
};

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
    // Fills it with another time.
    void Set(std::string text, double value);

  private:
    DialogModel& model_;
    const TraceFacts& facts_;
    std::string name_, filled_;
    double value_;
};

// The buttons of items_Range put the view, the selection or the whole trace into its fields. False for any
// other button.
bool analysis_PressRange(const CanvasFacts& facts, std::string_view button, TimeField& from, TimeField& to);
// That for the selection can be pressed while there is one.
void analysis_ReadyRange(DialogModel& model, const CanvasFacts& facts);
// From the smaller to the larger cursor; none where they are not set or equal.
std::optional<TimeSpan> analysis_Selection(const _LaCanvasData& canvas);

// Fills a list with objects, sorted by id, and gives it its columns and their sorting. The rows' ids are the
// objects. An object without a name shows none, or with always the term and its id.
void analysis_FillObjects(DialogModel& model, std::string_view list, const TraceFacts& facts,
                          const std::vector<uint32_t>& objects, bool always);
// Selects those of them that are there; with none nothing changes.
void analysis_SelectObjects(DialogModel& model, std::string_view list, const std::vector<uint32_t>& objects);
// The ids of the selected ones, from the top.
std::vector<uint32_t> analysis_SelectedObjects(const DialogModel& model, std::string_view list);
