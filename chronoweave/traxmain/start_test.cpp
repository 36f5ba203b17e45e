#include <gtest/gtest.h>

#include "chronoweave/traxmain/start_options.h"

TEST(StartOptions, TheProgramsOwnPassLooksAtTheFirstLetter) {
    const StartOptions options = start_Parse({"-", "-Later", "run.trr", "other.trr", "-zzz"}, false);
    EXPECT_TRUE(options.live);
    EXPECT_EQ(options.dataFile, "run.trr");
    EXPECT_EQ(options.answer, StartAnswer::None);
    EXPECT_EQ(start_Parse({"run.trr", "-hello"}, false).answer, StartAnswer::Usage);
    EXPECT_EQ(start_Parse({"-H"}, false).answer, StartAnswer::Usage);
    EXPECT_EQ(start_AnswerText(StartAnswer::Usage, "p", "1"),
              "Usage: executable [data_file] [other options]\n");
    EXPECT_EQ(start_Parse({"run.trr", "--help", "--version"}, false).answer, StartAnswer::Help);
    EXPECT_EQ(start_Parse({"-L", "--version", "-h"}, false).answer, StartAnswer::Version);
    EXPECT_EQ(start_Parse({"--helpful", "--versions"}, false).answer, StartAnswer::None);
    EXPECT_EQ(start_AnswerText(StartAnswer::Version, "p", "1.2"), "p 1.2\n");
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

TEST(StartOptions, TheServiceFrameworksOptionsAreTakenBeforeTheProgramLooks) {
    const StartOptions options =
        start_Parse({"-sr_zone", "Live", "-sr_private", "-connect_servicerouter", "4711", "run.trr"}, false);
    EXPECT_TRUE(options.serviceMode);
    EXPECT_FALSE(options.live) << "the argument of an option is none of the program's";
    EXPECT_EQ(options.router.zone, "Live");
    EXPECT_EQ(options.router.port, 4711);
    EXPECT_EQ(options.dataFile, "run.trr");
    const StartOptions alone = start_Parse({"-sr_debugger", "run.trr"}, false);
    EXPECT_FALSE(alone.serviceMode);
    EXPECT_EQ(alone.warnings,
              std::vector<std::string>{"Must specify -sr_debug for -sr_debugger to have meaning."});
}

TEST(StartOptions, APortThatIsNoneIsToldAndGivenUp) {
    for (const char* wrong : {"0", "65536", "47.11", "0x10", "port", "", "-2", " 7", "99999999999"}) {
        const StartOptions plugin = start_Parse({"--plugin", wrong, "run.trr"}, false);
        EXPECT_FALSE(plugin.pluginPort) << wrong;
        EXPECT_EQ(plugin.dataFile, "run.trr");
        ASSERT_EQ(plugin.warnings.size(), 1u) << wrong;
        EXPECT_EQ(plugin.warnings[0], "--plugin: the port \"" + std::string(wrong) +
                                          "\" is no whole number from 1 to 65535; starting without it");
        const StartOptions router = start_Parse({"-connect_servicerouter", wrong, "run.trr"}, false);
        EXPECT_FALSE(router.serviceMode) << wrong;
        EXPECT_EQ(router.warnings.size(), 1u);
        EXPECT_EQ(router.dataFile, "run.trr");
    }
    for (const char* good : {"1", "65535"})
        EXPECT_EQ(start_Parse({"--plugin", good, "x"}, false).pluginPort, std::stoi(good));
    EXPECT_TRUE(start_Parse({"--plugin", "-1", "x"}, false).warnings.empty());
}
