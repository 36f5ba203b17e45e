#include "chronoweave/traxfunc/input/menus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/life.h"
#include "chronoweave/traxfunc/input/zoom.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/model.h"

namespace {

const char* const windowMenus[] = {"TraxFile",    "TraxView",  "TraxReport",   "TraxConfig",
                                   "TraxControl", "TraxTools", "TraxBookmark", "TraxHelp"};

// Commands, and what becomes of their row and button.
using Shown = std::vector<std::pair<const char*, const char*>>;

Shown of_empty() {
    return {{"NewWindow", "+"},     {"Open", "+"},           {"TraxPrint", "--"},
            {"Quit", "++"},         {"Search", "--"},        {"SearchInterval", "--"},
            {"ZoomIn", "--"},       {"ZoomToRange", "--"},   {"ZoomOut", "--"},
            {"HideTasks", "-"},     {"BottomHistory", "--"}, {"PrevHistory", "--"},
            {"NextHistory", "--"},  {"TopHistory", "--"},    {"DelViews", "--"},
            {"FlatView", "-"},      {"GoToTime", "-"},       {"ShowAll", "-"},
            {"ReportObjects", "-"}, {"ReportTask", "-"},     {"ReportGeneral", "-"},
            {"Legend", "--"},       {"RefreshGap", "-"},     {"CanvasName", "+"},
            {"TimeUnit", "-"},      {"changeunit", " -"},    {"IconButton", "+"},
            {"Options", "+"},       {"Korvantis", "+"},      {"Threadx", "-"},
            {"AddBookmark", "-"},   {"EditBookmarks", "-"},  {"DeleteBookmarks", "-"},
            {"About", "+"},         {"KeySheet", "+"},       {"Help", " +"},
            {"open", " +"},         {"NoRefresh", " +"},     {"vorelbar", "+"}};
}

struct Case {
    const char* state;
    std::function<void()> make;
    Shown shown;
};

class CanvasMenus : public testing::Test {
  protected:
    void SetUp() override {
        laMenus_Register(menus);
        menus.Update(*menus.Find("TraxMenuBar", true));
    }
    void Open() {
        Legend legend = test_legend();
        legend.events[0].flags |= LegendEvent_IntervalSearch;
        ASSERT_TRUE(test.Open(random_events(6, 300), "KORVANTIS", std::move(legend)));
    }
    void Hook() {
        for (const char* name : windowMenus) laCanvas_MenuHook(menus, name, canvas);
        laCanvas_UpdateButtons(canvas, buttons);
    }
    const MenuRow* Row(std::string_view command) {
        for (const char* name : windowMenus)
            if (const MenuRow* row = menus.Find(name, true)->RowOf(command)) return row;
        return nullptr;
    }
    // "+" when the row of a command can be chosen, "-" when not, and the same for its button.
    std::string State(std::string_view command) {
        const MenuRow* row = Row(command);
        std::string state = !row ? " " : row->flags & MenuRow_Disabled ? "-" : "+";
        const auto bar = laMenus_ToolBar();
        for (size_t i = 0; i < bar.size(); ++i)
            if (bar[i].command == command) state += buttons[i].enabled ? "+" : "-";
        return state;
    }

