// A session at a real window: what a user does in a first quarter of an hour, by pointer and keys of an X
// server. The pictures that it leaves in the build folder ("driven") are for readers.
#include <gtest/gtest.h>

#include <QAbstractScrollArea>
#include <QApplication>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "chronoweave/traxfunc/model/geometry.h"
#include "chronoweave/traxmain/driven_session.h"
#include "windlib/qt/last_words.h"

namespace {

// A point of the drawing area on the screen.
QPoint on_screen(int x, int y) {
    PictureView& view = Robot::canvas()->view();
    return view.mapToGlobal(QPoint(x + view.picture().graphLeft, y + view.picture().graphTop));
}

void open_by_dialog(Robot& robot, const std::string& trace) {
    robot.key("ctrl+o");
    robot.waitFor("the file dialog", [] { return QApplication::activeModalWidget() != nullptr; });
    robot.pause(300);
    robot.type(trace);
    robot.picture("1-file-dialog");
    robot.key("Return");
    robot.waitFor("the trace", [] { return canvas_data().source.storeHasEvents; });
    robot.picture("2-opened");
}

void zoom_by_tool_bar(Robot& robot) {
    double before = 0, after = 0;
    robot.look([&] { before = canvas_data().view.viewLength; });
    robot.click("ZoomOut");
    robot.click("ZoomOut");
    robot.look([&] { after = canvas_data().view.viewLength; });
    robot.expect(after > before * 2, "the tool bar zooms out");
    QPoint middle;
    robot.look([&] { middle = on_screen(300, 60); });
    robot.wheel(middle, 2, "ctrl");
    robot.look([&] { before = canvas_data().view.viewLength; });
    robot.expect(before < after, "Ctrl+wheel zooms in");
}

void drag_past_the_edge(Robot& robot) {
    double low = 0, high = 0;
    QPoint from, to;
    robot.look([&] {
        low = canvas_data().view.viewLow;
        high = canvas_data().view.viewHigh;
        const int width = Robot::canvas()->view().picture().graphWidth;
        from = on_screen(width - 150, 40);
        to = on_screen(width + 12, 44);
    });
    robot.press(from);
    robot.moveTo(from + QPoint(60, 2));
    robot.moveTo(to);
    robot.waitFor("the picture to follow", [&] { return canvas_data().view.viewLow > low; });
    robot.pause(200);
    robot.release();
    robot.pause(100);
    robot.picture("3-selection");
    robot.look([&] {
        const _LaCanvasData& canvas = canvas_data();
        robot.expect(canvas.marks.cursor[1] > high, "the selection reaches beyond the old edge");
        robot.expect(canvas.marks.cursor[0] >= low && canvas.marks.cursor[0] < high,
                     "and begins where the press was");
    });
}

void hide_by_menu(Robot& robot) {
    size_t before = 0, after = 0;
    QPoint row;
    robot.look([&] {
        before = canvas_data().taskList->rows().size();
        PictureView& view = Robot::canvas()->view();
        for (const MslObjectEntry* entry : canvas_data().taskList->rows())
            if (entry->payload != laNoLane && entry->row > 0) {
                row = view.mapToGlobal(
                    QPoint(40, view.picture().graphTop + entry->row * canvas_data().looks.rowHeight + 8));
                break;
            }
    });
    robot.click(row, 3);
    robot.choose("Hide");
    robot.look([&] { after = canvas_data().taskList->rows().size(); });
    robot.expect(after < before, "a row is hidden by its menu");
}

void sort_around_event(Robot& robot) {
    QPoint icon;
    robot.look([&] {
        const _LaCanvasData& canvas = canvas_data();
        for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i) {
            const laItem_Bitmap& one = canvas.items.bitmaps[i];
            if (canvas.items.lanes[one.lane].hidden ||
                !canvas.looks.eventLooks[static_cast<size_t>(one.event)].shown)
                continue;
            const laRect box =
                laItem_Rect(canvas.items, canvas.looks, {canvas.view, canvas.axis, canvas.graph->width}, one);
            if (one.time < canvas.view.viewLow || box.left < 20 || box.right > canvas.graph->width - 20)
                continue;
            icon = on_screen((box.left + box.right) / 2, box.top + 3 - canvas.view.verticalOffset);
            break;
        }
    });
    robot.expect(!icon.isNull(), "an icon is in the view");
    robot.click(icon, 3);
    robot.picture("4-menu");
    robot.choose("Sort Around Clicked Event");
    robot.waitFor("the sort", [] { return canvas_data().list.sortAroundEvent; });
}

