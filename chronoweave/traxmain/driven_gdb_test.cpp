// From a click in the picture to the source line, with a real gdb at a real screen.
#include <QApplication>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/traxfunc/input/debugger.h"
#include "chronoweave/traxfunc/input/hit.h"
#include "chronoweave/traxfunc/input/tips.h"
#include "chronoweave/traxmain/driven_service.h"
#include "shared/libcxxutil/captured_run.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr char spin[] = CW_BIN "/spin";

std::string text_of(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The line of the source file, as gdb alone says it.
std::string line_of(uint64_t address) {
    const std::string ask = gen_format("info line *0x%llx", static_cast<unsigned long long>(address));
    const CapturedRun run =
        run_Captured({.arguments = {"gdb", "-nx", "-batch", "-ex", ask, spin}}, 10'000, [] { return true; });
    int line = 0;
    const size_t at = run.printed.find("Line ");
    if (at == run.printed.npos || std::sscanf(run.printed.c_str() + at, "Line %d of", &line) != 1) return {};
    return "spin.c:" + std::to_string(line) + ")";
}

// The adapter, in a terminal where there is one; it is killed by its number.
class Adapter {
  public:
    Adapter(std::string said, std::string pidFile) : said_(std::move(said)), pidFile_(std::move(pidFile)) {}
    std::string said() const { return text_of(said_); }
    bool says(const std::string& words) const { return said().find(words) != std::string::npos; }
    void kill() const { ::kill(std::stoi(text_of(pidFile_)), SIGKILL); }

  private:
    std::string said_, pidFile_;
};

// An event of the picture that has a program counter, where it can be clicked.
struct Clickable {
    QPoint at;
    uint32_t object = 0;
    uint64_t address = 0;
};

Clickable clickable(CanvasWindow& window) {
    _LaCanvasData& canvas = canvas_data();
    for (uint32_t i = 0; i < canvas.items.bitmaps.size(); ++i) {
        const laItem_Bitmap& icon = canvas.items.bitmaps[i];
        const auto address = laDebugger_Address(laItem_EventData(canvas, icon));
        const laRect box =
            laItem_Rect(canvas.items, canvas.looks, {canvas.view, canvas.axis, canvas.graph->width}, icon);
        const int x = (box.left + box.right) / 2, y = box.top + 3 - canvas.view.verticalOffset;
        if (!address || box.left < 20 || box.right > canvas.graph->width / 2) continue;
        laHit hit;
        laCanvas_HitTest(canvas, x, y, false, &hit);
        if (hit.icon && *hit.icon == i)
            return {point_of_picture(window, x, y), canvas.items.lanes[icon.lane].objectId, *address};
    }
    return {};
}

class DrivenGdb : public DrivenService {
  protected:
    void SetUp() override {
        DrivenService::SetUp();
        if (IsSkipped()) return;
        for (const char* program : {"gdb", "script"})
            if (path_find_program(program).empty()) GTEST_SKIP() << "not installed: " << program;
        // The program runs on while it is looked at.
        const std::string recorder = CW_BIN "/chronoweave";
        recording_ =
            run({recorder, "live", "run " + std::string(spin) + " 1000000", "-o", folder / "live.trr"});
        trace = folder / "spin.trr";
        for (int i = 0; i < 500 && !recorded() && !recording_->ended(); ++i) Robot::pause(20);
        if (!recorded()) GTEST_SKIP() << "nothing can be recorded here: " << recording_->printed();
        std::filesystem::copy_file(folder / "live.trr", trace);
    }
    void TearDown() override {
        DrivenService::TearDown();  // what is held by a debugger does not end
        if (recording_) recording_->interrupt();
        if (recording_) recording_->status();
    }
    bool recorded() const { return text_of(folder / "live.trr").find("PC=0x4") != std::string::npos; }

    // In a terminal where there is one; a terminal is what it thinks that it has in any case.
    Adapter start(const std::string& name) {
        const std::string said = folder / (name + ".said"), pid = folder / (name + ".pid");
        const std::string link =
            "echo $$ > " + pid + "; exec " CW_BIN "/gdb_link " + trace + " --program " + spin;
        const std::string script = "script -qfc '" + link + "' " + said + "; sleep 100";
        std::vector<std::string> words{"sh", "-c", script};
        if (!path_find_program("xterm").empty())
            words.insert(words.begin(), {"xterm", "-xrm", "XTerm*allowWindowOps: true", "-geometry",
                                         "100x18+480+560", "-e"});
        terminals_.push_back(run(words));
        return {said, pid};
    }
    // An adapter that comes before the program has joined the router would have another one started.
    void waitUntilJoined(Robot& robot) {
        std::unique_ptr<DrivenCall> asked;
        robot.waitFor("the program at the router", [&] {
            if (asked && !asked->ended()) return false;
            if (asked && asked->status() == 0) return true;
            asked = call({"list"});
            return false;
        });
    }
    CanvasWindow* opened(Robot& robot, const Adapter& adapter) {
        CanvasWindow* window = nullptr;
        robot.waitFor("the adapter's window", [&] {
            window = CanvasWindow::find(trace);
            return window && canvas_data().source.storeHasEvents && adapter.says("window 0x");
        });
        return window;
    }
    void clickedIsShown(Robot& robot, const Adapter& adapter, const Clickable& icon) {
        const std::string line = line_of(icon.address);
        robot.expect(!line.empty(), "gdb alone knows the line");
        robot.click(icon.at);
        robot.waitFor(("the line " + line).c_str(), [&] { return adapter.says(line); });
    }
    static Clickable find(Robot& robot, CanvasWindow& window) {
        Clickable icon;
        robot.waitFor("an event with a program counter", [&] {
            icon = clickable(window);
            return icon.address != 0;
        });
        return icon;
    }
    static void choose(Robot& robot, const Clickable& icon, const char* row) {
        robot.click(icon.at, 3);
        robot.choose(row);
    }

    std::unique_ptr<DrivenCall> recording_;
    std::vector<std::unique_ptr<DrivenCall>> terminals_;
};

TEST_F(DrivenGdb, AClickShowsTheLineOfTheEventAndAKilledAdapterIsNoHarm) {
    // The program and its user are another process, which started no recording.
    const pid_t recorder = recording_->process();
    const int status = run_service(service, pictures, [&](Robot& robot) {
        waitUntilJoined(robot);
        const Adapter first = start("first");
        CanvasWindow* const window = opened(robot, first);
        const Clickable icon = find(robot, *window);
        clickedIsShown(robot, first, icon);
        robot.picture("gdb-1-line");
        choose(robot, icon, "Debug ");
        const int process = static_cast<int>(icon.object >> 10);
        robot.waitFor("the process",
                      [&] { return first.says(gen_format("Attached to process %d.", process)); });
        // Killed while its menu is open.
        robot.click(icon.at, 3);
        robot.waitFor("the menu", [] { return QApplication::activePopupWidget() != nullptr; });
        first.kill();
        robot.pause(300);
        robot.choose("Show Time in Debugger");
        robot.waitFor("the window's words", [] {
            return canvas_data().fields.message == "The debugger did not take the command.";
        });
        robot.picture("gdb-2-killed");
        robot.expect(::kill(process, 0) == 0, "the process goes on");
        // The window does, too, and takes another one.
        ::kill(recorder, SIGTERM);
        robot.waitFor("the end of the process", [&] { return ::kill(process, 0) != 0; });
        const Adapter second = start("second");
        opened(robot, second);
        clickedIsShown(robot, second, icon);
        robot.picture("gdb-3-again");
        robot.look([] { CanvasWindow::closeAll(); });
        second.kill();
    });
    EXPECT_EQ(status, 0);
}

}  // namespace
