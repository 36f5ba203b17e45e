// The command line of `chronoweave`: one table of commands and one of options, from which the parser, the
// help, the shell completion and the man page are made.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "chronoweave/cli/messages.h"

// What the user asked for. Texts are empty, and flags false, where the option was not given.
struct CommandLine {
    std::string command;  // name of the command, "config check" for the nested one
    std::string subject;  // what stands ahead of PATH: a kind of search or report, a file of rules
    std::string path;
    std::string from, to, at;
    bool ticks = false;
    std::string config;
    bool json = false, csv = false;
    std::string output;
    bool quiet = false;
    std::string first, count, object;
    std::string width, height;
    bool flat = false;
    std::string hide, sort;
    std::string event, begin, end, status;  // names
    std::string objects, beginObjects, endObjects, idle;
    bool sameObject = false, contextSwitch = false, increasing = false;
    std::string limit, junit;
};

// Parses; nothing when the program is done already (help, version) or the line was wrong, with the exit
// status in status and everything said.
std::optional<CommandLine> cli_Parse(int argc, const char* const* argv, int& status);

// Made from the same tables.
std::string cli_CompletionScript();  // for bash
std::string cli_ManPage();           // in man(7) form

// One command, which gives the exit status.
using CommandFunction = int (*)(const CommandLine&);
CommandFunction cli_FindCommand(const std::string& name);

// Runs the command of a parsed line, unless its result would overwrite what it is made of. The exit status.
int cli_Run(const CommandLine& line);
