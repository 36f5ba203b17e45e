// check.
#include "chronoweave/cli/commands.h"

int command_Check(const CommandLine&) {
    return Exit_Failed;
}
