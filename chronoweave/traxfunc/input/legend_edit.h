// Changes that the user makes to the legend of a canvas. Each takes effect at once: in the tables, in the
// height of the rows and in the picture, and marks the legend as changed (LaLooks::legendChanged). They open
// the surface themselves, see laCanvas_Paint. Rows out of range are passed over.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "shared/libcxxutil/result.h"

// The legend as one list: first the statuses, then the events with their categories.
size_t laLegend_RowCount(const _LaCanvasData& canvas);
bool laLegend_IsStatus(const _LaCanvasData& canvas, size_t row);
// Position in the table of events of a row that is no status.
size_t laLegend_EventOf(const _LaCanvasData& canvas, size_t row);
std::string laLegend_KindText(const _LaCanvasData& canvas, size_t row);
std::string laLegend_Name(const _LaCanvasData& canvas, size_t row);
std::string laLegend_VisibilityText(const _LaCanvasData& canvas, size_t row);

// Visible becomes invisible and the other way round; a mixed category becomes visible with all its events.
void laLegend_ToggleVisible(_LaCanvasData& canvas, size_t row);
// An event's value, 0 or 1, goes to every event of its name; a category's to all events behind it and their
// namesakes.
void laLegend_SetEventVisibility(_LaCanvasData& canvas, size_t event, uint32_t visibility);

struct laStatusSetting {
    uint16_t red = 0, green = 0, blue = 0;  // the high byte is what is seen
    int32_t thickness = 1;
    int32_t lineStyle = Line_Solid;
    bool operator==(const laStatusSetting&) const = default;
};
laStatusSetting laLegend_StatusSetting(const _LaCanvasData& canvas, size_t status);
// True when that changed anything.
bool laLegend_SetStatus(_LaCanvasData& canvas, size_t status, const laStatusSetting& setting);
// The lines of the statuses become those of a configure file (see status_looks.h); a failure changes nothing.
Result laLegend_UseLook(_LaCanvasData& canvas, const std::string& path);
// A colour field as typed: hexadecimal with 0x in front, else decimal; below 256 it is the high byte, else
// the whole channel. What is no number is 0.
uint16_t laLegend_ScanChannel(std::string_view text);
// As typed; below 1 and what is no number is 1.
int32_t laLegend_ScanThickness(std::string_view text);

// The icon goes to every event of the same name.
void laLegend_SetIcon(_LaCanvasData& canvas, size_t event, const std::string& iconName);
// Whether the event's icons are never hidden under others.
void laLegend_SetImportant(_LaCanvasData& canvas, size_t event, bool important);

// The tables at a moment, for undoing. Put back only into the canvas that they were taken from, and while it
// has the same source.
struct laLegendTables {
    std::vector<LegendStatus> statuses;
    std::vector<LegendEvent> events;
    bool changed = false;  // the mark
};
laLegendTables laLegend_Take(const _LaCanvasData& canvas);
void laLegend_PutBack(_LaCanvasData& canvas, laLegendTables tables);