void bookmark(Robot& robot) {
    robot.key("ctrl+b");
    robot.waitFor("a bookmark", [] { return !canvas_data().marks.bookmarks.empty(); });
    QPoint graph;
    robot.look([&] { graph = on_screen(300, 60); });
    robot.moveTo(graph);
    robot.key("Home");
    robot.key("alt+b");
    robot.choose("Bookmark: ");
    robot.waitFor("the bookmark's place", [] {
        const _LaCanvasData& canvas = canvas_data();
        const double time = canvas.marks.bookmarks.front().time;
        return time >= canvas.view.viewLow && time <= canvas.view.viewHigh;
    });
    robot.picture("5-bookmark");
}

void colour_in_legend(Robot& robot) {
    robot.key("alt+c");
    robot.choose("Legend");
    // What is clicked or typed before the window has the keyboard would go to the canvas.
    robot.waitFor("the legend", [] {
        const QWidget* active = QApplication::activeWindow();
        return active != nullptr && active->windowTitle().startsWith(QLatin1String("Legend for"));
    });
    const QRect list = robot.placeOf("list");
    int row = 0, column = 0;
    robot.look([&] {
        auto* table = qobject_cast<QAbstractScrollArea*>(
            QApplication::activeWindow()->findChild<QWidget*>(QStringLiteral("list")));
        column = table->viewport()->mapTo(table, QPoint(0, 0)).x();
        row = table->viewport()->mapTo(table, QPoint(0, 0)).y();
    });
    robot.picture("6-legend");
    // Enter on the first row opens the dialog of its line.
    robot.click(QPoint(list.x() + column + 30, list.y() + row + 10));
    robot.waitFor("the list's keyboard", [] {
        const QWidget* focus = QApplication::focusWidget();
        return focus != nullptr && focus->objectName() == QLatin1String("list");
    });
    robot.key("Return");
    robot.click(robot.middleOf("tf_red"));
    robot.key("ctrl+a");
    robot.type("0x12");
    robot.picture("7-colour");
    robot.click("bt_ok");
    robot.waitFor("the colour", [] { return canvas_data().looks.legend.statuses[0].red == 0x1200; });
    robot.key("Escape");
    robot.waitFor("the canvas", [] { return Robot::canvas()->isActiveWindow(); });
}

// A window that can't be painted.
class Broken : public QWidget {
    void paintEvent(QPaintEvent*) override { std::raise(SIGSEGV); }
};

TEST_F(DrivenSession, AFaultIsToldInABoxThatStands) {
    const std::string seen = folder / "seen";
    const int status = run_program({trace}, pictures, [&](Robot& robot) {
        robot.waitFor("the trace", [] { return canvas_data().source.storeHasEvents; });
        QMetaObject::invokeMethod(
            qApp, [] { (new Broken)->show(); }, Qt::QueuedConnection);
        robot.waitForTitle("VOREL Chronoweave");
        std::ofstream(seen) << 1;
        for (;;) {  // until it is acknowledged, which ends the process
            robot.key("Return");
            robot.pause(200);
        }
    });
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(std::filesystem::exists(seen));
}

TEST_F(DrivenSession, AFirstQuarterOfAnHourAndTheNextDay) {
    const int first = run_program({}, pictures, [&](Robot& robot) {
        open_by_dialog(robot, trace);
        zoom_by_tool_bar(robot);
        drag_past_the_edge(robot);
        hide_by_menu(robot);
        sort_around_event(robot);
        bookmark(robot);
        colour_in_legend(robot);
        robot.key("ctrl+q");
        robot.waitFor("the question", [] { return QApplication::activeModalWidget() != nullptr; });
        robot.pause(200);
        robot.picture("8-save");
        robot.key("alt+y");
    });
    ASSERT_EQ(first, 0);
    const int second = run_program({trace}, pictures, [&](Robot& robot) {
        robot.waitFor("the trace", [] { return canvas_data().source.storeHasEvents; });
        robot.pause(300);
        robot.picture("9-next-day");
        robot.look([&] {
            const _LaCanvasData& canvas = canvas_data();
            robot.expect(canvas.looks.legend.statuses[0].red == 0x1200, "the colour was saved");
            robot.expect(canvas.marks.bookmarks.size() == 1 || canvas.marks.bookmarks.size() == 2,
                         "bookmarks are back");
            robot.expect(!canvas.taskList->HiddenPaths().empty(), "what was hidden is hidden");
        });
        robot.key("ctrl+q");
    });
    EXPECT_EQ(second, 0);
}

}  // namespace

// The box of the last words is shown by another process of this program.
int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == last_BoxOption) return last_ShowBox(argv[0], argv[2]);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
