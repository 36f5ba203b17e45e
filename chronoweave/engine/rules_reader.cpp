// From the text of a file of rules to the rules.
#include <algorithm>
#include <cmath>

#include "chronoweave/engine/rules.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/text.h"

namespace {

struct Token {
    enum Kind { Word, Text, Symbol, End } kind = End;
    std::string text;
};

// Cuts a line into words, quoted texts, and the symbols "->", "..", ",". A '#' ahead of a word begins a
// comment.
Result cut(std::string_view line, std::vector<Token>& tokens, size_t& length) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    size_t at = 0;
    const auto symbol = [&](size_t where) -> std::string_view {
        for (const std::string_view one : {"->", "..", ","})
            if (line.substr(where, one.size()) == one) return one;
        return {};
    };
    length = 0;
    while (at < line.size()) {
        if (isBlank(line[at])) {
            ++at;
            continue;
        }
        if (line[at] == '#') break;
        if (const std::string_view one = symbol(at); !one.empty()) {
            tokens.push_back({Token::Symbol, std::string(one)});
            at += one.size();
        } else if (line[at] == '"') {
            size_t close = at + 1;
            while (close < line.size() && line[close] != '"') close += line[close] == '\\' ? 2 : 1;
            if (close >= line.size()) return Result::failure("a text in double quotes does not end");
            tokens.push_back({Token::Text, text_unquote(line.substr(at, close + 1 - at))});
            at = close + 1;
        } else {
            const size_t start = at;
            while (at < line.size() && !isBlank(line[at]) && line[at] != '"' && symbol(at).empty()) ++at;
            tokens.push_back({Token::Word, std::string(line.substr(start, at - start))});
        }
        length = at;
    }
    tokens.push_back({});
    return {};
}

struct Unit {
    const char* name;
    double seconds;  // 0 for no time
    RuleUnit unit;
};
constexpr Unit units[] = {{"s", 1, RuleUnit::Seconds},     {"ms", 1e-3, RuleUnit::Seconds},
                          {"us", 1e-6, RuleUnit::Seconds}, {"ns", 1e-9, RuleUnit::Seconds},
                          {"ticks", 0, RuleUnit::Ticks},   {"tick", 0, RuleUnit::Ticks},
                          {"%", 0, RuleUnit::Percent}};

const Unit* find_unit(std::string_view name) {
    for (const Unit& unit : units)
        if (text_equal_nocase(unit.name, name)) return &unit;
    return nullptr;
}

// One rule out of its tokens. Every step is false once something did not fit, which is then told.
class RuleReader {
  public:
    RuleReader(const std::vector<Token>& tokens, TimingRule& rule) : tokens_(tokens), rule_(rule) {}

    Result read() {
        if (head() && clauses()) whole();
        return trouble_;
    }

  private:
    const Token& next() const { return tokens_[at_]; }
    bool fail(const std::string& text) {
        if (trouble_) trouble_ = Result::failure(text);
        return false;
    }
    bool expected(const std::string& what) {
        return fail("expected " + what +
                    (next().kind == Token::End ? " at the end of the line" : ", not \"" + next().text + '"'));
    }
    bool take(std::string_view word) {
        if (next().kind == Token::Text || next().kind == Token::End || !text_equal_nocase(next().text, word))
            return false;
        ++at_;
        return true;
    }
    bool need(std::string_view word) { return take(word) || expected('"' + std::string(word) + '"'); }
    bool name(std::string& into, const char* what) {
        if (next().kind != Token::Text) return expected(std::string(what) + " in double quotes");
        if (next().text.empty()) return fail(std::string("the name of ") + what + " is empty");
        into = next().text;
        ++at_;
        return true;
    }
    bool object(std::string& into) {
        if (next().kind != Token::Text && next().kind != Token::Word)
            return expected("an object: an id, a name, or *");
        into = next().text;
        ++at_;
        return !into.empty() || fail("the name of an object is empty");
    }
    bool value(RuleValue& into, const char* what) {
        if (next().kind != Token::Word) return expected(what);
        const std::string word = next().text;
        size_t digits = 0;
        while (digits < word.size() && (word[digits] == '.' || (word[digits] >= '0' && word[digits] <= '9')))
            ++digits;
        const auto number = scan_double(word.substr(0, digits));
        if (!number || !std::isfinite(*number)) return expected(what);
        ++at_;
        std::string unit = word.substr(digits);
        if (unit.empty() && next().kind == Token::Word && find_unit(next().text)) unit = tokens_[at_++].text;
        into = {*number, RuleUnit::Plain};
        if (unit.empty()) return true;
        const Unit* found = find_unit(unit);
        if (!found) return fail("\"" + unit + "\" is no unit; there are s, ms, us, ns, ticks and %");
        into = {found->seconds > 0 ? *number * found->seconds : *number, found->unit};
        return true;
    }
    bool time(RuleValue& into, const char* what) {
        if (!value(into, what)) return false;
        if (into.unit == RuleUnit::Seconds || into.unit == RuleUnit::Ticks || into.number == 0) return true;
        return fail(std::string(what) + " needs a unit of time: s, ms, us, ns or ticks");
    }

