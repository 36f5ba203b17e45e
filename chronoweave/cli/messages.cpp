#include "chronoweave/cli/messages.h"

#include <algorithm>
#include <cstdio>

#include "shared/libcxxutil/text.h"

void cli_SayLine(std::string_view line) {
    std::string one(text_trim(line));
    std::replace(one.begin(), one.end(), '\n', ' ');
    std::fputs((text_printable(one) + '\n').c_str(), stderr);
}

void cli_Say(std::string_view text) {
    cli_SayLine("chronoweave: " + std::string(text_trim(text)));
}

int cli_UsageError(std::string_view text) {
    cli_Say(text);
    return Exit_Usage;
}

int cli_Failure(std::string_view text) {
    cli_Say(text);
    return Exit_Failed;
}
