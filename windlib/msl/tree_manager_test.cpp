#include "windlib/msl/tree_manager.h"

#include <gtest/gtest.h>

#include "windlib/msl/toggle_handler.h"

namespace {

// Fetches one child per letter of what it is given.
struct Node : MSLTreeNode {
    Node(std::string name, std::string fetched = {}, bool known = false)
        : MSLTreeNode(known), text(std::move(name)), toFetch(std::move(fetched)) {}
    void FetchChildren() override {
        ++fetches;
        for (const char c : toFetch) AddChild(std::make_unique<Node>(text + c, "", true));
        if (onFetch) onFetch();
    }
    void FillRow(MScrollList& list, int row) override { list.SetText(row, 0, text); }
    std::string text, toFetch;
    int fetches = 0;
    std::function<void()> onFetch;
};

class Tree : public ::testing::Test {
  protected:
    void SetUp() override {
        list_.SetRowHeight(10);
        list_.SetViewHeight(40);
    }
    void TearDown() override { EXPECT_EQ(tree_.Check(), ""); }
    Node& Root(const std::string& name, const std::string& fetched = {}, bool known = false) {
        return static_cast<Node&>(*tree_.Add(std::make_unique<Node>(name, fetched, known)));
    }
    // The rows: level, toggle and text of each.
    std::string Rows() const {
        std::string rows;
        for (int row = 0; row < list_.RowCount(); ++row)
            rows += std::string(static_cast<size_t>(list_.Level(row)), '.') + " +-"[list_.Toggle(row, 0)] +
                    list_.Text(row, 0) + " ";
        return rows;
    }
    MScrollList list_;
    MSLTreeManager tree_{list_};
};

TEST_F(Tree, ExpandsAndCollapsesAndFetchesOnce) {
    Node& a = Root("a", "xy");
    Root("b", "", true);
    EXPECT_EQ(Rows(), "+a  b ");
    EXPECT_TRUE(tree_.Expand(a));
    EXPECT_EQ(Rows(), "-a . ax . ay  b ");
    tree_.Add(std::make_unique<Node>("c", "z"), a.Children()[0].get());
    EXPECT_EQ(Rows(), "-a .+ax . ay  b ");
    EXPECT_TRUE(tree_.Toggle(1));
    EXPECT_TRUE(tree_.Toggle(2));
    EXPECT_EQ(Rows(), "-a .-ax ..-c ... cz . ay  b ");
    EXPECT_EQ(msl_TreePicture(list_.Toggle(0, 0)), "minus9");
    EXPECT_EQ(tree_.Check(), "");
    // What is below keeps its state.
    EXPECT_TRUE(tree_.Collapse(a));
    EXPECT_EQ(Rows(), "+a  b ");
    EXPECT_EQ(msl_TreePicture(list_.Toggle(0, 0)), "plus9");
    EXPECT_TRUE(tree_.Expand(a));
    EXPECT_EQ(Rows(), "-a .-ax ..-c ... cz . ay  b ");
    EXPECT_EQ(a.fetches, 1);
    EXPECT_FALSE(tree_.Toggle(5));
    EXPECT_FALSE(tree_.Toggle(6));
}

TEST_F(Tree, ANodeFoundEmptyLosesItsToggleAndGetsItBackWithAChild) {
    Node& a = Root("a");
    MSLTreeNode* told = nullptr;
    tree_.foundEmpty = [&](MSLTreeNode& node) { told = &node; };
    EXPECT_EQ(Rows(), "+a ");
    EXPECT_TRUE(tree_.Expand(a));
    EXPECT_EQ(Rows(), " a ");
    EXPECT_EQ(told, &a);
    MSLTreeNode* child = tree_.Add(std::make_unique<Node>("n", "", true), &a);
    EXPECT_EQ(Rows(), "-a . n ");
    EXPECT_EQ(tree_.Check(), "");
    EXPECT_TRUE(tree_.Remove(*child));
    EXPECT_EQ(Rows(), " a ");
    EXPECT_TRUE(tree_.Collapse(a));
    EXPECT_EQ(Rows(), " a ");
}

TEST_F(Tree, RowsDoNotChangeDuringAFetch) {
    Node& a = Root("a", "x");
    Node& b = Root("b", "y");
    a.onFetch = [&] {
        EXPECT_FALSE(tree_.Expand(b));
        EXPECT_FALSE(tree_.Remove(b));
        EXPECT_FALSE(tree_.Clear());
        EXPECT_EQ(tree_.Add(std::make_unique<Node>("c")), nullptr);
        EXPECT_FALSE(list_.InsertRows(0, 1) || list_.SetSize(0, 1) || list_.SortBy(0));
    };
    EXPECT_TRUE(tree_.Expand(a));
    EXPECT_EQ(Rows(), "-a . ax +b ");
    EXPECT_TRUE(tree_.Expand(b));
}

TEST_F(Tree, TheSelectionGoesToTheCollapsedRow) {
    const struct {
        int selected;
        bool must;
        int after;
    } cases[] = {{2, false, 0}, {3, false, 1}, {0, false, 0}, {-1, false, -1}, {-1, true, 0}};
    for (const auto& each : cases) {
        ASSERT_TRUE(tree_.Clear());
        Node& a = Root("a", "xy");
        Root("b", "", true);
        tree_.Expand(a);
        list_.SetMustSelect(each.must);
        list_.SelectOnly(each.selected);
        tree_.Collapse(a);
        EXPECT_EQ(list_.SelectedRow(), each.after) << each.selected;
    }
}

TEST_F(Tree, ScrollsToWhatWasExpandedWhenAsked) {
    const struct {
        int before;  // rows ahead
        const char* children;
        bool show;
        int64_t top;
    } cases[] = {{0, "xyz", true, 0},      // fits
                 {2, "xyz", true, 20},     // all come into view
                 {2, "xyzuvw", true, 20},  // not all fit: the row goes first
                 {2, "xyz", false, 0},
                 {3, "x", true, 10}};
    for (const auto& each : cases) {
        ASSERT_TRUE(tree_.Clear());
        for (int i = 0; i < each.before; ++i) Root("r", "", true);
        Node& a = Root("a", each.children);
        for (int i = 0; i < 9; ++i) Root("s", "", true);
        tree_.Expand(a, each.show);
        EXPECT_EQ(list_.ViewTop(), each.top) << each.before << each.children;
    }
}

TEST_F(Tree, ExpandsAllThatIsKnown) {
    auto group = std::make_unique<Node>("g", "", true);
    group->AddChild(std::make_unique<Node>("h", "", true)).AddChild(std::make_unique<Node>("i", "", true));
    group->AddChild(std::make_unique<Node>("j", "unknown"));
    tree_.Add(std::move(group));
    EXPECT_EQ(Rows(), "+g ");
    tree_.ExpandAll();
    EXPECT_EQ(Rows(), "-g .-h .. i .+j ");
    static_cast<Node&>(*tree_.NodeAt(2)).text = "new";
    tree_.Refill(*tree_.NodeAt(2));
    EXPECT_EQ(list_.Text(2, 0), "new");
    EXPECT_EQ(tree_.Check(), "");
    list_.RemoveRows(3, 1);  // behind the manager's back
    EXPECT_EQ(tree_.Check(), "treerows == mslrows");
    list_.InsertRows(3, 1);
    list_.SetCellAttribute(3, 0, mslToggle, mslToggleOff);
}

}  // namespace
