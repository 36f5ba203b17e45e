#include "chronoweave/traxfunc/list/task_list.h"

#include <gtest/gtest.h>

#include <functional>

#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/list/names.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

// Rows from the top, indented by a dot per level.
std::string rows(const TestCanvas& test) {
    std::string all;
    for (const MslObjectEntry* entry : test.canvas->taskList->rows()) {
        if (!all.empty()) all += ' ';
        all +=
            std::string(static_cast<size_t>(entry->depth), '.') + test.canvas->taskList->RowText(*entry, 0);
    }
    return all;
}

MslObjectEntry* row(const TestCanvas& test, const std::string& name) {
    for (MslObjectEntry* entry : test.canvas->taskList->rows())
        if (entry->name == name) return entry;
    return nullptr;
}

class TaskList : public testing::Test {
  protected:
    // Ids run against the names' order.
    void OpenNamed(const std::vector<std::string>& names, Legend legend = test_legend()) {
        std::vector<TestEvent> events;
        auto id = static_cast<uint32_t>(names.size() << 10);
        for (size_t i = 0; i < names.size(); ++i, id -= 0x400)
            if (!names[i].empty())
                events.push_back(name_event(i, id, names[i]));
            else
                events.push_back({i, mt_TaskChange, 0, words({id, 0})});
        events.push_back({1000, mt_TaskChange, 0, words({0x400, 0})});
        ASSERT_TRUE(test.Open(events, "ThreadX", std::move(legend)));
        test.ShowAll();
    }
    void Resort() { laCanvas_Resort(*test.canvas); }

    TestCanvas test;
};

TEST_F(TaskList, NestsBySeparatorAndSorts) {
    OpenNamed({"B@y", "A@x", "C", "B@x", "A@z"});
    EXPECT_EQ(rows(test), "A .x .z B .x .y C");
    EXPECT_TRUE(laCanvas_HasHierarchy(*test.canvas));
    test.canvas->list.sortAscending = false;
    Resort();
    EXPECT_EQ(rows(test), "C A .z .x B .y .x");
    test.canvas->list.sortAscending = true;
    test.canvas->list.sortField = 1;
    Resort();
    EXPECT_EQ(rows(test), "A .z .x B .x .y C");
    test.canvas->list.flatView = true;
    Resort();
    EXPECT_EQ(rows(test), "A@z B@x C A@x B@y");
    test.canvas->list.sortAroundEvent = true;
    laCanvas_FindLane(test.canvas->items, 0xC00)->eventDistance = -4;
    Resort();
    EXPECT_EQ(rows(test).substr(0, 2), "C ");
}

TEST_F(TaskList, ObjectsWithoutANameShowTermAndId) {
    OpenNamed({"", "__vrl_fake_idle"});
    EXPECT_EQ(rows(test), "Task 0x800 idle");
}

TEST_F(TaskList, NoRowIsBlank) {
    ASSERT_TRUE(test.Open({name_event(0, 0x10, ""), name_event(0, 0x20, "  "), name_event(0, 0x30, "group@"),
                           name_event(1, 0x40, "group@leaf")}));
    test.ShowAll();
    EXPECT_EQ(rows(test), "Task 0x10 Task 0x20 group .Task 0x30 .leaf");
    const TraxTaskList& list = *test.canvas->taskList;
    EXPECT_EQ(list.RowTip(*list.rows()[0]), "Task 0x10, Priority = 0x5");
}

TEST_F(TaskList, LanesFollowTheirRows) {
    OpenNamed({"B@y", "A@x", "C"});
    const int height = test.canvas->looks.rowHeight;
    EXPECT_EQ(rows(test), "A .x B .y C");
    EXPECT_EQ(laCanvas_LaneY(test.canvas->items, test.canvas->looks, 0x800), height + height / 2);
    EXPECT_EQ(laCanvas_LaneY(test.canvas->items, test.canvas->looks, 0x400), 4 * height + height / 2);
    EXPECT_EQ(test.canvas->view.contentHeight, 5 * height);
    EXPECT_EQ(laCanvas_LaneY(test.canvas->items, test.canvas->looks, 0x999), height / 2);
    EXPECT_TRUE(laCanvas_LaneHidden(test.canvas->items, 0x999));

    EXPECT_TRUE(test.canvas->taskList->SetCollapsed(*row(test, "A"), true));
    laCanvas_Relayout(*test.canvas);
    EXPECT_EQ(rows(test), "A B .y C");
    EXPECT_TRUE(laCanvas_LaneHidden(test.canvas->items, 0x800));
    EXPECT_EQ(test.canvas->view.contentHeight, 4 * height);
    Resort();
    EXPECT_EQ(rows(test), "A B .y C") << "a collapse outlives the rebuilding of the list";
}

