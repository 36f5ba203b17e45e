#include "chronoweave/traxfunc/draw/pinned_rows.h"

#include <algorithm>

namespace {

constexpr int upperShare = 3, lowerShare = 6;  // of the data area, at most one part of so many

// The processors that have a row, from the top.
std::vector<size_t> by_row(const LaItems& items) {
    std::vector<size_t> rows;
    for (size_t i = 0; i < items.processors.list.size(); ++i)
        if (items.processors.list[i].row >= 0) rows.push_back(i);
    std::ranges::sort(rows, {}, [&](size_t i) { return items.processors.list[i].row; });
    return rows;
}

struct Pinned {
    std::vector<laPinnedRow> upper, lower;
};

class Edges {
  public:
    Edges(const LaItems& items, const LaLooks& looks, const LaView& view, int dataHeight)
        : items_(items), looks_(looks), view_(view), dataHeight_(dataHeight), rows_(by_row(items)) {}

    Pinned Find() const {
        Pinned pinned{Upper(), {}};
        if (view_.pinEdges == LaPinEdges::Both) pinned.lower = Lower(pinned.upper);
        return pinned;
    }

  private:
    int TopOf(int row) const { return row * looks_.rowHeight - view_.verticalOffset; }
    int OwnTop(size_t processor) const { return TopOf(items_.processors.list[processor].row); }

    std::vector<laPinnedRow> Upper() const {
        std::vector<laPinnedRow> pinned;
        int free = 0;
        for (const size_t i : rows_) {
            const int end = TopOf(items_.processors.list[i].endRow);
            if (OwnTop(i) >= free || end <= free || free + looks_.rowHeight > dataHeight_ / upperShare)
                continue;
            const int top = std::min(free, end - looks_.rowHeight);
            if (top + looks_.rowHeight <= 0) continue;
            pinned.push_back({i, top});
            free = top + looks_.rowHeight;
        }
        return pinned;
    }

    // The first one that would stand lower than where it is put begins them.
    std::vector<laPinnedRow> Lower(const std::vector<laPinnedRow>& upper) const {
        const size_t most =
            looks_.rowHeight > 0 ? static_cast<size_t>(dataHeight_ / lowerShare / looks_.rowHeight) : 0;
        for (size_t first = 0; first < rows_.size(); ++first) {
            const size_t count = std::min(most, rows_.size() - first);
            const int top = dataHeight_ - static_cast<int>(count) * looks_.rowHeight;
            const auto same = [&](const laPinnedRow& row) { return row.processor == rows_[first]; };
            if (OwnTop(rows_[first]) <= top || std::ranges::any_of(upper, same)) continue;
            std::vector<laPinnedRow> pinned;
            for (size_t i = 0; i < count; ++i)
                pinned.push_back({rows_[first + i], top + static_cast<int>(i) * looks_.rowHeight});
            return pinned;
        }
        return {};
    }

    const LaItems& items_;
    const LaLooks& looks_;
    const LaView& view_;
    int dataHeight_;
    std::vector<size_t> rows_;
};

}  // namespace

std::vector<laPinnedRow> laPinned_Rows(const LaItems& items, const LaLooks& looks, const LaView& view,
                                       int dataHeight) {
    Pinned pinned = Edges(items, looks, view, dataHeight).Find();
    pinned.upper.insert(pinned.upper.end(), pinned.lower.begin(), pinned.lower.end());
    return std::move(pinned.upper);
}

LaFreeRows laPinned_Free(const LaItems& items, const LaLooks& looks, const LaView& view, int dataHeight) {
    const Pinned pinned = Edges(items, looks, view, dataHeight).Find();
    return {pinned.upper.empty() ? 0 : pinned.upper.back().top + looks.rowHeight,
            pinned.lower.empty() ? dataHeight : pinned.lower.front().top};
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
