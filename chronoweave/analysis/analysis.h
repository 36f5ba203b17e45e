// Questions about a trace. Engines (searches, reports) walk the store and know neither canvas nor window;
// windows tie them to a canvas through DialogHost.
#pragma once

#include <memory>

struct _LaCanvasData;
struct SearchDesk;

// Makes searches, going from hit to hit, and reports commands of the canvas: "Search", "SearchInterval",
// "NextHit", "PrevHit", "ReportObjects", "ReportTask", "ReportGeneral". They need its host, and refuse
// without one. What their windows share comes back (search_window.h).
std::shared_ptr<SearchDesk> analysis_Attach(_LaCanvasData& canvas);
