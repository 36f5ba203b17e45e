// Draws the pictures of the manual from the program's own windows, off screen: manual_pictures TRACE FOLDER.
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QTimer>
#include <cstdio>
#include <deque>
#include <functional>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxfunc/input/cursor.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/items.h"
#include "chronoweave/traxmain/kept_pictures.h"
#include "windlib/qt/platform.h"

namespace {

QString folder;

void keep(QWidget* window, const char* name) {
    kept_Window(*window, folder, QLatin1String(name));
}

// What to do in the dialogs that a command opens, one after the other.
using Act = std::function<void(QWidget& dialog)>;
std::deque<Act> acts;

void press(QWidget& dialog, const char* button) {
    if (auto* found = dialog.findChild<QAbstractButton*>(QLatin1String(button))) found->click();
}

Act answer(const char* list, const char* button) {
    return [=](QWidget& dialog) {
        if (auto* view = dialog.findChild<QAbstractItemView*>(QLatin1String(list))) {
            if (view->selectionMode() == QAbstractItemView::SingleSelection)
                view->setCurrentIndex(view->model()->index(3, 0));
            else
                view->selectAll();
        }
        press(dialog, button);
    };
}

Act picture(const char* name) {
    return [=](QWidget& dialog) {
        keep(&dialog, name);
        dialog.close();
    };
}

void run(CanvasWindow& window, const char* command, std::deque<Act> dialogs = {}) {
    acts = std::move(dialogs);
    laCanvas_Command(window.view().canvas(), command);
    platform_ProcessPending();
}

// The newest window beside the canvas.
QWidget* opened(const char* name) {
    QWidget* found = nullptr;
    for (QWidget* one : QApplication::topLevelWidgets())
        if (one->isVisible() && one->objectName() == QLatin1String(name)) found = one;
    if (!found) std::fprintf(stderr, "no window %s\n", name);
    return found;
}

void keepOpened(const char* window, const char* name) {
    if (QWidget* found = opened(window)) {
        keep(found, name);
        found->close();
    }
}

void select_row(QWidget& dialog, const char* list, int row) {
    if (auto* view = dialog.findChild<QAbstractItemView*>(QLatin1String(list)))
        view->setCurrentIndex(view->model()->index(row, 0));
}

// What the project's first page shows: some milliseconds with a selection.
void keep_first_screen(CanvasWindow& window) {
    _LaCanvasData& canvas = window.view().canvas();
    laCanvas_Paint(canvas, [&] {
        laCanvas_ShowRange(canvas, 0.0096, 0.0126, {.paint = true});
        laCanvas_SetSelection(canvas, 0.0103057, 0.0110343);
    });
    keep(&window, "timeline");
    laCanvas_Paint(canvas, [&] { laCanvas_ClearCursors(canvas); });
}

// The three questions of the first page, in one millisecond.
void keep_questions(CanvasWindow& window) {
    _LaCanvasData& canvas = window.view().canvas();
    laCanvas_Paint(canvas, [&] { laCanvas_ShowRange(canvas, 0.0318, 0.0329, {.paint = true}); });
    run(window, "OnlyActive");
    keep(&window, "who");
    kept_SelectWait(window);
    keep(&window, "late");
    kept_Find(window, QStringLiteral("event:TaskChange"));
    keep(&window, "often");
    kept_Clear(window);
    run(window, "OnlyActive");
}

void keep_selection(CanvasWindow& window) {
    _LaCanvasData& canvas = window.view().canvas();
    laCanvas_Paint(canvas, [&] {
        laCanvas_SetSelection(canvas, canvas.view.viewLow + canvas.view.viewLength * 0.4,
                              canvas.view.viewLow + canvas.view.viewLength * 0.7);
    });
    keep(&window, "selection");
    laCanvas_Paint(canvas, [&] { laCanvas_ClearCursors(canvas); });
}

void keep_bookmarks(CanvasWindow& window) {
    _LaCanvasData& canvas = window.view().canvas();
    for (const double share : {0.2, 0.6}) {
        laCanvas_Paint(canvas, [&] {
            laCanvas_MoveCursor(canvas, 0, canvas.view.viewLow + canvas.view.viewLength * share);
        });
        run(window, "AddBookmark");
    }
    run(window, "EditBookmarks", {picture("bookmarks")});
    run(window, "DeleteBookmarks");
    laCanvas_Paint(canvas, [&] { laCanvas_ClearCursors(canvas); });
}

// The windows of the first event in the view, and of its object.
void keep_details(CanvasWindow& window) {
    _LaCanvasData& canvas = window.view().canvas();
    const uint32_t icon = laBm_FirstAt(canvas.items, canvas.view.viewLow);
    const uint32_t lane = canvas.items.bitmaps[icon].lane;
    canvas.calls.openInfo(canvas.items.lanes[lane].objectId);
    keepOpened("ObjectInfo", "info");
    canvas.calls.openDetail({laItemType::Bitmap, lane, icon});
    keepOpened("EventDetail", "details");
}

void keep_legend(CanvasWindow& window) {
    run(window, "Legend");
    if (QWidget* legend = opened("Legend")) {
        select_row(*legend, "list", 1);
        acts = {picture("line")};
        press(*legend, "bt_change");
    }
    keepOpened("Legend", "legend");
}

void keep_searches(CanvasWindow& window) {
    const Act status = [](QWidget& dialog) { press(dialog, "status"); };
    run(window, "Search", {answer("list", "ok"), status, answer("list", "ok")});
    keepOpened("SearchIntervals", "search");
    run(window, "Search", {answer("list", "ok"), picture("kind")});
    run(window, "SearchInterval", {picture("intervals")});
}

void keep_reports(CanvasWindow& window) {
    const Act status = [](QWidget& dialog) { press(dialog, "status"); };
    run(window, "ReportObjects", {answer("", "ok")});
    keepOpened("Statistics", "report");
    run(window, "ReportGeneral", {answer("list", "ok"), status, answer("list", "ok"), answer("", "ok")});
    keepOpened("GenStatistics", "general");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: manual_pictures TRACE FOLDER\n");
        return 2;
    }
    const auto application = kept_Start(argv[0]);
    folder = QString::fromUtf8(argv[2]);
    QDir().mkpath(folder);
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog) return;
        if (acts.empty()) return static_cast<void>(dialog->close());
        const Act act = acts.front();
        acts.pop_front();
        act(*dialog);
    });
    timer.start(60);

    const auto window = kept_Open(argv[1], {1200, 760});
    if (!window) return 1;
    keep_first_screen(*window);
    window->resize(1000, 680);
    keep_questions(*window);
    window->resize(1000, 600);
    run(*window, "ShowAll");
    for (int i = 0; i < 2; ++i) run(*window, "ZoomIn");
    run(*window, "ScrollHome");
    keep(window.get(), "window");
    keep_selection(*window);
    keep_bookmarks(*window);
    keep_details(*window);
    run(*window, "GoToTime", {picture("goto")});
    run(*window, "HideTasks", {picture("hide")});
    run(*window, "Options", {picture("options")});
    keep_legend(*window);
    keep_searches(*window);
    keep_reports(*window);
    run(*window, "EventTable");
    keep(window.get(), "eventtable");
    return 0;
}
