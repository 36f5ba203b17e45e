#include "windlib/dialog/model.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

DialogDescription sample() {
    DialogDescription d;
    d.title = "Sample";
    d.items = {{"field", DialogKind::TextField, "first"},
               {"list", DialogKind::List, "", "List", 0, {"Name", "ID"}},
               {"many", DialogKind::List, "", "Many", Dialog_Multiple},
               {"unit", DialogKind::PullDown, "", "Unit", 0, {"a", "b"}},
               {"auto", DialogKind::CheckBox, "Auto"},
               {"fixed", DialogKind::TextField, "", "", Dialog_ReadOnly},
               {"ok", DialogKind::Button, "OK", "", Dialog_Default},
               {"cancel", DialogKind::Button, "Cancel", "", Dialog_Cancel},
               {"strip", DialogKind::Strip, "", "Bars"},
               {"ts_info", DialogKind::StatusText}};
    return d;
}

// A model that writes down what its logic and its platform are told.
struct Recorded {
    DialogModel model{sample()};
    std::string told, shown;

    Recorded() {
        model.onPress = [this](const std::string& name) { told += "press " + name + ";"; };
        model.onEdit = [this](const std::string& name, const std::string& text) {
            told += "edit " + name + "=" + text + ";";
        };
        model.onCommit = [this](const std::string& name, const std::string& text) {
            told += "commit " + name + "=" + text + ";";
        };
        model.onSelect = [this](const std::string& name) { told += "select " + name + ";"; };
        model.onActivate = [this](const std::string& name, int row) {
            told += "activate " + name + std::to_string(row) + ";";
        };
        model.onChoose = [this](const std::string& name, int choice) {
            told += "choose " + name + std::to_string(choice) + ";";
        };
        model.onCheck = [this](const std::string& name, bool on) {
            told += "check " + name + (on ? "1;" : "0;");
        };
        model.onPicture = [this](const std::string& name, int x, int y) {
            told += "picture " + name + std::to_string(x) + "/" + std::to_string(y) + ";";
        };
        model.onClose = [this](int result) { told += "close " + std::to_string(result) + ";"; };
        model.itemChanged = [this](const std::string& name) { shown += name + ";"; };
        model.titleChanged = [this] { shown += "title;"; };
        model.closed = [this] { shown += "closed;"; };
    }
    std::string take() { return std::exchange(told, ""); }
};

TEST(DialogModelTest, TheUserActsAndTheLogicIsTold) {
    Recorded r;
    r.model.setRows("list", {{{"x", "1"}, 1}, {{"y", "2"}, 2}});
    r.model.setRows("many", {{{"x"}}, {{"y"}}});
    r.shown.clear();
    struct Row {
        std::function<bool(DialogModel&)> act;
        bool taken;
        const char* told;
    };
    const Row rows[] = {
        {[](DialogModel& m) { return m.press("ok"); }, true, "press ok;"},
        {[](DialogModel& m) { return m.press("field"); }, false, ""},
        {[](DialogModel& m) { return m.press("gone"); }, false, ""},
        {[](DialogModel& m) { return m.edit("field", "a"); }, true, "edit field=a;"},
        {[](DialogModel& m) { return m.edit("field", "a"); }, true, ""},
        {[](DialogModel& m) { return m.commit("field"); }, true, "commit field=a;"},
        {[](DialogModel& m) { return m.commit("field"); }, true, ""},  // only when the text changed
        {[](DialogModel& m) { return m.type("field", "b"); }, true, "edit field=b;commit field=b;"},
        {[](DialogModel& m) { return m.edit("fixed", "b"); }, false, ""},
        {[](DialogModel& m) { return m.select("list", {1}); }, true, "select list;"},
        {[](DialogModel& m) {
             return m.select("list", {0, 1});
         },
         false, ""},
        {[](DialogModel& m) { return m.select("list", {2}); }, false, ""},
        {[](DialogModel& m) { return m.select("list", {-1}); }, false, ""},
        {[](DialogModel& m) {
             return m.select("many", {0, 1});
         },
         true, "select many;"},
        {[](DialogModel& m) { return m.activate("list", 1); }, true, "activate list1;"},
        {[](DialogModel& m) { return m.activate("list", 2); }, false, ""},  // a click below the last row
        {[](DialogModel& m) { return m.activate("list", -1); }, false, ""},
        {[](DialogModel& m) { return m.choose("unit", 1); }, true, "choose unit1;"},
        {[](DialogModel& m) { return m.choose("unit", 2); }, false, ""},
        {[](DialogModel& m) { return m.check("auto", true); }, true, "check auto1;"},
        {[](DialogModel& m) { return m.picture("strip", 3, 4); }, true, "picture strip3/4;"},
        {[](DialogModel& m) { return m.key(DialogKey::Escape); }, true, "press cancel;"},
        {[](DialogModel& m) { return m.key(DialogKey::Enter); }, true, "press ok;"},
        {[](DialogModel& m) { return m.edit("field", "c") && m.key(DialogKey::Enter, "field"); }, true,
         "edit field=c;commit field=c;press ok;"},
    };
    for (const Row& row : rows) {
        const auto index = &row - rows;
        EXPECT_EQ(row.act(r.model), row.taken) << index;
        EXPECT_EQ(r.take(), row.told) << index;
    }
    EXPECT_EQ(r.shown, "");  // the platform knows what it did itself
    EXPECT_EQ(r.model.selectedRow("list"), 1);
    EXPECT_EQ(r.model.selectedRow("many"), Dialog_ManyRows);
    EXPECT_EQ(r.model.item("field").text, "c");
}

