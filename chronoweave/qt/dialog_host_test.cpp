// Dialogs and windows of the host, driven on the offscreen platform.
#include "windlib/qt/dialog_host.h"

#include <gtest/gtest.h>

#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>

#include "chronoweave/analysis/dialogs.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/settings.h"
#include "windlib/lagraph/surface.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_view.h"
#include "windlib/qt/msl_view.h"

namespace {

DialogDescription sample(bool menu = false) {
    DialogDescription d;
    d.name = "Sample";
    d.title = "Sample window";
    d.items = {{"list", DialogKind::List, "", "Things", Dialog_Multiple, {"Name", "ID"}},
               {"picture", DialogKind::Strip, "", "Picture"},
               {"field", DialogKind::TextField, "", "Field"},
               {"ok", DialogKind::Button, "OK", "", Dialog_Default},
               {"ts_info", DialogKind::StatusText, "", "Message"}};
    if (menu) d.items.push_back({"MenuBar", DialogKind::MenuLine, "", "Menu"});
    d.menu = menu;
    d.layout = {"MinSizes",
                "Sizes",
                "0,(),(),300,0,0,0,0,1,1,1,Horizontal",
                "0,(),(),400,0,0,0,0,1,1,1,Vertical",
                "@list,(0),(),0,300,0,0,0,1,1,1,Horizontal",
                "@list,(0),(@picture,@field,@ok,@ts_info),0,200,0,0,0,1,1,1,Vertical",
                "@picture,(0),(),0,0,0,0,0,1,1,1,Horizontal",
                "Positions",
                "(@picture),@list,0,0,0,0,0,Top,Top,Bottom",
                "(@field),@picture,0,0,0,0,0,Top,Top,Bottom",
                "(@ok),@field,0,0,0,0,0,Top,Top,Bottom",
                "(@ts_info),@ok,0,0,0,0,0,Top,Top,Bottom"};
    return d;
}

QWidget* dialogShown() {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isModal() && window->isVisible()) return window;
    return nullptr;
}

class Host : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    DialogModel& open(bool menu = false) { return host.open(std::make_unique<DialogModel>(sample(menu))); }

    TestFolder folder;
    SettingsManager settings{{}, folder / "config"};
    QWidget over;
    QtDialogHost host{&over, &settings};
};

TEST_F(Host, WindowsBearTheirNamesAndAreRemembered) {
    DialogModel& model = open();
    QWidget* window = host.windowOf(model);
    ASSERT_TRUE(window && window->isVisible());
    EXPECT_EQ(window->objectName(), "Sample");
    for (const char* name : {"list", "picture", "field", "ok", "ts_info"}) {
        auto* item = window->findChild<QWidget*>(QLatin1String(name));
        ASSERT_TRUE(item) << name;
        EXPECT_FALSE(item->accessibleName().isEmpty()) << name;
    }
    EXPECT_TRUE(window->findChild<QWidget*>("list")->nextInFocusChain());
    model.setTitle("Other");
    EXPECT_EQ(window->windowTitle(), "Other");
    window->setGeometry(40, 50, 500, 400);
    int closes = 0;
    model.onClose = [&](int result) { closes += result == Dialog_Dismissed ? 1 : 100; };
    testing_Key(*window, Qt::Key_Escape);
    EXPECT_EQ(closes, 1);
    EXPECT_EQ(host.openWindows(), 0u);
    QApplication::processEvents();
    DialogModel& again = open();
    EXPECT_EQ(host.windowOf(again)->geometry(), QRect(40, 50, 500, 400));
    EXPECT_TRUE(settings.Position("Trvgui.Sample"));
    host.raise(again);
    EXPECT_EQ(host.windowOf(again)->mapFromGlobal(QCursor::pos()), QPoint(10, 10));
    // By its frame: the logic may refuse.
    again.onPress = {};
    host.windowOf(again)->close();
    EXPECT_EQ(host.openWindows(), 0u);
}

TEST_F(Host, AWindowOpensByItsParentAndGrowsWithItsFont) {
    over.move(200, 120);
    over.show();
    DialogDescription description = dialogs_KeySheet();
    description.offset = 10;
    QWidget* window = host.windowOf(host.open(std::make_unique<DialogModel>(description)));
    EXPECT_EQ(window->pos(), over.pos() + QPoint(10, 10));
    const QSize before = window->size();
    QFont font = window->font();
    font.setPointSize(font.pointSize() * 2);
    window->setFont(font);
    QApplication::processEvents();
    EXPECT_GT(window->width(), before.width() * 3 / 2);
    EXPECT_GT(window->height(), before.height() * 5 / 4);
}

TEST_F(Host, AWindowThatClosesInsideADialogTakesItAlongAndLivesUntilThatIsOver) {
    over.show();
    for (const bool onTop : {false, true}) {
        DialogModel& window = open();
        bool gone = false, goneInside = true;
        window.onClose = [mark = std::shared_ptr<void>(nullptr, [&](void*) { gone = true; })](int) {};
        (onTop ? host.windowOf(window) : &over)->activateWindow();
        QApplication::processEvents();
        QTimer::singleShot(0, [&] {
            QWidget* dialog = dialogShown();
            ASSERT_TRUE(dialog);
            EXPECT_EQ(dialog->parentWidget() == host.windowOf(window), onTop);
            window.close(1);
            QApplication::processEvents();
            QApplication::processEvents();
            goneInside = gone;
            QWidget* left = dialogShown();
            EXPECT_EQ(left == nullptr, onTop);
            if (left) left->close();
        });
        DialogModel dialog(sample());
        EXPECT_EQ(host.run(dialog), Dialog_Dismissed);
        EXPECT_FALSE(goneInside);
        QApplication::processEvents();
        EXPECT_TRUE(gone);
    }
}

