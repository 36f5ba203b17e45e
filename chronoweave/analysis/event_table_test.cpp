#include "chronoweave/analysis/event_table.h"

#include <gtest/gtest.h>

#include "chronoweave/analysis/detail_testing.h"
#include "chronoweave/engine/engine_testing.h"
#include "chronoweave/traxfunc/input/legend_edit.h"
#include "chronoweave/traxfunc/input/pointer.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "windlib/dialog/dialog_testing.h"

namespace {

Legend text_legend() {
    Legend legend = test_legend();
    for (LegendEvent& event : legend.events)
        if (event.type == mt_UserEvent) event.extraFormat = "value %4D";
    LegendEvent exact = legend_event(mt_UserEvent, 5, "Take", 1);
    exact.extraFormat = "taken %4D";
    legend.events.push_back(exact);
    legend.BuildLookups();
    return legend;
}

// Ten events a second of two named objects, each with its number.
std::vector<TestEvent> numbered(size_t count, mt_Time every = 100) {
    std::vector<TestEvent> events = {name_event(0, 0x400, "Pump"), name_event(0, 0x800, "Valve")};
    for (uint32_t i = 0; i < count; ++i)
        events.push_back({i * every, mt_UserEvent, static_cast<uint16_t>(i % 4 == 0 ? 5 : 1),
                          words({i % 2 ? 0x400u : 0x800u, i})});
    return events;
}

class EventTableTest : public CanvasWithDetails {
  protected:
    void Open(const std::vector<TestEvent>& events) {
        OpenTrace(events, "KORVANTIS", text_legend());
        table.Sync();
    }
    std::string Cell(int row, int column) { return list.Text(row, column); }
    const std::string& Message() { return model.item("ts_info").text; }

    EventTable table{canvas};
    DialogModel& model = table.model();
    MScrollList& list = model.list("list");
};

TEST(EventTableDescription, SurvivesFontsAndSizes) {
    EXPECT_EQ(dialog_CheckAll(event_TableDescription()), std::vector<std::string>());
}

TEST_F(EventTableTest, RowsAreTheEventsOfTheView) {
    Open(numbered(20));
    EXPECT_EQ(list.RowCount(), 22);
    EXPECT_EQ(Message(), "22 events");
    EXPECT_EQ(list.Column(0).header[0], "Time (Seconds)");
    const struct {
        int row;
        const char* cells[5];
    } rows[] = {{0, {"0.000", "", "Pump", "Event 6(Types=0x6/0x0)", ""}},
                {2, {"0.000", "0.000", "Valve", "Take", "taken 0"}},
                {7, {"0.500", "0.100", "Pump", "Event 4(Types=0x4/0x1)", "value 5"}}};
    for (const auto& row : rows) {
        for (int i = 0; i < 5; ++i) EXPECT_EQ(Cell(row.row, i), row.cells[i]) << row.row;
    }
    EXPECT_FALSE(table.Sync()) << "nothing changed";
    laCanvas_ShowRange(canvas, 0.45, 0.95);
    EXPECT_TRUE(table.Sync());
    EXPECT_EQ(list.RowCount(), 5);
    EXPECT_EQ(Cell(0, 4), "value 5");
    EXPECT_EQ(Cell(0, 1), "") << "the one before it is not shown";
    canvas.axis.timeMode = Time_Millisecond;
    table.Sync();
    EXPECT_EQ(Cell(0, 0), "500");
    EXPECT_EQ(list.Column(0).header[0], "Time (Milliseconds)");
    // What the picture doesn't show isn't in the table.
    for (size_t row = 0; row < laLegend_RowCount(canvas); ++row)
        if (laLegend_Name(canvas, row).find("Take") != std::string::npos) laLegend_ToggleVisible(canvas, row);
    table.Sync();
    EXPECT_EQ(list.RowCount(), 4);
    laCanvas_Reset(canvas, laResetOf::Source);
    EXPECT_EQ(Cell(0, 0), "") << "the items are gone";
    table.Sync();
    EXPECT_EQ(list.RowCount(), 0);
}

TEST_F(EventTableTest, Filters) {
    Open(numbered(40));
    const struct {
        const char *field, *text;
        int rows;
    } cases[] = {{"tf_object", "pump", 21},     {"tf_object", "P*", 21},    {"tf_object", "p?m", 0},
                 {"tf_object", "*U*", 21},      {"tf_object", "x", 0},      {"tf_event", "TAKE", 10},
                 {"tf_event", "take*", 10},     {"tf_event", "*/0x1)", 30}, {"tf_event", "types", 32},
                 {"tf_text", "value 1?", 8},    {"tf_text", "taken", 10},   {"tf_text", "*3", 4},
                 {"tf_text", "  Value 33  ", 1}};
    for (const auto& one : cases) {
        EXPECT_TRUE(model.edit(one.field, one.text));
        EXPECT_EQ(list.RowCount(), one.rows) << one.field << " " << one.text;
        EXPECT_TRUE(table.Escape(one.field));
        EXPECT_FALSE(table.Escape(one.field));
        EXPECT_EQ(list.RowCount(), 42);
    }
    // All at once; the distance is that to the row above.
    model.edit("tf_object", "valve");
    model.edit("tf_event", "take");
    model.edit("tf_text", "*");
    EXPECT_EQ(list.RowCount(), 10);
    EXPECT_EQ(Cell(1, 1), "0.400");
    EXPECT_FALSE(table.Escape("list"));
    laCanvas_ShowRange(canvas, 0, 1);
    table.Sync();
    EXPECT_EQ(list.RowCount(), 3) << "filters stay with a new view";
}

TEST_F(EventTableTest, ARowMovesTheCursorAndAnIconChoosesItsRow) {
    Open(numbered(20));
    model.select("list", {7});
    EXPECT_EQ(canvas.marks.cursor[0], 0.5);
    const uint32_t marked = canvas.marks.markedEvent;
    EXPECT_EQ(marked, 8u);
    // The mark stays with its event in another view and behind a filter.
    laCanvas_ShowRange(canvas, 0.25, 0.9);
    table.Sync();
    ASSERT_EQ(model.selectedRow("list"), 2);
    EXPECT_EQ(Cell(2, 4), "value 5");
    model.edit("tf_object", "valve");
    EXPECT_EQ(model.selectedRow("list"), Dialog_NoRow);
    EXPECT_EQ(canvas.marks.markedEvent, marked);
    table.Escape("tf_object");
    EXPECT_EQ(model.selectedRow("list"), 2);
    // A click on an icon.
    test.ShowAll();
    table.Sync();
    uint32_t icon = 0;
    for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i)
        if (canvas.items.bitmaps[i].time == 1.2) icon = i;
    const laRect box =
        laItem_Rect(canvas.items, canvas.looks, {canvas.view, canvas.axis, canvas.graph->width},
                    canvas.items.bitmaps[icon]);
    laPointer pointer(canvas);
    const laPointerEvent at{(box.left + box.right) / 2,
                            (box.top + box.bottom) / 2 - canvas.view.verticalOffset};
    pointer.Press(at);
    pointer.Release(at);
    ASSERT_GE(model.selectedRow("list"), 0);
    EXPECT_EQ(Cell(model.selectedRow("list"), 0), "1.200");
    EXPECT_EQ(canvas.marks.markedEvent, laItem_StoreSequence(canvas.items, canvas.items.bitmaps[icon]));
    model.activate("list", 3);
    ASSERT_EQ(host.windows.size(), 1u);
    EXPECT_EQ(host.windows[0]->item("tf_comments").text, "value 1");
}

