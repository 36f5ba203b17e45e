// The rows of processors: what they are made of, where they stand, how they look, what the pointer finds.
#include <gtest/gtest.h>

#include <random>

#include "chronoweave/traxfunc/canvas/picture.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/draw/draw_processors.h"
#include "chronoweave/traxfunc/draw/pixel_surface_testing.h"
#include "chronoweave/traxfunc/input/navigate.h"
#include "chronoweave/traxfunc/input/pointer.h"
#include "chronoweave/traxfunc/input/processor_hit.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxfunc/list/names.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

class ProcessorRows : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        canvas.list.processorRows = true;
    }
    void TearDown() override { gen_set_console_sink({}); }

    // Objects of these names, ids from 0x400 on with the processor in the low bits; then they run, a tick
    // each: the given ones in turn.
    struct Object {
        const char* name;
        uint32_t processor;
    };
    void Open(const std::vector<Object>& objects, const std::vector<uint32_t>& turns,
              const char* os = "Korvantis") {
        std::vector<TestEvent> events;
        std::vector<uint32_t> ids;
        for (const Object& one : objects) {
            ids.push_back(static_cast<uint32_t>(ids.size() + 1) * 0x400 + one.processor);
            events.push_back(name_event(0, ids.back(), one.name));
        }
        mt_Time time = 0;
        for (const uint32_t turn : turns) events.push_back(switch_to(time += 100, ids[turn]));
        ASSERT_TRUE(test.Open(events, os));
        test.ShowAll();
        laCanvas_Resort(canvas);
    }
    // Names of the rows, those of processors with a mark.
    std::string Rows() const {
        std::string all;
        for (const MslObjectEntry* entry : canvas.taskList->rows()) {
            const auto own = std::ranges::find(canvas.items.processors.list, entry->row, &LaProcessor::row);
            all += (all.empty() ? "" : " ") + std::string(static_cast<size_t>(entry->depth), '.') +
                   canvas.taskList->RowText(*entry, 0) +
                   (own == canvas.items.processors.list.end() ? "" : "!");
        }
        return all;
    }
    // The picture of all rows, as colours.
    PixelSurface Painted() {
        PixelSurface pixels(canvas.graph->width, canvas.graph->height);
        test.graph.surface = &pixels;
        laCanvas_Repaint(canvas);
        test.graph.surface = &test.surface;
        return pixels;
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(ProcessorRows, HeadTheGroupOfTheirObjectsOrStandAtTheTop) {
    struct Case {
        const char* what;
        std::vector<Object> objects;
        const char* rows;
    };
    const Case cases[] = {
        {"a group each", {{"CPU0@a", 0}, {"CPU0@b", 0}, {"CPU1@a", 1}}, "CPU0! .a .b CPU1! .a"},
        {"no groups", {{"a", 0}, {"b", 1}}, "CPU 0! CPU 1! a b"},
        {"one object outside", {{"G@a", 0}, {"b", 0}, {"H@c", 1}}, "CPU 0! G .a H! .c b"},
        {"the outermost of nested ones", {{"A@x@a", 0}, {"B@x@b", 1}}, "A! .x ..a B! .x ..b"},
        {"inside a common one", {{"A@x@a", 0}, {"A@y@b", 1}}, "A .x! ..a .y! ..b"},
        {"two in one group", {{"G@a", 0}, {"G@b", 1}}, "CPU 1! G! .a .b"},
        {"a group that is an object", {{"G", 0}, {"G@a", 0}}, "CPU 0! G .a"},
    };
    for (const Case& one : cases) {
        std::vector<uint32_t> turns;
        for (uint32_t i = 0; i < 3 * one.objects.size(); ++i)
            turns.push_back(i % static_cast<uint32_t>(one.objects.size()));
        Open(one.objects, turns);
        EXPECT_EQ(Rows(), one.rows) << one.what;
    }
    canvas.list.flatView = true;
    laCanvas_Resort(canvas);
    EXPECT_EQ(Rows(), "CPU 0! G G@a");
    const auto ids = laPicture_RowIds(canvas);
    EXPECT_EQ(ids.size(), 3u);
    EXPECT_FALSE(ids[0]);
    canvas.list.processorRows = false;
    laCanvas_Resort(canvas);
    EXPECT_EQ(Rows(), "G G@a");
    EXPECT_TRUE(canvas.items.processors.list.empty());
}

TEST_F(ProcessorRows, AnUnknownSystemHasOne) {
    Open({{"a", 0}, {"b", 1}}, {0, 1, 0, 1}, "ThreadX");
    EXPECT_EQ(Rows(), "CPU 0! a b");
}

// Against a look at every lane at many times.
TEST_F(ProcessorRows, RunsAreWhoExecutedLast) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        ASSERT_TRUE(test.Open(random_events(seed, 1500), "Korvantis"));
        test.ShowAll();
        laCanvas_Resort(canvas);
        std::mt19937 random(seed);
        for (const LaProcessor& one : canvas.items.processors.list) {
            double busy = 0;
            for (size_t i = 0; i < one.runs.size(); ++i) {
                EXPECT_LE(one.runs[i].t0, one.runs[i].t1);
                if (i > 0) {
                    EXPECT_LE(one.runs[i - 1].t1, one.runs[i].t0);
                }
                EXPECT_DOUBLE_EQ(one.runs[i].before, busy);
                busy += one.runs[i].t1 - one.runs[i].t0;
            }
            for (int look = 0; look < 300; ++look) {
                const double time =
                    canvas.source.totalLength * (static_cast<int>(random() % 100000) + 0.37) / 1e5;
                uint32_t expected = laNoLane;
                double since = -1;
                for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i) {
                    const laItem_Line& lane = canvas.items.lanes[i];
                    if ((lane.objectId & 0x3FF) != one.key) continue;
                    for (const LaLnSeg& segment : lane.segments)
                        if (canvas.looks.statusLooks[static_cast<size_t>(segment.status)].isExecution &&
                            segment.t0 <= time && time < segment.t1 && segment.t0 > since) {
                            expected = i;
                            since = segment.t0;
                        }
                }
                const size_t next = laProcessor_FirstFrom(one, time);
                const bool runs = next > 0 && one.runs[next - 1].t1 > time;
                // One that was taken over does not come back when the other stops.
                if (runs) {
                    EXPECT_EQ(one.runs[next - 1].t0, since) << seed;
                }
                if (expected == laNoLane) {
                    EXPECT_FALSE(runs) << seed;
                }
            }
        }
    }
}

