// Object search: where in a trace something happened to chosen objects. One pass over the range's events
// collects rows; nothing but the rows is kept. The interval search and the walk to the next or previous thing
// of a detail window are the same engine.
//
// Ids of objects are 32 bits; times are those of source.h. Row indexes of the legend are signed,
// negative for any.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "chronoweave/engine/source.h"

enum SearchKind : int {
    Search_Event = 0,
    Search_Pattern = 1,
    Search_Status = 2,
    Search_Switch = 3,
    Search_Nothing = 4  // not chosen yet
};

// SearchRequest::flags.
enum : uint32_t {
    Search_OfferPattern = 1u << 4,  // the kind dialog offers the event pattern
    Search_SameObject = 1u << 5     // begin and end are matched on the same object
};

struct SearchRequest {
    std::vector<uint32_t> objects;         // those searched
    double periodFrom = 0, periodTo = -1;  // in which objects are to be alive, as chosen
    int kind = Search_Nothing;
    double rangeFrom = 0, rangeTo = 0;  // the tick of rangeTo is included
    int32_t target = -1;     // row of the event, the begin event, the status, or the context-switch status
    int32_t endTarget = -1;  // row of the end event of a pattern
    std::vector<uint32_t> beginObjects, endObjects;  // of a pattern
    uint64_t rowLimit = 0;                           // the walk stops at so many rows; 0 for no limit
    uint32_t flags = 0;
};

// event: the object and its time. Pattern: the begin's object and time, the end's. Status: the object twice,
// begin and end of the stretch. Switch: from, to, the time twice.
struct SearchRow {
    uint32_t objectA = 0, objectB = 0;
    double timeA = 0, timeB = 0;
};

struct SearchResult {
    SearchRequest request;        // object lists sorted
    std::vector<SearchRow> rows;  // in the order found
    std::vector<SearchRow>
        open;              // of a pattern: begins with no end up to reached, as object and time, timeB 0
    uint64_t found = 0;    // rows found; more than rows.size() only with keepLast
    size_t keepLast = 0;   // keep only so many of the last rows; 0 for all
    bool stopped = false;  // by progress; rows hold what was found up to reached
    bool damaged = false;  // some of the range can't be read; rows hold what was found
    TimeGap lost;          // the first of it
    double reached = 0;
};

// Sorts the object lists, puts limit in the place of the request's row limit, clears the running objects, and
// walks. A range whose start lies behind its end is empty. False when the kind is none, or the store gives
// nothing.
[[nodiscard]] bool search_Run(AnalysisSource& source, SearchRequest request, SearchResult& result,
                              uint64_t limit = 0);
// The walk alone: result.request must be complete, with sorted lists; honours its row limit, and takes up the
// running objects as they are: when some are entered, the first look at the objects makes no switches.
[[nodiscard]] bool search_Walk(AnalysisSource& source, SearchResult& result);

// With Search_SameObject, begin and end lists become their intersection, sorted. False when nothing is left.
bool search_ShareObjects(SearchRequest& request);

// An interval search: from one event on one object to one event on one object.
struct IntervalCriteria {
    std::string beginEvent, endEvent;  // names
    uint32_t beginObject = 0, endObject = 0;
    double from = 0, to = 0;  // swapped when the wrong way round
};
// Rows of the events that can bound an interval, in legend order: the marked ones, or all but the categories.
std::vector<int32_t> search_IntervalEvents(const Legend& legend, bool all);
SearchRequest search_IntervalRequest(const Legend& legend, const IntervalCriteria& criteria);

// From a thing of a detail window to the next or previous one in the store.
struct StoreStep {
    int kind = Search_Event;  // not a pattern
    int32_t target = -1;
    double time = 0;  // of the present thing
    uint32_t object = 0;
    bool onlyObject = false;  // search this object alone, else all that are alive on that side
    bool forward = true;
};
// The row found, in row. False when there is none. The caller clears the running objects first, and ahead of
// a step forward over switches enters the object switched to.
bool search_Step(AnalysisSource& source, const StoreStep& step, SearchRow& row);
