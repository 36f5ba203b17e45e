#include <gtest/gtest.h>

#include "chronoweave/traxmain/start_options.h"

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
