#include "chronoweave/traxfunc/canvas/texts.h"

#include <algorithm>

#include "chronoweave/traxfunc/model/time.h"

namespace {

constexpr int mostDecimals = 17;

TickScale scale_of(const _LaCanvasData& canvas) {
    return laTime_Scale(canvas.source.clock.ticksPerSecond, canvas.axis.timeMode);
}

// Any time of the time base in the unit shown.
std::string time_digits(const _LaCanvasData& canvas, double time, int precision) {
    return laTime_Digits(scale_of(canvas), laTime_Convert(Time_Second, time, canvas.axis.timeMode),
                         std::clamp(precision, 0, mostDecimals));
}

}  // namespace

std::string laCanvas_ExactTime(const _LaCanvasData& canvas, double time) {
    constexpr int most = 10;
    return tick_Text(scale_of(canvas), laTime_Convert(Time_Second, time, canvas.axis.timeMode), most);
}

std::string laCanvas_TimeText(const _LaCanvasData& canvas, double time) {
    return laTime_TrimZeros(time_digits(canvas, time, canvas.axis.tickDigits + 3));
}

std::string laCanvas_TimeWithUnit(const _LaCanvasData& canvas, double time) {
    const std::string mark = laTime_UnitMark(canvas.axis);
    return laCanvas_TimeText(canvas, time) + (mark.empty() ? "" : " ") + mark;
}

void laCanvas_UpdateFields(_LaCanvasData& canvas, int what, const char* message, laMessageLasts lasts) {
    const int precision = canvas.axis.tickDigits + (canvas.axis.timeMode == Time_Tick ? 1 : 3);
    const auto shown = [&](double time) { return time_digits(canvas, time, precision); };
    LaCanvasFields& fields = canvas.fields;
    if ((what & Fields_View) != 0) {
        fields.viewFrom = shown(canvas.view.viewLow);
        fields.viewTo = shown(canvas.view.viewHigh);
        fields.viewLength = shown(canvas.view.viewLength);
    }
    if ((what & Fields_Selection) != 0 && canvas.marks.cursor[0] >= 0) {
        const bool both = canvas.marks.cursor[1] >= 0;
        const auto [low, high] = std::minmax(canvas.marks.cursor[0], canvas.marks.cursor[1]);
        fields.selFrom = shown(both ? low : canvas.marks.cursor[0]);
        fields.selTo = both ? shown(high) : std::string();
        fields.selLength = both ? shown(high - low) : std::string();
    }
    if (message != nullptr) {
        fields.message = message;
        fields.messageLasts = lasts;
    }
    if (canvas.calls.fieldsChanged) canvas.calls.fieldsChanged();
}

// A live view moves by itself: there the user has time to read.
void laCanvas_DropOldMessage(_LaCanvasData& canvas) {
    if (canvas.fields.messageLasts != laMessageLasts::WithTheView || canvas.source.liveRefresh) return;
    laCanvas_UpdateFields(canvas, 0, "");
}

std::string laCanvas_TotalLengthText(const _LaCanvasData& canvas) {
    static constexpr int least[] = {10, 7, 4, 1, 1, 1};
    const int precision = std::max(canvas.axis.tickDigits, least[canvas.axis.timeMode]);
    return laTime_TrimZeros(time_digits(canvas, canvas.source.totalLength, precision));
}

std::string laCanvas_TotalLengthTitle(const _LaCanvasData& canvas) {
    if (canvas.axis.timeMode == Time_Tick) return "Total Tick Length";
    if (canvas.axis.timeMode == Time_Sequential) return "Total Number of Events";
    return std::string("Total Time Length(in ") + laTime_UnitName(canvas.axis, true) + "s)";
}

void laCanvas_UpdateTotal(_LaCanvasData& canvas) {
    canvas.fields.totalLengthTitle = laCanvas_TotalLengthTitle(canvas);
    canvas.fields.totalLength = laCanvas_TotalLengthText(canvas);
    canvas.fields.tickUnit = laTime_UnitName(canvas.axis, true);
    canvas.fields.unit = laTime_UnitMark(canvas.axis);
    if (canvas.calls.fieldsChanged) canvas.calls.fieldsChanged();
}

void laCanvas_Beep(const _LaCanvasData& canvas) {
    if (canvas.graph->beep) canvas.graph->beep();
}

void laCanvas_Refuse(_LaCanvasData& canvas, std::string_view message) {
    laCanvas_Beep(canvas);
    laCanvas_UpdateFields(canvas, 0, std::string(message).c_str(), laMessageLasts::WithTheView);
}
