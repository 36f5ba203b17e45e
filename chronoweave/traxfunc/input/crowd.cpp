#include "chronoweave/traxfunc/input/crowd.h"

#include <algorithm>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/axis.h"
#include "chronoweave/traxfunc/input/icon_counts.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr double viewOfAll = 1.25;  // of the time that they take

// Times of the shown events of a crowd, with that of the icon drawn ahead of it, which one of them covers.
struct Spread {
    double first = -1, last = -1, closest = 0;  // closest: two that don't fall together; 0 for none
    void Take(double time) {
        if (first < 0) first = time;
        const double gap = time - last;
        if (last >= 0 && gap > 0 && (closest == 0 || gap < closest)) closest = gap;
        last = time;
    }
};

bool is_shown(const _LaCanvasData& canvas, const laItem_Line& lane, size_t number) {
    return canvas.looks.eventLooks[lane.icons.event(number)].shown;
}

Spread spread_of(const _LaCanvasData& canvas, const laCrowd& crowd) {
    const laItem_Line& lane = canvas.items.lanes[crowd.lane];
    size_t first = crowd.icons.first;
    while (first > 0 && lane.icons.time(first - 1) >= canvas.view.viewLow)
        if (is_shown(canvas, lane, --first)) break;
    Spread spread;
    for (size_t i = first; i < crowd.icons.end; ++i)
        if (is_shown(canvas, lane, i)) spread.Take(lane.icons.time(i));
    return spread;
}

}  // namespace

std::optional<laCrowd> laCrowd_At(const _LaCanvasData& canvas, int x, int y) {
    const laScene scene = canvas.scene();
    if (!laMark_IsCounted(scene) || y >= laAxis_Top(*canvas.graph)) return std::nullopt;
    const int half = (canvas.graph->axisFont.height + 1) / 2;
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        const laItem_Line& lane = canvas.items.lanes[i];
        const int centre = laLn_IconY(canvas.looks, lane) - canvas.view.verticalOffset;
        if (lane.hidden || y < centre - half || y > centre + half) continue;
        if (const auto mark = laMark_At(scene, lane, x))
            return laCrowd{i, laIcons_Group(scene, lane, mark->number)};
    }
    return std::nullopt;
}

std::string laCrowd_Tip(const _LaCanvasData& canvas, const laCrowd& crowd) {
    const laItem_Line& lane = canvas.items.lanes[crowd.lane];
    std::string text = laIcons_CountText(canvas, lane, crowd.icons);
    for (size_t i = crowd.icons.first; text.empty() && i < crowd.icons.end; ++i)
        if (is_shown(canvas, lane, i))
            text = "1 event: \"" + text_utf8(canvas.looks.legend.events[lane.icons.event(i)].name) + '"';
    return text + "\nfrom " + laTip_Time(canvas, lane.icons.time(crowd.icons.first)) + " to " +
           laTip_Time(canvas, lane.icons.time(crowd.icons.end - 1)) + " (in " +
           laTime_UnitName(canvas.axis, true) + "s); a double click parts them";
}

bool laCrowd_Part(_LaCanvasData& canvas, const laCrowd& crowd) {
    const Spread spread = spread_of(canvas, crowd);
    if (spread.closest == 0) {
        laCanvas_Refuse(canvas, "These events happened at the same time.");
        return false;
    }
    const double apart = spread.closest * canvas.graph->width / (canvas.looks.maxIconWidth + 2);
    const double all = (spread.last - spread.first) * viewOfAll;
    const double length = std::min(std::max(apart, all), canvas.view.viewLength / 2);
    const double low = std::max(0.0, (spread.first + spread.last - length) / 2);
    return laCanvas_Zoom(canvas, low, low + length);
}