TEST_F(EventTableTest, AMillionEventsAreShownAndTextsCanBeStopped) {
    Open({});
    const uint32_t count = 1000000;
    {
        const std::string base = test.folder / "large";
        auto writer = StoreWriter::OpenForWrite(base, 1000000, "KORVANTIS", true, TaskTracker);
        writer->SetGrouping(1 << 22);
        for (uint32_t i = 0; i < count; ++i)
            ASSERT_TRUE(writer->AppendEvent(i, mt_UserEvent, 1, words({0x400u + i % 8 * 0x400u, i})));
        writer.reset();
        ASSERT_TRUE(
            laCanvas_SetUpFromStore(canvas, mt_OpenForRead(base), text_legend(), "/folder/large.trs"));
        test.ShowAll();
    }
    // Nothing of it is long work.
    int asked = 0, shown = 0;
    canvas.graph->setBusy = [&](bool busy) { shown += busy ? 1 : 0; };
    canvas.calls.progress = [&](double done, double total) { return done <= total && ++asked < 100; };
    EXPECT_TRUE(table.Sync());
    EXPECT_EQ(list.RowCount(), static_cast<int>(count));
    EXPECT_TRUE(list.IsLazy()) << "rows are made when they are seen";
    for (int row = 0; row < 40; ++row) EXPECT_EQ(Cell(500000 + row, 4), gen_format("value %d", 500000 + row));
    EXPECT_FALSE(table.Sync()) << "nothing changed";
    EXPECT_EQ(asked + shown, 0);
    // So many texts are read when the filter is finished, not at each letter.
    model.edit("tf_text", "*99");
    EXPECT_EQ(asked, 0);
    model.commit("tf_text");
    EXPECT_EQ(asked, 100);
    EXPECT_EQ(shown, 1);
    EXPECT_GT(list.RowCount(), 900);
    EXPECT_LT(list.RowCount(), 1100);
    EXPECT_EQ(Message(), std::to_string(list.RowCount()) + " events so far, stopped");
    canvas.calls.progress = {};
    laCanvas_ShowRange(canvas, 0.2, 0.3);
    table.Sync();
    EXPECT_EQ(list.RowCount(), 1000) << "a new view reads on";
    canvas.graph->setBusy = {};
}

}  // namespace
