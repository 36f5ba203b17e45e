#include "chronoweave/traxmain/start_options.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

const char* const start_Usage = "Usage: executable [data_file] [other options]\n";

namespace {

using Arguments = std::vector<std::string>;

constexpr std::array<const char*, 3> serviceArguments{
    "-connect_servicerouter", "-sr_connect_servicerouter_host", "-sr_connect_servicerouter_port"};
// The switches that -X and -Z know.
constexpr std::array<const char*, 2> debugSwitches{"alternative_prefixes", "no_signal_handlers"};

bool namesService(const Arguments& arguments) {
    for (size_t i = 0; i + 1 < arguments.size(); ++i)
        for (const char* name : serviceArguments)
            if (arguments[i] == name) return true;
    return false;
}

void takeDebugSwitch(const std::string& argument, StartOptions& options) {
    const std::string name = argument.substr(2);
    if (std::find(debugSwitches.begin(), debugSwitches.end(), name) != debugSwitches.end())
        options.debugSwitches.push_back({name, argument[1] == 'X'});
    else
        options.warnings.push_back(gen_format("Ignoring unknown switch \"-%s\"", argument.substr(1).c_str()));
}

// Takes one argument of the toolkit; false when it is none of its own. value is the argument behind it, if
// any.
bool takeToolkit(const std::string& argument, const std::string* value, bool& tookValue,
                 StartOptions& options) {
    if (argument == "-console") {
        options.console = true;
    } else if (argument == "-configdir" && value) {
        options.configDirectory = *value;
        tookValue = true;
    } else if (argument == "-wmhints") {
        options.windowManagerHints = true;
    } else if (argument == "-isdn" || (argument.size() == 6 && argument.starts_with("-isdn") &&
                                       std::isdigit(static_cast<unsigned char>(argument[5])))) {
        options.isdn = argument.size() == 6 ? argument[5] - '0' : 1;
    } else if (argument == "-splash" || argument == "-nosplash") {
        options.splash = argument == "-splash";
    } else if (argument == "-nocfg") {
        options.defaultsOnly = true;
    } else if (argument == "-noicons") {
        options.isdn = 9;
    } else if (argument.size() > 2 && argument[0] == '-' && (argument[1] == 'X' || argument[1] == 'Z')) {
        takeDebugSwitch(argument, options);
    } else {
        return false;
    }
    return true;
}

Arguments toolkitPass(const Arguments& arguments, StartOptions& options) {
    Arguments left;
    bool stopped = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        stopped = stopped || arguments[i] == "-run" || arguments[i] == "-rungui";
        const std::string* value = i + 1 < arguments.size() ? &arguments[i + 1] : nullptr;
        bool tookValue = false;
        if (stopped || !takeToolkit(arguments[i], value, tookValue, options)) left.push_back(arguments[i]);
        if (tookValue) ++i;
    }
    return left;
}

Arguments pluginPass(const Arguments& arguments, StartOptions& options) {
    Arguments left;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] != "--plugin" || i + 1 == arguments.size()) {
            left.push_back(arguments[i]);
            continue;
        }
        const auto port = scan_double(arguments[++i]);
        if (port && *port != -1) options.pluginPort = static_cast<int>(*port);
    }
    return left;
}

void ownPass(const Arguments& arguments, StartOptions& options) {
    for (const std::string& argument : arguments) {
        if (argument.starts_with("-")) {
            const char letter = argument.size() > 1 ? argument[1] : '\0';
            if (letter == 'H' || letter == 'h') {
                options.help = true;
                return;
            }
            if (letter == 'L') options.live = true;
        } else if (options.dataFile.empty()) {
            options.dataFile = argument;
        }
    }
}

}  // namespace

StartOptions start_Parse(std::vector<std::string> arguments, bool noSplash) {
    StartOptions options;
    options.serviceMode = namesService(arguments);
    options.splash = !noSplash;
    arguments = toolkitPass(arguments, options);
    arguments = pluginPass(arguments, options);
    ownPass(arguments, options);
    return options;
}
