#include "windlib/msl/scroll_list.h"

#include <gtest/gtest.h>

#include <cmath>

#include "shared/libcxxutil/report.h"
#include "windlib/msl/toggle_handler.h"

namespace {

std::span<const std::byte> bytes(const int& value) {
    return std::as_bytes(std::span(&value, 1));
}
int number(std::span<const std::byte> data) {
    int value = -1;
    if (data.size() == sizeof value)
        std::copy(data.begin(), data.end(), reinterpret_cast<std::byte*>(&value));
    return value;
}
std::vector<std::string> column(const MScrollList& list, int which) {
    std::vector<std::string> texts;
    for (int row = 0; row < list.RowCount(); ++row) texts.push_back(list.Text(row, which));
    return texts;
}

TEST(ScrollList, SizeDropsRowsAndKeepsColumns) {
    std::vector<int> released;
    MScrollList list;
    list.releaseData = [&](std::span<const std::byte> data) { released.push_back(number(data)); };
    list.SetSize(3, 2);
    EXPECT_EQ(list.Column(1).header[0], "Column 1 Title");
    list.SetHeader(0, 1, "ID");
    list.SetWidth(0, 50);
    list.SetColumnTexts(0, {"a", "b", "c", "too many"});
    for (const int value : {10, 11, 12}) list.SetRowData(value - 10, bytes(value));
    list.SetRowData(1, bytes(21));
    EXPECT_EQ(released, std::vector<int>{11});
    list.Select(2);
    EXPECT_TRUE(list.SetSize(0, 2));
    EXPECT_EQ(released, (std::vector<int>{11, 10, 21, 12}));
    EXPECT_EQ(list.SelectedRow(), MScrollList::noRow);
    EXPECT_EQ(list.Column(1).header[0], "ID");
    EXPECT_EQ(list.Column(1).left, 50);
    list.SetSize(1, 3);
    EXPECT_EQ(list.Text(0, 0), "");
    EXPECT_EQ(list.Column(2).header[0], "Column 2 Title");
    // Nothing out of range is found or harms.
    list.SetText(5, 0, "x");
    list.SetText(0, -1, "x");
    list.SetCellAttribute(-1, 0, mslHeading, 1);
    list.Select(9);
    EXPECT_EQ(list.Text(0, 9) + list.Text(-1, 0), "");
    EXPECT_TRUE(list.RowData(7).empty());
    EXPECT_EQ(list.SelectionCount(), 0);
}

TEST(ScrollList, SortsByTheCommonComparisonsAndMovesWholeRows) {
    const struct {
        MslCompare compare;
        int flag;
        std::vector<std::string> sorted;
    } cases[] = {{msl_CompareText, 0, {"-1", "0x1F", "1.5e1", "10", "9"}},
                 {msl_CompareText, 1, {"9", "10", "1.5e1", "0x1F", "-1"}},
                 {msl_CompareUnsigned, 0, {"1.5e1", "9", "10", "0x1F", "-1"}},
                 {msl_CompareDouble, 0, {"-1", "0x1F", "9", "10", "1.5e1"}}};
    for (const auto& each : cases) {
        MScrollList list;
        list.SetSize(5, 2);
        list.SetColumnTexts(0, {"10", "9", "0x1F", "-1", "1.5e1"});
        list.SetColumnTexts(1, {"10", "9", "0x1F", "-1", "1.5e1"});
        for (int row = 0; row < 5; ++row)
            list.SetRowData(row, bytes(static_cast<int>(list.Text(row, 0).size())));
        list.SetCellAttribute(0, 1, mslHeading, 1);
        list.Select(0);
        list.SetHeightOf(0, 40);
        list.SetComparison(0, each.compare, each.flag);
        EXPECT_TRUE(list.SortBy(0));
        EXPECT_EQ(column(list, 0), each.sorted);
        EXPECT_EQ(column(list, 1), each.sorted);
        const int moved = list.SelectedRow();
        EXPECT_EQ(list.Text(moved, 0), "10");
        EXPECT_EQ(list.Cell(moved, 1).attributes, mslHeading);
        EXPECT_EQ(number(list.RowData(moved)), 2);
        EXPECT_EQ(list.HeightOf(moved), 40);
    }
    MScrollList list;
    list.SetSize(6, 2);
    list.SetColumnTexts(0, {"b", "a", "b", "a", "b", "a"});
    list.SetColumnTexts(1, {"1", "2", "3", "4", "5", "6"});
    list.SetComparison(0, {}, 1);
    list.SortBy(0);
    EXPECT_EQ(column(list, 1), (std::vector<std::string>{"1", "3", "5", "2", "4", "6"}));
    EXPECT_FALSE(list.SortBy(2));
}

TEST(ScrollList, SelectionFollowsClicks) {
    MScrollList list;
    list.SetSize(6, 1);
    std::vector<int> clicks;
    list.clicked = [&](int row, int, int count) { clicks = {row, count}; };
    list.Click(2, 0, 1);
    list.Click(3, 0, 2, true);
    EXPECT_EQ(list.SelectedRow(), 3);
    EXPECT_EQ(clicks, (std::vector<int>{3, 2}));
    list.Click(99, 0, 1);
    EXPECT_EQ(clicks, (std::vector<int>{-1, 1}));
    EXPECT_EQ(list.SelectedRow(), 3);
    list.SelectAll();
    EXPECT_EQ(list.SelectionCount(), 1);

    list.SetMultiple(true);
    list.Click(1, 0, 1);
    list.Click(4, 0, 1, false, true);
    EXPECT_EQ(list.SelectedRows(), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_LT(list.SelectedRow(), -1);
    list.Click(2, 0, 1, true);
    EXPECT_EQ(list.SelectedRows(), (std::vector<int>{1, 3, 4}));
    list.InsertRows(0, 2);
    EXPECT_EQ(list.SelectedRows(), (std::vector<int>{3, 5, 6}));
    list.RemoveRows(5, 2);
    EXPECT_EQ(list.SelectedRow(), 3);
    list.SelectAll();
    EXPECT_EQ(list.SelectionCount(), 6);
    list.SetMultiple(false);
    EXPECT_EQ(list.SelectedRow(), 0);
    EXPECT_FALSE(list.InsertRows(99, 1) || list.RemoveRows(0, 99) || list.RemoveRows(5, 2));
}

TEST(ScrollList, SearchFindsTheEqualRowElseTheLongestMatch) {
    MScrollList list;
    list.SetSize(6, 1);
    list.SetColumnTexts(0, {"abc", "abd", "abdomen", "b", "bcd", "xy"});
    list.SetRowHeight(10);
    list.SetViewHeight(30);
    list.ScrollTo(20);
    list.BeginSearch(0);
    EXPECT_EQ(list.SearchAnchor(), 3);
    EXPECT_EQ(list.Footer(), "Srch: ");
    const struct {
        const char* key;
        int row;
    } keys[] = {{"q", 3}, {nullptr, 3}, {"a", 0}, {"b", 0}, {"d", 1}, {"o", 2}, {"z", 2}, {nullptr, 2}};
    for (const auto& each : keys) {
        if (each.key)
            list.SearchKey(each.key);
        else
            list.SearchBackspace();
        EXPECT_EQ(list.SelectedRow(), each.row) << list.Footer();
    }
    EXPECT_EQ(list.Footer(), "Srch: abdo");
    EXPECT_EQ(list.ViewTop(), 0 + 0);
    list.SearchKey(std::string(1000, '%'));
    EXPECT_EQ(list.Footer().size(), 6u + 1004u);
    list.EndSearch();
    EXPECT_EQ(list.Footer(), "");
    list.SearchKey("x");
    EXPECT_EQ(list.SelectedRow(), 2);
}

TEST(ScrollList, ScrollsWithinRowsOfAnyHeight) {
    MScrollList list;
    list.SetSize(10, 1);
    list.SetRowHeight(10);
    list.SetViewHeight(35);
    list.SetHeightOf(2, 50);
    const struct {
        int64_t y;
        int row;
    } at[] = {{-1, -1}, {0, 0}, {19, 1}, {20, 2}, {69, 2}, {70, 3}, {139, 9}, {140, -1}};
    for (const auto& each : at) EXPECT_EQ(list.RowAt(each.y), each.row) << each.y;
    list.ScrollToRow(9);
    EXPECT_EQ(list.ViewTop(), 105);
    list.ScrollToRow(2);  // higher than the view
    EXPECT_EQ(list.ViewTop(), 20);
    list.ScrollTo(1000);
    EXPECT_EQ(list.ViewTop(), 105);
    list.RemoveRows(0, 8);
    EXPECT_EQ(list.ViewTop(), 0);
    EXPECT_EQ(list.TopOf(2), 20);
}

// Places of rows are worked out once and kept while nothing changes.
TEST(ScrollList, PlacesOfRowsFollowEveryChange) {
    MScrollList list;
    list.SetSize(3, 1);
    list.SetRowHeight(10);
    list.SetHeightOf(0, 40);
    const struct {
        std::function<void()> change;
        int64_t top, end;  // of row 1, and of all
    } cases[] = {
        {[] {}, 40, 60},
        {[&] { list.InsertRows(0, 2); }, 10, 80},
        {[&] { list.RemoveRows(1, 1); }, 10, 70},
        {[&] { list.SetHeightOf(0, 15); }, 15, 75},
        {[&] {
             list.SetColumnTexts(0, {"b", "a", "c", "d"});
             list.SortBy(0);
         },
         40, 75},
        {[&] { list.SetRowHeight(7); }, 7, 28},
    };
    for (const auto& each : cases) {
        each.change();
        EXPECT_EQ(list.TopOf(1), each.top) << &each - cases;
        EXPECT_EQ(list.RowAt(each.top), 1) << &each - cases;
        EXPECT_EQ(list.TopOf(list.RowCount()), each.end) << &each - cases;
        EXPECT_EQ(list.RowAt(each.end - 1), list.RowCount() - 1) << &each - cases;
    }
}

TEST(ScrollList, TellsItsViewAndFitsColumns) {
    MScrollList list;
    std::vector<MslChange> changes;
    list.changed = [&](MslChange change, int, int) { changes.push_back(change); };
    list.SetSize(2, 2);
    list.SetColumnTexts(0, {"aaaa", "b"});
    list.HoldRepaint(true);
    list.SetText(0, 1, "x");
    list.SetCellAttribute(0, 1, mslHeading, 1);
    EXPECT_EQ(changes, (std::vector<MslChange>{MslChange::Size, MslChange::Size}));
    list.HoldRepaint(false);
    EXPECT_EQ(changes.size(), 3u);
    list.measure = [](std::string_view text, bool heading) {
        return static_cast<int>(text.size()) * (heading ? 10 : 5);
    };
    list.SetHeader(0, 0, "N");
    list.SetHeader(0, 1, "");
    list.SetLevel(1, 2);
    list.FitColumns();
    EXPECT_EQ(list.Column(0).width, 5 + 2 * list.levelIndent + list.cellMargin);
    EXPECT_EQ(list.Column(1).left, list.Column(0).width);
    EXPECT_EQ(list.Column(1).width, 10 + list.cellMargin);
    list.SetLevel(1, 0);
    list.FitColumns(1, 0);
    EXPECT_EQ(list.Column(0).width, 10 + list.cellMargin);
    EXPECT_EQ(changes.back(), MslChange::Columns);
}

TEST(ScrollList, TheRowThatGetsTheKeyboardIsPaintedThoughItWasSelectedBefore) {
    MScrollList list;
    list.SetMultiple(true);
    list.SetSize(4, 1);
    list.Click(1, 0, 1, false, false);
    list.Click(2, 0, 1, true, false);
    std::vector<int> painted;
    list.changed = [&](MslChange change, int first, int) {
        if (change == MslChange::Repaint) painted.push_back(first);
    };
    list.RightClick(1, 0);
    EXPECT_EQ(painted, (std::vector<int>{2, 1}));
    list.RightClick(1, 0);
    EXPECT_EQ(painted.size(), 2u);
}

TEST(ScrollList, LazyRowsAreAskedForSortedAndMarkedById) {
    const std::vector<std::string> names = {"pear", "fig", "plum", "apple", "peach"};
    const auto text = [&](uint32_t id, int column) { return column == 0 ? names[id] : std::to_string(id); };
    const struct {
        std::function<void(MScrollList&)> key;
        bool descending;
        std::vector<std::string> sorted;
    } cases[] = {
        {[](MScrollList&) {}, false, {"apple", "fig", "peach", "pear", "plum"}},
        {[](MScrollList&) {}, true, {"plum", "pear", "peach", "fig", "apple"}},
        {[&](MScrollList& list) { list.SetUnsignedKey(0, [&](uint64_t id) { return names[id].size(); }); },
         false,
         {"fig", "pear", "plum", "peach", "apple"}},
        {[](MScrollList& list) {
             list.SetNumberKey(0,
                               [](uint64_t id) { return id == 1 ? std::nan("") : -static_cast<double>(id); });
         },
         true,
         {"pear", "plum", "apple", "peach", "fig"}},
    };
    for (const auto& each : cases) {
        MScrollList list;
        list.SetSize(0, 2);
        list.SetMultiple(true);
        EXPECT_TRUE(list.SetLazyRows({text, {}, {}}, {4, 3, 2, 1, 0}));
        // What was set by hand goes with the row, beside what the owner tells.
        list.SetCellAttribute(1, 1, mslHeading, 1);
        list.SetText(1, 1, "by hand");
        list.SetHeightOf(1, 40);
        list.SelectRows({1, 2});
        if (&each - cases >= 2) list.SortBy(1);  // so that equal keys are seen to keep an order
        each.key(list);
        EXPECT_TRUE(list.SortBy(0, each.descending));
        EXPECT_EQ(column(list, 0), each.sorted);
        const int moved = list.RowOfId(3);
        EXPECT_EQ(list.Text(moved, 0) + list.Text(moved, 1), "appleby hand");
        EXPECT_EQ(list.Cell(moved, 1).attributes, mslHeading);
        EXPECT_EQ(list.HeightOf(moved), 40);
        std::vector<uint64_t> ids = list.SelectedIds();
        std::sort(ids.begin(), ids.end());
        EXPECT_EQ(ids, (std::vector<uint64_t>{2, 3}));
        EXPECT_FALSE(list.InsertRows(0, 1));
        EXPECT_TRUE(list.RemoveRows(moved, 1));
        EXPECT_EQ(list.SelectedIds(), std::vector<uint64_t>{2});
        EXPECT_EQ(list.TopOf(list.RowCount()), 4 * list.RowHeight());
    }
}

TEST(ScrollList, NumbersAreReadAsCReadsThem) {
    const struct {
        const char *smaller, *larger;
    } unsignedCases[] = {{"0", "0x1"},       {"0x1", "2"},
                         {"0x1", "0X2"},     {"7", "010"},
                         {"010", "9"},       {" 3 ", "4 of them"},
                         {"x", "1"},         {"0x", "1"},
                         {"0xf", "16"},      {"1", "-1"},
                         {"-2", "-1"},       {"+5", "6"},
                         {"5", "0x6 bytes"}, {"1", "99999999999999999999"}},
      doubleCases[] = {{"-1", "0"},    {"0.5", "0.75"}, {"9", "1e1"},
                       {"-1e3", "-5"}, {"x", "0.1"},    {"nan", "0.1"}};
    const MScrollList list;
    for (const auto& [smaller, larger] : unsignedCases) {
        EXPECT_LT(msl_CompareUnsigned(list, smaller, larger), 0) << smaller << " " << larger;
        EXPECT_GT(msl_CompareUnsigned(list, larger, smaller), 0) << smaller << " " << larger;
    }
    for (const auto& [smaller, larger] : doubleCases) {
        EXPECT_LT(msl_CompareDouble(list, smaller, larger), 0) << smaller << " " << larger;
        EXPECT_GT(msl_CompareDouble(list, larger, smaller), 0) << smaller << " " << larger;
    }
    EXPECT_EQ(msl_CompareUnsigned(list, "0x10", "16"), 0);
    EXPECT_EQ(msl_CompareDouble(list, "1e1", "10.0"), 0);
}

// Only rows in the order of their bytes can be searched by halving.
TEST(ScrollList, ASearchWalksWhereTheOrderIsAnother) {
    const struct {
        const char* what;
        std::function<void(MScrollList&)> sort;
    } orders[] = {
        {"none", [](MScrollList&) {}},
        {"descending", [](MScrollList& list) { list.SortBy(0, true); }},
        {"the other way round",
         [](MScrollList& list) {
             list.SetComparison(0, {}, 1);
             list.SortBy(0);
         }},
        {"by number",
         [](MScrollList& list) {
             list.SetComparison(0, msl_CompareUnsigned);
             list.SortBy(0);
         }},
        {"by an unsigned key",
         [](MScrollList& list) {
             list.SetUnsignedKey(0, [](uint64_t id) { return id; });
             list.SortBy(0);
         }},
        {"by a number key",
         [](MScrollList& list) {
             list.SetNumberKey(0, [](uint64_t id) { return -static_cast<double>(id); });
             list.SortBy(0);
         }},
        {"by another column", [](MScrollList& list) { list.SortBy(1); }},
        {"by its bytes", [](MScrollList& list) { list.SortBy(0); }},
    };
    const std::vector<std::string> names = {"9", "100", "20", "1000", "3", "21", "30"};
    for (const auto& order : orders)
        for (const std::string& name : names) {
            MScrollList list;
            list.SetSize(static_cast<int>(names.size()), 2);
            list.SetColumnTexts(0, names);
            list.SetColumnTexts(1, {"c", "a", "g", "b", "f", "d", "e"});
            for (int row = 0; row < list.RowCount(); ++row)
                list.SetRowId(row, static_cast<uint64_t>(row * 5 % 7));
            order.sort(list);
            list.BeginSearch(0);
            list.SearchKey(name);
            EXPECT_EQ(list.Text(list.SelectedRow(), 0), name) << order.what;
        }
}

TEST(ScrollList, ASearchInSortedRowsFindsWhatAWalkFinds) {
    const std::vector<std::string> names = {"", "a", "ab", "ab", "abc", "b", "bcd", "bcde", "\xC3\xA4"};
    const auto found = [&](bool known, const std::string& typed) {
        MScrollList list;
        list.SetSize(static_cast<int>(names.size()), 1);
        list.SetColumnTexts(0, names);
        list.SetRowHeight(10);
        list.SetViewHeight(80);  // what fits nothing stays in the middle
        if (known) list.SortBy(0);
        list.TypeAhead(typed);
        return list.SelectedRow();
    };
    for (const char* typed : {"a", "ab", "abb", "abcd", "b", "bc", "bce", "c", "", "\xC3", "\xC3\xA4x", "z"})
        EXPECT_EQ(found(true, typed), found(false, typed)) << typed;
}

TEST(ScrollList, AnswersTheMetricQuery) {
    std::string console;
    gen_set_console_sink([&](std::string_view text) { console += text; });
    MScrollList list;
    list.metrics = {11, 3, 14};
    EXPECT_EQ(list.mslMetric(0) + list.mslMetric(1) + list.mslMetric(2), 28);
    EXPECT_EQ(console, "");
    EXPECT_EQ(list.mslMetric(3) + list.mslMetric(-1), 0);
    EXPECT_EQ(console, "[mslMetric] unknown metric\n[mslMetric] unknown metric\n");
    gen_set_console_sink({});
}

TEST(ToggleHandler, TurnsCheckMarksOver) {
    MScrollList list;
    list.SetSize(2, 2);
    ScrollDialogue_ToggleHandler handler(list, 1);
    std::vector<std::pair<int, bool>> turned;
    handler.turned = [&](int row, bool checked) { turned.emplace_back(row, checked); };
    handler.SetChecked(0, false);
    EXPECT_EQ(msl_CheckPicture(list.Toggle(0, 1)), "graycheckmark");
    EXPECT_TRUE(handler.Click(0, 1));
    EXPECT_EQ(msl_CheckPicture(list.Toggle(0, 1)), "checkmark");
    EXPECT_TRUE(handler.Click(0, 1));
    EXPECT_FALSE(handler.Click(0, 0) || handler.Click(1, 1) || handler.Click(-1, 1));
    EXPECT_EQ(turned, (std::vector<std::pair<int, bool>>{{0, true}, {0, false}}));
}

}  // namespace
