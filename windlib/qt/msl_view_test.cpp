// Lists on the offscreen platform: what the user's hand does to the list, and what is seen of it.
#include "windlib/qt/msl_view.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QScrollBar>

#include "windlib/lagraph/surface.h"
#include "windlib/msl/toggle_handler.h"
#include "windlib/msl/tree_manager.h"
#include "windlib/qt/application_testing.h"

namespace {

class ListView : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
    }
    // A page of rows is shown.
    void show() {
        view.resize(400, 300);
        view.show();
        view.activateWindow();
        view.setFocus();
        QApplication::processEvents();
    }
    void fill(const std::vector<std::string>& names) {
        list.SetSize(static_cast<int>(names.size()), 2);
        list.SetColumnTexts(0, names);
    }
    QPoint at(int row, int column, int x = -1) {
        const QRect cell = view.visualRect(view.model()->index(row, column));
        return {x < 0 ? cell.center().x() : cell.left() + x, cell.center().y()};
    }
    void header(int column) {
        QHeaderView& bar = *view.horizontalHeader();
        const QPoint in(bar.sectionViewportPosition(column) + bar.sectionSize(column) / 2, bar.height() / 2);
        testing_Click(*bar.viewport(), in);
    }
    QString cell(int row, int column) { return view.model()->index(row, column).data().toString(); }
    QColor pixel(QPoint place) { return view.viewport()->grab().toImage().pixelColor(place); }

    MScrollList list;
    MslView view{list};
};

