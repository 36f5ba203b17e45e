#include "chronoweave/traxfunc/input/pointer.h"

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/draw/icon_walk.h"
#include "chronoweave/traxfunc/fetch/stretch_ends.h"
#include "chronoweave/traxfunc/input/context_menu.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/model/list.h"
#include "chronoweave/traxfunc/model/time.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

class Pointing : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        ASSERT_TRUE(test.Open(random_events(6, 300)));
        laCanvas_ShowRange(canvas, 0, canvas.source.totalLength / 8, {.paint = true});
        canvas.options.snapCursors = false;
        canvas.calls.openDetail = [this](const laItemRef& item) { opened.push_back(item); };
        canvas.calls.openInfo = [this](uint32_t id) { infos.push_back(id); };
        graph.showTip = [this](const std::string& text) { tip = text; };
        graph.warpPointer = [this](int x, int y) { warped = {x, y}; };
        test.beeps = 0;
    }
    void TearDown() override { gen_set_console_sink({}); }

    // The middle of the first item of a kind in the view that the hit test finds there, as x and y of the
    // area.
    std::optional<std::pair<int, int>> Find(laItemType kind, laHit* hit = nullptr) {
        laHit found;
        for (int y = 0; y < canvas.view.contentHeight; ++y)
            for (int x = 0; x < graph.width; ++x)
                if (laCanvas_HitTest(canvas, x, y, false, &found) && found.item.itype == kind) {
                    if (hit) *hit = found;
                    return std::pair(x, y);
                }
        return std::nullopt;
    }
    void Click(int x, int y, int clicks = 1, unsigned modifiers = 0) {
        pointer.Press({x, y, modifiers, clicks, laButton_Left});
        pointer.Release({x, y, modifiers, clicks, laButton_Left});
    }
    void Choose(laContextMenu menu, const std::string& text) {
        for (size_t i = 0; i < menu.rows.size(); ++i)
            if (menu.rows[i].text.starts_with(text)) {
                EXPECT_TRUE(menu.rows[i].enabled) << text;
                return laContextMenu_Choose(canvas, menu, static_cast<int>(i));
            }
        ADD_FAILURE() << text;
    }
    // Selects these rows of the list and no other; the last of them, null for none.
    MslObjectEntry* Select(const std::vector<int>& rows) {
        MScrollList& list = canvas.taskList->list();
        list.SelectOnly(MScrollList::noRow);
        for (const int row : rows) list.Select(row, true);
        return rows.empty() ? nullptr : canvas.taskList->rows()[static_cast<size_t>(rows.back())];
    }
    static const PopUpRow& Row(const laContextMenu& menu, size_t row) { return menu.rows.at(row); }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
    LaGraph& graph = test.graph;
    laPointer pointer{canvas};
    std::vector<laItemRef> opened;
    std::vector<uint32_t> infos;
    std::string tip = "none";
    std::pair<int, int> warped{-1, -1};
};

TEST_F(Pointing, EveryKindOfItemIsHitHasATipAndOpensItsWindow) {
    const struct {
        laItemType kind;
        const char* begins;
    } kinds[] = {{laItemType::Line, "Status \""},
                 {laItemType::Bitmap, "Event \""},
                 {laItemType::Ctx, "ContextSwitch from "}};
    for (const auto& [kind, begins] : kinds) {
        laHit hit;
        const auto place = Find(kind, &hit);
        ASSERT_TRUE(place) << begins;
        opened.clear();
        pointer.Press({place->first, place->second});
        EXPECT_TRUE(tip.starts_with(begins)) << tip;
        pointer.Move({place->first + 2, place->second});
        EXPECT_FALSE(tip.empty());
        pointer.Move({place->first + 3, place->second});
        EXPECT_EQ(tip, "") << "the pointer left the place of the press";
        pointer.Release({place->first + 3, place->second});
        EXPECT_TRUE(opened.empty());
        Click(place->first, place->second, 2);
        ASSERT_EQ(opened.size(), 1u) << begins;
        EXPECT_EQ(opened[0].itype, kind);
        EXPECT_EQ(opened[0].index, hit.item.index);
    }
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) canvas.items.lanes[i].segments.Clear();
    canvas.items.bitmaps.Clear();
    canvas.items.ctxLines.Clear();
    tip = "none";
    pointer.Press({5, 5});
    EXPECT_EQ(tip, "");
    pointer.Cancel();
}

