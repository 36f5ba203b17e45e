// The headless program.
#include "chronoweave/cli/command_line.h"
#include "shared/libcxxutil/process_start.h"

int main(int argc, char** argv) {
    process_Begin(argv[0]);
    int status = Exit_Done;
    const auto line = cli_Parse(argc, argv, status);
    return line ? cli_Run(*line) : status;
}