TEST_F(ProcessorRows, SegmentsHaveTheColourOfTheirObjectAndIdleIsBlank) {
    Open({{"CPU0@idle", 0}, {"CPU0@a", 0}, {"CPU0@b", 0}}, {1, 0, 2, 0, 1, 1, 2});
    ASSERT_EQ(Rows(), "CPU0! .a .b .idle");
    const PixelSurface pixels = Painted();
    const int y = canvas.looks.rowHeight / 2;
    const double pixel = canvas.graph->width / canvas.source.totalLength;
    for (const auto& [time, id] : {std::pair{0.19, 0x800u}, {0.39, 0xC00u}, {0.59, 0x800u}, {0.69, 0x800u}})
        EXPECT_EQ(pixels.at(static_cast<int>(time * pixel), y), laProcessor_Colour(id)) << time;
    for (const double time : {0.29, 0.49})
        EXPECT_EQ(pixels.at(static_cast<int>(time * pixel), y), 0xFFFFFFu) << time;
    EXPECT_NE(laProcessor_Colour(0x800), laProcessor_Colour(0xC00));
    // A collapsed group shows it too.
    ASSERT_TRUE(canvas.taskList->SetCollapsed(*canvas.taskList->rows()[0], true));
    laCanvas_Relayout(canvas);
    EXPECT_EQ(Rows(), "CPU0!");
    EXPECT_EQ(Painted().at(static_cast<int>(0.19 * pixel), y), laProcessor_Colour(0x800));
}

