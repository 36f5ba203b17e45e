// The commands. Each prints its result on standard output or into --output, everything else on standard
// error, and gives the exit status.
#pragma once

#include "chronoweave/cli/messages.h"
#include "chronoweave/cli/request.h"

int command_Info(const CommandLine& line);
int command_Import(const CommandLine& line);
int command_Events(const CommandLine& line);
int command_State(const CommandLine& line);
int command_Objects(const CommandLine& line);
int command_Render(const CommandLine& line);
int command_Search(const CommandLine& line);
int command_Report(const CommandLine& line);
int command_Check(const CommandLine& line);
int command_Merge(const CommandLine& line);
int command_Live(const CommandLine& line);
int command_ConfigCheck(const CommandLine& line);