TEST_F(ListView, AMillionLazyRowsSortInTheViewAndOnlyShownOnesAreAsked) {
    constexpr int count = 1000000;
    int asked = 0;
    const auto key = [](uint64_t id) { return static_cast<double>((id * 7919) % count); };
    list.SetSize(0, 2);
    list.SetLazyRows({[&](uint32_t id, int column) {
                          ++asked;
                          return column == 0 ? std::to_string(id) : std::to_string(key(id));
                      },
                      {},
                      {}},
                     count);
    list.SetNumberKey(1, key);
    list.SetWidth(0, 100);
    list.SetWidth(1, 100);
    show();
    view.viewport()->grab();
    EXPECT_LT(asked, 2000);
    asked = 0;
    list.SelectOnly(1);  // key 7919
    header(1);
    EXPECT_EQ(list.RowId(0), 0u);
    EXPECT_EQ(key(list.RowId(count - 1)), count - 1);
    EXPECT_EQ(list.SelectedRows(), std::vector<int>{7919});
    EXPECT_EQ(view.horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    header(1);
    EXPECT_EQ(key(list.RowId(0)), count - 1);
    EXPECT_EQ(view.horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_EQ(list.SelectedIds(), std::vector<uint64_t>{1});
    testing_Key(view, Qt::Key_End);
    QApplication::processEvents();
    EXPECT_EQ(list.SelectedRow(), count - 1);
    EXPECT_EQ(view.rowAt(view.viewport()->height() - 2), count - 1);
    view.viewport()->grab();
    EXPECT_LT(asked, 2000);
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 2);
    EXPECT_EQ(list.RowAt(list.ViewTop()), view.rowAt(0));
    EXPECT_NEAR(view.rowAt(0), count / 2, 20);
}

struct Step {
    std::function<void()> act;
    std::vector<int> selected;
    const char* told;
};

TEST_F(ListView, TheHandSelectsInTheList) {
    fill({"a", "b", "c", "d", "e"});
    list.SetMultiple(true);
    std::string told;
    list.userSelected = [&] { told += "s"; };
    list.clicked = [&](int row, int column, int clicks) {
        told += std::to_string(row) + std::to_string(column) + std::to_string(clicks) + " ";
    };
    list.activated = [&](int row) { return told += "!" + std::to_string(row), true; };
    list.rightClicked = [&](int row, int column) {
        told += "m" + std::to_string(row) + std::to_string(column);
    };
    show();
    const auto context = [&](QPoint place) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, view.viewport()->mapToGlobal(place));
        QApplication::sendEvent(view.viewport(), &event);
    };
    QWidget& hand = *view.viewport();
    const QPoint below(50, 280);
    const Step steps[] = {
        {[&] { testing_Click(hand, at(1, 1)); }, {1}, "s111 "},
        {[&] { testing_Click(hand, at(3, 0), Qt::ShiftModifier); }, {1, 2, 3}, "s301 "},
        {[&] { testing_Click(hand, at(2, 0), Qt::ControlModifier); }, {1, 3}, "s201 "},
        {[&] { testing_Click(hand, below); }, {1, 3}, "-101 "},
        {[&] { context(at(3, 1)); }, {1, 3}, "m31"},
        {[&] { context(at(4, 0)); }, {4}, "sm40"},
        {[&] { context(below); }, {4}, "m-10"},
        {[&] { testing_Key(view, Qt::Key_Up); }, {3}, "s"},
        {[&] { testing_Key(view, Qt::Key_Home, {}, Qt::ShiftModifier); }, {0, 1, 2, 3}, "s"},
        {[&] { testing_Key(view, Qt::Key_Return); }, {0, 1, 2, 3}, "!0"},
        {[&] { testing_Key(view, Qt::Key_Down, {}, Qt::ControlModifier); }, {0, 1, 2, 3}, ""},
        {[&] { testing_Key(view, Qt::Key_Right); }, {0, 1, 2, 3}, ""},
        {[&] { testing_Key(view, Qt::Key_Space, " "); }, {1}, "s111 "},
        {[&] { testing_Key(view, Qt::Key_A, "\x01", Qt::ControlModifier); }, {0, 1, 2, 3, 4}, "s"},
        {[&] { testing_Mouse(hand, QEvent::MouseButtonDblClick, at(2, 0)); }, {2}, "s202 !2"},
        {[&] {
             testing_Mouse(hand, QEvent::MouseButtonPress, at(1, 0));
             testing_Mouse(hand, QEvent::MouseMove, at(2, 0));
             testing_Mouse(hand, QEvent::MouseMove, below + QPoint(0, 999));
             testing_Mouse(hand, QEvent::MouseButtonRelease, below);
         },
         {1, 2, 3, 4},
         "s101 ss"},
        {[&] {  // as an assistive program does
             view.selectionModel()->select(view.model()->index(2, 0),
                                           QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
         },
         {2},
         "s"},
    };
    for (const Step& step : steps) {
        step.act();
        QApplication::processEvents();
        EXPECT_EQ(list.SelectedRows(), step.selected) << &step - steps;
        EXPECT_EQ(std::exchange(told, ""), step.told) << &step - steps;
    }
}

TEST_F(ListView, WhatTheProgramSelectsIsShownAndToldToNobody) {
    fill({"a", "b", "c", "d", "e"});
    list.SetMultiple(true);
    list.SelectOnly(2);
    show();
    std::string told;
    list.userSelected = [&] { told += "s"; };
    list.SelectRows({0, 4});
    QApplication::processEvents();
    EXPECT_TRUE(view.selectionModel()->isRowSelected(4));
    EXPECT_FALSE(view.selectionModel()->isRowSelected(2));
    EXPECT_EQ(told, "");
    const QColor highlight = view.palette().color(QPalette::Highlight);
    EXPECT_EQ(pixel(at(4, 1)), highlight);
    EXPECT_NE(pixel(at(3, 1)), highlight);
}

