#include "chronoweave/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <sstream>

#include "chronoweave/cli/commands.h"
#include "chronoweave/cli/outputs.h"
#include "shared/libcxxutil/files.h"
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
    Search = 128,
    Report = 256,
    Check = 512,
    Merge = 1024,
    Live = 2048,
    Readers = Info | Events | State | Objects,
    All = Readers | Import | Render | ConfigCheck | Search | Report | Check | Merge | Live
};

struct CommandSpec {
    unsigned bit;
    const char* name;
    const char* summary;
    const char* path;  // what PATH is
    CommandFunction run;
    const char* subject = nullptr;  // name of what stands ahead of PATH, null for nothing
    const char* subjectHelp = nullptr;
    std::vector<std::string> kinds = {};  // that the subject can be; empty for any
    enum class Paths { One, Several, Target } paths = Paths::One;
    const char* pathWord() const {
        switch (paths) {
            case Paths::One:
                return "PATH";
            case Paths::Several:
                return "IN...";
            case Paths::Target:
                return "TARGET";
        }
        return "";
    }
};

constexpr const char* source_path = "a .trr, a .core, a .trs, or a store's base name";
const CommandSpec commands[] = {
    {Info, "info", "show a store's facts", source_path, command_Info},
    {Import, "import", "make the store of a .trr or .core and stop", "a .trr or a .core", command_Import},
    {Events, "events", "list the events of a range, in order", source_path, command_Events},
    {State, "state", "show every object known just before a time", source_path, command_State},
    {Objects, "objects", "list the objects that a range touches, by id", source_path, command_Objects},
    {Render, "render", "draw the time line as a picture", source_path, command_Render},
    {Search,
     "search",
     "find where something happened to objects",
     source_path,
     command_Search,
     "KIND",
     "event, pattern, status, switch or interval",
     {"event", "pattern", "status", "switch", "interval"}},
    {Report,
     "report",
     "count events and statuses, and the time in them",
     source_path,
     command_Report,
     "KIND",
     "objects (all, summed), object (one, by --object), general (one event or status, or without either "
     "context switches, per object) or load (of processors)",
     {"objects", "object", "general", "load"}},
    {Check, "check", "test the timing of a trace against rules; status 1 when one fails", source_path,
     command_Check, "RULES", "a file of rules, one a line"},
    {.bit = Merge,
     .name = "merge",
     .summary = "merge raw event files by time into the one that -o names",
     .path = "raw event files and core files",
     .run = command_Merge,
     .paths = CommandSpec::Paths::Several},
    {.bit = Live,
     .name = "live",
     .summary = "follow a target: log its events into the raw event file that -o names, and into its store",
     .path = "what to connect to, as one argument: \"sim\", \"replay FILE x4\", \"run COMMAND\", \"linux\"",
     .run = command_Live,
     .paths = CommandSpec::Paths::Target},
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
     "ask by sequence number in place of time; a multiple of the store's checkpoint interval gives the event "
     "behind it",
     &CommandLine::first, nullptr},
    {Events, "--count", "N", "with --first: at most so many events", &CommandLine::count, nullptr},
    {Events, "--object", "ID", "only the events of one object", &CommandLine::object, nullptr},
    {Search | Report, "--from", "T", "start of the range, in seconds from the first event",
     &CommandLine::from, nullptr},
    {Search | Report, "--to", "T", "end of the range, included", &CommandLine::to, nullptr},
    {Search | Report, "--event", "NAME", "the event; any without it (search), of report general",
     &CommandLine::event, nullptr},
    {Search, "--begin", "NAME", "the begin event of a pattern or interval", &CommandLine::begin, nullptr},
    {Search, "--end", "NAME", "the end event of a pattern or interval", &CommandLine::end, nullptr},
    {Search | Report, "--status", "NAME", "the status; any without it (search), of report general",
     &CommandLine::status, nullptr},
    {Report, "--switch", nullptr, "report general: context switches, as without --event and --status",
     nullptr, &CommandLine::contextSwitch},
    {Search | Report, "--objects", "ID,...", "these objects, by id or name; all without it",
     &CommandLine::objects, nullptr},
    {Search, "--begin-objects", "ID,...", "the objects of the begin event; those of --objects without it",
     &CommandLine::beginObjects, nullptr},
    {Search, "--end-objects", "ID,...", "the objects of the end event; those of --objects without it",
     &CommandLine::endObjects, nullptr},
    {Search, "--same-object", nullptr, "a pattern begins and ends on one object", nullptr,
     &CommandLine::sameObject},
    {Search, "--limit", "N", "stop at so many rows", &CommandLine::limit, nullptr},
    {Report, "--object", "ID", "the object of report object, by id or name", &CommandLine::object, nullptr},
    {Report, "--sort", "number|time", "order of report general (number)", &CommandLine::sort, nullptr},
    {Report, "--increasing", nullptr, "the smallest first", nullptr, &CommandLine::increasing},
    {Report, "--idle", "ID,...",
     "objects that do not count as load, by id or name; a name stands for all that "
     "bear it",
     &CommandLine::idle, nullptr},
    {Check, "--junit", "FILE", "also write the results as a JUnit XML report", &CommandLine::junit, nullptr},
    {Render, "--width", "N", "width of the picture in pixels (1600; what fills the page with --page)",
     &CommandLine::width, nullptr},
    {Render, "--height", "N", "height of the picture in pixels (as high as the rows need, at most 4000)",
     &CommandLine::height, nullptr},
    {Render, "--flat", nullptr, "whole object names, no groups", nullptr, &CommandLine::flat},
    {Render, "--hide", "PATTERN", "hide the objects whose name matches; * and ? are wild cards",
     &CommandLine::hide, nullptr},
    {Render, "--sort", "name|id", "order of the rows", &CommandLine::sort, nullptr},
    {Render, "--processors", nullptr, "a row for each processor shows who ran there", nullptr,
     &CommandLine::processors},
    {Render, "--page", "a4|letter", "the page that the window prints, as PDF; -o ends in .pdf",
     &CommandLine::page, nullptr},
    {Render, "--landscape", nullptr, "with --page: the sheet lies", nullptr, &CommandLine::landscape},
    {Render, "--pages", "N", "with --page: the range on so many pages", &CommandLine::pages, nullptr},
    {Render, "--legend", nullptr, "with --page: what is shown of the legend stands at the foot", nullptr,
     &CommandLine::legend},
    {Merge, "--align", "natural|head|tail",
     "times as recorded (natural), or shifted so that the first (head) or the last (tail) events of all "
     "sources "
     "have the same time",
     &CommandLine::align, nullptr},
    {All, "--json", nullptr, "JSON, one object a line", nullptr, &CommandLine::json},
    {All, "--csv", nullptr, "comma-separated values", nullptr, &CommandLine::csv},
    {All, "-o,--output", "FILE",
     "where the result goes; for import the base name of the store, for merge and live the raw event file",
     &CommandLine::output, nullptr},
    {Live, "--seconds", "N", "end after so many seconds", &CommandLine::seconds, nullptr},
    {Live, "--events", "N", "end once so many events are there", &CommandLine::mostEvents, nullptr},
    {Live, "--force", nullptr, "replace a file that is there", nullptr, &CommandLine::force},
    {Import | Live, "--checkpoint", "N",
     "events from one checkpoint to the next, a multiple of 100; without it as many as the number of objects "
     "asks",
     &CommandLine::checkpoint, nullptr},
    {All, "-q,--quiet", nullptr, "no progress and no notes", nullptr, &CommandLine::quiet},
};

