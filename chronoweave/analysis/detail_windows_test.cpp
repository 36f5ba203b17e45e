#include "chronoweave/analysis/detail_windows.h"

#include <gtest/gtest.h>

#include "chronoweave/analysis/detail_testing.h"
#include "chronoweave/analysis/detail_walk.h"
#include "chronoweave/analysis/object_tree.h"
#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/traxfunc/input/actions.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "windlib/dialog/dialog_testing.h"

namespace {

class DetailTest : public CanvasWithDetails {
  protected:
    void Open(const std::vector<TestEvent>& events, const std::string& os = "KORVANTIS",
              Legend legend = test_legend()) {
        OpenTrace(events, os, std::move(legend));
    }
    DialogModel& Window() { return *host.windows.back(); }
    std::string Text(const char* item) { return Window().item(item).text; }
    bool Press(const char* button) { return Window().press(button); }

    void OpenStatus(uint32_t object, double time) {
        uint32_t at = laNoLane;
        ASSERT_TRUE(laCanvas_FindLane(canvas.items, object, &at));
        for (size_t i = 0; i < canvas.items.lanes[at].segments.size(); ++i)
            if (canvas.items.lanes[at].segments[i].t0 == time)
                return canvas.calls.openDetail({laItemType::Line, at, i});
        FAIL() << "no stretch at " << time;
    }
    void OpenEvent(size_t icon) { canvas.calls.openDetail({laItemType::Bitmap, 0, icon}); }
};

TEST(DetailDescriptions, SurviveFontsAndSizes) {
    for (const char* term : {"Task", "Function or Coroutine", "R&D"}) {
        for (const DialogDescription& d :
             {detail_StatusWindow(term), detail_EventWindow(term, true), detail_EventWindow(term, false),
              detail_SwitchWindow(term), detail_TaskWindow(term), object_InfoWindow(term)})
            EXPECT_EQ(dialog_CheckAll(d), std::vector<std::string>()) << d.name << " of " << term;
    }
}

// Object 0x400: Ready at 0, Pend at 2.0, Ready at 3.0, Suspend at 4.0, EvWait (invisible) at 5.0. Object
// 0x800 changes at 2.0 too.
std::vector<TestEvent> status_trace() {
    return {name_event(0, 0x400, "pump"),         status_change(2000, 0x800, mt_Ready),
            status_change(2000, 0x400, mt_Pend),  status_change(2500, 0x800, mt_Pend),
            status_change(3000, 0x400, mt_Ready), status_change(4000, 0x400, mt_Suspend),
            status_change(5000, 0x400, 7),        user(6000, 0x800, 1)};
}

TEST_F(DetailTest, AStatusWindowSaysWhatTheStretchIs) {
    Open(status_trace());
    OpenStatus(0x400, 2.0);
    const std::string title = Window().title();
    EXPECT_EQ(title.substr(0, 4), "S-W ");
    EXPECT_NE(title.find(" for '" + canvas.source.canvasName + "'"), std::string::npos);
    EXPECT_EQ(Text("tf_status"), "Pend");
    EXPECT_EQ(Text("tf_taskid"), "0x400 (pump)");
    EXPECT_EQ(Text("tf_ftime"), "2 Second");
    EXPECT_EQ(Text("tf_ttime"), "3 Second");
    EXPECT_EQ(Text("tf_length"), "1 Second");
    EXPECT_EQ(Window().item("t_taskid").text, "Task ID");
    EXPECT_EQ(canvas.calls.viewWindows, std::vector<DialogModel*>{&Window()});
    canvas.axis.timeMode = Time_Millisecond;
    OpenStatus(0x800, 2.0);
    EXPECT_EQ(Text("tf_taskid"), "0x800");
    EXPECT_EQ(Text("tf_ftime"), "2000 Millisecond");
    // Both of one time: each walks along its own object.
    Press("g_next");
    EXPECT_EQ(Text("tf_ftime"), "2500 Millisecond");
    EXPECT_NE(Window().title(), title);
    laCanvas_CloseViews(canvas);
    EXPECT_TRUE(host.windows[0]->isClosed() && host.windows[1]->isClosed());
    EXPECT_TRUE(canvas.calls.viewWindows.empty());
}

TEST_F(DetailTest, StatusWalks) {
    const struct {
        const char* button;
        double from, to;  // to -1: nothing found
    } rows[] = {{"g_next", 2, 3},  {"g_prev", 3, 2},  {"s_next", 0, 3},  {"s_prev", 3, 0}, {"g_next", 4, 5},
                {"g_next", 5, -1}, {"s_next", 3, -1}, {"s_prev", 2, -1}, {"g_prev", 2, 0}, {"g_prev", 0, -1}};
    Open(status_trace());
    for (const double length : {canvas.source.totalLength, 0.4}) {
        for (const auto& row : rows) {
            test.ShowAll();
            OpenStatus(0x400, row.from);
            // A short view ahead of the walk leaves the stretch out of what is loaded, or cut at its edges.
            canvas.options.prefetch = false;
            laCanvas_ClearItems(canvas);
            canvas.items.cachedLow = canvas.items.cachedHigh = 0;
            canvas.view.viewHigh = canvas.view.viewLow;
            laCanvas_ShowRange(canvas, length < 1 ? 5.5 : 0, length < 1 ? 5.9 : length);
            const int beeps = test.beeps;
            ASSERT_TRUE(Press(row.button));
            const std::string what = row.button + std::string(" from ") + std::to_string(row.from) +
                                     " in a view of " + std::to_string(length);
            EXPECT_EQ(Text("tf_ftime").substr(0, 1),
                      std::to_string(row.to < 0 ? row.from : row.to).substr(0, 1))
                << what;
            EXPECT_EQ(test.message(), row.to < 0 ? "No more required object." : "") << what;
            EXPECT_EQ(Window().message(), test.message());
            EXPECT_EQ(test.beeps - beeps, row.to < 0 ? 1 : 0) << what;
            EXPECT_TRUE(row.to < 0 || canvas.marks.cursor[0] == row.to) << what;
        }
    }
}

TEST_F(DetailTest, GoMovesTheCursorAndSaysWhatIsInvisible) {
    Open(status_trace());
    laCanvas_FindLane(canvas.items, 0x400)->hidden = false;
    OpenStatus(0x400, 4.0);
    Press("g_next");
    EXPECT_EQ(Text("tf_status"), "EvWait") << "an invisible status can be walked to";
    canvas.marks.cursor[0] = -100;
    Press("bt_go");
    EXPECT_EQ(canvas.marks.cursor[0], 5.0);
    EXPECT_LT(canvas.marks.cursor[1], 0) << "no selection comes of it";
    EXPECT_EQ(test.message(), "Status EvWait is invisible.");
    EXPECT_EQ(test.beeps, 1);
    Press("g_prev");
    Press("bt_go");
    EXPECT_EQ(test.message(), "");
}

TEST_F(DetailTest, SeveralChangesAtOneTimeDoNotStopAWalk) {
    std::vector<TestEvent> events = {status_change(0, 0x400, mt_Ready)};
    for (const uint16_t status : {mt_Pend, mt_Ready, mt_Pend, mt_Suspend, mt_Ready, mt_Pend})
        events.push_back(status_change(1000, 0x400, status));
    events.push_back(status_change(2000, 0x400, mt_Ready));
    events.push_back(status_change(3000, 0x400, mt_Suspend));
    Open(events);
    OpenStatus(0x400, 0);
    std::vector<std::string> forward;
    for (int i = 0; i < 12 && (forward.push_back(Text("tf_ftime")), true); ++i) {
        Press("g_next");
        if (!test.message().empty()) break;
    }
    EXPECT_EQ(forward.front(), "0 Second");
    EXPECT_EQ(forward.back(), "3 Second");
    EXPECT_LT(forward.size(), 12u);
    for (int i = 0; i < 12 && (Press("g_prev"), test.message().empty()); ++i) {
    }
    EXPECT_EQ(Text("tf_ftime"), "0 Second");
}

Legend wild_legend() {
    Legend legend = test_legend();
    for (LegendEvent& event : legend.events)
        if (event.type == mt_UserEvent) event.extraFormat = "value %4D";
    LegendEvent exact;
    exact.type = mt_UserEvent;
    exact.subtype = 5;
    exact.name = "Exact";
    exact.flags = 0;
    legend.events.push_back(exact);
    legend.BuildLookups();
    return legend;
}

TEST_F(DetailTest, AnEventWindowShowsNameCodesAndText) {
    Open({{0, mt_UserEvent, 9, words({0x400, 77})}, user(500, 0x800, 5), user(500, 0x400, 3)}, "KORVANTIS",
         wild_legend());
    OpenEvent(0);
    EXPECT_EQ(Window().title().substr(0, 4), "E-W ");
    EXPECT_EQ(Text("tf_name"),
              "Event " + std::to_string(mt_UserEvent) + "(Types=0x" + std::to_string(mt_UserEvent) + "/0x9)");
    EXPECT_EQ(Text("tf_comments"), "value 77");
    EXPECT_EQ(Text("tf_time"), "0 Second");
    Press("g_next");
    EXPECT_EQ(Text("tf_name"), "Exact");
    EXPECT_EQ(Text("tf_taskid"), "0x800");
    Press("bt_go");
    EXPECT_EQ(test.message(), "Event Exact is invisible.");
    EXPECT_EQ(canvas.marks.cursor[0], 0.5);
    Press("s_next");
    EXPECT_EQ(test.message(), "No more required object.");
    Press("g_prev");
    Press("te_next");
    EXPECT_EQ(Text("tf_time"), "0.5 Second");
    EXPECT_EQ(Text("tf_taskid"), "0x400");
    // No debugger: the choice stands disabled; on ThreadX it isn't there.
    EXPECT_EQ(Window().item("gotos").choices.size(), 2u);
    EXPECT_FALSE(Window().choose("gotos", gotoDebugger));
    EXPECT_TRUE(Window().choose("gotos", gotoCanvas));
    host.windows.clear();
    canvas.calls.viewWindows.clear();
    Open({user(0, 0x400, 1)}, "ThreadX");
    OpenEvent(0);
    EXPECT_EQ(Window().item("gotos").choices.size(), 1u);
}

// All events of a random trace, seen through views that hold few of them.
TEST_F(DetailTest, EventWalksVisitWhatAPlainListHolds) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        const std::vector<TestEvent> events = random_events(seed, 600);
        Open(events);
        struct Plain {
            uint32_t sequence, object;
            int32_t event;
        };
        std::vector<Plain> all;
        for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i) {
            const DetailEvent one = detail_EventOf(canvas, i);
            all.push_back({one.sequence, one.object, one.event});
        }
        ASSERT_EQ(all.size(), events.size());
        const DetailEvent first = detail_EventOf(canvas, 0);
        canvas.options.prefetch = false;
        for (const bool sameEvent : {false, true})
            for (const bool sameObject : {false, true}) {
                std::vector<uint32_t> expected, seen, back;
                for (const Plain& one : all)
                    if ((!sameEvent || one.event == first.event) &&
                        (!sameObject || one.object == first.object))
                        expected.push_back(one.sequence);
                laCanvas_ShowRange(canvas, 0, canvas.source.totalLength / 50);
                auto at = std::optional(first);
                DetailEvent last = first;
                for (; at && seen.size() <= all.size();
                     at = detail_StepEvent(canvas, last, sameEvent, sameObject, true)) {
                    last = *at;
                    seen.push_back(last.sequence);
                    EXPECT_TRUE(seen.size() == 1 || canvas.marks.cursor[0] == last.time);
                }
                for (at = last; at && back.size() <= all.size();
                     at = detail_StepEvent(canvas, last, sameEvent, sameObject, false)) {
                    last = *at;
                    back.insert(back.begin(), last.sequence);
                }
                EXPECT_EQ(seen, expected) << seed << sameEvent << sameObject;
                EXPECT_EQ(back, expected) << seed << sameEvent << sameObject;
            }
    }
}

