// Live targets at a real window: what a user does who watches a system that runs.
#include <QAbstractScrollArea>
#include <QApplication>
#include <QPushButton>
#include <QTimer>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "chronoweave/live/live_target.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/canvas.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "chronoweave/traxmain/driven_session.h"
#include "libtrv/trace_store.h"

namespace {

LiveTarget& target() {
    return *Robot::canvas()->target();
}

// The panel's output, line by line.
std::string output() {
    std::string text;
    if (DialogModel* const panel = target().panel().model()) {
        const MScrollList& list = panel->list("TargetOutput");
        for (int row = 0; row < list.RowCount(); ++row) text += list.Text(row, 0) + "\n";
    }
    return text;
}

uint32_t events() {
    return canvas_data().source.store ? mt_GetEventCount(*canvas_data().source.store) : 0;
}

void wait_for_output(Robot& robot, const std::string& words) {
    robot.waitFor(words.c_str(), [&] { return output().find(words) != std::string::npos; });
}

void wait_for_flag(Robot& robot, const char* what, TargetFlag flag, bool on) {
    robot.waitFor(what, [&] { return target().link().Has(flag) == on; });
}

void fill(Robot& robot, const char* field, const std::string& text) {
    robot.click(field);
    robot.key("ctrl+a");
    robot.type(text);
}

void open_panel(Robot& robot) {
    robot.key("alt+a");
    robot.choose("KORVANTIS");
    robot.waitFor("the panel", [] { return target().panel().IsOpen(); });
    robot.pause(300);
}

void connect(Robot& robot, const std::string& to, const std::string& file) {
    fill(robot, "ConnectToTarget", to);
    robot.key("Return");
    wait_for_flag(robot, "the connection", Target_Connected, true);
    fill(robot, "outputFile", file);
    robot.click("LiveMode");
    wait_for_flag(robot, "live mode", Target_LiveModeEnabled, true);
    robot.click("ControlLogging");
    wait_for_flag(robot, "logging", Target_LoggingStarted, true);
}

// The same number of events for longer than an interval takes, while the file grows.
void freeze_and_go_on(Robot& robot, const std::string& file) {
    robot.click("NoRefresh");
    uint32_t frozen = 0, later = 0;
    robot.look([&] { frozen = events(); });
    const uintmax_t size = std::filesystem::file_size(file);
    robot.pause(1500);
    robot.look([&] { later = events(); });
    robot.expect(frozen == later, "a frozen canvas reads nothing");
    robot.expect(std::filesystem::file_size(file) > size, "the server goes on");
    robot.picture("live-3-frozen");
    robot.click("NoRefresh");
    robot.waitFor("the canvas to catch up", [&] { return events() > frozen; });
}

void quit(Robot& robot) {
    robot.look([] { CanvasWindow::closeAll(); });
}

void kill_server(Robot& robot) {
    robot.look([] { target().link().server->child.signal(SIGKILL); });
    wait_for_output(robot, "event server terminated or was killed");
    robot.picture("live-5-killed");
    robot.look([&] {
        robot.expect(!target().link().server && !target().link().Has(Target_Connected), "the link is reset");
        robot.expect(events() > 0, "the picture stays");
    });
}

class DrivenLive : public DrivenSession {
  protected:
    void SetUp() override {
        DrivenSession::SetUp();
        const char* path = std::getenv("PATH");
        ::setenv("PATH", (CW_BIN ":" + std::string(path ? path : "")).c_str(), 1);
    }
    std::string file = folder / "live.trr";
};

TEST_F(DrivenLive, AReplayIsWatchedFrozenGoneOnWithAndLostWithItsServer) {
    const int status = run_program({}, pictures, [&](Robot& robot) {
        open_panel(robot);
        robot.picture("live-1-panel");
        connect(robot, "replay " + trace + " x0.02", file);
        robot.waitFor("the first events", [] { return events() > 0; });
        uint32_t before = 0;
        robot.look([&] { before = events(); });
        robot.waitFor("more events", [&] { return events() > before + 1000; });
        robot.picture("live-2-growing");
        freeze_and_go_on(robot, file);
        robot.click("LiveMode");
        wait_for_flag(robot, "the end of live mode", Target_LiveModeEnabled, false);
        robot.picture("live-4-disabled");
        kill_server(robot);
        // The way back: another connection.
        robot.click("ConnectButton");
        wait_for_flag(robot, "a second connection", Target_Connected, true);
        quit(robot);
    });
    EXPECT_EQ(status, 0);
}

TEST_F(DrivenLive, ANewcomerWatchesASimulation) {
    const char* wish = std::getenv("CHRONOWEAVE_LIVE_SECONDS");
    const int seconds = wish ? std::atoi(wish) : 4;
    const int status = run_program({"-L"}, pictures, [&](Robot& robot) {
        open_panel(robot);
        robot.click(robot.placeOf("ConnectToTarget").topRight() + QPoint(-12, 12));
        robot.picture("sim-1-offers");
        robot.choose("sim");
        fill(robot, "outputFile", file);
        robot.click("ConnectButton");
        wait_for_flag(robot, "the connection", Target_Connected, true);
        robot.click("LiveMode");
        wait_for_flag(robot, "live mode", Target_LiveModeEnabled, true);
        robot.picture("sim-2-waits");
        robot.click("ControlLogging");
        robot.waitFor("events", [] { return events() > 0; });
        for (int second = 0; second < seconds; ++second) {
            robot.pause(1000);
            robot.look([&] {
                const _LaCanvasData& canvas = canvas_data();
                robot.expect(canvas.view.viewHigh >= canvas.source.totalLength, "the end is in view");
            });
        }
        robot.picture("sim-3-watched");
        robot.click("Info");
        wait_for_output(robot, "Processor 1");
        robot.picture("sim-4-info");
        robot.click("ControlLogging");
        wait_for_flag(robot, "the end of logging", Target_LoggingStarted, false);
        robot.click("ConnectButton");
        wait_for_flag(robot, "the end of the connection", Target_Connected, false);
        robot.pause(1200);
        robot.picture("sim-5-disconnected");
        quit(robot);
    });
    EXPECT_EQ(status, 0);
    EXPECT_GT(std::filesystem::file_size(file), 10'000u);
}

// Of windows beside the first one; for use inside look and waitFor.
CanvasWindow& window_at(size_t at) {
    return *CanvasWindow::all().at(at);
}
TargetLink& link_of(size_t window) {
    return window_at(window).target()->link();
}
uint32_t events_of(size_t window) {
    const _LaCanvasData& canvas = window_at(window).view().canvas();
    return canvas.source.store ? mt_GetEventCount(*canvas.source.store) : 0;
}

void follow(Robot& robot, size_t window, const std::string& to, const std::string& file) {
    robot.look([&] {
        CanvasWindow& one = window_at(window);
        laCanvas_Command(one.view().canvas(), "Korvantis");
        DialogModel& panel = *one.target()->panel().model();
        panel.edit("ConnectToTarget", to);
        panel.edit("outputFile", file);
        panel.commit("outputFile");
        for (const char* button : {"ConnectButton", "LiveMode", "ControlLogging"}) panel.press(button);
    });
    robot.waitFor("events", [&] { return events_of(window) > 0; });
}

TEST_F(DrivenLive, TwoWindowsHaveTwoServers) {
    const int status = run_program({}, pictures, [&](Robot& robot) {
        robot.key("ctrl+n");
        robot.waitFor("a second window", [] { return CanvasWindow::count() == 2; });
        follow(robot, 0, "sim", file);
        follow(robot, 1, "sim 20 5000", folder / "other.trr");
        robot.picture("two-1-both");
        robot.look([&] {
            robot.expect(link_of(0).server->child.pid() != link_of(1).server->child.pid(), "two servers");
            link_of(0).server->child.signal(SIGKILL);
        });
        robot.waitFor("the loss of one", [] { return !link_of(0).server; });
        uint32_t before = 0;
        robot.look([&] { before = events_of(1); });
        robot.waitFor("the other to go on", [&] { return events_of(1) > before + 1000; });
        robot.look([&] { robot.expect(link_of(1).Has(Target_LoggingStarted), "it stays connected"); });
        robot.picture("two-2-one-lost");
        // One that stands still is waited for, and that is told.
        robot.look([] {
            link_of(1).server->child.signal(SIGSTOP);
            QTimer::singleShot(0, &window_at(1),
                               [] { window_at(1).target()->panel().model()->press("Info"); });
        });
        const auto says = [](const char* words) {
            return window_at(1).message().find(words) != std::string::npos;
        };
        robot.waitFor("the wait to be told", [&] { return says("Escape stops the wait"); });
        robot.picture("two-3-waits");
        robot.waitFor("its end to be told", [&] { return says("has not answered"); });
        robot.picture("two-4-unanswered");
        robot.look([] { link_of(1).server->child.signal(SIGCONT); });
        quit(robot);
    });
    EXPECT_EQ(status, 0);
}

}  // namespace
