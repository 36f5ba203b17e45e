#include "windlib/msl/object_list.h"

#include <algorithm>
#include <unordered_set>

MslObjectList::MslObjectList() {
    list_.SetSize(0, 1);
    list_.SetHeaderRows(0);
    list_.SetMultiple(true);
    list_.sortByHeader = false;
    list_.toggleTree = [this](int row) {
        MslObjectEntry* entry = EntryAt(row);
        if (!entry || !SetCollapsed(*entry, !entry->collapsed)) return false;
        RowChanged(*entry);
        return true;
    };
    list_.tip = [this](int row) {
        const MslObjectEntry* entry = EntryAt(row);
        return entry ? RowTip(*entry) : std::string();
    };
    list_.observed = [this](MslChange change, int, int) {
        if (filling_) return;
        if (change == MslChange::Selection) RememberSelection();
        if (changed) changed(change);
    };
}

MslObjectEntry* MslObjectList::EntryAt(int row) const {
    return row >= 0 && static_cast<size_t>(row) < rows_.size() ? rows_[static_cast<size_t>(row)] : nullptr;
}

bool MslObjectList::HasChildren(const MslObjectEntry& entry) const {
    return std::any_of(entry.children.begin(), entry.children.end(),
                       [](const auto& child) { return !child->hidden; });
}

bool MslObjectList::SetCollapsed(MslObjectEntry& entry, bool collapsed) {
    if (entry.collapsed == collapsed || !HasChildren(entry)) return false;
    entry.collapsed = collapsed;
    if (collapsed) SelectionToGroup(entry);
    Collapsed(entry);
    NumberRows();
    return true;
}

// What is selected below a group that closes is no more; the group is in its place.
void MslObjectList::SelectionToGroup(const MslObjectEntry& group) {
    const auto below = [&](const MslObjectEntry* entry) {
        while (entry && entry != &group) entry = entry->parent;
        return entry == &group;
    };
    bool any = false;
    for (const MslObjectEntry* entry : SelectedEntries()) {
        if (entry == &group || !below(entry)) continue;
        std::erase(selectedKeys_, EntryKey(*entry));
        any = true;
    }
    if (any || (list_.MustSelect() && selectedKeys_.empty())) selectedKeys_.push_back(EntryKey(group));
    const MslObjectEntry* current = EntryAt(list_.CurrentRow());
    if (current && below(current)) currentKey_ = EntryKey(group);
}

std::vector<MslObjectEntry*> MslObjectList::SelectedEntries() const {
    std::vector<MslObjectEntry*> entries;
    for (const int row : list_.SelectedRows())
        if (MslObjectEntry* entry = EntryAt(row)) entries.push_back(entry);
    return entries;
}

std::string MslObjectList::RowText(const MslObjectEntry& entry, int column) const {
    return column == 0 ? entry.name : std::string();
}

MslCellRecord MslObjectList::CellOf(uint32_t row) const {
    const MslObjectEntry& entry = *rows_[row];
    MslCellRecord cell;
    if (HasChildren(entry)) cell.attributes = entry.collapsed ? mslToggleOff : mslToggleOn;
    if (const Colour ground = RowColour(entry); ground != NoColour) {
        cell.attributes |= mslBackground;
        cell.background = ground;
    }
    return cell;
}

void MslObjectList::RememberSelection() {
    selectedKeys_.clear();
    for (const MslObjectEntry* entry : SelectedEntries()) selectedKeys_.push_back(EntryKey(*entry));
    const MslObjectEntry* current = EntryAt(list_.CurrentRow());
    currentKey_ = current ? EntryKey(*current) : std::string();
}

void MslObjectList::ShowRows() {
    const int64_t top = list_.ViewTop();
    filling_ = true;
    list_.SetLazyRows({[this](uint32_t row, int column) { return RowText(*rows_[row], column); },
                       [this](uint32_t row, int) { return CellOf(row); },
                       [this](uint32_t row) { return rows_[row]->depth; }},
                      static_cast<int>(rows_.size()));
    list_.ScrollTo(top);
    if (!selectedKeys_.empty() || !currentKey_.empty()) {
        const std::unordered_set<std::string> keys(selectedKeys_.begin(), selectedKeys_.end());
        std::vector<int> selected;
        for (const MslObjectEntry* entry : rows_) {
            const std::string key = EntryKey(*entry);
            if (keys.count(key) > 0) selected.push_back(entry->row);
            if (key == currentKey_) list_.SetCurrent(entry->row, 0);
        }
        list_.SelectRows(selected);
    }
    filling_ = false;
    if (changed) changed(MslChange::Size);
}

// Unless they are forgotten, the keys stay for the rows that come.
void MslObjectList::DropRows(bool forgetSelection) {
    filling_ = true;
    rows_.clear();
    list_.SetSize(0, 1);
    filling_ = false;
    if (!forgetSelection) return;
    selectedKeys_.clear();
    currentKey_.clear();
}