// Every object's stretches of more than no length, from the first to the last and back, likewise.
TEST_F(DetailTest, StatusWalksVisitAllStretches) {
    for (unsigned seed = 11; seed <= 13; ++seed) {
        Open(random_events(seed, 500));
        std::vector<DetailStatus> stretches;
        for (uint32_t i = 0; i < canvas.items.lanes.size(); ++i)
            for (size_t s = 0; s < canvas.items.lanes[i].segments.size(); ++s)
                if (canvas.items.lanes[i].segments[s].t1 > canvas.items.lanes[i].segments[s].t0)
                    stretches.push_back(detail_StatusOf(canvas, {laItemType::Line, i, s}));
        canvas.options.prefetch = false;
        laCanvas_ShowRange(canvas, 0, canvas.source.totalLength / 20);
        for (size_t i = 0; i + 1 < stretches.size(); ++i) {
            if (stretches[i].object != stretches[i + 1].object) continue;
            for (const bool forward : {true, false}) {
                const DetailStatus& wanted = stretches[forward ? i + 1 : i];
                auto at = std::optional(stretches[forward ? i : i + 1]);
                // Stretches of no length may lie between.
                for (int steps = 0; at && at->time != wanted.time && steps < 20; ++steps)
                    at = detail_StepStatus(canvas, *at, false, forward);
                ASSERT_TRUE(at) << seed << " " << wanted.object << " " << wanted.time << forward;
                EXPECT_EQ(at->time, wanted.time);
            }
        }
    }
}

