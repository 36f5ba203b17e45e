#include "windlib/msl/scroll_list.h"

#include <algorithm>
#include <utility>

#include "shared/libcxxutil/report.h"

namespace {

constexpr const char* headerText = "Column %d Title";
constexpr const char* unknownMetric = "[mslMetric] unknown metric\n";

std::string header_text(int column) {
    return gen_format(headerText, column);
}

}  // namespace

MScrollList::~MScrollList() {
    for (Row& row : rows_) Release(row);
}

void MScrollList::Notify(MslChange change, int first, int count) {
    if (held_ > 0)
        changedWhileHeld_ = true;
    else if (changed)
        changed(change, first, count);
}

void MScrollList::HoldRepaint(bool hold) {
    held_ += hold ? 1 : -1;
    if (held_ == 0 && std::exchange(changedWhileHeld_, false)) Notify(MslChange::Size);
}

// The block is taken out first, so that a callback that looks at the list doesn't find it.
void MScrollList::Release(Row& row) {
    const std::vector<std::byte> data = std::move(row.data);
    row.data.clear();
    if (releaseData && !data.empty()) releaseData(data);
}

bool MScrollList::SetSize(int rows, int columns) {
    if (blocked_ > 0) return false;
    std::vector<Row> old;
    old.swap(rows_);
    selected_ = ownHeights_ = 0;
    for (Row& row : old) Release(row);
    const auto before = static_cast<int>(columns_.size());
    columns_.resize(static_cast<size_t>(std::max(columns, 0)));
    for (int i = before; i < ColumnCount(); ++i)
        columns_[static_cast<size_t>(i)].header.assign(static_cast<size_t>(headerRows_), header_text(i));
    rows_.resize(static_cast<size_t>(std::max(rows, 0)));
    clickAnchor_ = noRow;
    searchAnchor_ = noRow;
    PlaceColumns();
    RowsChanged();
    Notify(MslChange::Size);
    return true;
}

bool MScrollList::InsertRows(int at, int count) {
    if (blocked_ > 0 || at < 0 || at > RowCount() || count < 0) return false;
    // Into the place all at once, so that the rows behind it move only once.
    std::vector<Row> fresh(static_cast<size_t>(count));
    rows_.insert(rows_.begin() + at, std::make_move_iterator(fresh.begin()),
                 std::make_move_iterator(fresh.end()));
    if (clickAnchor_ >= at) clickAnchor_ += count;
    RowsChanged();
    Notify(MslChange::Inserted, at, count);
    return true;
}

bool MScrollList::RemoveRows(int first, int count) {
    if (blocked_ > 0 || first < 0 || count < 0 || count > RowCount() - first) return false;
    const auto from = rows_.begin() + first, to = from + count;
    std::vector<Row> gone(std::make_move_iterator(from), std::make_move_iterator(to));
    rows_.erase(from, to);
    int deselected = 0;
    for (const Row& row : gone) {
        deselected += row.selected ? 1 : 0;
        ownHeights_ -= row.height != 0 ? 1 : 0;
    }
    selected_ -= deselected;
    if (clickAnchor_ >= first) clickAnchor_ = clickAnchor_ < first + count ? noRow : clickAnchor_ - count;
    for (Row& row : gone) Release(row);
    RowsChanged();
    Notify(MslChange::Removed, first, count);
    if (deselected > 0) Notify(MslChange::Selection);
    return true;
}

void MScrollList::SetText(int row, int column, std::string text) {
    if (!HasRow(row) || !HasColumn(column)) return;
    std::vector<std::string>& texts = At(row).texts;
    if (texts.size() <= static_cast<size_t>(column)) texts.resize(static_cast<size_t>(column) + 1);
    texts[static_cast<size_t>(column)] = std::move(text);
    Notify(MslChange::Repaint, row, 1);
}

const std::string& MScrollList::Text(int row, int column) const {
    static const std::string none;
    if (!HasRow(row) || !HasColumn(column)) return none;
    const std::vector<std::string>& texts = At(row).texts;
    return static_cast<size_t>(column) < texts.size() ? texts[static_cast<size_t>(column)] : none;
}

void MScrollList::SetColumnTexts(int column, const std::vector<std::string>& texts) {
    HoldRepaint(true);
    const int count = static_cast<int>(std::min(texts.size(), rows_.size()));
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
    return HasRow(row) ? std::span<const std::byte>(At(row).data) : std::span<const std::byte>{};
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
    columns_[static_cast<size_t>(column)].width = std::clamp(width, 0, 100000);
    PlaceColumns();
    Notify(MslChange::Columns);
}

void MScrollList::SetColumnFlags(int column, uint32_t flags) {
    if (HasColumn(column)) columns_[static_cast<size_t>(column)].flags = flags;
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

void MScrollList::FitColumns(int fromRow, int toColumn) {
    if (!measure) return;
    const int last = toColumn < 0 ? ColumnCount() - 1 : std::min(toColumn, ColumnCount() - 1);
    for (int column = 0; column <= last; ++column) {
        int widest = 0;
        for (const std::string& text : Column(column).header) widest = std::max(widest, measure(text, true));
        for (int row = std::max(fromRow, 0); row < RowCount(); ++row) {
            const MslCellRecord cell = Cell(row, column);
            int width = measure(Text(row, column), (cell.attributes & mslHeading) != 0);
            if (column == 0) width += Level(row) * levelIndent;
            if ((cell.attributes & mslToggle) != 0) width += levelIndent;
            widest = std::max(widest, width);
        }
        columns_[static_cast<size_t>(column)].width = widest + cellMargin;
    }
    PlaceColumns();
    Notify(MslChange::Columns);
}

void MScrollList::SetCellAttribute(int row, int column, uint32_t attribute, uint32_t value) {
    if (!HasRow(row) || !HasColumn(column)) return;
    std::vector<MslCellRecord>& cells = At(row).cells;
    if (cells.size() <= static_cast<size_t>(column)) cells.resize(static_cast<size_t>(column) + 1);
    MslCellRecord& cell = cells[static_cast<size_t>(column)];
    if (attribute == mslToggle)
        cell.attributes = (cell.attributes & ~mslToggle) | (value & mslToggle);
    else if (attribute == mslForeground || attribute == mslBackground || value != 0)
        cell.attributes |= attribute;
    else
        cell.attributes &= ~attribute;
    if (attribute == mslForeground) cell.foreground = value;
    if (attribute == mslBackground) cell.background = value;
    Notify(MslChange::Repaint, row, 1);
}

MslCellRecord MScrollList::Cell(int row, int column) const {
    if (!HasRow(row) || !HasColumn(column)) return {};
    const std::vector<MslCellRecord>& cells = At(row).cells;
    return static_cast<size_t>(column) < cells.size() ? cells[static_cast<size_t>(column)] : MslCellRecord{};
}

void MScrollList::SetLevel(int row, int level) {
    if (HasRow(row)) At(row).level = std::max(level, 0);
}

int MScrollList::Level(int row) const {
    return HasRow(row) ? At(row).level : 0;
}

int MScrollList::mslMetric(int which) const {
    if (which >= 0 && which < static_cast<int>(metrics.size())) return metrics[static_cast<size_t>(which)];
    gen_console_raw(unknownMetric);
    return 0;
}
