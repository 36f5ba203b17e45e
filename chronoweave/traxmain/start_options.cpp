#include "chronoweave/traxmain/start_options.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
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
    "                   the options of the service framework\n"
    "-h                 the usage in a line\n"
    "--help, --version  this text, the version\n";

// The options of the service framework, and whether an argument stands behind them.
enum class Takes { Nothing, Text, Port };
struct ServiceWord {
    const char* name;
    Takes takes;
    bool router = false;  // means the service mode
};
constexpr ServiceWord serviceWords[] = {
    {"-connect_servicerouter", Takes::Port, true},
    {"-sr_connect_servicerouter_host", Takes::Text, true},
    {"-sr_connect_servicerouter_port", Takes::Port, true},
    {"-sr_log", Takes::Text},
    {"-sr_log_router", Takes::Text},
    {"-sr_log_all", Takes::Text},
    {"-sr_log_router_internal", Takes::Text},
    {"-sr_zone", Takes::Text},
    {"-sr_client_start_cookie", Takes::Text},
    {"-sr_shared", Takes::Nothing},
    {"-sr_private", Takes::Nothing},
    {"-sr_reuse", Takes::Nothing},
    {"-sr_new", Takes::Nothing},
    {"-sr_debug", Takes::Nothing},
    {"-sr_debugger", Takes::Nothing},
    {"-sr_debugger_opts", Takes::Nothing},
    {"-sr_debug_startup", Takes::Nothing},
    {"-sr_debug_debugger", Takes::Nothing},
    {"-sr_debug_debugger_opts", Takes::Nothing},
    {"-sr_dir", Takes::Text},
};
// The switches that -X and -Z know.
constexpr std::array<const char*, 2> debugSwitches{"alternative_prefixes", "no_signal_handlers"};

const ServiceWord* findServiceWord(const std::string& argument) {
    for (const ServiceWord& word : serviceWords)
        if (argument == word.name) return &word;
    return nullptr;
}

bool namesService(const Arguments& arguments) {
    for (size_t i = 0; i + 1 < arguments.size(); ++i)
        if (const ServiceWord* word = findServiceWord(arguments[i]); word && word->router) return true;
    return false;
}

// A port as typed: none for -1, and, with a warning in its place, for what is no port.
enum class PortWord { Good, Absent, Wrong };
PortWord takePort(const std::string& option, const std::string& text, int& port, StartOptions& options) {
    if (text == "-1") return PortWord::Absent;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error == std::errc() && end == text.data() + text.size() && port >= 1 && port <= 65535)
        return PortWord::Good;
    options.warnings.push_back(
        gen_format("%s: the port \"%s\" is no whole number from 1 to 65535; starting without it",
                   option.c_str(), text.c_str()));
    return PortWord::Wrong;
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

Arguments servicePass(const Arguments& arguments, StartOptions& options) {
    Arguments left;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const ServiceWord* word = findServiceWord(arguments[i]);
        if (!word) {
            left.push_back(arguments[i]);
            continue;
        }
        if (word->takes == Takes::Nothing) {
            options.service.push_back({arguments[i], {}});
            continue;
        }
        if (i + 1 == arguments.size()) break;  // its argument is missing
        const std::string& argument = arguments[++i];
        int port = 0;
        if (word->takes == Takes::Port && takePort(word->name, argument, port, options) == PortWord::Wrong)
            options.serviceMode = false;
        else
            options.service.push_back({word->name, argument});
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
        int port = 0;
        if (takePort("--plugin", arguments[++i], port, options) == PortWord::Good) options.pluginPort = port;
    }
    return left;
}

// Debug options that mean nothing on their own.
void reviewService(StartOptions& options) {
    const auto given = [&](std::string_view name) {
        return std::any_of(options.service.begin(), options.service.end(),
                           [name](const auto& option) { return option.name == name; });
    };
    const auto warn = [&](const char* text) { options.warnings.push_back(text); };
    if (given("-sr_debugger") && !given("-sr_debug"))
        warn("Must specify -sr_debug for -sr_debugger to have meaning.");
    if (given("-sr_debugger_opts") && !given("-sr_debug"))
        warn("Must specify -sr_debug for -sr_debugger_opts to have meaning.");
    const bool debugger = given("-sr_debug_debugger"), opts = given("-sr_debug_debugger_opts");
    if (given("-sr_debug_startup") && !(debugger && opts))
        warn(
            "Must specify both -sr_debug_debugger and -sr_debug_debugger_opts when -sr_debug_startup is "
            "passed.");
    if (!given("-sr_debug_startup") && (debugger || opts))
        warn("Must specify -sr_debug_startup with -sr_debug_debugger and -sr_debug_debugger_opts.");
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
    options.serviceMode = namesService(arguments);
    options.splash = !noSplash;
    arguments = toolkitPass(arguments, options);
    arguments = servicePass(arguments, options);
    reviewService(options);
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