// Tasks of two processors that take turns; some switches fall on one time.
std::vector<TestEvent> switching(unsigned seed, size_t count) {
    std::mt19937 random(seed);
    std::vector<TestEvent> events;
    mt_Time time = 0;
    for (const uint32_t object : {0x400u, 0x800u, 0xC00u, 0x401u, 0x801u})
        events.push_back(status_change(0, object, mt_Ready));
    for (size_t i = 0; i < count; ++i) {
        time += random() % 3 == 0 ? 0 : 1 + random() % 20;
        const uint32_t cpu = random() % 2;
        events.push_back(
            {time, mt_TaskChange, 0, words({(1 + static_cast<uint32_t>(random()) % (3 - cpu)) << 10 | cpu})});
        if (random() % 4 == 0) events.push_back(user(time, 0x400, 1));
    }
    return events;
}

TEST_F(DetailTest, SwitchWalksVisitAllSwitches) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        Open(switching(seed, 150));
        std::vector<DetailSwitch> all;
        for (size_t i = 0; i < canvas.items.ctxLines.size(); ++i) all.push_back(detail_SwitchOf(canvas, i));
        ASSERT_GT(all.size(), 60u);
        canvas.options.prefetch = false;
        laCanvas_ShowRange(canvas, 0, canvas.source.totalLength / 10);
        const auto key = [](const DetailSwitch& one) {
            return gen_format("%.4f %x %x", one.time, one.fromObject, one.toObject);
        };
        std::vector<std::string> expected, seen, back;
        for (const DetailSwitch& one : all) expected.push_back(key(one));
        DetailSwitch last = all.front();
        for (auto at = std::optional(last); at && seen.size() < 2 * all.size();
             at = detail_StepSwitch(canvas, last, true)) {
            last = *at;
            seen.push_back(key(last));
        }
        EXPECT_EQ(seen, expected) << seed;
        last = all.back();
        for (auto at = std::optional(last); at && back.size() < 2 * all.size();
             at = detail_StepSwitch(canvas, last, false)) {
            last = *at;
            back.insert(back.begin(), key(last));
        }
        EXPECT_EQ(back, expected) << seed;
    }
}