TEST_F(ProcessorRows, WhereManyRunTheLoadShows) {
    std::vector<uint32_t> turns;
    for (uint32_t i = 0; i < 4000; ++i) turns.push_back(i < 2000 ? i % 2 : i % 4 == 0 ? 1 : 0);
    Open({{"CPU0@idle", 0}, {"CPU0@a", 0}}, turns);
    const PixelSurface pixels = Painted();
    const auto height = [&](int x) {
        int high = 0;
        for (int y = 0; y < canvas.looks.rowHeight - 3; ++y) high += pixels.at(x, y) != 0xFFFFFF;
        return high;
    };
    const int full = canvas.looks.rowHeight - 5;
    EXPECT_NEAR(height(240), full / 2.0, 1);
    EXPECT_NEAR(height(740), full / 4.0, 1);
    const std::string tip = laPointer_Tip(canvas, 240, 5);
    EXPECT_EQ(tip.find("CPU0 is busy 5"), 0u) << tip;
    EXPECT_NE(tip.find("% \"CPU0@a\""), std::string::npos) << tip;
}

TEST_F(ProcessorRows, ThePointerTellsWhoRunsAndFindsItsRow) {
    Open({{"CPU0@idle", 0}, {"CPU0@a", 0}, {"CPU0@b", 0}}, {1, 0, 2, 1, 0});
    const double pixel = canvas.graph->width / canvas.source.totalLength;
    const int x = static_cast<int>(0.35 * pixel);
    EXPECT_EQ(
        laPointer_Tip(canvas, x, 5),
        "Task \"CPU0@b\" runs on CPU0 from 0.3 to 0.4 with length 0.1 (in Seconds)\nafter \"CPU0@idle\"");
    EXPECT_EQ(laPointer_Tip(canvas, static_cast<int>(0.45 * pixel), 5),
              "Task \"CPU0@a\" runs on CPU0 from 0.4 to 0.5 with length 0.1 (in Seconds)\nafter \"CPU0@b\"");
    EXPECT_EQ(laPointer_Tip(canvas, static_cast<int>(0.25 * pixel), 5), "") << "idle";
    laPointer pointer(canvas);
    std::vector<laItemRef> opened;
    canvas.calls.openDetail = [&](const laItemRef& item) { opened.push_back(item); };
    const auto selected = [&] {
        const auto entries = canvas.taskList->SelectedEntries();
        return entries.size() == 1 ? canvas.taskList->RowText(*entries[0], 0) : std::string("none");
    };
    pointer.Press({x, 5, 0, 2, laButton_Left});
    EXPECT_EQ(selected(), "b");
    ASSERT_TRUE(canvas.taskList->SetCollapsed(*canvas.taskList->rows()[0], true));
    laCanvas_Relayout(canvas);
    pointer.Press({static_cast<int>(0.45 * pixel), 5, 0, 2, laButton_Left});
    EXPECT_EQ(Rows(), "CPU0! .a .b .idle") << "the group opens";
    EXPECT_EQ(selected(), "a");
    canvas.taskList->SetHiddenPaths({{{"CPU0", "b"}, false, {}}});
    canvas.taskList->NumberRows();
    laCanvas_Relayout(canvas);
    pointer.Press({x, 5, 0, 2, laButton_Left});
    EXPECT_EQ(test.message(), "Task \"CPU0@b\" is hidden.");
    EXPECT_TRUE(opened.empty());
}

