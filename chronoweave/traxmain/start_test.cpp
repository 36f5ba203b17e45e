#include <gtest/gtest.h>

#include "chronoweave/traxmain/main_loop.h"
#include "chronoweave/traxmain/start_options.h"

using namespace std::chrono_literals;

TEST(StartOptions, TheProgramsOwnPassLooksAtTheFirstLetter) {
    const StartOptions options = start_Parse({"-", "-Later", "run.trr", "other.trr", "-zzz"}, false);
    EXPECT_TRUE(options.live);
    EXPECT_EQ(options.dataFile, "run.trr");
    EXPECT_FALSE(options.help);
    EXPECT_TRUE(start_Parse({"run.trr", "-hello"}, false).help);
    EXPECT_TRUE(start_Parse({"-H"}, false).help);
}

TEST(StartOptions, TheToolkitTakesItsSwitchesUpToRun) {
    const StartOptions options =
        start_Parse({"-console", "-configdir", "/c", "-isdn3", "-nosplash", "-nocfg", "-Xwrong",
                     "-Xno_signal_handlers", "-run", "-noicons", "-splash", "f.trr"},
                    false);
    EXPECT_TRUE(options.console && options.defaultsOnly);
    EXPECT_FALSE(options.splash);
    EXPECT_EQ(options.configDirectory, "/c");
    EXPECT_EQ(options.isdn, 3);
    ASSERT_EQ(options.debugSwitches.size(), 1u);
    EXPECT_TRUE(options.debugSwitches[0].on);
    EXPECT_EQ(options.warnings, std::vector<std::string>{"Ignoring unknown switch \"-Xwrong\""});
    EXPECT_EQ(options.dataFile, "f.trr");
    EXPECT_FALSE(start_Parse({}, true).splash);
    EXPECT_TRUE(start_Parse({"-splash"}, true).splash);
    EXPECT_EQ(start_Parse({"-configdir"}, false).configDirectory, "");
}

TEST(StartOptions, PluginAndServiceArgumentsCountInAnyPlaceButTheLast) {
    EXPECT_EQ(start_Parse({"f.trr", "--plugin", "4711"}, false).pluginPort, 4711);
    EXPECT_FALSE(start_Parse({"--plugin", "-1"}, false).pluginPort);
    const StartOptions last = start_Parse({"f.trr", "--plugin"}, false);
    EXPECT_FALSE(last.pluginPort);
    EXPECT_EQ(last.dataFile, "f.trr");
    EXPECT_TRUE(start_Parse({"-sr_connect_servicerouter_port", "5"}, false).serviceMode);
    EXPECT_FALSE(start_Parse({"-sr_connect_servicerouter_port"}, false).serviceMode);
}

TEST(MainLoop, WaitsUpToTheNextTaskAndEndsWithItsWindows) {
    MainLoop loop;
    std::vector<std::chrono::milliseconds> waits;
    int pending = 0, rounds = 0;
    loop.processPending = [&] { ++pending; };
    loop.wait = [&](std::chrono::milliseconds longest) { waits.push_back(longest); };
    loop.goOn = [&] { return ++rounds < 3; };
    loop.now = [] { return EventTasks::Clock::time_point{}; };
    loop.run();
    EXPECT_EQ(waits, (std::vector{500ms, 500ms, 500ms}));
    loop.tasks.Add(60ms, loop.now(), [] { return true; });
    EXPECT_FALSE(loop.round());
    EXPECT_EQ(waits.back(), 50ms);
    loop.tasks.Add(5ms, loop.now(), [] { return true; });
    EXPECT_FALSE(loop.round());
    EXPECT_EQ(waits.size(), 4u);  // too near to wait for
    loop.now = [] { return EventTasks::Clock::time_point{} + 5ms; };
    loop.tasks.Add(0ms, loop.now(), [] { return false; });
    EXPECT_TRUE(loop.round());  // a failed task: the next round begins, and nobody asks whether to go on
    EXPECT_EQ(rounds, 5);
    EXPECT_EQ(pending, 6);
}
