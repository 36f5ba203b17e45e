// The command line of `chronoweave`: one table of commands and one of options, from which the parser, the
// help, the shell completion and the man page are made.
#pragma once

#include <optional>
#include <string>

#include "chronoweave/cli/messages.h"
#include "chronoweave/cli/request.h"

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
