// Selection, row heights and the scroll position of the list.
#include <algorithm>

#include "windlib/msl/scroll_list.h"

namespace {

// Through a copy: the call may destroy the list, and with it the function that runs.
template <class F, class... Args>
void tell(const F& function, Args... args) {
    if (!function) return;
    const F copy = function;
    copy(args...);
}

}  // namespace

bool MScrollList::IsSelected(int row) const {
    if (!HasRow(row)) return false;
    return lazy_ ? lazySelected_[order_[static_cast<size_t>(row)]] : rows_[static_cast<size_t>(row)].selected;
}

void MScrollList::Mark(int row, bool selected) {
    if (lazy_)
        lazySelected_[order_[static_cast<size_t>(row)]] = selected;
    else
        rows_[static_cast<size_t>(row)].selected = selected;
    ++selectionVersion_;
}

void MScrollList::ClearSelection() {
    if (selected_ == 0) return;
    ++selectionVersion_;
    selected_ = 0;
    if (lazy_) lazySelected_.assign(lazySelected_.size(), false);
    for (Row& row : rows_) row.selected = false;
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
        if (IsSelected(row)) rows.push_back(row);
    return rows;
}

std::vector<uint64_t> MScrollList::SelectedIds() const {
    std::vector<uint64_t> ids;
    for (const int row : SelectedRows()) ids.push_back(RowId(row));
    return ids;
}

void MScrollList::SelectOnly(int row) {
    if (HasRow(row) ? selected_ == 1 && IsSelected(row) : selected_ == 0) return;
    ClearSelection();
    if (HasRow(row)) {
        Mark(row, true);
        selected_ = 1;
    }
    Notify(MslChange::Selection);
}

void MScrollList::SelectRows(const std::vector<int>& rows) {
    ClearSelection();
    for (const int row : rows) {
        if (!HasRow(row) || IsSelected(row) || (!multiple_ && selected_ > 0)) continue;
        Mark(row, true);
        ++selected_;
    }
    Notify(MslChange::Selection);
}

void MScrollList::Select(int row, bool on) {
    if (!HasRow(row) || IsSelected(row) == on) return;
    if (on && !multiple_) ClearSelection();
    Mark(row, on);
    selected_ += on ? 1 : -1;
    Notify(MslChange::Selection);
}

void MScrollList::SelectAll() {
    if (!multiple_) return;
    for (int row = 0; row < RowCount(); ++row) Mark(row, true);
    selected_ = RowCount();
    Notify(MslChange::Selection);
}

void MScrollList::SelectRange(int row, int other) {
    ClearSelection();
    const auto [first, last] = std::minmax(row, other);
    for (int each = first; each <= last; ++each) Mark(each, true);
    selected_ = last - first + 1;
    Notify(MslChange::Selection);
}

// Ends what the user did: tells when the selection is another one than before.
void MScrollList::Told(uint64_t selectionBefore) {
    if (selectionVersion_ != selectionBefore) tell(userSelected);
}

void MScrollList::Click(int row, int column, int clicks, bool control, bool shift) {
    const uint64_t before = selectionVersion_;
    const std::weak_ptr<bool> alive = alive_;
    if (!HasRow(row)) {
        row = noRow;
    } else {
        if (multiple_ && shift && HasRow(clickAnchor_)) {
            SelectRange(row, clickAnchor_);
        } else {
            const bool away = control && IsSelected(row) && !(mustSelect_ && selected_ == 1);
            if (control && (multiple_ || away))
                Select(row, !away);
            else
                SelectOnly(row);
            clickAnchor_ = row;
        }
        SetCurrent(row, column);
    }
    Told(before);
    if (!alive.expired()) tell(clicked, row, column, clicks);
    if (!alive.expired() && clicks == 2 && HasRow(row)) tell(activated, row);
}

void MScrollList::DragTo(int row) {
    if (!multiple_ || !HasRow(row) || !HasRow(clickAnchor_) || row == currentRow_) return;
    const uint64_t before = selectionVersion_;
    SelectRange(row, clickAnchor_);
    currentRow_ = row;
    ScrollToRow(row);
    Told(before);
}

void MScrollList::RightClick(int row, int column) {
    const uint64_t before = selectionVersion_;
    const std::weak_ptr<bool> alive = alive_;
    if (!HasRow(row)) row = noRow;
    if (row != noRow && !IsSelected(row)) {
        SelectOnly(row);
        clickAnchor_ = row;
    }
    if (row != noRow) SetCurrent(row, column);
    Told(before);
    if (!alive.expired()) tell(rightClicked, row, column);
}

void MScrollList::RowsChanged() {
    tops_.clear();
    viewTop_ = std::clamp<int64_t>(viewTop_, 0, std::max<int64_t>(TopOf(RowCount()) - viewHeight_, 0));
}

void MScrollList::SetRowHeight(int height, bool redraw) {
    rowHeight_ = std::max(height, 1);
    rowHeightSet_ = true;
    for (Row& row : rows_) row.height = 0;
    for (auto& [id, row] : byHand_) row.height = 0;
    ownHeights_ = 0;
    RowsChanged();
    if (redraw) Notify(MslChange::Size);
}

void MScrollList::SetNaturalRowHeight(int height) {
    if (rowHeightSet_) return;
    rowHeight_ = std::max(height, 1);
    RowsChanged();
    Notify(MslChange::Size);
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
    if (ownHeights_ == 0) return rowHeight_;
    const Row* found = Find(row);
    return found && found->height != 0 ? found->height : rowHeight_;
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
