#include "services/servicerouter_proxy/sr_options.h"

#include <gtest/gtest.h>

namespace {

using Options = ServiceRouterOptions;

// What is left of the arguments, and the options.
struct Taken {
    std::vector<std::string> left;
    Options options;
    explicit Taken(std::vector<std::string> arguments) : left(std::move(arguments)) {
        options = sr_TakeOptions(left);
    }
};

}  // namespace

TEST(ServiceRouterOptions, EachIsTakenOutWithItsArgumentAndSetsWhatItSays) {
    const struct {
        std::vector<std::string> arguments;
        std::function<bool(const Options&)> sets;
    } rows[] = {
        {{"-sr_connect_servicerouter_host", "h"}, [](auto& o) { return o.host == "h" && o.namesRouter; }},
        {{"-sr_connect_servicerouter_port", "4711"}, [](auto& o) { return o.port == 4711 && o.namesRouter; }},
        {{"-connect_servicerouter", "4711"}, [](auto& o) { return o.port == 4711 && o.host == "localhost"; }},
        {{"-sr_log", "f"}, [](auto& o) { return o.log == "f" && o.routerLog.empty(); }},
        {{"-sr_log_router", "f"}, [](auto& o) { return o.routerLog == "f" && o.log.empty(); }},
        {{"-sr_log_all", "f"}, [](auto& o) { return o.routerLog == "f" && o.log == "f"; }},
        {{"-sr_log_router_internal", "f"}, [](auto& o) { return o.routerInternalLog == "f"; }},
        {{"-sr_zone", "z"}, [](auto& o) { return o.zone == "z"; }},
        {{"-sr_client_start_cookie", "77"}, [](auto& o) { return o.startCookie == 77u; }},
        {{"-sr_shared"}, [](auto& o) { return o.sharing == Options::Sharing::Shared; }},
        {{"-sr_private"}, [](auto& o) { return o.sharing == Options::Sharing::Private; }},
        {{"-sr_reuse"}, [](auto& o) { return o.reuse == Options::Reuse::Running; }},
        {{"-sr_new"}, [](auto& o) { return o.reuse == Options::Reuse::New; }},
        {{"-sr_dir", "d"}, [](auto& o) { return o.directory == "d"; }},
    };
    for (const auto& row : rows) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.begin(), "run.trr");
        arguments.emplace_back("-L");
        const Taken taken(arguments);
        EXPECT_EQ(taken.left, (std::vector<std::string>{"run.trr", "-L"})) << row.arguments[0];
        EXPECT_TRUE(row.sets(taken.options)) << row.arguments[0];
        EXPECT_TRUE(taken.options.warnings.empty()) << row.arguments[0];
    }
    EXPECT_FALSE(Taken({"run.trr"}).options.namesRouter);
    EXPECT_EQ(Taken({"run.trr", "-sr_zone"}).left, std::vector<std::string>{"run.trr"});
}

TEST(ServiceRouterOptions, WhatIsNoPortIsToldAndNamesNoRouter) {
    for (const char* wrong : {"0", "65536", "47.11", "0x10", "port", "", "-2", " 7", "99999999999"}) {
        const Taken taken({"-connect_servicerouter", wrong, "x"});
        EXPECT_FALSE(taken.options.namesRouter) << wrong;
        EXPECT_EQ(taken.options.warnings,
                  std::vector<std::string>{"-connect_servicerouter: the port \"" + std::string(wrong) +
                                           "\" is no whole number from 1 to 65535; starting without it"});
        EXPECT_EQ(taken.left, std::vector<std::string>{"x"});
    }
    const Taken absent({"-sr_connect_servicerouter_port", "-1"});
    EXPECT_FALSE(absent.options.namesRouter || absent.options.port);
    EXPECT_TRUE(absent.options.warnings.empty());
    EXPECT_EQ(Taken({"-sr_client_start_cookie", "x"}).options.warnings.size(), 1u);
}

TEST(ServiceRouterOptions, DebugOptionsSayWhatTheyMissAndThatTheyCannotBeDone) {
    const struct {
        std::vector<std::string> arguments;
        const char* warning;
    } rows[] = {
        {{"-sr_debugger"}, "Must specify -sr_debug for -sr_debugger to have meaning."},
        {{"-sr_debugger_opts"}, "Must specify -sr_debug for -sr_debugger_opts to have meaning."},
        {{"-sr_debug_startup", "-sr_debug_debugger"},
         "Must specify both -sr_debug_debugger and -sr_debug_debugger_opts when -sr_debug_startup is "
         "passed."},
        {{"-sr_debug_debugger"},
         "Must specify -sr_debug_startup with -sr_debug_debugger and -sr_debug_debugger_opts."},
        {{"-sr_debug", "-sr_debugger", "-sr_debugger_opts"},
         "-sr_debug: no debugger is started for this program; start the program in one"},
    };
    for (const auto& row : rows) {
        const Taken taken(row.arguments);
        ASSERT_FALSE(taken.options.warnings.empty()) << row.warning;
        EXPECT_EQ(taken.options.warnings[0], row.warning);
        EXPECT_TRUE(taken.left.empty());
    }
    EXPECT_EQ(
        Taken({"-sr_debug_startup", "-sr_debug_debugger", "-sr_debug_debugger_opts"}).options.warnings.size(),
        1u);
}
