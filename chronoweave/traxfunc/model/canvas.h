// The canvas: one row per object of a trace, time running to the right. _LaCanvasData is the one record of a
// canvas; everything else of this folder reads or changes it. It knows no window: it is given a LaGraph
// (size, scroll bars, surface, and what to call) and a store, and tells of changed texts through a callback.
//
// Reading order: canvas.h, items.h, time.h, axis.h, fetch.h, sweep.h, task_list.h, layout.h, draw.h, view.h,
// scroll.h, history.h, cursor.h, bookmarks.h, hit_marks.h, fields.h, navigate.h, goto.h, commands.h,
// time_unit.h, hide_dialog.h, session.h, names.h, picture.h, overview.h, arrangement.h, icon_walk.h, hit.h,
// tips.h, pointer.h, context_menu.h.
//
// Times are doubles, seconds from the first event unless the time mode says otherwise ("the time base"). A
// negative time is "not set". Pixels are ints, but for the virtual picture's, which are 64-bit. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "chronoweave/rtos/legend.h"
#include "chronoweave/traxfunc/model/items.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/progress.h"
#include "shared/libcxxutil/table.h"
#include "windlib/lagraph/graph.h"

class DialogHost;
class DialogModel;
class TraxTaskList;

enum TimeMode : int {
    Time_Second = 0,
    Time_Millisecond = 1,
    Time_Microsecond = 2,
    Time_Nanosecond = 3,
    Time_Tick = 4,
    Time_Sequential = 5
};

// _LaCanvasData::flags. Bits not named here belong to parts of the canvas that own them.
enum : uint32_t {
    Canvas_SecondCursor = 1u << 0,   // the second cursor takes part in repaints
    Canvas_CursorDragged = 1u << 1,  // the second cursor is drawn in exclusive-or mode
    Canvas_LegendChanged = 1u << 2,  // the configure file is to be offered for saving
    Canvas_LiveRefresh = 1u << 3,
    Canvas_ViewChanging = 1u << 4,
    Canvas_RecordHistory = 1u << 5,
    Canvas_Toggle = 1u << 6,
    Canvas_AutoAdjustUnit = 1u << 7,
    Canvas_UserUnitChange = 1u << 8,  // auto-adjust keeps out
    Canvas_ExtraDataWarning = 1u << 9,
    Canvas_UnusedExtraDataWarning = 1u << 10,
    Canvas_DefaultFlags = Canvas_SecondCursor | Canvas_RecordHistory | Canvas_AutoAdjustUnit |
                          Canvas_ExtraDataWarning | Canvas_UnusedExtraDataWarning
};

// Who runs on one processor, during a fetch.
struct LaCpuEntry {
    uint32_t key = 0;
    uint32_t running = laNoLane;  // position of the lane that runs there; laNoLane for none
};

struct LaBookmark {
    std::string label;
    uint32_t objectId = 0xFFFFFFFF;  // 0xFFFFFFFF for none
    double time = 0;
    Colour colour = 0x0000FF;
    int thickness = 0;
    int style = Line_Dot;
};

struct LaHistoryEntry {
    double low = 0, high = 0;
    int verticalOffset = 0;
};

// What the surface shows, as of the last whole repaint or scroll: what a scroll may copy from.
struct LaPainted {
    struct Place {
        uint32_t objectId = 0;
        int32_t y = -1;  // of the lane, content pixels; -1 for a hidden one
        bool operator==(const Place&) const = default;
    };
    bool valid = false;
    std::vector<Place> laneOrder;  // the lanes in the order of the list
    uint32_t itemsVersion = 0;
    double low = 0, pixelsPerUnit = 0;
    uint64_t position = 0;  // pixel of the virtual picture in column 0
    int verticalOffset = 0, width = 0, height = 0, dataHeight = 0;
};

// What drawing needs of a row of the event and status tables, made once per legend change.
struct LaEventLook {
    IconHandle icon = NoIcon;
    int width = 0, height = 0;
    bool shown = false;      // visible, and has an icon
    bool important = false;  // never hidden by others
};
struct LaStatusLook {
    Colour colour = 0;
    int thickness = 1;
    int style = Line_Solid;
    bool shown = true;
    bool isExecution = false;
    bool isContextSwitch = false;
};

// The texts beside the picture; the window shows them as they are.
struct LaCanvasFields {
    std::string viewFrom, viewTo, viewLength;   // "tf_view_from", "tf_view_to", "tf_view_len"
    std::string selFrom, selTo, selLength;      // "tf_sel_from", "tf_sel_to", "tf_sel_len"
    std::string message;                        // "ts_info"
    std::string tickPattern, tickUnit;          // "TickPattern", "TickUnit"
    std::string totalLengthTitle, totalLength;  // title and value of "TotalLength"
};

