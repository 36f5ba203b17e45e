#include "chronoweave/traxfunc/list/hide_dialog.h"

#include <gtest/gtest.h>

#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/session/arrangement.h"
#include "chronoweave/traxfunc/session/canvas_testing.h"
#include "shared/libcxxutil/report.h"

namespace {

class Hiding : public testing::Test {
  protected:
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        ASSERT_TRUE(test.Open({name_event(0, 0x400, "AS@T1"),
                               name_event(1, 0x800, "AS@T2"),
                               name_event(2, 0xC00, "Idle"),
                               {3, mt_UserEvent, 0, words({0x1000, 0})},
                               {9000, mt_TaskChange, 0, words({0x400, 0})}}));
        test.ShowAll();
    }
    void TearDown() override { gen_set_console_sink({}); }
    laHideDialog open() {
        return {*canvas.taskList, canvas.list, canvas.items, canvas.source, [this] {
                    laCanvas_Resort(canvas);
                    laCanvas_Repaint(canvas);
                }};
    }
    static std::string Names(const std::vector<laHideRow>& rows) {
        std::string all;
        for (const laHideRow& row : rows) all += row.name + "=" + row.id + " ";
        return all;
    }

    TestCanvas test;
    _LaCanvasData& canvas = *test.canvas;
};

TEST_F(Hiding, EveryButtonAndWhenItIsEnabled) {
    canvas.source.liveRefresh = true;
    laHideDialog dialog = open();
    EXPECT_EQ(dialog.title, "Select tasks to hide");
    EXPECT_EQ(dialog.showTitle + dialog.hideTitle, "Tasks to ShowTasks to Hide");
    EXPECT_EQ(dialog.nameColumn + dialog.idColumn, "Task NameTask ID");
    EXPECT_FALSE(canvas.source.liveRefresh);
    EXPECT_EQ(Names(dialog.toShow), "AS@T1=0x400 AS@T2=0x800 Idle=0xc00 Task 0x1000=0x1000 ");
    for (const char* off : {"hide", "show", "showall", "nothing"}) {
        EXPECT_FALSE(dialog.Enabled(off)) << off;
        EXPECT_FALSE(dialog.Press(off)) << off;
    }
    dialog.toShow[1].selected = true;
    dialog.pattern = "I";
    EXPECT_TRUE(dialog.Press("hide"));
    EXPECT_EQ(Names(dialog.toHide), "I*=N/A AS@T2=0x800 ");
    EXPECT_EQ(Names(dialog.toShow), "AS@T1=0x400 Task 0x1000=0x1000 ");
    EXPECT_EQ(dialog.pattern, "");
    dialog.pattern = "I*";
    EXPECT_TRUE(dialog.Press("hide"));
    EXPECT_EQ(dialog.toHide.size(), 2u) << "none is repeated";
    dialog.toHide[0].selected = true;
    EXPECT_TRUE(dialog.Press("show"));
    EXPECT_EQ(Names(dialog.toHide), "AS@T2=0x800 ");
    dialog.DoubleClick(true, 0);
    dialog.DoubleClick(true, 99);
    EXPECT_EQ(Names(dialog.toHide), "AS@T2=0x800 AS@T1=0x400 ");
    dialog.DoubleClick(false, 0);
    EXPECT_EQ(Names(dialog.toHide), "AS@T1=0x400 ");
    EXPECT_TRUE(dialog.Press("hideall"));
    EXPECT_TRUE(dialog.toShow.empty() && !dialog.Enabled("hideall"));
    EXPECT_TRUE(dialog.Press("showall"));
    EXPECT_TRUE(dialog.toHide.empty());
    EXPECT_EQ(canvas.taskList->rows().size(), 5u) << "nothing is applied yet";
    dialog.pattern = "AS?T?";
    EXPECT_TRUE(dialog.Press("ok"));
    EXPECT_EQ(canvas.taskList->rows().size(), 2u);
    EXPECT_TRUE(canvas.source.liveRefresh);
    EXPECT_FALSE(dialog.IsOpen() || dialog.Press("ok"));
    EXPECT_EQ(laHideDialog::NameColumnWidth(300, 60, 50), 100) << "a third";
    EXPECT_EQ(laHideDialog::NameColumnWidth(90, 60, 50), 80) << "at least";
    EXPECT_EQ(laHideDialog::NameColumnWidth(300, 220, 50), 220) << "as names need";
    EXPECT_EQ(laHideDialog::NameColumnWidth(300, 400, 50), 250) << "and ids leave";
}

