// Questions about a trace. Engines (searches, reports) walk the store and know neither canvas nor window;
// windows tie them to a canvas through DialogHost.
#pragma once

struct _LaCanvasData;

// Makes searches, going from hit to hit, and reports commands of the canvas: "Search", "SearchInterval",
// "NextHit", "PrevHit", "ReportObjects", "ReportTask", "ReportGeneral". They need its host, and refuse
// without one.
void analysis_Attach(_LaCanvasData& canvas);
