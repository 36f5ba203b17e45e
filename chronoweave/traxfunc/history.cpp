#include "chronoweave/traxfunc/history.h"

#include <algorithm>
#include <type_traits>

#include "chronoweave/traxfunc/view.h"

namespace {

constexpr int places = static_cast<int>(std::extent_v<decltype(_LaCanvasData::history)>);

void tell_buttons(const _LaCanvasData& canvas) {
    if (canvas.buttonsChanged) canvas.buttonsChanged();
}

// The move to an entry, refused with the message when the present one is the end already.
bool move_to(_LaCanvasData& canvas, int end, const char* refusal, int target) {
    if (canvas.historyNewest < 0) {
        laCanvas_Refuse(canvas, "No history.");
        return false;
    }
    if (canvas.historyCurrent == end) {
        laCanvas_Refuse(canvas, refusal);
        return false;
    }
    const LaHistoryEntry entry = canvas.history[target];
    const double extent = canvas.scrollExtent;
    canvas.scrollExtent = std::max(canvas.totalLength, entry.high);
    if (!laCanvas_ShowRange(canvas, entry.low, entry.high, false, true)) {
        canvas.scrollExtent = extent;
        return false;
    }
    canvas.historyCurrent = target;
    TRAX_ScrollTo(canvas, 0, entry.verticalOffset, true);
    tell_buttons(canvas);
    return true;
}

}  // namespace

void laHistory_Add(_LaCanvasData& canvas) {
    if ((canvas.flags & Canvas_RecordHistory) == 0) return;
    if (canvas.historyNewest >= 0) {
        const LaHistoryEntry& newest = canvas.history[canvas.historyNewest];
        if (newest.low == canvas.viewLow && newest.high == canvas.viewHigh) return;
    }
    const int next = (canvas.historyNewest + 1) % places;
    if (next == canvas.historyOldest) canvas.historyOldest = (canvas.historyOldest + 1) % places;
    canvas.historyNewest = canvas.historyCurrent = next;
    if (canvas.historyOldest < 0) canvas.historyOldest = next;
    canvas.history[next] = {canvas.viewLow, canvas.viewHigh, canvas.verticalOffset};
    tell_buttons(canvas);
}

bool laHistory_Top(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.historyNewest, "Already at the latest history entry.",
                   canvas.historyNewest);
}

bool laHistory_Bottom(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.historyOldest, "Already at the earliest history entry.",
                   canvas.historyOldest);
}

bool laHistory_Prev(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.historyOldest, "No earlier history entry.",
                   (canvas.historyCurrent + places - 1) % places);
}

bool laHistory_Next(_LaCanvasData& canvas) {
    return move_to(canvas, canvas.historyNewest, "No later history entry.",
                   (canvas.historyCurrent + 1) % places);
}

bool laHistory_Command(_LaCanvasData& canvas, bool (*move)(_LaCanvasData&)) {
    const uint32_t recording = canvas.flags & Canvas_RecordHistory;
    canvas.flags &= ~static_cast<uint32_t>(Canvas_RecordHistory);
    const bool moved = move(canvas);
    canvas.flags |= recording;
    return moved;
}