// As many switches as fill the place that the list took for them, and one less and more.
TEST_F(DetailTest, NothingLiesBehindTheLastSwitchOrAheadOfTheFirst) {
    for (const uint32_t count : {1u, 2u, 255u, 256u, 257u, 512u}) {
        std::vector<TestEvent> events = {status_change(0, 0x400, mt_Ready),
                                         status_change(0, 0x800, mt_Ready)};
        for (uint32_t i = 0; i <= count; ++i)
            events.push_back({mt_Time{10} * (i + 1), mt_TaskChange, 0, words({i % 2 ? 0x800u : 0x400u})});
        Open(events);
        ASSERT_EQ(canvas.items.ctxLines.size(), count);
        for (const auto& [place, forward] : {std::pair{count - 1, true}, std::pair{0u, false}}) {
            const DetailSwitch shown = detail_SwitchOf(canvas, place);
            laCanvas_ClearCursors(canvas);
            EXPECT_FALSE(detail_StepSwitch(canvas, shown, forward)) << count << forward;
            EXPECT_LT(canvas.marks.cursor[0], 0) << "the cursor stays";
            if (count > 1) {
                const auto other = detail_StepSwitch(canvas, shown, !forward);
                ASSERT_TRUE(other) << count << forward;
                EXPECT_EQ(other->time, detail_SwitchOf(canvas, forward ? place - 1 : 1).time);
            }
        }
    }
}

