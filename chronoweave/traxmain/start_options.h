// The command line of the window program: three passes over the arguments, each of which takes out what it
// consumes.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct StartOptions {
    // Recognised before all passes, from any argument but the last.
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
    bool defaultsOnly = false;  // -nocfg
    std::vector<std::string> warnings;

    // The plug-in pass.
    std::optional<int> pluginPort;

    // The program's own pass.
    bool help = false;  // print the usage and exit
    bool live = false;
    std::string dataFile;  // empty: none
};

// arguments are without the program's name. noSplash: the environment says that no splash window is wanted.
StartOptions start_Parse(std::vector<std::string> arguments, bool noSplash);

// The usage, as printed by -h.
extern const char* const start_Usage;
