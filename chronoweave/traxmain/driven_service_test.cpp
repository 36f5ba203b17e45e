// The window as a service at a real screen: what other programs ask of it while the user has it in hand, or
// while it works, waits its turn and is answered.
#include <fcntl.h>

#include <QApplication>
#include <QBasicTimer>
#include <QEventLoop>
#include <QTimer>
#include <QTimerEvent>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxmain/driven_session.h"
#include "services/servicerouter_proxy/router_place.h"
#include "shared/libcxxutil/child_process.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/gate.h"
#include "windlib/qt/long_work.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds patience{60'000};

// A run of the remote control; what it prints goes to a file.
class Call {
  public:
    Call(const std::string& file, const std::vector<std::string>& words) : file_(file) {
        const FileDescriptor output(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        const Result started =
            child_.start({.arguments = words, .descriptors = {{1, output.number()}, {2, output.number()}}});
        if (!started) throw Robot::Fault{started.text()};
    }
    bool ended() { return !child_.IsRunning(); }
    // Its exit status; -1 when it does not end.
    int status() {
        const auto end = child_.WaitForEnd(patience);
        return end ? end->number : -1;
    }
    std::string printed() const {
        std::ifstream file(file_);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool says(const std::string& words) const { return printed().find(words) != std::string::npos; }
    void interrupt() { child_.signal(SIGTERM); }

  private:
    std::string file_;
    ChildProcess child_;
};

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

QPoint point_of_picture(CanvasWindow& window, int x, int y) {
    PictureView& view = window.view();
    return view.mapToGlobal(QPoint(x + view.picture().graphLeft, y + view.picture().graphTop));
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

class DrivenService : public DrivenSession {
  protected:
    void SetUp() override {
        DrivenSession::SetUp();
        if (IsSkipped()) return;
        ::setenv("XDG_RUNTIME_DIR", (folder / "").c_str(), 1);
        LongWork::setPace(0);
        std::filesystem::copy_file(CW_BIN "/chronoweave-remote", remote);
        ASSERT_TRUE(router.start({.arguments = {CW_BIN "/svc_router"}}).ok());
        std::optional<uint16_t> port;
        for (int i = 0; i < 1000 && !(port = routerPlace_Port("")); ++i) Robot::pause(20);
        ASSERT_TRUE(port);
        service = {"-connect_servicerouter", std::to_string(*port)};
    }
    void TearDown() override {
        LongWork::setPace(40);
        if (!router.WasStarted()) return;
        EXPECT_TRUE(router.IsRunning());
        router.signal(SIGTERM);
        const auto end = router.WaitForEnd(patience);
        ASSERT_TRUE(end);
        EXPECT_EQ(end->number, 0);
    }
    std::unique_ptr<Call> call(std::vector<std::string> words) {
        words.insert(words.begin(), remote);
        return std::make_unique<Call>(folder / ("call" + std::to_string(++calls)), words);
    }
    void done(Robot& robot, const std::vector<std::string>& words) {
        const auto made = call(words);
        robot.expect(made->status() == 0, words[0] + ": " + made->printed());
    }
    // The window of the trace, with the keyboard.
    CanvasWindow* open(Robot& robot) {
        done(robot, {"open", trace});
        CanvasWindow* window = nullptr;
        robot.waitFor("the window", [&] {
            window = CanvasWindow::find(trace);
            if (window) window->activateWindow();
            return window && window->isActiveWindow();
        });
        return window;
    }
    // A client that stays, so that the service outlives its windows.
    std::unique_ptr<Call> keeper(Robot& robot) {
        std::unique_ptr<Call> stays;
        const auto refused = [&] { return stays->ended() && stays->says("No program offers the service"); };
        robot.waitFor("the first window", [&] {
            if (!stays || refused()) stays = call({"open", trace, "--listen", "--json"});
            CanvasWindow* const window = CanvasWindow::find(trace);
            return window && window->isActiveWindow() && stays->says("\"window\"");
        });
        return stays;
    }
    void callDuring(Robot& robot, const Busy& busy, const std::vector<std::string>& words);

    // In a folder of its own, where it finds no window program to start.
    std::string remote = folder / "chronoweave-remote";
    ChildProcess router;
    std::vector<std::string> service;
    int calls = 0;
};

void DrivenService::callDuring(Robot& robot, const Busy& busy, const std::vector<std::string>& words) {
    const std::string what = words[0] + " during a " + busy.name;
    CanvasWindow* const window = open(robot);
    std::unique_ptr<Call> made;
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

TEST_F(DrivenService, CallsThatComeWhileTheWindowIsBusyAreAnsweredInTheEnd) {
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