TEST_F(Pointing, AStretchShorterThanAPixelIsHitFromThreePixelsAround) {
    laItem_Line& lane = canvas.items.lanes[0];
    const double middle = (canvas.view.viewLow + canvas.view.viewHigh) / 2;
    lane.segments.kept() = {{middle, middle, 3}};
    lane.icons.Clear();
    const int x = laCanvas_TimeToPixel(canvas, middle, Time_Second), y = laLn_LineY(canvas.looks, lane);
    laHit hit;
    EXPECT_TRUE(laCanvas_HitTest(canvas, x - 3, y + 2, false, &hit));
    EXPECT_EQ(hit.item.itype, laItemType::Line);
    laCanvas_HitTest(canvas, x - 4, y, false, &hit);
    EXPECT_NE(hit.item.itype, laItemType::Line);
}

TEST_F(Pointing, TipsSpeakInTheUnitAndNameWhatAMarkHides) {
    laHit hit;
    ASSERT_TRUE(Find(laItemType::Line, &hit));
    canvas.axis.timeMode = Time_Millisecond;
    const std::string text = laTip_Text(canvas, hit.item);
    const LaStretch stretch = laStretch_Of(canvas.items, hit.item);
    EXPECT_NE(text.find((stretch.whole() ? " with length " : " with length over ") +
                        laTip_Time(canvas, stretch.to.time - stretch.from.time) + " (in "),
              std::string::npos)
        << text;
    EXPECT_TRUE(text.ends_with("s)"));

    laCanvas_ShowAll(canvas);
    for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
        const laItem_Line& lane = canvas.items.lanes[i];
        const laTimeScale scale(canvas.view, canvas.axis, canvas.graph->width);
        const laScene scene = canvas.scene();
        laIconWalk walk(scene, lane, scale, graph.width);
        size_t next = 0, visible = 0;
        for (laShownIcon shown; walk.Next(shown);) {
            const laIconGroup group = laIcons_Group(canvas.scene(), lane, shown.number);
            EXPECT_EQ(group.first, shown.number);
            EXPECT_GE(group.first, next) << "groups don't overlap";
            next = group.end;
            for (size_t k = group.first; k < group.end; ++k)
                visible += canvas.looks.eventLooks[lane.icons.event(k)].shown ? 1u : 0u;
        }
        size_t all = 0;
        for (size_t k = 0; k < lane.icons.size(); ++k)
            all += canvas.looks.eventLooks[lane.icons.event(k)].shown ? 1u : 0u;
        EXPECT_EQ(visible, all) << "with no mark to draw, hidden events belong to the icon before them";
    }
}

TEST_F(Pointing, AnImportantEventIsNeverHidden) {
    laCanvas_ShowAll(canvas);
    canvas.looks.eventLooks[0].important = canvas.looks.anyImportantEvent = true;
    for (const bool newTrv : {true, false}) {
        canvas.options.newTrv = newTrv;
        for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
            const laItem_Line& lane = canvas.items.lanes[i];
            const laTimeScale scale(canvas.view, canvas.axis, canvas.graph->width);
            const laScene scene = canvas.scene();
            laIconWalk walk(scene, lane, scale, graph.width);
            std::vector<size_t> whole;
            for (laShownIcon shown; walk.Next(shown);)
                if (!shown.mark && shown.visibleFrom < 0) whole.push_back(shown.number);
            for (size_t k = 0; k < lane.icons.size(); ++k) {
                const bool isWhole = std::binary_search(whole.begin(), whole.end(), k);
                EXPECT_TRUE(isWhole || lane.icons.event(k) != 0) << "icon " << k;
            }
        }
    }
}

