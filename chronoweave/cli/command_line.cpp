#include "chronoweave/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "chronoweave/cli/commands.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

// Commands, as bits for the table of options.
enum : unsigned {
    Info = 1,
    Import = 2,
    Events = 4,
    State = 8,
    Objects = 16,
    Render = 32,
    ConfigCheck = 64,
    Readers = Info | Events | State | Objects,
    All = Readers | Import | Render | ConfigCheck
};

struct CommandSpec {
    unsigned bit;
    const char* name;
    const char* summary;
    const char* path;  // what PATH is
    CommandFunction run;
};

constexpr const char* source_path = "a .trr, a .core, a .trs, or a store's base name";
constexpr CommandSpec commands[] = {
    {Info, "info", "show a store's facts", source_path, command_Info},
    {Import, "import", "make the store of a .trr or .core and stop", "a .trr or a .core", command_Import},
    {Events, "events", "list the events of a range, in order", source_path, command_Events},
    {State, "state", "show every object known just before a time", source_path, command_State},
    {Objects, "objects", "list the objects that a range touches, by id", source_path, command_Objects},
    {Render, "render", "draw the time line as a picture", source_path, command_Render},
    {ConfigCheck, "config check", "read a configure file and report every line it does not take",
     "a configure file (.tc)", command_ConfigCheck},
};

struct OptionSpec {
    unsigned commands;
    const char* names;
    const char* argument;  // null for a flag
    const char* help;
    std::string CommandLine::*text;
    bool CommandLine::*flag;
};

constexpr OptionSpec options[] = {
    {Events | Objects | Render, "--from", "T", "start of the range, in seconds from the first event",
     &CommandLine::from, nullptr},
    {Events | Objects | Render, "--to", "T", "end of the range, not included", &CommandLine::to, nullptr},
    {State, "--at", "T", "the time, in seconds from the first event", &CommandLine::at, nullptr},
    {All, "--ticks", nullptr, "all times given and shown are store ticks", nullptr, &CommandLine::ticks},
    {All, "--config", "FILE.tc", "this configure file in place of the operating system's",
     &CommandLine::config, nullptr},
    {Events, "--first", "SEQ",
     "ask by sequence number in place of time; a multiple of 100 gives the event behind it",
     &CommandLine::first, nullptr},
    {Events, "--count", "N", "with --first: at most so many events", &CommandLine::count, nullptr},
    {Events, "--object", "ID", "only the events of one object", &CommandLine::object, nullptr},
    {Render, "--width", "N", "width of the picture in pixels (1600)", &CommandLine::width, nullptr},
    {Render, "--height", "N", "height of the picture in pixels (as high as the rows need, at most 4000)",
     &CommandLine::height, nullptr},
    {Render, "--flat", nullptr, "whole object names, no groups", nullptr, &CommandLine::flat},
    {Render, "--hide", "PATTERN", "hide the objects whose name matches; * and ? are wild cards",
     &CommandLine::hide, nullptr},
    {Render, "--sort", "name|id", "order of the rows", &CommandLine::sort, nullptr},
    {All, "--json", nullptr, "JSON, one object a line", nullptr, &CommandLine::json},
    {All, "--csv", nullptr, "comma-separated values", nullptr, &CommandLine::csv},
    {All, "-o,--output", "FILE", "where the result goes; for import the base name of the store",
     &CommandLine::output, nullptr},
    {All, "-q,--quiet", nullptr, "no progress and no notes", nullptr, &CommandLine::quiet},
};

constexpr const char* description =
    "Shows what a real-time operating system did: imports event logs, lists events and states, draws time "
    "lines.";

void add_options(CLI::App& app, const CommandSpec& spec, CommandLine& line) {
    app.add_option("PATH", line.path, spec.path)->required()->type_name("");
    for (const OptionSpec& option : options) {
        if (!(option.commands & spec.bit)) continue;
        if (option.flag)
            app.add_flag(option.names, line.*option.flag, option.help);
        else
            app.add_option(option.names, line.*option.text, option.help)->type_name(option.argument);
    }
}

