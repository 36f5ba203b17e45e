// What the program says on standard error. Control bytes of names and files never get there as they are.
#pragma once

#include <string>
#include <string_view>

// Exit statuses.
enum ExitStatus : int { Exit_Done = 0, Exit_Failed = 1, Exit_Usage = 2 };

// "chronoweave: TEXT" as one line.
void cli_Say(std::string_view text);
// One line without the program's name, such as "FILE:LINE: what".
void cli_SayLine(std::string_view line);
// Says what is wrong with the command line; Exit_Usage.
int cli_UsageError(std::string_view text);
// Says what failed, as one line; Exit_Failed.
int cli_Failure(std::string_view text);