TEST_F(ListView, TypingSearchesAndShowsWhatWasTyped) {
    fill({"pear", "plum", "apple", "peach"});
    show();
    header(0);
    std::string shown;
    for (const char c : std::string("pea")) testing_Key(view, c, QString(QLatin1Char(c)));
    EXPECT_EQ(list.Text(list.SelectedRow(), 0), "peach");
    const auto* label = view.findChild<QLabel*>("Search");
    EXPECT_TRUE(label->isVisible());
    EXPECT_EQ(label->text(), "Srch: pea");
    testing_Key(view, Qt::Key_R, "r");
    EXPECT_EQ(list.Text(list.SelectedRow(), 0), "pear");
    testing_Key(view, Qt::Key_Backspace, "\b");
    EXPECT_EQ(label->text(), "Srch: pea");
    testing_Key(view, Qt::Key_Escape, "\x1b");
    EXPECT_FALSE(label->isVisible() || list.Searching());
    // A capital letter comes behind the key that makes it one.
    testing_Key(view, Qt::Key_P, "p");
    for (const int key : {Qt::Key_Shift, Qt::Key_CapsLock}) testing_Key(view, key);
    EXPECT_EQ(label->text(), "Srch: p");
    testing_Key(view, Qt::Key_E, "E");
    EXPECT_EQ(label->text(), "Srch: pE");
    testing_Key(view, Qt::Key_Escape, "\x1b");
    view.footer = [&](const std::string& text) { return shown = text, true; };
    testing_Key(view, Qt::Key_P, "p");
    EXPECT_EQ(shown, "Srch: p");
    testing_Key(view, Qt::Key_Down);
    EXPECT_EQ(shown, "");
}

struct Leaf : MSLTreeNode {
    explicit Leaf(std::string name) : MSLTreeNode(true), text(std::move(name)) {}
    void FillRow(MScrollList& list, int row) override { list.SetText(row, 0, text); }
    std::string text;
};

TEST_F(ListView, TreesOpenByTheirMarkAndByKeys) {
    MSLTreeManager tree(list);
    auto root = std::make_unique<Leaf>("root");
    root->AddChild(std::make_unique<Leaf>("child")).AddChild(std::make_unique<Leaf>("grandchild"));
    tree.Add(std::move(root));
    show();
    testing_Click(*view.viewport(), at(0, 0, 8));
    EXPECT_EQ(list.RowCount(), 2);
    EXPECT_EQ(list.SelectedRow(), MScrollList::noRow);
    EXPECT_EQ(cell(1, 0), "child");
    testing_Click(*view.viewport(), at(1, 0));
    struct Step {
        int key, rows, selected;
    };
    for (const Step& step : {Step{Qt::Key_Right, 3, 1}, Step{Qt::Key_Right, 3, 2}, Step{Qt::Key_Left, 3, 1},
                             Step{Qt::Key_Left, 2, 1}, Step{Qt::Key_Left, 2, 0}, Step{Qt::Key_Left, 1, 0},
                             Step{Qt::Key_Left, 1, 0}}) {
        testing_Key(view, step.key);
        EXPECT_EQ(list.RowCount(), step.rows);
        EXPECT_EQ(list.SelectedRow(), step.selected);
    }
    header(0);
    EXPECT_EQ(list.SortColumn(), -1);  // a tree isn't sorted
    EXPECT_EQ(tree.Check(), "");
}

