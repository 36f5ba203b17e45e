#include "chronoweave/cli/analysis_line.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

bool AnalysisLine::open(int& status) {
    if (!named.openWithLegend(line_, status)) return false;
    Take(analysis_SourceOfStore(named.store(), named.legend), named.separator);
    Result why;
    source.lanes = LaneIndex::Open(named.store(), why);
    if (!why.ok()) cli_Say(why.text() + "; it is not used");
    source.progress = bar_.progress();
    if (line_.ticks) {
        words.inTicks = true;
        words.unit = "Tick";
    }
    const bool taken = takeRange();
    if (!taken) status = refused();
    return taken;
}

bool AnalysisLine::takeRange() {
    from = 0;
    to = source.totalLength;
    for (const auto& [text, option, bound] :
         {std::tuple{&line_.from, "--from", &from}, {&line_.to, "--to", &to}}) {
        if (text->empty()) continue;
        std::optional<double> time;
        if (!line_.ticks)
            time = scan_double(*text);
        else if (const auto tick = scan_number(*text))
            // Ticks are signed, and what is beyond them is behind the last; only "-1" is ahead of tick 0.
            time = source.clock.TimeOf(
                text_trim(*text).front() == '-' ? *tick : std::min<uint64_t>(*tick, INT64_MAX));
        if (!time) {
            cli_UsageError(std::string(option) + ": not a time: " + *text);
            return false;
        }
        *bound = *time;
    }
    return true;
}

namespace {

// Whether a name was found; tells when it was not.
bool found(const Result& name, const char* option) {
    if (!name) cli_UsageError(std::string(option) + ": " + name.text());
    return name.ok();
}

}  // namespace

std::optional<std::vector<uint32_t>> AnalysisLine::objectList(const std::string& text, const char* option,
                                                              bool nameMeansAll) const {
    std::vector<uint32_t> ids;
    for (size_t at = 0; at <= text.size();) {
        const size_t comma = std::min(text.find(',', at), text.size());
        std::vector<uint32_t> some;
        const std::string_view one = text_trim(std::string_view(text).substr(at, comma - at));
        if (!found(analysis_FindObjects(one, objects, names, nameMeansAll, some), option))
            return std::nullopt;
        ids.insert(ids.end(), some.begin(), some.end());
        at = comma + 1;
    }
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return ids;
}

std::optional<SearchRequest> AnalysisLine::request() const {
    SearchRequest request;
    request.rangeFrom = from;
    request.rangeTo = to;
    request.objects = objects;
    if (!line_.objects.empty()) {
        auto ids = objectList(line_.objects, "--objects");
        if (!ids) return std::nullopt;
        request.objects = std::move(*ids);
    }
    return request;
}

std::optional<int32_t> AnalysisLine::event(const std::string& name, const char* option) const {
    int32_t row = 0;
    return found(analysis_FindEvent(named.legend, name, row), option) ? std::optional(row) : std::nullopt;
}

std::optional<int32_t> AnalysisLine::status(const std::string& name, const char* option) const {
    int32_t row = 0;
    return found(analysis_FindStatus(named.legend, name, row), option) ? std::optional(row) : std::nullopt;
}

Cell AnalysisLine::nameOf(uint32_t object) const {
    const std::string* name = names.find(object);
    return name ? Cell(*name) : Cell();
}

Cell AnalysisLine::shownTime(double time) const {
    const mt_Time tick = source.clock.NearestTick(time);
    return line_.ticks ? Cell(tick) : Cell::ticks(static_cast<int64_t>(tick - source.clock.baseTick));
}

Cell AnalysisLine::shownLength(double length) const {
    const auto ticks = static_cast<int64_t>(source.clock.TicksIn(length));
    return line_.ticks ? Cell(ticks) : Cell::ticks(ticks);
}

Cell AnalysisLine::shownMean(double length) const {
    return line_.ticks ? shownLength(length) : Cell(length);
}

std::string AnalysisLine::shownRange(double length) const {
    return line_.ticks ? gen_format("%lld ticks", static_cast<long long>(source.clock.TicksIn(length)))
                       : tick_Text({clock(), 1}, length, CellWriter::mostDecimals) + " seconds";
}

int AnalysisLine::finish(RowWriter& rows, const TimeGap* lost) const {
    const int status = closed(rows, named.opened);
    if (!lost) return status;
    return cli_Failure(line_.path + ": the result lacks what can't be read from " + shownRange(lost->from) +
                       " to " + shownRange(lost->to));
}

int AnalysisLine::refused() const {
    return cli_Refused(named.opened);
}

void AnalysisLine::say(std::string_view message) const {
    if (!line_.quiet) cli_Say(message);
}
