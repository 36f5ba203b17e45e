// What a trace is worth before a rule.
#include <algorithm>
#include <cmath>
#include <map>

#include "chronoweave/engine/report.h"
#include "chronoweave/engine/rules.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/tick_text.h"

namespace {

// A limit is met by a value that misses it by no more than a double's rounding.
constexpr double slack = 1e-12;

// Durations as people read them.
std::string duration_text(double seconds) {
    const double size = std::fabs(seconds);
    const struct {
        double least, factor;
        const char* unit;
    } scales[] = {{1, 1, "s"}, {1e-3, 1e3, "ms"}, {1e-6, 1e6, "us"}, {0, 1e9, "ns"}};
    if (size == 0) return "0 s";
    for (const auto& scale : scales)
        if (size >= scale.least) return gen_format("%.6g %s", seconds * scale.factor, scale.unit);
    return {};
}

std::string value_text(double value, RuleUnit unit) {
    if (unit == RuleUnit::Percent) return gen_format("%.4g%%", value);
    return unit == RuleUnit::Plain ? gen_format("%.0f", value) : duration_text(value);
}

class RuleChecker {
  public:
    RuleChecker(AnalysisSource& source, const TimingRule& rule, const std::vector<uint32_t>& known,
                const AnalysisWords& words)
        : source_(source), rule_(rule), known_(known), words_(words) {}

    RuleOutcome run() {
        const double length = source_.totalLength;
        from_ = rule_.from ? seconds(*rule_.from) : 0;
        to_ = rule_.to ? std::min(seconds(*rule_.to), length) : length;
        if (from_ > length)
            fail("the range begins behind the trace, which ends at " + TimeText(length));
        else if (ObjectsOf(rule_.object, objects_))
            check();
        if (rule_.to && seconds(*rule_.to) > length && from_ <= length)
            outcome_.message += "; the range reaches past the trace, which ends at " + TimeText(length);
        return outcome_;
    }

  private:
    void check() {
        switch (rule_.kind) {
            case RuleKind::Interval:
                return interval();
            case RuleKind::StatusStretch:
                return stretch();
            case RuleKind::StatusTotal:
                return total();
            case RuleKind::Load:
                return load();
            case RuleKind::Count:
                return count();
            case RuleKind::Period:
                return period();
        }
    }
    void fail(const std::string& message) {
        outcome_.passed = false;
        outcome_.message = message;
    }
    // Nothing to measure: a failure, unless the rule allows it.
    void nothing(const std::string& message) {
        outcome_.passed = rule_.orNone;
        outcome_.message = message;
    }
    bool ObjectsOf(const std::string& text, std::vector<uint32_t>& ids) {
        const Result found = analysis_FindObjects(text, known_, *words_.names, true, ids);
        if (!found) fail(found.text());
        return found.ok();
    }
    double seconds(const RuleValue& value) const { return rules_Seconds(value, source_.clock); }
    // The limit in the unit that is measured.
    double limit(const RuleValue& value) const {
        return value.unit == RuleUnit::Ticks ? seconds(value) : value.number;
    }
    std::string TimeText(double time) const {
        constexpr int mostDecimals = 9;
        return tick_Text({static_cast<uint64_t>(source_.clock.ticksPerSecond), 1}, time, mostDecimals) + " s";
    }
    std::string where(double time) const { return " at " + TimeText(time); }
    // The last tick of the range that is known of: the trace ends a tick behind its last event.
    double LastTick() const {
        return std::min({to_, reached_, source_.totalLength - source_.clock.LengthOf(1)});
    }
    static bool IsOutside(double out, double value) { return out > slack * std::max(1.0, std::fabs(value)); }
    std::string of(uint32_t object) const { return " on " + analysis_ObjectText(words_, object); }