TEST_F(Host, QuestionsAndMenusDoNotWaitWhereNobodyIs) {
    std::string said;
    gen_set_report_sink([&](int, const std::string& line) { said += line; });
    EXPECT_FALSE(host.ask("Save?"));
    EXPECT_NE(said.find("Save?"), std::string::npos);
    host.message("Bad %s.");
    EXPECT_NE(said.find("Bad %s."), std::string::npos);
    gen_set_report_sink({});
    host.answer = [](const std::string& question) { return question == "Save?"; };
    EXPECT_TRUE(host.ask("Save?"));
    const std::vector<PopUpRow> rows = {
        {"Show &Event"}, {popUpSeparator}, {"Move", false}, {"Follow", true, true}};
    EXPECT_EQ(host.popUpMenu("Operations", rows), -1);
    EXPECT_FALSE(host.chooseColour("Colour", 0));
    EXPECT_EQ(host.chooseSaveFile("Save", "a", "Text (*.txt)"), "");
    for (const int wanted : {3, 0, -1}) {
        host.popUpShown = [&](QMenu& menu) {
            const QList<QAction*> actions = menu.actions();  // the title stands first
            ASSERT_EQ(actions.size(), 5);
            EXPECT_EQ(actions[0]->text(), "Operations");
            EXPECT_TRUE(actions[2]->isSeparator() && !actions[3]->isEnabled() && actions[4]->isChecked());
            QTimer::singleShot(0, &menu, [&menu, wanted] {
                if (wanted >= 0) menu.setActiveAction(menu.actions()[wanted + 1]);
                testing_Key(menu, wanted < 0 ? Qt::Key_Escape : Qt::Key_Return);
            });
        };
        EXPECT_EQ(host.popUpMenu("Operations", rows), wanted);
    }
    host.copyText("copied");
    EXPECT_EQ(QApplication::clipboard()->text(), "copied");
}

TEST_F(Host, AMenuLineGetsAMenuBar) {
    std::string body;
    host.makeMenuBar = [](const std::string& name, DialogModel& model) {
        EXPECT_EQ(name, "Sample");
        auto* bar = new QMenuBar;
        QObject::connect(bar->addMenu("File")->addAction("Close"), &QAction::triggered, bar,
                         [&model] { model.menu("Quit"); });
        return bar;
    };
    DialogModel& model = open(true);
    model.onMenu = [&](const std::string& chosen) {
        body = chosen;
        model.close(0);
    };
    auto* bar = host.windowOf(model)->findChild<QMenuBar*>("MenuBar");
    ASSERT_TRUE(bar);
    bar->actions()[0]->menu()->actions()[0]->trigger();
    EXPECT_EQ(body, "Quit");
    EXPECT_EQ(host.openWindows(), 0u);
}

TEST_F(Host, ListsAndStripsOfAWindowReachItsLogic) {
    DialogModel& model = open();
    std::string told;
    model.setRows("list", {{{"plum", "1"}, 11}, {{"pear", "2"}, 12}, {{"fig", "3"}, 13}});
    model.onSelect = [&](const std::string& name) {
        told += name;
        for (const uint64_t id : model.selectedIds(name)) told += " " + std::to_string(id);
    };
    model.onRowClick = [&](const std::string&, int row, int column, int clicks) {
        told += "@" + std::to_string(row) + std::to_string(column) + std::to_string(clicks);
    };
    model.onPicture = [&](const std::string& name, int x, int y) {
        told += name + std::to_string(x) + "," + std::to_string(y);
    };
    model.setPainter("picture",
                     [](Surface& surface, int w, int h) { surface.fillRect(0, 0, w, h, 0x123456); });
    QWidget* window = host.windowOf(model);
    auto* list = window->findChild<MslView*>("list");
    QApplication::processEvents();
    EXPECT_TRUE(model.sortRows("list", 0));
    testing_Click(*list->viewport(), list->visualRect(list->model()->index(0, 1)).center());
    EXPECT_EQ(std::exchange(told, ""), "list 13@011");
    model.setMessage("Found 3.");
    testing_Key(*list, Qt::Key_P, "p");
    EXPECT_EQ(model.message(), "Srch: p");
    EXPECT_EQ(std::exchange(told, ""), "list 12");
    testing_Key(*list, Qt::Key_Escape);
    EXPECT_EQ(model.message(), "Found 3.");
    EXPECT_EQ(host.openWindows(), 1u);  // that Escape ended the search
    auto* picture = window->findChild<QWidget*>("picture");
    EXPECT_EQ(picture->grab().toImage().pixelColor(2, 2), QColor(0x123456));
    testing_Click(*picture, {7, 3});
    EXPECT_EQ(told, "picture7,3");
    model.setEnabled("list", false);
    EXPECT_FALSE(model.clickRow("list", 0, 0));
}

TEST_F(Host, TheKeyboardGoesThroughTheItemsInTheirOrder) {
    DialogModel& model = open();
    QWidget* window = host.windowOf(model);
    window->activateWindow();
    QApplication::processEvents();
    std::vector<std::string> order;
    for (int i = 0; i < 3; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        testing_Key(*QApplication::focusWidget(), Qt::Key_Tab, "\t");
    }
    EXPECT_EQ(order, (std::vector<std::string>{"list", "field", "ok"}));
}

}  // namespace
