// Menus, tool bar and options of the canvas window on the offscreen platform.
#include "windlib/qt/menu_view.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QGridLayout>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>
#include <QToolButton>
#include <filesystem>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/settings.h"
#include "windlib/dialog/model.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"

namespace {

class WindowMenus : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override {
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", trace);
        window = make();
        QApplication::processEvents();
    }
    std::unique_ptr<CanvasWindow> make() {
        auto made =
            std::make_unique<CanvasWindow>("VOREL Chronoweave", false, CanvasServices{&settings, nullptr});
        made->setAttribute(Qt::WA_DeleteOnClose, false);
        made->resize(1000, 600);
        made->show();
        return made;
    }
    _LaCanvasData& canvas() { return window->view().canvas(); }
    // The action of a command, after its menu was opened.
    QAction* row(const char* menu, const char* command) {
        auto* shown = window->findChild<QMenu*>(QString::fromUtf8(menu));
        Q_EMIT shown->aboutToShow();
        for (QAction* action : shown->actions())
            if (action->data().toString() == QString::fromUtf8(command)) return action;
        return nullptr;
    }
    QToolButton* button(const char* name) { return window->findChild<QToolButton*>(QString::fromUtf8(name)); }
    void answer(const std::function<void(QWidget&)>& work) {
        QTimer::singleShot(0, window.get(), [work] {
            if (QWidget* dialog = QApplication::activeModalWidget()) work(*dialog);
        });
    }

    TestFolder folder;
    std::string trace = folder / "run.trr";
    SettingsManager settings{program_Switches(), folder / "config"};
    std::unique_ptr<CanvasWindow> window;
};

TEST_F(WindowMenus, RowsAndButtonsFollowTheSourceAndReachTheCanvas) {
    EXPECT_EQ(window->menuBar()->actions().size(), 8);
    EXPECT_FALSE(row("TraxView", "ZoomIn")->isEnabled());
    EXPECT_FALSE(button("ZoomIn")->isEnabled());
    EXPECT_TRUE(button("NoRefresh")->isChecked());
    EXPECT_FALSE(window->items().item("changeunit").enabled);
    ASSERT_TRUE(window->load(trace));
    EXPECT_TRUE(button("ZoomIn")->isEnabled());
    EXPECT_TRUE(window->items().item("changeunit").enabled);
    const double length = canvas().view.viewLength;
    row("TraxView", "ZoomIn")->trigger();
    EXPECT_NEAR(canvas().view.viewLength, length / 2, length / 100);
    button("ZoomIn")->click();
    EXPECT_NEAR(canvas().view.viewLength, length / 4, length / 100);
    EXPECT_TRUE(button("PrevHistory")->isEnabled());
    button("PrevHistory")->click();
    EXPECT_NEAR(canvas().view.viewLength, length / 2, length / 100);
    button("PrevHistory")->click();
    EXPECT_NEAR(canvas().view.viewLength, length, length / 100) << "the first picture";
    EXPECT_FALSE(button("PrevHistory")->isEnabled());
    EXPECT_TRUE(row("TraxView", "NextHistory")->isEnabled());
    QAction* flat = row("TraxView", "FlatView");
    EXPECT_TRUE(flat->isCheckable() && !flat->isChecked());
    flat->trigger();
    EXPECT_TRUE(row("TraxView", "FlatView")->isChecked());
    EXPECT_FALSE(button("NoRefresh")->isVisible()) << "nothing is live";
    window->command("NoRefresh");
    EXPECT_TRUE(canvas().source.liveRefresh);
    QApplication::processEvents();
    EXPECT_TRUE(button("NoRefresh")->isVisible());
    button("NoRefresh")->click();
    EXPECT_TRUE(button("NoRefresh")->isChecked());
    EXPECT_FALSE(canvas().source.liveRefresh);
    window->command("Close");
    EXPECT_FALSE(button("ZoomIn")->isEnabled());
    EXPECT_EQ(window->windowTitle(), QStringLiteral("VOREL Chronoweave"));
    EXPECT_TRUE(window->source().empty());
    ASSERT_TRUE(row("TraxFile", ("Open " + trace).c_str()));
    row("TraxFile", ("Open " + trace).c_str())->trigger();
    EXPECT_EQ(window->source(), trace);
}

