#include "chronoweave/traxfunc/input/menus.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/description.h"

namespace {

constexpr std::string_view recentMark = " TRVDataFiles";  // ends the label of a row for a recent file

// A row of a menu: a command of the table under its own label or another, a menu, or a separator.
struct Row {
    const char* command;  // "->NAME" leads to a menu; "-" is a separator
    const char* label = nullptr;
    bool added = false;         // came later: not in MenuForm::Original
    const char* key = nullptr;  // shown in MenuForm::Original too
    const char* glue = " ";     // before it in the text
};
struct Menu {
    const char* name;
    std::span<const Row> rows;
};

constexpr Row bar[] = {{"->TraxFile", "&File", false, nullptr, ""},
                       {"->TraxView", "&View", false, nullptr, ""},
                       {"->TraxReport", "&Report"},
                       {"->TraxConfig", "&Config"},
                       {"->TraxControl", "T&arget"},
                       {"->TraxTools", "&Tools"},
                       {"->TraxBookmark", "&Bookmarks", false, nullptr, ""},
                       {"->TraxHelp", "&Help"}};
constexpr Row file[] = {{"NewWindow"},
                        {"-"},
                        {"Open"},
                        {"-"},
                        {"Open", "&1 TRVDataFiles"},
                        {"Open", "&2 TRVDataFiles"},
                        {"Open", "&3 TRVDataFiles"},
                        {"Open", "&4 TRVDataFiles"},
                        {"Open", "&5 TRVDataFiles"},
                        {"Open", "&6 TRVDataFiles"},
                        {"Open", "&7 TRVDataFiles"},
                        {"Open", "&8 TRVDataFiles"},
                        {"Open", "&9 TRVDataFiles"},
                        {"-"},
                        {"TraxMergeEventFiles"},
                        {"-"},
                        {"TraxPrint"},
                        {"-"},
                        {"Quit", nullptr, false, "Ctrl+Q"}};
constexpr Row view[] = {{"Find", nullptr, true},
                        {"Search"},
                        {"SearchInterval"},
                        {"NextHit", nullptr, true},
                        {"PrevHit", nullptr, true},
                        {"-"},
                        {"ZoomIn"},
                        {"ZoomToRange"},
                        {"ZoomOut"},
                        {"HideTasks"},
                        {"-"},
                        {"BottomHistory"},
                        {"PrevHistory"},
                        {"NextHistory"},
                        {"TopHistory"},
                        {"-"},
                        {"DelViews"},
                        {"-"},
                        {"FlatView"},
                        {"-", nullptr, true},
                        {"GoToTime", nullptr, true},
                        {"ReadOn", nullptr, true},
                        {"ShowAll", nullptr, true},
                        {"EventTable", nullptr, true},
                        {"SelectionPanel", nullptr, true},
                        {"OnlyActive", nullptr, true},
                        {"MostActiveFirst", nullptr, true}};
constexpr Row report[] = {{"ReportObjects"}, {"-"}, {"ReportTask"}, {"-"}, {"ReportGeneral"}};
constexpr Row config[] = {{"Legend"},
                          {"-"},
                          {"RefreshGap"},
                          {"-"},
                          {"CanvasName"},
                          {"-"},
                          {"TimeUnit"},
                          {"-", nullptr, true},
                          {"IconButton", nullptr, true},
                          {"ScrollPos", nullptr, true},
                          {"Options", nullptr, true}};
constexpr Row tools[] = {{"vorelbar"},
                         {"-"},
                         {"editor"},
                         {"notepad"},
                         {"-", nullptr, true},
                         {"Palette", nullptr, true},
                         {"Console", nullptr, true}};
constexpr Row control[] = {{"Korvantis"}, {"Threadx"}};
constexpr Row help[] = {
    {"->ManualsMenu", "&Manuals"}, {"-"}, {"About"}, {"-", nullptr, true}, {"KeySheet", nullptr, true}};
constexpr Row manuals[] = {{"Help"}};
constexpr Row bookmarks[] = {{"AddBookmark"}, {"DeleteBookmarks"}, {"EditBookmarks"}};
constexpr Menu menuTable[] = {{"TraxMenuBar", bar},     {"TraxFile", file},     {"TraxView", view},
                              {"TraxReport", report},   {"TraxConfig", config}, {"TraxTools", tools},
                              {"TraxControl", control}, {"TraxHelp", help},     {"TraxBookmark", bookmarks},
                              {"ManualsMenu", manuals}};

// Menus of the windows beside the canvas's, whose rows go to their own logic.
constexpr const char* tableFile =
    "{'&Copy' 'Ctrl+C' Copy} {'Save &As CSV...' 'Ctrl+S' SaveCsv} {'&Print...' 'Ctrl+P' Print} {\x01} "
    "{&Close Close}";
constexpr const char* otherMenus[][2] = {
    {"TraxStatisticsMenu", "{&File ->TraxStatisticsFile}"},
    {"TraxStatisticsFile", tableFile},
    {"TraxGenStatisticsMenu", "{&File ->TraxGenStatisticsFile}"},
    {"TraxGenStatisticsFile", tableFile},
    {"TraxSearchMenu", "{&File ->TraxSearchFile}"},
    {"TraxSearchFile", tableFile},
    {"TraxLegendMenu", "{&File ->TraxLegendFile}"},
    {"TraxLegendFile", "{&Close Close}"},
};

constexpr laToolButton gap = {"-", "", ""};
constexpr laToolButton toolTable[] = {
    {"Open", "open", "Open"},
    gap,
    {"ZoomIn", "ZoomIn", "Zoom In"},
    {"ZoomToRange", "ZoomToRange", "To Range"},
    {"ZoomOut", "ZoomOut", "Zoom Out"},
    gap,
    {"TimeUnit", "changeunit", "Unit"},
    {"Legend", "Legend", "Legend"},
    {"OnlyActive", "OnlyActive", "Active", true},
    gap,
    {"Search", "Search", "Search"},
    {"Search_Interval", "SearchInterval", "Intervals"},
    gap,
    {"BottomHistory", "BottomHistory", "First"},
    {"PrevHistory", "PrevHistory", "Previous"},
    {"NextHistory", "NextHistory", "Next"},
    {"TopHistory", "TopHistory", "Latest"},
    gap,
    {"DelViews", "DelViews", "Close Views"},
    gap,
    {"NoRefresh", "NoRefresh", "Freeze", true},
    {"TraxPrint", "TraxPrint", "Print"},
    gap,
    {"Help", "Help", "Help"},
    gap,
    {"Quit", "Quit", "Quit"},
};

bool is_menu(const Row& row) {
    return std::string_view(row.command).starts_with("->");
}

bool is_separator(const Row& row) {
    return std::string_view(row.command) == "-";
}

std::string row_text(const Row& row, MenuForm form) {
    if (is_separator(row)) return std::string("{") + menuSeparator + "}";
    const std::string glue = row.glue;
    if (is_menu(row)) return glue + "{" + row.label + " " + row.command + "}";
    const laCommand& command = *laCommands_Find(row.command);
    const bool recent = row.label != nullptr;
    const std::string key = row.key                             ? row.key
                            : form == MenuForm::Full && !recent ? laCommand_FirstKey(command)
                                                                : "";
    const std::string label = row.label ? row.label : command.label;
    return glue + "{'" + label + "' " + (key.empty() ? "" : "'" + key + "' ") + row.command + "}";
}

const Menu* find_menu(std::string_view name) {
    const auto found = std::find_if(std::begin(menuTable), std::end(menuTable),
                                    [&](const Menu& menu) { return name == menu.name; });
    return found == std::end(menuTable) ? nullptr : found;
}

void set_flag(MenuRow& row, unsigned flag, bool on) {
    row.flags = on ? row.flags | flag : row.flags & ~flag;
}

void enable_rows(MenuResource& menu, const _LaCanvasData& canvas) {
    for (MenuRow& row : menu.rows) {
        if (row.child) continue;
        const laCommand* command = laCommands_Find(row.body);
        set_flag(row, MenuRow_Disabled, !laCanvas_CanDo(canvas, row.body));
        row.tip = laCanvas_NotThere(canvas, row.body);
        // Letters and arrows belong to the picture: elsewhere they are typed.
        set_flag(row, MenuRow_KeyOnlyShown, command != nullptr && command->keys[0] == '\0');
    }
}

void label_row(MenuRegistry& menus, MenuResource& menu, std::string_view command, std::string label) {
    if (MenuRow* row = menu.RowOf(command)) menus.SetLabel(menu, *row, std::move(label));
}

void check_row(MenuResource& menu, std::string_view command, bool on) {
    MenuRow* row = menu.RowOf(command);
    if (!row) return;
    set_flag(*row, MenuRow_Checkable, true);
    set_flag(*row, MenuRow_Checked, on);
}

// Rows made for recent files keep their mark in alternateLabel; those with no file are hidden.
void fill_recent(MenuRegistry& menus, MenuResource& menu, const _LaCanvasData& canvas) {
    const auto files =
        canvas.calls.upper.recentFiles ? canvas.calls.upper.recentFiles() : std::vector<std::string>();
    size_t number = 0;
    for (MenuRow& row : menu.rows) {
        if (!row.alternateLabel.ends_with(recentMark)) continue;
        const bool there = number < files.size();
        set_flag(row, MenuRow_Hidden, !there);
        ++number;
        menus.SetLabel(menu, row,
                       there ? "&" + std::to_string(number) + " " + menu_PlainLabel(files[number - 1])
                             : row.alternateLabel);
        row.body = there ? "Open " + files[number - 1] : "Open";
    }
}

std::string report_label(const _LaCanvasData& canvas) {
    const std::string term = menu_PlainLabel(canvas.list.objectTerm);
    const char first = canvas.list.objectTerm.empty() ? '\0' : text_lower(canvas.list.objectTerm.front());
    return (first == 'o' || first == 'g' ? "" : "&") + term +
           "...";  // &Objects and &General have the letters
}

}  // namespace

