// render in a build that has no platform layer to draw with.
#include "chronoweave/cli/commands.h"

int command_Render(const CommandLine&) {
    return cli_Failure("render: this build has no picture files (it was configured without Qt)");
}
