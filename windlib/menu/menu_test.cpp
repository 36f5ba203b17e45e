#include "windlib/menu/menu.h"

#include <gtest/gtest.h>

#include "shared/libcxxutil/report.h"

namespace {

class Menus : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_report_sink([this](int, const std::string& line) { said += line; });
        gen_set_console_sink([this](std::string_view text) { console += text; });
    }
    void TearDown() override {
        gen_set_report_sink({});
        gen_set_console_sink({});
    }
    // Rows as "label|accelerator|body", separators as "-".
    static std::string Shown(const std::vector<MenuRow>& rows) {
        std::string text;
        for (const MenuRow& row : rows)
            text += (row.IsSeparator() ? "-" : row.label) + "|" + row.accelerator + "|" + row.body + ";";
        return text;
    }
    std::string Rows(const char* name) {
        const MenuResource* menu = menus.Find(name, false);
        return menu ? Shown(menu->rows) : "none";
    }
    MenuResource& Get(const char* name) { return *menus.Find(name, false); }

    MenuRegistry menus;
    std::string said, console;
};

TEST_F(Menus, TextsAreReadAsRows) {
    struct Case {
        std::string text, rows, report;
    };
    const Case cases[] = {
        {"", "", ""},
        {"no braces", "", ""},
        {"{&Open... Open} and {Quit 'Ctrl+Q' Quit} \t", "&Open...||Open;Quit|Ctrl+Q|Quit;", ""},
        {"{-}{-}", "-||;-||;", ""},
        {"{'-' }", "-||;", ""},
        {"{ \t'Zoom In'\n  Zoom In  \n}", "Zoom In||Zoom In;", ""},
        {"{Go {x} y}", "Go||{x} y;", ""},
        {"{Go{x}}", "Go||{x};", ""},
        {"{}", "||;", ""},
        {"{'a}", "||;", "Unmatched single quote in 'a"},
        {"{'a}{b c}", "||;b||c;", "Unmatched single quote in 'a"},
        {"{a 'b c}", "a||;", "Unmatched single quote in 'b c"},
        {"{'it\\047s' x}", "it's||x;", ""},
        {"{'it\\'s' x}", "it\\||s' x;", ""},
        {"{'\\173 \\x7d\\\\' x}", "{ }\\||x;", ""},
        {"{'\"a\" b' x}", "a b||x;", ""},
        {"{\"a\" x}", "a||x;", ""},
        {"{'a \"b\"' x}", "a \"b\"||x;", ""},
        {"{a", "none", "Missing }"},
        {"{a {b}", "none", "Missing }"},
        {"{a} b", "none", "Extraneous input after statement end: b"},
        {"{a}\n", "none", "Extraneous input after statement end: "},
    };
    for (const Case& one : cases) {
        said.clear();
        const auto rows = menu_Parse(one.text, false);
        EXPECT_EQ(rows ? Shown(*rows) : "none", one.rows) << one.text;
        EXPECT_TRUE(one.report.empty() ? said.empty() : said.find(one.report) != std::string::npos)
            << one.text << ": " << said;
    }
    std::string many;
    for (size_t i = 0; i <= MenuRegistry::mostRows; ++i) many += "{-}";
    EXPECT_FALSE(menu_Parse(many, false));
}

// The second byte of a character may look like a brace or a quote.
TEST_F(Menus, DoubleByteCharactersStayWhole) {
    EXPECT_EQ(Shown(*menu_Parse("{'a\x81' b' x}", false)), "a\x81' b||x;");
    EXPECT_EQ(Shown(*menu_Parse("{a\xE0} x}", true)), "a\xE0}||x;");
    EXPECT_FALSE(menu_Parse("{a\xE0} x}", false));
    EXPECT_FALSE(menu_Parse("{a\x80} x}", true));
    EXPECT_EQ(Shown(*menu_Parse("{a\xFC{ x}", true)), "a\xFC{||x;");
}

