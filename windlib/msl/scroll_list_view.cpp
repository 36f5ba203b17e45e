// Selection, row heights and the scroll position of the list.
#include <algorithm>

#include "windlib/msl/scroll_list.h"

void MScrollList::ClearSelection() {
    if (selected_ == 0) return;
    for (Row& row : rows_) row.selected = false;
    selected_ = 0;
}

void MScrollList::SetMultiple(bool multiple) {
    multiple_ = multiple;
    if (!multiple && selected_ > 1) SelectOnly(SelectedRows().front());
}

int MScrollList::SelectedRow() const {
    if (selected_ == 0) return noRow;
    return selected_ > 1 ? severalRows : SelectedRows().front();
}

std::vector<int> MScrollList::SelectedRows() const {
    std::vector<int> rows;
    for (int row = 0; row < RowCount() && static_cast<int>(rows.size()) < selected_; ++row)
        if (At(row).selected) rows.push_back(row);
    return rows;
}

bool MScrollList::IsSelected(int row) const {
    return HasRow(row) && At(row).selected;
}

void MScrollList::SelectOnly(int row) {
    ClearSelection();
    if (HasRow(row)) {
        At(row).selected = true;
        selected_ = 1;
    }
    Notify(MslChange::Selection);
}

void MScrollList::Select(int row, bool on) {
    if (!HasRow(row) || At(row).selected == on) return;
    if (on && !multiple_) ClearSelection();
    At(row).selected = on;
    selected_ += on ? 1 : -1;
    Notify(MslChange::Selection);
}

void MScrollList::SelectAll() {
    if (!multiple_) return;
    for (Row& row : rows_) row.selected = true;
    selected_ = RowCount();
    Notify(MslChange::Selection);
}

void MScrollList::Click(int row, int column, int clicks, bool control, bool shift) {
    if (!HasRow(row)) {
        row = noRow;
    } else if (multiple_ && shift && HasRow(clickAnchor_)) {
        ClearSelection();
        const auto [first, last] = std::minmax(row, clickAnchor_);
        for (int each = first; each <= last; ++each) At(each).selected = true;
        selected_ = last - first + 1;
        Notify(MslChange::Selection);
    } else {
        const bool away = control && IsSelected(row) && !(mustSelect_ && selected_ == 1);
        if (control && (multiple_ || away))
            Select(row, !away);
        else
            SelectOnly(row);
        clickAnchor_ = row;
    }
    if (clicked) clicked(row, column, clicks);
}

void MScrollList::RowsChanged() {
    tops_.clear();
    viewTop_ = std::clamp<int64_t>(viewTop_, 0, std::max<int64_t>(TopOf(RowCount()) - viewHeight_, 0));
}

void MScrollList::SetRowHeight(int height, bool redraw) {
    rowHeight_ = std::max(height, 1);
    for (Row& row : rows_) row.height = 0;
    ownHeights_ = 0;
    RowsChanged();
    if (redraw) Notify(MslChange::Size);
}

void MScrollList::SetHeightOf(int row, int height) {
    if (!HasRow(row)) return;
    ownHeights_ += (height > 0 ? 1 : 0) - (At(row).height != 0 ? 1 : 0);
    At(row).height = std::max(height, 0);
    RowsChanged();
    Notify(MslChange::Size);
}

int MScrollList::HeightOf(int row) const {
    if (!HasRow(row)) return 0;
    return At(row).height != 0 ? At(row).height : rowHeight_;
}

int64_t MScrollList::TopOf(int row) const {
    row = std::clamp(row, 0, RowCount());
    if (ownHeights_ == 0) return int64_t{row} * rowHeight_;
    if (tops_.empty()) {
        tops_.push_back(0);
        for (int each = 0; each < RowCount(); ++each) tops_.push_back(tops_.back() + HeightOf(each));
    }
    return tops_[static_cast<size_t>(row)];
}

int MScrollList::RowAt(int64_t y) const {
    if (y < 0 || y >= TopOf(RowCount())) return noRow;
    if (ownHeights_ == 0) return static_cast<int>(y / rowHeight_);
    return static_cast<int>(std::upper_bound(tops_.begin(), tops_.end(), y) - tops_.begin()) - 1;
}

void MScrollList::SetViewHeight(int height) {
    viewHeight_ = std::max(height, 0);
    ScrollTo(viewTop_);
}

void MScrollList::ScrollTo(int64_t top) {
    const int64_t before = viewTop_;
    viewTop_ = top;
    viewTop_ = std::clamp<int64_t>(viewTop_, 0, std::max<int64_t>(TopOf(RowCount()) - viewHeight_, 0));
    if (viewTop_ != before) Notify(MslChange::Scroll);
}

void MScrollList::ScrollToRow(int row) {
    if (HasRow(row)) ScrollToRows(row, row);
}

void MScrollList::ScrollToRows(int first, int last) {
    const int64_t top = TopOf(first), bottom = TopOf(last) + HeightOf(last);
    if (top < viewTop_ || bottom - top > viewHeight_)
        ScrollTo(top);
    else if (bottom > viewTop_ + viewHeight_)
        ScrollTo(bottom - viewHeight_);
}
