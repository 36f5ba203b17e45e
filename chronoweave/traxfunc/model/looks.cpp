#include "chronoweave/traxfunc/model/looks.h"

#include <algorithm>
#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

constexpr int thickestLine = 1000;  // pixels; keeps a damaged legend from overflowing the geometry

void tell_missing(const LegendEvent& event, const std::function<void()>& beep) {
    gen_console("Can't find icon <%s> required by the legend event <%s>, \nuse <help> icon instead!\n",
                event.iconName.c_str(), event.name.c_str());
    if (beep) beep();
}

// Calls missing for an icon that is not there.
template <class Missing>
void look_up_icons(LaLooks& looks, const Missing& missing) {
    const IconHandle help = icon_Find("help");
    looks.eventLooks.clear();
    looks.anyImportantEvent = false;
    for (const LegendEvent& event : looks.legend.events) {
        LaEventLook look;
        if (!event.IsCategory() && !event.iconName.empty()) {
            look.icon = icon_Find(event.iconName);
            if (look.icon == NoIcon) {
                look.icon = help;
                missing(event);
            }
            look.width = icon_Width(look.icon);
            look.height = icon_Height(look.icon);
        }
        look.shown = look.icon != NoIcon && event.visibility() != 0;
        look.important = event.IsImportant();
        looks.anyImportantEvent = looks.anyImportantEvent || (look.shown && look.important);
        looks.eventLooks.push_back(look);
    }
    looks.overlapIcon =
        looks.legend.misc.overlapIcon.empty() ? NoIcon : icon_Find(looks.legend.misc.overlapIcon);
}

void make_status_looks(LaLooks& looks) {
    looks.statusLooks.clear();
    for (const LegendStatus& status : looks.legend.statuses) {
        LaStatusLook look;
        look.colour = colour_From16(status.red, status.green, status.blue);
        look.thickness = std::clamp(status.thickness, 1, thickestLine);
        look.style = std::clamp<int>(status.lineStyle, Line_Solid, Line_DashDotDot);
        look.shown = status.visible;
        look.isExecution = status.isExecution;
        look.isContextSwitch = status.isContextSwitch;
        looks.statusLooks.push_back(look);
    }
}

void compute_extents(LaLooks& looks) {
    looks.maxIconHeight = looks.maxIconWidth = looks.maxLineThickness = 0;
    looks.maxExtent = 16;
    for (const LaEventLook& look : looks.eventLooks) {
        looks.maxIconWidth = std::max(looks.maxIconWidth, look.width);
        looks.maxExtent = std::max({looks.maxExtent, look.width, look.height});
        if (look.shown) looks.maxIconHeight = std::max(looks.maxIconHeight, look.height);
    }
    for (const LaStatusLook& look : looks.statusLooks) {
        looks.maxExtent = std::max(looks.maxExtent, look.thickness);
        if (look.shown && !look.isContextSwitch)
            looks.maxLineThickness = std::max(looks.maxLineThickness, look.thickness);
    }
}

template <class Missing>
void make_looks(LaLooks& looks, const Missing& missing) {
    look_up_icons(looks, missing);
    make_status_looks(looks);
    compute_extents(looks);
}

}  // namespace

bool laLooks_Load(LaLooks& looks, Legend legend, const std::function<void()>& beep) {
    if (legend.empty() || legend.unknownStatus < 0 || legend.unknownEvent < 0 ||
        legend.contextSwitchStatus < 0 || legend.events.size() > UINT16_MAX)
        return false;
    ++looks.legends;
    looks.legend = std::move(legend);
    looks.centerStatus = looks.legend.misc.centerStatus;
    make_looks(looks, [&](const LegendEvent& event) { tell_missing(event, beep); });
    return true;
}

void laLooks_Touched(LaLooks& looks) {
    make_looks(looks, [](const LegendEvent&) {});
}

void laLooks_Drop(LaLooks& looks, const LegendMisc& kept) {
    ++looks.legends;
    looks.legend = Legend();
    looks.legend.misc = kept;
    looks.legendChanged = false;
    looks.centerStatus = kept.centerStatus;
    looks.eventLooks.clear();
    looks.statusLooks.clear();
    looks.overlapIcon = NoIcon;
    compute_extents(looks);
}

bool laCanvas_UpdateRowHeight(LaLooks& looks, const FontMetrics& font) {
    const int content = looks.centerStatus ? std::max(looks.maxIconHeight, looks.maxLineThickness)
                                           : looks.maxIconHeight + looks.maxLineThickness;
    const int height = static_cast<int>(std::max(content, font.height) * 1.2);
    if (height == looks.rowHeight) return false;
    looks.rowHeight = height;
    return true;
}
