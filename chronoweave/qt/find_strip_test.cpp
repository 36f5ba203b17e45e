// The find line over the picture and the panel of the selection, driven on the offscreen platform.
#include "chronoweave/qt/find_strip.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/qt/selection_corner.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "libtrv/test_store.h"
#include "windlib/config/settings.h"
#include "windlib/qt/application_testing.h"

namespace {

class Finding : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
    }
    void SetUp() override {
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", folder / "run.trr");
        window =
            std::make_unique<CanvasWindow>("VOREL Chronoweave", false, CanvasServices{&settings, nullptr});
        window->resize(1000, 700);
        window->show();
        ASSERT_TRUE(window->load(folder / "run.trr"));
        strip = window->findChild<FindStrip*>(QStringLiteral("FindStrip"));
        corner = window->findChild<SelectionCorner*>(QStringLiteral("SelectionCorner"));
        ASSERT_TRUE(strip && corner);
    }
    void press(QWidget* widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QApplication::sendEvent(widget, &event);
    }
    _LaCanvasData& canvas() { return window->view().canvas(); }

    TestFolder folder;
    SettingsManager settings{program_Switches(), folder / "settings"};
    std::unique_ptr<CanvasWindow> window;
    FindStrip* strip = nullptr;
    SelectionCorner* corner = nullptr;
};

TEST_F(Finding, TheLineComesAndGoes) {
    EXPECT_TRUE(strip->isHidden());
    const int height = window->view().height();
    window->command("Find");
    QApplication::processEvents();
    EXPECT_TRUE(strip->isVisible());
    EXPECT_EQ(window->view().height(), height - strip->height());
    auto* field = strip->findChild<QLineEdit*>(QStringLiteral("find"));
    ASSERT_NE(field, nullptr);
    EXPECT_FALSE(field->placeholderText().isEmpty());
    field->setText(QStringLiteral("event:*"));
    strip->line().model().edit("find", "event:*");
    while (strip->line().Step()) {
    }
    EXPECT_GT(canvas().marks.hits.size(), 1000u);
    laCanvas_ClearCursors(canvas());
    press(field, Qt::Key_Return);
    const double first = canvas().marks.cursor[0];
    EXPECT_GE(first, 0);
    press(window.get(), Qt::Key_F3);
    EXPECT_GE(canvas().marks.cursor[0], first);
    EXPECT_EQ(strip->line().model().message().substr(0, 5), "2 of ");
    press(field, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(strip->line().model().message().substr(0, 5), "1 of ");
    press(field, Qt::Key_Escape);
    EXPECT_TRUE(strip->isHidden());
    EXPECT_TRUE(canvas().marks.hits.empty());
    // Escape closes it from the picture, too.
    window->command("Find");
    while (strip->line().Step()) {
    }
    window->view().setFocus();
    press(&window->view(), Qt::Key_Escape);
    EXPECT_TRUE(strip->isHidden());
}

TEST_F(Finding, ThePanelIsThereWithASelection) {
    EXPECT_TRUE(corner->isHidden());
    const auto select = [this](double from, double to) {
        window->view().draw([&] { laCanvas_SetSelection(canvas(), from, to); });
        while (corner->panel().Step()) {
        }
        window->view().draw([] {});
    };
    const double low = canvas().view.viewLow, length = canvas().view.viewLength;
    select(low, low + length / 2);
    EXPECT_TRUE(corner->isVisible());
    EXPECT_GT(corner->x(), window->view().width() / 2);
    // Out of the way of the end that moves.
    select(low, low + 0.97 * length);
    EXPECT_LT(corner->x(), window->view().width() / 2);
    window->command("SelectionPanel");
    EXPECT_TRUE(corner->isHidden());
    EXPECT_FALSE(settings.IsOn("SelectionPanel"));
    EXPECT_NE(canvas().fields.message.find("selected"), std::string::npos);
    window->command("SelectionPanel");
    EXPECT_TRUE(corner->isVisible());
    window->view().draw([&] { laCanvas_ClearCursors(canvas()); });
    EXPECT_TRUE(corner->isHidden());
}

}  // namespace