TEST_F(ListView, CellsShowTheirLooksInLightAndDark) {
    fill({"plain", "coloured", "heading", "tall"});
    list.SetCellAttribute(1, 0, mslBackground, 0x204060);
    list.SetCellAttribute(2, 0, mslHeading, 1);
    list.SetHeightOf(3, 60);
    ScrollDialogue_ToggleHandler marks(list, 1);
    marks.SetChecked(0, true);
    list.clicked = [&](int row, int column, int) { marks.Click(row, column); };
    std::vector<int> drawn;
    list.drawCell = [&](Surface& surface, int x, int y, int w, int h, int row, int, bool selected) {
        surface.fillRect(x - 50, y - 50, w + 100, h + 100, selected ? 0x00FF00 : 0xFF0000);
        drawn.push_back(row);
    };
    show();
    EXPECT_EQ(pixel(at(1, 0)), QColor(0x204060));
    EXPECT_EQ(view.rowHeight(3), 60);
    testing_Click(*view.viewport(), at(0, 1));
    EXPECT_EQ(list.Toggle(0, 1), mslToggleOff);
    QPalette dark = view.palette();
    dark.setColor(QPalette::Base, QColor(0x1E1E1E));
    dark.setColor(QPalette::Text, QColor(0xE0E0E0));
    view.setPalette(dark);
    EXPECT_EQ(pixel(at(3, 0)), QColor(0x1E1E1E));
    EXPECT_TRUE(drawn.empty());
    list.SetOwnerDrawn(1, true);
    EXPECT_EQ(pixel(at(0, 1)), QColor(0x00FF00));
    EXPECT_EQ(pixel(at(3, 1)), QColor(0xFF0000));
    EXPECT_EQ(pixel(at(1, 0)), QColor(0x204060));  // no cell draws over another
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), 3), 3);
}

TEST_F(ListView, ColumnsFitTheirTextsAndFollowTheHeader) {
    fill({"a text that is rather long for a column", "b"});
    list.SetHeaderRows(2);
    list.SetHeader(0, 0, "Object");
    list.SetHeader(1, 0, "Count");
    int told = 0;
    list.viewResized = [&](int width) { told = width; };
    show();
    EXPECT_EQ(view.model()->headerData(0, Qt::Horizontal).toString(), "Object\nCount");
    EXPECT_EQ(told, view.viewport()->width());
    EXPECT_GE(view.columnWidth(0), view.fontMetrics().horizontalAdvance(cell(0, 0)));
    EXPECT_EQ(view.columnWidth(0) + view.columnWidth(1), view.viewport()->width());
    view.horizontalHeader()->resizeSection(0, 55);  // the user drags
    EXPECT_EQ(list.Column(0).width, 55);
    EXPECT_EQ(view.columnWidth(1), view.viewport()->width() - 55);
    list.InsertRows(1, 1);
    list.SetText(1, 0, "between");
    EXPECT_EQ(cell(1, 0), "between");
    list.RemoveRows(0, 2);
    EXPECT_EQ(view.model()->rowCount(), 1);
    EXPECT_EQ(cell(0, 0), "b");
    list.SetColumnCount(1);
    EXPECT_EQ(view.model()->columnCount(), 1);
}

TEST_F(ListView, NumbersEndAtTheRightEdgeOfTheirColumn) {
    fill({"iii", "iii"});
    list.SetColumnTexts(1, {"iii", "iii"});
    for (const int column : {0, 1}) list.SetWidth(column, 120);
    QPalette colours = view.palette();
    colours.setColor(QPalette::Base, Qt::white);
    colours.setColor(QPalette::Text, Qt::black);
    view.setPalette(colours);
    show();
    list.SetRightAligned(1, true);
    // Where ink stands in a cell of the second row: its share of the width.
    const auto ink = [&](int column) {
        const QRect cell = view.visualRect(view.model()->index(1, column));
        const QImage shown = view.viewport()->grab(cell).toImage();
        double sum = 0, count = 0;
        for (int x = 0; x < shown.width(); ++x)
            for (int y = 2; y < shown.height() - 2; ++y)
                if (qGray(shown.pixel(x, y)) < 128) sum += x, ++count;
        return count > 0 ? sum / count / shown.width() : -1;
    };
    EXPECT_LT(ink(0), 0.3);
    EXPECT_GT(ink(1), 0.7);
    const auto side = [&](int column) {
        return view.model()->headerData(column, Qt::Horizontal, Qt::TextAlignmentRole).value<Qt::Alignment>();
    };
    EXPECT_TRUE(side(0).testFlag(Qt::AlignLeft) && side(1).testFlag(Qt::AlignRight));
    EXPECT_EQ(view.columnWidth(1), 120) << "not at the far end of a wide window";
}

}  // namespace
