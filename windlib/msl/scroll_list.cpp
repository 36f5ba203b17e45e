#include "windlib/msl/scroll_list.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

constexpr const char* headerText = "Column %d Title";
constexpr const char* unknownMetric = "[mslMetric] unknown metric\n";
constexpr int mostMeasured = 4096;  // rows that a column is fitted to

std::string header_text(int column) {
    return gen_format(headerText, column);
}

}  // namespace

MScrollList::~MScrollList() {
    DropRows();
}

void MScrollList::Notify(MslChange change, int first, int count) {
    if (held_ > 0) {
        changedWhileHeld_ = true;
        return;
    }
    if (observed) observed(change, first, count);
    if (changed) changed(change, first, count);
}

void MScrollList::HoldRepaint(bool hold) {
    held_ += hold ? 1 : -1;
    if (held_ == 0 && std::exchange(changedWhileHeld_, false)) Notify(MslChange::Size);
}

MScrollList::Row& MScrollList::At(int row) {
    return lazy_ ? byHand_[order_[static_cast<size_t>(row)]] : rows_[static_cast<size_t>(row)];
}

const MScrollList::Row* MScrollList::Find(int row) const {
    if (!lazy_) return &rows_[static_cast<size_t>(row)];
    if (byHand_.empty()) return nullptr;
    const auto found = byHand_.find(order_[static_cast<size_t>(row)]);
    return found == byHand_.end() ? nullptr : &found->second;
}

// The block is taken out first, so that a callback that looks at the list doesn't find it.
void MScrollList::Release(Row& row) {
    const std::vector<std::byte> data = std::move(row.data);
    row.data.clear();
    if (releaseData && !data.empty()) releaseData(data);
}

void MScrollList::DropRows() {
    std::vector<Row> old;
    std::unordered_map<uint32_t, Row> oldByHand;
    old.swap(rows_);
    oldByHand.swap(byHand_);
    lazy_.reset();
    order_.clear();
    lazySelected_.clear();
    ++selectionVersion_;
    selected_ = ownHeights_ = 0;
    clickAnchor_ = searchAnchor_ = currentRow_ = noRow;
    sortColumn_ = -1;
    for (Row& row : old) Release(row);
    for (auto& [id, row] : oldByHand) Release(row);
}

bool MScrollList::SetSize(int rows, int columns) {
    if (blocked_ > 0) return false;
    DropRows();
    rows_.resize(static_cast<size_t>(std::max(rows, 0)));
    HoldRepaint(true);
    SetColumnCount(columns);
    RowsChanged();
    Notify(MslChange::Size);
    HoldRepaint(false);
    return true;
}

void MScrollList::SetColumnCount(int columns) {
    const auto before = static_cast<int>(columns_.size());
    columns = std::max(columns, 0);
    columns_.resize(static_cast<size_t>(columns));
    for (int i = before; i < columns; ++i)
        columns_[static_cast<size_t>(i)].header.assign(static_cast<size_t>(headerRows_), header_text(i));
    const auto cut = [columns](Row& row) {
        if (row.texts.size() > static_cast<size_t>(columns)) row.texts.resize(static_cast<size_t>(columns));
        if (row.cells.size() > static_cast<size_t>(columns)) row.cells.resize(static_cast<size_t>(columns));
    };
    if (columns < before) {
        for (Row& row : rows_) cut(row);
        for (auto& [id, row] : byHand_) cut(row);
    }
    if (sortColumn_ >= columns) sortColumn_ = -1;
    PlaceColumns();
    Notify(MslChange::Size);
}

bool MScrollList::SetLazyRows(MslLazyRows owner, std::vector<uint32_t> ids) {
    if (blocked_ > 0) return false;
    DropRows();
    lazy_ = std::make_unique<MslLazyRows>(std::move(owner));
    order_ = std::move(ids);
    const auto last = std::max_element(order_.begin(), order_.end());
    lazySelected_.assign(last == order_.end() ? 0 : static_cast<size_t>(*last) + 1, false);
    RowsChanged();
    Notify(MslChange::Size);
    return true;
}

bool MScrollList::SetLazyRows(MslLazyRows owner, int count) {
    std::vector<uint32_t> ids(static_cast<size_t>(std::max(count, 0)));
    std::iota(ids.begin(), ids.end(), 0u);
    return SetLazyRows(std::move(owner), std::move(ids));
}

bool MScrollList::InsertRows(int at, int count) {
    if (blocked_ > 0 || lazy_ || at < 0 || at > RowCount() || count < 0) return false;
    // Into the place all at once, so that the rows behind it move only once.
    std::vector<Row> fresh(static_cast<size_t>(count));
    rows_.insert(rows_.begin() + at, std::make_move_iterator(fresh.begin()),
                 std::make_move_iterator(fresh.end()));
    for (int* row : {&clickAnchor_, &currentRow_})
        if (*row >= at) *row += count;
    sortColumn_ = -1;
    RowsChanged();
    Notify(MslChange::Inserted, at, count);
    return true;
}