    // Makes each state, and holds the rows and buttons against it.
    void Follow(std::span<const Case> cases) {
        for (const Case& one : cases) {
            one.make();
            Hook();
            for (const auto& [command, state] : one.shown)
                EXPECT_EQ(State(command), state) << one.state << ": " << command;
        }
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    MenuRegistry menus;
    std::vector<laButtonState> buttons;
};

// In each state of the canvas, what becomes of the rows and buttons that it concerns: menu, then button.
TEST_F(CanvasMenus, RowsAndButtonsFollowTheCanvas) {
    DialogModel view{DialogDescription{}};
    const Case cases[] = {
        {"empty", [] {}, of_empty()},
        {"a source, its first view shown",
         [&] {
             Open();
             canvas.past.historyNewest = canvas.past.historyOldest = canvas.past.historyCurrent = -1;
             canvas.marks.cursor[0] = canvas.marks.cursor[1] = -100;
         },
         {{"TraxPrint", "++"},
          {"Search", "++"},
          {"SearchInterval", "++"},
          {"ZoomIn", "++"},
          {"HideTasks", "+"},
          {"ReportTask", "+"},
          {"Legend", "++"},
          {"RefreshGap", "+"},
          {"TimeUnit", "+"},
          {"changeunit", " +"},
          {"GoToTime", "+"},
          {"TopHistory", "--"},
          {"PrevHistory", "--"},
          {"Korvantis", "+"},
          {"AddBookmark", "-"},
          {"FlatView", "+"}}},
        {"no event starts an interval",
         [&] { canvas.looks.legend.events[0].flags &= ~static_cast<uint32_t>(LegendEvent_IntervalSearch); },
         {{"SearchInterval", "--"}, {"Search", "++"}}},
        {"all events start intervals",
         [&] { canvas.options.allForIntervalSearch = true; },
         {{"SearchInterval", "++"}}},
        {"a detail window", [&] { canvas.calls.viewWindows.push_back(&view); }, {{"DelViews", "++"}}},
        {"times in ticks",
         [&] { canvas.axis.timeMode = Time_Tick; },
         {{"TimeUnit", "-"}, {"changeunit", " -"}, {"ZoomIn", "++"}}},
        {"another system",
         [&] { canvas.source.osKind = Os_ThreadX; },
         {{"Korvantis", "-"}, {"Threadx", "-"}}},
        {"an event server", [&] { canvas.calls.upper.serverConnected = true; }, {{"Korvantis", "+"}}},
        {"closed",
         [&] { laCanvas_Command(canvas, "Close"); },
         {{"Search", "--"},
          {"Legend", "--"},
          {"DelViews", "--"},
          {"TopHistory", "--"},
          {"EditBookmarks", "-"}}},
    };
    Follow(cases);
}

TEST_F(CanvasMenus, RowsAndButtonsFollowHistoryAndBookmarks) {
    Open();
    const Case cases[] = {
        {"history at its latest entry",
         [&] { canvas.past.historyNewest = canvas.past.historyCurrent = 3, canvas.past.historyOldest = 1; },
         {{"TopHistory", "--"}, {"NextHistory", "--"}, {"PrevHistory", "++"}, {"BottomHistory", "++"}}},
        {"history at its earliest entry",
         [&] { canvas.past.historyCurrent = 1; },
         {{"TopHistory", "++"}, {"NextHistory", "++"}, {"PrevHistory", "--"}, {"BottomHistory", "--"}}},
        {"history in between",
         [&] { canvas.past.historyCurrent = 2; },
         {{"TopHistory", "++"}, {"NextHistory", "++"}, {"PrevHistory", "++"}, {"BottomHistory", "++"}}},
        {"one cursor", [&] { canvas.marks.cursor[1] = 0.1; }, {{"AddBookmark", "+"}}},
        {"bookmarks",
         [&] { laBookmark_Add(canvas, laAgentId, 0.1); },
         {{"EditBookmarks", "+"}, {"DeleteBookmarks", "+"}, {"ShowBookmark 0", "+"}}},
        {"whole names", [&] { canvas.list.flatView = true; }, {{"FlatView", "+"}}}};
    Follow(cases);
}

TEST_F(CanvasMenus, LabelsAndCheckMarks) {
    Open();
    const struct {
        const char *term, *hide, *report;
    } terms[] = {{"Task", "Change &Hidden Task List", "&Task..."},
                 {"Object", "Change &Hidden Object List", "Object..."},
                 {"group", "Change &Hidden group List", "group..."},
                 {"R&D", "Change &Hidden R&&D List", "&R&&D..."},
                 {"", "Change &Hidden  List", "&..."}};
    for (const auto& one : terms) {
        canvas.list.objectTerm = one.term;
        Hook();
        EXPECT_EQ(Row("HideTasks")->label, one.hide);
        EXPECT_EQ(Row("ReportTask")->label, one.report);
    }
    const struct {
        double first, second;
        const char* label;
    } cursors[] = {{-1, -1, "&Add Bookmark for Selection"},
                   {1, -1, "&Add Bookmark for Selection"},
                   {1, 1, "&Add Bookmark for Selection"},
                   {1, 2, "&Add Bookmarks for Selection"}};
    for (const auto& one : cursors) {
        canvas.marks.cursor[0] = one.first;
        canvas.marks.cursor[1] = one.second;
        Hook();
        EXPECT_EQ(Row("AddBookmark")->label, one.label);
    }
    for (const bool on : {true, false}) {
        canvas.list.flatView = canvas.calls.upper.iconButtons = on;
        Hook();
        for (const char* command : {"FlatView", "IconButton"}) {
            EXPECT_TRUE(Row(command)->flags & MenuRow_Checkable);
            EXPECT_EQ((Row(command)->flags & MenuRow_Checked) != 0, on);
        }
    }
}

TEST_F(CanvasMenus, RecentFilesFillTheirRows) {
    std::vector<std::string> files;
    canvas.calls.upper.recentFiles = [&] { return files; };
    const auto shown = [&] {
        Hook();
        std::string text;
        for (const MenuRow& row : menus.Find("TraxFile", true)->rows)
            if (!row.alternateLabel.empty() && !(row.flags & MenuRow_Hidden))
                text += row.label + "=" + row.body + ";";
        return text;
    };
    EXPECT_EQ(shown(), "");
    files = {"/a&b/run.trr", "/x.trs"};
    EXPECT_EQ(shown(), "&1 /a&&b/run.trr=Open /a&b/run.trr;&2 /x.trs=Open /x.trs;");
    files.assign(12, "/f");
    EXPECT_NE(shown().find("&9 /f=Open /f;"), std::string::npos);
    EXPECT_EQ(shown().find("10"), std::string::npos);
    files.clear();
    EXPECT_EQ(shown(), "");
    std::string written;
    menus.ForEach([&](const std::string& text) { written += text; });
    EXPECT_NE(written.find("{'&9 TRVDataFiles' Open }"), std::string::npos);
}

TEST_F(CanvasMenus, BookmarksAreRowsWhateverTheyAreCalled) {
    Open();
    const char* names[] = {"it's", "a {b", "}", "\"q\"", "Gru\xC3\x9F", "-", "a\\b", "\x01"};
    for (size_t i = 0; i < std::size(names); ++i) {
        LaBookmark mark;
        mark.label = text_escape(names[i]);
        canvas.marks.bookmarks.push_back(mark);
    }
    Hook();
    const MenuResource* menu = menus.Find("TraxBookmark", true);
    ASSERT_EQ(menu->rows.size(), 4 + std::size(names));
    EXPECT_TRUE(menu->rows[3].IsSeparator());
    for (size_t i = 0; i < std::size(names); ++i) {
        EXPECT_EQ(menu->rows[4 + i].body, "ShowBookmark " + std::to_string(i));
        EXPECT_EQ(menu->rows[4 + i].label, names[i]);
    }
    // What has not changed is not defined anew: its users would be told each time that it opens.
    menus.Idle();
    Hook();
    EXPECT_FALSE(menus.AnyChanged());
    canvas.marks.bookmarks.clear();
    Hook();
    EXPECT_TRUE(menus.AnyChanged());
    EXPECT_EQ(menus.Find("TraxBookmark", true)->rows.size(), 3u);
}

TEST_F(CanvasMenus, EveryRowAndButtonIsAKnownCommandWithItsOwnLetterAndKey) {
    std::set<std::string> keys;
    for (const char* name : windowMenus) {
        std::set<char> letters;
        for (const MenuRow& row : menus.Find(name, true)->rows) {
            if (row.IsSeparator()) continue;
            if (row.child == nullptr && row.body != "Threadx") {
                EXPECT_TRUE(laCanvas_HasCommand(row.body)) << row.label;
            }
            const char letter = dialog_Shortcut(row.label);
            EXPECT_TRUE(letter == 0 || letters.insert(letter).second) << name << ": " << row.label;
            EXPECT_TRUE(row.accelerator.empty() || keys.insert(row.accelerator).second) << row.label;
        }
    }
    std::set<std::string> names;
    for (const laToolButton& button : laMenus_ToolBar()) {
        if (button.IsGap()) continue;
        EXPECT_TRUE(laCanvas_HasCommand(button.command)) << button.name;
        EXPECT_TRUE(names.insert(button.name).second);
        EXPECT_FALSE(button.LongHelp().empty() || button.ToolTip().empty());
        EXPECT_NE(icon_Find(button.row().icon), NoIcon) << button.name;
    }
    EXPECT_EQ(names.size(), 18u);
}

// What scripts and site files know: the texts as they have always been.
TEST_F(CanvasMenus, OriginalTextsStayByteForByte) {
    const struct {
        const char *name, *text;
    } texts[] = {
        {"TraxMenuBar",
         "{&File ->TraxFile}{&View ->TraxView} {&Report ->TraxReport} {&Config ->TraxConfig} "
         "{T&arget ->TraxControl} {&Tools ->TraxTools}{&Bookmarks ->TraxBookmark} {&Help ->TraxHelp}"},
        {"TraxFile",
         "{'&New Window' NewWindow}{\x01} {'&Open...' Open}{\x01} {'&1 TRVDataFiles' Open} "
         "{'&2 TRVDataFiles' Open} {'&3 TRVDataFiles' Open} {'&4 TRVDataFiles' Open} {'&5 TRVDataFiles' "
         "Open} "
         "{'&6 TRVDataFiles' Open} {'&7 TRVDataFiles' Open} {'&8 TRVDataFiles' Open} "
         "{'&9 TRVDataFiles' Open}{\x01} {'&Merge Raw Event Files...' TraxMergeEventFiles}{\x01} "
         "{'&Print...' TraxPrint}{\x01} {'&Quit' 'Ctrl+Q' Quit}"},
        {"TraxView",
         "{'&Search...' Search} {'Search Intervals...' SearchInterval}{\x01} {'Zoom &In' ZoomIn} "
         "{'Zoom To &Range' ZoomToRange} {'Zoom &Out' ZoomOut} {'Change &Hidden Task List' HideTasks}{\x01} "
         "{'&Earliest History Item' BottomHistory} {'&Previous History Item' PrevHistory} "
         "{'&Next History Item' NextHistory} {'&Latest History Item' TopHistory}{\x01} "
         "{'&Delete Object Views' DelViews}{\x01} {'&Flat View' FlatView}"},
        {"TraxReport",
         "{'&Objects...' ReportObjects}{\x01} {'&Task...' ReportTask}{\x01} {'&General...' ReportGeneral}"},
        {"TraxConfig",
         "{'&Legend' Legend}{\x01} {'&Refresh Interval...' RefreshGap}{\x01} {'Canvas &Name...' CanvasName}"
         "{\x01} {'&Time Unit...' TimeUnit}"},
        {"TraxTools", "{'&VOREL Launcher...' vorelbar}{\x01} {'&Editor...' editor} {'&NotePad...' notepad}"},
        {"TraxControl", "{'&KORVANTIS' Korvantis} {'&ThreadX' Threadx}"},
        {"TraxHelp", "{&Manuals ->ManualsMenu}{\x01} {'&About VOREL Chronoweave...' About}"},
        {"TraxBookmark",
         "{'&Add Bookmarks for Selection' AddBookmark} {'&Delete All Bookmarks' DeleteBookmarks} "
         "{'&Edit Bookmarks...' EditBookmarks}"},
    };
    for (const auto& [name, text] : texts) EXPECT_EQ(laMenu_Text(name, MenuForm::Original), text) << name;
    // Keys and rows are only added.
    for (const auto& [name, text] : texts) {
        const auto original = menu_Parse(text, false),
                   full = menu_Parse(laMenu_Text(name, MenuForm::Full), false);
        size_t at = 0;
        for (const MenuRow& row : *full)
            if (at < original->size() && row.body == (*original)[at].body &&
                row.label == (*original)[at].label)
                ++at;
        EXPECT_EQ(at, original->size()) << name;
    }
}

// After a change of the table: CW_UPDATE_DOCS=1 traxfunc_test --gtest_filter='*Manual*'
TEST_F(CanvasMenus, TheManualsTableIsMadeFromTheCommands) {
    const std::string path = CW_SOURCE_DIR "/docs/manual/commands.md";
    std::stringstream read;
    read << std::ifstream(path).rdbuf();
    std::string page = read.str();
    const std::string table = laCommands_ManualTable();
    const size_t first = page.find("| menu | row |"), last = page.find("\n\n", first);
    ASSERT_NE(first, std::string::npos);
    if (std::getenv("CW_UPDATE_DOCS")) std::ofstream(path) << page.replace(first, last + 1 - first, table);
    EXPECT_NE(page.find("\n" + table + "\n"), std::string::npos) << "the page is not of this table";
}

TEST_F(CanvasMenus, EveryKeyHasOneCommandAndIsShown) {
    std::set<std::string> window, picture;
    std::string sheet;
    for (const laKeyLine& line : laCommands_KeySheet()) sheet += line.keys + "\n";
    const auto each = [](std::string keys, const std::function<void(const std::string&)>& take) {
        for (size_t end; !keys.empty(); keys.erase(0, std::min(end + 2, keys.size())))
            take(keys.substr(0, end = std::min(keys.find(", "), keys.size())));
    };
    for (const laCommand& command : laCommands_All()) {
        each(command.keys, [&](const std::string& key) {
            EXPECT_TRUE(window.insert(key).second) << key;
            EXPECT_EQ(laCommands_OfKey(key, KeyPlace::Window), &command);
        });
        each(command.pictureKeys, [&](const std::string& key) {
            EXPECT_TRUE(picture.insert(key).second && !window.contains(key)) << key;
            EXPECT_EQ(laCommands_OfKey(key, KeyPlace::Picture), &command);
        });
        const std::string keys = laCommand_Keys(command);
        EXPECT_TRUE(keys.empty() || sheet.find(keys) != std::string::npos) << keys;
        EXPECT_TRUE(keys.empty() || *command.label) << command.name << ": no list shows it";
        if (const MenuRow* row = Row(command.name); row && command.takes != CommandTakes::Text) {
            EXPECT_EQ(row->accelerator, laCommand_FirstKey(command));
        }
    }
    EXPECT_EQ(laCommands_OfKey("f", KeyPlace::Window), nullptr);
    EXPECT_EQ(laCommands_OfKey("", KeyPlace::Picture), nullptr);
}

// What a command changed: one word for each part of the canvas, or what was called above it.
class Effects : public CanvasMenus {
  protected:
    // A state in which every row can do something: the middle of a history, a selection, a bookmark, a
    // window.
    void Prepare() {
        laCanvas_Reset(canvas, laResetOf::Source);
        Open();
        canvas.source.canvasName = "run";
        canvas.axis.autoAdjustUnit = false;
        for (const double low : {0.1, 0.3, 0.5})
            laCanvas_Zoom(canvas, canvas.source.totalLength * low, canvas.source.totalLength * (low + 0.2));
        laHistory_Prev(canvas);
        canvas.marks.cursor[0] = canvas.view.viewLow + canvas.view.viewLength / 4;
        canvas.marks.cursor[1] = canvas.view.viewLow + canvas.view.viewLength / 2;
        laBookmark_Add(canvas, laAgentId, canvas.source.totalLength / 3);
        window = std::make_unique<DialogModel>(DialogDescription());
        window->onClose = [this](int) { canvas.calls.viewWindows.clear(); };
        canvas.calls.viewWindows = {window.get()};
        called.clear();
        for (const laCommand& command : laCommands_All()) Record(command.name);
    }
    void Record(const std::string& name) {
        // Those that the canvas does by itself stay its own.
        for (const char* own : {"ZoomIn", "ZoomToRange", "ZoomOut", "ShowAll", "TopHistory", "BottomHistory",
                                "PrevHistory", "NextHistory", "FlatView", "DelViews", "AddBookmark",
                                "DeleteBookmarks", "changeunit", "NoRefresh"})
            if (name == own) return;
        canvas.calls.upper.commands[name] = [this, name](const std::string&) {
            called += "above: " + name;
            return true;
        };
    }
    std::string EffectOf(const std::string& command) {
        Prepare();
        const double low = canvas.view.viewLow, high = canvas.view.viewHigh;
        const int history = canvas.past.historyCurrent, unit = canvas.axis.timeMode;
        const size_t bookmarks = canvas.marks.bookmarks.size();
        const bool flat = canvas.list.flatView;
        const bool live = canvas.source.liveRefresh;
        gen_set_console_sink([this](std::string_view text) { called += text; });
        laCanvas_Command(canvas, command);
        gen_set_console_sink({});
        std::string effect = called;
        if (canvas.view.viewLow != low || canvas.view.viewHigh != high) effect += "view ";
        if (canvas.past.historyCurrent != history) effect += "history ";
        if (canvas.marks.bookmarks.size() != bookmarks)
            effect += canvas.marks.bookmarks.empty() ? "no bookmarks " : "bookmark ";
        if (canvas.list.flatView != flat) effect += "flat ";
        if (canvas.axis.timeMode != unit) effect += "unit ";
        if (canvas.source.liveRefresh != live) effect += "freeze ";
        if (canvas.calls.viewWindows.empty()) effect += "windows ";
        return effect;
    }