std::string laMenu_Text(std::string_view name, MenuForm form) {
    std::string text;
    if (const Menu* menu = find_menu(name))
        for (const Row& row : menu->rows)
            if (form == MenuForm::Full || !row.added) text += row_text(row, form);
    return std::string(text_trim(text));
}

std::string laMenu_Of(std::string_view command) {
    for (const Row& top : bar) {
        const Menu* menu = find_menu(std::string_view(top.command).substr(2));
        for (const Row& row : menu->rows)
            if (command == row.command) return dialog_PlainText(top.label);
    }
    return {};
}

std::string laCommands_ManualTable() {
    std::string text = "| menu | row | key | command | what it does |\n|---|---|---|---|---|\n";
    const auto add = [&](const std::string& menu, const laCommand& command) {
        std::string what = *command.help ? command.help : command.tip;
        if (*command.page) what = "[" + what + "](" + command.page + ".md)";
        std::string keys = laCommand_Keys(command);
        if (!keys.empty()) keys = "`" + keys + "`";
        text += "| " + menu + " | " + laCommand_Title(command) + " | " + keys + " | `" + command.name +
                "` | " + what + " |\n";
    };
    for (const Row& top : bar) {
        std::string menu = dialog_PlainText(top.label);
        for (const Row& row : find_menu(std::string_view(top.command).substr(2))->rows) {
            if (is_separator(row) || row.label) continue;
            add(std::exchange(menu, ""), *laCommands_Find(row.command));
        }
    }
    for (const laCommand& command : laCommands_All())
        if (*command.label && laMenu_Of(command.name).empty()) add("", command);
    for (const laKeyLine& line : laCommands_Gestures())
        text += "| | | " + line.keys + " | | " + line.what + " |\n";
    return text;
}

