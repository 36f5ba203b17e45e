// What the canvas's tests share: a legend, stores in a folder of their own, and a canvas on a recording
// surface.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/session.h"
#include "libtrv/test_store.h"
#include "windlib/lagraph/recording_surface.h"

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

// A canvas on a surface, and the folder of its stores. Icons are those of the source tree.
class TestCanvas {
  public:
    explicit TestCanvas(int width = 1000, int height = 600) : surface(width, height) {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        graph.surface = &surface;
        graph.beep = [this] { ++beeps; };
        canvas = laCanvas_Create(graph, 0);
        laCanvas_Resized(*canvas, width, height);
    }

    TraceStorePtr MakeStore(const std::vector<TestEvent>& events, const std::string& osName,
                            uint32_t ticksPerSecond = 1000) {
        const std::string base = folder / ("store" + std::to_string(stores++));
        auto writer = StoreWriter::OpenForWrite(base, ticksPerSecond, osName, true, TaskTracker);
        writer->SetGrouping(1 << 20);
        for (const TestEvent& event : events)
            if (!writer->AppendEvent(event.time, event.type, event.subtype, event.extra)) return nullptr;
        writer.reset();
        return mt_OpenForRead(base);
    }

    bool Open(const std::vector<TestEvent>& events, const std::string& osName = "ThreadX",
              Legend legend = test_legend()) {
        return laCanvas_SetUpFromStore(*canvas, MakeStore(events, osName), std::move(legend),
                                       "/folder/run.trs");
    }
    // The whole trace, with nothing fetched around it.
    void ShowAll() { laCanvas_ShowRange(*canvas, 0, canvas->source.totalLength); }
    const std::string& message() const { return canvas->fields.message; }

    TestFolder folder;
    RecordingSurface surface;
    LaGraph graph;
    std::unique_ptr<_LaCanvasData> canvas;
    int beeps = 0;
    int stores = 0;
};

// A task's events: its name, and its moves between statuses.
inline TestEvent name_event(mt_Time time, uint32_t id, const std::string& name) {
    return {time, mt_Refresh, 0, refresh_extra(id, 5, name)};
}