TEST_F(Hiding, CancelKeepsWhatWas) {
    {
        laHideDialog dialog = open();
        dialog.Press("hideall");
        dialog.Press("cancel");
    }
    open().Press("hideall");
    EXPECT_EQ(canvas.taskList->rows().size(), 5u);
    EXPECT_FALSE(canvas.source.liveRefresh);
}

TEST_F(Hiding, AnArrangementComesBackOnTheSameSourceOnly) {
    const laSourceIdentity source{1234, -5, 5};
    laCanvas_ShowRange(canvas, 2, 4);
    canvas.marks.cursor[0] = 1.0 / 3;
    canvas.marks.cursor[1] = 2.5;
    canvas.marks.bookmarks.resize(2);
    canvas.marks.bookmarks[0].label = "a \"b\"\n'c'\\ \x01";
    canvas.marks.bookmarks[0].time = 0.1;
    canvas.marks.bookmarks[1].objectId = 0x400;
    laPath path;
    path.components = {"AS", "T1 \"x\""};
    path.id = 0x400;
    canvas.taskList->SetHiddenPaths({path, laTask_PatternPath("I")});
    canvas.list.sortField = 1;
    canvas.list.sortAscending = false;
    const std::string text = laArrangement_ToText(laArrangement_Take(canvas, source));
    laArrangement read;
    ASSERT_EQ(laArrangement_FromText(text + "later=1 2 3\n", read).text(), "");
    EXPECT_EQ(laArrangement_ToText(read), text);

    TestCanvas other;
    ASSERT_TRUE(other.Open(random_events(6, 300)));
    const double low = other.canvas->view.viewLow;
    EXPECT_FALSE(laArrangement_Restore(*other.canvas, read, {1234, -5, 6}));
    EXPECT_EQ(other.message(), "The source has changed since it was last open; it is shown afresh.");
    EXPECT_EQ(other.canvas->view.viewLow, low);

    test.ShowAll();
    canvas.taskList->SetHiddenPaths({});
    canvas.marks.bookmarks.clear();
    canvas.marks.cursor[0] = -100;
    canvas.list.sortField = 0;
    EXPECT_TRUE(laArrangement_Restore(canvas, read, source));
    EXPECT_EQ(laArrangement_ToText(laArrangement_Take(canvas, source)), text);
    EXPECT_EQ(canvas.marks.bookmarks[0].label, "a \"b\"\n'c'\\ \x01");
}

TEST_F(Hiding, ADamagedArrangementIsRefusedWithItsLine) {
    const char* const good = "view=1 2 0\n";
    for (const char* bad :
         {"view=2 1 0", "view=1", "view=1 2 x", "cursors=1", "sort=2 1", "bookmark=1 2 3", "hidden=pattern",
          "hidden=what \"x\"", "hidden=path \"open", "source=1 2", "unit=9", "nonsense", "flat=1 1",
          "bookmark=-1 0 0 0 0 \"x\"", "bookmark=1 0 0 0 99 \"x\"", "view=nan 2 0"}) {
        laArrangement read;
        EXPECT_EQ(laArrangement_FromText(std::string(good) + bad + "\n", read).where(), "line 2") << bad;
    }
    laArrangement read;
    EXPECT_FALSE(laArrangement_FromText("", read));
    EXPECT_TRUE(laArrangement_FromText(good, read));
}

}  // namespace
