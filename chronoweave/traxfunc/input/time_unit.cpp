#include "chronoweave/traxfunc/input/time_unit.h"

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/model/time.h"

namespace {

constexpr int autoAdjustCode = 10;

}  // namespace

bool laTimeUnit_Refused(_LaCanvasData& canvas) {
    if (canvas.axis.timeMode < Time_Tick) return false;
    laCanvas_Refuse(canvas, canvas.axis.timeMode == Time_Sequential
                                ? "You can't change Sequential into other unit."
                                : "Cannot change tick into other units.");
    return true;
}

std::optional<laTimeUnitDialog> laTimeUnit_Open(_LaCanvasData& canvas) {
    if (laTimeUnit_Refused(canvas)) return std::nullopt;
    laTimeUnitDialog dialog;
    dialog.units = {"Second", "Millisecond", "Microsecond", "Nanosecond"};
    dialog.unit = canvas.axis.timeMode;
    dialog.autoAdjust = canvas.axis.autoAdjustUnit;
    return dialog;
}

int laTimeUnit_Result(const laTimeUnitDialog& dialog) {
    return dialog.unit + (dialog.autoAdjust ? autoAdjustCode : 0);
}

bool laTimeUnit_Apply(_LaCanvasData& canvas, int result) {
    const bool autoAdjust = result >= autoAdjustCode;
    const int unit = autoAdjust ? result - autoAdjustCode : result;
    if (unit < Time_Second || unit > Time_Nanosecond) return false;
    if (laTimeUnit_Refused(canvas)) return false;
    canvas.axis.autoAdjustUnit = autoAdjust;
    laCanvas_SetTimeMode(canvas, static_cast<TimeMode>(unit));
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    return true;
}

void laCanvas_SetTimeMode(_LaCanvasData& canvas, TimeMode mode) {
    if (mode == canvas.axis.timeMode) return;
    if (mode == Time_Sequential || canvas.axis.timeMode == Time_Sequential) {
        laCanvas_Refuse(canvas, "Can't change unit into or from SEQUENTIAL mode.");
        return;
    }
    canvas.axis.timeMode = mode;
    laAxis_Draw(canvas, 0, canvas.graph->width, laUnitRule::Keep);
    laCanvas_UpdateTotal(canvas);
}

void laCanvas_NextTimeMode(_LaCanvasData& canvas) {
    if (laTimeUnit_Refused(canvas)) return;
    laCanvas_SetTimeMode(canvas, laTime_NextUnit(canvas.axis.timeMode));
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
}
