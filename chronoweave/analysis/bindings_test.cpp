#include "chronoweave/analysis/bindings.h"

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"

namespace {

class Bindings : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(test.Open(
            {name_event(0, 0x400, "One"), name_event(1, 0x800, "Two"), name_event(5000, 0xC00, "Three")}));
        test.ShowAll();
    }
    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(Bindings, HidingGoesThroughTheItemsOfTheDialog) {
    int drawn = 0;
    test.graph.surface = nullptr;  // as in a window
    canvas.calls.upper.draw = [&](const std::function<void()>& work) { ++drawn, work(); };
    const auto model = dialogs_OpenHide(canvas);
    EXPECT_EQ(model->title(), "Select tasks to hide");
    EXPECT_EQ(model->item("to_show").rows.size(), 3u);
    EXPECT_FALSE(model->press("hide"));
    EXPECT_TRUE(model->select("to_show", {0}));
    EXPECT_TRUE(model->press("hide"));
    EXPECT_EQ(model->item("to_hide").rows.size(), 1u);
    EXPECT_TRUE(model->edit("pattern", "Tw"));
    EXPECT_TRUE(model->item("hide").enabled);
    EXPECT_TRUE(model->press("ok"));
    EXPECT_TRUE(model->isClosed());
    EXPECT_EQ(canvas.taskList->rows().size(), 1u);
    EXPECT_GT(drawn, 0);
    const auto again = dialogs_OpenHide(canvas);
    EXPECT_EQ(again->item("to_hide").rows.size(), 2u);
    EXPECT_TRUE(again->activate("to_hide", 0));
    EXPECT_TRUE(again->key(DialogKey::Escape));
    EXPECT_EQ(canvas.taskList->rows().size(), 1u);
}

// What the filter leaves out is neither hidden nor lost.
TEST_F(Bindings, FiltersOfTheHideDialogLeaveWhatFits) {
    const auto model = dialogs_OpenHide(canvas);
    const auto shown = [&](const char* list) {
        std::string all;
        for (const DialogRow& row : model->item(list).rows) all += (all.empty() ? "" : " ") + row.cells[0];
        return all;
    };
    EXPECT_TRUE(model->select("to_show", {0, 1, 2}));
    EXPECT_TRUE(model->edit("f_to_show", "T"));
    EXPECT_EQ(shown("to_show"), "Two Three");
    EXPECT_TRUE(model->press("hide")) << "those that are still selected";
    EXPECT_EQ(shown("to_show"), "");
    EXPECT_EQ(shown("to_hide"), "Two Three");
    EXPECT_TRUE(model->edit("f_to_show", ""));
    EXPECT_EQ(shown("to_show"), "One");
    EXPECT_TRUE(model->edit("f_to_hide", "0xc00"));
    EXPECT_EQ(shown("to_hide"), "Three");
    EXPECT_TRUE(model->press("show")) << "the one that is left";
    EXPECT_TRUE(model->edit("f_to_hide", ""));
    EXPECT_EQ(shown("to_hide"), "Two");
    EXPECT_TRUE(model->edit("f_to_show", "e"));
    EXPECT_TRUE(model->press("hideall"));
    EXPECT_TRUE(model->edit("f_to_show", ""));
    EXPECT_EQ(shown("to_show"), "");
    EXPECT_TRUE(model->edit("f_to_hide", "t"));
    EXPECT_TRUE(model->press("showall"));
    EXPECT_EQ(shown("to_show"), "Two Three");
    EXPECT_TRUE(model->press("ok"));
    EXPECT_EQ(canvas.taskList->rows().size(), 2u);
}

TEST_F(Bindings, WhatIsHiddenFollowsTheRowsAsTheUserSortedThem) {
    const auto model = dialogs_OpenHide(canvas);
    EXPECT_TRUE(model->sortRows("to_show", 1));
    EXPECT_TRUE(model->sortRows("to_show", 1));  // the other way round: Three, Two, One
    EXPECT_TRUE(model->activate("to_show", 0));
    EXPECT_EQ(model->item("to_hide").rows[0].cells[0], "Three");
    EXPECT_EQ(model->item("to_show").rows[0].cells[0], "Two");  // the order stays
    EXPECT_TRUE(model->clickRow("to_show", 0, 0));
    EXPECT_TRUE(model->clickRow("to_show", 1, 0, 1, true));
    EXPECT_TRUE(model->press("hide"));
    EXPECT_EQ(model->item("to_hide").rows.size(), 3u);
    EXPECT_TRUE(model->sortRows("to_hide", 0));  // One, Three, Two
    EXPECT_TRUE(model->clickRow("to_hide", 1, 0));
    EXPECT_TRUE(model->press("show"));
    EXPECT_EQ(model->item("to_show").rows[0].cells[0], "Three");
}

TEST_F(Bindings, TheUnitAndThePlaceAreTakenOver) {
    const auto unit = dialogs_OpenTimeUnit(canvas);
    ASSERT_TRUE(unit);
    EXPECT_TRUE(unit->choose("units", Time_Microsecond));
    EXPECT_TRUE(unit->press("ok"));
    EXPECT_EQ(canvas.axis.timeMode, Time_Microsecond);
    const auto place = dialogs_OpenGoto(canvas);
    EXPECT_TRUE(place->edit("time", "nonsense"));
    EXPECT_TRUE(place->press("ok"));
    EXPECT_FALSE(place->isClosed());
    EXPECT_FALSE(place->message().empty());
    EXPECT_TRUE(place->edit("time", "1us + 2us"));
    EXPECT_TRUE(place->press("ok"));
    EXPECT_TRUE(place->isClosed());
    EXPECT_NEAR(canvas.view.viewLength, 2e-6, 1e-12);
    canvas.axis.timeMode = Time_Tick;
    EXPECT_FALSE(dialogs_OpenTimeUnit(canvas));
}

}  // namespace
