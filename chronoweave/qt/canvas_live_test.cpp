// A window that follows a file, and the target's panel on it.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QToolButton>
#include <filesystem>
#include <fstream>

#include "chronoweave/live/live_target.h"
#include "chronoweave/live/live_words.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/files.h"
#include "windlib/config/settings.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/platform.h"

namespace {

class LiveWindowTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override {
        ASSERT_TRUE(file_read_whole(CW_SOURCE_DIR "/samples/build-2cpu.trr", whole).ok());
        window->resize(1000, 600);
        window->show();
        QApplication::processEvents();
    }
    void write(size_t bytes) const { std::ofstream(trace, std::ios::binary) << whole.substr(0, bytes); }
    void append(size_t from, size_t end) const {
        std::ofstream(trace, std::ios::binary | std::ios::app) << whole.substr(from, end - from);
    }
    _LaCanvasData& canvas() { return window->view().canvas(); }
    void tick() {
        window->target()->reader().RefreshTick();
        QApplication::processEvents();
    }

    TestFolder folder;
    std::string trace = folder / "run.trr", whole;
    SettingsManager settings{{}, folder / "config"};
    QtEventService events;
    std::unique_ptr<CanvasWindow> window = std::make_unique<CanvasWindow>(
        "VOREL Chronoweave", true, CanvasServices{.settings = &settings, .events = &events});
};

}  // namespace

TEST_F(LiveWindowTest, WaitsForTheFirstRecordsAndFollows) {
    write(5);
    EXPECT_FALSE(window->load(trace));
    EXPECT_NE(window->message().find("Waiting for events"), std::string::npos);
    tick();
    EXPECT_EQ(canvas().source.store, nullptr);
    write(whole.size() / 3 + 5);
    tick();
    ASSERT_NE(canvas().source.store, nullptr);
    const uint32_t before = mt_GetEventCount(*canvas().source.store);
    append(whole.size() / 3 + 5, whole.size());
    for (int i = 0; i < 100 && window->target()->reader().IsReading(); ++i) QApplication::processEvents();
    tick();
    for (int i = 0; i < 1000 && window->target()->reader().IsReading(); ++i) QApplication::processEvents();
    EXPECT_GT(mt_GetEventCount(*canvas().source.store), before);
    EXPECT_GE(canvas().view.viewHigh, canvas().source.totalLength) << "the end is in view";
    const QImage grown = window->view().image().copy();
    window->view().layOutAndPaint();
    EXPECT_EQ(grown, window->view().image()) << "what was added is what a whole repaint draws";
    // Frozen, it stays.
    EXPECT_TRUE(laCanvas_Command(canvas(), "NoRefresh"));
    append(whole.size() / 2, whole.size());
    tick();
    EXPECT_EQ(window->view().image(), grown);
    std::filesystem::remove(trace);
    EXPECT_TRUE(laCanvas_Command(canvas(), "NoRefresh"));
    tick();
    EXPECT_NE(window->message().find("is gone"), std::string::npos) << window->message();
    EXPECT_FALSE(canvas().calls.upper.sourceGrows);
}

TEST_F(LiveWindowTest, ThePanelOpensOnceAndKeepsItsPlace) {
    ASSERT_TRUE(laCanvas_Command(canvas(), "Korvantis"));
    DialogModel& panel = *window->target()->panel().model();
    QWidget* shown = window->host().windowOf(panel);
    ASSERT_TRUE(shown && shown->isVisible());
    auto* target = shown->findChild<QLineEdit*>("ConnectToTarget");
    ASSERT_TRUE(target);
    EXPECT_EQ(target->text(), "sim");
    EXPECT_EQ(target->placeholderText(), "<Target Name or IP Address> [-port <Port Number>]");
    QAction* arrow = target->findChild<QAction*>("ConnectToTarget_PullDown");
    ASSERT_TRUE(arrow);
    const auto* button = target->findChild<QToolButton*>();
    EXPECT_TRUE(button && button->defaultAction() == arrow && button->isVisible());
    int offered = 0;
    panel.onPullDown = [&](const std::string&) { ++offered; };
    arrow->trigger();
    testing_Key(*target, Qt::Key_Down);
    EXPECT_GE(offered, 1);
    EXPECT_TRUE(laCanvas_Command(canvas(), "Korvantis"));
    EXPECT_EQ(window->host().openWindows(), 1u);
    shown->setGeometry(60, 70, 700, 420);
    panel.dismiss();
    QApplication::processEvents();
    EXPECT_TRUE(settings.Position("TRVGUI KORVANTIS Control Panel"));
    ASSERT_TRUE(laCanvas_Command(canvas(), "Korvantis"));
    EXPECT_EQ(window->host().windowOf(*window->target()->panel().model())->geometry(),
              QRect(60, 70, 700, 420));
    window.reset();
    QApplication::processEvents();
}
