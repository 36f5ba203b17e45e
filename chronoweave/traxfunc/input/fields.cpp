#include "chronoweave/traxfunc/input/fields.h"

#include <algorithm>
#include <optional>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/goto.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr double tolerance = 1e-12;
constexpr double mostTraces = 2;     // a time behind so many lengths of the trace was not meant
constexpr double shortestEnd = 1.0;  // a view typed by its end alone begins at 0 only beyond this
constexpr const char* badRange = "Invalid view time range or view time range is too small.";

bool refuse(_LaCanvasData& canvas, int group, const char* message) {
    laCanvas_Beep(canvas);
    laCanvas_UpdateFields(canvas, group, message, laMessageLasts::WithTheView);
    return false;
}

// A slip of some digits goes to the end of the trace.
double bounded(const _LaCanvasData& canvas, double time) {
    const double total = canvas.source.totalLength;
    return time > mostTraces * total ? total : time;
}

bool show(_LaCanvasData& canvas, double low, double high) {
    const bool shown = laCanvas_Zoom(canvas, low, high);
    laCanvas_UpdateFields(canvas, Fields_View);
    return shown;
}

bool commit_view_from(_LaCanvasData& canvas, double v) {
    if (canvas.view.viewHigh > v + tolerance) return show(canvas, v, canvas.view.viewHigh);
    if (v + canvas.view.viewLength > canvas.source.totalLength) return refuse(canvas, Fields_View, badRange);
    return show(canvas, v, v + canvas.view.viewLength);
}

bool commit_view_to(_LaCanvasData& canvas, double typed) {
    const double v = bounded(canvas, typed);
    if (v > canvas.view.viewLow + tolerance) return show(canvas, canvas.view.viewLow, v);
    if (v > canvas.view.viewLength) return show(canvas, v - canvas.view.viewLength, v);
    if (v <= shortestEnd) return refuse(canvas, Fields_View, badRange);
    return show(canvas, 0, v);
}

bool commit_view_length(_LaCanvasData& canvas, double v) {
    const double high = bounded(canvas, canvas.view.viewLow + v);
    if (v <= tolerance || high <= canvas.view.viewLow)
        return refuse(canvas, Fields_View, "View time range is too small.");
    return show(canvas, canvas.view.viewLow, high);
}

bool move(_LaCanvasData& canvas, int which, double time) {
    laCanvas_MoveCursor(canvas, which, time);
    return true;
}

bool commit_selection_from(_LaCanvasData& canvas, double typed) {
    const double v = bounded(canvas, typed);
    const double first = canvas.marks.cursor[0], second = canvas.marks.cursor[1];
    if (second >= 0 && second < v) move(canvas, 1, first < 0 ? v : v + (second - first));
    return move(canvas, 0, v);
}

bool commit_selection_to(_LaCanvasData& canvas, double typed) {
    const double v = bounded(canvas, typed);
    const double first = canvas.marks.cursor[0], second = canvas.marks.cursor[1];
    if (v < first) move(canvas, 0, second < 0 ? v : std::max(0.0, v - (second - first)));
    return move(canvas, 1, v);
}

bool commit_selection_length(_LaCanvasData& canvas, double v) {
    if (canvas.marks.cursor[0] < 0) return refuse(canvas, Fields_Selection, "Invalid time.");
    return move(canvas, 1, bounded(canvas, canvas.marks.cursor[0] + v));
}

// What a length behind a "+" counts from.
double no_start(const _LaCanvasData&) {
    return 0;
}
double view_start(const _LaCanvasData& canvas) {
    return canvas.view.viewLow;
}
double selection_start(const _LaCanvasData& canvas) {
    return std::max(0.0, canvas.marks.cursor[0]);
}

struct Field {
    const char* name;
    int group;
    std::string LaCanvasFields::*text;
    bool (*commit)(_LaCanvasData&, double);
    double (*start)(const _LaCanvasData&);
};

constexpr Field fieldTable[] = {
    {"tf_view_from", Fields_View, &LaCanvasFields::viewFrom, commit_view_from, view_start},
    {"tf_view_to", Fields_View, &LaCanvasFields::viewTo, commit_view_to, view_start},
    {"tf_view_len", Fields_View, &LaCanvasFields::viewLength, commit_view_length, no_start},
    {"tf_sel_from", Fields_Selection, &LaCanvasFields::selFrom, commit_selection_from, selection_start},
    {"tf_sel_to", Fields_Selection, &LaCanvasFields::selTo, commit_selection_to, selection_start},
    {"tf_sel_len", Fields_Selection, &LaCanvasFields::selLength, commit_selection_length, no_start},
};

// A number in the unit shown, or one with its own unit; below 0 for a negative one. None for what is no time.
std::optional<double> typed_time(const _LaCanvasData& canvas, std::string_view text) {
    if (const auto value = scan_double(text))
        return laTime_Convert(canvas.axis.timeMode, *value, Time_Second);
    const bool negative = text.starts_with('-');
    laGotoTarget target;
    if (!laGoto_Parse(canvas, negative ? text.substr(1) : text, target) || target.high) return std::nullopt;
    return negative ? -target.low : target.low;
}

}  // namespace

bool laCanvas_CommitField(_LaCanvasData& canvas, std::string_view name, std::string_view text) {
    for (const Field& field : fieldTable) {
        if (name != field.name) continue;
        if (text == canvas.fields.*field.text) return true;
        std::string_view rest = text_trim(text);
        const bool added = rest.starts_with('+');
        if (added) rest.remove_prefix(1);
        const auto value = typed_time(canvas, rest);
        if (!value) return refuse(canvas, field.group, "Invalid time.");
        if (*value < 0) return refuse(canvas, Fields_View | Fields_Selection, "Invalid time.");
        if (!field.commit(canvas, added ? field.start(canvas) + *value : *value)) return false;
        laCanvas_DropOldMessage(canvas);
        return true;
    }
    return false;
}