// An item of the picture: a segment of a lane, an icon or a context line. Valid until the items are dropped
// (itemsVersion).
struct laItemRef {
    int32_t itype = -1;        // laItemType_Line, _Bitmap or _Ctx; -1 for none
    uint32_t lane = laNoLane;  // of a segment or icon
    size_t index = 0;          // into the lane's segments, canvas.items.bitmaps or canvas.items.ctxLines
};

// What lies above the canvas, as its commands and menus need it; the window fills it. All may be empty.
struct laUpperFloor {
    // Commands that are not the canvas's own work, by their names in the table of commands; text is what
    // stands behind the name. False for one that was refused. They may wait for the user, and may destroy the
    // canvas.
    std::map<std::string, std::function<bool(const std::string& text)>, std::less<>> commands;
    // Opens an entry of the manual; false when there is none of this name.
    std::function<bool(const std::string& entry)> manual;
    // Runs work that may paint.
    std::function<void(const std::function<void()>& work)> draw;
    std::function<std::vector<std::string>()> recentFiles;  // newest first
    std::function<void()> refreshIntervalChanged;           // the timer starts anew
    bool iconButtons = true;                                // tool buttons show icons, else texts
    bool serverConnected = false;                           // an event server is
    bool eventTable = false;                                // the table of events is open
    bool sourceGrows = false;                               // the source can be read on
};

// Whom the canvas tells, and what the floors above handed down; each may be empty.
struct LaCallbacks {
    std::function<void()> fieldsChanged;   // after fields were rewritten
    std::function<void()> buttonsChanged;  // what can be done now changed (history, freeze)
    Progress progress;                     // of long fetches
    laUpperFloor upper;
    DialogHost* host = nullptr;                        // shows dialogs and windows; outlives the canvas
    std::function<void(const laItemRef&)> openDetail;  // a detail window about an item
    std::function<void(uint32_t objectId)> openInfo;   // the window about an object
    std::function<void(size_t icon)> iconPressed;      // an icon was clicked, by its place in bitmaps
    // Windows about this canvas (details, results, reports), which close with it. Owned by the host; each
    // takes itself out when it closes.
    std::vector<DialogModel*> viewWindows;
    DialogModel* legendWindow = nullptr;  // when it is open; takes itself out as well
};

// Options of the program, and those that the configure file gives it.
struct LaOptions {
    bool newTrv = true;        // the overlap rule by free space, else by rectangles
    bool prefetch = true;      // a fetch takes twice the range
    bool snapCursors = true;   // the pointer's cursors jump to an edge close by
    bool kernelGroup = false;  // objects with no separator go under "Kernel" on Korvantis
    bool allForIntervalSearch = false;
    int refreshInterval = 1000;  // milliseconds
    int maxRefreshedEvents = 600;
    int targetTimeout = 5000;  // milliseconds
};

// The list of objects beside the picture.
struct LaList {
    int nameWidth = 0;  // of the name column, pixels, as the user set it; 0: what the names need
    std::unique_ptr<TraxTaskList> taskList;  // never null
    bool flatView = false;                   // whole names, no hierarchy
    int sortField = 0;                       // 0 name, 1 id
    bool sortAscending = true;
    bool sortAroundEvent = false;  // by laItem_Line::eventDistance
    bool showHiddenAgent = false;
    std::string separator = "@";
    std::string objectTerm = "Task", objectTermLower = "task";
};

// Items of the cached range.
struct LaItems {
    Table<laItem_Line> lanes;  // in order of first appearance
    LaneIndex laneIndex;
    uint32_t hiddenAgent = laNoLane;       // the agent's position in lanes
    Table<laItem_Bitmap> bitmaps;          // in time order
    Table<laItem_Ctx> ctxLines;            // in time order
    uint32_t firstSequence = 1;            // store sequence number of the event with item sequence 0
    std::vector<LaCpuEntry> cpus;          // in order of first use
    double cachedLow = 0, cachedHigh = 0;  // the range that the items cover; both 0 for none
    uint32_t itemsVersion = 0;             // grows whenever items are dropped
};

// Legend and looks.
struct LaLooks {
    Legend legend;                          // empty until a source is opened
    std::vector<LaEventLook> eventLooks;    // one per row of legend.events
    std::vector<LaStatusLook> statusLooks;  // one per row of legend.statuses
    bool anyImportantEvent = false;         // of the looks
    IconHandle overlapIcon = NoIcon;
    bool centerStatus = false;  // lines and icons share the row's centre
    int maxExtent = 16;         // largest of all icon heights and widths and line thicknesses
    int maxIconHeight = 0;      // of icons of visible events
    int maxIconWidth = 0;       // of all icons of the table
    int maxLineThickness = 0;   // of visible statuses that are no context switch
    int rowHeight = 0;          // pixels
};

