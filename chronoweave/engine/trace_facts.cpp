#include "chronoweave/engine/trace_facts.h"

#include <charconv>
#include <cmath>

#include "chronoweave/engine/time_unit.h"
#include "shared/libcxxutil/text.h"

void TraceFacts::Take(const AnalysisSource& of, char separator) {
    source = of;
    names = ObjectNames(*of.store, separator);
    words = analysis_WordsOfLegend(*of.legend, names, of.clock);
    objects.clear();
    if (mt_GetEventCount(*of.store) > 0) objects = analysis_ObjectsAlive(source, 0, source.totalLength);
}

std::string TraceFacts::Shown(double time, int decimals) const {
    return laTime_Digits(laTime_Scale(words.clock.ticksPerSecond, words.timeMode),
                         analysis_ShownTime(words, time), decimals);
}

std::optional<double> TraceFacts::Scan(std::string_view text) const {
    text = text_trim(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !std::isfinite(value)) return std::nullopt;
    return laTime_Convert(words.timeMode, value, Time_Second);
}

std::string analysis_EndText(const TraceFacts& facts, bool stopped, double reached, const TimeGap* lost) {
    const auto shown = [&facts](double time) { return laTime_TrimZeros(facts.Shown(time, 10)); };
    const std::string unit = ' ' + facts.words.unit + "s.";
    std::string text;
    if (stopped) text = " It was stopped at " + shown(reached) + unit;
    if (lost) text += " The store can't be read from " + shown(lost->from) + " to " + shown(lost->to) + unit;
    return text;
}
