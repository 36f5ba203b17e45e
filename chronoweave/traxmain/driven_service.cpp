#include "chronoweave/traxmain/driven_service.h"

#include <fcntl.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "services/servicerouter_proxy/router_place.h"
#include "shared/libcxxutil/files.h"
#include "windlib/qt/long_work.h"

namespace {

constexpr std::chrono::milliseconds patience{60'000};

}  // namespace

DrivenCall::DrivenCall(const std::string& file, const std::vector<std::string>& words) : file_(file) {
    const FileDescriptor output(::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    const Result started =
        child_.start({.arguments = words, .descriptors = {{1, output.number()}, {2, output.number()}}});
    if (!started) throw Robot::Fault{started.text()};
}

int DrivenCall::status() {
    const auto end = child_.WaitForEnd(patience);
    return end ? end->number : -1;
}

std::string DrivenCall::printed() const {
    std::ifstream file(file_);
    return {std::istreambuf_iterator<char>(file), {}};
}

void DrivenService::SetUp() {
    DrivenSession::SetUp();
    if (IsSkipped()) return;
    ::setenv("XDG_RUNTIME_DIR", (folder / "").c_str(), 1);
    LongWork::setPace(0);
    std::filesystem::copy_file(CW_BIN "/chronoweave-remote", remote_);
    ASSERT_TRUE(router_.start({.arguments = {CW_BIN "/svc_router"}}).ok());
    std::optional<uint16_t> port;
    for (int i = 0; i < 1000 && !(port = routerPlace_Port("")); ++i) Robot::pause(20);
    ASSERT_TRUE(port);
    service = {"-connect_servicerouter", std::to_string(*port)};
}

void DrivenService::TearDown() {
    LongWork::setPace(40);
    if (!router_.WasStarted()) return;
    EXPECT_TRUE(router_.IsRunning());
    router_.signal(SIGTERM);
    const auto end = router_.WaitForEnd(patience);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->number, 0);
}

void DrivenService::done(Robot& robot, const std::vector<std::string>& words) {
    const auto made = call(words);
    robot.expect(made->status() == 0, words[0] + ": " + made->printed());
}

CanvasWindow* DrivenService::open(Robot& robot) {
    done(robot, {"open", trace});
    CanvasWindow* window = nullptr;
    robot.waitFor("the window", [&] {
        window = CanvasWindow::find(trace);
        if (window) window->activateWindow();
        return window && window->isActiveWindow();
    });
    return window;
}

// The program may not have joined yet.
std::unique_ptr<DrivenCall> DrivenService::keeper(Robot& robot) {
    std::unique_ptr<DrivenCall> stays;
    const auto refused = [&] { return stays->ended() && stays->says("No program offers the service"); };
    robot.waitFor("the first window", [&] {
        if (!stays || refused()) stays = call({"open", trace, "--listen", "--json"});
        const CanvasWindow* const window = CanvasWindow::find(trace);
        return window && window->isActiveWindow() && stays->says("\"window\"");
    });
    return stays;
}

QPoint point_of_picture(CanvasWindow& window, int x, int y) {
    const PictureView& view = window.view();
    return view.mapToGlobal(QPoint(x + view.picture().graphLeft, y + view.picture().graphTop));
}