struct LaSource {
    TraceStorePtr store;  // null when the canvas is empty
    bool storeHasEvents = false;
    int osKind = Os_Other;
    double ticksPerSecond = 1;   // store ticks in one unit of the time base
    uint64_t baseTick = 0;       // tick of the first event: time 0
    double totalLength = 1e-6;   // of the whole trace, time base
    double scrollExtent = 1e-6;  // what the horizontal bar spans; at least totalLength
    uint32_t eventBatch = 1000;  // growth step of long lists: 1000 below 10000 events, else 10000
    std::string sourcePath, sourceFile;
    std::string canvasName;  // title of the window; empty for unnamed
    std::string shortName;
};

// The shown range. viewHigh - viewLow is viewLength but for the snapping to a pixel.
struct LaView {
    double viewLow = 0, viewHigh = 1e-6, viewLength = 1e-6;
    double pixelsPerUnit = 1;     // width of the drawing area / viewLength
    int laidOutWidth = 0;         // the width that this holds for
    uint64_t virtualWidth = 0;    // pixels of scrollExtent at this zoom
    uint64_t scrollPosition = 0;  // position last given to the horizontal bar
    int verticalOffset = 0;       // first content row on screen
    int contentHeight = 0;        // pixels
    LaPainted painted;
    uint32_t flags = Canvas_DefaultFlags;
};

// What the user set on the picture.
struct LaMarks {
    double cursor[2] = {-100.0, -100.0};  // unset below 0
    std::vector<LaBookmark> bookmarks;    // newest first
    std::vector<double> hits;             // found times that are marked, ascending; see hit_marks.h
    uint32_t markedEvent = 0;  // store sequence number of the event with a frame around its icon; 0 for none
};

// What the pointer is doing.
struct LaHand {
    int pendingCursorX = -100;    // of a temporary cursor while the button is held with Shift; -100 for none
    bool hoverPass = false;       // an item that is hit makes its tip and opens no window
    std::string hoverText;        // that tip
    double dragStartView = -1.0;  // viewLow when a drag started; -1.0 for none
    std::optional<Gate::Token> heldView;  // the user holds the view: it goes to the history when let go
};

// The ranges that were shown before.
struct LaPast {
    LaHistoryEntry history[50];
    int historyNewest = -1, historyOldest = -1, historyCurrent = -1;
};

struct LaAxis {
    int timeMode = Time_Second;
    bool tickPattern = true;  // labels show only the digits that vary
    int tickDigits = 0;       // decimals that one step needs; -1 when no ticks fit
    int tickFormat = 0;       // integer digits x 1000 + varying digits
    double tickStep = 0;      // last step, in the unit shown
    double tickBase = 0;      // the common prefix of the labels, in the unit shown
};

// The record of a canvas, in parts: a function takes the part that it uses.
struct _LaCanvasData {
    explicit _LaCanvasData(LaGraph& graph);
    ~_LaCanvasData();
    _LaCanvasData(const _LaCanvasData&) = delete;
    _LaCanvasData& operator=(const _LaCanvasData&) = delete;

    LaGraph* graph;  // never null; outlives the canvas
    LaCanvasFields fields;
    LaCallbacks calls;
    LaOptions options;
    LaList list;
    LaItems items;
    LaLooks looks;
    LaSource source;
    LaView view;
    LaMarks marks;
    LaHand hand;
    LaPast past;
    LaAxis axis;
};

// A canvas on a graph, with the defaults, connected to its scroll bars.
std::unique_ptr<_LaCanvasData> laCanvas_Create(LaGraph& graph, int contentHeight);
// Back to an empty view. With releaseSource the store, the legend and what the configure file set go too.
void laCanvas_Reset(_LaCanvasData& canvas, bool releaseSource, bool announce);
// Drops what the source brought: store, legend, list, titles and settings.
void laCanvas_ReleaseSource(_LaCanvasData& canvas);
// Drops all items; the cached range becomes 0 to 0.
void laCanvas_ClearItems(_LaCanvasData& canvas);

// Takes over a finished legend with its settings: looks up icons and colours and computes the row height.
// False, and no change, for an empty one. A missing icon is reported and replaced by "help", with a beep.
bool laCanvas_LoadLegend(_LaCanvasData& canvas, Legend legend);
// Recomputes looks and metrics after visibility, colours or icons in canvas.looks.legend changed. True when
// the row height changed: the caller then lays out and repaints.
bool laCanvas_LegendTouched(_LaCanvasData& canvas);
// rowHeight from the metrics and the font: true when it changed.
bool laCanvas_UpdateRowHeight(_LaCanvasData& canvas);

// The plural of a term, as used in titles.
std::string laCanvas_Plural(std::string_view term);
void laCanvas_Beep(const _LaCanvasData& canvas);
// Runs work that may paint: with the surface opened by the window when it isn't open.
void laCanvas_Paint(_LaCanvasData& canvas, const std::function<void()>& work);
// Beep and message.
void laCanvas_Refuse(_LaCanvasData& canvas, std::string_view message);
