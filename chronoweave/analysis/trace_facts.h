// What the dialogs and windows of one command know of a canvas's trace: where to walk, the objects with their
// names, and the words and the unit of time that texts use. It is of the moment when the command began; the
// canvas and its source must outlive it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chronoweave/analysis/search_texts.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "windlib/dialog/model.h"

struct TraceFacts {
    // The canvas's store must be there.
    explicit TraceFacts(_LaCanvasData& canvas);
    TraceFacts(const TraceFacts&) = delete;
    TraceFacts& operator=(const TraceFacts&) = delete;

    _LaCanvasData& canvas;
    AnalysisSource source;
    ObjectNames names;
    AnalysisWords words;            // borrows names
    std::vector<uint32_t> objects;  // alive in the whole trace, ascending

    // Any time of the time base in the unit shown, with at most so many decimals (see laTime_Digits).
    std::string shown(double time, int decimals) const;
    // The number at the start of a text, in the time base; what stands behind it is passed over. None when
    // there is no number.
    std::optional<double> scan(std::string_view text) const;
};

// A field that holds a time. As long as it stands as it was filled its value is the exact one.
class TimeField {
  public:
    TimeField(DialogModel& model, const TraceFacts& facts, std::string name, std::string text, double value);
    std::optional<double> value() const;
    bool isEmpty() const;

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
// " It was stopped at 1.5 Seconds." for a walk that did not come to its end, and what could not be read of
// its range, if anything; empty for one that saw all.
std::string analysis_EndText(const TraceFacts& facts, bool stopped, double reached, const TimeGap* lost);
