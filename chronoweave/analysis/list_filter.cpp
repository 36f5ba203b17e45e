#include "chronoweave/analysis/list_filter.h"

#include <algorithm>

#include "chronoweave/engine/find.h"
#include "shared/libcxxutil/text.h"

namespace {

std::string lowered(std::string_view text) {
    std::string low(text);
    for (char& c : low) c = text_lower(c);
    return low;
}

bool fits(const DialogRow& row, const std::string& word) {
    return std::any_of(row.cells.begin(), row.cells.end(),
                       [&](const std::string& cell) { return find_Fits(word, lowered(cell)); });
}

}  // namespace

bool filter_Fits(const DialogRow& row, std::string_view typed) {
    const std::string word = lowered(text_trim(typed));
    return word.empty() || fits(row, word);
}

ListFilters::ListFilters(DialogModel& model, const std::vector<std::string>& lists) : model_(model) {
    for (const std::string& list : lists) lists_.push_back({list, model.item(list).rows});
    model.onEdit = [this](const std::string& name, const std::string& text) {
        for (const Filtered& filtered : lists_)
            if (name == "f_" + filtered.list) Filter(filtered, text);
    };
}

void ListFilters::Filter(const Filtered& filtered, const std::string& typed) {
    const std::string word = lowered(text_trim(typed));
    std::vector<DialogRow> left;
    for (const DialogRow& row : filtered.rows)
        if (word.empty() || fits(row, word)) left.push_back(row);
    const std::vector<uint64_t> chosen = model_.selectedIds(filtered.list);
    const bool one = left.size() == 1;
    const uint64_t only = one ? left.front().id : 0;
    model_.setRows(filtered.list, std::move(left));
    model_.setSelectedIds(filtered.list, one ? std::vector<uint64_t>{only} : chosen);
    MScrollList& list = model_.list(filtered.list);
    if (list.SelectionCount() == 0 && list.MustSelect() && list.RowCount() > 0) list.SelectOnly(0);
}
