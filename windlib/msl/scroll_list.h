// The multi-column list with no window: columns, rows with their texts, looks and user data, selection,
// sorting, type-ahead search and the scroll position. A view draws it and is told of every change.
//
// Rows are held by the list, with texts set by hand, or they are lazy: known by an id alone, with the owner
// asked for what is shown. A million lazy rows take a few bytes each.
//
// Rows and columns count from 0; a row or column out of range is ignored by every change and gives an empty
// answer. Sizes are pixels. For use from the one user-interface thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class MScrollList;
class Surface;

// Less than 0, 0, more than 0 as a sorts before, with or behind b.
using MslCompare = std::function<int(const MScrollList&, std::string_view a, std::string_view b)>;
int msl_CompareText(const MScrollList&, std::string_view a, std::string_view b);      // by bytes
int msl_CompareUnsigned(const MScrollList&, std::string_view a, std::string_view b);  // as C reads it, 0x too
int msl_CompareDouble(const MScrollList&, std::string_view a, std::string_view b);

// Attributes of a cell, as given to SetCellAttribute.
constexpr uint32_t mslToggle = 3;        // two bits: no toggle, off or collapsed, on or expanded
constexpr uint32_t mslHeading = 64;      // the heading look; 0 or 1
constexpr uint32_t mslForeground = 128;  // colours, 0xRRGGBB
constexpr uint32_t mslBackground = 256;
constexpr uint32_t mslToggleNone = 0, mslToggleOff = 1, mslToggleOn = 2;

struct MslCellRecord {
    uint32_t attributes = 0;  // bits of the above; the colours count when their bit is set
    uint32_t foreground = 0;
    uint32_t background = 0;
};

// A row's place in the sort by a column, from the row's id: cheaper than comparing texts.
using MslNumberKey = std::function<double(uint64_t id)>;
using MslUnsignedKey = std::function<uint64_t(uint64_t id)>;

struct MslColumn {
    int left = 0, width = 80;
    std::vector<std::string> header;  // a cell for each header row
    MslCompare compare;               // by text when empty
    int compareFlag = 0;              // 1 sorts the column the other way round
    MslNumberKey numberKey;           // when one of these is set, it goes before compare
    MslUnsignedKey unsignedKey;
    uint32_t flags = 0;         // the owner's
    bool ownerDrawn = false;    // see drawCell
    bool rightAligned = false;  // texts end at the right edge, as numbers do; the view does not widen it
    bool widthFixed = false;    // set by somebody, so that FitUnsetColumns keeps out
};

// What the owner tells of lazy rows, by their ids. Only text must be set.
struct MslLazyRows {
    std::function<std::string(uint32_t id, int column)> text;
    std::function<MslCellRecord(uint32_t id, int column)> cell;
    std::function<int(uint32_t id)> level;  // depth in a tree
};

// Keys as Key takes them.
enum class MslKey { Up, Down, PageUp, PageDown, Home, End, Left, Right, Enter, Space, SelectAll };

enum class MslChange {
    Size,      // everything: rows and columns
    Columns,   // widths or headers
    Inserted,  // rows first to first + count - 1 are new
    Removed,   // so many rows are gone from first on
    Order,     // the rows were sorted
    Repaint,   // rows first to first + count - 1 look different
    Selection,
    Scroll,  // the first pixel shown
    Footer
};

class MScrollList {
  public:
    static constexpr int noRow = -1, severalRows = -2;

    MScrollList() = default;
    ~MScrollList();
    MScrollList(const MScrollList&) = delete;
    MScrollList& operator=(const MScrollList&) = delete;