TEST_F(TaskList, HidesByPathAndPattern) {
    OpenNamed({"B@y", "A@x", "C", "B@x", "Cat"});
    TraxTaskList& list = *test.canvas->taskList;
    struct Case {
        laPath path;
        const char* left;
    };
    for (const Case& one :
         {Case{laPath{{"B"}, false, {}}, "A .x C Cat"},
          Case{laPath{{"B", "x"}, false, {}}, "A .x B .y C Cat"},
          Case{laTask_PatternPath("C"), "A .x B .x .y"}, Case{laTask_PatternPath("?"), "A .x B .x .y Cat"},
          Case{laTask_PatternPath("*@x"), "B .y C Cat"},
          Case{laPath{{"C"}, false, {}}, "A .x B .x .y Cat"}}) {
        list.SetHiddenPaths({one.path});
        Resort();
        EXPECT_EQ(rows(test), one.left) << one.path.Joined("@");
    }
    list.SetHiddenPaths({});
    Resort();
    laTask_Hide(*test.canvas, *row(test, "B"));
    laTask_Hide(*test.canvas, *row(test, "C"));
    EXPECT_EQ(rows(test), "A .x Cat");
    ASSERT_EQ(list.HiddenPaths().size(), 2u);
    EXPECT_EQ(list.HiddenPaths()[1].id, 0xC00u);
    list.AddHiddenPath(laPath{{"C"}, false, {}});
    EXPECT_EQ(list.HiddenPaths().size(), 2u);
    laTask_Show(*test.canvas, *laCanvas_FindLane(test.canvas->items, 0xC00)->listEntry);
    EXPECT_EQ(rows(test), "A .x C Cat");
}

laNames names_of(const TestCanvas& test) {
    return {*test.canvas->taskList, test.canvas->looks, test.canvas->view, *test.canvas->graph};
}

// Names of the selected rows.
std::string selected(const TestCanvas& test) {
    std::string all;
    for (const MslObjectEntry* entry : names_of(test).Selected()) all += entry->name + " ";
    return all;
}

TEST_F(TaskList, RowsAreSelectedByPointerAndKeysAndStaySoWhenTheListIsMadeAnew) {
    OpenNamed({"B@y", "A@x", "C", "B@x"});
    _LaCanvasData& canvas = *test.canvas;
    const auto y = [&](int row) { return row * canvas.looks.rowHeight + 3; };
    std::vector<uint32_t> opened;
    canvas.calls.openInfo = [&](uint32_t id) { opened.push_back(id); };
    EXPECT_EQ(rows(test), "A .x B .x .y C");
    struct Step {
        std::function<bool()> act;
        bool done;
        const char* selected;
        const char* rows;
    };
    const auto click = [&](int row, int clicks, bool control, bool shift) {
        return names_of(test).Click(100, y(row), clicks, control, shift);
    };
    const auto key = [&](MslKey which) { return names_of(test).Key(which, false, false); };
    const char* const all = "A .x B .x .y C";
    const char* const closed = "A .x B C";
    const Step steps[] = {
        {[&] { return click(5, 1, false, false); }, true, "C ", all},
        {[&] { return click(3, 1, true, false); }, true, "x C ", all},
        {[&] { return click(1, 1, false, true); }, true, "x B x ", all},
        {[&] { return click(6, 1, false, false); }, false, "x B x ", all},
        {[&] { return names_of(test).RightClick(y(3)) != nullptr; }, true, "x B x ", all},
        {[&] { return names_of(test).RightClick(y(4)) != nullptr; }, true, "y ", all},
        {[&] { return names_of(test).RightClick(y(7)) != nullptr; }, false, "y ", all},
        {[&] { return Resort(), true; }, true, "y ", all},
        {[&] { return names_of(test).Click(6, y(2), 1, false, false); }, true, "B ", closed},
        {[&] { return key(MslKey::Right); }, true, "B ", all},
        {[&] { return key(MslKey::Right); }, true, "x ", all},
        {[&] { return key(MslKey::Left); }, true, "B ", all},
        {[&] { return key(MslKey::Left); }, true, "B ", closed},
        {[&] { return key(MslKey::Enter); }, true, "B ", all},
        {[&] { return key(MslKey::Down) && key(MslKey::Enter); }, true, "x ", all},
        {[&] { return click(5, 2, false, false); }, true, "C ", all},
        {[&] { return names_of(test).Type("B"), true; }, true, "B ", all},
    };
    for (const Step& step : steps) {
        EXPECT_EQ(step.act(), step.done) << &step - steps;
        EXPECT_EQ(selected(test), step.selected) << &step - steps;
        EXPECT_EQ(rows(test), step.rows) << &step - steps;
    }
    EXPECT_EQ(opened, (std::vector<uint32_t>{0x400, 0x800}));
    EXPECT_EQ(test.message(), "Srch: B");
    EXPECT_TRUE(names_of(test).Backspace());
    names_of(test).EndSearch();
    EXPECT_FALSE(names_of(test).Backspace());
    EXPECT_EQ(test.message(), "");
    canvas.taskList->Clear(true);
    Resort();
    EXPECT_EQ(selected(test), "");
}