TEST_F(Menus, AnyLabelReadsBackAsItWasQuoted) {
    for (const char* label :
         {"", "-", "it's", "a{b", "}", "\"x\"", "a\\b", "Gru\xC3\x9F", "\x01\n", "a & b", "'"}) {
        for (const bool doubleByte : {false, true}) {
            const auto rows = menu_Parse("{" + menu_Quote(label) + " Show 1}", doubleByte);
            ASSERT_TRUE(rows && rows->size() == 1) << label;
            EXPECT_EQ(rows->front().label, label);
            EXPECT_EQ(rows->front().body, "Show 1");
        }
    }
    EXPECT_EQ(menu_PlainLabel("a & b"), "a && b");
}

TEST_F(Menus, AStatementNamesItsMenuWithOrWithoutABlankAheadOfTheBrace) {
    const struct {
        const char *statement, *name, *rows, *report;
    } cases[] = {
        {"menu X {{a x}}", "X", "a||x;", ""},
        {"menu Y{{a x}}", "Y", "a||x;", ""},
        {" \n menu   Z\t{ {a x}{b y} } \n", "Z", "a||x;b||y;", ""},
        {"menu X{}", "X", "", ""},
        {"menuX {{a x}}", "X", "", "Missing menu"},
        {"menu X {{a x}", "X", "", "Missing }"},
        {"menu X", "X", "", "Missing menu"},
        {"menu X {{a x}} y", "X", "", "Missing }"},
    };
    for (const auto& one : cases) {
        said.clear();
        EXPECT_EQ(menus.DefineStatement(one.statement), *one.report == '\0') << one.statement;
        EXPECT_EQ(Rows(one.name), one.rows) << one.statement;
        EXPECT_NE(said.find(one.report), std::string::npos) << one.statement << ": " << said;
    }
}

TEST_F(Menus, WhatARowShows) {
    menus.Define("M",
                 "{Save 'C-s' s}{A 'M-x' s}{A 'CM-x' s}{A 'CS-f4' s}{A 'CMS-x' s}{A 'Ctrl+Q' s}{'' 'F5' s}"
                 "{a -b}{'' ''}");
    menus.Update(Get("M"));
    const char* shown[] = {"Save\tCtrl+S",
                           "A\tAlt+X",
                           "A\tCtrl+Alt+X",
                           "A\tCtrl+Shift+F4",
                           "A\tCtrl+Alt+Shift+X",
                           "A\tCtrl+Q",
                           "F5",
                           "a",
                           ""};
    for (size_t i = 0; i < std::size(shown); ++i) EXPECT_EQ(Get("M").rows[i].displayLabel, shown[i]) << i;
    EXPECT_NE(said.find("[MenuResource_MSWBuildLabels] rlen==llen==0\n"), std::string::npos);
}

TEST_F(Menus, RedefinitionReachesThoseWhoShowTheMenuAndABadTextDoesNot) {
    for (const bool fix : {true, false}) {
        menus.danglingPtrFix = fix;
        ASSERT_TRUE(menus.Define("Bar", "{One ->Sub}"));
        ASSERT_TRUE(menus.Define("Sub", "{a x}"));
        int told = 0;
        MenuUser user{[&] { ++told; }};
        menus.Use(Get("Bar"), user);
        menus.Update(Get("Bar"));
        MenuResource* sub = Get("Bar").rows[0].child;
        ASSERT_TRUE(sub);
        EXPECT_TRUE(Get("Bar").rows[0].flags & MenuRow_SubMenu);
        menus.Use(*sub, user);
        EXPECT_TRUE(menus.Define("Sub", "{b y}{c z}"));
        EXPECT_EQ(Get("Bar").rows[0].child, fix ? sub : nullptr);
        ASSERT_EQ(Get("Sub").users, std::vector<MenuUser*>{&user});
        menus.Idle();
        menus.Idle();
        EXPECT_EQ(told, 1);
        ASSERT_TRUE(Get("Bar").rows[0].child);
        EXPECT_EQ(Shown(Get("Bar").rows[0].child->rows), "b||y;c||z;");
        EXPECT_FALSE(menus.Define("Sub", "{b"));
        EXPECT_EQ(Rows("Sub"), "b||y;c||z;");
        EXPECT_FALSE(menus.Define("Sub", std::nullopt));
        EXPECT_NE(said.find("Cannot delete this menu: Sub"), std::string::npos);
        menus.Release(user);
        EXPECT_TRUE(menus.Define("Sub", std::nullopt));
        menus.Update(Get("Bar"));
        EXPECT_EQ(Get("Bar").rows[0].child, nullptr);
        EXPECT_FALSE(Get("Bar").rows[0].flags & MenuRow_SubMenu);
    }
}

