// A legend that tests share.
#pragma once

#include <string>

#include "chronoweave/rtos/legend.h"

// Statuses by code as the store's tracker writes them; the kinds of line differ, one is invisible.
inline Legend test_legend() {
    struct Row {
        uint16_t code;
        const char* name;
        int thickness;
        int style;
        bool execution, contextSwitch, visible;
        uint16_t red;
        int link;
    };
    static constexpr Row rows[] = {
        {0, "Ready", 2, Line_Solid, false, false, true, 0x1000, -1},
        {1, "Suspend", 1, Line_Dash, false, false, true, 0x2000, 9},
        {2, "Pend", 1, Line_Solid, false, false, true, 0x3000, -1},
        {3, "Running", 4, Line_Solid, true, false, true, 0x4000, 8},
        {7, "EvWait", 1, Line_Solid, false, false, false, 0x5000, -1},
        {10, "Stopped", 1, Line_Dot, false, false, true, 0x6000, -1},
        {6, "OffBeat", 3, Line_DashDot, false, false, true, 0x7000, -1},
        {0xFFF0, "Unknown", 1, Line_Solid, false, false, true, 0x8000, -1},
        {0xFFF1, "ContextSwitch", 1, Line_Solid, false, true, true, 0x9000, -1},
        {0xFFF2, "Preempt", 1, Line_Solid, false, true, true, 0xA000, -1},
    };
    Legend legend;
    for (const Row& row : rows) {
        LegendStatus status;
        status.code = row.code;
        status.name = row.name;
        status.thickness = row.thickness;
        status.lineStyle = row.style;
        status.isExecution = row.execution;
        status.isContextSwitch = row.contextSwitch;
        status.visible = row.visible;
        status.red = row.red;
        status.contextSwitchLink = row.link;
        legend.statuses.push_back(status);
    }
    for (uint16_t type = 1; type <= 7; ++type) {
        LegendEvent event;
        event.type = type;
        event.name = "Event " + std::to_string(type);
        event.iconName = "help";
        event.flags = LegendEvent_AnySubtype | (type == 7 ? 0u : 1u);
        legend.events.push_back(event);
    }
    LegendEvent unknown;
    unknown.name = "Unknown";
    unknown.iconName = "help";
    unknown.type = unknown.subtype = 0xFFFF;
    legend.events.push_back(unknown);
    legend.BuildLookups();
    return legend;
}
