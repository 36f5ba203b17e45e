#include "chronoweave/traxfunc/commands.h"

#include <algorithm>
#include <optional>

#include "chronoweave/traxfunc/bookmarks.h"
#include "chronoweave/traxfunc/draw.h"
#include "chronoweave/traxfunc/history.h"
#include "chronoweave/traxfunc/layout.h"
#include "chronoweave/traxfunc/navigate.h"
#include "chronoweave/traxfunc/time.h"
#include "chronoweave/traxfunc/time_unit.h"
#include "chronoweave/traxfunc/view.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr double keyZoom = 2;

// What follows a command that takes a number.
struct Argument {
    std::optional<uint64_t> number;
};

int column_of(const _LaCanvasData& canvas, const Argument& argument) {
    const auto width = static_cast<uint64_t>(std::max(0, canvas.graph->width));
    return static_cast<int>(argument.number && *argument.number < width ? *argument.number : width / 2);
}

// Those that carry a number are found by their first word.
struct Command {
    const char* name;
    bool takesNumber;
    bool (*run)(_LaCanvasData&, const Argument&);
};

template <bool (*move)(_LaCanvasData&)>
bool history(_LaCanvasData& canvas, const Argument&) {
    return laHistory_Command(canvas, move);
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
    const double quarter = canvas.viewLength / 4;
    return laCanvas_Zoom(canvas, canvas.viewLow + quarter, canvas.viewLow + 3 * quarter, true, Zoom_Range);
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
    if (laTimeUnit_Refused(canvas)) return false;
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
bool edit_bookmarks(_LaCanvasData& canvas, const Argument&) {
    laCanvas_UpdateFields(canvas, 0, "Under construction.");
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

constexpr Command commandTable[] = {
    {"ZoomIn", false, zoom_in},
    {"ZoomToRange", false, zoom_by_cursors<Zoom_Selection>},
    {"LeftZoomIn", false, zoom_by_cursors<Zoom_Left>},
    {"RightZoomIn", false, zoom_by_cursors<Zoom_Right>},
    {"ZoomOut", false, zoom_out},
    {"TopHistory", false, history<laHistory_Top>},
    {"BottomHistory", false, history<laHistory_Bottom>},
    {"PrevHistory", false, history<laHistory_Prev>},
    {"NextHistory", false, history<laHistory_Next>},
    {"FlatView", false, done<laCanvas_ToggleFlatView>},
    {"&Flat View", false, done<laCanvas_ToggleFlatView>},
    {"Sort in &Ascending Order", false, done<laCanvas_ToggleSortOrder>},
    {"Sort in &Descending Order", false, done<laCanvas_ToggleSortOrder>},
    {"changeunit", false, change_unit},
    {"AddBookmark", false, add_bookmark},
    {"EditBookmarks", false, edit_bookmarks},
    {"DeleteBookmarks", false, delete_bookmarks},
    {"ShowBookmark", true, show_bookmark},
    {"NoRefresh", false, done<laCanvas_ToggleFreeze>},
    {"ZoomInAt", true, zoom_in_at},
    {"ZoomOutAt", true, zoom_out_at},
    {"Focus", false, focus},
    {"ShowAll", false, done<laCanvas_ShowAll>},
    {"ScrollHome", false, scroll_to_end<false>},
    {"ScrollEnd", false, scroll_to_end<true>},
    {"PageLeft", false, scroll_page<false>},
    {"PageRight", false, scroll_page<true>},
};

bool ends_nocase(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text_equal_nocase(text.substr(text.size() - end.size()), end);
}

// The row of the table, and what stands behind its name; null for none.
const Command* find(std::string_view text, Argument& argument) {
    static constexpr Command sortField = {"", false, done<laCanvas_ToggleSortField>};
    for (const Command& command : commandTable) {
        const std::string_view name = command.name;
        if (text_equal_nocase(text, name)) return &command;
        if (!command.takesNumber || !text_starts_nocase(text, name) || text[name.size()] != ' ') continue;
        argument.number = scan_number(text.substr(name.size() + 1));
        return &command;
    }
    return ends_nocase(text, " &ID") || ends_nocase(text, " &Name") ? &sortField : nullptr;
}

void resort(_LaCanvasData& canvas) {
    laCanvas_Resort(canvas);
    laCanvas_Repaint(canvas);
    if (canvas.buttonsChanged) canvas.buttonsChanged();
}

}  // namespace

bool laCanvas_HasCommand(std::string_view text) {
    Argument argument;
    return text.empty() || find(text, argument) != nullptr;
}

bool laCanvas_Command(_LaCanvasData& canvas, std::string_view text) {
    laCanvas_UpdateFields(canvas, 0, "");
    if (text.empty()) return true;
    Argument argument;
    const Command* command = find(text, argument);
    return command != nullptr && command->run(canvas, argument);
}

void laCanvas_ToggleSortField(_LaCanvasData& canvas) {
    canvas.sortField = canvas.sortField == 0 ? 1 : 0;
    canvas.sortAroundEvent = false;
    resort(canvas);
}

void laCanvas_ToggleSortOrder(_LaCanvasData& canvas) {
    canvas.sortAscending = !canvas.sortAscending;
    canvas.sortAroundEvent = false;
    resort(canvas);
}

void laCanvas_ToggleFlatView(_LaCanvasData& canvas) {
    canvas.flatView = !canvas.flatView;
    resort(canvas);
}

std::string laCanvas_SortFieldLabel(const _LaCanvasData& canvas) {
    return "Sort by " + canvas.objectTerm + (canvas.sortField == 0 ? " &ID" : " &Name");
}

std::string laCanvas_SortOrderLabel(const _LaCanvasData& canvas) {
    return canvas.sortAscending ? "Sort in &Descending Order" : "Sort in &Ascending Order";
}

void laCanvas_ToggleFreeze(_LaCanvasData& canvas) {
    canvas.flags ^= Canvas_LiveRefresh;
    if (canvas.buttonsChanged) canvas.buttonsChanged();
}
