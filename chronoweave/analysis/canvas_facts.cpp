#include "chronoweave/analysis/canvas_facts.h"

#include <algorithm>

#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

AnalysisSource analysis_SourceOfCanvas(const _LaCanvasData& canvas) {
    AnalysisSource source;
    source.store = canvas.source.store.get();
    source.lanes = canvas.source.lanes;
    source.legend = &canvas.looks.legend;
    source.osKind = canvas.source.osKind;
    source.clock = canvas.source.clock;
    source.totalLength = canvas.source.totalLength;
    source.progress = canvas.calls.progress;
    return source;
}

CanvasFacts::CanvasFacts(_LaCanvasData& of) : canvas(of) {
    Take(analysis_SourceOfCanvas(of), of.list.separator.empty() ? '\0' : of.list.separator[0]);
    words.term = of.list.objectTerm;
    words.lowerTerm = of.list.objectTermLower;
    words.timeMode = of.axis.timeMode;
    words.unit = laTime_UnitName(of.axis, true);
}

TimeField::TimeField(DialogModel& model, const TraceFacts& facts, std::string name, std::string text,
                     double value)
    : model_(model), facts_(facts), name_(std::move(name)), filled_(std::move(text)), value_(value) {
    model_.setText(name_, filled_);
}

std::optional<double> TimeField::value() const {
    const std::string& text = model_.item(name_).text;
    return text == filled_ ? value_ : facts_.Scan(text);
}

bool TimeField::IsEmpty() const {
    return text_trim(model_.item(name_).text).empty();
}

void TimeField::Set(std::string text, double value) {
    filled_ = std::move(text);
    value_ = value;
    model_.setText(name_, filled_);
}

std::optional<TimeSpan> analysis_Selection(const _LaCanvasData& canvas) {
    const auto [low, high] = std::minmax(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    if (low < 0 || low == high) return std::nullopt;
    return TimeSpan{low, high};
}

void analysis_ReadyRange(DialogModel& model, const CanvasFacts& facts) {
    model.setEnabled("r_selection", analysis_Selection(facts.canvas).has_value());
}

bool analysis_PressRange(const CanvasFacts& facts, std::string_view button, TimeField& from, TimeField& to) {
    const double end = facts.source.totalLength;
    TimeSpan span{0, end};
    if (button == "r_view")
        span = {facts.canvas.view.viewLow, facts.canvas.view.viewHigh};
    else if (button == "r_selection")
        span = analysis_Selection(facts.canvas).value_or(span);
    else if (button != "r_all")
        return false;
    span.to = std::min(span.to, end);
    span.from = std::min(span.from, span.to);
    from.Set(laTime_TrimZeros(facts.Shown(span.from, 10)), span.from);
    to.Set(laTime_TrimZeros(facts.Shown(span.to, 10)), span.to);
    return true;
}

void analysis_FillObjects(DialogModel& model, std::string_view name, const TraceFacts& facts,
                          const std::vector<uint32_t>& objects, bool always) {
    const AnalysisWords& words = facts.words;
    model.setColumnTitles(name, {words.term + " ID", words.term + " Name"});
    std::vector<DialogRow> rows;
    rows.reserve(objects.size());
    for (const uint32_t object : objects) {
        const std::string* known = facts.names.find(object);
        const std::string id = gen_format("0x%x", object);
        rows.push_back({{id, known ? text_utf8(*known) : always ? words.term + ' ' + id : ""}, object});
    }
    model.setRows(name, std::move(rows));
    MScrollList& list = model.list(name);
    list.SetUnsignedKey(0, [](uint64_t id) { return id; });
    list.nameColumn = 1;
    list.SortBy(0);
}

void analysis_SelectObjects(DialogModel& model, std::string_view list, const std::vector<uint32_t>& objects) {
    if (!objects.empty()) model.setSelectedIds(list, {objects.begin(), objects.end()});
}

std::vector<uint32_t> analysis_SelectedObjects(const DialogModel& model, std::string_view list) {
    std::vector<uint32_t> objects;
    for (const uint64_t id : model.selectedIds(list)) objects.push_back(static_cast<uint32_t>(id));
    return objects;
}
