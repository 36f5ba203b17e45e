// Two windows that follow two servers, and a hand that kills now one of the servers, now the program: what is
// left, and what goes on.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <thread>

#include "chronoweave/import/import.h"
#include "chronoweave/live/live_target.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/input/commands.h"
#include "libtrv/test_store.h"
#include "libtrv/trace_store.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"
#include "windlib/qt/event_service.h"
#include "windlib/qt/platform.h"
#include "windlib/qt/qt_wait_windows.h"

namespace {

using Pids = std::set<pid_t>;

size_t descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

// The program: keeps two windows at two servers, whatever becomes of these, until it is told to stop.
class TwoWindows {
  public:
    explicit TwoWindows(std::string folder) : folder_(std::move(folder)) {
        for (CanvasWindow*& window : windows_) {
            window = new CanvasWindow("VOREL Chronoweave", false, {.events = &services_, .waits = &waits_});
            window->show();
            laCanvas_Command(window->view().canvas(), "Korvantis");
            window->view().canvas().options.refreshInterval = 40;
            window->target()->reader().CreateRefreshTimer();
        }
    }
    ~TwoWindows() {
        for (CanvasWindow* window : windows_) delete window;
    }
    void keepGoing() {
        for (CanvasWindow* window : windows_)
            if (!window->target()->link().Has(Target_Connected)) connect(*window);
    }

  private:
    void connect(CanvasWindow& window) {
        DialogModel& panel = *window.target()->panel().model();
        laCanvas_Command(window.view().canvas(), "Close");
        panel.edit("ConnectToTarget", "sim 10 20000");
        panel.edit("outputFile",
                   gen_format("%s/live-%d-%d.trr", folder_.c_str(), static_cast<int>(::getpid()), ++made));
        panel.commit("outputFile");
        for (const char* button : {"ConnectButton", "LiveMode", "ControlLogging"}) panel.press(button);
    }

    std::string folder_;
    static inline int made = 0;
    QtEventService services_;
    QtWaitWindows waits_{services_, QtWaitWindows::Questions::Modal};
    CanvasWindow* windows_[2] = {};
};

int run_windows(const std::string& folder) {
    process_LetWritesFail();
    process_CatchStops();
    const auto application = platform_Start("live_kills_test");
    gen_set_console_sink([](std::string_view) {});
    TwoWindows(folder).keepGoing();  // what the window system opens and keeps is open
    const size_t before = descriptors();
    {
        TwoWindows windows(folder);
        platform_Loop([&] {
            windows.keepGoing();
            return !process_IsStopAsked();
        });
    }
    return descriptors() > before ? 3 : 0;
}

pid_t start_windows(const std::string& folder) {
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) std::exit(run_windows(folder));
    return child;
}

// Servers started by the program, by what they are.
Pids servers_of(pid_t program) {
    Pids pids;
    std::ifstream children(gen_format("/proc/%d/task/%d/children", program, program));
    for (pid_t pid = 0; children >> pid;) {
        std::ifstream file(gen_format("/proc/%d/comm", pid));
        std::string name;
        if (std::getline(file, name) && name == "trv") pids.insert(pid);
    }
    return pids;
}

bool runs(pid_t pid) {
    std::ifstream file(gen_format("/proc/%d/stat", pid));
    std::string text;
    std::getline(file, text);
    return !text.empty() && text.find(") Z ") == std::string::npos;
}

size_t semaphores_of(pid_t program) {
    const std::string name = gen_format("sem.vrl:TRV:%X:", static_cast<unsigned>(program));
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm"))
        count += entry.path().filename().string().starts_with(name);
    return count;
}

// Gives up after a time that only a fault takes.
bool comes(const std::function<bool()>& fact) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!fact()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

// Files of events of the program, of which each grows from one look to the next.
class Growing {
  public:
    explicit Growing(std::string folder) : folder_(std::move(folder)) {}
    size_t operator()(pid_t program) {
        size_t growing = 0;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            const std::string name = entry.path().filename().string();
            if (!name.starts_with(gen_format("live-%d-", program)) || !name.ends_with(".trr")) continue;
            const uintmax_t size = entry.file_size(none);
            growing += size > 0 && std::exchange(sizes_[name], size) != size;
        }
        return growing;
    }

  private:
    std::string folder_;
    std::map<std::string, uintmax_t> sizes_;
};

TEST(LiveKills, NothingIsLeftBehind) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
    ::setenv("PATH", (CW_BIN ":" + std::string(std::getenv("PATH"))).c_str(), 1);
    const TestFolder folder;
    std::mt19937 random(1);
    Growing growing(folder / "");
    std::set<pid_t> programs;
    pid_t program = start_windows(folder / "");
    programs.insert(program);
    for (int kill = 0; kill < 20; ++kill) {
        SCOPED_TRACE(kill);
        ASSERT_TRUE(comes([&] { return servers_of(program).size() == 2 && growing(program) == 2; }))
            << "two servers write";
        const Pids servers = servers_of(program);
        const auto which = random() % 3;
        if (which < 2) {
            const pid_t server = which == 0 ? *servers.begin() : *servers.rbegin();
            ::kill(server, SIGKILL);
            ASSERT_TRUE(comes([&] { return !runs(server) && servers_of(program).count(server) == 0; }));
            continue;
        }
        ::kill(program, SIGKILL);
        ::waitpid(program, nullptr, 0);
        for (const pid_t server : servers)
            ASSERT_TRUE(comes([&] { return !runs(server); })) << "it ends, too";
        program = start_windows(folder / "");
        programs.insert(program);
    }
    ASSERT_TRUE(comes([&] { return servers_of(program).size() == 2 && growing(program) == 2; }));
    const Pids servers = servers_of(program);
    ::kill(program, SIGTERM);
    int status = 0;
    ::waitpid(program, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "3: descriptors are left";
    for (const pid_t server : servers) EXPECT_TRUE(comes([&] { return !runs(server); }));
    for (const pid_t one : programs) EXPECT_EQ(semaphores_of(one), 0u) << one;
    EXPECT_GT(programs.size(), 3u);
    std::vector<std::string> traces;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "")) {
        const std::string extension = entry.path().extension();
        EXPECT_TRUE(extension == ".trr" || extension == ".trs" || extension == ".tri" ||
                    extension == ".trv" || extension == ".trl")
            << entry.path();
        if (extension == ".trr") traces.push_back(entry.path());
    }
    for (const std::string& path : traces) {
        const OpenedSource opened = import_OpenSource(path, {});
        EXPECT_TRUE(opened.store && opened.trouble.ok()) << path << opened.trouble.text();
    }
}

}  // namespace
