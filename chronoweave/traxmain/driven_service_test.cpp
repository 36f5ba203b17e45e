// The window as a service at a real screen: what other programs ask of it while the user has it in hand, or
// while it works, waits its turn and is answered.
#include "chronoweave/traxmain/driven_service.h"

#include <QApplication>
#include <QBasicTimer>
#include <QEventLoop>
#include <QTimer>
#include <QTimerEvent>
#include <memory>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "shared/libcxxutil/gate.h"

namespace {

// Does something once, in the program's thread, from within the work that is named, as soon as that runs.
class Within : public QObject {
  public:
    Within(GateWork work, std::function<void()> act) : work_(work), act_(std::move(act)) {
        timer_.start(0, this);
    }
    bool done() const { return done_; }

  private:
    void timerEvent(QTimerEvent*) override {
        if (!gate_Program().Runs(work_)) return;
        timer_.stop();
        act_();
        done_ = true;
    }
    GateWork work_;
    std::function<void()> act_;
    QBasicTimer timer_;
    bool done_ = false;
};

// So long other programs' calls have time to arrive; window events and sockets are served meanwhile.
void let_arrive() {
    QEventLoop loop;
    QTimer::singleShot(500, &loop, &QEventLoop::quit);
    loop.exec();
}

// What the window is doing, or its user, when a call comes.
struct Busy {
    const char* name;
    GateWork work;
    std::function<void(Robot&, CanvasWindow*)> begin, end;
    enum class Calls { Wait, AreAnswered } calls = Calls::Wait;
};

void ask_for_search(Robot& robot) {
    robot.key("ctrl+shift+f");
    robot.waitFor("the dialog", [] { return QApplication::activeModalWidget() != nullptr; });
}

void search(Robot& robot, CanvasWindow*) {
    ask_for_search(robot);
    robot.click("all_rows");
    robot.click("ok");
    robot.click("ctx_switch");
}

void open_menu(Robot& robot, CanvasWindow* window) {
    QPoint at;
    robot.look([&] { at = point_of_picture(*window, 300, 60); });
    robot.click(at, 3);
}

void begin_drag(Robot& robot, CanvasWindow* window) {
    QPoint at;
    robot.look([&] { at = point_of_picture(*window, 200, 60); });
    robot.press(at);
    robot.moveTo(at + QPoint(60, 4));
}

const auto nothing = [](Robot&, CanvasWindow*) {};
const auto escape = [](Robot& robot, CanvasWindow*) { robot.key("Escape"); };

const Busy states[] = {
    {"search", GateWork::Search, search, nothing},
    {"load", GateWork::Load,
     [](Robot&, CanvasWindow* window) {
         QMetaObject::invokeMethod(
             window, [window] { window->load(window->source()); }, Qt::QueuedConnection);
     },
     nothing},
    {"dialog", GateWork::ModalDialog, [](Robot& robot, CanvasWindow*) { ask_for_search(robot); }, escape},
    {"menu", GateWork::ContextMenu, open_menu, escape},
    {"drag", GateWork::DraggedCursor, begin_drag, [](Robot& robot, CanvasWindow*) { robot.release(); },
     Busy::Calls::AreAnswered},
};

class BusyService : public DrivenService {
  protected:
    void callDuring(Robot& robot, const Busy& busy, const std::vector<std::string>& words);
};

void BusyService::callDuring(Robot& robot, const Busy& busy, const std::vector<std::string>& words) {
    const std::string what = words[0] + " during a " + busy.name;
    CanvasWindow* const window = open(robot);
    std::unique_ptr<DrivenCall> made;
    bool early = false;
    std::unique_ptr<Within> within;
    robot.look([&] {
        within = std::make_unique<Within>(busy.work, [&] {
            made = call(words);
            let_arrive();
            early = made->ended();
        });
    });
    busy.begin(robot, window);
    robot.waitFor(what.c_str(), [&] { return within->done(); });
    robot.picture(("service-" + std::string(busy.name) + "-" + words[0]).c_str());
    if (busy.calls == Busy::Calls::Wait) robot.expect(!early, what + " was answered within it");
    busy.end(robot, window);
    robot.expect(made->status() == 0, what + ": " + made->printed());
    robot.look([&] {
        robot.expect((CanvasWindow::find(trace) != nullptr) == (words[0] == "open"), what + " was done");
        within.reset();
    });
}

TEST_F(BusyService, CallsThatComeWhileTheWindowIsBusyAreAnsweredInTheEnd) {
    const int status = run_service(service, pictures, [&](Robot& robot) {
        const auto stays = keeper(robot);
        for (const Busy& busy : states) {
            callDuring(robot, busy, {"open", trace, "--time", "0.05", "--object", "1"});
            callDuring(robot, busy, {"close", trace});
        }
        stays->interrupt();
    });
    EXPECT_EQ(status, 0) << "the program ends with its last client";
}

TEST_F(DrivenService, ACallThatWaitsTooLongSaysThatTheWindowIsBusy) {
    const int status = run_service(service, pictures, [&](Robot& robot) {
        const auto stays = keeper(robot);
        ask_for_search(robot);
        for (const auto& words : {std::vector<std::string>{"open", trace}, {"close", trace}, {"list"}}) {
            std::vector<std::string> impatient = words;
            impatient.insert(impatient.end(), {"--timeout", "0.5"});
            const auto made = call(impatient);
            robot.expect(made->status() == 1 &&
                             made->says("The window is busy: it did not answer within 0.5 seconds."),
                         words[0] + ": " + made->printed());
        }
        robot.key("Escape");
        // What was asked by programs that are gone is done all the same, or dropped with them.
        done(robot, {"list"});
        done(robot, {"close", trace});
        stays->interrupt();
    });
    EXPECT_EQ(status, 0);
}

TEST_F(DrivenService, TwoWindowsOfAFileAreClosedByOneCallAndADialogOfOneHoldsIt) {
    const int status = run_service(service, pictures, [&](Robot& robot) {
        const auto stays = keeper(robot);
        done(robot, {"open", trace, "--new", "--title", "Second"});
        robot.waitFor("two windows", [] { return CanvasWindow::count() == 2; });
        robot.picture("service-two");
        open(robot);
        ask_for_search(robot);
        const auto close = call({"close", trace});
        robot.pause(500);
        robot.expect(!close->ended(), "the dialog holds the call");
        robot.look([&] { robot.expect(CanvasWindow::count() == 2, "both are there"); });
        robot.key("Escape");
        robot.expect(close->status() == 0, close->printed());
        robot.waitFor("both to go", [] { return CanvasWindow::count() == 0; });
        const auto list = call({"list"});
        robot.expect(list->status() == 0 && list->printed().empty(), list->printed());
        stays->interrupt();
    });
    EXPECT_EQ(status, 0);
}

TEST_F(DrivenService, ADebuggerIsAskedWhatItCanAndWhatTheUserChoosesIsSentToIt) {
    const int status = run_service(service, pictures, [&](Robot& robot) {
        const auto stays = keeper(robot);
        CanvasWindow* window = nullptr;
        robot.look([&] { window = CanvasWindow::find(trace); });
        open_menu(robot, window);
        robot.picture("service-debugger-menu");
        robot.choose("Show Time in Debugger");
        robot.waitFor("the position", [&] { return stays->says("\"asked\": \"position\""); });
        // It dies while its menu is open.
        open_menu(robot, window);
        robot.waitFor("the menu", [] { return QApplication::activePopupWidget() != nullptr; });
        stays->interrupt();
        robot.expect(stays->status() == 0, stays->printed());
        robot.choose("Show Time in Debugger");
        robot.waitFor("the window's words", [] {
            return canvas_data().fields.message == "The debugger did not take the command.";
        });
        robot.picture("service-debugger-gone");
        robot.look([] { CanvasWindow::closeAll(); });
    });
    EXPECT_EQ(status, 0);
}

}  // namespace
