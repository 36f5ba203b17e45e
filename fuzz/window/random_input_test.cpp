// The window under random input, on a trace of a million events: nothing may crash, hang or be drawn wrong.
// CHRONOWEAVE_RANDOM_MINUTES in the environment goes on for so long, seed after seed from
// CHRONOWEAVE_RANDOM_SEED on, instead of the few thousand steps of a test.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/generate.h"
#include "chronoweave/import/import.h"
#include "chronoweave/qt/canvas_window.h"
#include "chronoweave/qt/manual_window.h"
#include "chronoweave/qt/picture_view.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "fuzz/window/monkey.h"
#include "libtrv/test_store.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/report.h"
#include "windlib/config/config_dirs.h"
#include "windlib/qt/application_testing.h"
#include "windlib/qt/dialog_host.h"
#include "windlib/qt/long_work.h"

namespace {

constexpr int steps = 1500;  // of a seed

// Megabytes that the process holds now.
long memory() {
    long all = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> all >> resident;
    return resident * ::sysconf(_SC_PAGESIZE) >> 20;
}

class RandomInput : public testing::TestWithParam<unsigned> {
  protected:
    static void SetUpTestSuite() {
        ::setenv("CHRONOWEAVE_HOME", CW_SOURCE_DIR, 1);
        testing_StartApplication();
        manual_TakeF1();
        folder = new TestFolder;
        std::filesystem::current_path(*folder / "");
        config_SetUserDirectory(*folder / "user");
        ASSERT_TRUE(generate_Trr(*folder / "million.trr", {.events = 1'000'000, .tasks = 60}));
        ASSERT_NE(import_OpenSource(*folder / "million.trr", {}).store, nullptr);
        LongWork::setPace(0);
    }
    static void TearDownTestSuite() {
        std::filesystem::current_path("/");
        delete folder;
    }
    void SetUp() override {
        gen_set_console_sink([](std::string_view) {});
        gen_set_report_sink([](int, const std::string&) {});
    }
    void TearDown() override {
        CanvasWindow::closeAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(CanvasWindow::count(), 0);
        gen_set_console_sink({});
        gen_set_report_sink({});
    }

    static std::string running() {
        std::string text;
        for (size_t i = 0; i < gateWorks; ++i)
            if (gate_Program().Runs(static_cast<GateWork>(i))) text += std::to_string(i) + ' ';
        return text;
    }

    static CanvasWindow* open() {
        auto* window = new CanvasWindow("VOREL Chronoweave", false);  // deletes itself when closed
        window->resize(1000, 600);
        window->show();
        // Every other question is answered with yes.
        window->host().answer = [yes = false](const std::string&) mutable { return yes = !yes; };
        const std::string before = running();
        EXPECT_TRUE(window->load(*folder / "million.trs")) << "work that went on: " << before;
        return window;
    }

    static void run(unsigned seed) {
        Monkey monkey(seed, open);
        int looks = 0;
        monkey.quiet = [&](CanvasWindow& window) {
            // What was put off until now is painted first; a fetch that it needs serves other acts.
            const QPointer<CanvasWindow> alive = &window;
            QCoreApplication::sendPostedEvents(&window.view(), QEvent::MetaCall);
            if (!alive || !monkey.isQuiet()) return;
            ++looks;
            const QImage shown = window.view().image().copy();
            // In the unit that is shown: a repaint asked for by the canvas might take a smaller one.
            window.view().draw([&] {
                laWanted_Whole(window.view().canvas().wanted);
                window.view().graph().listChanged();
            });
            if (shown == window.view().image()) return;
            const std::string name =
                testing::TempDir() + "random-" + std::to_string(seed) + '-' + std::to_string(looks);
            shown.save(QString::fromStdString(name + "-shown.png"));
            window.view().image().save(QString::fromStdString(name + "-whole.png"));
            ADD_FAILURE() << "the picture is not that of a whole repaint, see " << name
                          << "; the last acts were\n"
                          << monkey.trail();
        };
        monkey.act(steps);
        EXPECT_GT(looks, 0);
        const QWidget* const modal = QApplication::activeModalWidget();
        EXPECT_FALSE(monkey.stuck) << "work that goes on: " << running() << "; the dialog is "
                                   << (modal ? modal->objectName().toStdString() : "none")
                                   << "; the last acts were\n"
                                   << monkey.trail();
    }

    static inline TestFolder* folder = nullptr;
};

TEST_P(RandomInput, DoesNoHarm) {
    run(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Seeds, RandomInput, testing::Range(1u, 4u));

class LongRandomInput : public RandomInput {};

TEST_P(LongRandomInput, DoesNoHarm) {
    const char* minutes = std::getenv("CHRONOWEAVE_RANDOM_MINUTES");
    if (!minutes) GTEST_SKIP() << "CHRONOWEAVE_RANDOM_MINUTES is not set";
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now(), end = begin + std::chrono::minutes(std::atoi(minutes));
    const char* first = std::getenv("CHRONOWEAVE_RANDOM_SEED");
    for (unsigned seed = first ? static_cast<unsigned>(std::atoi(first)) : GetParam();
         Clock::now() < end && !HasFailure(); ++seed) {
        run(seed);
        CanvasWindow::closeAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const auto since = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin);
        std::printf("seed %u, %lld s, %ld MB\n", seed, static_cast<long long>(since.count()), memory());
        std::fflush(stdout);
    }
}
INSTANTIATE_TEST_SUITE_P(Seeds, LongRandomInput, testing::Values(100u));

}  // namespace
