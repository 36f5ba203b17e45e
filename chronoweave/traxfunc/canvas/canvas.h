// The canvas: one row per object of a trace, time running to the right. _LaCanvasData is the one record of a
// canvas. It is made of parts, which the rooms below define and work on; they can't name the whole. It knows
// no window: it is given a LaGraph (size, scroll bars, surface, and what to call) and a store, and tells of
// changed texts through a callback.
//
// Reading order: model/items.h, model/time.h and the other parts; fetch/range_fetch.h, fetch/sweep.h;
// draw/scene.h, draw/layout.h, draw/draw.h, draw/axis.h; list/task_list.h, list/names.h; this one with rows.h
// and repaint.h; input/view.h, input/zoom.h, input/pointer.h, input/commands.h; session/session.h.
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

#include "chronoweave/traxfunc/canvas/wanted.h"
#include "chronoweave/traxfunc/draw/scene.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/looks.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/options.h"
#include "chronoweave/traxfunc/model/source.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/progress.h"
#include "windlib/lagraph/graph.h"

class DialogHost;
class DialogModel;
class LaFetch;
class TraxTaskList;
struct laDebuggerSeat;

struct LaHistoryEntry {
    double low = 0, high = 0;
    int verticalOffset = 0;
};

// How long a message is true: until another takes its place, or as long as the view is the same.
enum class laMessageLasts { UntilNext, WithTheView };

// The texts beside the picture; the window shows them as they are.
struct LaCanvasFields {
    std::string viewFrom, viewTo, viewLength;  // "tf_view_from", "tf_view_to", "tf_view_len"
    std::string selFrom, selTo, selLength;     // "tf_sel_from", "tf_sel_to", "tf_sel_len"
    std::string message;                       // "ts_info"
    laMessageLasts messageLasts = laMessageLasts::UntilNext;
    std::string unit;                           // of the six fields, short: "ms"
    std::string tickPattern, tickUnit;          // "TickPattern", "TickUnit"
    std::string totalLengthTitle, totalLength;  // title and value of "TotalLength"
};

// What lies above the canvas, as its commands and menus need it; the window fills it. All may be empty.
struct laUpperFloor {
    // Commands that are not the canvas's own work, by their names in the table of commands; text is what
    // stands behind the name. False for one that was refused. They may wait for the user, and may destroy the
    // canvas.
    std::map<std::string, std::function<bool(const std::string& text)>, std::less<>> commands;
    // Opens an entry of the manual; false when there is none of this name.
    std::function<bool(const std::string& entry)> manual;
    // Runs work that may want painting, and paints what it wanted when it is over.
    std::function<void(const std::function<void()>& work)> draw;
    std::function<std::vector<std::string>()> recentFiles;  // newest first
    std::function<void()> refreshIntervalChanged;           // the timer starts anew
    std::function<void()> refreshToggled;                   // liveRefresh is on or off now
    std::shared_ptr<laDebuggerSeat> debugger;               // null for none; see input/debugger.h
    bool iconButtons = true;                                // tool buttons show icons, else texts
    bool serverConnected = false;                           // an event server is
    bool targetPanelOpened = false;                         // the target's panel is, or was once
    bool eventTable = false;                                // the table of events is open
    bool selectionPanel = true;                             // figures of the selection are shown
    bool sourceGrows = false;                               // the source can be read on
    bool sourceIsLive = false;                              // it is followed, or could be
};

// Whom the canvas tells, and what the floors above handed down; each may be empty.
struct LaCallbacks {
    std::function<void()> fieldsChanged;   // after fields were rewritten
    std::function<void()> paintWanted;     // something was noted to be painted, where nothing was
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

// Where a context menu was called up.
struct LaPlace {
    int x = 0, y = 0;                // of the drawing area
    double time = 0;                 // time base
    uint32_t objectId = 0xFFFFFFFF;  // of the row; 0xFFFFFFFF for none
    std::optional<size_t> icon;      // of bitmaps, when an icon is there
};

// What the pointer is doing.
struct LaHand {
    LaPlace place;
    bool hoverPass = false;               // an item that is hit makes its tip and opens no window
    std::string hoverText;                // that tip
    std::optional<laItemRef> tipItem;     // that the last tip could not tell all of
    uint32_t tipItems = 0;                // the version of the items that it is one of
    std::string tipAhead, tipBehind;      // of the times of tipItem, where the tip is not the item's own
    double dragStartView = -1.0;          // viewLow when a drag started; -1.0 for none
    std::optional<Gate::Token> heldView;  // the user holds the view: it goes to the history when let go
};

// The ranges that were shown before.
struct LaPast {
    LaHistoryEntry history[50];
    int historyNewest = -1, historyOldest = -1, historyCurrent = -1;
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
    LaWanted wanted;
    LaAxis axis;
    std::unique_ptr<TraxTaskList> taskList;  // never null
    std::unique_ptr<LaFetch> fetch;          // of the items, while it can go on; else null

    // What drawing reads of it.
    laScene scene() const { return {*graph, view, axis, items, looks, marks, options}; }
};

// Column of a value given in a time mode; see laTimeScale.
int laCanvas_TimeToPixel(const _LaCanvasData& canvas, double value, TimeMode mode);
