#include "services/servicerouter_proxy/sr_options.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "shared/libcxxutil/report.h"

namespace {

using Options = ServiceRouterOptions;

// What came of one option beside what it sets.
enum class Named { Nothing, Router, NoRouter };

struct Word {
    const char* name;
    enum class Takes { Nothing, Argument } takes;
    Named (*set)(Options& options, const std::string& argument);
};

Named namePort(const char* option, Options& options, const std::string& text) {
    options.port = sr_Port(option, text, options.warnings);
    return options.port ? Named::Router : Named::NoRouter;
}

Named setCookie(Options& options, const std::string& text) {
    uint32_t cookie = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), cookie);
    if (error == std::errc() && end == text.data() + text.size())
        options.startCookie = cookie;
    else
        options.warnings.push_back(
            gen_format("-sr_client_start_cookie: \"%s\" is no number; starting without it", text.c_str()));
    return Named::Nothing;
}

constexpr auto alone = Word::Takes::Nothing;
constexpr auto withArgument = Word::Takes::Argument;

Named nothing(Options&, const std::string&) {
    return Named::Nothing;
}
template <std::string Options::*member>
Named text(Options& options, const std::string& argument) {
    options.*member = argument;
    return Named::Nothing;
}
Named setHost(Options& options, const std::string& argument) {
    options.host = argument;
    return Named::Router;
}
Named setPort(Options& options, const std::string& argument) {
    return namePort("-sr_connect_servicerouter_port", options, argument);
}
Named setLocalPort(Options& options, const std::string& argument) {
    options.host = "localhost";
    return namePort("-connect_servicerouter", options, argument);
}
Named setBothLogs(Options& options, const std::string& argument) {
    options.log = options.routerLog = argument;
    return Named::Nothing;
}
template <Options::Sharing sharing>
Named share(Options& options, const std::string&) {
    options.sharing = sharing;
    return Named::Nothing;
}
template <Options::Reuse reuse>
Named setReuse(Options& options, const std::string&) {
    options.reuse = reuse;
    return Named::Nothing;
}

constexpr Word words[] = {
    {"-sr_connect_servicerouter_host", withArgument, setHost},
    {"-sr_connect_servicerouter_port", withArgument, setPort},
    {"-connect_servicerouter", withArgument, setLocalPort},
    {"-sr_log", withArgument, text<&Options::log>},
    {"-sr_log_router", withArgument, text<&Options::routerLog>},
    {"-sr_log_all", withArgument, setBothLogs},
    {"-sr_log_router_internal", withArgument, text<&Options::routerInternalLog>},
    {"-sr_zone", withArgument, text<&Options::zone>},
    {"-sr_client_start_cookie", withArgument, setCookie},
    {"-sr_shared", alone, share<Options::Sharing::Shared>},
    {"-sr_private", alone, share<Options::Sharing::Private>},
    {"-sr_reuse", alone, setReuse<Options::Reuse::Running>},
    {"-sr_new", alone, setReuse<Options::Reuse::New>},
    {"-sr_debug", alone, nothing},
    {"-sr_debugger", alone, nothing},
    {"-sr_debugger_opts", alone, nothing},
    {"-sr_debug_startup", alone, nothing},
    {"-sr_debug_debugger", alone, nothing},
    {"-sr_debug_debugger_opts", alone, nothing},
    {"-sr_dir", withArgument, text<&Options::directory>},
};

const Word* findWord(const std::string& argument) {
    for (const Word& word : words)
        if (argument == word.name) return &word;
    return nullptr;
}

// Options that ask for a debugger: those that mean nothing without others, and that none of them can be done
// here.
void reviewDebugOptions(const std::vector<std::string_view>& given, std::vector<std::string>& warnings) {
    const auto has = [&](std::string_view name) {
        return std::find(given.begin(), given.end(), name) != given.end();
    };
    const auto warn = [&](const char* warning) { warnings.emplace_back(warning); };
    if (has("-sr_debugger") && !has("-sr_debug"))
        warn("Must specify -sr_debug for -sr_debugger to have meaning.");
    if (has("-sr_debugger_opts") && !has("-sr_debug"))
        warn("Must specify -sr_debug for -sr_debugger_opts to have meaning.");
    const bool debugger = has("-sr_debug_debugger"), opts = has("-sr_debug_debugger_opts");
    if (has("-sr_debug_startup") && !(debugger && opts))
        warn(
            "Must specify both -sr_debug_debugger and -sr_debug_debugger_opts when -sr_debug_startup is "
            "passed.");
    if (!has("-sr_debug_startup") && (debugger || opts))
        warn("Must specify -sr_debug_startup with -sr_debug_debugger and -sr_debug_debugger_opts.");
    for (const char* name : {"-sr_debug", "-sr_debug_startup"})
        if (has(name))
            warnings.push_back(
                gen_format("%s: no debugger is started for this program; start the program in one", name));
}

}  // namespace

std::optional<uint16_t> sr_Port(const std::string& option, const std::string& text,
                                std::vector<std::string>& warnings) {
    if (text == "-1") return std::nullopt;
    uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error == std::errc() && end == text.data() + text.size() && port >= 1) return port;
    warnings.push_back(
        gen_format("%s: the port \"%s\" is no whole number from 1 to 65535; starting without it",
                   option.c_str(), text.c_str()));
    return std::nullopt;
}

ServiceRouterOptions sr_TakeOptions(std::vector<std::string>& arguments) {
    Options options;
    std::vector<std::string> left;
    std::vector<std::string_view> given;
    bool namesNone = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const Word* const word = findWord(arguments[i]);
        if (!word) {
            left.push_back(arguments[i]);
            continue;
        }
        const bool takes = word->takes == withArgument;
        if (takes && i + 1 == arguments.size()) break;  // its argument is missing
        const Named named = word->set(options, takes ? arguments[++i] : std::string());
        given.emplace_back(word->name);
        options.namesRouter = options.namesRouter || named == Named::Router;
        namesNone = namesNone || named == Named::NoRouter;
    }
    if (namesNone && !options.port) options.namesRouter = false;
    reviewDebugOptions(given, options.warnings);
    arguments = std::move(left);
    return options;
}