TEST_F(ProcessorRows, ATipThatCouldNotTellAllOfARunCompletesItself) {
    std::vector<TestEvent> events = {name_event(0, 0x400, "a"), name_event(0, 0x800, "b"),
                                     switch_to(50, 0x800), switch_to(100, 0x400)};
    for (mt_Time tick = 101; tick < 30000; ++tick)
        events.push_back(status_change(tick, 0x800, tick % 2 ? mt_Pend : mt_Ready));
    events.push_back(switch_to(30000, 0x800));
    ASSERT_TRUE(test.Open(events, "Korvantis"));
    canvas.options.prefetch = false;
    canvas.axis.timeMode = Time_Second;
    laCanvas_ShowRange(canvas, 15, 15.01);
    laCanvas_Resort(canvas);
    const auto hit = laProcessor_HitTest(canvas, 500, 5);
    ASSERT_TRUE(hit && hit->run);
    const std::string first = laProcessor_Tip(canvas, *hit, 0);
    EXPECT_EQ(first.find("Task \"a\" runs on CPU 0 from before "), 0u) << first;
    std::optional<std::string> text;
    for (int i = 0; i < 1000 && (text = laTip_More(canvas, 0)) && text->empty(); ++i) {
    }
    ASSERT_TRUE(text);
    EXPECT_EQ(text->find("Task \"a\" runs on CPU 0 from 0.1 to 30 with length 29.9 (in "), 0u) << *text;
    EXPECT_FALSE(laTip_More(canvas)) << "nothing is left";
    EXPECT_EQ(laPointer_Tip(canvas, 500, 5), *text);
}

TEST_F(ProcessorRows, StayAtTheEdgeWhileTheirGroupIsScrolled) {
    std::vector<Object> objects;
    std::vector<std::string> names;
    for (int i = 0; i < 12; ++i)
        names.push_back("CPU" + std::to_string(i / 6) + "@t" + std::to_string(i % 6));
    for (size_t i = 0; i < names.size(); ++i) objects.push_back({names[i].c_str(), i < 6 ? 0u : 1u});
    std::vector<uint32_t> turns;
    for (uint32_t i = 0; i < 40; ++i) turns.push_back(i % 12);
    Open(objects, turns);
    const int row = canvas.looks.rowHeight;
    laCanvas_Resized(canvas, 1000, 5 * row + 40);
    struct Case {
        int offset, processor, top;
    };
    for (const Case& one : {Case{1, 0, 0},
                            {3 * row, 0, 0},
                            {6 * row, 0, 0},
                            {6 * row + 4, 0, -4},
                            {7 * row, -1, 0},
                            {7 * row + 1, 1, 0}}) {
        canvas.view.verticalOffset = one.offset;
        const auto pinned = laPinned_Rows(canvas.items, canvas.looks, canvas.view, 5 * row);
        ASSERT_EQ(pinned.size(), one.processor < 0 ? 0u : 1u) << one.offset;
        if (one.processor < 0) continue;
        EXPECT_EQ(static_cast<int>(pinned[0].processor), one.processor) << one.offset;
        EXPECT_EQ(pinned[0].top, one.top) << one.offset;
    }
    // Names and pointer go by what is seen.
    canvas.view.verticalOffset = 3 * row;
    const laNames shownNames(*canvas.taskList, canvas.looks, canvas.view, test.graph);
    EXPECT_EQ(shownNames.RowAt(3), canvas.taskList->rows()[0]);
    EXPECT_EQ(shownNames.RowAt(row + 3), canvas.taskList->rows()[4]);
    EXPECT_TRUE(laProcessor_HitTest(canvas, 10, 3));
    EXPECT_FALSE(laProcessor_HitTest(canvas, 10, row + 3));
    RecordingSurface column(200, 5 * row);
    shownNames.Draw(column, 200, 5 * row);
    const auto texts = column.texts();
    EXPECT_NE(std::ranges::find(texts, "CPU0"), texts.end());
}

