// Sorting and the type-ahead search of the list.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/msl/scroll_list.h"

namespace {

constexpr const char* searchText = "Srch: %s";
constexpr size_t searchReserve = 100;

template <class T>
int order(T a, T b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

bool take_minus(std::string_view& text) {
    text = text_trim(text);
    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+')) text.remove_prefix(1);
    return minus;
}

// What a text begins with, as C would read it; 0 for none, the largest number for one past 64 bits.
uint64_t leading_unsigned(std::string_view text) {
    const bool minus = take_minus(text);
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && text_lower(text[1]) == 'x') {
        base = 16;
        text.remove_prefix(2);
    } else if (text.size() > 1 && text[0] == '0') {
        base = 8;
    }
    uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error == std::errc::result_out_of_range) return UINT64_MAX;
    return minus ? 0 - value : value;
}

double leading_double(std::string_view text) {
    const bool minus = take_minus(text);
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    // No value may stand apart from the order of all others.
    if (std::isnan(value)) value = 0;
    return minus ? -value : value;
}

size_t common_length(std::string_view a, std::string_view b) {
    return static_cast<size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
}

// Rows by a number that is asked for once a row; rows of one number keep their order.
template <class Key>
std::vector<uint32_t> sorted_by_key(size_t count, bool reverse, const Key& keyOf) {
    using Value = decltype(keyOf(0));
    std::vector<std::pair<Value, uint32_t>> keys(count);
    for (size_t i = 0; i < count; ++i) keys[i] = {keyOf(static_cast<int>(i)), static_cast<uint32_t>(i)};
    std::stable_sort(keys.begin(), keys.end(), [reverse](const auto& a, const auto& b) {
        return reverse ? b.first < a.first : a.first < b.first;
    });
    std::vector<uint32_t> rows(count);
    for (size_t i = 0; i < count; ++i) rows[i] = keys[i].second;
    return rows;
}

}  // namespace

int msl_CompareText(const MScrollList&, std::string_view a, std::string_view b) {
    return a.compare(b);
}
int msl_CompareUnsigned(const MScrollList&, std::string_view a, std::string_view b) {
    return order(leading_unsigned(a), leading_unsigned(b));
}
int msl_CompareDouble(const MScrollList&, std::string_view a, std::string_view b) {
    return order(leading_double(a), leading_double(b));
}

void MScrollList::SetComparison(int column, MslCompare compare, int flag) {
    if (!HasColumn(column)) return;
    MslColumn& by = columns_[static_cast<size_t>(column)];
    by.compare = std::move(compare);
    by.compareFlag = flag;
    by.numberKey = {};
    by.unsignedKey = {};
}

void MScrollList::SetNumberKey(int column, MslNumberKey key) {
    if (HasColumn(column)) columns_[static_cast<size_t>(column)].numberKey = std::move(key);
}

void MScrollList::SetUnsignedKey(int column, MslUnsignedKey key) {
    if (HasColumn(column)) columns_[static_cast<size_t>(column)].unsignedKey = std::move(key);
}

// The present numbers of the rows in their new order.
std::vector<uint32_t> MScrollList::Sorted(int column, bool descending) const {
    const MslColumn& by = Column(column);
    const auto count = static_cast<size_t>(RowCount());
    const bool reverse = (by.compareFlag != 0) != descending;
    if (by.numberKey)
        return sorted_by_key(count, reverse, [&](int row) {
            const double key = by.numberKey(RowId(row));
            return std::isnan(key) ? -std::numeric_limits<double>::infinity() : key;
        });
    if (by.unsignedKey)
        return sorted_by_key(count, reverse, [&](int row) { return by.unsignedKey(RowId(row)); });
    std::vector<std::string> texts(count);
    for (size_t i = 0; i < count; ++i) texts[i] = Text(static_cast<int>(i), column);
    std::vector<uint32_t> rows(count);
    std::iota(rows.begin(), rows.end(), 0u);
    std::stable_sort(rows.begin(), rows.end(), [&](uint32_t a, uint32_t b) {
        const int result = by.compare ? by.compare(*this, texts[a], texts[b]) : texts[a].compare(texts[b]);
        return reverse ? result > 0 : result < 0;
    });
    return rows;
}

