#include "chronoweave/traxfunc/model/time.h"

#include <algorithm>

#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/model/time_unit.h"
#include "shared/libcxxutil/report.h"

double laTime_Convert(int from, double value, int to) {
    if (from >= Time_Tick || to >= Time_Tick || from == to) return value;
    for (; from > to; --from) value /= 1000.0;
    for (; from < to; ++from) value *= 1000.0;
    return value;
}

int laCanvas_TimeToPixel(const _LaCanvasData& canvas, double value, int mode) {
    if (canvas.axis.timeMode != Time_Sequential) value = laTime_Convert(mode, value, Time_Second);
    return laTimeScale(canvas).toPixel(value);
}

double laCanvas_PixelToUnit(const _LaCanvasData& canvas, int x) {
    return laTime_Convert(Time_Second, x / canvas.view.pixelsPerUnit + canvas.view.viewLow,
                          canvas.axis.timeMode);
}

uint64_t laCanvas_AbsolutePixel(const _LaCanvasData& canvas, double time) {
    const double pixel = time * canvas.view.pixelsPerUnit + 0.5;
    if (!(pixel > 0)) return 0;
    return pixel >= 18446744073709551615.0 ? UINT64_MAX : static_cast<uint64_t>(pixel);
}

double laCanvas_AbsoluteTime(const _LaCanvasData& canvas, uint64_t pixel) {
    const double whole =
        static_cast<double>(pixel & 0xFFFFFFFFu) + static_cast<double>(pixel >> 32) * 4294967296.0;
    return whole / canvas.view.pixelsPerUnit;
}

const char* laTime_UnitName(const _LaCanvasData& canvas, bool longForm) {
    switch (canvas.axis.timeMode) {
        case Time_Sequential:
            return "Seq#";
        case Time_Tick:
            return "Tick";
        case Time_Millisecond:
            return longForm ? "Millisecond" : "Second";
        case Time_Microsecond:
            return longForm ? "Microsecond" : "Second";
        case Time_Nanosecond:
            return longForm ? "Nanosecond" : "Second";
        default:
            return "Second";
    }
}

std::string laTime_TrimZeros(std::string text) {
    if (text.find('.') != std::string::npos) {
        while (!text.empty() && (text.back() == '0' || text.back() == ' ')) text.pop_back();
        if (!text.empty() && text.back() == '.') text.pop_back();
    }
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
    return text;
}

std::string laTime_Text(const _LaCanvasData& canvas, double time) {
    return laTime_TrimZeros(gen_format("%.*f", canvas.axis.tickDigits + 3,
                                       laTime_Convert(Time_Second, time, canvas.axis.timeMode)));
}

void laCanvas_SetTimeMode(_LaCanvasData& canvas, int mode, bool redraw) {
    if (mode == canvas.axis.timeMode) return;
    if (mode == Time_Sequential || canvas.axis.timeMode == Time_Sequential) {
        laCanvas_Refuse(canvas, "Can't change unit into or from SEQUENTIAL mode.");
        return;
    }
    canvas.axis.timeMode = mode;
    if (redraw) laAxis_Draw(canvas, 0, canvas.graph->width);
    laCanvas_UpdateTotal(canvas);
}

void laCanvas_NextTimeMode(_LaCanvasData& canvas) {
    if (laTimeUnit_Refused(canvas)) return;
    canvas.view.flags |= Canvas_UserUnitChange;
    laCanvas_SetTimeMode(canvas, (canvas.axis.timeMode + 1) % 4, true);
    canvas.view.flags &= ~Canvas_UserUnitChange;
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
}

void laCanvas_UpdateFields(_LaCanvasData& canvas, int what, const char* message) {
    const int precision = std::max(0, canvas.axis.tickDigits + (canvas.axis.timeMode == Time_Tick ? 1 : 3));
    const auto shown = [&](double time) {
        return gen_format("%.*f", precision, laTime_Convert(Time_Second, time, canvas.axis.timeMode));
    };
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
    if (message != nullptr) fields.message = message;
    if (canvas.calls.fieldsChanged) canvas.calls.fieldsChanged();
}

std::string laCanvas_TotalLengthText(const _LaCanvasData& canvas) {
    static constexpr int least[] = {10, 7, 4, 1, 1, 1};
    const int precision = std::max(canvas.axis.tickDigits, least[canvas.axis.timeMode]);
    return laTime_TrimZeros(gen_format(
        "%.*f", precision, laTime_Convert(Time_Second, canvas.source.totalLength, canvas.axis.timeMode)));
}

std::string laCanvas_TotalLengthTitle(const _LaCanvasData& canvas) {
    if (canvas.axis.timeMode == Time_Tick) return "Total Tick Length";
    if (canvas.axis.timeMode == Time_Sequential) return "Total Number of Events";
    return std::string("Total Time Length(in ") + laTime_UnitName(canvas, true) + "s)";
}

void laCanvas_UpdateTotal(_LaCanvasData& canvas) {
    canvas.fields.totalLengthTitle = laCanvas_TotalLengthTitle(canvas);
    canvas.fields.totalLength = laCanvas_TotalLengthText(canvas);
    canvas.fields.tickUnit = laTime_UnitName(canvas, true);
    if (canvas.calls.fieldsChanged) canvas.calls.fieldsChanged();
}