TEST_F(Menus, SubMenusComeLateAndNeverLoop) {
    menus.Define("A", "{Self ->A}{Late -> B}{Deferred ->D}");
    menus.Update(Get("A"));
    EXPECT_EQ(Get("A").rows[0].child, nullptr);
    EXPECT_TRUE(Get("A").rows[0].flags & MenuRow_Disabled);
    EXPECT_EQ(Get("A").rows[1].child, nullptr);
    menus.Define("B", "{Back ->A}");
    menus.Defer("D", "{d D}");
    menus.Update(Get("A"));
    EXPECT_EQ(Get("A").rows[1].child, &Get("B"));
    EXPECT_EQ(Get("B").rows[0].child, nullptr);
    EXPECT_EQ(Get("A").rows[2].child, &Get("D"));
    EXPECT_EQ(menus.Find("None", true), nullptr);
    EXPECT_NE(said.find("Cannot find menu: None"), std::string::npos);
    EXPECT_EQ(menus.Find("a", false), nullptr);
    EXPECT_TRUE(menus.Define("MyPopupMenu", "") && Get("MyPopupMenu").isPopup && !Get("A").isPopup);
}

TEST_F(Menus, RowsAreAdded) {
    menus.Define("M", "{b x}{d x}");
    EXPECT_TRUE(menus.AddRow("M", {"c", "", "y", 0, "", true, true}));
    EXPECT_TRUE(menus.AddRow("M", {"a", "", "y", 0, "", true, false}));
    EXPECT_TRUE(menus.AddRow("M", {"a", "", "z", 0, "", false, false}));
    EXPECT_FALSE(menus.AddRow("M", {"B", "", "y", 0, "", false, true}));
    EXPECT_EQ(Rows("M"), "a||y;b||x;c||y;d||x;a||z;");
    EXPECT_FALSE(menus.AddRow("None", {"B", "", "", 0, "", false, false}));
    menus.DefineMagic("Magic", [](MenuResource& menu) { menu.rows.assign(2, MenuRow{"m", "", "n"}); });
    EXPECT_FALSE(menus.AddRow("Magic", {"B", "", "", 0, "", false, false}));
    EXPECT_NE(said.find("Cannot add to this menu: Magic"), std::string::npos);
    menus.Update(Get("Magic"));
    EXPECT_EQ(Rows("Magic"), "m||n;m||n;");
}

TEST_F(Menus, RowsAreModified) {
    struct Case {
        int operation, index;
        const char* text;
        bool done;
        const char* rows;
    };
    const char* before = "a||x;b||y;c||z;";
    const Case cases[] = {
        {Menu_AddRow, 1, "{n}", true, "a||x;n||;b||y;c||z;"},
        {Menu_AddRow, 9, "{n}", true, "a||x;b||y;c||z;n||;"},
        {Menu_AddRow, -1, "{n}", false, before},
        {Menu_AddRow, 0, "{n", false, before},
        {Menu_AddRow, 0, "{n}{m}", false, before},
        {Menu_DeleteRow, 0, "", true, "b||y;c||z;"},
        {Menu_DeleteRow, 3, "", false, before},
        {Menu_DeleteRow, -2, "", false, before},
        {Menu_DeleteRow, -1, "", true, "none"},
        {Menu_ReplaceRow, 2, "{n 'F1' m}", true, "a||x;b||y;n|F1|m;"},
        {Menu_ReplaceRow, 3, "{n}", false, before},
        {Menu_MoveRow, 99, "{A X}", true, "b||y;c||z;A||X;"},
        {Menu_MoveRow, 0, "{c z}", true, "c||z;a||x;b||y;"},
        {Menu_MoveRow, 0, "{c q}", true, "c||q;a||x;b||y;c||z;"},
        {4, 0, "{n}", false, before},
    };
    for (const Case& one : cases) {
        menus.Define("M", "{a x}{b y}{c z}");
        EXPECT_EQ(menus.Modify("M", one.operation, one.index, one.text), one.done)
            << one.operation << one.index;
        EXPECT_EQ(Rows("M"), one.rows) << one.operation << " " << one.index << " " << one.text;
    }
    menus.DefineMagic("Magic", {});
    EXPECT_FALSE(menus.Modify("Magic", Menu_DeleteRow, -1, ""));
    EXPECT_NE(said.find("Cannot modify this menu: Magic"), std::string::npos);
    EXPECT_FALSE(menus.Modify("None", Menu_AddRow, 0, "{a}"));
}

