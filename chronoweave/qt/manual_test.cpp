#include <gtest/gtest.h>

#include <QListWidget>
#include <QRegularExpression>
#include <QTextBrowser>
#include <filesystem>

#include "chronoweave/qt/manual_window.h"
#include "chronoweave/traxfunc/input/menus.h"
#include "shared/libcxxutil/files.h"
#include "windlib/menu/menu.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_view.h"

namespace {

const std::filesystem::path folder = std::filesystem::path(CW_SOURCE_DIR) / "docs/manual";

QString page_text(const std::string& page) {
    std::string text;
    const bool outside = page == "formats";  // it is for readers of the code, too
    EXPECT_TRUE(file_read_whole(outside ? folder / "../formats.md" : folder / (page + ".md"), text)) << page;
    return QString::fromStdString(text);
}

class Manual : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
        manual_TakeF1();
    }
};

TEST_F(Manual, EveryFileIsAPageAndEveryLinkAndPictureLeadsSomewhere) {
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        files += entry.path().extension() == ".md" ? 1u : 0u;
    EXPECT_EQ(manual_Pages().size(), files + 1);
    const QRegularExpression link(QStringLiteral("\\]\\(([^)]+)\\)"));
    for (const std::string& page : manual_Pages())
        for (auto at = link.globalMatch(page_text(page)); at.hasNext();) {
            const std::string target = at.next().captured(1).toStdString();
            EXPECT_TRUE(std::filesystem::exists(folder / target)) << page << ": " << target;
        }
}

TEST_F(Manual, EveryWindowHasItsPage) {
    const struct {
        const char *key, *window, *page;
    } cases[] = {{"TRAXHelp", "Trax", "start"},
                 {"TraxMenuBarHelp", "", "commands"},
                 {"", "HideTasks", "objects"},
                 {"legend", "Legend", "legend"},
                 {"search", "SearchResult", "search"},
                 {"report", "x", "report"},
                 {"details", "StatusView", "details"},
                 {"eventtable", "y", "eventtable"},
                 {"", "Options", "options"},
                 {"", "EditBookmarks", "navigate"},
                 {"", "nobody", "start"}};
    const std::vector<std::string> pages = manual_Pages();
    for (const auto& one : cases) {
        EXPECT_EQ(manual_PageOf(one.key, one.window), one.page) << one.key << one.window;
        EXPECT_NE(std::find(pages.begin(), pages.end(), one.page), pages.end());
    }
}

TEST_F(Manual, EveryCommandOfMenusAndToolBarIsExplained) {
    MenuRegistry menus;
    laMenus_Register(menus);
    menus.Update(*menus.Find("TraxMenuBar", true));
    const QString commands = page_text("commands");
    const auto explained = [&](const std::string& body) {
        const QString name = QString::fromStdString(body);
        EXPECT_TRUE(commands.contains(QLatin1Char('`') + name + QLatin1Char('`'), Qt::CaseInsensitive))
            << body;
    };
    for (const MenuRow& top : menus.Find("TraxMenuBar", true)->rows)
        for (const MenuRow& row : top.child->rows)
            if (!row.IsSeparator() && row.child == nullptr) explained(row.body);
    for (const laToolButton& button : laMenus_ToolBar())
        if (!button.IsGap()) explained(button.command);
}

TEST_F(Manual, F1OpensThePageOfTheWindowThatHasTheKeyboard) {
    DialogModel model({.name = "Options", .title = "Options", .items = {{.name = "only"}}});
    DialogView view(model);
    view.show();
    testing_Key(view, Qt::Key_F1);
    ManualWindow* manual = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<ManualWindow*>(window)) manual = found;
    ASSERT_NE(manual, nullptr);
    EXPECT_TRUE(manual->text().source().fileName().contains(QStringLiteral("options")));
    manual->close();
}

TEST_F(Manual, PagesAreFoundByTheirWords) {
    ManualWindow window;
    EXPECT_FALSE(window.open("../../README"));
    ASSERT_TRUE(window.open("legend"));
    EXPECT_TRUE(window.text().toPlainText().contains(QStringLiteral("Never hidden under others")));
    auto* list = window.findChild<QListWidget*>(QStringLiteral("pages"));
    ASSERT_NE(list, nullptr);
    ASSERT_NE(list->currentItem(), nullptr) << "the list tells which page is open";
    EXPECT_EQ(list->currentItem()->text(), QStringLiteral("The legend"));
    EXPECT_EQ(static_cast<size_t>(list->count()), manual_Pages().size());
    window.search(QStringLiteral("percentile JITTER"));
    EXPECT_GE(list->count(), 1);
    EXPECT_LT(list->count(), 4);
    const auto marks = window.text().extraSelections();
    EXPECT_TRUE(marks.empty()) << "the open page does not have the words";
    window.search(QStringLiteral("never"));
    EXPECT_FALSE(window.text().extraSelections().empty());
    window.search(QStringLiteral("nopagesaysthis"));
    EXPECT_EQ(list->count(), 0);
}

}  // namespace
