#include "chronoweave/traxfunc/draw/pinned_rows.h"

#include <algorithm>

std::vector<laPinnedRow> laPinned_Rows(const LaItems& items, const LaLooks& looks, const LaView& view,
                                       int dataHeight) {
    std::vector<laPinnedRow> pinned;
    std::vector<size_t> byRow;
    for (size_t i = 0; i < items.processors.list.size(); ++i)
        if (items.processors.list[i].row >= 0) byRow.push_back(i);
    std::ranges::sort(byRow, {}, [&](size_t i) { return items.processors.list[i].row; });
    int free = 0;
    for (const size_t i : byRow) {
        const LaProcessor& one = items.processors.list[i];
        const int own = one.row * looks.rowHeight - view.verticalOffset;
        const int end = one.endRow * looks.rowHeight - view.verticalOffset;
        if (own >= free || end <= free || free + looks.rowHeight > dataHeight / 3) continue;
        const int top = std::min(free, end - looks.rowHeight);
        if (top + looks.rowHeight <= 0) continue;
        pinned.push_back({i, top});
        free = top + looks.rowHeight;
    }
    return pinned;
}

int laPinned_Height(const LaItems& items, const LaLooks& looks, const LaView& view, int dataHeight) {
    const auto pinned = laPinned_Rows(items, looks, view, dataHeight);
    return pinned.empty() ? 0 : pinned.back().top + looks.rowHeight;
}

const LaProcessor* laProcessor_AtRow(const LaItems& items, const LaLooks& looks, const LaView& view,
                                     int dataHeight, int y) {
    if (y < 0 || y >= dataHeight || looks.rowHeight <= 0) return nullptr;
    const auto pinned = laPinned_Rows(items, looks, view, dataHeight);
    for (auto at = pinned.rbegin(); at != pinned.rend(); ++at)
        if (y >= at->top && y < at->top + looks.rowHeight) return &items.processors.list[at->processor];
    const int row = (y + view.verticalOffset) / looks.rowHeight;
    const auto own = std::ranges::find(items.processors.list, row, &LaProcessor::row);
    return own == items.processors.list.end() ? nullptr : &*own;
}