    std::unique_ptr<DialogModel> window;
    std::string called;
};

TEST_F(Effects, EveryRowAndButtonDoesWhatItSays) {
    const std::map<std::string, std::string> own{
        {"ZoomIn", "view history "},
        {"ZoomToRange", "view history "},
        {"ZoomOut", "view history "},
        {"ShowAll", "view history "},
        {"TopHistory", "view history "},
        {"BottomHistory", "view history "},
        {"PrevHistory", "view history "},
        {"NextHistory", "view history "},
        {"FlatView", "flat "},
        {"DelViews", "windows "},
        {"AddBookmark", "bookmark "},
        {"DeleteBookmarks", "no bookmarks "},
        {"changeunit", "unit "},
        {"NoRefresh", "freeze "},
        {"Threadx", "Chronoweave: Unknown item <Threadx> is selected.\n"}};
    const auto check = [&](const std::string& command) {
        const auto found = own.find(command);
        const std::string name = command == "open" ? "Open" : command;
        EXPECT_EQ(EffectOf(command), found == own.end() ? "above: " + name : found->second) << command;
    };
    gen_set_console_sink([](std::string_view) {});
    size_t rows = 0;
    for (const char* name : windowMenus)
        for (const MenuRow& row : menus.Find(name, true)->rows)
            if (!row.IsSeparator() && row.child == nullptr) check(row.body), ++rows;
    for (const laToolButton& button : laMenus_ToolBar())
        if (!button.IsGap()) check(button.command), ++rows;
    EXPECT_GE(rows, 50u);
}

TEST_F(CanvasMenus, TheFreezeButtonLooksPressedWhileFrozen) {
    const auto pressed = [&] {
        for (size_t i = 0; i < buttons.size(); ++i)
            if (buttons[i].pressed) return std::string(laMenus_ToolBar()[i].name);
        return std::string();
    };
    Hook();
    EXPECT_EQ(pressed(), "NoRefresh");
    EXPECT_TRUE(laCanvas_Command(canvas, "norefresh"));
    EXPECT_TRUE(laCanvas_UpdateFreezeButton(canvas, buttons));
    EXPECT_FALSE(laCanvas_UpdateFreezeButton(canvas, buttons));
    EXPECT_EQ(pressed(), "");
    EXPECT_FALSE(laCanvas_UpdateButtons(canvas, buttons));
}

}  // namespace
