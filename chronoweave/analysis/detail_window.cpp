#include "chronoweave/analysis/detail_window.h"

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

void DetailWindow::Say(const std::string& message) {
    model_.setMessage(message);
    laCanvas_UpdateFields(canvas_, 0, message.c_str());
}

void DetailWindow::Refuse(const std::string& message) {
    model_.setMessage(message);
    laCanvas_Refuse(canvas_, message);
}

std::string DetailWindow::ObjectText(uint32_t object) const {
    std::string id = gen_format("0x%x", object);
    const uint32_t at = canvas_.items.laneIndex.find(object);
    if (at == laNoLane || !canvas_.items.lanes[at].hasName) return id;
    return id + " (" + text_utf8(laTask_WithoutFake(canvas_.items.lanes[at].name)) + ")";
}

std::string DetailWindow::TimeText(double time) const {
    return laTip_Time(canvas_, time) + " " + laTime_UnitName(canvas_.axis, true);
}

std::string detail_CanvasTitle(const _LaCanvasData& canvas, const char* unnamed) {
    return canvas.source.canvasName.empty() ? unnamed : canvas.source.canvasName;
}
