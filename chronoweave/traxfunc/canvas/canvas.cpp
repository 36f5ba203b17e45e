#include "chronoweave/traxfunc/canvas/canvas.h"

#include "chronoweave/traxfunc/fetch/range_fetch.h"
#include "chronoweave/traxfunc/list/task_list.h"

_LaCanvasData::_LaCanvasData(LaGraph& place)
    : graph(&place), taskList(std::make_unique<TraxTaskList>(items, list, source, looks, axis)) {}

_LaCanvasData::~_LaCanvasData() {
    gate_Program().Forget(this);
    graph->horizontal.onChange = nullptr;
    graph->vertical.onChange = nullptr;
}

int laCanvas_TimeToPixel(const _LaCanvasData& canvas, double value, TimeMode mode) {
    if (canvas.axis.timeMode != Time_Sequential) value = laTime_Convert(mode, value, Time_Second);
    return canvas.scene().scale().ToPixel(value);
}
