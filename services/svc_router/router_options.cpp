#include "services/svc_router/router_options.h"

#include "services/servicerouter_proxy/sr_options.h"

const char* const routerOptions_Help =
    "Usage: svc_router [options]\n"
    "\n"
    "Connects the programs of the suite: each offers its services here and asks for those of others. Started "
    "by\n"
    "hand it says its port and runs until it is interrupted; started by a program it ends with its last "
    "client.\n"
    "\n"
    "-connect_servicerouter PORT  the first client waits on this port of this host\n"
    "-listen PORT                 wait for clients on this port, not on a free one\n"
    "-log FILE                    write the messages of all services there\n"
    "-sr_log_internal FILE        write the router's own messages there\n"
    "-not_shared                  serve those alone who are told the port\n"
    "-sr_zone NAME                a router of its own for each name\n"
    "--help, --version            this text, the version\n";

namespace {

Result takeValue(const std::string& option, const std::string& value, RouterOptions& options) {
    std::vector<std::string> warnings;
    if (option == "-connect_servicerouter")
        options.clientPort = sr_Port(option, value, warnings);
    else if (option == "-listen")
        options.listenPort = sr_Port(option, value, warnings);
    else if (option == "-log")
        options.log = value;
    else if (option == "-sr_log_internal")
        options.internalLog = value;
    else if (option == "-sr_zone")
        options.zone = value;
    else
        return Result::failure("no option of this program", option);
    if (!warnings.empty()) return Result::failure("no whole number from 1 to 65535", option, value);
    return {};
}

}  // namespace

Result routerOptions_Parse(const std::vector<std::string>& arguments, RouterOptions& options) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--help" || argument == "-h")
            options.answer = RouterOptions::Answer::Help;
        else if (argument == "--version")
            options.answer = RouterOptions::Answer::Version;
        else if (argument == "-not_shared")
            options.sharing = RouterOptions::Sharing::Private;
        else if (i + 1 == arguments.size())
            return Result::failure(
                argument.starts_with("-") ? "no such option, or its argument is missing" : "not understood",
                argument);
        else if (const Result taken = takeValue(argument, arguments[++i], options); !taken)
            return taken;
        if (options.answer != RouterOptions::Answer::None) break;
    }
    return {};
}
