// What the canvas's tests share: stores in a folder of their own, and a canvas on a recording surface.
#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "chronoweave/rtos/legend_testing.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/session.h"
#include "libtrv/test_store.h"
#include "windlib/lagraph/recording_surface.h"

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
