// A changed legend goes to a configure file in the user's own directory, where it is found ahead of the
// installed one.
#pragma once

#include <string>

#include "chronoweave/traxfunc/canvas/canvas.h"

// The canvas's legend with the misc values as they are now.
Legend laLegend_ForSaving(const _LaCanvasData& canvas);
// Asks whether to save a legend that was changed, through canvas.calls.host, and saves it: beside the old
// file and then in its place, so that there is always a whole one. A legend that would not read back the same
// is not saved; its first such entry is named. Asked once; the mark is cleared in any case. False when it
// could not be saved, which the user was told. To be called with the surface closed,
// before the source goes.
bool laLegend_OfferSave(_LaCanvasData& canvas);
