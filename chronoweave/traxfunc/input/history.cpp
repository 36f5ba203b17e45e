#include "chronoweave/traxfunc/input/history.h"

#include <algorithm>
#include <type_traits>

#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/view.h"

namespace {

constexpr int places = static_cast<int>(std::extent_v<decltype(LaPast::history)>);

void tell_buttons(const _LaCanvasData& canvas) {
    if (canvas.calls.buttonsChanged) canvas.calls.buttonsChanged();
}

// The move to an entry, refused with the message when the present one is the end already.
bool move_to(_LaCanvasData& canvas, int end, const char* refusal, int target) {
    if (canvas.past.historyNewest < 0) {
        laCanvas_Refuse(canvas, "No history.");
        return false;
    }
    if (canvas.past.historyCurrent == end) {
        laCanvas_Refuse(canvas, refusal);
        return false;
    }
    const LaHistoryEntry entry = canvas.past.history[target];
    const double extent = canvas.source.scrollExtent;
    canvas.source.scrollExtent = std::max(canvas.source.totalLength, entry.high);
    if (!laCanvas_ShowRange(canvas, entry.low, entry.high)) {
        canvas.source.scrollExtent = extent;
        return false;
    }
    canvas.past.historyCurrent = target;
    TRAX_ScrollTo(canvas, 0, entry.verticalOffset, true);
    tell_buttons(canvas);
    return true;
}

}  // namespace

void laHistory_Add(_LaCanvasData& canvas) {
    if (canvas.past.historyNewest >= 0) {
        const LaHistoryEntry& newest = canvas.past.history[canvas.past.historyNewest];
        if (newest.low == canvas.view.viewLow && newest.high == canvas.view.viewHigh) return;
    }
    const int next = (canvas.past.historyNewest + 1) % places;
    if (next == canvas.past.historyOldest)
        canvas.past.historyOldest = (canvas.past.historyOldest + 1) % places;
    canvas.past.historyNewest = canvas.past.historyCurrent = next;
    if (canvas.past.historyOldest < 0) canvas.past.historyOldest = next;
    canvas.past.history[next] = {canvas.view.viewLow, canvas.view.viewHigh, canvas.view.verticalOffset};
    tell_buttons(canvas);
}

bool laHistory_Top(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.past.historyNewest, "Already at the latest history entry.",
                   canvas.past.historyNewest);
}

bool laHistory_Bottom(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.past.historyOldest, "Already at the earliest history entry.",
                   canvas.past.historyOldest);
}

bool laHistory_Prev(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.past.historyOldest, "No earlier history entry.",
                   (canvas.past.historyCurrent + places - 1) % places);
}

bool laHistory_Next(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.past.historyNewest, "No later history entry.",
                   (canvas.past.historyCurrent + 1) % places);
}