TEST_F(Menus, MenusAreWrittenBack) {
    menus.Define("M", "{'&Zoom In' 'Ctrl+I' Zoom {x}}{-}{Open... Open}");
    menus.Print("M", -1);
    EXPECT_EQ(console, "menu M {\n{ &Zoom In Zoom {x} } \n{ -  } \n{ Open... Open }\n}\n");
    EXPECT_EQ(menus.PrintText(Get("M"), 2), "{ Open... Open }\n");
    EXPECT_EQ(menus.PrintText(Get("M"), 3), "");
    menus.DefineMagic("Magic", {});
    EXPECT_EQ(menus.PrintText(Get("Magic"), -1), "menu Magic Magic\n");
    menus.Define("FilesUsed", "{a}");
    Get("M").rows[2].alternateLabel = "Open it";
    MenuUser user;
    menus.Use(Get("M"), user);
    const auto written = [&](int which) {
        std::vector<std::string> all;
        menus.ForEach([&](const std::string& text) { all.push_back(text); }, which);
        return all;
    };
    const std::string m = "M {{'&Zoom In' 'Ctrl+I' Zoom {x} } {-  } {'Open it' Open } }";
    EXPECT_EQ(written(Menu_All), (std::vector<std::string>{"Magic {}", m}));
    EXPECT_EQ(written(Menu_Unused), std::vector<std::string>{"Magic {}"});
    EXPECT_EQ(written(Menu_InUse), std::vector<std::string>{m});
    EXPECT_TRUE(menus.DefineStatement("menu " + m));
    EXPECT_EQ(Rows("M"), "&Zoom In|Ctrl+I|Zoom {x};-||;Open it||Open;");
    EXPECT_FALSE(menus.DefineStatement("menu M {"));
    EXPECT_FALSE(menus.DefineStatement("M {}"));
    menus.Release(user);
}

TEST_F(Menus, ChosenRowsReachTheCallbackAndUpdatesCanBeHeld) {
    menus.Define("P", "{a x}{b y}");
    Get("P").rows[0].flags = MenuRow_Disabled;
    std::string ran;
    menus.trackPopUp = [](MenuResource& menu, void*, int, int, const MenuCallback& callback) {
        EXPECT_EQ(menu.rows[0].flags, 0u);
        EXPECT_EQ(menu.rows[0].displayLabel, "a");
        MenuRegistry::Run(menu.rows[1], callback);
    };
    bool prepared = false;
    EXPECT_TRUE(menus.ShowPopUp(
        "P", nullptr, -1, -1, [&](const std::string& body) { ran = body; },
        [&](MenuResource&) { prepared = true; }));
    EXPECT_TRUE(prepared);
    EXPECT_EQ(ran, "y");
    EXPECT_FALSE(menus.ShowPopUp("None", nullptr, 0, 0, {}));
    menus.Idle();
    int changes = 0;
    menus.changed = [&] { ++changes; };
    menus.HoldUpdates(true);
    menus.Define("P", "{c z}");
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(menus.AnyChanged());
    menus.HoldUpdates(false);
    EXPECT_EQ(changes, 1);
}

}  // namespace
