// The legend: what the statuses and events of a trace mean, as a configure file tells it, and the resolution
// of logged codes to its rows. Made by configure_reader.h, owned by a canvas or a command.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// Kinds of operating system, by name without regard to case.
enum OsKind : int {
    Os_Other = 0,
    Os_Korvantis = 1,
    Os_ThreadX = 2,
    Os_Tolmund = 3,
    Os_TraceFunctionFlow = 4
};
OsKind legend_OsKind(std::string_view osName);

// Line styles, as numbered in legends and by the drawing surface.
enum LineStyle : int { Line_Solid = 0, Line_Dash = 1, Line_Dot = 2, Line_DashDot = 3, Line_DashDotDot = 4 };

// The style that a name of a configure file means, without regard to case; Line_Solid for an unknown one.
// legend_LineStyleName gives the long name back, that of Line_Solid for a number out of range.
int legend_LineStyle(std::string_view name);
const char* legend_LineStyleName(int style);

struct LegendStatus {
    uint16_t red = 0, green = 0, blue = 0;  // 8-bit values in the high byte
    uint16_t code = 0xFFFF;
    std::string name;
    int32_t thickness = 1;           // pixels
    int32_t contextSwitchLink = -1;  // row of the linked context-switch status
    bool isExecution = false;
    bool isContextSwitch = false;
    int32_t lineStyle = Line_Solid;
    bool visible = true;
};

// Bits of LegendEvent::flags. Bits 0 and 1 are the visibility: 0 invisible, 1 visible, 2 mixed (categories
// only).
enum : uint32_t {
    LegendEvent_VisibilityMask = 3,
    LegendEvent_Category = 4,
    LegendEvent_AnyType = 8,
    LegendEvent_AnySubtype = 16,
    LegendEvent_IntervalSearch = 32,
    LegendEvent_Important = 64  // its icons are never hidden under others
};

// An event or a category; a category opens a group, and the events behind it belong to it.
struct LegendEvent {
    uint16_t type = 0, subtype = 0;
    std::string iconName;     // of the icon to draw: "help" when the named one does not exist
    std::string missingIcon;  // the name in the file when iconName had to become "help"; else empty
    std::string name;
    std::string extraFormat;  // empty when there is none
    int32_t category = -1;    // number of the category; -1 ahead of any
    uint32_t flags = 1;

    uint32_t visibility() const { return flags & LegendEvent_VisibilityMask; }
    bool IsCategory() const { return (flags & LegendEvent_Category) != 0; }
    bool IsImportant() const { return (flags & LegendEvent_Important) != 0; }
    bool IsWildcard() const { return (flags & (LegendEvent_AnyType | LegendEvent_AnySubtype)) != 0; }
};

// The TRV_Misc items, with their defaults.
struct LegendMisc {
    int32_t refreshInterval = 1000;  // milliseconds
    int32_t maxRefreshedEvents = 600;
    int32_t targetTimeout = 5000;  // milliseconds
    bool extraDataWarning = true;
    bool unusedExtraDataWarning = true;
    bool centerStatus = false;
    bool tickPattern = true;
    bool showHiddenAgent = false;
    bool allForIntervalSearch = false;
    int32_t sortField = 0;  // 0 name, 1 id
    bool sortAscending = true;
    std::string overlapIcon;  // empty when there is none
    std::string objectTerm = "Task", objectTermLower = "task";
    std::string separator = "@";
};

// The tables of one operating system. Once finished, both tables hold a row named "Unknown", and the statuses
// a context switch.
class Legend {
  public:
    std::vector<LegendStatus> statuses;
    std::vector<LegendEvent> events;
    LegendMisc misc;
    std::string path;    // of the file read
    std::string osName;  // that it was read for

    // Set by BuildLookups.
    int32_t unknownStatus = -1, unknownEvent = -1;
    int32_t contextSwitchStatus = -1;   // first context-switch status
    int32_t firstExecutionStatus = -1;  // or -1
    int32_t contextSwitchCount = 0;
    std::vector<int32_t> wildcardEvents;  // rows with a wild card, in file order

    bool empty() const { return statuses.empty() || events.empty(); }
    // Computes the fields above and the look-up tables from the two tables. Call again after changing codes
    // or rows.
    void BuildLookups();

    // The two look-ups run once per event of a trace. A code without a row goes to the console once per
    // legend and BuildLookups, not at every event that bears it. Row of a status code (of several the first);
    // unknownStatus, with a console message, when there is none.
    int32_t StatusIndex(uint32_t code) const;
    // Row of an event: the exact pair (of several rows the first), else the first fitting wild card in file
    // order, else unknownEvent with a console message.
    int32_t EventIndex(uint16_t type, uint16_t subtype) const;
    // The link of a status row, or contextSwitchStatus when the row is out of range or has none.
    int32_t LinkedStatus(int32_t statusRow) const;
    // True when the row is negative, or is the row that the pair resolves to; false past the end.
    bool EventMatches(uint16_t type, uint16_t subtype, int32_t eventRow) const;
    // Row of a name, without regard to case, categories passed over; the Unknown row when there is none.
    int32_t StatusByName(std::string_view name) const;
    int32_t EventByName(std::string_view name) const;
    // Each category's visibility from that of its events: visible, invisible or mixed.
    void RollUpCategories();

  private:
    struct Node {
        uint32_t code;
        int32_t row;
    };
    using Nodes = std::vector<Node>;  // sorted by code, one per code; searched by halving

    void BuildEventLookups();
    int32_t ResolveEvent(uint16_t type, uint16_t subtype) const;  // -1 when there is none

    Nodes statusTree_, eventTree_;
    // Of the wild cards only the first row of each form can ever be the answer.
    Nodes anySubtype_, anyType_;  // by type, by subtype
    int32_t anyEvent_ = -1;
    // The answers for the codes that traces are made of; -1 for none. Empty until BuildLookups.
    static constexpr uint32_t directTypes = 8, directSubtypes = 256, directStatuses = 256;
    std::vector<int32_t> directEvents_, directStatus_;
    // What went to the console already.
    mutable std::set<uint32_t> reportedEvents_, reportedStatuses_;
};
