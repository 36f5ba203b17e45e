#include "chronoweave/traxfunc/input/legend_edit.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "chronoweave/rtos/configure_reader.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "chronoweave/traxfunc/session/legend_save.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/config_dirs.h"
#include "windlib/dialog/host_testing.h"

namespace {

class LegendSave : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        config_SetUserDirectory(folder / "user");
        Legend legend = test_legend();
        legend.path = "/installed/somewhere/chrono_weave/threadx.tc";
        ASSERT_TRUE(test.Open(random_events(3, 100), "ThreadX", std::move(legend)));
        canvas.calls.host = &host;
    }
    void TearDown() override {
        config_SetUserDirectory("");
        gen_set_console_sink({});
    }
    std::string Target() const { return folder / "user/chrono_weave/threadx.tc"; }

    TestFolder folder;
    RecordingHost host;
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(LegendSave, OnlyAChangedLegendIsOfferedAndOnlyOnce) {
    EXPECT_TRUE(laLegend_OfferSave(canvas));
    EXPECT_TRUE(host.questions.empty());
    laLegend_SetStatus(canvas, 0, {0x1200, 0x3400, 0x5600, 3, Line_Dash});
    host.askAnswer = false;
    EXPECT_TRUE(laLegend_OfferSave(canvas));
    ASSERT_EQ(host.questions.size(), 1u);
    EXPECT_EQ(host.questions[0], "Save changes to configuration file \"" + Target() + "\"?");
    EXPECT_FALSE(std::filesystem::exists(Target()));
    EXPECT_TRUE(laLegend_OfferSave(canvas));
    EXPECT_EQ(host.questions.size(), 1u) << "not offered again";
}

TEST_F(LegendSave, WhatIsSavedIsFoundFirstAndReadsBack) {
    laLegend_SetStatus(canvas, 0, {0x1200, 0x3400, 0x5600, 3, Line_Dash});
    canvas.list.sortField = 1;
    canvas.options.refreshInterval = 250;
    EXPECT_TRUE(laLegend_OfferSave(canvas));
    Legend again;
    ASSERT_TRUE(configure_Read(again, "THREADX", configure_ConsoleCallbacks(), 0));
    EXPECT_EQ(again.path, Target());
    EXPECT_EQ(again.statuses[0].blue, 0x5600);
    EXPECT_EQ(again.statuses[0].lineStyle, Line_Dash);
    EXPECT_EQ(again.misc.sortField, 1);
    EXPECT_EQ(again.misc.refreshInterval, 250);
    std::string text;
    ASSERT_TRUE(file_read_whole(Target(), text));
    EXPECT_NE(text.find("Operating System \"ThreadX\""), std::string::npos);
}

TEST_F(LegendSave, FailuresAreToldAndLeaveTheOldFileWhole) {
    laLegend_ToggleVisible(canvas, 0);
    ASSERT_TRUE(laLegend_OfferSave(canvas));
    std::string before;
    ASSERT_TRUE(file_read_whole(Target(), before));
    // Nothing can be put beside it.
    const std::string place = folder / "user/chrono_weave";
    std::filesystem::rename(place, folder / "kept");
    std::filesystem::create_symlink("/proc/self", place);
    laLegend_ToggleVisible(canvas, 0);
    EXPECT_FALSE(laLegend_OfferSave(canvas));
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_TRUE(host.messages[0].starts_with("Can't open configure file \"" + Target() + "\" to write."));
    std::string after;
    ASSERT_TRUE(file_read_whole(folder / "kept/threadx.tc", after));
    EXPECT_EQ(after, before);
    // The folder itself can't be made.
    std::filesystem::remove(place);
    { std::ofstream(place) << "a file"; }
    laLegend_ToggleVisible(canvas, 0);
    EXPECT_FALSE(laLegend_OfferSave(canvas));
    EXPECT_EQ(host.messages.back(), "Cannot create directory \"" + place + "\"");
}

TEST_F(LegendSave, WhatAFileCannotSayIsRefusedByName) {
    laLegend_ToggleVisible(canvas, 0);
    ASSERT_TRUE(laLegend_OfferSave(canvas));
    std::string before;
    ASSERT_TRUE(file_read_whole(Target(), before));
    canvas.looks.legend.events[2].name = "mutex: taken";
    laLegend_ToggleVisible(canvas, 0);
    EXPECT_FALSE(laLegend_OfferSave(canvas));
    EXPECT_EQ(host.messages, std::vector<std::string>{"Can't save configure file \"" + Target() +
                                                      "\":\nevent \"mutex: taken\" would not read back the "
                                                      "same."});
    std::string after;
    ASSERT_TRUE(file_read_whole(Target(), after));
    EXPECT_EQ(after, before);
}

TEST(LegendFields, AreScannedAsTyped) {
    const struct {
        const char* text;
        uint16_t value;
    } cases[] = {{"0x80", 0x8000}, {"300", 300},      {"255", 0xFF00}, {"256", 256}, {"0XFF", 0xFF00},
                 {"0x100", 0x100}, {"99999", 0xFFFF}, {"", 0},         {"red", 0},   {" 0x10 ", 0x1000}};
    for (const auto& one : cases) EXPECT_EQ(laLegend_ScanChannel(one.text), one.value) << one.text;
    EXPECT_EQ(laLegend_ScanThickness("0"), 1);
    EXPECT_EQ(laLegend_ScanThickness("-5"), 1);
    EXPECT_EQ(laLegend_ScanThickness("7 pixels"), 7);
}

}  // namespace