TEST_F(WindowMenus, BookmarksAreRowsOfTheirWindow) {
    ASSERT_TRUE(window->load(trace));
    std::unique_ptr<CanvasWindow> other = make();
    laBookmark_Add(canvas(), laAgentId, 0.05);
    QAction* mark = row("TraxBookmark", "ShowBookmark 0");
    ASSERT_TRUE(mark);
    mark->trigger();
    EXPECT_TRUE(canvas().view.viewLow < 0.05 && canvas().view.viewHigh > 0.05);
    auto* others = other->findChild<QMenu*>("TraxBookmark");
    Q_EMIT others->aboutToShow();
    EXPECT_EQ(others->actions().size(), 3);
    QApplication::processEvents();
    QApplication::processEvents();
    EXPECT_TRUE(row("TraxBookmark", "ShowBookmark 0"));
    EXPECT_FALSE(menu_Registry().AnyChanged() &&
                 (QApplication::processEvents(), menu_Registry().AnyChanged()));
}

TEST_F(WindowMenus, MergingEndsWithTheMergedTraceInTheWindow) {
    ::setenv("PATH", (path_directory(CW_MERGE_TOOL) + ':' + std::getenv("PATH")).c_str(), 1);
    const std::string second = folder / "second.trr", merged = folder / "merged.trr";
    std::filesystem::copy_file(trace, second);
    window->host().filesChosen = [&](const FileQuestion& question) {
        const bool isNew = question.of == FileQuestion::Of::New;
        return isNew ? std::vector<std::string>{merged} : std::vector<std::string>{trace, second};
    };
    const auto ok = [](QWidget& dialog) {
        auto* head = dialog.findChild<QAbstractButton*>("HA_B_0");
        head->click();
        EXPECT_TRUE(head->isChecked());
        EXPECT_FALSE(dialog.findChild<QAbstractButton*>("Natural_B_0")->isChecked());
        dialog.findChild<QAbstractButton*>("Ok_BS")->click();
    };
    ASSERT_TRUE(window->load(trace));
    const uint32_t events = mt_GetEventCount(*canvas().source.store);
    answer(ok);
    window->command("TraxMergeEventFiles");
    EXPECT_EQ(window->source(), merged);
    EXPECT_EQ(mt_GetEventCount(*canvas().source.store), 2 * events);
    std::string said;
    gen_set_report_sink([&](int, const std::string& line) { said += line; });
    answer(ok);
    window->command("TraxMergeEventFiles");
    gen_set_report_sink({});
    EXPECT_NE(said.find("is the trace of a window"), std::string::npos) << said;
    EXPECT_EQ(window->source(), merged);
}

TEST_F(WindowMenus, AKeyBelongsToOneRowAndIsShownOnce) {
    MenuRegistry menus;
    menus.Define("Bar", "{&One ->Sub}{Late ->Later}");
    menus.Define("Sub", "{&A 'C-k' a}{B 'Ctrl+K' b}{C 'no key' c}{-}{D d}");
    QMenuBar bar;
    std::string ran;
    new MenuView(
        &bar, "Bar", {}, [&](const std::string& body) { ran = body; }, menus);
    const auto* sub = bar.findChild<QMenu*>("Sub");
    ASSERT_TRUE(sub);
    EXPECT_EQ(sub->actions()[0]->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_K));
    EXPECT_EQ(sub->actions()[0]->text(), QStringLiteral("&A"));
    EXPECT_TRUE(sub->actions()[1]->shortcut().isEmpty());
    EXPECT_EQ(sub->actions()[1]->text(), QStringLiteral("B\tCtrl+K"));
    EXPECT_EQ(sub->actions()[2]->text(), QStringLiteral("C\tno key"));
    EXPECT_TRUE(sub->actions()[3]->isSeparator());
    sub->actions()[4]->trigger();
    EXPECT_EQ(ran, "d");
    menus.Define("Sub", "{X x}");
    menus.Define("Later", "{Y y}");
    QApplication::processEvents();  // the registry has its turn, and no other one waits when it goes
    ASSERT_TRUE(bar.findChild<QMenu*>("Later"));
    sub = bar.actions()[0]->menu<QMenu*>();
    ASSERT_EQ(sub->actions().size(), 1);
    sub->actions()[0]->trigger();
    EXPECT_EQ(ran, "x");
}