    // Callbacks, each of which may be empty. Those that tell of the user may destroy the list.
    std::function<void(MslChange, int first, int count)> changed;   // for the view
    std::function<void(MslChange, int first, int count)> observed;  // for the one who holds the list
    std::function<void(int row, int column, int clicks)> clicked;   // row -1 below the last row
    std::function<void(int row, int column)> rightClicked;          // row -1 as well
    std::function<bool(int row)> activated;      // a double click or Enter; false when that means nothing
    std::function<void()> userSelected;          // the user changed the selection
    std::function<bool(int row)> toggleTree;     // expands or collapses a tree's row; false without a toggle
    std::function<std::string(int row)> tip;     // shown while the pointer rests on the row; empty for none
    std::function<void(int width)> viewResized;  // pixels that the view has for columns
    std::function<void(std::span<const std::byte> data)> releaseData;  // a row's user data goes
    // Draws a cell of a column that is owner-drawn, on its ground, in the rectangle x, y, w, h of the
    // surface, to which it is clipped.
    std::function<void(Surface&, int x, int y, int w, int h, int row, int column, bool selected)> drawCell;
    bool sortByHeader = true;  // a click on a header sorts; not in a tree
    int treeColumn = 0;        // where a tree's toggles stand
    int nameColumn = 0;        // searched by typing while the list isn't sorted

    // Size. Drops all texts, looks and user data; the columns that remain stay as they are, header too. False
    // while row changes are blocked, as for all that adds, removes or moves rows.
    bool SetSize(int rows, int columns);
    int RowCount() const { return static_cast<int>(lazy_ ? order_.size() : rows_.size()); }
    int ColumnCount() const { return static_cast<int>(columns_.size()); }
    // The columns alone; rows stay, less what stood in columns that go.
    void SetColumnCount(int columns);
    // Lazy rows in place of the present ones, in the order of the ids, which are positions in the owner's
    // data; or with the ids from 0 to count - 1. A text, look, height or data set by hand goes before what
    // the owner tells, and goes with its row. False while row changes are blocked.
    bool SetLazyRows(MslLazyRows owner, std::vector<uint32_t> ids);
    bool SetLazyRows(MslLazyRows owner, int count);
    bool IsLazy() const { return lazy_ != nullptr; }
    // New rows ahead of the row at (the count of rows for the end). Not in a lazy list.
    bool InsertRows(int at, int count);
    bool RemoveRows(int first, int count);
    // While blocked rows stay as they are in number and order. Calls nest.
    void BlockRowChanges(bool block) { blocked_ += block ? 1 : -1; }

    // Texts.
    void SetText(int row, int column, std::string text);
    std::string Text(int row, int column) const;
    // Texts for the rows from the first on, no more than there are rows.
    void SetColumnTexts(int column, const std::vector<std::string>& texts);

    // User data: a copy of any block of bytes, freed with the row; an empty span frees it at once.
    void SetRowData(int row, std::span<const std::byte> data);
    std::span<const std::byte> RowData(int row) const;

    // What ties a row to its object: the id of a lazy row, or what was set, 0 at first.
    uint64_t RowId(int row) const;
    void SetRowId(int row, uint64_t id);
    int RowOfId(uint64_t id) const;  // the first; noRow when there is none

    // Columns.
    const MslColumn& Column(int column) const { return columns_.at(static_cast<size_t>(column)); }
    void SetWidth(int column, int width);
    void SetColumnFlags(int column, uint32_t flags);
    // Header cells of new rows read "Column %d Title".
    void SetHeaderRows(int count);
    void SetHeader(int headerRow, int column, std::string text);
    // Makes the columns up to toColumn as wide as their widest header and text of the rows from fromRow on;
    // -1 for all. The measuring function must be set. Of very many rows a few thousand are measured.
    void FitColumns(int fromRow = -1, int toColumn = -1);
    // What the widest of the column's header and texts from a row on needs; 0 while nothing measures.
    int FittedWidth(int column, int fromRow = 0) const;
    // The same for columns whose width nobody set; their widths stay unset.
    void FitUnsetColumns();
    void SetOwnerDrawn(int column, bool on);
    bool IsOwnerDrawn(int column) const;
    void SetRightAligned(int column, bool on);
    int HeaderRows() const { return headerRows_; }
    std::function<int(std::string_view text, bool heading)> measure;
    int cellMargin = 8;    // added to a fitted width
    int levelIndent = 12;  // of a tree's levels, in column 0

