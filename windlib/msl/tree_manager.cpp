#include "windlib/msl/tree_manager.h"

#include <algorithm>
#include <utility>

#include "shared/libcxxutil/report.h"

MSLTreeNode& MSLTreeNode::AddChild(std::unique_ptr<MSLTreeNode> child) {
    child->_parent = this;
    childListKnown_ = true;
    children_.push_back(std::move(child));
    return *children_.back();
}

MSLTreeManager::MSLTreeManager(MScrollList& list, int toggleColumn)
    : list_(list), toggleColumn_(toggleColumn) {
    list_.SetSize(0, std::max(list_.ColumnCount(), toggleColumn + 1));
    list_.sortByHeader = false;
    list_.treeColumn = toggleColumn;
    list_.toggleTree = [this](int row) { return Toggle(row); };
}

MSLTreeManager::~MSLTreeManager() {
    if (!listAlive_.expired()) list_.toggleTree = {};
}

MSLTreeNode* MSLTreeManager::NodeAt(int row) const {
    return row >= 0 && static_cast<size_t>(row) < array_.size() ? array_[static_cast<size_t>(row)] : nullptr;
}

int MSLTreeManager::RowOf(const MSLTreeNode& node) const {
    const auto at = std::find(array_.begin(), array_.end(), &node);
    return at == array_.end() ? -1 : static_cast<int>(at - array_.begin());
}

bool MSLTreeManager::IsShown(const MSLTreeNode& node) const {
    for (const MSLTreeNode* above = node._parent; above; above = above->_parent)
        if (!above->_expanded) return false;
    return true;
}

uint32_t MSLTreeManager::ToggleOf(const MSLTreeNode& node) const {
    if (node.isChildListKnown() && node.isChildListEmpty()) return mslToggleNone;
    return node._expanded ? mslToggleOn : mslToggleOff;
}

void MSLTreeManager::ShowRow(int row) {
    MSLTreeNode& node = *array_[static_cast<size_t>(row)];
    int level = 0;
    for (const MSLTreeNode* above = node._parent; above; above = above->_parent) ++level;
    list_.SetLevel(row, level);
    list_.SetCellAttribute(row, toggleColumn_, mslToggle, ToggleOf(node));
    node.FillRow(list_, row);
}

// The node and what is shown below it, in the order of rows.
void MSLTreeManager::CollectVisible(MSLTreeNode& node, std::vector<MSLTreeNode*>& rows) const {
    rows.push_back(&node);
    if (!node._expanded) return;
    for (const auto& child : node.children_) CollectVisible(*child, rows);
}

// Puts the nodes below the node at row in, from its child skip on, behind what it shows already. The number
// of rows.
int MSLTreeManager::InsertBelow(int row, int skip) {
    const MSLTreeNode& node = *array_[static_cast<size_t>(row)];
    std::vector<MSLTreeNode*> rows;
    for (size_t i = static_cast<size_t>(skip); i < node.children_.size(); ++i)
        CollectVisible(*node.children_[i], rows);
    const int at = row + 1 + (skip == 0 ? 0 : VisibleBelow(row));
    array_.insert(array_.begin() + at, rows.begin(), rows.end());
    const int count = static_cast<int>(rows.size());
    list_.HoldRepaint(true);
    list_.InsertRows(at, count);
    for (int each = at; each < at + count; ++each) ShowRow(each);
    list_.HoldRepaint(false);
    return count;
}

// The number of rows that show what is below the node at row.
int MSLTreeManager::VisibleBelow(int row) const {
    const int level = list_.Level(row);
    int end = row + 1;
    while (end < list_.RowCount() && list_.Level(end) > level) ++end;
    return end - row - 1;
}

MSLTreeNode* MSLTreeManager::Add(std::unique_ptr<MSLTreeNode> node, MSLTreeNode* parent) {
    if (guard_ > 0 || !node) return nullptr;
    MSLTreeNode* added = node.get();
    if (!parent) {
        std::vector<MSLTreeNode*> rows;
        const int at = list_.RowCount();
        roots_.push_back(std::move(node));
        CollectVisible(*added, rows);
        if (!list_.InsertRows(at, static_cast<int>(rows.size()))) {
            roots_.pop_back();
            return nullptr;
        }
        array_.insert(array_.end(), rows.begin(), rows.end());
        for (int row = at; row < list_.RowCount(); ++row) ShowRow(row);
        return added;
    }
    const int before = static_cast<int>(parent->children_.size());
    parent->AddChild(std::move(node));
    const int row = RowOf(*parent);
    if (row < 0) return added;
    if (parent->_expanded) InsertBelow(row, before);
    list_.SetCellAttribute(row, toggleColumn_, mslToggle, ToggleOf(*parent));
    return added;
}

