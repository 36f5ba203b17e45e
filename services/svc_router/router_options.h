// The command line of svc_router.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/result.h"

struct RouterOptions {
    std::optional<uint16_t> clientPort;  // who started the router waits there, and is its first client
    std::optional<uint16_t> listenPort;  // else one of the system's choice
    std::string log, internalLog;        // files; empty for none
    std::string zone;
    enum class Sharing { Shared, Private } sharing = Sharing::Shared;
    enum class Answer { None, Help, Version } answer = Answer::None;
};

// arguments are without the program's name.
Result routerOptions_Parse(const std::vector<std::string>& arguments, RouterOptions& options);
extern const char* const routerOptions_Help;
