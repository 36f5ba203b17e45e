// The keyboard in the list: the current row and column, and what each key does to them.
#include <algorithm>
#include <utility>

#include "windlib/msl/scroll_list.h"

int MScrollList::CurrentRow() const {
    if (HasRow(currentRow_)) return currentRow_;
    const std::vector<int> rows = SelectedRows();
    return rows.empty() ? noRow : rows.front();
}

void MScrollList::SetCurrent(int row, int column) {
    const int from = std::exchange(currentRow_, HasRow(row) ? row : noRow);
    if (HasColumn(column)) currentColumn_ = column;
    if (from != currentRow_)
        for (const int each : {from, currentRow_})
            if (HasRow(each)) RepaintRow(each);
}

void MScrollList::MoveTo(int row, bool control, bool shift) {
    if (RowCount() == 0) return;
    row = std::clamp(row, 0, RowCount() - 1);
    const uint64_t before = selectionVersion_;
    const int from = currentRow_;
    currentRow_ = row;
    if (multiple_ && shift) {
        if (!HasRow(clickAnchor_)) clickAnchor_ = HasRow(from) ? from : row;
        SelectRange(clickAnchor_, row);
    } else {
        clickAnchor_ = row;
        if (!(multiple_ && control)) SelectOnly(row);
    }
    if (from != row)
        for (const int each : {from, row})
            if (HasRow(each)) RepaintRow(each);
    ScrollToRow(row);
    Told(before);
}

int MScrollList::ParentOf(int row) const {
    for (int above = row - 1; above >= 0; --above)
        if (Level(above) < Level(row)) return above;
    return noRow;
}

bool MScrollList::KeyAcross(MslKey key) {
    const int row = CurrentRow();
    if (row == noRow) return false;
    if (!toggleTree) {
        if (ColumnCount() == 0) return false;
        currentColumn_ = std::clamp(currentColumn_ + (key == MslKey::Left ? -1 : 1), 0, ColumnCount() - 1);
        RepaintRow(row);
        return true;
    }
    const uint32_t toggle = Toggle(row, treeColumn);
    if (toggle == (key == MslKey::Left ? mslToggleOn : mslToggleOff)) return ClickToggle(row);
    if (key == MslKey::Left && ParentOf(row) != noRow)
        MoveTo(ParentOf(row), false, false);
    else if (key == MslKey::Right && toggle == mslToggleOn)
        MoveTo(row + 1, false, false);
    return true;
}

bool MScrollList::Key(MslKey key, bool control, bool shift) {
    const int row = CurrentRow();
    const int page = std::max(1, viewHeight_ / std::max(1, rowHeight_) - 1);
    switch (key) {
        case MslKey::Up:
            MoveTo(row == noRow ? 0 : row - 1, control, shift);
            return true;
        case MslKey::Down:
            MoveTo(row + 1, control, shift);
            return true;
        case MslKey::PageUp:
            MoveTo(std::max(row, 0) - page, control, shift);
            return true;
        case MslKey::PageDown:
            MoveTo(std::max(row, 0) + page, control, shift);
            return true;
        case MslKey::Home:
            MoveTo(0, control, shift);
            return true;
        case MslKey::End:
            MoveTo(RowCount() - 1, control, shift);
            return true;
        case MslKey::Left:
        case MslKey::Right:
            return KeyAcross(key);
        case MslKey::Enter:
            if (row == noRow || !activated) return false;
            return std::function<bool(int)>(activated)(row);  // a copy: it may destroy the list
        case MslKey::Space:
            if (row == noRow) return false;
            Click(row, currentColumn_, 1, control, shift);
            return true;
        case MslKey::SelectAll: {
            const uint64_t before = selectionVersion_;
            SelectAll();
            Told(before);
            return multiple_;
        }
    }
    return false;
}
