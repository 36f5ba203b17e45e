// Tasks and watches in Qt's loops, on the offscreen platform.
#include "windlib/qt/event_service.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QDialog>
#include <QMenu>

#include "shared/libcxxutil/report.h"
#include "windlib/qt/application_testing.h"

using namespace std::chrono_literals;

namespace {

class EventService : public testing::Test {
  protected:
    static void SetUpTestSuite() { testing_StartApplication(); }
    void SetUp() override { ASSERT_EQ(::pipe(ends), 0); }
    void TearDown() override {
        ::close(ends[0]);
        ::close(ends[1]);
    }

    int ends[2] = {};
    EventTasks::Clock::time_point clock{};
};

TEST_F(EventService, SleepsUntilTheNextTaskIsDueAndNoShorter) {
    QtEventService service([this] { return clock; });
    EXPECT_EQ(service.sleep(), EventTasks::longest);
    int ran = 0;
    const int number = service.tasks.Add(60ms, clock, [&] { return ++ran > 0; });
    EXPECT_EQ(service.sleep(), 60ms);
    clock += 59ms + 200us;
    service.tasks.Once(10ms, clock, [] { return true; });
    EXPECT_EQ(service.sleep(), 1ms) << "rounded up: the task is due when the sleep is over";
    service.tasks.Remove(number);
    EXPECT_EQ(service.sleep(), 10ms);
    EXPECT_EQ(ran, 0);
}

TEST_F(EventService, TasksAndWatchesAreServedInDialogsAndMenus) {
    QtEventService service;
    QDialog dialog;
    service.tasks.Once(0ms, EventTasks::Clock::now(), [&] { return dialog.accept(), true; });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);
    QMenu menu;
    menu.addAction(QStringLiteral("row"));
    service.tasks.Once(0ms, EventTasks::Clock::now(), [&] { return menu.close(), true; });
    EXPECT_EQ(menu.exec(), nullptr);
    char byte = 0;
    const Watch watch(service.watches, ends[0], WatchFor::Input, [&] {
        if (::read(ends[0], &byte, 1) == 1) dialog.reject();
    });
    service.tasks.Once(0ms, EventTasks::Clock::now(), [&] { return ::write(ends[1], "x", 1) == 1; });
    EXPECT_EQ(dialog.exec(), QDialog::Rejected);
    EXPECT_EQ(byte, 'x');
}

// A task that waits in a dialog is not called again in that dialog; the others are.
TEST_F(EventService, ATaskIsNotCalledFromWithinItself) {
    QtEventService service;
    QDialog dialog;
    int depth = 0, deepest = 0, others = 0;
    const int number = service.tasks.Add(1ms, EventTasks::Clock::now(), [&] {
        deepest = std::max(deepest, ++depth);
        dialog.exec();
        return --depth == 0;
    });
    service.tasks.Add(1ms, EventTasks::Clock::now(), [&] {
        if (depth > 0 && ++others >= 3) dialog.accept();
        return true;
    });
    while (others < 3) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    service.tasks.Remove(number);
    EXPECT_EQ(deepest, 1);
}

TEST_F(EventService, AWatchMayTakeItselfOutAndTheEndOfAPipeIsInput) {
    QtEventService service;
    int input = 0, output = 0;
    Watch in, out;
    out = Watch(service.watches, ends[1], WatchFor::Output, [&] {
        ++output;
        out.remove();
    });
    while (output == 0) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::processEvents();
    EXPECT_EQ(output, 1);
    in = Watch(service.watches, ends[0], WatchFor::Input, [&] {
        ++input;
        char byte = 0;
        if (::read(ends[0], &byte, 1) == 0) in.remove();
    });
    ::close(ends[1]);
    ends[1] = -1;
    while (in.IsOn()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_EQ(input, 1);
    std::string said;
    gen_set_report_sink([&](int, const std::string& line) { said += line; });
    in = Watch(service.watches, ends[1], WatchFor::Input, [] {});
    gen_set_report_sink({});
    EXPECT_NE(said.find("can't be watched"), std::string::npos) << said;
}

}  // namespace