// Each processor is seen, wherever one scrolls.
TEST_F(ProcessorRows, InAWindowThoseBelowStayAtTheLowerEdge) {
    std::vector<Object> objects;
    std::vector<std::string> names;
    for (int i = 0; i < 60; ++i)
        names.push_back("CPU" + std::to_string(i / 12) + "@t" + std::to_string(10 + i % 12));
    for (size_t i = 0; i < names.size(); ++i)
        objects.push_back({names[i].c_str(), static_cast<uint32_t>(i / 12)});
    std::vector<uint32_t> turns;
    for (uint32_t i = 0; i < 120; ++i) turns.push_back(i % 60);
    Open(objects, turns);
    const int row = canvas.looks.rowHeight,
              height = 18 * row;  // three of them at most; heads are 13 rows apart
    laCanvas_Resized(canvas, 1000, height + 40);
    struct Case {
        int offset;
        const char* pinned;
    };
    const Case cases[] = {{0, "2:15 3:16 4:17"},
                          {1 * row, "0:0 2:15 3:16 4:17"},
                          {-row / 2 + 2 * row, "0:0 2:15 3:16 4:17"},
                          {24 * row, "1:0 4:17"},
                          {36 * row, "2:0"},
                          {47 * row, "3:0"}};
    const auto pinnedAt = [&](int offset) {
        canvas.view.verticalOffset = offset;
        std::string all;
        for (const laPinnedRow& one : laPinned_Rows(canvas.items, canvas.looks, canvas.view, height))
            all += (all.empty() ? "" : " ") + std::to_string(one.processor) + ':' +
                   std::to_string(one.top / row);
        return all;
    };
    canvas.view.pinEdges = LaPinEdges::Both;
    for (const Case& one : cases) EXPECT_EQ(pinnedAt(one.offset), one.pinned) << one.offset;
    // However it is scrolled, none stands lower than its own place, and none over another.
    for (int offset = 0; offset <= 47 * row; offset += 3) {
        canvas.view.verticalOffset = offset;
        int free = INT_MIN;
        for (const laPinnedRow& one : laPinned_Rows(canvas.items, canvas.looks, canvas.view, height)) {
            const int own = canvas.items.processors.list[one.processor].row * row - offset;
            EXPECT_GE(one.top, free);
            if (one.top > height / 2) {
                EXPECT_LT(one.top, own) << offset;
            }
            free = one.top + row;
        }
    }
    canvas.view.verticalOffset = 0;
    EXPECT_EQ(laProcessor_AtRow(canvas.items, canvas.looks, canvas.view, height, height - 1),
              &canvas.items.processors.list[4]);
    const laNames shownNames(*canvas.taskList, canvas.looks, canvas.view, test.graph);
    EXPECT_EQ(shownNames.BandOf(*canvas.taskList->rows()[17]).end, 0) << "covered";
    canvas.view.pinEdges = LaPinEdges::Upper;
    EXPECT_EQ(pinnedAt(0), "");
}

TEST_F(ProcessorRows, NamesOfObjectsWithNothingInTheViewAreWeak) {
    Open({{"a", 0}, {"b", 0}}, {0, 1, 0, 1, 0});
    RecordingSurface column(200, 100);
    const laNames names(*canvas.taskList, canvas.looks, canvas.view, test.graph);
    const auto ink = [&](const std::string& name) {
        column.forget();
        names.Draw(column, 200, 100);
        for (const SurfaceOp& op : column.of(SurfaceOp::Text))
            if (op.text == name) return op.colour;
        return NoColour;
    };
    EXPECT_EQ(ink("a"), column.foreground());
    // As if it had ended early: only its first status, no event behind it.
    laItem_Line& lane = canvas.items.lanes[0];
    lane.segments.kept().resize(1);
    const double first = lane.icons.time(0);
    lane.icons.Clear();
    lane.icons.Append(first, 0);
    int lists = 0;
    test.graph.listChanged = [&] { ++lists; };
    laCanvas_ShowRange(canvas, 0, 0.2, {.paint = true});
    EXPECT_EQ(ink("a"), column.foreground());
    lists = 0;
    laCanvas_ScrollColumns(canvas, 1200);
    EXPECT_GT(lists, 0) << "the names are painted anew";
    EXPECT_NE(ink("a"), column.foreground());
    EXPECT_EQ(ink("b"), column.foreground());
}

}  // namespace