TEST_F(TaskList, ThePictureScrollsWithTheCurrentName) {
    std::vector<std::string> names;
    for (int i = 0; i < 100; ++i) names.push_back("N" + std::to_string(100 + i));
    OpenNamed(names);
    _LaCanvasData& canvas = *test.canvas;
    EXPECT_TRUE(names_of(test).Key(MslKey::End, false, false));
    EXPECT_EQ(canvas.view.verticalOffset + static_cast<int>(canvas.graph->vertical.visible()),
              100 * canvas.looks.rowHeight);
    EXPECT_EQ(selected(test), "N199 ");
    names_of(test).Type("N12");
    EXPECT_EQ(canvas.view.verticalOffset, 20 * canvas.looks.rowHeight);
    names_of(test).DragTo(canvas.looks.rowHeight + 1);
    EXPECT_EQ(selected(test), "N120 N121 ");
}

TEST_F(TaskList, TipsSayWhatARowIs) {
    OpenNamed({"B@y", "B@x", ""});
    _LaCanvasData& canvas = *test.canvas;
    const auto tip = [&](int row) { return names_of(test).Tip(row * canvas.looks.rowHeight + 1); };
    EXPECT_EQ(tip(0), "Non-task object \"B\", which has 2(out of 2) children being shown");
    EXPECT_EQ(tip(1), "Task \"B@x\"(0x800), Priority = 0x5");
    EXPECT_EQ(tip(3), "Task 0x400, Priority = Unknown");
    EXPECT_EQ(tip(9), "");
    laTask_Hide(canvas, *row(test, "x"));
    EXPECT_EQ(tip(0), "Non-task object \"B\", which has 1(out of 2) children being shown");
    canvas.axis.timeMode = Time_Tick;
    EXPECT_EQ(tip(1), "B@y");
}

TEST_F(TaskList, OnlyTheWindowShowsWhatIsSelected) {
    OpenNamed({"A", "B"});
    _LaCanvasData& canvas = *test.canvas;
    names_of(test).Click(50, canvas.looks.rowHeight + 1, 1, false, false);
    const auto filled = [&](bool inWindow) {
        test.surface.forget();
        names_of(test).Draw(test.surface, 150, 500,
                            inWindow ? laNames::Look::Window : laNames::Look::Picture);
        return test.surface.of(SurfaceOp::Fill).size();
    };
    EXPECT_EQ(filled(true), 1u);
    EXPECT_EQ(filled(false), 0u);
    names_of(test).Focus(true);
    filled(true);
    EXPECT_EQ(test.surface.of(SurfaceOp::Line).size(), 4u);
}

TEST_F(TaskList, KernelGroupTakesNamesWithoutSeparatorOnKorvantisOnly) {
    TestCanvas other;
    struct Case {
        int os;
        bool option, flat;
        const char* name;
        std::vector<std::string> components;
    };
    for (const Case& one :
         {Case{Os_Korvantis, true, false, "T", {"Kernel", "T"}},
          Case{Os_Korvantis, true, false, "A@T", {"A", "T"}}, Case{Os_Korvantis, false, false, "T", {"T"}},
          Case{Os_ThreadX, true, false, "T", {"T"}}, Case{Os_Korvantis, true, true, "T", {"Kernel@T"}},
          Case{Os_Other, false, true, "A@T", {"A@T"}}}) {
        other.canvas->source.osKind = one.os;
        other.canvas->list.kernelGroup = one.option;
        other.canvas->list.flatView = one.flat;
        const LaList& list = other.canvas->list;
        EXPECT_EQ(laTask_MakePath(list, one.name, laTask_UsesKernel(list, other.canvas->source)).components,
                  one.components);
    }
}

