// gexec: starts an event server whose output and errors go into a pipe that the starter has made, and becomes
// that server: no process stands between the two, so that the end of the server is the end of the pipe.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/text.h"

namespace {

constexpr char usage[] =
    "usage: gexec PIPE SEMAPHORE 0 -stdin SERVER [ARGUMENT...]\n"
    "\n"
    "Becomes SERVER, with both its standard output and its standard error going into PIPE.\n"
    "\n"
    "PIPE        number of the open descriptor that the starter reads answers from; only SERVER's standard\n"
    "            streams lead there afterwards\n"
    "SEMAPHORE   name of a semaphore that the starter holds for as long as it needs the server; it tells\n"
    "            whoever looks at the processes whose server this is, and is not opened here\n"
    "0           how to wait for the server: not at all; there is no other way\n"
    "-stdin      the server takes its commands from the standard input that gexec was given\n"
    "SERVER      the program: a path, or a name that is looked for on PATH\n"
    "ARGUMENT    handed on to it\n"
    "\n"
    "There is no status 0: a line on standard error says why SERVER could not be started, and the status is\n"
    "127 when it was the system that refused, 2 when the arguments were wrong.\n";

enum Status { Wrong = 2, NotStarted = 127 };

int wrong(const std::string& what) {
    std::fprintf(stderr, "gexec: %s\n%s", text_printable(what).c_str(), usage);
    return Wrong;
}

int not_started(const std::string& what) {
    const char* const why = std::strerror(errno);
    std::fprintf(stderr, "gexec: %s: %s\n", text_printable(what).c_str(), why);
    return NotStarted;
}

std::optional<int> read_descriptor(const std::string& text) {
    const auto number = scan_number(text);
    if (!number || *number > INT_MAX) return std::nullopt;
    const int descriptor = static_cast<int>(*number);
    if (::fcntl(descriptor, F_GETFD) < 0) return std::nullopt;
    return descriptor;
}

// The pipe is where both streams lead, and has no other number.
bool lead_streams_to(int pipe) {
    if (::dup2(pipe, STDOUT_FILENO) < 0 || ::dup2(pipe, STDERR_FILENO) < 0) return false;
    if (pipe > STDERR_FILENO) ::close(pipe);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.size() == 1 && (words[0] == "--help" || words[0] == "-h")) {
        std::fputs(usage, stdout);
        return 0;
    }
    if (words.size() < 5) return wrong("arguments are missing");
    const auto pipe = read_descriptor(words[0]);
    if (!pipe) return wrong(words[0] + ": it is not the number of an open descriptor");
    if (words[2] != "0") return wrong(words[2] + ": it must be 0");
    if (words[3] != "-stdin") return wrong(words[3] + ": it must be -stdin");
    if (!lead_streams_to(*pipe)) return not_started("descriptor " + words[0]);
    // A path is taken as it is, a name is looked for.
    ::execvp(argv[5], argv + 5);
    return not_started(words[4]);
}