TEST_F(Pointing, ClicksAndDragsSelect) {
    Click(300, 5);
    EXPECT_EQ(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    EXPECT_TRUE(canvas.marks.secondShown);
    pointer.Press({400, 5});
    pointer.Move({350, 9});
    pointer.Release({300, 9});
    EXPECT_LT(canvas.marks.cursor[0], canvas.marks.cursor[1]);
    EXPECT_EQ(laCanvas_TimeToPixel(canvas, canvas.marks.cursor[0], Time_Second), 300);
    EXPECT_EQ(laCanvas_TimeToPixel(canvas, canvas.marks.cursor[1], Time_Second), 400);
    // Let go beyond the edge, the selection reaches to it.
    pointer.Press({400, 5});
    pointer.Move({canvas.graph->width + 20, 9});
    pointer.Release({canvas.graph->width + 20, 9});
    EXPECT_EQ(canvas.marks.cursor[1], canvas.view.viewHigh);
    Click(300, 5);
    // With Shift the press only measures.
    const double before = canvas.marks.cursor[0];
    pointer.Press({500, 5, laModifier_Shift});
    EXPECT_EQ(canvas.marks.pendingCursorX, 500);
    EXPECT_NE(test.message(), "");
    pointer.Release({500, 5, laModifier_Shift});
    EXPECT_EQ(canvas.marks.pendingCursorX, -100);
    EXPECT_EQ(canvas.marks.cursor[0], before);
    // The right button goes to the cursors, or refuses.
    laCanvas_ScrollToEnd(canvas, true);
    pointer.Press({10, 5, laModifier_Shift, 1, laButton_Right});
    EXPECT_LE(canvas.view.viewLow, before);
    EXPECT_GE(canvas.view.viewHigh, before);
    EXPECT_FALSE(pointer.Release({10, 5, laModifier_Shift, 1, laButton_Right}));
    canvas.marks.cursor[1] = -100;
    test.beeps = 0;
    pointer.Press({10, 5, laModifier_Control, 1, laButton_Right});
    EXPECT_EQ(test.beeps, 1);
    EXPECT_TRUE(pointer.Release({10, 5, 0, 1, laButton_Right})) << "the menu";
    pointer.Press({300, 5});
    pointer.Press({310, 5, 0, 1, laButton_Right});
    EXPECT_FALSE(pointer.dragging()) << "the right button ends a drag";
}

TEST_F(Pointing, TheMenuOfThePicture) {
    laHit hit;
    const auto icon = Find(laItemType::Bitmap, &hit);
    ASSERT_TRUE(icon);
    laContextMenu menu = laCanvas_CanvasMenu(canvas, icon->first, icon->second);
    EXPECT_EQ(menu.title, "Please choose");
    ASSERT_EQ(menu.rows.size(), 19u);
    const std::string name = laCanvas_LaneName(canvas.list, canvas.items.lanes[hit.lane]);
    EXPECT_FALSE(Row(menu, 0).enabled) << "no selection";
    EXPECT_TRUE(Row(menu, 2).enabled);
    EXPECT_EQ(Row(menu, 3).text, "\x01");
    EXPECT_EQ(Row(menu, 6).text.find("&Hide Task "), 0u) << Row(menu, 6).text << name;
    EXPECT_EQ(Row(menu, 7).text, "&Change Hidden Task List");
    EXPECT_EQ(Row(menu, 10).text, "Show Time in &Debugger");
    for (const size_t row : {8u, 10u, 11u}) EXPECT_FALSE(Row(menu, row).enabled) << "no debugger";
    EXPECT_TRUE(Row(menu, 13).enabled);
    EXPECT_FALSE(Row(menu, 15).checked.value());
    EXPECT_TRUE(Row(menu, 17).enabled);
    EXPECT_FALSE(Row(menu, 18).enabled);

    Choose(menu, "&Add Bookmark");
    ASSERT_EQ(canvas.marks.bookmarks.size(), 1u);
    EXPECT_EQ(canvas.marks.bookmarks[0].time, hit.time) << "that of the icon";
    menu = laCanvas_CanvasMenu(canvas, icon->first, icon->second);
    EXPECT_FALSE(Row(menu, 17).enabled);
    Choose(menu, "Delete &Bookmark");
    EXPECT_TRUE(canvas.marks.bookmarks.empty());
    Choose(menu, "&View Object");
    EXPECT_EQ(opened.size(), 1u);

    canvas.list.flatView = true;  // groups have a place of their own
    const uint32_t clicked = canvas.items.lanes[hit.lane].objectId;
    Choose(menu, "Sort Around Clicked Event");
    EXPECT_TRUE(canvas.list.sortAroundEvent);
    EXPECT_EQ(laCanvas_FindLane(canvas.items, clicked)->eventDistance, 0);
    int32_t last = -laFarFromEvent;
    for (const MslObjectEntry* entry : canvas.taskList->rows()) {
        if (canvas.items.lanes[entry->payload].isAgent) continue;
        EXPECT_GE(canvas.items.lanes[entry->payload].eventDistance, last)
            << "from those before it to those behind";
        last = canvas.items.lanes[entry->payload].eventDistance;
    }
    EXPECT_GE(warped.first, 0);

    const size_t shown = canvas.taskList->rows().size();
    Choose(laCanvas_CanvasMenu(canvas, icon->first, 5), "&Hide Task");
    EXPECT_LT(canvas.taskList->rows().size(), shown);
    const double length = canvas.view.viewLength;
    Choose(laCanvas_CanvasMenu(canvas, 500, 5), "Zoom &In");
    EXPECT_NEAR(canvas.view.viewLength, length / 2, length * 1e-3);

    laCanvas_ShowAll(canvas);
    laCanvas_ShowRange(canvas, 0, canvas.source.totalLength * 2);
    menu = laCanvas_CanvasMenu(canvas, graph.width - 1, canvas.view.contentHeight + 50);
    EXPECT_FALSE(Row(menu, 2).enabled) << "all is shown";
    EXPECT_FALSE(Row(menu, 4).enabled);
    EXPECT_EQ(Row(menu, 6).text, "&Hide Clicked Task");
    EXPECT_FALSE(Row(menu, 6).enabled);
}

TEST_F(Pointing, TheRowsOfTheDebuggerFollowWhatItCan) {
    laHit hit;
    const auto icon = Find(laItemType::Bitmap, &hit);
    ASSERT_TRUE(icon);
    canvas.items.lanes[hit.lane].objectId = 0x10;
    const struct {
        laDebuggerCan can;
        bool attaches, shows, past;
    } debuggers[] = {
        {{.link = true}, true, false, false},
        {{.listens = true, .commands = true}, true, false, false},
        {{.listens = true, .shows = true}, false, true, false},
        {{.listens = true, .timeTravel = true}, false, false, true},
        {{.shows = true, .timeTravel = true}, false, false, false},
    };
    for (const auto& row : debuggers) {
        const laContextMenu with = laCanvas_CanvasMenu(canvas, icon->first, icon->second, row.can);
        EXPECT_EQ(Row(with, 8).enabled, row.attaches);
        EXPECT_EQ(Row(with, 10).enabled, row.shows);
        EXPECT_EQ(Row(with, 11).enabled, row.past);
    }
    laItem_Line task;
    for (const uint32_t id : {0u, 0xFFFFFFFFu, 5u}) {
        task.objectId = id;
        EXPECT_EQ(laDebugger_IsTask(task), id == 5);
    }
    task.name = "__vrl_fake_x";
    task.hasName = true;
    EXPECT_FALSE(laDebugger_IsTask(task));
    canvas.axis.timeMode = Time_Tick;
    const laContextMenu menu = laCanvas_CanvasMenu(canvas, icon->first, icon->second, {.link = true});
    EXPECT_FALSE(Row(menu, 8).enabled) << "no attaching where ticks are shown";
    EXPECT_EQ(Row(menu, 10).text, "Show Tick Position in &Debugger");
}

TEST_F(Pointing, TheMenuOfTheList) {
    const auto& rows = canvas.taskList->rows();
    ASSERT_GE(rows.size(), 3u);
    laContextMenu menu = laCanvas_ListMenu(canvas, Select({0}));
    EXPECT_EQ(menu.title, "Operations");
    ASSERT_EQ(menu.rows.size(), 15u);
    EXPECT_TRUE(Row(menu, 0).text.starts_with("&View Info of Task "));
    EXPECT_EQ(Row(menu, 8).text, "Sort by Task &ID");
    EXPECT_EQ(Row(menu, 9).text, "Sort in &Descending Order");
    menu = laCanvas_ListMenu(canvas, Select({}));
    EXPECT_EQ(Row(menu, 0).text, "&View Info of Clicked Object");
    EXPECT_EQ(Row(menu, 2).text, "&Hide Info of Clicked Object");
    EXPECT_EQ(Row(menu, 4).text, "D&ebug Task");
    EXPECT_FALSE(Row(menu, 0).enabled);
    EXPECT_FALSE(Row(menu, 2).enabled);
    uint32_t& id = canvas.items.lanes[canvas.taskList->rows()[0]->payload].objectId;
    const uint32_t own = std::exchange(id, 0x10);
    menu = laCanvas_ListMenu(canvas, Select({0}), {.listens = true, .commands = true, .timeTravel = true});
    EXPECT_TRUE(Row(menu, 4).enabled && Row(menu, 6).enabled);
    id = own;
    menu = laCanvas_ListMenu(canvas, Select({0, 1}));
    EXPECT_EQ(Row(menu, 2).text, "&Hide Tasks");
    Choose(menu, "&View Info of Tasks");
    EXPECT_EQ(infos.size(), 2u);
    const size_t before = rows.size();
    Choose(menu, "&Hide Tasks");
    EXPECT_LE(canvas.taskList->rows().size(), before - 2);
    Choose(laCanvas_ListMenu(canvas, Select({})), "Sort in &Descending");
    EXPECT_FALSE(canvas.list.sortAscending);
    for (const bool ascending : {true, false}) {
        canvas.list.sortAscending = ascending;
        std::string letters;
        for (const PopUpRow& one : laCanvas_ListMenu(canvas, Select({0})).rows)
            if (const size_t mark = one.text.find('&'); mark != std::string::npos)
                letters += one.text[mark + 1];
        for (const char letter : letters)
            EXPECT_EQ(std::count(letters.begin(), letters.end(), letter), 1) << letters;
    }
    EXPECT_EQ(Row(menu, 4).tip, "No debugger is connected that could.");

    laItem_Line& lane = canvas.items.lanes[canvas.taskList->rows()[0]->payload];
    lane.isAgent = true;
    menu = laCanvas_ListMenu(canvas, Select({0}));
    EXPECT_FALSE(Row(menu, 0).enabled) << "the agent is no object";
    EXPECT_FALSE(Row(menu, 2).enabled);
    lane.isAgent = false;
    Choose(laCanvas_ListMenu(canvas, Select({})), "&Most Active");
    EXPECT_TRUE(canvas.list.mostActiveFirst);
    menu = laCanvas_ListMenu(canvas, Select({}));
    EXPECT_TRUE(Row(menu, 14).checked);
}

}  // namespace
