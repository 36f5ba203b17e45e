#include "companions/remote/remote_options.h"

#include <filesystem>
#include <limits>

#include "shared/libcxxutil/text.h"

const char* const remoteOptions_Help =
    "Usage: chronoweave-remote open FILE [--time T] [--object ID] [--new] [--reload] [--title TEXT] "
    "[--listen]\n"
    "       chronoweave-remote close FILE\n"
    "       chronoweave-remote list\n"
    "\n"
    "Steers the windows of trvgui. open starts it where it does not run as a service.\n"
    "\n"
    "--time T       bring this time, in seconds from the first event, into view\n"
    "--object ID    and the row of this object\n"
    "--new          open a further window\n"
    "--reload       load the file again where it is shown\n"
    "--title TEXT   of the window\n"
    "--listen       stay, as the debugger of the window: print what it asks, until interrupted\n"
    "--abilities N  what that debugger says it can do: 1 it listens, 2 shows positions, 4 takes commands,\n"
    "               8 has a view of the past; the sum, 7 when nothing is said\n"
    "--json         JSON, one object a line\n"
    "--timeout S    how long to wait for the window, in seconds; 30 when nothing is said\n"
    "-sr_zone NAME, -sr_...\n"
    "               another service router than the user's own\n"
    "--help, --version\n"
    "               this text, the version\n";

namespace {

using Options = RemoteOptions;

std::string fullName(const std::string& file) {
    std::error_code error;
    const auto full = std::filesystem::absolute(file, error);
    return error ? file : full.lexically_normal().string();
}

// Takes an option that stands alone; false when it is none of them.
bool takeFlag(const std::string& name, Options& options) {
    if (name == "--json")
        options.form = Options::Form::Json;
    else if (name == "--new")
        options.window = Options::Window::New;
    else if (name == "--reload")
        options.load = Options::Load::Again;
    else if (name == "--listen")
        options.after = Options::After::Listen;
    else if (name == "--help" || name == "-h")
        options.answer = Options::Answer::Help;
    else if (name == "--version")
        options.answer = Options::Answer::Version;
    else
        return false;
    return true;
}

Result takeNumber(const std::string& name, const std::string& value, uint32_t& number) {
    const auto scanned = scan_number(value);
    if (!scanned || *scanned > std::numeric_limits<uint32_t>::max())
        return Result::failure("no number of an object or of abilities", name, value);
    number = static_cast<uint32_t>(*scanned);
    return {};
}

Result takeValue(const std::string& name, const std::string& value, Options& options) {
    constexpr double longest = 86400, msPerSecond = 1000;
    if (name == "--object") return takeNumber(name, value, options.object.emplace());
    if (name == "--abilities") return takeNumber(name, value, options.abilities);
    if (name == "--title") {
        options.title = value;
        return {};
    }
    const auto number = scan_double(value);
    if (name == "--time") {
        if (!number || *number < 0) return Result::failure("no time in seconds", name, value);
        options.time = value;
        return {};
    }
    if (name != "--timeout") return Result::failure("no such option", name);
    if (!number || *number <= 0 || *number > longest)
        return Result::failure("no number of seconds above 0", name, value);
    options.timeout = std::chrono::milliseconds(static_cast<int64_t>(*number * msPerSecond));
    return {};
}

Result takeWords(const std::vector<std::string>& words, Options& options) {
    if (words.empty()) return Result::failure("a command is missing: open, close or list");
    const bool withFile = words[0] == "open" || words[0] == "close";
    if (!withFile && words[0] != "list") return Result::failure("no such command", words[0]);
    if (words.size() != (withFile ? 2u : 1u))
        return Result::failure(withFile ? "one file is needed" : "nothing stands behind it", words[0]);
    options.command = words[0] == "open"    ? RemoteCommand::Open
                      : words[0] == "close" ? RemoteCommand::Close
                                            : RemoteCommand::List;
    if (withFile) options.file = fullName(words[1]);
    if (options.object && options.time.empty()) return Result::failure("--object needs --time");
    return {};
}

}  // namespace

Result remoteOptions_Parse(std::vector<std::string> arguments, RemoteOptions& options) {
    options.router = sr_TakeOptions(arguments);
    std::vector<std::string> words;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!argument.starts_with("-")) {
            words.push_back(argument);
        } else if (!takeFlag(argument, options)) {
            if (i + 1 == arguments.size())
                return Result::failure("no such option, or its argument is missing", argument);
            if (const Result taken = takeValue(argument, arguments[++i], options); !taken) return taken;
        }
        if (options.answer != Options::Answer::None) return {};
    }
    return takeWords(words, options);
}
