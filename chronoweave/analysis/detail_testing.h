// For tests of what the detail windows and the event table are attached to.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "chronoweave/analysis/detail_windows.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"
#include "windlib/dialog/host_testing.h"

// A canvas whose windows are recorded, and a silent console.
class CanvasWithDetails : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        canvas.calls.host = &host;
        detail_Attach(canvas);
    }
    void TearDown() override { gen_set_console_sink({}); }
    // Shows all of a trace of these events.
    void OpenTrace(const std::vector<TestEvent>& events, const std::string& os, Legend legend) {
        ASSERT_TRUE(test.Open(events, os, std::move(legend)));
        test.ShowAll();
    }

    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};
