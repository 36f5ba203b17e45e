// The options of a command line that are about the service router: every program of the suite takes them, and
// takes them out before it looks at its own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct ServiceRouterOptions {
    // Where a router waits. Without a port there is none, and a program that needs one starts it.
    std::string host = "localhost";
    std::optional<uint16_t> port;
    // Files for messages; empty for none. The router's are for one that this program starts.
    std::string log, routerLog, routerInternalLog;
    std::string zone;                     // a router of its own for each name
    std::optional<uint32_t> startCookie;  // this process answers that request to start one
    enum class Sharing { Shared, Private };
    Sharing sharing = Sharing::Shared;  // of a router that this program starts
    enum class Reuse { Running, New };
    Reuse reuse = Reuse::Running;  // of services that this program asks for
    std::string directory;         // where svc_router lies; empty: beside this program, or on PATH
    // One of the options that say where a router is stands there, and names a place.
    bool namesRouter = false;
    std::vector<std::string> warnings;  // for the user
};

// Takes the options out of the arguments (the program's name is not among them). One whose argument is
// missing at the end is taken out and means nothing.
ServiceRouterOptions sr_TakeOptions(std::vector<std::string>& arguments);

// A port as typed: nothing, with a warning in its place, for what is no whole number from 1 to 65535; -1
// stands for none and gives no warning.
std::optional<uint16_t> sr_Port(const std::string& option, const std::string& text,
                                std::vector<std::string>& warnings);