    // By how much a value is outside the limits; negative: inside, by how much it is from the nearer one.
    double excess(double value) const {
        double most = -HUGE_VAL;
        if (rule_.most) most = std::max(most, value - limit(*rule_.most));
        if (rule_.least) most = std::max(most, limit(*rule_.least) - value);
        return most;
    }
    std::string wanted() const {
        if (rule_.kind == RuleKind::Period)
            return duration_text(seconds(rule_.period)) + ", jitter " + duration_text(seconds(rule_.jitter));
        const auto text = [this](const RuleValue& value) {
            return value_text(limit(value), value.unit == RuleUnit::Ticks ? RuleUnit::Seconds : value.unit);
        };
        if (rule_.least && rule_.most) return text(*rule_.least) + " to " + text(*rule_.most);
        return rule_.most ? "at most " + text(*rule_.most) : "at least " + text(*rule_.least);
    }
    // Keeps the worst of many values.
    void measure(double value, std::optional<double> time, std::optional<uint32_t> object) {
        keep(value, excess(value), time, object, "");
    }
    // out: by how much the value is outside, negative for inside. note: what is to be said of it as the
    // worst.
    void keep(double value, double out, std::optional<double> time, std::optional<uint32_t> object,
              const char* note) {
        ++measured_;
        if (IsOutside(out, value)) ++outside_;
        if (outcome_.worst && out <= worstExcess_ + slack) return;  // the first of equals
        worstExcess_ = out;
        worstNote_ = note;
        outcome_.worst = value;
        outcome_.time = time;
        outcome_.object = object;
    }
    // "WHAT: worst 3 ms at 1.5 s of 0x12 (net); wanted at most 2 ms; 3 of 40 are outside"
    void conclude(const std::string& what, RuleUnit unit) {
        outcome_.unit = unit;
        outcome_.passed = outside_ == 0 && !outcome_.damaged;
        if (unit == RuleUnit::Seconds) outcome_.worst = source_.clock.WholeLength(*outcome_.worst);
        outcome_.message = what + ' ' + value_text(*outcome_.worst, unit);
        if (outcome_.time) outcome_.message += where(*outcome_.time);
        if (outcome_.object) outcome_.message += of(*outcome_.object);
        outcome_.message += worstNote_;
        if (outside_ > 0) outcome_.message += "; wanted " + wanted();
        if (measured_ > 1) outcome_.message += gen_format("; %zu of %zu are outside", outside_, measured_);
        TellDamage();
    }
    void TellDamage() {
        if (!outcome_.damaged) return;
        outcome_.passed = false;
        outcome_.message +=
            "; the store can't be read from " + TimeText(lost_.from) + " to " + TimeText(lost_.to);
    }
    bool search(SearchRequest request, SearchResult& result) {
        request.rangeFrom = from_;
        request.rangeTo = to_;
        if (!search_Run(source_, std::move(request), result)) return unread();
        outcome_.damaged = result.damaged;
        reached_ = result.reached;
        lost_ = result.lost;
        return true;
    }
    bool unread() {
        fail("the trace has no events");
        return false;
    }

