#include "shared/libcxxutil/process_start.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace {
void do_nothing(int) {}
}  // namespace

void process_KeepStandardStreams() {
    // The lowest free number is given first, so one too many is opened, and closed again.
    int file = 0;
    while (file >= 0 && file <= STDERR_FILENO) file = ::open("/dev/null", O_RDONLY);
    if (file >= 0) ::close(file);
}

void process_LetWritesFail() {
    // A handler, as what is ignored would stay so in programs that are started.
    struct sigaction action = {};
    action.sa_handler = do_nothing;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGPIPE, SIGXFSZ}) ::sigaction(signal, &action, nullptr);
}
