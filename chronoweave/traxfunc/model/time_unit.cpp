#include "chronoweave/traxfunc/model/time_unit.h"

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
    dialog.autoAdjust = (canvas.view.flags & Canvas_AutoAdjustUnit) != 0;
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
    canvas.view.flags = autoAdjust ? canvas.view.flags | Canvas_AutoAdjustUnit
                                   : canvas.view.flags & ~static_cast<uint32_t>(Canvas_AutoAdjustUnit);
    canvas.view.flags |= Canvas_UserUnitChange;
    laCanvas_SetTimeMode(canvas, unit, true);
    canvas.view.flags &= ~static_cast<uint32_t>(Canvas_UserUnitChange);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    return true;
}
