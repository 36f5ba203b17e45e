// The program as it is started: what it answers, and how it ends where it can't begin or can't go on.
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "shared/libcxxutil/child_process.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr auto patience = 60s;  // for a machine that has other things to do

class RunTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string folder = (fs::temp_directory_path() / "run_XXXXXX").string();
        ASSERT_NE(::mkdtemp(folder.data()), nullptr);
        folder_ = folder;
    }
    void TearDown() override { fs::remove_all(folder_); }

    // Starts the program with these variables; both streams go into a file.
    void start(std::vector<std::string> arguments, std::vector<std::string> environment) {
        said_ = folder_ / "said";
        file_ = std::fopen(said_.c_str(), "w");
        ChildOptions options;
        options.arguments = std::move(arguments);
        options.arguments.insert(options.arguments.begin(), TRVGUI_PROGRAM);
        options.environment = std::move(environment);
        options.environment.insert(options.environment.end(), {"CHRONOWEAVE_HOME=" CW_SOURCE_DIR,
                                                               "XDG_CONFIG_HOME=" + folder_.string()});
        options.descriptors = {{1, ::fileno(file_)}, {2, ::fileno(file_)}};
        const Result started = program_.start(options);
        ASSERT_TRUE(started.ok()) << started.text();
        std::fclose(file_);
    }
    // The exit status, 128 more than the signal that killed it, or -1 when it does not end.
    int end() {
        const auto ended =
            program_.WaitForEnd(std::chrono::duration_cast<std::chrono::milliseconds>(patience));
        if (!ended) return -1;
        return ended->how == ChildEnd::How::Exited ? ended->number : 128 + ended->number;
    }
    std::string said() const {
        std::ifstream stream(said_);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    // Whether the program catches a signal by now.
    bool catches(int signal) {
        std::ifstream status("/proc/" + std::to_string(*program_.pid()) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("SigCgt:"))
                return (std::stoull(line.substr(7), nullptr, 16) >> (signal - 1) & 1) != 0;
        return false;
    }

    fs::path folder_, said_;
    std::FILE* file_ = nullptr;
    ChildProcess program_;
};

}  // namespace

TEST_F(RunTest, AnswersAndEndsWithNoDisplay) {
    const std::vector<std::string> nowhere{"QT_QPA_PLATFORM=", "DISPLAY=", "WAYLAND_DISPLAY="};
    const struct {
        std::vector<std::string> arguments;
        std::vector<std::string> environment;
        int status;
        const char* said;
    } cases[] = {
        {{"x.trr", "-h"}, nowhere, 0, "Usage: executable [data_file] [other options]\n"},
        {{"--help"}, nowhere, 0, "--plugin PORT"},
        {{"--version"}, nowhere, 0, "trvgui " CW_VERSION "\n"},
        {{}, nowhere, 1, "trvgui: fatal: No window can be opened: there is no display\n"},
        {{},
         {"QT_QPA_PLATFORM=", "WAYLAND_DISPLAY=", "DISPLAY=:2345"},
         1,
         "trvgui: fatal: No window can be opened: the display \":2345\" can't be reached\n"},
        {{}, {"QT_QPA_PLATFORM=nonsense"}, 1, "the window system \"nonsense\" can't be used\n"},
    };
    for (const auto& c : cases) {
        start(c.arguments, c.environment);
        EXPECT_EQ(end(), c.status) << said();
        EXPECT_NE(said().find(c.said), std::string::npos) << said();
    }
}

TEST_F(RunTest, AFaultEndsItWithAWord) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer takes faults itself";
#endif
    // Options of the library below are none of ours: it must not see them.
    start({"-L", "-platform", "-style", "-platformpluginpath"}, {"QT_QPA_PLATFORM=offscreen"});
    const auto giveUp = std::chrono::steady_clock::now() + patience;
    while (program_.IsRunning() && !catches(SIGSEGV) && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(5ms);
    ASSERT_TRUE(program_.IsRunning()) << said();
    program_.signal(SIGSEGV);
    EXPECT_EQ(end(), 1);
    const std::string words = said();
    EXPECT_NE(words.find("trvgui: warning: Invalid operation (msg 160)\n"), std::string::npos) << words;
    EXPECT_NE(words.find("trvgui: warning: Cannot continue, exitting...\n"), std::string::npos) << words;
}
