// The command line of the window program: passes over the arguments, each of which takes out what it
// consumes. The window system's library sees none of them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "services/servicerouter_proxy/sr_options.h"

// What the program answers in place of running.
enum class StartAnswer { None, Usage, Help, Version };

struct StartOptions {
    // An option names the service router, in any place but the last. A port that is none undoes it.
    bool serviceMode = false;

    // The toolkit's pass.
    struct Switch {
        std::string name;
        bool on = false;
    };
    std::vector<Switch> debugSwitches;  // -X and -Z, known ones
    bool console = false;
    std::string configDirectory;  // empty: the platform's
    bool windowManagerHints = false;
    std::optional<int> isdn;
    bool splash = true;
    bool defaultsOnly = false;          // -nocfg
    std::vector<std::string> warnings;  // of all passes

    // The pass of the service framework.
    ServiceRouterOptions router;

    // The plug-in pass.
    std::optional<uint16_t> pluginPort;

    // The program's own pass.
    StartAnswer answer = StartAnswer::None;
    bool live = false;
    std::string dataFile;  // empty: none
};

// arguments are without the program's name. noSplash: the environment says that no splash window is wanted.
StartOptions start_Parse(std::vector<std::string> arguments, bool noSplash);

// What is printed for an answer, for a program of this name and version.
std::string start_AnswerText(StartAnswer answer, const std::string& program, const std::string& version);