    // Sorting. The sort keeps the order of rows that compare equal; texts, looks, data, selection and height
    // move with a row.
    void SetComparison(int column, MslCompare compare, int flag = 0);
    void SetNumberKey(int column, MslNumberKey key);
    void SetUnsignedKey(int column, MslUnsignedKey key);
    bool SortBy(int column, bool descending = false);
    // A click on a header: sorts by the column, the other way round when it is sorted by it already. Nothing
    // without sortByHeader.
    bool SortClick(int column);
    // What the rows are sorted by; -1 for none, as after rows were set, inserted or changed their number.
    int SortColumn() const { return sortColumn_; }
    bool SortDescending() const { return sortDescending_; }

    // Looks.
    void SetCellAttribute(int row, int column, uint32_t attribute, uint32_t value);
    MslCellRecord Cell(int row, int column) const;
    uint32_t Toggle(int row, int column) const { return Cell(row, column).attributes & mslToggle; }
    void SetLevel(int row, int level);  // depth in a tree
    int Level(int row) const;
    void RepaintRow(int row) { Notify(MslChange::Repaint, row, 1); }
    // While held nothing is told to the view; at the end of it all is told as MslChange::Size. Calls nest.
    void HoldRepaint(bool hold);

    // Selection. With neither multiple nor mustSelect a list has one selected row or none.
    void SetMultiple(bool multiple);
    bool Multiple() const { return multiple_; }
    void SetMustSelect(bool must) { mustSelect_ = must; }
    bool MustSelect() const { return mustSelect_; }
    int SelectionCount() const { return selected_; }
    int SelectedRow() const;  // noRow, severalRows or the one
    std::vector<int> SelectedRows() const;
    bool IsSelected(int row) const;
    // Makes this the only selected row; a row that doesn't exist clears the selection.
    void SelectOnly(int row);
    // These rows and no others; only the first with single selection.
    void SelectRows(const std::vector<int>& rows);
    std::vector<uint64_t> SelectedIds() const;
    // Adds or takes away; in a list of single selection adding is SelectOnly.
    void Select(int row, bool on = true);
    void SelectAll();  // of no effect with single selection

    // A click as the view found it; row -1 below the last row. Plain selects the row alone, control turns it
    // over, shift selects from the row clicked last; then clicked is called. A double click has clicks 2.
    // A double click activates too.
    void Click(int row, int column, int clicks, bool control = false, bool shift = false);
    // The pointer, held since a click, came to the row: with multiple selection it selects up to here.
    void DragTo(int row);
    // A right click selects the row alone unless it is selected, and calls rightClicked.
    void RightClick(int row, int column);
    // A click on the toggle of a tree's row; the selection stays.
    bool ClickToggle(int row) { return HasRow(row) && toggleTree && toggleTree(row); }

    // The keyboard. Up, Down, PageUp, PageDown, Home and End move the current row and select it, with shift
    // up to it, with control without selecting it (the last two only with multiple selection). Left and Right
    // collapse and expand in a tree, or go to the parent or first child; elsewhere they move the current
    // column. Enter activates, Space is a click on the current cell. False for a key that means nothing here.
    bool Key(MslKey key, bool control = false, bool shift = false);
    int CurrentRow() const;  // noRow for none
    int CurrentColumn() const { return currentColumn_; }
    void SetCurrent(int row, int column);

