#include "chronoweave/traxmain/driven_session.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxmain/trvgui.h"

int run_program(const std::vector<std::string>& arguments, const std::string& pictures,
                const Script& script) {
    return run_service(arguments, pictures, [&](Robot& robot) {
        robot.waitFor("the window", [] { return Robot::canvas() && Robot::canvas()->isActiveWindow(); });
        script(robot);
    });
}

int run_service(const std::vector<std::string>& arguments, const std::string& pictures,
                const Script& script) {
    const int child = ::fork();
    if (child == 0) {
        std::vector<std::string> words = arguments;
        words.insert(words.begin(), "trvgui");
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        std::thread user([&] {
            Robot robot(pictures);
            try {
                script(robot);
            } catch (const Robot::Fault& fault) {
                std::fprintf(stderr, "driven: %s\n", fault.what.c_str());
                robot.picture("fault");
                ::_exit(99);
            }
        });
        const int status = trvgui_Main(static_cast<int>(words.size()), argv.data());
        user.join();
        std::fflush(nullptr);
        ::_exit(status);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

_LaCanvasData& canvas_data() {
    return Robot::canvas()->view().canvas();
}

void DrivenSession::SetUp() {
    if (!screen.missing().empty()) GTEST_SKIP() << "not installed: " << screen.missing();
    ::setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
    trace = folder / "session.trr";
    std::filesystem::copy_file(std::string(CW_SOURCE_DIR) + "/samples/build-2cpu.trr", trace);
    const char* wanted = std::getenv("CHRONOWEAVE_PICTURES");
    pictures = wanted ? wanted : std::filesystem::current_path() / "driven";
}