TEST_F(TaskList, AgentSumsUpWhatHiddenObjectsExecute) {
    Legend legend = test_legend();
    legend.misc.showHiddenAgent = true;
    std::vector<TestEvent> events = {name_event(0, 0x400, "A"), name_event(0, 0x800, "B"),
                                     name_event(0, 0xC00, "C")};
    uint32_t id = 0;
    for (mt_Time time = 10; time < 100; time += 10, id = (id + 1) % 3)
        events.push_back({time, mt_TaskChange, 0, words({(id + 1) << 10, 0})});
    ASSERT_TRUE(test.Open(events, "ThreadX", std::move(legend)));
    test.ShowAll();
    EXPECT_EQ(rows(test), "A B C __VRL_Agent_For_Hidden_Tasks__");
    const laItem_Line& agent = test.canvas->items.lanes[test.canvas->items.hiddenAgent];
    EXPECT_TRUE(agent.segments.empty());
    test.canvas->taskList->SetHiddenPaths({laPath{{"A"}, false, {}}, laPath{{"B"}, false, {}}});
    Resort();
    const auto& a = laCanvas_FindLane(test.canvas->items, 0x400)->segments;
    const auto& b = laCanvas_FindLane(test.canvas->items, 0x800)->segments;
    double shown = 0, hidden = 0;
    for (const auto* segments : {&a, &b})
        for (const LaLnSeg& segment : *segments)
            if (test.canvas->looks.statusLooks[static_cast<size_t>(segment.status)].isExecution)
                hidden += segment.t1 - segment.t0;
    for (const LaLnSeg& segment : agent.segments) shown += segment.t1 - segment.t0;
    ASSERT_GT(hidden, 0);
    EXPECT_NEAR(shown, hidden, 1e-12);
    EXPECT_LT(agent.segments.size(), a.size() + b.size());
    EXPECT_EQ(test.canvas->taskList->RowColour(*row(test, "__VRL_Agent_For_Hidden_Tasks__")), 0x400000u);
    EXPECT_EQ(laPicture_RowIds(*test.canvas), (std::vector<std::optional<uint32_t>>{0xC00u, std::nullopt}));
}

TEST_F(TaskList, TheAgentOfSeveralProcessorsIsTheirUnion) {
    Legend legend = test_legend();
    legend.misc.showHiddenAgent = true;
    std::vector<TestEvent> events;
    for (uint32_t id : {0x400u, 0x401u, 0x800u, 0x801u})
        events.push_back(name_event(0, id, gen_format("t%x", id)));
    // The second processor switches often while the first one runs one task all the time.
    events.push_back({5, mt_TaskChange, 0, words({0x400, 0})});
    for (mt_Time time = 10; time < 200; time += 10)
        events.push_back({time, mt_TaskChange, 0, words({time % 20 ? 0x401u : 0x801u, 0})});
    ASSERT_TRUE(test.Open(events, "KORVANTIS", std::move(legend)));
    test.ShowAll();
    test.canvas->taskList->SetHiddenPaths({laTask_PatternPath("t*")});
    Resort();
    const laItem_Line& agent = test.canvas->items.lanes[test.canvas->items.hiddenAgent];
    ASSERT_EQ(agent.segments.size(), 1u);
    EXPECT_EQ(agent.segments[0].t1, test.canvas->source.totalLength);
}

TEST_F(TaskList, TheColumnIsAsWideAsTheNamesInViewNeed) {
    std::vector<std::string> names(40, "x");
    for (size_t i = 0; i < names.size(); ++i) names[i] = gen_format("t%02zu", i);
    names[30] = "t30 which has a long name of its own";
    OpenNamed(names);
    const int height = 10 * test.canvas->looks.rowHeight;
    const auto width = [&](int total) {
        return laPicture_NameWidth(*test.canvas, test.surface, total, height);
    };
    EXPECT_EQ(width(1200), 100) << "the long one is out of view";
    test.canvas->view.verticalOffset = 25 * test.canvas->looks.rowHeight;
    EXPECT_GT(width(1200), 36 * 6);
    EXPECT_EQ(width(600), 200) << "a third";
    test.canvas->view.verticalOffset = 31 * test.canvas->looks.rowHeight;
    EXPECT_EQ(width(1200), 100);
    EXPECT_GT(laPicture_GraphLeft(*test.canvas, test.surface, 1200), 36 * 6) << "of all rows";
}

TEST_F(TaskList, NamesAreCutAtACharacterAndStandBesideTheirLanes) {
    EXPECT_EQ(laNames_Elide(test.surface, "abcdef", 42), "abcdef");
    EXPECT_EQ(laNames_Elide(test.surface, "abcdef", 41), "abcd\xE2\x80\xA6");
    EXPECT_EQ(laNames_Elide(test.surface, "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F", 21),
              "\xC3\xA4\xC3\xB6\xE2\x80\xA6");
    EXPECT_EQ(laNames_Elide(test.surface, "abc", 3), "");
    OpenNamed({"B@y", "A@x", "bad\xFFname"});
    test.surface.forget();
    names_of(test).Draw(test.surface, 150, 500);
    EXPECT_EQ(test.surface.texts(), (std::vector<std::string>{"A", "x", "B", "y", "bad\xEF\xBF\xBDname"}));
    EXPECT_EQ(names_of(test).RowAt(test.canvas->looks.rowHeight)->name, "x");
    EXPECT_EQ(names_of(test).RowAt(5 * test.canvas->looks.rowHeight), nullptr);
    EXPECT_TRUE(names_of(test).HitsMark(*row(test, "A"), 6));
    EXPECT_FALSE(names_of(test).HitsMark(*row(test, "x"), 20));
}

}  // namespace