TEST(DialogModelTest, AnItemOfAnotherKindRefuses) {
    Recorded r;
    r.model.setRows("list", {{{"x", "1"}, 1}});
    const struct {
        const char* what;
        std::function<bool(DialogModel&, const std::string&)> act;
        std::vector<std::string> kinds;  // items that take it
    } acts[] = {
        {"press", [](DialogModel& m, const std::string& name) { return m.press(name); }, {"ok", "cancel"}},
        {"edit", [](DialogModel& m, const std::string& name) { return m.edit(name, "x"); }, {"field"}},
        {"commit",
         [](DialogModel& m, const std::string& name) { return m.commit(name); },
         {"field", "fixed"}},
        {"select",
         [](DialogModel& m, const std::string& name) { return m.select(name, {}); },
         {"list", "many"}},
        {"activate", [](DialogModel& m, const std::string& name) { return m.activate(name, 0); }, {"list"}},
        {"click",
         [](DialogModel& m, const std::string& name) { return m.clickRow(name, 0, 0, 1); },
         {"list", "many"}},
        {"menu",
         [](DialogModel& m, const std::string& name) { return m.rowMenu(name, 0, 0); },
         {"list", "many"}},
        {"sort", [](DialogModel& m, const std::string& name) { return m.sortRows(name, 0); }, {"list"}},
        {"picture", [](DialogModel& m, const std::string& name) { return m.picture(name, 1, 1); }, {"strip"}},
        {"choose", [](DialogModel& m, const std::string& name) { return m.choose(name, 0); }, {"unit"}},
        {"check", [](DialogModel& m, const std::string& name) { return m.check(name, true); }, {"auto"}},
    };
    for (const auto& act : acts)
        for (const DialogItem& item : sample().items) {
            const bool takes = std::find(act.kinds.begin(), act.kinds.end(), item.name) != act.kinds.end();
            EXPECT_EQ(act.act(r.model, item.name), takes) << act.what << " " << item.name;
            const std::string told = r.take();
            EXPECT_TRUE(takes || told.empty()) << act.what << " " << item.name << " told " << told;
        }
}

TEST(DialogModelTest, DisabledAndHiddenItemsRefuse) {
    Recorded r;
    r.model.setEnabled("ok", false);
    r.model.setVisible("auto", false);
    EXPECT_FALSE(r.model.press("ok"));
    EXPECT_FALSE(r.model.key(DialogKey::Enter));
    EXPECT_FALSE(r.model.check("auto", true));
    EXPECT_EQ(r.told, "");
    EXPECT_FALSE(r.model.item("gone").enabled);
}

TEST(DialogModelTest, TheLogicSetsAndThePlatformIsTold) {
    Recorded r;
    r.model.setText("field", "first");  // as it is
    EXPECT_EQ(r.shown, "");
    r.model.setText("field", "second");
    r.model.setMessage("Invalid time.");
    r.model.setTitle("Other");
    r.model.setProgress("ts_info", 1, 2);
    r.model.setText("gone", "x");
    r.model.setChoice("unit", 7);
    EXPECT_EQ(r.shown, "field;ts_info;title;ts_info;");
    EXPECT_EQ(r.told, "");
    EXPECT_EQ(r.model.message(), "Invalid time.");
    EXPECT_EQ(r.model.item("unit").choice, 0);
    EXPECT_TRUE(r.model.commit("field"));
    EXPECT_EQ(r.told, "");  // what the logic set is no change of the user's
    r.model.setItemTitle("ok", "Total");
    EXPECT_EQ(r.model.shownText("ok"), "Total: OK");
}