void laMenus_Register(MenuRegistry& menus) {
    for (const Menu& menu : menuTable) {
        if (menu.rows.data() != manuals)
            menus.Define(menu.name, laMenu_Text(menu.name, MenuForm::Full));
        else
            menus.Defer(menu.name, laMenu_Text(menu.name, MenuForm::Full));
    }
    for (const auto& [name, text] : otherMenus) menus.Define(name, text);
    MenuResource* recent = menus.Find("TraxFile", false);
    for (MenuRow& row : recent->rows)
        if (row.label.ends_with(recentMark)) row.alternateLabel = row.label;
}

const laCommand& laToolButton::row() const {
    return *laCommands_Find(command);
}

std::string laToolButton::LongHelp() const {
    return row().help;
}

std::string laToolButton::ToolTip() const {
    return row().tip;
}

std::span<const laToolButton> laMenus_ToolBar() {
    return toolTable;
}

bool laCanvas_UpdateButtons(const _LaCanvasData& canvas, std::vector<laButtonState>& states) {
    const std::vector<laButtonState> before = states;
    states.resize(std::size(toolTable));
    for (size_t i = 0; i < std::size(toolTable); ++i)
        states[i].enabled = laCanvas_CanDo(canvas, toolTable[i].command);
    for (size_t i = 0; i < std::size(toolTable); ++i)
        if (std::string_view(toolTable[i].name) == "OnlyActive") states[i].pressed = canvas.list.onlyActive;
    laCanvas_UpdateFreezeButton(canvas, states);
    return states != before;
}