bool MScrollList::RemoveRows(int first, int count) {
    if (blocked_ > 0 || first < 0 || count < 0 || count > RowCount() - first) return false;
    int deselected = 0;
    std::vector<Row> gone;
    for (int row = first; row < first + count; ++row) {
        deselected += IsSelected(row) ? 1 : 0;
        if (const Row* found = Find(row)) ownHeights_ -= found->height != 0 ? 1 : 0;
        if (!lazy_ || Find(row)) gone.push_back(std::move(At(row)));
        if (!lazy_) continue;
        const uint32_t id = order_[static_cast<size_t>(row)];
        lazySelected_[id] = false;
        byHand_.erase(id);
    }
    if (lazy_)
        order_.erase(order_.begin() + first, order_.begin() + first + count);
    else
        rows_.erase(rows_.begin() + first, rows_.begin() + first + count);
    selected_ -= deselected;
    if (deselected > 0) ++selectionVersion_;
    for (int* row : {&clickAnchor_, &currentRow_})
        if (*row >= first) *row = *row < first + count ? noRow : *row - count;
    for (Row& row : gone) Release(row);
    RowsChanged();
    Notify(MslChange::Removed, first, count);
    if (deselected > 0) Notify(MslChange::Selection);
    return true;
}

void MScrollList::SetText(int row, int column, std::string text) {
    if (!HasRow(row) || !HasColumn(column)) return;
    std::vector<std::string>& texts = At(row).texts;
    if (texts.size() <= static_cast<size_t>(column)) {
        const size_t known = texts.size();
        texts.resize(static_cast<size_t>(column) + 1);
        // The owner's texts stay in the columns ahead of the one that is set.
        for (size_t i = known; lazy_ && i < static_cast<size_t>(column); ++i)
            texts[i] = lazy_->text(order_[static_cast<size_t>(row)], static_cast<int>(i));
    }
    texts[static_cast<size_t>(column)] = std::move(text);
    Notify(MslChange::Repaint, row, 1);
}

std::string MScrollList::Text(int row, int column) const {
    if (!HasRow(row) || !HasColumn(column)) return {};
    if (const Row* found = Find(row); found && static_cast<size_t>(column) < found->texts.size())
        return found->texts[static_cast<size_t>(column)];
    return lazy_ && lazy_->text ? lazy_->text(order_[static_cast<size_t>(row)], column) : std::string{};
}

void MScrollList::SetColumnTexts(int column, const std::vector<std::string>& texts) {
    HoldRepaint(true);
    const int count = std::min(static_cast<int>(texts.size()), RowCount());
    for (int row = 0; row < count; ++row) SetText(row, column, texts[static_cast<size_t>(row)]);
    HoldRepaint(false);
}

void MScrollList::SetRowData(int row, std::span<const std::byte> data) {
    if (!HasRow(row)) return;
    std::vector<std::byte> copy(data.begin(), data.end());
    Release(At(row));
    if (HasRow(row)) At(row).data = std::move(copy);
}

std::span<const std::byte> MScrollList::RowData(int row) const {
    const Row* found = HasRow(row) ? Find(row) : nullptr;
    return found ? std::span<const std::byte>(found->data) : std::span<const std::byte>{};
}

uint64_t MScrollList::RowId(int row) const {
    if (!HasRow(row)) return 0;
    return lazy_ ? order_[static_cast<size_t>(row)] : rows_[static_cast<size_t>(row)].id;
}

void MScrollList::SetRowId(int row, uint64_t id) {
    if (HasRow(row) && !lazy_) rows_[static_cast<size_t>(row)].id = id;
}

int MScrollList::RowOfId(uint64_t id) const {
    for (int row = 0; row < RowCount(); ++row)
        if (RowId(row) == id) return row;
    return noRow;
}

void MScrollList::PlaceColumns() {
    int left = 0;
    for (MslColumn& column : columns_) {
        column.left = left;
        left += column.width;
    }
}

void MScrollList::SetWidth(int column, int width) {
    if (!HasColumn(column)) return;
    MslColumn& changedColumn = columns_[static_cast<size_t>(column)];
    changedColumn.width = std::clamp(width, 0, 100000);
    changedColumn.widthFixed = true;
    PlaceColumns();
    Notify(MslChange::Columns);
}

void MScrollList::SetColumnFlags(int column, uint32_t flags) {
    if (HasColumn(column)) columns_[static_cast<size_t>(column)].flags = flags;
}