    bool head() {
        if (take("interval"))
            return kind(RuleKind::Interval) && name(rule_.event, "an event") && need("->") &&
                   name(rule_.endEvent, "an event");
        if (take("status"))
            return kind(RuleKind::StatusTotal) && name(rule_.status, "a status") && need("of") &&
                   object(rule_.object);
        if (take("load")) return kind(RuleKind::Load) && need("of") && need("processor") && processor();
        if (take("count")) return kind(RuleKind::Count) && need("of") && name(rule_.event, "an event");
        if (take("period")) return kind(RuleKind::Period) && need("of") && name(rule_.event, "an event");
        return expected("interval, status, load, count or period");
    }
    bool kind(RuleKind kind) {
        rule_.kind = kind;
        return true;
    }
    bool processor() {
        if (take("*")) return true;
        const auto number = next().kind == Token::Word ? scan_number(next().text) : std::nullopt;
        if (!number || *number > mt_GroupMask) return expected("the number of a processor, or *");
        rule_.processor = static_cast<uint32_t>(*number);
        ++at_;
        return true;
    }

    bool clauses() {
        while (next().kind != Token::End)
            if (!clause()) return false;
        return true;
    }
    bool clause() {
        const bool events = rule_.kind == RuleKind::Interval || rule_.kind == RuleKind::Count ||
                            rule_.kind == RuleKind::Period;
        if (take("in")) return range();
        if (take("or")) return need("none") && (rule_.orNone = true);
        if (events && take("on")) return object(rule_.object);
        if (rule_.kind == RuleKind::Interval && take("from"))
            return object(rule_.object) && need("to") && object(rule_.endObject);
        if (rule_.kind == RuleKind::Load && take("without")) return without();
        if (rule_.kind == RuleKind::StatusTotal && take("never")) {
            rule_.kind = RuleKind::StatusStretch;
            return need("longer") && need("than") && bound(rule_.most);
        }
        if (rule_.kind == RuleKind::Period && take("jitter")) return time(rule_.jitter, "a jitter");
        if (rule_.kind == RuleKind::Period) return period();
        return bounds();
    }
    bool period() {
        if (periodGiven_) return expected("jitter, on or in");
        periodGiven_ = true;
        return time(rule_.period, "a period") &&
               (rule_.period.number > 0 || fail("a period must be longer than 0"));
    }
    bool bounds() {
        if (take("max")) return bound(rule_.most);
        if (take("min")) return bound(rule_.least);
        if (take("between")) return bound(rule_.least) && need("and") && bound(rule_.most);
        if (take("exactly")) return bound(rule_.least) && (rule_.most = rule_.least, true);
        if (take("at")) {
            if (take("most")) return bound(rule_.most);
            return take("least") ? bound(rule_.least) : expected("\"most\" or \"least\"");
        }
        return expected("a limit (max, min, at most, at least, between), or in");
    }
    bool bound(std::optional<RuleValue>& into) {
        if (into) return fail("the limit is given twice");
        RuleValue given;
        if (rule_.kind == RuleKind::Count) {
            if (!value(given, "a number")) return false;
            if (given.unit != RuleUnit::Plain || given.number != std::floor(given.number))
                return fail("a count is a whole number");
        } else if (rule_.kind == RuleKind::Load) {
            if (!value(given, "a share in %")) return false;
            if (given.unit != RuleUnit::Percent) return fail("a load is given in %");
        } else if (rule_.kind == RuleKind::StatusTotal) {
            if (!value(given, "a time, or a share in %")) return false;
            if (given.unit == RuleUnit::Plain && given.number != 0)
                return fail("a limit needs a unit: s, ms, us, ns, ticks or %");
        } else if (!time(given, "a limit")) {
            return false;
        }
        into = given;
        return true;
    }
    bool range() {
        RuleValue end;
        if (rule_.from) return fail("the range is given twice");
        rule_.from.emplace();
        if (!time(*rule_.from, "the range's start") || !need("..")) return false;
        // "2s.." reaches to the end of the trace.
        if (next().kind != Token::Word || next().text[0] < '0' || next().text[0] > '9') return true;
        if (!time(end, "the range's end")) return false;
        rule_.to = end;
        const bool clock = (end.unit == RuleUnit::Ticks) != (rule_.from->unit == RuleUnit::Ticks);
        if (!clock || !(end.number > 0))
            trouble_ = result_First(trouble_, rules_FitsClock(rule_, TimeBase{}));
        return trouble_.ok();
    }
    bool without() {
        do {
            rule_.without.emplace_back();
            if (!object(rule_.without.back())) return false;
        } while (take(","));
        return true;
    }
    bool whole() {
        if (rule_.kind == RuleKind::Period) return periodGiven_ || expected("a period");
        if (!rule_.least && !rule_.most) return expected("a limit");
        if (rule_.least && rule_.most &&
            (rule_.least->unit == RuleUnit::Percent) != (rule_.most->unit == RuleUnit::Percent))
            return fail("one limit is a time and the other a share");
        if (rule_.least && rule_.most && rule_.least->unit == rule_.most->unit &&
            rule_.least->number > rule_.most->number)
            return fail("the lower limit is above the upper one");
        return true;
    }