TEST_F(WindowMenus, EveryKeyIsOneAndReachesAKnownCommand) {
    menu_Registry().ForEach([](const std::string& statement) {
        const MenuResource* menu = menu_Registry().Find(statement.substr(0, statement.find(' ')), true);
        ASSERT_NE(menu, nullptr) << statement;
        for (const MenuRow& row : menu->rows) {
            if (row.accelerator.empty()) continue;
            const auto keys = QKeySequence::fromString(
                QString::fromStdString(menu_ShownAccelerator(row.accelerator)), QKeySequence::PortableText);
            EXPECT_TRUE(keys.count() == 1 && keys[0].key() != Qt::Key_unknown) << row.accelerator;
        }
    });
    // What the picture itself takes.
    ASSERT_TRUE(window->load(trace));
    std::string said;
    gen_set_console_sink([&](std::string_view text) { said += text; });
    for (int key = Qt::Key_Space; key <= Qt::Key_AsciiTilde; ++key)
        if (key != Qt::Key_Question)  // opens a dialog
            testing_Key(window->view(), key);
    for (int key = Qt::Key_Home; key <= Qt::Key_PageDown; ++key) testing_Key(window->view(), key);
    gen_set_console_sink({});
    EXPECT_EQ(said, "");
}

TEST_F(WindowMenus, OptionsReachAllWindowsAndTheSettings) {
    std::unique_ptr<CanvasWindow> other = make();
    const auto* bar = window->findChild<QWidget*>("VScroll");
    EXPECT_GT(bar->x(), 0);
    window->command("IconButton");
    EXPECT_EQ(other->findChild<QToolButton*>("Open")->toolButtonStyle(), Qt::ToolButtonTextOnly);
    EXPECT_FALSE(settings.IsOn("IconButton"));
    answer([](QWidget& dialog) {
        EXPECT_EQ(dialog.objectName(), QStringLiteral("ScrollPos"));
        for (auto* choice : dialog.findChildren<QAbstractButton*>())
            if (choice->text() == QStringLiteral("&Left") || choice->text() == QStringLiteral("&Top"))
                choice->click();
        dialog.findChild<QAbstractButton*>("ok")->click();
    });
    window->command("ScrollPos");
    QApplication::processEvents();
    EXPECT_EQ(bar->x(), 0);
    EXPECT_GT(bar->y(), 0);
    SettingsManager later(program_Switches(), folder / "config");
    EXPECT_TRUE(later.Load());
    EXPECT_EQ(program_OptionsOf(later), program_OptionsOf(settings));
    EXPECT_FALSE(later.IsOn("ScrollRight") || later.IsOn("ScrollBottom"));
}

TEST_F(WindowMenus, AnotherWindowTakesTheMenuOfItsDescription) {
    DialogDescription description;
    description.name = "Statistics";
    description.items = {{"TraxStatisticsMenu", DialogKind::MenuLine}};
    DialogModel model(description);
    std::string chosen;
    model.onMenu = [&](const std::string& body) { chosen = body; };
    const std::unique_ptr<QMenuBar> bar(menu_MakeBar(model));
    ASSERT_TRUE(bar);
    bar->actions()[0]->menu<QMenu*>()->actions().last()->trigger();
    EXPECT_EQ(chosen, "Close");
    DialogModel none{DialogDescription{}};
    EXPECT_EQ(menu_MakeBar(none), nullptr);
}

TEST_F(WindowMenus, AButtonTellsOfItselfOnTheMessageLine) {
    canvas().fields.message = "before";
    QEvent enter(QEvent::Enter), leave(QEvent::Leave);
    QApplication::sendEvent(button("Open"), &enter);
    EXPECT_EQ(window->message(), "Choose a data file and show it in the canvas");
    EXPECT_EQ(button("Open")->toolTip(), QStringLiteral("Open Data File"));
    QApplication::sendEvent(button("Open"), &leave);
    EXPECT_EQ(window->message(), "before");
}

}  // namespace
