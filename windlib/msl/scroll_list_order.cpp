// Sorting and the type-ahead search of the list.
#include <algorithm>
#include <charconv>
#include <cmath>
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
    columns_[static_cast<size_t>(column)].compare = std::move(compare);
    columns_[static_cast<size_t>(column)].compareFlag = flag;
}

bool MScrollList::SortBy(int column) {
    if (blocked_ > 0 || !HasColumn(column)) return false;
    const MslCompare compare = Column(column).compare ? Column(column).compare : msl_CompareText;
    const bool reverse = Column(column).compareFlag != 0;
    std::vector<int> from(rows_.size());
    std::iota(from.begin(), from.end(), 0);
    std::stable_sort(from.begin(), from.end(), [&](int a, int b) {
        const int result = compare(*this, Text(a, column), Text(b, column));
        return reverse ? result > 0 : result < 0;
    });
    std::vector<Row> sorted;
    sorted.reserve(rows_.size());
    int anchor = noRow;
    for (const int row : from) {
        if (row == clickAnchor_) anchor = static_cast<int>(sorted.size());
        sorted.push_back(std::move(At(row)));
    }
    rows_ = std::move(sorted);
    clickAnchor_ = anchor;
    RowsChanged();
    Notify(MslChange::Order);
    return true;
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
    int best = searchAnchor_;
    size_t longest = 0;
    for (int row = 0; row < RowCount(); ++row) {
        const std::string& text = Text(row, searchColumn_);
        // The end counts as one more character that agrees.
        const size_t length = text == search_ ? search_.size() + 1 : common_length(text, search_);
        if (length > search_.size()) return row;
        if (length <= longest) continue;
        longest = length;
        best = row;
    }
    return best;
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
    SelectOnly(row);
    ScrollToRow(row);
}

// A whole character of UTF-8 goes.
void MScrollList::SearchBackspace() {
    while (!search_.empty() && (static_cast<unsigned char>(search_.back()) & 0xC0) == 0x80)
        search_.pop_back();
    if (!search_.empty()) search_.pop_back();
    SearchKey({});
}

void MScrollList::EndSearch() {
    searchColumn_ = -1;
    search_.clear();
    ShowSearch();
}