    void interval() {
        SearchRequest request;
        request.kind = Search_Pattern;
        request.target = words_.legend->EventByName(rule_.event);
        request.endTarget = words_.legend->EventByName(rule_.endEvent);
        request.objects = request.beginObjects = request.endObjects = objects_;
        if (rule_.endObject.empty())
            request.flags |= Search_SameObject;
        else if (!ObjectsOf(rule_.endObject, request.endObjects))
            return;
        SearchResult result;
        if (!search(request, result)) return;
        for (const SearchRow& row : result.rows) measure(row.timeB - row.timeA, row.timeA, row.objectA);
        OpenIntervals(result);
        if (measured_ == 0) {
            nothing("no \"" + rule_.event + "\" is followed by \"" + rule_.endEvent + '"');
            return TellDamage();
        }
        conclude("the worst interval is", RuleUnit::Seconds);
    }
    // A begin whose end has not come within the maximum is as bad as an end that came too late.
    void OpenIntervals(const SearchResult& result) {
        if (!rule_.most) return;
        for (const SearchRow& row : result.open) {
            const double length = LastTick() - row.timeA, out = length - limit(*rule_.most);
            if (IsOutside(out, length))
                keep(length, out, row.timeA, row.objectA, ", and has no end in the range");
        }
    }
    // A status that no object is ever in is never held too long.
    void stretch() {
        SearchRequest request;
        request.kind = Search_Status;
        request.target = words_.legend->StatusByName(rule_.status);
        request.objects = objects_;
        SearchResult result;
        if (!search(request, result)) return;
        for (const SearchRow& row : result.rows) measure(row.timeB - row.timeA, row.timeA, row.objectA);
        if (measured_ == 0) {
            outcome_.passed = true;
            outcome_.message = "the status does not occur";
            return TellDamage();
        }
        conclude("the worst stretch is", RuleUnit::Seconds);
    }
    void total() {
        SearchRequest request;
        request.kind = Search_Status;
        request.target = words_.legend->StatusByName(rule_.status);
        if (!figures(request)) return;
        const bool share = (rule_.most ? rule_.most : rule_.least)->unit == RuleUnit::Percent;
        const double length = report_.RangeLength();
        for (const ObjectFigures& figures : report_.figures)
            measure(share ? (length > 0 ? 100 * figures.time / length : 0) : figures.time, std::nullopt,
                    figures.object);
        conclude("the worst is", share ? RuleUnit::Percent : RuleUnit::Seconds);
    }
    void count() {
        SearchRequest request;
        request.kind = Search_Event;
        request.target = words_.legend->EventByName(rule_.event);
        if (!figures(request)) return;
        measure(static_cast<double>(report_.totalCount), std::nullopt,
                objects_.size() == 1 ? std::optional(objects_[0]) : std::nullopt);
        conclude("counted", RuleUnit::Plain);
    }
    bool figures(SearchRequest& request) {
        request.objects = objects_;
        request.rangeFrom = from_;
        request.rangeTo = to_;
        if (report_ChosenObjects(source_, request, {}, report_) != ReportOutcome::Done) return unread();
        outcome_.damaged = report_.damaged;
        reached_ = report_.rangeTo;
        lost_ = report_.lost;
        return true;
    }
    void load() {
        std::vector<uint32_t> idle;
        for (const std::string& text : rule_.without) {
            std::vector<uint32_t> some;
            if (!ObjectsOf(text, some)) return;
            idle.insert(idle.end(), some.begin(), some.end());
        }
        LoadReport report;
        if (report_ProcessorLoad(source_, idle, from_, to_, report) != ReportOutcome::Done) {
            unread();
            return;
        }
        outcome_.damaged = report.damaged;
        reached_ = report.rangeTo;
        lost_ = report.lost;
        uint32_t worst = 0;
        for (const ProcessorLoad& one : report.processors) {
            if (rule_.processor && *rule_.processor != one.processor) continue;
            const double before = worstExcess_;
            measure(report.RangeLength() > 0 ? 100 * one.busy / report.RangeLength() : 0, std::nullopt,
                    std::nullopt);
            if (measured_ == 1 || worstExcess_ > before) worst = one.processor;
        }
        if (measured_ == 0)
            return fail(gen_format("no object belongs to processor %u", rule_.processor.value_or(0)));
        conclude(gen_format("the load of processor %u is", worst), RuleUnit::Percent);
    }
    void period() {
        SearchRequest request;
        request.kind = Search_Event;
        request.target = words_.legend->EventByName(rule_.event);
        request.objects = objects_;
        SearchResult result;
        if (!search(request, result)) return;
        const double wanted = seconds(rule_.period), jitter = seconds(rule_.jitter);
        std::map<uint32_t, double> last;
        for (const SearchRow& row : result.rows) {
            const auto [at, fresh] = last.try_emplace(row.objectA, row.timeA);
            if (fresh) continue;
            const double gap = row.timeA - at->second;
            keep(gap, std::fabs(gap - wanted) - jitter, at->second, row.objectA, "");
            at->second = row.timeA;
        }
        // A period that stops: the next event should have come by now.
        for (const auto& [object, time] : last) {
            const double gap = LastTick() - time, out = gap - wanted - jitter;
            if (IsOutside(out, gap)) keep(gap, out, time, object, ", and no further one comes in the range");
        }
        if (measured_ == 0) {
            nothing("\"" + rule_.event + "\" does not occur twice on one object");
            return TellDamage();
        }
        conclude("the worst period is", RuleUnit::Seconds);
    }

    AnalysisSource& source_;
    const TimingRule& rule_;
    const std::vector<uint32_t>& known_;
    const AnalysisWords& words_;
    double from_ = 0, to_ = 0, reached_ = 0;
    TimeGap lost_;
    std::vector<uint32_t> objects_;
    ChosenReport report_;
    size_t measured_ = 0, outside_ = 0;
    double worstExcess_ = 0;
    std::string worstNote_;
    RuleOutcome outcome_;
};

}  // namespace

RuleOutcome rules_Check(AnalysisSource& source, const TimingRule& rule, const std::vector<uint32_t>& known,
                        const AnalysisWords& words) {
    return RuleChecker(source, rule, known, words).run();
}