TEST_F(DetailTest, ASwitchWindow) {
    Open(switching(9, 40));
    canvas.calls.openDetail({laItemType::Ctx, laNoLane, 3});
    const DetailSwitch shown = detail_SwitchOf(canvas, 3), next = detail_SwitchOf(canvas, 4);
    EXPECT_EQ(Window().title().substr(0, 5), "CS-W ");
    EXPECT_EQ(Text("tf_ftaskid"), gen_format("0x%x", shown.fromObject));
    EXPECT_EQ(Text("tf_ttaskid"), gen_format("0x%x", shown.toObject));
    EXPECT_EQ(Text("tf_ftime"), Text("tf_ttime"));
    Press("next");
    EXPECT_EQ(Text("tf_ttaskid"), gen_format("0x%x", next.toObject));
    EXPECT_EQ(canvas.marks.cursor[0], next.time);
    for (LegendStatus& status : canvas.looks.legend.statuses) status.visible = false;
    Press("bt_goto");
    EXPECT_EQ(test.message(), "Context switch is invisible.");
}

TEST_F(DetailTest, ATaskWindowFollowsTheObjectsOfTheCanvas) {
    Open({name_event(0, 0x400, "pump"), user(10, 0x800, 1), name_event(20, 0xC00, "valve")});
    OpenEvent(1);
    Press("bt_task");
    EXPECT_EQ(Text("tf_name"), "Task 0x800");
    EXPECT_EQ(Text("tf_id"), "0x800");
    EXPECT_EQ(Text("tf_priority"), "Unknown");
    Press("Prev");
    EXPECT_EQ(Text("tf_name"), "pump");
    EXPECT_EQ(Text("tf_priority"), "0x5");
    EXPECT_FALSE(Window().item("Prev").enabled);
    EXPECT_FALSE(Press("Prev"));
    Press("Next");
    EXPECT_TRUE(Window().item("Prev").enabled);
    Press("Next");
    EXPECT_EQ(Text("tf_name"), "valve");
    EXPECT_FALSE(Window().item("Next").enabled);
    // The canvas's objects change under the window.
    Window().setEnabled("Next", true);
    Press("Next");
    EXPECT_EQ(test.message(),
              "There is no required object for the task in the time range, please close the obsolete TASK "
              "window.");
    laCanvas_ClearItems(canvas);
    Press("Prev");
    EXPECT_EQ(test.message(),
              "The task does not exist in the time range, please close the obsolete TASK window.");
    EXPECT_EQ(Text("tf_name"), "valve");
}

TEST_F(DetailTest, TheInfoWindowShowsTheRelatives) {
    Legend legend = test_legend();
    Open({name_event(0, 0x400, "plant@north@pump"), name_event(1, 0x800, "plant@north@valve"),
          name_event(2, 0xC00, "plant@south"), name_event(3, 0x1000, "other")});
    laCanvas_Resort(canvas);
    canvas.calls.openInfo(0x800);
    const std::string start = "Task Info Window 0x";
    EXPECT_EQ(Window().title().substr(0, start.size()), start);
    const MScrollList& list = Window().list("list");
    std::vector<std::string> names;
    for (int row = 0; row < list.RowCount(); ++row)
        names.push_back(std::to_string(list.Level(row)) + list.Text(row, 0));
    EXPECT_EQ(names, (std::vector<std::string>{"0plant", "1north", "2pump", "2valve", "1south"}));
    EXPECT_EQ(list.SelectedRow(), 3);
    EXPECT_EQ(list.Text(3, 1), "0x800");
    EXPECT_EQ(list.tip(0), "Non-task object \"plant\", which has 2(out of 2) children being shown");
    EXPECT_EQ(list.tip(3), "Task \"plant@north@valve\"(0x800), Priority = 0x5");
    Window().list("list").ClickToggle(1);
    EXPECT_EQ(list.RowCount(), 3);
    Window().activate("list", 2);
    EXPECT_EQ(Text("tf_name"), "plant@south") << "the window about the object";
    const size_t open = host.windows.size();
    canvas.calls.openInfo(0x5400);
    canvas.axis.timeMode = Time_Tick;
    canvas.calls.openInfo(0x800);
    EXPECT_EQ(host.windows.size(), open);
}

}  // namespace