// Adds a command, below the group of its first word when its name has two.
void add_command(CLI::App& app, const CommandSpec& spec, CommandLine& line) {
    CLI::App* parent = &app;
    std::string name = spec.name;
    if (const size_t blank = name.find(' '); blank != std::string::npos) {
        parent = app.add_subcommand(name.substr(0, blank), "work with configure files");
        parent->require_subcommand(1);
        name.erase(0, blank + 1);
    }
    CLI::App* command = parent->add_subcommand(name, spec.summary);
    add_options(*command, spec, line);
    command->final_callback([&line, &spec] { line.command = spec.name; });
}

}  // namespace

std::optional<CommandLine> cli_Parse(int argc, const char* const* argv, int& status) {
    CommandLine line;
    status = Exit_Done;
    const std::string_view first = argc == 2 ? argv[1] : "";
    if (first == "--print-completion" || first == "--print-man") {
        std::cout << (first == "--print-man" ? cli_ManPage() : cli_CompletionScript());
        return std::nullopt;
    }
    CLI::App app(description, "chronoweave");
    app.require_subcommand(1);
    app.set_version_flag("--version", "chronoweave " CW_VERSION);
    app.footer(
        "chronoweave --print-completion prints a completion script for bash, --print-man a manual page.");
    for (const CommandSpec& spec : commands) add_command(app, spec, line);
    try {
        app.parse(argc, argv);
        return line;
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) != 0) status = Exit_Usage;
        return std::nullopt;
    }
}

CommandFunction cli_FindCommand(const std::string& name) {
    for (const CommandSpec& spec : commands)
        if (name == spec.name) return spec.run;
    return nullptr;
}

int cli_UsageError(const std::string& text) {
    std::fprintf(stderr, "chronoweave: %s\n", text.c_str());
    return Exit_Usage;
}

int cli_Failure(const std::string& text) {
    std::string line(text_trim(text));
    for (char& c : line)
        if (c == '\n') c = ' ';
    std::fprintf(stderr, "chronoweave: %s\n", line.c_str());
    return Exit_Failed;
}

std::string cli_CompletionScript() {
    std::string names, cases;
    for (const CommandSpec& spec : commands) {
        const std::string name = spec.name;
        names += name.substr(0, name.find(' ')) + ' ';
        std::string words;
        for (const OptionSpec& option : options)
            if (option.commands & spec.bit)
                words += std::string(option.names).substr(std::string(option.names).find("--")) + ' ';
        cases += "    " + name.substr(0, name.find(' ')) + ") words=\"" +
                 (name.find(' ') == std::string::npos ? "" : name.substr(name.find(' ') + 1) + " ") + words +
                 "\" ;;\n";
    }
    return "# bash completion for chronoweave\n"
           "_chronoweave() {\n"
           "  local current=\"${COMP_WORDS[COMP_CWORD]}\" words=\"\"\n"
           "  case \"${COMP_WORDS[1]}\" in\n" +
           cases + "    *) words=\"" + names +
           "--help --version\" ;;\n"
           "  esac\n"
           "  COMPREPLY=($(compgen -W \"$words\" -- \"$current\") $(compgen -f -- \"$current\"))\n"
           "}\n"
           "complete -o filenames -F _chronoweave chronoweave\n";
}

std::string cli_ManPage() {
    std::string page = ".TH CHRONOWEAVE 1\n.SH NAME\nchronoweave \\- " + std::string(description) +
                       "\n.SH SYNOPSIS\n.B chronoweave\nCOMMAND [options] PATH\n.SH COMMANDS\n";
    for (const CommandSpec& spec : commands) {
        page +=
            std::string(".TP\n.B ") + spec.name + " PATH\n" + spec.summary + ". PATH is " + spec.path + ".\n";
        for (const OptionSpec& option : options)
            if (option.commands & spec.bit)
                page += std::string(".br\n.B ") + option.names +
                        (option.argument ? std::string(" ") + option.argument : "") + "\n: " + option.help +
                        "\n";
    }
    return page + ".SH EXIT STATUS\n0 done, 1 the operation failed, 2 the command line was wrong.\n";
}