TEST(DialogModelTest, FieldsTellOfEnterAndOfferTexts) {
    DialogDescription description = sample();
    description.items[0].flags = Dialog_PullsDown;
    DialogModel model(description);
    std::string told;
    model.onPress = [&](const std::string& name) { told += "press " + name + ";"; };
    model.onPullDown = [&](const std::string& name) { told += "offer " + name + ";"; };
    model.key(DialogKey::Enter, "field");
    EXPECT_EQ(std::exchange(told, ""), "press ok;") << "where nobody is told of Enter";
    model.onEnter = [&](const std::string& name) { told += "enter " + name + ";"; };
    model.onCommit = [&](const std::string&, const std::string& text) { told += text + ";"; };
    model.edit("field", "x");
    model.key(DialogKey::Enter, "field");
    model.key(DialogKey::Enter, "field");
    model.key(DialogKey::Enter, "list");
    EXPECT_EQ(std::exchange(told, ""), "x;enter field;enter field;press ok;");
    EXPECT_TRUE(model.pullDown("field"));
    model.setReadOnly("field", true);
    EXPECT_FALSE(model.edit("field", "y"));
    for (const char* item : {"field", "fixed", "list", "ok", "nobody"})
        EXPECT_FALSE(model.pullDown(item)) << item;
    model.setReadOnly("field", false);
    EXPECT_TRUE(model.edit("field", "y"));
    EXPECT_EQ(told, "offer field;");
}

TEST(DialogModelTest, ARefillSelectsNothing) {
    Recorded r;
    r.model.setRows("list", {{{"x"}, 7}, {{"y"}, 8}});
    r.model.setSelected("list", {1});
    EXPECT_EQ(r.model.selectedRow("list"), 1);
    EXPECT_EQ(r.model.item("list").rows[1].id, 8u);
    r.model.setSelected("list", {0, 1});  // one at most
    EXPECT_EQ(r.model.selectedRow("list"), 1);
    r.model.setRows("list", {{{"x"}}});
    EXPECT_EQ(r.model.selectedRow("list"), Dialog_NoRow);
    EXPECT_EQ(r.model.item("list").columnTitles.size(), 2u);
}

TEST(DialogModelTest, ARefillKeepsTheOrderThatTheUserChose) {
    Recorded r;
    const auto names = [&] {
        std::string text;
        for (const DialogRow& row : r.model.item("list").rows) text += row.cells[0];
        return text;
    };
    r.model.setRows("list", {{{"a", "2"}}, {{"b", "1"}}, {{"c", "3"}}});
    EXPECT_TRUE(r.model.sortRows("list", 1));
    EXPECT_EQ(names(), "bac");
    r.model.setRows("list", {{{"d", "9"}}, {{"e", "7"}}, {{"f", "8"}}});
    EXPECT_EQ(names(), "efd");
    EXPECT_TRUE(r.model.sortRows("list", 1));  // the other way round
    r.model.setRows("list", {{{"g", "4"}}, {{"h", "6"}}, {{"i", "5"}}});
    EXPECT_EQ(names(), "hig");
    EXPECT_EQ(r.model.list("list").SortColumn(), 1);
    EXPECT_TRUE(r.model.list("list").SortDescending());
}

TEST(DialogModelTest, WhatChangesInTheListIsSeenInTheItem) {
    Recorded r;
    r.model.setRows("list", {{{"x", "1"}, 7}, {{"y", "2"}, 8}});
    MScrollList& list = r.model.list("list");
    const struct {
        std::function<void()> change;
        std::vector<std::string> names;
    } cases[] = {
        {[&] { list.SetText(1, 0, "new"); }, {"x", "new"}},  // a row looks different
        {[&] { list.InsertRows(0, 1); }, {"", "x", "new"}}, {[&] { list.SortBy(0, true); }, {"x", "new", ""}},
        {[&] { list.RemoveRows(0, 1); }, {"new", ""}},      {[&] { list.SetSize(1, 2); }, {""}},
    };
    for (const auto& each : cases) {
        (void)r.model.item("list");  // what was known before
        each.change();
        std::vector<std::string> names;
        for (const DialogRow& row : r.model.item("list").rows) names.push_back(row.cells[0]);
        EXPECT_EQ(names, each.names) << &each - cases;
    }
}

TEST(DialogModelTest, ClosesOnceAndThenRefuses) {
    Recorded r;
    r.model.close(3);
    r.model.close(4);
    EXPECT_EQ(r.told, "close 3;");
    EXPECT_EQ(r.shown, "closed;");
    EXPECT_EQ(r.model.result(), 3);
    EXPECT_FALSE(r.model.press("ok"));
    EXPECT_FALSE(r.model.key(DialogKey::Escape));

    DialogModel plain{DialogDescription{}};
    plain.dismiss();  // no cancel button
    EXPECT_TRUE(plain.isClosed());
    EXPECT_EQ(plain.result(), Dialog_Dismissed);
}

TEST(DialogModelTest, ACallbackMayDestroyTheModel) {
    auto model = std::make_unique<DialogModel>(sample());
    model->onCommit = [&](const std::string&, const std::string&) { model.reset(); };
    EXPECT_TRUE(model->edit("field", "x"));
    EXPECT_TRUE(model->key(DialogKey::Enter, "field"));
    EXPECT_EQ(model, nullptr);
    model = std::make_unique<DialogModel>(sample());
    model->onPress = [&](const std::string&) { model->close(0); };
    model->onClose = [&](int) { model.reset(); };
    EXPECT_TRUE(model->press("ok"));
    EXPECT_EQ(model, nullptr);
}

}  // namespace
