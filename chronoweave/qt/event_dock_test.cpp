// The table of events under the picture, driven on the offscreen platform.
#include "chronoweave/qt/event_dock.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <filesystem>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "libtrv/test_store.h"
#include "windlib/config/settings.h"
#include "windlib/qt/application_testing.h"

namespace {

class Dock : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
    }
    void SetUp() override {
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", trace);
        open();
    }
    void open() {
        window =
            std::make_unique<CanvasWindow>("VOREL Chronoweave", false, CanvasServices{&settings, nullptr});
        window->resize(1000, 700);
        window->show();
        ASSERT_TRUE(window->load(trace));
        dock = window->findChild<EventDock*>(QStringLiteral("EventTable"));
        ASSERT_NE(dock, nullptr);
    }
    // What the picture told is taken over, without waiting for it.
    MScrollList& rows() {
        dock->table().Sync();
        return dock->table().model().list("list");
    }

    TestFolder folder;
    std::string trace = folder / "run.trr";
    SettingsManager settings{program_Switches(), folder / "settings"};
    std::unique_ptr<CanvasWindow> window;
    EventDock* dock = nullptr;
};

TEST_F(Dock, ComesAndGoesByCommandAndIsRemembered) {
    EXPECT_TRUE(dock->isHidden());
    EXPECT_EQ(rows().RowCount(), 0);
    window->command("EventTable");
    EXPECT_FALSE(dock->isHidden());
    EXPECT_TRUE(window->view().canvas().calls.upper.eventTable);
    EXPECT_GT(rows().RowCount(), 100);
    window->resizeDocks({dock}, {260}, Qt::Vertical);
    QApplication::processEvents();
    EXPECT_EQ(dock->height(), dock->rememberedHeight());
    const int height = dock->height();
    window.reset();
    EXPECT_TRUE(settings.IsOn("EventTable"));
    open();
    QApplication::processEvents();
    EXPECT_TRUE(dock->isVisible());
    EXPECT_NEAR(dock->height(), height, 2);
    window->command("EventTable");
    EXPECT_FALSE(settings.IsOn("EventTable"));
    EXPECT_EQ(window->view().canvas().marks.markedEvent, 0u);
}

TEST_F(Dock, ARowIsFramedInThePictureAndEscapeClearsAFilter) {
    window->command("EventTable");
    const int all = rows().RowCount();
    dock->table().model().select("list", {20});
    const _LaCanvasData& canvas = window->view().canvas();
    ASSERT_NE(canvas.marks.markedEvent, 0u);
    const QImage marked = window->view().grab().toImage();
    window->view().canvas().marks.markedEvent = 0;
    EXPECT_NE(marked, window->view().grab().toImage());
    auto* field = dock->findChild<QLineEdit*>(QStringLiteral("tf_object"));
    ASSERT_NE(field, nullptr);
    field->setFocus();
    testing_Key(*field, Qt::Key_Z, QStringLiteral("z"));
    EXPECT_LT(rows().RowCount(), all);
    testing_Key(*field, Qt::Key_Escape);
    EXPECT_EQ(field->text(), QString());
    EXPECT_EQ(rows().RowCount(), all);
    // The view is followed.
    const _LaCanvasData& view = window->view().canvas();
    const double length = view.view.viewLength;
    window->command("ZoomIn");
    EXPECT_LT(view.view.viewLength, length);
    EXPECT_LT(rows().RowCount(), all);
}

}  // namespace