bool MScrollList::SortBy(int column, bool descending) {
    if (blocked_ > 0 || !HasColumn(column)) return false;
    const std::vector<uint32_t> from = Sorted(column, descending);
    const auto placeOf = [&](int row) {
        const auto at =
            HasRow(row) ? std::find(from.begin(), from.end(), static_cast<uint32_t>(row)) : from.end();
        return at == from.end() ? noRow : static_cast<int>(at - from.begin());
    };
    clickAnchor_ = placeOf(clickAnchor_);
    currentRow_ = placeOf(currentRow_);
    if (lazy_) {
        std::vector<uint32_t> sorted(from.size());
        for (size_t i = 0; i < from.size(); ++i) sorted[i] = order_[from[i]];
        order_ = std::move(sorted);
    } else {
        std::vector<Row> sorted;
        sorted.reserve(rows_.size());
        for (const uint32_t row : from) sorted.push_back(std::move(rows_[row]));
        rows_ = std::move(sorted);
    }
    sortColumn_ = column;
    sortDescending_ = descending;
    RowsChanged();
    Notify(MslChange::Order);
    return true;
}

bool MScrollList::SortClick(int column) {
    if (!sortByHeader) return false;
    return SortBy(column, column == sortColumn_ && !sortDescending_);
}

void MScrollList::BeginSearch(int column) {
    if (!HasColumn(column)) return;
    searchColumn_ = column;
    search_.clear();
    search_.reserve(searchReserve);
    const int64_t shown = std::min<int64_t>(viewHeight_, TopOf(RowCount()) - viewTop_);
    searchAnchor_ = RowAt(viewTop_ + std::max<int64_t>(shown, 0) / 2);
    ShowSearch();
}

// The row that equals the text, or the first of those that share most of its start; the anchor when none
// shares any.
int MScrollList::BestMatch() const {
    const MslColumn& by = Column(searchColumn_);
    const bool inOrder = sortColumn_ == searchColumn_ && !sortDescending_ && by.compareFlag == 0 &&
                         !by.compare && !by.numberKey && !by.unsignedKey;
    if (inOrder) return BestOfSorted();
    int best = searchAnchor_;
    size_t longest = 0;
    for (int row = 0; row < RowCount(); ++row) {
        const std::string text = Text(row, searchColumn_);
        // The end counts as one more character that agrees.
        const size_t length = text == search_ ? search_.size() + 1 : common_length(text, search_);
        if (length > search_.size()) return row;
        if (length <= longest) continue;
        longest = length;
        best = row;
    }
    return best;
}

// The same where the rows are known to be in the order of their bytes.
int MScrollList::BestOfSorted() const {
    const auto firstFrom = [&](std::string_view start) {
        int low = 0, high = RowCount();
        while (low < high) {
            const int middle = low + (high - low) / 2;
            if (std::string_view(Text(middle, searchColumn_)) < start)
                low = middle + 1;
            else
                high = middle;
        }
        return low;
    };
    const int at = firstFrom(search_);
    if (HasRow(at) && Text(at, searchColumn_) == search_) return at;
    size_t longest = 0;
    for (const int row : {at - 1, at})
        if (HasRow(row)) longest = std::max(longest, common_length(Text(row, searchColumn_), search_));
    if (longest == 0) return searchAnchor_;
    return firstFrom(std::string_view(search_).substr(0, longest));
}

void MScrollList::ShowSearch() {
    footer_ = Searching() ? gen_format(searchText, search_.c_str()) : std::string{};
    Notify(MslChange::Footer);
}

void MScrollList::SearchKey(std::string_view typed) {
    if (!Searching()) return;
    search_.append(typed);
    ShowSearch();
    const int row = BestMatch();
    if (!HasRow(row)) return;
    const uint64_t before = selectionVersion_;
    SelectOnly(row);
    currentRow_ = clickAnchor_ = row;
    ScrollToRow(row);
    Told(before);
}

void MScrollList::TypeAhead(std::string_view typed) {
    if (!Searching()) BeginSearch(sortColumn_ >= 0 ? sortColumn_ : nameColumn);
    SearchKey(typed);
}

// A whole character of UTF-8 goes.
void MScrollList::SearchBackspace() {
    while (!search_.empty() && (static_cast<unsigned char>(search_.back()) & 0xC0) == 0x80)
        search_.pop_back();
    if (!search_.empty()) search_.pop_back();
    SearchKey({});
}

void MScrollList::EndSearch() {
    if (!Searching()) return;
    searchColumn_ = -1;
    search_.clear();
    ShowSearch();
}