bool laCanvas_UpdateFreezeButton(const _LaCanvasData& canvas, std::vector<laButtonState>& states) {
    bool changed = false;
    for (size_t i = 0; i < std::min(states.size(), std::size(toolTable)); ++i) {
        if (std::string_view(toolTable[i].name) != "NoRefresh") continue;
        const bool pressed = !canvas.source.liveRefresh;
        const bool visible = canvas.source.liveRefresh || canvas.calls.upper.sourceIsLive;
        changed = states[i].pressed != pressed || states[i].visible != visible;
        states[i].pressed = pressed;
        states[i].visible = visible;
    }
    return changed;
}

void laCanvas_MenuHook(MenuRegistry& menus, std::string_view name, const _LaCanvasData& canvas) {
    if (name == "TraxBookmark") laCanvas_BuildBookmarkMenu(menus, canvas);
    MenuResource* menu = menus.Find(name, false);
    if (!menu) return;
    if (name == "TraxFile") {
        fill_recent(menus, *menu, canvas);
    } else if (name == "TraxView") {
        label_row(menus, *menu, "HideTasks",
                  "Change &Hidden " + menu_PlainLabel(canvas.list.objectTerm) + " List");
        check_row(*menu, "FlatView", canvas.list.flatView);
        check_row(*menu, "OnlyActive", canvas.list.onlyActive);
        check_row(*menu, "MostActiveFirst", canvas.list.mostActiveFirst);
        check_row(*menu, "EventTable", canvas.calls.upper.eventTable);
        check_row(*menu, "SelectionPanel", canvas.calls.upper.selectionPanel);
    } else if (name == "TraxReport") {
        label_row(menus, *menu, "ReportTask", report_label(canvas));
    } else if (name == "TraxConfig") {
        check_row(*menu, "IconButton", canvas.calls.upper.iconButtons);
    } else if (name == "TraxBookmark") {
        const bool two = canvas.marks.cursor[0] >= 0 && canvas.marks.cursor[1] >= 0 &&
                         canvas.marks.cursor[0] != canvas.marks.cursor[1];
        label_row(menus, *menu, "AddBookmark",
                  two ? "&Add Bookmarks for Selection" : "&Add Bookmark for Selection");
    }
    enable_rows(*menu, canvas);
}

void laCanvas_BuildBookmarkMenu(MenuRegistry& menus, const _LaCanvasData& canvas) {
    std::string text = "menu TraxBookmark {";
    text += " {'&Add Bookmark' '" + laCommand_FirstKey(*laCommands_Find("AddBookmark")) + "' AddBookmark} ";
    text += " {'&Delete All Bookmarks' DeleteBookmarks} ";
    text += " {'&Edit Bookmarks...' EditBookmarks} ";
    if (!canvas.marks.bookmarks.empty()) text += " {'-'}";
    for (size_t i = 0; i < canvas.marks.bookmarks.size() && i + 8 < MenuRegistry::mostRows; ++i)
        text += " {" + menu_Quote(menu_PlainLabel(laBookmark_ShownLabel(canvas, canvas.marks.bookmarks[i]))) +
                " ShowBookmark " + std::to_string(i) + "} ";
    text += "}";
    // As it stands the menu may be open right now.
    const MenuResource* menu = menus.Find("TraxBookmark", false);
    if (menu && text == "menu TraxBookmark {" + menu->text + "}") return;
    menus.HoldUpdates(true);
    menus.DefineStatement(text);
    menus.HoldUpdates(false);
}