    const std::vector<Token>& tokens_;
    TimingRule& rule_;
    Result trouble_;
    size_t at_ = 0;
    bool periodGiven_ = false;
};

}  // namespace

std::vector<TimingRule> rules_Read(std::string_view text, std::vector<RuleProblem>& problems) {
    std::vector<TimingRule> rules;
    size_t number = 0;
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    for (std::string_view line; text_next_line(text, line);) {
        ++number;
        TimingRule rule;
        rule.line = number;
        std::vector<Token> tokens;
        size_t length = 0;
        if (const Result whole = cut(line, tokens, length); !whole) {
            problems.push_back({number, whole.text()});
            continue;
        }
        if (tokens.size() == 1) continue;
        rule.text = text_trim(line.substr(0, length));
        if (const Result read = RuleReader(tokens, rule).read(); !read)
            problems.push_back({number, read.text()});
        else
            rules.push_back(std::move(rule));
    }
    return rules;
}

Result rules_FitsLegend(const TimingRule& rule, const Legend& legend) {
    int32_t row = 0;
    for (const std::string* event : {&rule.event, &rule.endEvent}) {
        if (event->empty()) continue;
        if (Result found = analysis_FindEvent(legend, *event, row); !found) return found;
    }
    return rule.status.empty() ? Result() : analysis_FindStatus(legend, rule.status, row);
}

double rules_Seconds(const RuleValue& value, const TimeBase& clock) {
    return value.unit == RuleUnit::Ticks ? clock.LengthOf(value.number) : value.number;
}

Result rules_FitsClock(const TimingRule& rule, const TimeBase& clock) {
    if (!rule.from || !rule.to) return {};
    if (rules_Seconds(*rule.from, clock) <= rules_Seconds(*rule.to, clock)) return {};
    return Result::failure("the range ends before it begins");
}
