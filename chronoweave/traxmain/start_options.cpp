#include "chronoweave/traxmain/start_options.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "shared/libcxxutil/report.h"

namespace {

using Arguments = std::vector<std::string>;

constexpr const char* usage = "Usage: executable [data_file] [other options]\n";
constexpr const char* optionHelp =
    "\n"
    "data_file          a .trr, a .core, a .trs, or a store's base name\n"
    "\n"
    "-L                 the first window reads live\n"
    "-console           open the message console at once\n"
    "-configdir DIR     the user's directory of configuration\n"
    "-nocfg             built-in settings; none are read or written\n"
    "-noicons           texts in place of icons; the same as -isdn9\n"
    "-isdnN             look of the buttons\n"
    "-splash, -nosplash with or without the first picture (the variable NOSPLASH: without)\n"
    "-wmhints           window manager hints\n"
    "-XNAME, -ZNAME     set, clear a debug switch: alternative_prefixes, no_signal_handlers\n"
    "-run, -rungui      no more options of the toolkit behind it\n"
    "--plugin PORT      connect to a plug-in host on this port\n"
    "-connect_servicerouter PORT, -sr_...\n"
    "                   run as a service: other programs open and steer the windows\n"
    "-h                 the usage in a line\n"
    "--help, --version  this text, the version\n";

// The switches that -X and -Z know.
constexpr std::array<const char*, 2> debugSwitches{"alternative_prefixes", "no_signal_handlers"};

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

Arguments servicePass(Arguments arguments, StartOptions& options) {
    options.router = sr_TakeOptions(arguments);
    options.serviceMode = options.router.namesRouter;
    for (const std::string& warning : options.router.warnings) options.warnings.push_back(warning);
    return arguments;
}

Arguments pluginPass(const Arguments& arguments, StartOptions& options) {
    Arguments left;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] != "--plugin" || i + 1 == arguments.size()) {
            left.push_back(arguments[i]);
            continue;
        }
        if (const auto port = sr_Port("--plugin", arguments[++i], options.warnings))
            options.pluginPort = port;
    }
    return left;
}

void ownPass(const Arguments& arguments, StartOptions& options) {
    for (const std::string& argument : arguments) {
        if (argument.starts_with("-")) {
            const char letter = argument.size() > 1 ? argument[1] : '\0';
            options.answer = argument == "--help"             ? StartAnswer::Help
                             : argument == "--version"        ? StartAnswer::Version
                             : letter == 'H' || letter == 'h' ? StartAnswer::Usage
                                                              : StartAnswer::None;
            if (options.answer != StartAnswer::None) return;
            if (letter == 'L') options.live = true;
        } else if (options.dataFile.empty()) {
            options.dataFile = argument;
        }
    }
}

}  // namespace

StartOptions start_Parse(std::vector<std::string> arguments, bool noSplash) {
    StartOptions options;
    options.splash = !noSplash;
    arguments = toolkitPass(arguments, options);
    arguments = servicePass(arguments, options);
    arguments = pluginPass(arguments, options);
    ownPass(arguments, options);
    return options;
}

std::string start_AnswerText(StartAnswer answer, const std::string& program, const std::string& version) {
    switch (answer) {
        case StartAnswer::None:
            return {};
        case StartAnswer::Usage:
            return usage;
        case StartAnswer::Help:
            return std::string(usage) + optionHelp;
        case StartAnswer::Version:
            return program + ' ' + version + '\n';
    }
    return {};
}