constexpr const char* description =
    "Shows what a real-time operating system did: imports event logs, lists events and states, searches, "
    "counts, checks timing, draws time lines.";

void add_options(CLI::App& app, const CommandSpec& spec, CommandLine& line) {
    if (spec.subject) {
        auto* subject =
            app.add_option(spec.subject, line.subject, spec.subjectHelp)->required()->type_name("");
        if (!spec.kinds.empty()) subject->check(CLI::IsMember(spec.kinds));
    }
    if (spec.paths != CommandSpec::Paths::Several)
        app.add_option(spec.pathWord(), line.path, spec.path)->required()->type_name("");
    else
        app.add_option("IN", line.sources, spec.path)->required()->type_name("...");
    for (const OptionSpec& option : options) {
        if (!(option.commands & spec.bit)) continue;
        if (option.flag)
            app.add_flag(option.names, line.*option.flag, option.help);
        else
            app.add_option(option.names, line.*option.text, option.help)
                ->type_name(option.argument)
                ->check([](const std::string& value) {
                    return value.empty() ? "a value is missing" : std::string();
                });
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

std::string joined_kinds(const CommandSpec& spec) {
    std::string words;
    for (const std::string& kind : spec.kinds) words += kind + ' ';
    return words;
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
    // An option that ends in '=' would take the next word as its value.
    for (int i = 1; i < argc && std::string_view(argv[i]) != "--"; ++i) {
        const std::string_view word = argv[i];
        if (!word.starts_with("--") || word.find('=') + 1 != word.size()) continue;
        status = cli_UsageError(std::string(word.substr(0, word.size() - 1)) + ": a value is missing");
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
        // What is wrong is told in the user's own words, which are made safe for a terminal.
        std::ostringstream said;
        if (app.exit(error, std::cout, said) != 0) status = Exit_Usage;
        const std::string words = said.str();
        std::string_view rest = words;
        for (std::string_view one; text_next_line(rest, one);) cli_SayLine(one);
        return std::nullopt;
    }
}

CommandFunction cli_FindCommand(const std::string& name) {
    for (const CommandSpec& spec : commands)
        if (name == spec.name) return spec.run;
    return nullptr;
}

int cli_Run(const CommandLine& line) {
    int status = Exit_Usage;
    return cli_OutputsAreFree(line, status) ? cli_FindCommand(line.command)(line) : status;
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
                 (name.find(' ') == std::string::npos ? "" : name.substr(name.find(' ') + 1) + " ") +
                 joined_kinds(spec) + words + "\" ;;\n";
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
        page += std::string(".TP\n.B ") + spec.name + (spec.subject ? std::string(" ") + spec.subject : "") +
                ' ' + spec.pathWord() + '\n' + spec.summary + ". " +
                (spec.subject ? std::string(spec.subject) + " is " + spec.subjectHelp + ". " : "") +
                spec.pathWord() + " is " + spec.path + ".\n";
        for (const OptionSpec& option : options)
            if (option.commands & spec.bit)
                page += std::string(".br\n.B ") + option.names +
                        (option.argument ? std::string(" ") + option.argument : "") + "\n: " + option.help +
                        "\n";
    }
    return page + ".SH EXIT STATUS\n0 done, 1 the operation failed, 2 the command line was wrong.\n";
}
