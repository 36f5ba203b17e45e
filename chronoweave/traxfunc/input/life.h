// The life of a canvas: made empty, given a legend, emptied again.
#pragma once

#include <memory>

#include "chronoweave/traxfunc/canvas/canvas.h"

// A canvas on a graph, with the defaults, connected to its scroll bars.
std::unique_ptr<_LaCanvasData> laCanvas_Create(LaGraph& graph, int contentHeight);
// Back to an empty view; of the source, the store, the legend and what the configure file set go too.
enum class laResetOf { View, Source };
void laCanvas_Reset(_LaCanvasData& canvas, laResetOf what);
// Drops what the source brought: store, legend, list, titles and settings.
void laCanvas_ReleaseSource(_LaCanvasData& canvas);

// Takes over a finished legend with its settings: looks up icons and colours and computes the row height.
// False, and no change, for an empty one. A missing icon is reported and replaced by "help", with a beep.
bool laCanvas_LoadLegend(_LaCanvasData& canvas, Legend legend);
// Recomputes looks and metrics after visibility, colours or icons in canvas.looks.legend changed. True when
// the row height changed: the caller then lays out and repaints.
bool laCanvas_LegendTouched(_LaCanvasData& canvas);
// The misc values that a next reading starts from: how a live source is read outlasts the trace.
LegendMisc laLegend_Kept(const LaOptions& options);
