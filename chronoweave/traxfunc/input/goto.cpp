#include "chronoweave/traxfunc/input/goto.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr TimeMode unitOfTicks = Time_Tick;

struct Unit {
    const char* name;
    TimeMode mode;
};
constexpr Unit unitTable[] = {
    {"s", Time_Second},
    {"sec", Time_Second},
    {"second", Time_Second},
    {"seconds", Time_Second},
    {"ms", Time_Millisecond},
    {"millisecond", Time_Millisecond},
    {"us", Time_Microsecond},
    {"\xC2\xB5s", Time_Microsecond},
    {"\xCE\xBCs", Time_Microsecond},
    {"ns", Time_Nanosecond},
    {"nanosecond", Time_Nanosecond},
    {"milliseconds", Time_Millisecond},
    {"t", unitOfTicks},
    {"tick", unitOfTicks},
    {"ticks", unitOfTicks},
    {"microsecond", Time_Microsecond},
    {"microseconds", Time_Microsecond},
    {"nanoseconds", Time_Nanosecond},
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

class Scanner {
  public:
    Scanner(const _LaCanvasData& canvas, std::string_view text) : canvas_(canvas), rest_(text_trim(text)) {}

    bool AtEnd() {
        rest_ = text_trim(rest_);
        return rest_.empty();
    }

    // A number and its unit, as a time of the time base.
    Result Time(double& time) {
        rest_ = text_trim(rest_);
        if (!rest_.empty() && rest_[0] == '-') return Result::failure("A time can't be negative.");
        const size_t length = NumberLength();
        const auto value = scan_double(rest_.substr(0, length));
        if (length == 0 || !value)
            return Result::failure("\"" + std::string(rest_) + "\" doesn't begin with a number.");
        rest_.remove_prefix(length);
        rest_ = text_trim(rest_);
        const size_t end = UnitLength();
        std::string_view name = rest_.substr(0, end);
        // "to" stands between two times.
        if (text_equal_nocase(name, "to")) name = {};
        rest_.remove_prefix(name.size());
        return InTimeBase(*value, name, time);
    }

    // What stands between two times; '+' or ' '.
    char Between() {
        rest_ = text_trim(rest_);
        if (rest_[0] == '+') return Skip(1), '+';
        if (rest_.substr(0, 2) == "..") return Skip(2), ' ';
        if (rest_[0] == ',' || rest_[0] == '-') return Skip(1), ' ';
        if (text_starts_nocase(rest_, "to")) Skip(2);
        return ' ';
    }

  private:
    void Skip(size_t count) { rest_.remove_prefix(count); }

    // Digits with at most one point, unless ".." follows, and an exponent only with digits of its own: the
    // "+" behind "1e" would begin a length.
    size_t NumberLength() const {
        size_t at = 0;
        const auto digits = [&] {
            while (at < rest_.size() && is_digit(rest_[at])) ++at;
        };
        digits();
        if (at < rest_.size() && rest_[at] == '.' && rest_.substr(at, 2) != "..") {
            ++at;
            digits();
        }
        if (at > 0 && at < rest_.size() && (rest_[at] == 'e' || rest_[at] == 'E')) {
            size_t power = at + 1;
            if (power < rest_.size() && (rest_[power] == '-' || rest_[power] == '+')) ++power;
            if (power < rest_.size() && is_digit(rest_[power])) {
                at = power;
                digits();
            }
        }
        return at;
    }
    size_t UnitLength() const {
        size_t at = 0;
        while (at < rest_.size() && ((text_lower(rest_[at]) >= 'a' && text_lower(rest_[at]) <= 'z') ||
                                     (static_cast<unsigned char>(rest_[at]) & 0x80) != 0))
            ++at;
        return at;
    }

    Result InTimeBase(double value, std::string_view name, double& time) {
        if (name.empty()) {
            time = laTime_Convert(canvas_.axis.timeMode, value, Time_Second);
            return {};
        }
        for (const Unit& unit : unitTable) {
            if (!text_equal_nocase(name, unit.name)) continue;
            const bool ticks = unit.mode == unitOfTicks;
            if (ticks && canvas_.axis.timeMode == Time_Sequential)
                return Result::failure("A trace in sequence numbers has no ticks.");
            if (!ticks && canvas_.axis.timeMode >= Time_Tick)
                return Result::failure("\"" + std::string(name) +
                                       "\": this trace has no clock, only a count.");
            time =
                ticks ? canvas_.source.clock.LengthOf(value) : laTime_Convert(unit.mode, value, Time_Second);
            return {};
        }
        return Result::failure("\"" + std::string(name) + "\" is no unit; use s, ms, us, ns or ticks.");
    }

    const _LaCanvasData& canvas_;
    std::string_view rest_;
};

bool refuse(_LaCanvasData& canvas, const std::string& why) {
    laCanvas_Refuse(canvas, why);
    return false;
}

}  // namespace

Result laGoto_Parse(const _LaCanvasData& canvas, std::string_view text, laGotoTarget& target) {
    target = {};
    Scanner scanner(canvas, text);
    if (scanner.AtEnd()) return Result::failure("No time was given.");
    if (Result read = scanner.Time(target.low); !read || scanner.AtEnd()) return read;
    const bool length = scanner.Between() == '+';
    double second = 0;
    if (Result read = scanner.Time(second); !read) return read;
    if (!scanner.AtEnd()) return Result::failure("There is more than two times.");
    target.high = length ? target.low + second : second;
    if (*target.high > target.low) return {};
    return Result::failure(length ? "A length must be greater than 0." : "The end is not behind the start.");
}

bool laCanvas_GotoText(_LaCanvasData& canvas, std::string_view text) {
    laGotoTarget target;
    if (const Result read = laGoto_Parse(canvas, text, target); !read) return refuse(canvas, read.text());
    if (!canvas.source.storeHasEvents) return refuse(canvas, "There is nothing to go to.");
    if (target.low > canvas.source.totalLength)
        return refuse(canvas, "The trace ends at " + laCanvas_TimeText(canvas, canvas.source.totalLength) +
                                  " " + laTime_UnitName(canvas.axis, true) + "s.");
    if (target.high && *target.high > 2 * canvas.source.totalLength)
        target.high = std::max(canvas.source.totalLength, target.low);
    if (target.high) return laCanvas_Zoom(canvas, target.low, *target.high);
    const double low = std::max(0.0, target.low - canvas.view.viewLength / 2);
    return laCanvas_Zoom(canvas, low, low + canvas.view.viewLength);
}