    // Heights and the scroll position.
    void SetRowHeight(int height, bool redraw = true);  // the same for all rows
    void SetNaturalRowHeight(int height);               // the view's, for as long as nobody set one
    int RowHeight() const { return rowHeight_; }        // of rows with none of their own
    bool HasOwnHeights() const { return ownHeights_ > 0; }
    void SetHeightOf(int row, int height);
    int HeightOf(int row) const;
    int64_t TopOf(int row) const;    // of the row's first pixel, in all rows; of the end for RowCount
    int RowAt(int64_t y) const;      // noRow above the first and below the last row
    void SetViewHeight(int height);  // pixels of rows that the view shows
    int ViewHeight() const { return viewHeight_; }
    void ScrollTo(int64_t top);  // kept within the rows
    int64_t ViewTop() const { return viewTop_; }
    void ScrollToRow(int row);  // as little as needed to show it
    // Shows the rows first to last; when they don't all fit, first at the top.
    void ScrollToRows(int first, int last);

    // Type-ahead: from BeginSearch to EndSearch keys are searched for in the column, whose rows are taken to
    // be in order.
    void BeginSearch(int column);
    bool Searching() const { return searchColumn_ >= 0; }
    void SearchKey(std::string_view typed);
    void SearchBackspace();
    void EndSearch();
    // Typing in the list: begins a search in the column that the rows are sorted by, else the name column.
    void TypeAhead(std::string_view typed);
    int SearchAnchor() const { return searchAnchor_; }
    const std::string& Footer() const { return footer_; }

    // Expired once the list is gone, for a view that may outlive it.
    std::weak_ptr<bool> Alive() const { return alive_; }

    // The font's text metrics, and the query: 0, 1 or 2; others are told on the console and give 0.
    std::array<int, 3> metrics{};
    int mslMetric(int which) const;

  private:
    struct Row {
        std::vector<std::string> texts;  // short of the columns where nothing was set
        std::vector<MslCellRecord> cells;
        std::vector<std::byte> data;
        uint64_t id = 0;
        int height = 0;  // 0 for the common one
        int level = 0;
        bool selected = false;
    };

    bool HasRow(int row) const { return row >= 0 && row < RowCount(); }
    bool HasColumn(int column) const { return column >= 0 && column < ColumnCount(); }
    Row& At(int row);                // of a lazy row, what was set by hand, made when there is none
    const Row* Find(int row) const;  // null for a lazy row of which nothing was set
    void Mark(int row, bool selected);
    void SelectRange(int row, int other);
    void Told(uint64_t selectionBefore);
    void MoveTo(int row, bool control, bool shift);
    bool KeyAcross(MslKey key);
    int ParentOf(int row) const;
    void Notify(MslChange change, int first = 0, int count = 0);
    void Release(Row& row);
    void DropRows();
    void PlaceColumns();
    void RowsChanged();
    void ClearSelection();
    void ShowSearch();
    int BestMatch() const;
    int BestOfSorted() const;
    std::vector<uint32_t> Sorted(int column, bool descending) const;

    std::vector<Row> rows_;
    std::unique_ptr<MslLazyRows> lazy_;  // set in a lazy list, which has the next three in place of rows_
    std::vector<uint32_t> order_;        // ids
    std::vector<bool> lazySelected_;     // by id
    std::unordered_map<uint32_t, Row> byHand_;  // by id
    std::vector<MslColumn> columns_;
    int headerRows_ = 1;
    int blocked_ = 0, held_ = 0;
    bool changedWhileHeld_ = false;
    bool multiple_ = false, mustSelect_ = false;
    int selected_ = 0;
    uint64_t selectionVersion_ = 0;  // grows with each change of the selection
    int clickAnchor_ = noRow;
    int currentRow_ = noRow, currentColumn_ = 0;
    int sortColumn_ = -1;
    bool sortDescending_ = false;
    int rowHeight_ = 16;
    bool rowHeightSet_ = false;
    int ownHeights_ = 0;  // rows with a height of their own
    mutable std::vector<int64_t>
        tops_;  // of all rows and the end while some heights differ; empty when stale
    int viewHeight_ = 0;
    int64_t viewTop_ = 0;
    int searchColumn_ = -1, searchAnchor_ = noRow;
    std::string search_, footer_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};
