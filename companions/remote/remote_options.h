// The command line of chronoweave-remote.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "services/servicerouter_proxy/sr_options.h"
#include "shared/libcxxutil/result.h"

enum class RemoteCommand { Open, Close, List };

struct RemoteOptions {
    RemoteCommand command = RemoteCommand::List;
    std::string file;  // in full
    std::optional<uint32_t> object;
    std::string time;   // in seconds; empty: the view stays
    std::string title;  // of the window
    enum class Window { Any, New } window = Window::Any;
    enum class Load { WhereMissing, Again } load = Load::WhereMissing;
    enum class Form { Text, Json } form = Form::Text;
    // After its work it goes on as the window's debugger, and prints what it is asked.
    enum class After { End, Listen } after = After::End;
    uint32_t abilities = 7;  // as that debugger
    std::chrono::milliseconds timeout{30000};
    ServiceRouterOptions router;
    enum class Answer { None, Help, Version } answer = Answer::None;
};

// arguments are without the program's name. The failure says what is wrong.
Result remoteOptions_Parse(std::vector<std::string> arguments, RemoteOptions& options);
extern const char* const remoteOptions_Help;
