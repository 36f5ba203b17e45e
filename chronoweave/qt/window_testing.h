// For tests of windows: a canvas that no window made.
#pragma once

#include <gtest/gtest.h>

#include <QSize>
#include <memory>
#include <string>

#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/session/session.h"
#include "libtrv/trace_store.h"
#include "windlib/qt/picture_file.h"

// The whole of a store, laid out as the command line does it for a picture of this size.
struct CanvasAlone {
    LaGraph graph;
    std::unique_ptr<_LaCanvasData> canvas;
    laPicture picture;
};
inline void testing_OpenAlone(CanvasAlone& alone, const std::string& base, const std::string& trace,
                              QSize size, bool footer) {
    picture_Measure([&](Surface& surface) {
        alone.graph.font = surface.fontMetrics(Font_Application);
        const int height = size.height() + (footer ? laPicture_FooterHeight(alone.graph.font) : 0);
        alone.canvas = laCanvas_Create(alone.graph, 0);
        alone.canvas->list.processorRows = true;
        alone.canvas->view.pinEdges = LaPinEdges::Both;  // as in a window
        Legend legend;
        ASSERT_TRUE(configure_Read(legend, "KORVANTIS", configure_ConsoleCallbacks(), 0));
        ASSERT_TRUE(laCanvas_SetUpFromStore(*alone.canvas, mt_OpenForRead(base), legend, trace));
        laPicture_LayOut(*alone.canvas, surface, size.width(), height, footer);
        laCanvas_ShowAll(*alone.canvas);
        alone.picture = laPicture_LayOut(*alone.canvas, surface, size.width(), height, footer);
    });
}