// Removes the rows below the one at row, or that one with them.
bool MSLTreeManager::RemoveBelow(int row, bool itself) {
    const int first = itself ? row : row + 1;
    const int count = VisibleBelow(row) + (itself ? 1 : 0);
    if (!list_.RemoveRows(first, count)) return false;
    array_.erase(array_.begin() + first, array_.begin() + first + count);
    return true;
}

bool MSLTreeManager::Remove(MSLTreeNode& node) {
    if (guard_ > 0) return false;
    const int row = RowOf(node);
    if (row >= 0 && !RemoveBelow(row, true)) return false;
    MSLTreeNode* parent = node._parent;
    std::erase_if(parent ? parent->children_ : roots_, [&](const auto& each) { return each.get() == &node; });
    const int above = parent ? RowOf(*parent) : -1;
    if (above >= 0) list_.SetCellAttribute(above, toggleColumn_, mslToggle, ToggleOf(*parent));
    return true;
}

bool MSLTreeManager::Clear() {
    if (guard_ > 0 || !list_.RemoveRows(0, list_.RowCount())) return false;
    array_.clear();
    roots_.clear();
    return true;
}

bool MSLTreeManager::Expand(MSLTreeNode& node, bool show) {
    MSLTreeNode* const p = &node;
    GEN_ASSERT(!p->_expanded);
    if (guard_ > 0) return false;
    if (!p->childListKnown_) {
        ++guard_;
        list_.BlockRowChanges(true);
        p->FetchChildren();
        list_.BlockRowChanges(false);
        --guard_;
    }
    p->childListKnown_ = p->_expanded = true;
    const int row = RowOf(node);
    if (row >= 0) list_.SetCellAttribute(row, toggleColumn_, mslToggle, ToggleOf(node));
    if (p->children_.empty()) {
        if (foundEmpty) foundEmpty(node);
        return true;
    }
    if (row < 0) return true;
    const int count = InsertBelow(row, 0);
    const bool fits =
        list_.TopOf(row + count) + list_.HeightOf(row + count) <= list_.ViewTop() + list_.ViewHeight();
    if (show && !fits) list_.ScrollToRows(row, row + count);
    return true;
}

bool MSLTreeManager::Collapse(MSLTreeNode& node) {
    MSLTreeNode* const p = &node;
    GEN_ASSERT(p->_expanded);
    if (guard_ > 0) return false;
    const int row = RowOf(node);
    if (row >= 0) {
        const int before = list_.SelectionCount();
        if (!RemoveBelow(row, false)) return false;
        const bool lost = list_.SelectionCount() < before;
        if (lost || (list_.MustSelect() && list_.SelectionCount() == 0)) list_.Select(row);
    }
    p->_expanded = false;
    if (row >= 0) list_.SetCellAttribute(row, toggleColumn_, mslToggle, ToggleOf(node));
    return true;
}

bool MSLTreeManager::Toggle(int row) {
    MSLTreeNode* node = NodeAt(row);
    const uint32_t toggle = node ? list_.Toggle(row, toggleColumn_) : mslToggleNone;
    if (toggle == mslToggleNone) return false;
    return toggle == mslToggleOn ? Collapse(*node) : Expand(*node, true);
}

void MSLTreeManager::ExpandAll() {
    // Rows grow while they are walked, and each is seen.
    list_.HoldRepaint(true);
    for (int row = 0; row < list_.RowCount(); ++row) {
        MSLTreeNode& node = *array_[static_cast<size_t>(row)];
        if (!node._expanded && node.childListKnown_ && !node.children_.empty() && !Expand(node)) break;
    }
    list_.HoldRepaint(false);
}

void MSLTreeManager::Refill(MSLTreeNode& node) {
    if (const int row = RowOf(node); row >= 0) ShowRow(row);
}

std::string MSLTreeManager::Check() const {
    std::vector<MSLTreeNode*> rows;
    for (const auto& root : roots_) {
        if (root->_parent) return "!root->_parent";
        CollectVisible(*root, rows);
    }
    if (rows.size() != array_.size() || list_.RowCount() != static_cast<int>(array_.size()))
        return "treerows == mslrows";
    for (size_t i = 0; i < rows.size(); ++i) {
        const MSLTreeNode* here = rows[i];
        const int row = static_cast<int>(i);
        if (here != array_[i]) return "here == array[i]";
        for (const auto& p : here->children_)
            if (p->_parent != here) return "array[i]->_parent == p";
        const uint32_t toggle = list_.Toggle(row, toggleColumn_);
        if (toggle == mslToggleOn && (here->isChildListEmpty() || !here->isChildListKnown()))
            return "!here->isChildListEmpty () && here->isChildListKnown ()";
        if (toggle != ToggleOf(*here)) return "toggle == toggleOf (here)";
        if (!IsShown(*here)) return "here->_parent->_expanded";
    }
    return {};
}