void MScrollList::SetOwnerDrawn(int column, bool on) {
    if (!HasColumn(column)) return;
    columns_[static_cast<size_t>(column)].ownerDrawn = on;
    Notify(MslChange::Columns);
}

void MScrollList::SetRightAligned(int column, bool on) {
    if (!HasColumn(column)) return;
    columns_[static_cast<size_t>(column)].rightAligned = on;
    Notify(MslChange::Columns);
}

bool MScrollList::IsOwnerDrawn(int column) const {
    return drawCell && HasColumn(column) && Column(column).ownerDrawn;
}

void MScrollList::SetHeaderRows(int count) {
    headerRows_ = std::clamp(count, 0, 100);
    for (int i = 0; i < ColumnCount(); ++i)
        columns_[static_cast<size_t>(i)].header.resize(static_cast<size_t>(headerRows_), header_text(i));
    Notify(MslChange::Columns);
}

void MScrollList::SetHeader(int headerRow, int column, std::string text) {
    if (!HasColumn(column) || headerRow < 0 || headerRow >= headerRows_) return;
    columns_[static_cast<size_t>(column)].header[static_cast<size_t>(headerRow)] = std::move(text);
    Notify(MslChange::Columns);
}

int MScrollList::FittedWidth(int column, int fromRow) const {
    if (!measure) return 0;
    int widest = 0;
    for (const std::string& text : Column(column).header) widest = std::max(widest, measure(text, true));
    const int first = std::max(fromRow, 0);
    const int step = std::max(1, (RowCount() - first) / mostMeasured);
    for (int row = first; row < RowCount(); row += step) {
        const MslCellRecord cell = Cell(row, column);
        int width = measure(Text(row, column), (cell.attributes & mslHeading) != 0);
        if (column == treeColumn) width += Level(row) * levelIndent;
        if ((cell.attributes & mslToggle) != 0) width += levelIndent;
        widest = std::max(widest, width);
    }
    return widest + cellMargin;
}

void MScrollList::FitColumns(int fromRow, int toColumn) {
    if (!measure) return;
    const int last = toColumn < 0 ? ColumnCount() - 1 : std::min(toColumn, ColumnCount() - 1);
    for (int column = 0; column <= last; ++column) {
        columns_[static_cast<size_t>(column)].width = FittedWidth(column, fromRow);
        columns_[static_cast<size_t>(column)].widthFixed = true;
    }
    PlaceColumns();
    Notify(MslChange::Columns);
}

void MScrollList::FitUnsetColumns() {
    if (!measure) return;
    for (int column = 0; column < ColumnCount(); ++column)
        if (!Column(column).widthFixed) columns_[static_cast<size_t>(column)].width = FittedWidth(column, 0);
    PlaceColumns();
    Notify(MslChange::Columns);
}

void MScrollList::SetCellAttribute(int row, int column, uint32_t attribute, uint32_t value) {
    if (!HasRow(row) || !HasColumn(column)) return;
    MslCellRecord cell = Cell(row, column);
    if (attribute == mslToggle)
        cell.attributes = (cell.attributes & ~mslToggle) | (value & mslToggle);
    else if (attribute == mslForeground || attribute == mslBackground || value != 0)
        cell.attributes |= attribute;
    else
        cell.attributes &= ~attribute;
    if (attribute == mslForeground) cell.foreground = value;
    if (attribute == mslBackground) cell.background = value;
    std::vector<MslCellRecord>& cells = At(row).cells;
    for (auto i = static_cast<int>(cells.size()); i <= column; ++i) {
        const MslCellRecord before = Cell(row, i);
        cells.push_back(before);
    }
    cells[static_cast<size_t>(column)] = cell;
    Notify(MslChange::Repaint, row, 1);
}

MslCellRecord MScrollList::Cell(int row, int column) const {
    if (!HasRow(row) || !HasColumn(column)) return {};
    if (const Row* found = Find(row); found && static_cast<size_t>(column) < found->cells.size())
        return found->cells[static_cast<size_t>(column)];
    return lazy_ && lazy_->cell ? lazy_->cell(order_[static_cast<size_t>(row)], column) : MslCellRecord{};
}

void MScrollList::SetLevel(int row, int level) {
    if (HasRow(row) && !lazy_) At(row).level = std::max(level, 0);
}

int MScrollList::Level(int row) const {
    if (!HasRow(row)) return 0;
    if (lazy_) return lazy_->level ? lazy_->level(order_[static_cast<size_t>(row)]) : 0;
    return rows_[static_cast<size_t>(row)].level;
}

int MScrollList::mslMetric(int which) const {
    if (which >= 0 && which < static_cast<int>(metrics.size())) return metrics[static_cast<size_t>(which)];
    gen_console_raw(unknownMetric);
    return 0;
}
