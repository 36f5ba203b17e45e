#include "chronoweave/traxfunc/input/commands.h"

#include <algorithm>
#include <optional>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/draw/draw.h"
#include "chronoweave/traxfunc/draw/layout.h"
#include "chronoweave/traxfunc/input/bookmarks.h"
#include "chronoweave/traxfunc/input/history.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/time_unit.h"
#include "chronoweave/traxfunc/input/view.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/model.h"

namespace {

constexpr double keyZoom = 2;

// What was asked: the whole text, and what stands behind the command's name.
struct Argument {
    std::string_view text, rest;
    std::optional<uint64_t> number;
};

int column_of(const _LaCanvasData& canvas, const Argument& argument) {
    const auto width = static_cast<uint64_t>(std::max(0, canvas.graph->width));
    return static_cast<int>(argument.number && *argument.number < width ? *argument.number : width / 2);
}

enum class Takes {
    Nothing,
    Number,  // behind a blank
    Text,    // behind any one character
};
struct Command {
    const char* name;
    Takes takes;
    // The canvas's own work; null: that of the floor above alone, which goes before in any case.
    bool (*run)(_LaCanvasData&, const Argument&);
    // False, and the user was told, when it can't be done now; null: always.
    bool (*allowed)(_LaCanvasData&) = nullptr;
    // What the floor above has not got.
    const char* work = nullptr;
};

template <bool (*move)(_LaCanvasData&)>
bool history(_LaCanvasData& canvas, const Argument&) {
    return move(canvas);
}
template <void (*act)(_LaCanvasData&)>
bool done(_LaCanvasData& canvas, const Argument&) {
    act(canvas);
    return true;
}
template <int mode>
bool zoom_by_cursors(_LaCanvasData& canvas, const Argument&) {
    return laCanvas_Zoom(canvas, -1.0, 0, true, mode);
}

bool zoom_in(_LaCanvasData& canvas, const Argument&) {
    const double quarter = canvas.view.viewLength / 4;
    return laCanvas_Zoom(canvas, canvas.view.viewLow + quarter, canvas.view.viewLow + 3 * quarter, true,
                         Zoom_Range);
}
bool zoom_out(_LaCanvasData& canvas, const Argument&) {
    return laCanvas_Zoom(canvas, 0, -1.0, true, Zoom_Selection);
}
bool zoom_in_at(_LaCanvasData& canvas, const Argument& argument) {
    laCanvas_ZoomAtColumn(canvas, column_of(canvas, argument), 1 / keyZoom);
    return true;
}
bool zoom_out_at(_LaCanvasData& canvas, const Argument& argument) {
    laCanvas_ZoomAtColumn(canvas, column_of(canvas, argument), keyZoom);
    return true;
}
bool change_unit(_LaCanvasData& canvas, const Argument&) {
    laCanvas_NextTimeMode(canvas);
    return true;
}
bool add_bookmark(_LaCanvasData& canvas, const Argument&) {
    return laBookmark_AddForCursors(canvas);
}
bool delete_bookmarks(_LaCanvasData& canvas, const Argument&) {
    laBookmark_DeleteAll(canvas, true);
    return true;
}
bool show_bookmark(_LaCanvasData& canvas, const Argument& argument) {
    return laBookmark_Show(canvas, argument.number ? static_cast<size_t>(*argument.number) : SIZE_MAX);
}
bool focus(_LaCanvasData& canvas, const Argument&) {
    return laCanvas_FocusSelection(canvas);
}
template <bool last>
bool scroll_to_end(_LaCanvasData& canvas, const Argument&) {
    laCanvas_ScrollToEnd(canvas, last);
    return true;
}
template <bool forward>
bool scroll_page(_LaCanvasData& canvas, const Argument&) {
    laCanvas_ScrollPage(canvas, forward);
    return true;
}

bool not_implemented(_LaCanvasData& canvas, const Argument&) {
    laCanvas_Refuse(canvas, "Not implemented.");
    return false;
}
bool not_supported(_LaCanvasData& canvas, const Argument& argument) {
    laCanvas_Refuse(canvas,
                    gen_format("Sorry, <%s> is not supported yet.", std::string(argument.text).c_str()));
    return false;
}
bool no_help(_LaCanvasData& canvas, const Argument&) {
    laCanvas_Refuse(canvas, "Sorry, on-line help is not supported.");
    return false;
}
bool no_window(_LaCanvasData& canvas, const Argument&) {
    laCanvas_Refuse(canvas, "Can't create new window");
    return false;
}

bool unit_can_change(_LaCanvasData& canvas) {
    return !laTimeUnit_Refused(canvas);
}
template <const char* const& message>
bool has_store(_LaCanvasData& canvas) {
    if (canvas.source.store) return true;
    laCanvas_Refuse(canvas, message);
    return false;
}
constexpr const char* noSource = "No data source is loaded.";
constexpr const char* notOpened = "You did not open a VOREL Chronoweave source file.";
bool has_tables(_LaCanvasData& canvas) {
    if (!canvas.looks.legend.empty()) return true;
    laCanvas_Refuse(canvas, "Legend is not loaded until you open a VOREL Chronoweave source file.");
    return false;
}

constexpr auto None = Takes::Nothing;
constexpr Command commandTable[] = {
    {"About", None, nullptr, nullptr, "The about box"},
    {"Quit", None, nullptr, nullptr, "Closing the window"},
    {"Open", Takes::Text, nullptr, nullptr, "Opening a file"},
    {"Close", None, done<laCanvas_CloseSource>},
    {"Save", None, not_implemented},
    {"SaveAs", None, not_implemented},
    {"TraxPrint", None, nullptr, nullptr, "Printing"},
    {"TraxMergeEventFiles", None, nullptr, nullptr, "Merging raw event files"},
    {"ReportObjects", None, nullptr, has_store<noSource>, "The report about objects"},
    {"ReportTask", None, nullptr, has_store<noSource>, "The report about one object"},
    {"ReportGeneral", None, nullptr, has_store<noSource>, "The general report"},
    {"ZoomIn", None, zoom_in},
    {"ZoomToRange", None, zoom_by_cursors<Zoom_Selection>},
    {"LeftZoomIn", None, zoom_by_cursors<Zoom_Left>},
    {"RightZoomIn", None, zoom_by_cursors<Zoom_Right>},
    {"ZoomOut", None, zoom_out},
    {"HideTasks", None, nullptr, nullptr, "Hiding objects"},
    {"TopHistory", None, history<laHistory_Top>},
    {"BottomHistory", None, history<laHistory_Bottom>},
    {"PrevHistory", None, history<laHistory_Prev>},
    {"NextHistory", None, history<laHistory_Next>},
    {"Search", None, nullptr, nullptr, "The search"},
    {"SearchInterval", None, nullptr, nullptr, "The search for intervals"},
    {"FlatView", None, done<laCanvas_ToggleFlatView>},
    {"DelViews", None, done<laCanvas_CloseViews>},
    {"RefreshGap", None, nullptr, has_store<notOpened>, "The refresh interval"},
    {"Legend", None, nullptr, has_tables, "The legend"},
    {"TimeUnit", None, nullptr, unit_can_change, "The time unit"},
    {"changeunit", None, change_unit, unit_can_change},
    {"IconButton", None, nullptr, nullptr, "The look of the buttons"},
    {"NewWindow", None, no_window},
    {"Help", None, no_help},
    {"ScrollPos", None, nullptr, nullptr, "Moving the scroll bars"},
    {"CollectData", None, not_supported},
    {"ProcessData", None, not_supported},
    {"Others", None, not_supported},
    {"WaitingStatus", None, not_supported},
    {"CanvasName", None, nullptr, nullptr, "The name of the canvas"},
    {"Korvantis", None, nullptr, nullptr, "The target control for KORVANTIS"},
    {"vorelbar", None, nullptr, nullptr, "The launcher"},
    {"editor", None, nullptr, nullptr, "The editor"},
    {"notepad", None, nullptr, nullptr, "The notepad"},
    {"AddBookmark", None, add_bookmark},
    {"EditBookmarks", None, nullptr, nullptr, "The list of bookmarks"},
    {"DeleteBookmarks", None, delete_bookmarks},
    {"ShowBookmark", Takes::Number, show_bookmark},
    // The list's menu, by the texts of its rows.
    {"&Flat View", None, done<laCanvas_ToggleFlatView>},
    {"Sort in &Ascending Order", None, done<laCanvas_ToggleSortOrder>},
    {"Sort in &Descending Order", None, done<laCanvas_ToggleSortOrder>},
    // Keys and buttons.
    {"NoRefresh", None, done<laCanvas_ToggleFreeze>},
    {"ZoomInAt", Takes::Number, zoom_in_at},
    {"ZoomOutAt", Takes::Number, zoom_out_at},
    {"Focus", None, focus},
    {"ShowAll", None, done<laCanvas_ShowAll>},
    {"ScrollHome", None, scroll_to_end<false>},
    {"ScrollEnd", None, scroll_to_end<true>},
    {"PageLeft", None, scroll_page<false>},
    {"PageRight", None, scroll_page<true>},
    {"ReadOn", None, nullptr, has_store<noSource>, "Reading on in a growing file"},
    {"GoToTime", None, nullptr, nullptr, "Going to a time"},
    {"KeySheet", None, nullptr, nullptr, "The list of keys"},
    {"Options", None, nullptr, nullptr, "The options"},
    {"Palette", None, nullptr, nullptr, "The list of commands"},
    {"EventTable", None, nullptr, has_store<noSource>, "The table of events"},
    {"NextHit", None, nullptr, nullptr, "Going to the next hit"},
    {"PrevHit", None, nullptr, nullptr, "Going to the previous hit"},
};

bool ends_nocase(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text_equal_nocase(text.substr(text.size() - end.size()), end);
}

// The row of the table, and what stands behind its name; null for none.
const Command* find(std::string_view text, Argument& argument) {
    static constexpr Command sortField = {"", None, done<laCanvas_ToggleSortField>};
    argument.text = text;
    for (const Command& command : commandTable) {
        const std::string_view name = command.name;
        if (text_equal_nocase(text, name)) return &command;
        if (command.takes == Takes::Nothing || !text_starts_nocase(text, name)) continue;
        if (command.takes == Takes::Number && text[name.size()] != ' ') continue;
        argument.rest = text.substr(name.size() + 1);
        if (command.takes == Takes::Number) argument.number = scan_number(argument.rest);
        return &command;
    }
    return ends_nocase(text, " &ID") || ends_nocase(text, " &Name") ? &sortField : nullptr;
}

bool carry_out(_LaCanvasData& canvas, const Command& command, const Argument& argument) {
    if (command.allowed && !command.allowed(canvas)) return false;
    const auto above = canvas.calls.upper.commands.find(std::string_view(command.name));
    if (above != canvas.calls.upper.commands.end() && above->second) {
        const auto work = above->second;  // it may close the canvas
        return work(std::string(argument.rest));
    }
    if (!command.run) {
        laCanvas_Refuse(canvas, gen_format("%s is not there yet.", command.work));
        return false;
    }
    if (!canvas.calls.upper.draw) return command.run(canvas, argument);
    bool did = false;
    canvas.calls.upper.draw([&] { did = command.run(canvas, argument); });
    return did;
}

bool unknown(const _LaCanvasData& canvas, const std::string& text) {
    if (canvas.calls.upper.manual && canvas.calls.upper.manual(text)) return true;
    gen_console("Unknown item <%s> is selected.\n", text.c_str());
    return false;
}

void resort(_LaCanvasData& canvas) {
    laCanvas_Resort(canvas);
    laCanvas_Repaint(canvas);
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

}  // namespace

bool laCanvas_HasCommand(std::string_view text) {
    Argument argument;
    return text.empty() || find(text, argument) != nullptr;
}

bool laCanvas_Command(_LaCanvasData& canvas, std::string_view text) {
    laCanvas_UpdateFields(canvas, 0, "");
    if (text.empty()) return true;
    const std::string asked(text);  // its owner may go in the middle of the work
    Argument argument;
    const Command* command = find(asked, argument);
    return command != nullptr ? carry_out(canvas, *command, argument) : unknown(canvas, asked);
}

std::vector<std::string> laCanvas_CommandNames() {
    std::vector<std::string> names;
    for (const Command& command : commandTable) names.emplace_back(command.name);
    return names;
}

// A closing window takes itself out of the list.
void laCanvas_CloseViews(_LaCanvasData& canvas) {
    for (DialogModel* window : std::vector<DialogModel*>(canvas.calls.viewWindows)) {
        const auto& open = canvas.calls.viewWindows;
        if (std::find(open.begin(), open.end(), window) != open.end()) window->close(Dialog_Dismissed);
    }
    canvas.calls.viewWindows.clear();
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

void laCanvas_CloseSource(_LaCanvasData& canvas) {
    laCanvas_CloseViews(canvas);
    laCanvas_Reset(canvas, true, true);
    laCanvas_UpdateTotal(canvas);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    laCanvas_Repaint(canvas);
    if (canvas.graph->listChanged) canvas.graph->listChanged();
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

void laCanvas_ToggleSortField(_LaCanvasData& canvas) {
    canvas.list.sortField = canvas.list.sortField == 0 ? 1 : 0;
    canvas.list.sortAroundEvent = false;
    resort(canvas);
}

void laCanvas_ToggleSortOrder(_LaCanvasData& canvas) {
    canvas.list.sortAscending = !canvas.list.sortAscending;
    canvas.list.sortAroundEvent = false;
    resort(canvas);
}

void laCanvas_ToggleFlatView(_LaCanvasData& canvas) {
    canvas.list.flatView = !canvas.list.flatView;
    resort(canvas);
}

std::string laCanvas_SortFieldLabel(const _LaCanvasData& canvas) {
    return "Sort by " + canvas.list.objectTerm + (canvas.list.sortField == 0 ? " &ID" : " &Name");
}

std::string laCanvas_SortOrderLabel(const _LaCanvasData& canvas) {
    return canvas.list.sortAscending ? "Sort in &Descending Order" : "Sort in &Ascending Order";
}

void laCanvas_ToggleFreeze(_LaCanvasData& canvas) {
    canvas.source.liveRefresh = !canvas.source.liveRefresh;
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}
