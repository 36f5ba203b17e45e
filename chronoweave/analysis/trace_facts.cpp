#include "chronoweave/analysis/trace_facts.h"

#include <charconv>
#include <cmath>

#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

TraceFacts::TraceFacts(_LaCanvasData& of)
    : canvas(of),
      source(analysis_SourceOfCanvas(of)),
      names(*of.source.store, of.list.separator.empty() ? '\0' : of.list.separator[0]),
      words(analysis_WordsOfCanvas(of, names)) {
    if (mt_GetEventCount(*of.source.store) > 0)
        objects = analysis_ObjectsAlive(source, 0, source.totalLength);
}

std::string TraceFacts::shown(double time, int decimals) const {
    return laTime_Digits(laTime_Scale(words.clock, words.timeMode), analysis_ShownTime(words, time),
                         decimals);
}

std::optional<double> TraceFacts::scan(std::string_view text) const {
    text = text_trim(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
    return laTime_Convert(words.timeMode, value, Time_Second);
}

TimeField::TimeField(DialogModel& model, const TraceFacts& facts, std::string name, std::string text,
                     double value)
    : model_(model), facts_(facts), name_(std::move(name)), filled_(std::move(text)), value_(value) {
    model_.setText(name_, filled_);
}

std::optional<double> TimeField::value() const {
    const std::string& text = model_.item(name_).text;
    return text == filled_ ? value_ : facts_.scan(text);
}

bool TimeField::isEmpty() const {
    return text_trim(model_.item(name_).text).empty();
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

std::vector<uint32_t> analysis_SelectedObjects(const DialogModel& model, std::string_view list) {
    std::vector<uint32_t> objects;
    for (const uint64_t id : model.selectedIds(list)) objects.push_back(static_cast<uint32_t>(id));
    return objects;
}

std::string analysis_EndText(const TraceFacts& facts, bool stopped, double reached, const TimeGap* lost) {
    const auto shown = [&facts](double time) { return laTime_TrimZeros(facts.shown(time, 10)); };
    const std::string unit = ' ' + facts.words.unit + "s.";
    std::string text;
    if (stopped) text = " It was stopped at " + shown(reached) + unit;
    if (lost) text += " The store can't be read from " + shown(lost->from) + " to " + shown(lost->to) + unit;
    return text;
}
