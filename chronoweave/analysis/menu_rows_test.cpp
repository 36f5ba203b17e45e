// The rows of all menus: each does something in its window.
#include <filesystem>

#include "chronoweave/analysis/legend_window.h"
#include "chronoweave/analysis/window_testing.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/menus.h"
#include "windlib/dialog/print_testing.h"

namespace {

class MenuRows : public AnalysisWindowTest {
  protected:
    void SetUp() override {
        AnalysisWindowTest::SetUp();
        legend_Attach(canvas);
        if (!menu_Registry().Find("TraxMenuBar", false)) laMenus_Register(menu_Registry());
        host.saveAnswer = test.folder / "saved.csv";
        host.printer = &printer;
    }
    // The window that a command opens, on top.
    DialogModel& Opened(const std::string& command, const std::vector<Step>& chain) {
        laCanvas_CloseViews(canvas);
        if (canvas.calls.legendWindow != nullptr) canvas.calls.legendWindow->dismiss();
        host.dropClosed();
        steps.assign(chain.begin(), chain.end());
        EXPECT_TRUE(laCanvas_Command(canvas, command));
        return Window();
    }
    static std::string MenuOf(const DialogModel& window) {
        for (const DialogItem& item : window.description().items)
            if (item.kind == DialogKind::MenuLine) return item.text;
        return {};
    }
    RecordingPrinter printer;
    // All that a row could have changed.
    std::string Traces(const DialogModel& window) const {
        std::string all = std::to_string(host.copied.size()) + (window.isClosed() ? " closed" : " open") +
                          (std::filesystem::exists(host.saveAnswer) ? " saved" : "") +
                          std::to_string(printer.jobs.size()) + host.popUpTitle;
        for (const LegendStatus& status : canvas.looks.legend.statuses) all += status.visible ? '+' : '-';
        return all;
    }
    // The menus below one, it included, and their rows.
    void Walk(const std::string& menu, std::set<std::string>& menus, std::vector<MenuRow>& rows) const {
        const MenuResource* found = menu_Registry().Find(menu, true);
        ASSERT_NE(found, nullptr) << menu;
        if (!menus.insert(menu).second) return;
        for (const MenuRow& row : found->rows) {
            if (row.IsSeparator()) continue;
            if (row.body.starts_with("->"))
                Walk(row.body.substr(2), menus, rows);
            else
                rows.push_back(row);
        }
    }
};

TEST_F(MenuRows, EachIsKnownToItsWindow) {
    Open();
    const struct {
        const char* command;
        std::vector<Step> chain;
    } windows[] = {{"Search", {AllObjects(), press("event"), choose("Take")}},
                   {"ReportObjects", {press("ok")}},
                   {"ReportGeneral", {AllObjects(), press("event"), choose("Take"), press("ok")}},
                   {"Legend", {}}};
    std::set<std::string> walked;
    for (const auto& window : windows) {
        std::vector<MenuRow> rows;
        Walk(MenuOf(Opened(window.command, window.chain)), walked, rows);
        EXPECT_FALSE(rows.empty()) << window.command;
        for (const MenuRow& row : rows) {
            DialogModel& model = Opened(window.command, window.chain);
            if (row.body == "Undo") {  // of something
                model.select("list", {0});
                model.press("bt_visible");
            }
            if (row.body == "Print") steps.push_back(press("ok"));
            std::filesystem::remove(host.saveAnswer);
            host.popUpTitle.clear();
            const std::string before = Traces(model);
            const int beeps = host.beeps;
            EXPECT_TRUE(model.menu(row.body));
            EXPECT_EQ(host.beeps, beeps) << window.command << ": " << row.label << ", " << row.body;
            EXPECT_NE(Traces(model), before) << window.command << ": " << row.label << ", " << row.body;
        }
        DialogModel& model = Opened(window.command, window.chain);
        const int beeps = host.beeps;
        model.menu("Nonsense");
        EXPECT_EQ(host.beeps, beeps + 1) << window.command;
    }
    std::vector<MenuRow> rows;
    Walk("TraxMenuBar", walked, rows);
    for (const MenuRow& row : rows)  // one row is there for a target that nothing knows how to control
        EXPECT_EQ(laCanvas_HasCommand(row.body), row.body != "Threadx") << row.label << ", " << row.body;
    // No menu is registered that no window shows.
    menu_Registry().ForEach([&](const std::string& statement) {
        EXPECT_TRUE(walked.count(statement.substr(0, statement.find(' ')))) << statement;
    });
}

}  // namespace
