#include "chronoweave/traxfunc/input/legend_edit.h"

#include <algorithm>
#include <cstdlib>

#include "chronoweave/rtos/status_looks.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/input/life.h"
#include "shared/libcxxutil/text.h"

namespace {

// The looks follow the tables; the layout follows when the rows have another height.
void take_effect(_LaCanvasData& canvas, bool repaint) {
    canvas.looks.legendChanged = true;
    const bool rows = laCanvas_LegendTouched(canvas);
    laCanvas_Paint(canvas, [&] {
        if (rows)
            laCanvas_Relayout(canvas);
        else if (repaint)
            laCanvas_Repaint(canvas);
    });
}

template <class Change>
void change_namesakes(Legend& legend, const std::string& name, const Change& change) {
    for (LegendEvent& event : legend.events)
        if (!event.IsCategory() && text_equal_nocase(event.name, name)) change(event);
}

void set_visibility(LegendEvent& event, uint32_t visibility) {
    event.flags = (event.flags & ~LegendEvent_VisibilityMask) | visibility;
}

}  // namespace

size_t laLegend_RowCount(const _LaCanvasData& canvas) {
    return canvas.looks.legend.statuses.size() + canvas.looks.legend.events.size();
}

bool laLegend_IsStatus(const _LaCanvasData& canvas, size_t row) {
    return row < canvas.looks.legend.statuses.size();
}

size_t laLegend_EventOf(const _LaCanvasData& canvas, size_t row) {
    return row - canvas.looks.legend.statuses.size();
}

std::string laLegend_KindText(const _LaCanvasData& canvas, size_t row) {
    if (laLegend_IsStatus(canvas, row))
        return canvas.looks.legend.statuses[row].isContextSwitch ? "Switch" : "Status";
    return canvas.looks.legend.events[laLegend_EventOf(canvas, row)].IsCategory() ? "Category" : "  Event";
}

std::string laLegend_Name(const _LaCanvasData& canvas, size_t row) {
    return text_utf8(laLegend_IsStatus(canvas, row)
                         ? canvas.looks.legend.statuses[row].name
                         : canvas.looks.legend.events[laLegend_EventOf(canvas, row)].name);
}

std::string laLegend_VisibilityText(const _LaCanvasData& canvas, size_t row) {
    const uint32_t visibility = laLegend_IsStatus(canvas, row)
                                    ? (canvas.looks.legend.statuses[row].visible ? 1 : 0)
                                    : canvas.looks.legend.events[laLegend_EventOf(canvas, row)].visibility();
    return visibility == 0 ? "Invisible" : visibility == 1 ? "Visible" : "Mixed";
}

void laLegend_ToggleVisible(_LaCanvasData& canvas, size_t row) {
    if (row >= laLegend_RowCount(canvas)) return;
    if (!laLegend_IsStatus(canvas, row)) {
        const size_t event = laLegend_EventOf(canvas, row);
        return laLegend_SetEventVisibility(canvas, event,
                                           canvas.looks.legend.events[event].visibility() == 1 ? 0 : 1);
    }
    LegendStatus& status = canvas.looks.legend.statuses[row];
    status.visible = !status.visible;
    take_effect(canvas, true);
}

void laLegend_SetEventVisibility(_LaCanvasData& canvas, size_t event, uint32_t visibility) {
    Legend& legend = canvas.looks.legend;
    if (event >= legend.events.size()) return;
    const auto spread = [&](size_t at) {
        const std::string name = legend.events[at].name;
        change_namesakes(legend, name, [&](LegendEvent& one) { set_visibility(one, visibility); });
    };
    if (!legend.events[event].IsCategory()) {
        spread(event);
    } else {
        set_visibility(legend.events[event], visibility);
        for (size_t at = event + 1; at < legend.events.size() && !legend.events[at].IsCategory(); ++at)
            spread(at);
    }
    legend.RollUpCategories();
    take_effect(canvas, true);
}

laStatusSetting laLegend_StatusSetting(const _LaCanvasData& canvas, size_t status) {
    if (status >= canvas.looks.legend.statuses.size()) return {};
    const LegendStatus& row = canvas.looks.legend.statuses[status];
    return {row.red, row.green, row.blue, row.thickness, row.lineStyle};
}

bool laLegend_SetStatus(_LaCanvasData& canvas, size_t status, const laStatusSetting& setting) {
    if (status >= canvas.looks.legend.statuses.size() || laLegend_StatusSetting(canvas, status) == setting)
        return false;
    LegendStatus& row = canvas.looks.legend.statuses[status];
    row.red = setting.red;
    row.green = setting.green;
    row.blue = setting.blue;
    row.thickness = setting.thickness;
    row.lineStyle = setting.lineStyle;
    take_effect(canvas, row.visible);
    return true;
}

Result laLegend_UseLook(_LaCanvasData& canvas, const std::string& path) {
    Result used = legend_UseLook(path, canvas.looks.legend.statuses);
    if (used) take_effect(canvas, true);
    return used;
}

uint16_t laLegend_ScanChannel(std::string_view text) {
    const std::string typed(text_trim(text));
    const bool hexadecimal = typed.size() > 2 && typed[0] == '0' && (typed[1] == 'x' || typed[1] == 'X');
    const unsigned long value = std::strtoul(typed.c_str(), nullptr, hexadecimal ? 16 : 10);
    return static_cast<uint16_t>(value < 256 ? value << 8 : std::min(value, 0xFFFFUL));
}

int32_t laLegend_ScanThickness(std::string_view text) {
    constexpr long thickest = 1 << 24;
    return static_cast<int32_t>(
        std::clamp(std::strtol(std::string(text).c_str(), nullptr, 10), 1L, thickest));
}

void laLegend_SetIcon(_LaCanvasData& canvas, size_t event, const std::string& iconName) {
    Legend& legend = canvas.looks.legend;
    if (event >= legend.events.size() || legend.events[event].IsCategory()) return;
    const std::string name = legend.events[event].name;
    change_namesakes(legend, name, [&](LegendEvent& one) {
        one.iconName = iconName;
        one.missingIcon.clear();
    });
    take_effect(canvas, legend.events[event].visibility() != 0);
}

void laLegend_SetImportant(_LaCanvasData& canvas, size_t event, bool important) {
    Legend& legend = canvas.looks.legend;
    if (event >= legend.events.size() || legend.events[event].IsCategory()) return;
    uint32_t& flags = legend.events[event].flags;
    flags = important ? flags | LegendEvent_Important : flags & ~static_cast<uint32_t>(LegendEvent_Important);
    take_effect(canvas, legend.events[event].visibility() != 0);
}

laLegendTables laLegend_Take(const _LaCanvasData& canvas) {
    return {canvas.looks.legend.statuses, canvas.looks.legend.events, canvas.looks.legendChanged};
}

void laLegend_PutBack(_LaCanvasData& canvas, laLegendTables tables) {
    canvas.looks.legend.statuses = std::move(tables.statuses);
    canvas.looks.legend.events = std::move(tables.events);
    take_effect(canvas, true);
    // The refresh interval is not in the tables.
    const bool same = canvas.options.refreshInterval == canvas.looks.legend.misc.refreshInterval;
    if (!tables.changed && same) canvas.looks.legendChanged = false;
}
