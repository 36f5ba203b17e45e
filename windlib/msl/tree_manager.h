// Turns a list into a tree: nodes with children that may be fetched when first looked at, of which those
// whose ancestors are all expanded are rows of the list.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "windlib/msl/scroll_list.h"

class MSLTreeManager;

// A node; what the tree is of derives from it. Children belong to their parent, roots to the manager.
class MSLTreeNode {
  public:
    explicit MSLTreeNode(bool childListKnown = false) : childListKnown_(childListKnown) {}
    virtual ~MSLTreeNode() = default;
    MSLTreeNode(const MSLTreeNode&) = delete;
    MSLTreeNode& operator=(const MSLTreeNode&) = delete;

    // Makes the children with AddChild; called once, before the node is first expanded, when the list of
    // children isn't known. Rows of the list can't change meanwhile.
    virtual void FetchChildren() {}
    // Sets the texts and looks of the node's row, but for the toggle and the level.
    virtual void FillRow(MScrollList& list, int row) = 0;

    // For a node that is in no list yet, and in FetchChildren; otherwise MSLTreeManager::Add.
    MSLTreeNode& AddChild(std::unique_ptr<MSLTreeNode> child);

    MSLTreeNode* Parent() const { return _parent; }
    const std::vector<std::unique_ptr<MSLTreeNode>>& Children() const { return children_; }
    bool IsExpanded() const { return _expanded; }
    bool isChildListKnown() const { return childListKnown_; }
    bool isChildListEmpty() const { return children_.empty(); }

  private:
    friend class MSLTreeManager;
    bool _expanded = false;
    bool childListKnown_;
    MSLTreeNode* _parent = nullptr;
    std::vector<std::unique_ptr<MSLTreeNode>> children_;
};

class MSLTreeManager {
  public:
    // The list, of which nothing is asked once it is gone, is emptied; from now on only the manager adds and
    // removes rows, and it isn't to be sorted. The toggles stand in the column.
    explicit MSLTreeManager(MScrollList& list, int toggleColumn = 0);
    ~MSLTreeManager();
    MSLTreeManager(const MSLTreeManager&) = delete;
    MSLTreeManager& operator=(const MSLTreeManager&) = delete;

    // Told of a node that was expanded and found to have no children; may be empty.
    std::function<void(MSLTreeNode&)> foundEmpty;

    // Adds a node with what is below it, at the end of the children of parent (of the roots for null). Null
    // when rows can't change.
    MSLTreeNode* Add(std::unique_ptr<MSLTreeNode> node, MSLTreeNode* parent = nullptr);
    // Removes a node with all below it. False when rows can't change.
    bool Remove(MSLTreeNode& node);
    bool Clear();
    const std::vector<std::unique_ptr<MSLTreeNode>>& Roots() const { return roots_; }

    MSLTreeNode* NodeAt(int row) const;        // null for no such row
    int RowOf(const MSLTreeNode& node) const;  // -1 for a node that isn't shown

    // Expand a node that isn't expanded; it need not be shown. With show the list scrolls to the new rows.
    // False when rows can't change.
    bool Expand(MSLTreeNode& node, bool show = false);
    // Collapse one that is expanded. The nodes below keep their state.
    bool Collapse(MSLTreeNode& node);
    // What a click on the toggle does; false for a row with no toggle.
    bool Toggle(int row);
    // Expands all nodes whose children are known.
    void ExpandAll();

    // Texts and looks of a node's row again, if it has one.
    void Refill(MSLTreeNode& node);

    // Walks all nodes; the first invariant that doesn't hold, as an expression, or empty.
    [[nodiscard]] std::string Check() const;

  private:
    void CollectVisible(MSLTreeNode& node, std::vector<MSLTreeNode*>& rows) const;
    int VisibleBelow(int row) const;
    bool IsShown(const MSLTreeNode& node) const;
    int InsertBelow(int row, int skip);
    void ShowRow(int row);
    uint32_t ToggleOf(const MSLTreeNode& node) const;
    bool RemoveBelow(int row, bool itself);

    MScrollList& list_;
    std::weak_ptr<bool> listAlive_ = list_.Alive();
    int toggleColumn_;
    int guard_ = 0;  // a fetch is going on
    std::vector<std::unique_ptr<MSLTreeNode>> roots_;
    std::vector<MSLTreeNode*> array_;  // the node of each row
};
